// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/warprender.h"

#include "core/image.h"
#include "core/rows.h"
#include "core/warpfield.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kDark = 96, kLight = 160;
/// A displacement of this many samples has the full tint.
constexpr double kFullTint = 64.0;
constexpr int kMostTint = 64;

/// Still squares are grey; the farther a sample is fetched from, the warmer it gets.
QRgb colorAt(double x, double y, Displacement d)
{
    const int64_t column = int64_t(std::floor((x + d.x) / kWarpSquare));
    const int64_t row = int64_t(std::floor((y + d.y) / kWarpSquare));
    const int grey = (column + row) % 2 == 0 ? kDark : kLight;
    const double far = std::min(1.0, std::sqrt(d.x * d.x + d.y * d.y) / kFullTint);
    const int tint = int(far * kMostTint);
    return qRgb(grey + tint, grey, grey - tint);
}
} // namespace

bool renderWarp(const image &field, const ViewGeometry &view, uint32_t surround, QImage *out)
{
    if (!field.valid() || view.width < 1 || view.height < 1 || !(view.xStep > 0.0) ||
        !(view.yStep > 0.0))
        return false;
    if (out->width() != view.width || out->height() != view.height)
        *out = QImage(view.width, view.height, QImage::Format_RGB32);
    if (out->isNull())
        return false;
    auto *pixels = reinterpret_cast<QRgb *>(out->bits());
    parallelRows(view.height, view.width, [&](int first, int end) {
        for (int row = first; row < end; ++row) {
            const double y = (row - view.offsetY) * view.yStep + view.panY;
            for (int column = 0; column < view.width; ++column) {
                const double x = (column - view.offsetX) * view.xStep + view.panX;
                const bool inside = x >= 0.0 && x < field.width && y >= 0.0 && y < field.height;
                pixels[int64_t(row) * view.width + column] =
                    inside ? colorAt(x, y,
                                     displacementAt(field, int64_t(y) * field.width + int64_t(x)))
                           : surround;
            }
        }
    });
    return true;
}
