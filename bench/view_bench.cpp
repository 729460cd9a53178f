// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "views/viewrender.h"
#include "yardstick.h"

#include <memory>
#include <random>

namespace
{
constexpr int kClientWidth = 1600, kClientHeight = 1000;
constexpr double kLimit = 0.25;
constexpr double kLimitWithOutline = 0.35;

ViewGeometry clientAt(double zoom)
{
    ViewGeometry view;
    view.width = kClientWidth;
    view.height = kClientHeight;
    view.xStep = double(kBenchWidth) / kClientWidth / zoom;
    view.yStep = double(kBenchHeight) / kClientHeight / zoom;
    view.panX = zoom > 1.0 ? kBenchWidth / 3 : 0;
    view.panY = zoom > 1.0 ? kBenchHeight / 3 : 0;
    return view;
}

/// The four corners and the middle by longhand, over an opaque or random alpha.
bool showsSamples(const image &img, const ViewGeometry &view, const QImage &out)
{
    for (int y : {0, kClientHeight / 2, kClientHeight - 1})
        for (int x : {0, kClientWidth / 2, kClientWidth - 1}) {
            const int64_t at = int64_t(y * view.yStep + view.panY) * img.width +
                               int64_t(x * view.xStep + view.panX);
            const uint64_t a = img.alpha[at], grey = ((x / 8 ^ y / 8) & 1 ? 138 : 118) * 257;
            if (qRed(out.pixel(x, y)) != int((img.red[at] * a + grey * (65535 - a)) / 65535 / 256))
                return false;
        }
    return true;
}

BenchCase repaint(double zoom, bool transparent)
{
    const std::shared_ptr<image> img = benchImage(0);
    std::mt19937 random(4);
    for (int64_t i = 0; i < img->sampleCount(); ++i)
        img->alpha[i] = transparent ? uint16_t(random()) : 65535;
    const auto out = std::make_shared<QImage>();
    const ViewGeometry view = clientAt(zoom);
    BenchCase made;
    made.run = [=]() { renderView(*img, view, {}, out.get()); };
    made.check = [=]() {
        renderView(*img, view, {}, out.get());
        return showsSamples(*img, view, *out);
    };
    return made;
}

/// What a window draws when its view or its image changed: the picture and the outline of
/// the selection, none or (with `mask` 1 and 2) a ragged and a whole one.
BenchCase whole(int mask)
{
    const std::shared_ptr<image> img = benchImage(mask);
    const auto out = std::make_shared<QImage>(), outline = std::make_shared<QImage>();
    BenchCase made;
    made.run = [=]() {
        renderView(*img, clientAt(1.0), {}, out.get());
        maskOutline(*img, clientAt(1.0), 4, outline.get());
    };
    made.check = [=]() {
        return maskOutline(*img, clientAt(1.0), 4, outline.get()) == (mask != 0);
    };
    return made;
}
} // namespace

void registerViewBenchmarks();

void registerViewBenchmarks()
{
    registerRatio("view/whole", kLimit, []() { return repaint(1.0, false); });
    registerRatio("view/whole_transparent", kLimit, []() { return repaint(1.0, true); });
    registerRatio("view/inside", kLimit, []() { return repaint(8.0, false); });
    registerRatio("view/inside_transparent", kLimit, []() { return repaint(8.0, true); });
    registerRatio("view/with_outline_none", kLimitWithOutline, []() { return whole(0); });
    registerRatio("view/with_outline_soft", kLimitWithOutline, []() { return whole(1); });
    registerRatio("view/with_outline_full", kLimitWithOutline, []() { return whole(2); });
}
