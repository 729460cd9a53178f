// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "script/engine/exparser.h"

double fnPush(exParser &, double)
{
    return {};
}

double fnPop(exParser &)
{
    return {};
}

double fnRnd(exParser &, double)
{
    return {};
}

double fnSeed(exParser &, double)
{
    return {};
}

double fnDparm(exParser &, double)
{
    return {};
}

double fnDeclare(FunctionCall &)
{
    return {};
}

double fnFunc(FunctionCall &)
{
    return {};
}

double fnSlider(FunctionCall &)
{
    return {};
}
