// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "script/engine/exparser.h"

double fnAam(FunctionCall &)
{
    return {};
}

double fnLinem(FunctionCall &)
{
    return {};
}

double fnReadch(FunctionCall &)
{
    return {};
}

double fnReadm(FunctionCall &)
{
    return {};
}

double fnSetm(FunctionCall &)
{
    return {};
}

double fnWritem(FunctionCall &)
{
    return {};
}

double fnWritep(FunctionCall &)
{
    return {};
}

double fnConvolve(FunctionCall &)
{
    return {};
}
