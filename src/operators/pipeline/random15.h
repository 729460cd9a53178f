// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

constexpr double kRandom15Span = 32767.0;

/// The next whole number of 0 to 32767 from the program's one generator. Scripts and the
/// dissolve modes share it, so the seed that a script sets settles their pattern too.
int random15();
void seedRandom15(uint32_t seed);

/// While it stands, numbers come from a sequence of their own, which begins anew each time: a
/// preview looks the same whenever it is drawn, and takes no numbers from the work.
class RandomAside
{
public:
    RandomAside();
    ~RandomAside();
    RandomAside(const RandomAside &) = delete;
    RandomAside &operator=(const RandomAside &) = delete;

private:
    char ownState[128];
    char *workState;
};
