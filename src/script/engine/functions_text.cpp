// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "script/engine/exparser.h"

QString fnAltitude(TextCall &)
{
    return {};
}

QString fnAnnotation(TextCall &)
{
    return {};
}

QString fnAsk(TextCall &)
{
    return {};
}

QString fnAuthor(TextCall &)
{
    return {};
}

QString fnCopyright(TextCall &)
{
    return {};
}

QString fnCreatetime(TextCall &)
{
    return {};
}

QString fnTparm(TextCall &)
{
    return {};
}

QString fnImagename(TextCall &)
{
    return {};
}

QString fnLatitude(TextCall &)
{
    return {};
}

QString fnLayername(TextCall &)
{
    return {};
}

QString fnLongitude(TextCall &)
{
    return {};
}

QString fnMastername(TextCall &)
{
    return {};
}

QString fnModtime(TextCall &)
{
    return {};
}

QString fnDate(TextCall &)
{
    return {};
}

QString fnTime(TextCall &)
{
    return {};
}

QString fnPops(TextCall &)
{
    return {};
}

QString fnSoftware(TextCall &)
{
    return {};
}

QString fnTruth(TextCall &)
{
    return {};
}

QString fnVerbatim(TextCall &)
{
    return {};
}

double fnPushs(FunctionCall &)
{
    return {};
}

double fnTwidth(FunctionCall &)
{
    return {};
}
