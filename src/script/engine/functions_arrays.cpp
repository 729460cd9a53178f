// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "script/engine/exparser.h"

double fnArray(FunctionCall &)
{
    return {};
}

double fnArrayAdd(FunctionCall &)
{
    return {};
}

double fnAppend(FunctionCall &)
{
    return {};
}

double fnAssign(FunctionCall &)
{
    return {};
}

double fnBits(FunctionCall &)
{
    return {};
}

double fnBytes(FunctionCall &)
{
    return {};
}

double fnDim(FunctionCall &)
{
    return {};
}

double fnArrayDivide(FunctionCall &)
{
    return {};
}

double fnDividend(FunctionCall &)
{
    return {};
}

double fnDuplicate(FunctionCall &)
{
    return {};
}

double fnValue(FunctionCall &)
{
    return {};
}

double fnIndexof(FunctionCall &)
{
    return {};
}

double fnInsert(FunctionCall &)
{
    return {};
}

double fnLimit(FunctionCall &)
{
    return {};
}

double fnMinimize(FunctionCall &)
{
    return {};
}

double fnMinus(FunctionCall &)
{
    return {};
}

double fnMinuend(FunctionCall &)
{
    return {};
}

double fnMaxdigits(FunctionCall &)
{
    return {};
}

double fnMaximize(FunctionCall &)
{
    return {};
}

double fnArrayMultiply(FunctionCall &)
{
    return {};
}

double fnNormalize(FunctionCall &)
{
    return {};
}

double fnPlus(FunctionCall &)
{
    return {};
}

double fnPrepend(FunctionCall &)
{
    return {};
}

double fnRemove(FunctionCall &)
{
    return {};
}

double fnReverse(FunctionCall &)
{
    return {};
}

double fnShiftleft(FunctionCall &)
{
    return {};
}

double fnShiftright(FunctionCall &)
{
    return {};
}

double fnSize(FunctionCall &)
{
    return {};
}

double fnSwap(FunctionCall &)
{
    return {};
}

double fnAcols(FunctionCall &)
{
    return {};
}

double fnArows(FunctionCall &)
{
    return {};
}
