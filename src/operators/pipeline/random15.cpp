// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/random15.h"

#include <cstdlib>

/// The upper bits are taken: the system's generator gives 31, and its lower ones are poorer.
int random15()
{
    return (std::rand() >> 16) & 0x7fff;
}

RandomAside::RandomAside() : workState(initstate(1, ownState, sizeof ownState)) {}

RandomAside::~RandomAside()
{
    setstate(workState);
}

void seedRandom15(uint32_t seed)
{
    std::srand(seed);
}
