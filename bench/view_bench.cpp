// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/viewrender.h"
#include "yardstick.h"

#include <QByteArray>

#include <cmath>
#include <memory>
#include <random>

namespace
{
constexpr int kClientWidth = 1600, kClientHeight = 1000;
constexpr double kLimit = 0.25;
constexpr double kLimitWithOutline = 0.35;

/// The checker behind a pixel, which is pinned to image position 0.
int square(int pixel, double step, int pan)
{
    return int(std::floor((pixel + std::floor(pan / step + 0.5)) / 8));
}

/// `zoom` 1 shows the whole picture.
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
            const double column = x * view.xStep + view.panX, row = y * view.yStep + view.panY;
            if (column >= img.width || row >= img.height)
                continue;
            const int64_t at = int64_t(row) * img.width + int64_t(column);
            const int squares = square(x, view.xStep, view.panX) + square(y, view.yStep, view.panY);
            const uint64_t a = img.alpha[at], grey = (squares & 1 ? 138 : 118) * 257;
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

/// A pan to and fro by 7 client pixels both ways, of a picture shown at 4 samples a pixel.
BenchCase panStep()
{
    const std::shared_ptr<image> img = benchImage(0);
    const auto out = std::make_shared<QImage>();
    ViewGeometry one = clientAt(kBenchWidth / (4.0 * kClientWidth));
    one.xStep = one.yStep = 4.0;
    one.panX = one.panY = 0;
    ViewGeometry two = one;
    two.panX += 28;
    two.panY += 28;
    const auto back = std::make_shared<bool>(false);
    renderView(*img, one, {}, out.get());
    BenchCase made;
    made.run = [=]() {
        scrollView(*img, *back ? two : one, *back ? one : two, {}, out.get());
        *back = !*back;
    };
    made.check = [=]() {
        const bool moved = scrollView(*img, one, two, {}, out.get());
        *back = true;
        return moved && showsSamples(*img, two, *out);
    };
    return made;
}

/// A window on the screen at work: what `step` changes is painted.
BenchCase windowAt(std::function<void(imgWindow *)> step)
{
    struct Shown {
        std::unique_ptr<image> img = benchImage(0);
        imgWindow window{img.get()};

        Shown()
        {
            workspace()->images << img.get();
            window.resize(kClientWidth, kClientHeight);
            img->guidesX << kBenchWidth / 2;
        }
        ~Shown() { workspace()->images.removeAll(img.get()); }
    };
    const auto shown = std::make_shared<Shown>();
    const auto screen = std::make_shared<QImage>(kClientWidth, kClientHeight, QImage::Format_RGB32);
    shown->window.render(screen.get());
    BenchCase made;
    made.run = [=]() {
        step(&shown->window);
        shown->window.render(screen.get());
    };
    made.check = [=]() { return shown->window.renderCount() > 0; };
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
    for (const bool transparent : {false, true}) {
        const QByteArray end = transparent ? "_transparent" : "";
        for (const auto &[name, zoom] : {std::pair<const char *, double>{"1_8", 0.125},
                                         {"1_3", 1.0 / 3},
                                         {"1", 1.0},
                                         {"3", 3.0},
                                         {"16", 16.0}})
            registerRatio("view/zoom_" + QByteArray(name) + end, kLimit,
                          [zoom = zoom, transparent]() { return repaint(zoom, transparent); });
    }
    registerRatio("view/pan_step", kLimit, []() { return panStep(); });
    registerRatio("view/wheel_step", kLimit, []() {
        return windowAt([turn = 0](imgWindow *window) mutable {
            window->zoomTo(window->unityIndex + ++turn % 4, {800, 500});
        });
    });
    registerRatio("view/overlay", kLimit,
                  []() { return windowAt([](imgWindow *window) { window->refreshOverlay(); }); });
    registerRatio("view/with_outline_none", kLimitWithOutline, []() { return whole(0); });
    registerRatio("view/with_outline_soft", kLimitWithOutline, []() { return whole(1); });
    registerRatio("view/with_outline_full", kLimitWithOutline, []() { return whole(2); });
}
