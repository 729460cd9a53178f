// SPDX-License-Identifier: GPL-3.0-or-later
#include "layers/effects.h"

#include "core/colour_inline.h"
#include "core/image.h"
#include "core/layermodes.h"
#include "core/rows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

namespace
{
constexpr int kMostShift = 2000, kMostRadius = 500, kMostDepth = 100;
constexpr double kMostRelief = 4.0;
constexpr double kMiddleGrey = 32768.0;
/// Columns that are blurred down together: their running sums stay in the first cache.
constexpr int kTile = 256;

/// Limits to 0 to `most`; what is no number becomes 0.
double limited(double value, double most)
{
    return !(value > 0.0) ? 0.0 : value > most ? most : value;
}

/// How far an image may grow at each side, at most `wanted`.
int growthOf(const image &layer, int wanted)
{
    return std::min(wanted, (kMaxImageSide - std::max(layer.width, layer.height)) / 2);
}

int placed(int32_t offset, int64_t by)
{
    return int(std::clamp<int64_t>(offset + by, INT32_MIN, INT32_MAX));
}

/// A picture for an effect, zeroed, `growth` larger on each side and placed to match.
std::unique_ptr<image> makeResult(const image &layer, const char *tag, int mode, int growth)
{
    auto result = std::make_unique<image>();
    const QString name = layer.name + QLatin1String(tag);
    if (!layer.valid() ||
        !result->allocateUnfilled(layer.width + 2 * growth, layer.height + 2 * growth, name))
        return nullptr;
    result->copyMetadata(layer);
    result->layerMode = mode;
    result->xOffset = placed(layer.xOffset, -growth);
    result->yOffset = placed(layer.yOffset, -growth);
    result->xFraction = layer.xFraction;
    result->yFraction = layer.yFraction;
    result->changed = true;
    return result;
}

// --- Blur -------------------------------------------------------------------------------

/// The half widths of three box averages that together reach `radius`: their succession is
/// close to a Gaussian and costs the same whatever the radius.
std::array<int, 3> boxesFor(int radius)
{
    return {radius / 3, (radius + 1) / 3, (radius + 2) / 3};
}

/// Averages 2 * half + 1 samples around each; there is nothing beyond the ends.
void blurRow(const uint16_t *from, uint16_t *to, int width, int half)
{
    const float share = 1.0F / float(2 * half + 1);
    int32_t sum = 0;
    for (int x = 0; x < std::min(half, width); ++x)
        sum += from[x];
    for (int x = 0; x < width; ++x) {
        sum += x + half < width ? from[x + half] : 0;
        to[x] = uint16_t(float(sum) * share + 0.5F);
        sum -= x >= half ? from[x - half] : 0;
    }
}

/// blurRow for `columns` (at most kTile) columns at once, downward.
void blurColumns(const uint16_t *from, uint16_t *to, int width, int height, int columns, int half)
{
    const float share = 1.0F / float(2 * half + 1);
    std::array<int32_t, kTile> sums = {};
    const auto row = [=](int y) { return from + int64_t(y) * width; };
    for (int y = 0; y < std::min(half, height); ++y)
        for (int x = 0; x < columns; ++x)
            sums[x] += row(y)[x];
    for (int y = 0; y < height; ++y) {
        if (y + half < height)
            for (int x = 0; x < columns; ++x)
                sums[x] += row(y + half)[x];
        uint16_t *target = to + int64_t(y) * width;
        for (int x = 0; x < columns; ++x)
            target[x] = uint16_t(int32_t(float(sums[x]) * share + 0.5F));
        if (y >= half)
            for (int x = 0; x < columns; ++x)
                sums[x] -= row(y - half)[x];
    }
}

/// Blurs the plane by way of `work`, a plane of the same size, whose content is lost.
void blur(uint16_t *plane, uint16_t *work, int width, int height, int radius)
{
    if (radius == 0)
        return;
    const std::array<int, 3> half = boxesFor(radius);
    parallelRows(height, width * 3, [=](int first, int end) {
        for (int64_t y = first; y < end; ++y) {
            uint16_t *a = plane + y * width, *b = work + y * width;
            blurRow(a, b, width, half[0]);
            blurRow(b, a, width, half[1]);
            blurRow(a, b, width, half[2]);
        }
    });
    const int tiles = (width + kTile - 1) / kTile;
    parallelRows(tiles, std::min(width, kTile) * height, [=](int first, int end) {
        for (int x = first * kTile; x < std::min(end * kTile, width); x += kTile) {
            const int columns = std::min(kTile, width - x);
            blurColumns(work + x, plane + x, width, height, columns, half[0]);
            blurColumns(plane + x, work + x, width, height, columns, half[1]);
            blurColumns(work + x, plane + x, width, height, columns, half[2]);
        }
    });
}

/// The shape of the layer, blurred, at its place in a larger plane.
void blurShape(const image &layer, image *result, int growth, int radius)
{
    parallelRows(layer.height, layer.width, [&](int first, int end) {
        for (int64_t y = first; y < end; ++y)
            std::copy_n(layer.alpha + y * layer.width, layer.width,
                        result->alpha + (y + growth) * result->width + growth);
    });
    blur(result->alpha, result->red, result->width, result->height, radius);
}

image *makeBlurred(const image &layer, const char *tag, const ShadowSettings &settings)
{
    const int radius = std::clamp(settings.radius, 0, kMostRadius);
    const int growth = growthOf(layer, radius);
    std::unique_ptr<image> result = makeResult(layer, tag, kMultiplyMode, growth);
    if (!result)
        return nullptr;
    result->xOffset = placed(result->xOffset, std::clamp(settings.xShift, -kMostShift, kMostShift));
    result->yOffset = placed(result->yOffset, std::clamp(settings.yShift, -kMostShift, kMostShift));
    blurShape(layer, result.get(), growth, radius);
    const float strength = float(limited(settings.strength, 1.0));
    parallelRows(result->height, result->width * 4, [&](int first, int end) {
        const int64_t begin = int64_t(first) * result->width;
        const int64_t stop = int64_t(end) * result->width;
        std::fill(result->red + begin, result->red + stop, settings.red);
        std::fill(result->green + begin, result->green + stop, settings.green);
        std::fill(result->blue + begin, result->blue + stop, settings.blue);
        for (int64_t i = begin; i < stop; ++i)
            result->alpha[i] = uint16_t(int32_t(float(result->alpha[i]) * strength + 0.5F));
    });
    return result.release();
}

// --- Relief -----------------------------------------------------------------------------

struct Relief {
    int dx, dy; ///< step towards the light, in samples; rows run downward
    int depth;
    float strength;
};

Relief reliefOf(const ReliefSettings &settings)
{
    const double angle = std::isfinite(settings.angle) ? settings.angle * M_PI / 180.0 : 0.0;
    const int depth = std::clamp(settings.depth, 1, kMostDepth);
    return {int(std::lround(depth * std::cos(angle))), -int(std::lround(depth * std::sin(angle))),
            depth, float(limited(settings.strength, kMostRelief))};
}

uint16_t aroundGrey(float difference, float strength)
{
    return uint16_t(clampSampleValue(kMiddleGrey + double(std::nearbyint(strength * difference))));
}

uint16_t lumaAt(const image &img, int64_t i)
{
    Rgb rgb = {double(img.red[i]), double(img.green[i]), double(img.blue[i])};
    if (img.imageMode == 1)
        rgb = inlined::yrbToRgb({rgb.red, rgb.green, rgb.blue});
    return uint16_t(clampSampleValue(0.3 * rgb.red + 0.59 * rgb.green + 0.11 * rgb.blue + 0.5));
}

/// The light and shade of the samples of one row of an embossed layer.
void embossRow(const image &layer, const uint16_t *height, const Relief &relief, int y,
               uint16_t *grey)
{
    const int64_t here = int64_t(y) * layer.width;
    const auto line = [&](int step) {
        return int64_t(std::clamp(y + step, 0, layer.height - 1)) * layer.width;
    };
    const int64_t towards = line(relief.dy), away = line(-relief.dy);
    const auto heightAt = [&](int64_t i, float own) {
        return own + (float(height[i]) - own) * (float(layer.alpha[i]) * (1.0F / 65535.0F));
    };
    for (int x = 0; x < layer.width; ++x) {
        const float own = height[here + x];
        const int64_t lit = towards + std::clamp(x + relief.dx, 0, layer.width - 1);
        const int64_t dark = away + std::clamp(x - relief.dx, 0, layer.width - 1);
        grey[here + x] = aroundGrey(heightAt(dark, own) - heightAt(lit, own), relief.strength);
    }
}

/// Alpha of the layer at a place that may lie outside of it.
uint16_t shapeAt(const image &layer, int x, int y)
{
    const bool inside = x >= 0 && y >= 0 && x < layer.width && y < layer.height;
    return inside ? layer.alpha[int64_t(y) * layer.width + x] : 0;
}

void punchRow(const image &layer, const Relief &relief, int growth, int y, image *result)
{
    const int64_t here = int64_t(y) * result->width;
    const int row = y - growth;
    for (int x = 0; x < result->width; ++x) {
        const int column = x - growth;
        const uint16_t lit = shapeAt(layer, column + relief.dx, row + relief.dy);
        const uint16_t dark = shapeAt(layer, column - relief.dx, row - relief.dy);
        const uint16_t grey = aroundGrey(float(lit) - float(dark), relief.strength);
        result->red[here + x] = result->green[here + x] = result->blue[here + x] = grey;
        result->alpha[here + x] = std::max({lit, dark, shapeAt(layer, column, row)});
    }
}
} // namespace

