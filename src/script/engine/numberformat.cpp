// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/numberformat.h"

QString formatNumber(const exParser &, double)
{
    return {};
}

QString formatFetched(const exParser &, double)
{
    return {};
}
