// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/pshapefile.h"

bool savePShape(const QString &, const PShape &, QString *)
{
    return false;
}

bool loadPShape(const QString &, PShape *, QString *)
{
    return false;
}