image *makeShadow(const image &layer, const ShadowSettings &settings)
{
    return makeBlurred(layer, "[shadow]", settings);
}

image *makeGlow(const image &layer, const GlowSettings &settings)
{
    return makeBlurred(
        layer, "[glow]",
        {0, 0, settings.radius, settings.strength, settings.red, settings.green, settings.blue});
}

image *makeEmboss(const image &layer, const ReliefSettings &settings)
{
    std::unique_ptr<image> result = makeResult(layer, "[emboss]", kAddGreyMode, 0);
    if (!result)
        return nullptr;
    uint16_t *height = result->blue; // until the heights have been read
    parallelRows(layer.height, layer.width * 2, [&](int first, int end) {
        const int64_t begin = int64_t(first) * layer.width, stop = int64_t(end) * layer.width;
        for (int64_t i = begin; i < stop; ++i)
            height[i] = lumaAt(layer, i);
        std::copy(layer.alpha + begin, layer.alpha + stop, result->alpha + begin);
    });
    const Relief relief = reliefOf(settings);
    parallelRows(layer.height, layer.width * 2, [&](int first, int end) {
        for (int y = first; y < end; ++y)
            embossRow(layer, height, relief, y, result->red);
    });
    parallelRows(layer.height, layer.width * 2, [&](int first, int end) {
        const int64_t begin = int64_t(first) * layer.width, stop = int64_t(end) * layer.width;
        std::copy(result->red + begin, result->red + stop, result->green + begin);
        std::copy(result->red + begin, result->red + stop, result->blue + begin);
    });
    return result.release();
}

image *makePunch(const image &layer, const ReliefSettings &settings)
{
    const Relief relief = reliefOf(settings);
    const int growth = growthOf(layer, relief.depth);
    std::unique_ptr<image> result = makeResult(layer, "[punch]", kAddGreyMode, growth);
    if (!result)
        return nullptr;
    parallelRows(result->height, result->width * 4, [&](int first, int end) {
        for (int y = first; y < end; ++y)
            punchRow(layer, relief, growth, y, result.get());
    });
    return result.release();
}
