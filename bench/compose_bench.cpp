// SPDX-License-Identifier: GPL-3.0-or-later
#include "yardstick.h"

#include "core/compose.h"
#include "core/rows.h"

#include <array>
#include <string>
#include <vector>

namespace
{
enum class Alpha { Full, Any };

/// One layer of the benchmark size. It is lightweight: ten full ones would not fit beside
/// each other everywhere.
image *benchLayer(int mode, double opacity, Alpha alpha, uint32_t seed)
{
    auto made = std::make_unique<image>();
    made->lightweight = true;
    if (!made->allocateUnfilled(kBenchWidth, kBenchHeight, QStringLiteral("layer")))
        std::abort();
    image *layer = made.release();
    layer->kind = 2;
    layer->layerMode = mode;
    layer->opacity = opacity;
    parallelRows(layer->height, layer->width, [=](int first, int end) {
        for (int64_t i = int64_t(first) * layer->width; i < int64_t(end) * layer->width; ++i) {
            const uint32_t noise = (uint32_t(i) + seed) * 2654435761U;
            layer->red[i] = uint16_t(noise >> 16);
            layer->green[i] = uint16_t(i * 10 + seed);
            layer->blue[i] = uint16_t(noise >> 8);
            layer->alpha[i] = alpha == Alpha::Full ? 65535 : uint16_t(noise >> 12);
        }
    });
    return layer;
}

struct Master {
    image *img = benchImage(0).release();

    Master() { img->kind = 1; }
    ~Master() { destroyTree(&img); }
    Master(const Master &) = delete;
    Master &operator=(const Master &) = delete;

    void add(int mode, double opacity, Alpha alpha)
    {
        image *layer = benchLayer(mode, opacity, alpha, uint32_t(img->layers.size()) * 77777);
        layer->master = img;
        img->layers << layer;
    }
};

BenchCase composing(const std::shared_ptr<Master> &master)
{
    return {[=] { compose(master->img, false); }, nullptr, nullptr};
}

BenchCase opaqueNormal()
{
    const auto master = std::make_shared<Master>();
    master->add(0, 1.0, Alpha::Full);
    BenchCase made = composing(master);
    made.check = [=] {
        compose(master->img, false);
        const image &found = *master->img, &layer = *found.layers.first();
        for (size_t p = 0; p < 4; ++p)
            if (!std::equal(layer.colorPlanes()[p], layer.colorPlanes()[p] + layer.sampleCount(),
                            found.colorPlanes()[p]))
                return false;
        return true;
    };
    return made;
}

/// A layer with alpha that varies from pixel to pixel, alone or over an opaque base.
BenchCase varied(int mode, bool based)
{
    const auto master = std::make_shared<Master>();
    if (based)
        master->add(0, 1.0, Alpha::Full);
    master->add(mode, 1.0, Alpha::Any);
    return composing(master);
}

BenchCase equalLayers(int mode, int count)
{
    const auto master = std::make_shared<Master>();
    for (int i = 0; i < count; ++i)
        master->add(mode, 1.0, Alpha::Any);
    return composing(master);
}

/// Modes of which other programs have the like: Normal, Multiply, Screen, Overlay, Darken,
/// Brighten, Add, Difference, Dodge and Burn.
BenchCase tenLayers()
{
    const auto master = std::make_shared<Master>();
    int step = 0;
    for (const int mode : {0, 5, 23, 36, 28, 41, 1, 54, 8, 9})
        master->add(mode, 0.5 + 0.1 * (step++ % 5), Alpha::Full);
    return composing(master);
}
} // namespace

void registerComposeBenchmarks()
{
    registerRatio("compose/opaque Normal", 1, opaqueNormal);
    const struct {
        const char *name;
        int mode;
        double limit;
    } modes[] = {{"Add", 1, 2},          {"Multiply", 5, 2},    {"Screen", 23, 2},
                 {"Overlay", 36, 2},     {"Difference", 54, 2}, {"Hue", 30, 10},
                 {"Saturation", 31, 10}, {"Value", 32, 10}};
    for (const auto &one : modes)
        for (const bool based : {false, true}) {
            const std::string name =
                std::string("compose/") + one.name + (based ? " over an opaque Normal" : " alone");
            registerRatio(name.c_str(), one.limit + based, // the base takes its own copy
                          [one, based] { return varied(one.mode, based); });
        }
    registerRatio("compose/Median of five", 25, [] { return equalLayers(29, 5); });
    registerRatio("compose/ten layers at partial opacity", 20, tenLayers);
}
