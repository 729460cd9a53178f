// SPDX-License-Identifier: GPL-3.0-or-later
#include "layers/splits.h"

#include "core/colour_inline.h"
#include "core/image.h"
#include "core/layermodes.h"
#include "core/rows.h"

#include <algorithm>
#include <array>
#include <memory>

namespace
{
constexpr uint16_t kFull = 65535;

struct Sample {
    uint16_t red, green, blue;
};

struct PartKind {
    const char *tag;
    int mode;
};

std::unique_ptr<image> makePart(const image &source, const PartKind &kind)
{
    auto part = std::make_unique<image>();
    const QString name = source.name + QLatin1String(kind.tag);
    if (!part->allocateUnfilled(source.width, source.height, name))
        return nullptr;
    part->copyMetadata(source);
    part->layerMode = kind.mode;
    part->xOffset = source.xOffset;
    part->yOffset = source.yOffset;
    part->xFraction = source.xFraction;
    part->yFraction = source.yFraction;
    part->changed = true;
    return part;
}

Sample colorAt(const image &source, int64_t i)
{
    const Sample stored = {source.red[i], source.green[i], source.blue[i]};
    if (source.imageMode != 1)
        return stored;
    const Rgb rgb =
        inlined::yrbToRgb({double(stored.red), double(stored.green), double(stored.blue)});
    return {uint16_t(rgb.red), uint16_t(rgb.green), uint16_t(rgb.blue)};
}

/// Makes the parts that `rule` tells for each colour, one Sample for each part.
template <size_t N, class Rule>
QList<image *> split(const image &source, const std::array<PartKind, N> &kinds, Rule rule)
{
    if (!source.valid())
        return {};
    std::array<std::unique_ptr<image>, N> parts;
    for (size_t p = 0; p < N; ++p) {
        parts[p] = makePart(source, kinds[p]);
        if (!parts[p])
            return {};
    }
    parallelRows(source.height, source.width * int(N), [&](int first, int end) {
        const int64_t begin = int64_t(first) * source.width, stop = int64_t(end) * source.width;
        for (int64_t i = begin; i < stop; ++i) {
            const std::array<Sample, N> samples = rule(colorAt(source, i));
            for (size_t p = 0; p < N; ++p) {
                parts[p]->red[i] = samples[p].red;
                parts[p]->green[i] = samples[p].green;
                parts[p]->blue[i] = samples[p].blue;
            }
        }
        for (const auto &part : parts)
            std::copy(source.alpha + begin, source.alpha + stop, part->alpha + begin);
    });
    QList<image *> list;
    for (auto &part : parts)
        list << part.release();
    return list;
}

Sample grey(uint16_t value)
{
    return {value, value, value};
}

/// A component of 0 to `most` over the whole range of samples.
Sample spread(double component, double most)
{
    return grey(uint16_t(clampSampleValue(component / most * kWhite + 0.5)));
}

/// What must be multiplied with black / 65535 to give the sample: rounded up, because the
/// product is truncated when the parts are composed.
uint16_t withoutBlack(uint16_t sample, uint16_t black)
{
    return black == 0 ? kFull : uint16_t((uint32_t(sample) * kFull + black - 1) / black);
}
} // namespace

QList<image *> splitChannels(const image &source)
{
    constexpr std::array<PartKind, 3> kinds = {
        {{"[red]", kNormalMode}, {"[green]", kAddMode}, {"[blue]", kAddMode}}};
    return split(source, kinds, [](Sample s) {
        return std::array<Sample, 3>{{{s.red, 0, 0}, {0, s.green, 0}, {0, 0, s.blue}}};
    });
}

QList<image *> splitCMY(const image &source)
{
    constexpr std::array<PartKind, 3> kinds = {
        {{"[cyan]", kNormalMode}, {"[magenta]", kMultiplyMode}, {"[yellow]", kMultiplyMode}}};
    return split(source, kinds, [](Sample s) {
        return std::array<Sample, 3>{
            {{s.red, kFull, kFull}, {kFull, s.green, kFull}, {kFull, kFull, s.blue}}};
    });
}

QList<image *> splitCMYK(const image &source)
{
    constexpr std::array<PartKind, 4> kinds = {{{"[cyan]", kNormalMode},
                                                {"[magenta]", kMultiplyMode},
                                                {"[yellow]", kMultiplyMode},
                                                {"[black]", kMultiplyMode}}};
    return split(source, kinds, [](Sample s) {
        const uint16_t black = std::max({s.red, s.green, s.blue});
        return std::array<Sample, 4>{{{withoutBlack(s.red, black), kFull, kFull},
                                      {kFull, withoutBlack(s.green, black), kFull},
                                      {kFull, kFull, withoutBlack(s.blue, black)},
                                      grey(black)}};
    });
}

QList<image *> splitHSV(const image &source)
{
    constexpr std::array<PartKind, 3> kinds = {
        {{"[value]", kValueMode}, {"[saturation]", kSaturationMode}, {"[hue]", kHueMode}}};
    return split(source, kinds, [](Sample s) {
        const Hsv hsv = inlined::rgbToHsv({double(s.red), double(s.green), double(s.blue)});
        return std::array<Sample, 3>{
            {spread(hsv.value, 100), spread(hsv.saturation, 100), spread(hsv.hue, 360)}};
    });
}
