// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "script/engine/exparser.h"

double fnBtow(exParser &, double)
{
    return {};
}

double fnCtok(exParser &, double)
{
    return {};
}

double fnCtor(exParser &, double)
{
    return {};
}

double fnPrat(exParser &, double)
{
    return {};
}

double fnVrat(exParser &, double)
{
    return {};
}

double fnDctodf(exParser &, double)
{
    return {};
}

double fnDftodc(exParser &, double)
{
    return {};
}

double fnDtow(exParser &, double)
{
    return {};
}

double fnFtok(exParser &, double)
{
    return {};
}

double fnFtom(exParser &, double)
{
    return {};
}

double fnFtor(exParser &, double)
{
    return {};
}

double fnFtow(exParser &, double)
{
    return {};
}

double fnGtod(exParser &, double)
{
    return {};
}

double fnKtoc(exParser &, double)
{
    return {};
}

double fnKtof(exParser &, double)
{
    return {};
}

double fnKtor(exParser &, double)
{
    return {};
}

double fnLton(exParser &, double)
{
    return {};
}

double fnMtof(exParser &, double)
{
    return {};
}

double fnNtol(exParser &, double)
{
    return {};
}

double fnRtoc(exParser &, double)
{
    return {};
}

double fnRtof(exParser &, double)
{
    return {};
}

double fnRtok(exParser &, double)
{
    return {};
}

double fnStoe(exParser &, double)
{
    return {};
}

double fnRtod(exParser &, double)
{
    return {};
}

double fnDtog(exParser &, double)
{
    return {};
}

double fnDtor(exParser &, double)
{
    return {};
}

double fnWtob(exParser &, double)
{
    return {};
}

double fnWtod(exParser &, double)
{
    return {};
}

double fnWtof(exParser &, double)
{
    return {};
}

double fnCtof(FunctionCall &)
{
    return {};
}

double fnDbm(FunctionCall &)
{
    return {};
}

double fnDbpr(FunctionCall &)
{
    return {};
}

double fnDbvr(FunctionCall &)
{
    return {};
}

double fnDtos(FunctionCall &)
{
    return {};
}

double fnDtov(FunctionCall &)
{
    return {};
}

double fnFtoc(FunctionCall &)
{
    return {};
}

double fnStodbm(FunctionCall &)
{
    return {};
}

double fnSunits(FunctionCall &)
{
    return {};
}

double fnEitop(FunctionCall &)
{
    return {};
}

double fnEitor(FunctionCall &)
{
    return {};
}

double fnEptor(FunctionCall &)
{
    return {};
}

double fnErtoi(FunctionCall &)
{
    return {};
}

double fnErtop(FunctionCall &)
{
    return {};
}

double fnIrtoe(FunctionCall &)
{
    return {};
}

double fnIrtop(FunctionCall &)
{
    return {};
}

double fnPetoi(FunctionCall &)
{
    return {};
}

double fnPitoe(FunctionCall &)
{
    return {};
}

double fnPitor(FunctionCall &)
{
    return {};
}

double fnPrtoi(FunctionCall &)
{
    return {};
}

double fnPrtoe(FunctionCall &)
{
    return {};
}

double fnLser(FunctionCall &)
{
    return {};
}

double fnRser(FunctionCall &)
{
    return {};
}

double fnCpar(FunctionCall &)
{
    return {};
}

double fnLpar(FunctionCall &)
{
    return {};
}

double fnRpar(FunctionCall &)
{
    return {};
}

double fnCser(FunctionCall &)
{
    return {};
}
