// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/cropguides.h"

#include <QCoreApplication>

QStringList cropGuideNames()
{
    const auto tr = [](const char *text) {
        return QCoreApplication::translate("CropGuides", text);
    };
    return {tr("None"),          tr("Golden Rectangle"), tr("Rule of Thirds"),
            tr("Golden Spiral"), tr("Golden Triangles"), tr("Diagonal")};
}

std::vector<GuideLine> cropGuideLines(int, QSizeF, bool, bool)
{
    return {};
}
