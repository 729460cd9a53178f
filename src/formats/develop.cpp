// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/develop.h"

#include "core/image.h"
#include "core/rows.h"
#include "core/undo.h"
#include "formats/orient.h"
#include "layers/stack.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <vector>

namespace
{
constexpr int kValues = 65536;
constexpr int kUpright = 1;
/// One pixel in so many may be brighter than what is taken for white.
constexpr int64_t kBrighterThanWhite = 200;
constexpr double kWhiteGoesTo = 0.9, kMostGain = 16.0;
constexpr double kKnee = 0.7;

/// The light that all but the brightest half of a percent of the pixels stay below, each
/// counted by its brightest channel.
double whiteOf(const image &img)
{
    std::vector<int64_t> counts(kValues);
    std::mutex lock; // guards counts
    parallelRows(img.height, img.width * 3, [&](int first, int end) {
        std::vector<uint32_t> own(kValues);
        const int64_t stop = int64_t(end) * img.width;
        for (int64_t i = int64_t(first) * img.width; i < stop; ++i)
            ++own[std::max({img.red[i], img.green[i], img.blue[i]})];
        const std::lock_guard guard(lock);
        for (int v = 0; v < kValues; ++v)
            counts[v] += own[v];
    });
    const int64_t brighter = img.sampleCount() / kBrighterThanWhite;
    int white = kValues - 1;
    for (int64_t seen = counts[white]; white > 0 && seen <= brighter; seen += counts[white])
        --white;
    return white / kWhite;
}

/// Part of the shoulder's height at `t`, in knees' widths above the knee, that ends at `end`.
double shoulder(double t, double end)
{
    return t * (1.0 + t / (end * end)) / (1.0 + t);
}

double transfer(double light)
{
    return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

std::vector<uint16_t> curveTable(double white)
{
    std::vector<uint16_t> table(kValues);
    for (int v = 0; v < kValues; ++v)
        table[v] = uint16_t(std::clamp(developCurve(v / kWhite, white), 0.0, 1.0) * kWhite);
    return table;
}

void bend(const image &img, const std::vector<uint16_t> &table)
{
    parallelRows(img.height, img.width * 3, [&](int first, int end) {
        for (uint16_t *plane : {img.red, img.green, img.blue})
            for (int64_t i = int64_t(first) * img.width; i < int64_t(end) * img.width; ++i)
                plane[i] = table[plane[i]];
    });
}
} // namespace

double developCurve(double light, double white)
{
    const double gain = std::clamp(kWhiteGoesTo / std::max(white, 1e-9), kWhiteGoesTo, kMostGain);
    const double bright = light * gain;
    if (bright <= kKnee)
        return transfer(bright);
    const double above = 1.0 - kKnee;
    return transfer(kKnee + above * shoulder((bright - kKnee) / above, (gain - kKnee) / above));
}

bool developRaw(image *img)
{
    if (!img || !img->valid() || img->kind == 1 || img->cameraOrientation < kUpright)
        return false;
    const std::vector<uint16_t> table = curveTable(whiteOf(*img));
    // A turn makes the act's undo record; without one it is still to be made.
    if (img->cameraOrientation == kUpright)
        beginAct(img);
    else if (!orientImage(img, img->cameraOrientation))
        return false;
    bend(*img, table);
    img->cameraOrientation = 0;
    samplesChanged(img);
    return true;
}
