// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "script/engine/exparser.h"

double fnAbs(exParser &, double)
{
    return {};
}

double fnAcos(exParser &, double)
{
    return {};
}

double fnAcosh(exParser &, double)
{
    return {};
}

double fnAlog(exParser &, double)
{
    return {};
}

double fnAsin(exParser &, double)
{
    return {};
}

double fnAsinh(exParser &, double)
{
    return {};
}

double fnAtan(exParser &, double)
{
    return {};
}

double fnAtanh(exParser &, double)
{
    return {};
}

double fnCbrt(exParser &, double)
{
    return {};
}

double fnCeil(exParser &, double)
{
    return {};
}

double fnChup(exParser &, double)
{
    return {};
}

double fnCos(exParser &, double)
{
    return {};
}

double fnCosh(exParser &, double)
{
    return {};
}

double fnDec(exParser &, double)
{
    return {};
}

double fnExp(exParser &, double)
{
    return {};
}

double fnFact(exParser &, double)
{
    return {};
}

double fnFloor(exParser &, double)
{
    return {};
}

double fnFrac(exParser &, double)
{
    return {};
}

double fnInc(exParser &, double)
{
    return {};
}

double fnInt(exParser &, double)
{
    return {};
}

double fnLn(exParser &, double)
{
    return {};
}

double fnLog(exParser &, double)
{
    return {};
}

double fnNegate(exParser &, double)
{
    return {};
}

double fnSin(exParser &, double)
{
    return {};
}

double fnSinh(exParser &, double)
{
    return {};
}

double fnSqrt(exParser &, double)
{
    return {};
}

double fnTan(exParser &, double)
{
    return {};
}

double fnTanh(exParser &, double)
{
    return {};
}

double fnIdentity(exParser &, double)
{
    return {};
}

double fnAdd(exParser &, double, double)
{
    return {};
}

double fnSubtract(exParser &, double, double)
{
    return {};
}

double fnTimes(exParser &, double, double)
{
    return {};
}

double fnOver(exParser &, double, double)
{
    return {};
}

double fnRemainder(exParser &, double, double)
{
    return {};
}

double fnEqual(exParser &, double, double)
{
    return {};
}

double fnUnequal(exParser &, double, double)
{
    return {};
}

double fnGreater(exParser &, double, double)
{
    return {};
}

double fnGreaterOrEqual(exParser &, double, double)
{
    return {};
}

double fnLess(exParser &, double, double)
{
    return {};
}

double fnLessOrEqual(exParser &, double, double)
{
    return {};
}

double fnAmix(FunctionCall &)
{
    return {};
}

double fnAtan2(FunctionCall &)
{
    return {};
}

double fnCmix(FunctionCall &)
{
    return {};
}

double fnHypo(FunctionCall &)
{
    return {};
}

double fnLength(FunctionCall &)
{
    return {};
}

double fnMod(FunctionCall &)
{
    return {};
}

double fnPercent(FunctionCall &)
{
    return {};
}

double fnPow(FunctionCall &)
{
    return {};
}

double fnRound(FunctionCall &)
{
    return {};
}

double fnSum(FunctionCall &)
{
    return {};
}

double fnAvg(FunctionCall &)
{
    return {};
}

double fnMean(FunctionCall &)
{
    return {};
}

double fnCount(FunctionCall &)
{
    return {};
}

double fnMax(FunctionCall &)
{
    return {};
}

double fnMin(FunctionCall &)
{
    return {};
}

double fnMedian(FunctionCall &)
{
    return {};
}
