// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "script/engine/exparser.h"

double fnMatadd(FunctionCall &)
{
    return {};
}

double fnMatsub(FunctionCall &)
{
    return {};
}

double fnMatmul(FunctionCall &)
{
    return {};
}

double fnMatand(FunctionCall &)
{
    return {};
}

double fnMator(FunctionCall &)
{
    return {};
}

double fnMatxor(FunctionCall &)
{
    return {};
}

double fnMatnegate(FunctionCall &)
{
    return {};
}

double fnMatnot(FunctionCall &)
{
    return {};
}
