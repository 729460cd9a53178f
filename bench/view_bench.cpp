// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/areastate.h"
#include "area/areatools.h"
#include "area/wand.h"
#include "core/image.h"
#include "core/workspace.h"
#include "views/commitselection.h"
#include "views/imgwindow.h"
#include "views/selectionoutline.h"
#include "views/viewrender.h"
#include "yardstick.h"

#include <QByteArray>
#include <QPainter>

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

/// The end of a gesture without its undo record, which has a limit of its own, and with the
/// outline on the screen.
BenchCase commit(int tool)
{
    static const std::unique_ptr<AreaState> state(areaState() ? nullptr : new AreaState);
    return windowAt([tool](imgWindow *window) {
        workspace()->rectaa = workspace()->ellaa = workspace()->polyaa = false;
        window->img->noUndo = true;
        const bool ellipse = tool == kToolEllipse;
        window->gesture.bandStart = ellipse ? QPointF(3000, 2000) : QPointF(900, 600);
        window->gesture.bandEnd = ellipse ? QPointF(5400, 3600) : QPointF(5099, 3399);
        constexpr int corners = 1000;
        for (int i = 0; tool == kToolPolygon && i <= corners; ++i) {
            const double angle = 2 * M_PI * i / corners, reach = 1400 + i % corners * 7919 % 500;
            areaState()->appendPoint(int(3000 + 1.5 * reach * std::cos(angle)),
                                     int(2000 + reach * std::sin(angle)));
        }
        commitSelection(window, tool);
    });
}

/// One step of a drag of the wand on a picture of 4 megapixels, up to its outline on the
/// screen: the job, its mask joined with the selection before, the overlay.
BenchCase wandStep()
{
    struct Shown {
        std::unique_ptr<image> img = std::make_unique<image>();
        std::unique_ptr<imgWindow> window;

        Shown()
        {
            img->allocate(2400, 1700, QStringLiteral("wand"));
            std::mt19937 random(3);
            for (int64_t i = 0; i < img->sampleCount(); ++i)
                img->green[i] = uint16_t(30000 + random() % 9000);
            img->noUndo = true;
            workspace()->images << img.get();
            window = std::make_unique<imgWindow>(img.get());
            window->resize(kClientWidth, kClientHeight);
        }
        ~Shown() { workspace()->images.removeAll(img.get()); }
    };
    const auto shown = std::make_shared<Shown>();
    const auto screen = std::make_shared<QImage>(kClientWidth, kClientHeight, QImage::Format_RGB32);
    BenchCase made;
    made.run = [=, tolerance = 5]() mutable {
        imgWindow *window = shown->window.get();
        tolerance = 5 + (tolerance + 1) % 10;
        window->addToMask = true;
        window->maskProducer = [tolerance](const image &img, uint16_t *mask) {
            return wandMask(img, 1200, 850, tolerance, false, false, mask);
        };
        window->startWorker(WorkerThread::Mask);
        window->finishJobs(true);
        window->render(screen.get());
    };
    made.check = [=]() {
        return shown->img->anyMaskSet() || (made.run(), shown->img->anyMaskSet());
    };
    return made;
}

/// What a window draws when its view or its image changed: the picture and the outline of
/// the selection, none or (with `mask` 1 and 2) a ragged and a whole one.
BenchCase whole(int mask)
{
    const std::shared_ptr<image> img = benchImage(mask);
    const auto out = std::make_shared<QImage>();
    const auto outline = std::make_shared<SelectionOutline>();
    BenchCase made;
    made.run = [=]() {
        renderView(*img, clientAt(1.0), {}, out.get());
        outline->trace(*img, clientAt(1.0), 1);
        QPainter painter(out.get());
        outline->draw(&painter, {});
    };
    made.check = [=]() { return outline->trace(*img, clientAt(1.0), 1) == (mask != 0); };
    return made;
}

/// A selection of squares, so that about 100,000 pixels of the view are on its edge.
void selectSquares(image *img)
{
    constexpr int side = 130, inner = 70; // samples; 3.75 of them are a pixel
    for (int y = 0; y < img->height; ++y)
        for (int x = 0; x < img->width; ++x)
            img->gmask[int64_t(y) * img->width + x] =
                x % side < inner && y % side < inner ? 65535 : 0;
}

/// One step of the march of such an outline, all of it in view.
BenchCase marchStep()
{
    const std::shared_ptr<image> img = benchImage(0);
    selectSquares(img.get());
    const auto outline = std::make_shared<SelectionOutline>();
    const auto screen = std::make_shared<QImage>(kClientWidth, kClientHeight, QImage::Format_RGB32);
    outline->trace(*img, clientAt(1.0), 1);
    BenchCase made;
    made.run = [=, phase = 0]() mutable {
        DashLook look;
        look.phase = ++phase % look.period();
        QPainter painter(screen.get());
        outline->draw(&painter, look);
    };
    made.check = [=]() { return outline->seen() && outline->traceCount() == 1; };
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
    // 16.6 ms for the pan and the overlay, at 18 ms for a plane copy and with some room
    registerRatio("view/pan_with_outline", 0.6, []() {
        return windowAt([first = true](imgWindow *window) mutable {
            if (first)
                selectSquares(window->img);
            first = false;
            window->command(window->panX > 0 ? kCommandLeft10 : kCommandRight10);
        });
    });
    registerRatio("commit/rectangle", 1.0, []() { return commit(kToolRectangle); });
    registerRatio("commit/ellipse", 1.0, []() { return commit(kToolEllipse); });
    registerRatio("commit/polygon", 1.0, []() { return commit(kToolPolygon); });
    registerRatio("view/wand_drag_step", 5.0, []() { return wandStep(); }); // ten a second
    registerRatio("view/march_step", 0.25, []() { return marchStep(); });
    registerRatio("view/with_outline_none", kLimitWithOutline, []() { return whole(0); });
    // noise everywhere: an outline around nearly every pixel, traced and drawn
    registerRatio("view/with_outline_soft", 0.5, []() { return whole(1); });
    registerRatio("view/with_outline_full", kLimitWithOutline, []() { return whole(2); });
}
