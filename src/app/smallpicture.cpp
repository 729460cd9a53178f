// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/smallpicture.h"

#include "core/image.h"
#include "core/warpfield.h"
#include "core/workspace.h"

#include <QImage>

#include <algorithm>
#include <cmath>
#include <vector>

namespace
{
constexpr int kCheckerCell = 5; ///< points

/// One pixel of the small picture, `sample` being the place in the image's planes.
QRgb plainPixel(const image &img, int64_t sample)
{
    return qRgba(img.red[sample] >> 8, img.green[sample] >> 8, img.blue[sample] >> 8,
                 img.alpha[sample] >> 8);
}

double warpLength(const image &img, int64_t sample)
{
    const Displacement moved = displacementAt(img, sample);
    return std::hypot(moved.x, moved.y);
}

void lightByLength(QImage *square, const std::vector<double> &lengths, const QRect &place)
{
    const double longest = *std::max_element(lengths.begin(), lengths.end());
    for (int y = 0; y < place.height(); ++y)
        for (int x = 0; x < place.width(); ++x) {
            const double part =
                longest > 0 ? lengths[size_t(y) * place.width() + x] / longest : 0.0;
            const int light = 70 + int(part * 180);
            square->setPixel(place.topLeft() + QPoint(x, y), qRgb(light, light, 255));
        }
}

void layOnChecker(QImage *square, const QRect &place, int cell)
{
    const Workspace *space = workspace();
    for (int y = place.top(); y <= place.bottom(); ++y)
        for (int x = place.left(); x <= place.right(); ++x) {
            const QRgb over = square->pixel(x, y);
            const bool dark = ((x / cell) ^ (y / cell)) & 1;
            const int under = dark && space ? space->checkerDark
                              : space       ? space->checkerLight
                                            : 128;
            const int a = qAlpha(over);
            const auto mix = [a, under](int value) {
                return (value * a + under * (255 - a)) / 255;
            };
            square->setPixel(x, y, qRgb(mix(qRed(over)), mix(qGreen(over)), mix(qBlue(over))));
        }
}
} // namespace

QPixmap smallPicture(const image &img, int side, double ratio, bool checker)
{
    const int pixels = std::max(1, int(side * ratio));
    QImage square(pixels, pixels, QImage::Format_ARGB32);
    square.fill(Qt::transparent);
    if (img.valid() && img.red && img.sampleCount() > 0) {
        const double step = std::max(img.width, img.height) / double(pixels);
        const int left = std::max(0, int((pixels - img.width / step) / 2));
        const int top = std::max(0, int((pixels - img.height / step) / 2));
        const QRect place(left, top, pixels - 2 * left, pixels - 2 * top);
        const bool warp = img.layerMode == kWarpMode;
        std::vector<double> lengths;
        lengths.reserve(size_t(place.width()) * place.height());
        for (int y = 0; y < place.height(); ++y) {
            const int64_t row = std::min<int64_t>(img.height - 1, int64_t((y + 0.5) * step));
            auto *out = reinterpret_cast<QRgb *>(square.scanLine(y + top)) + left;
            for (int x = 0; x < place.width(); ++x) {
                const int64_t column = std::min<int64_t>(img.width - 1, int64_t((x + 0.5) * step));
                const int64_t sample = row * img.width + column;
                if (warp)
                    lengths.push_back(warpLength(img, sample));
                else
                    out[x] = plainPixel(img, sample);
            }
        }
        if (warp)
            lightByLength(&square, lengths, place);
        else if (checker)
            layOnChecker(&square, place, std::max(1, int(kCheckerCell * ratio)));
    }
    QPixmap picture = QPixmap::fromImage(square);
    picture.setDevicePixelRatio(ratio);
    return picture;
}
