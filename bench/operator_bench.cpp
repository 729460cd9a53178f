// SPDX-License-Identifier: GPL-3.0-or-later
#include "yardstick.h"

#include "area/blendcurve.h"
#include "core/colour.h"
#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/pipeline/colorblending.h"
#include "operators/table/allops.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace
{
enum Mask { kEmpty, kSoft, kFull };

using Rule = std::function<Rgb(Rgb)>;

/// How a result meets the old sample, and which of the two stands first in a blend.
enum class Mixing { Linear, OldFirst, ResultFirst };

/// One operator by its script line, what it makes of a pixel, and how that is mixed in.
struct Work {
    const char *line;
    Rule rule;
    Mixing mixing = Mixing::Linear;
};

/// One table for all cases, so that undo, flags and lists are those of the program.
OperatorTable &operators()
{
    static OperatorTable table;
    if (table.operators().empty())
        addAllOperators(&table);
    return table;
}

/// The operator of a script line with its parameters; null if the line is wrong.
OpWrapper *operatorOf(const char *line)
{
    QStringList words = QString::fromLatin1(line).split(QLatin1Char(' '));
    OpWrapper *op = operators().byScriptName(words.takeFirst());
    QString usage;
    return op && op->readArguments(words.size(), words, &usage) ? op : nullptr;
}

/// Blends one channel after the other, as it is defined.
class PlainMix
{
public:
    explicit PlainMix(Mixing mixing) : order(mixing) {}
    bool gives(uint16_t stored, double old, double result, double m)
    {
        if (order == Mixing::Linear)
            return stored == uint16_t(old * (1 - m) + result * m);
        return stored == uint16_t(order == Mixing::OldFirst ? mixer.blend(old, result, m)
                                                            : mixer.blend(result, old, 1 - m));
    }

private:
    Mixing order;
    colorblending mixer;
};

/// Every sample of a prime stride is what the plain formula gives.
bool matches(const image &before, const image &after, const Work &work)
{
    PlainMix mix(work.mixing);
    for (int64_t i = 0; i < before.sampleCount(); i += 9973) {
        const double m = before.gmask[i] / 65535.0;
        const Rgb old{double(before.red[i]), double(before.green[i]), double(before.blue[i])};
        const Rgb out = work.rule(old);
        const bool same[] = {mix.gives(after.red[i], old.red, out.red, m),
                             mix.gives(after.green[i], old.green, out.green, m),
                             mix.gives(after.blue[i], old.blue, out.blue, m)};
        if (!same[0] || !same[1] || !same[2])
            return false;
    }
    return true;
}

/// What the picture holds. Noise is the worst case of a look-up table, which is then read all
/// over; shades with a little grain are what photographs have.
enum class Content { Noise, Shades };

std::shared_ptr<image> pictureOf(Content content, Mask mask)
{
    std::shared_ptr<image> picture = benchImage(mask);
    for (int64_t i = 0; content == Content::Shades && i < picture->sampleCount(); ++i) {
        const uint32_t grain = uint32_t(i) * 2654435761U >> 23;
        const auto x = uint32_t(i % picture->width), y = uint32_t(i / picture->width);
        picture->red[i] = uint16_t(x * 11 + y * 3 + grain);
        picture->green[i] = uint16_t(x * 11 + y * 4 + grain);
        picture->blue[i] = uint16_t(x * 11 + y * 5 + grain);
    }
    return picture;
}

/// An operator under one mask and Blend Mode.
BenchCase operatorCase(const Work &work, Mask mask, int mode = kBlendMatte,
                       Content content = Content::Noise)
{
    OpWrapper *op = operatorOf(work.line);
    std::shared_ptr<image> picture = pictureOf(content, mask);
    BenchCase one;
    one.run = [op, picture, mode] {
        workspace()->blendMode = mode;
        op->apply(picture.get(), nullptr);
        workspace()->blendMode = kBlendMatte;
    };
    one.check = [op, picture, work, mode, run = one.run] {
        image before;
        if (!op || !before.allocate(picture->width, picture->height, QStringLiteral("before")))
            return false;
        before.copyWorkPlanes(*picture);
        run();
        workspace()->blendMode = mode;
        const bool right = matches(before, *picture, work);
        workspace()->blendMode = kBlendMatte;
        return right;
    };
    one.reset = [picture, fresh = pictureOf(content, mask)] { copyFivePlanes(*fresh, *picture); };
    return one;
}

/// A whole Apply with its undo record, for comparisons with other programs.
BenchCase applyCase(const char *line)
{
    OpWrapper *op = operatorOf(line);
    std::shared_ptr<image> picture = benchImage(kFull);
    picture->undoLevels = 1;
    BenchCase one;
    one.run = [op, picture] {
        operators().currentOp = op->id;
        operators().apply(picture.get(), false);
    };
    one.check = [op, picture] { return op && picture->undoList.isEmpty(); };
    return one;
}

Rgb each(Rgb c, const std::function<double(double)> &channel)
{
    return {channel(c.red), channel(c.green), channel(c.blue)};
}

Rgb luma(Rgb c)
{
    Hsv hsv = rgbToHsv(c);
    hsv.value = std::min(hsv.value * 1.25, 100.0);
    return hsvToRgb(hsv);
}

Rgb saturated(Rgb c)
{
    Hsl hsl = rgbToHsl(c);
    hsl.saturation = std::min(hsl.saturation * 1.4, 100.0);
    return hslToRgb(hsl);
}

Rgb turned(Rgb c)
{
    Hsl hsl = rgbToHsl(c);
    hsl.hue += 18;
    if (hsl.hue > 360)
        hsl.hue -= 360;
    return hslToRgb(hsl);
}

Rgb tinted(Rgb c)
{
    const Hsv colour = rgbToHsv({200 * 257.0, 90 * 257.0, 30 * 257.0});
    return hsvToRgb({colour.hue, colour.saturation, rgbToHsv(c).value});
}

/// Gamma 2 on the value.
Rgb brightened(Rgb c)
{
    Hsv hsv = rgbToHsv(c);
    const double entry = std::trunc(hsv.value * 65535 / 100);
    hsv.value = std::trunc(std::pow(entry / 65535, 1 / 2.0) * 65535) * 100 / 65535;
    return hsvToRgb(hsv);
}

Rgb grey(Rgb c)
{
    const double mean =
        std::floor((0.3 * c.red + 0.59 * c.green + 0.11 * c.blue) / (0.3 + 0.59 + 0.11) + 0.5);
    return {mean, mean, mean};
}

/// Contrast 20 and brightness 5 about the middle.
Rgb contrasted(Rgb c)
{
    return each(c, [](double v) {
        const double entry = (v - 32768) * (20 / 100.0 + 1) + 32768 + 5 / 100.0 * 65535;
        return std::clamp(std::trunc(entry), 0.0, 65535.0);
    });
}

const Work kExposure{"exposure 25 0", [](Rgb c) {
                         return each(c, [](double v) { return std::min(1.25 * v, 65535.0); });
                     }};
const Work kLuma{"exposure 25 1", luma};
const Work kNegative{"negative", [](Rgb c) { return each(c, [](double v) { return 65535 - v; }); }};
const Work kSaturation{"saturation 40", saturated, Mixing::OldFirst};
const Work kHue{"hue 50", turned, Mixing::OldFirst};
const Work kColorize{"colorize 200 90 30 100 1", tinted, Mixing::OldFirst};
const Work kBurn{"burn 20",
                 [](Rgb c) {
                     const double depth = 65535 - std::trunc((100 - 20) / 100.0 * 65535);
                     return each(c, [&](double v) { return std::max(v - depth, 0.0); });
                 },
                 Mixing::OldFirst};
const Work kDodge{"dodge 20", [](Rgb c) {
                      const double height = std::trunc(20 / 100.0 * 65535);
                      return each(c, [&](double v) {
                          return std::min(v + height * v / std::max(1.0, v), 65535.0);
                      });
                  }};
const Work kMonochrome{"monochrome 0", grey};
const Work kColorFill{"colorfill 200 90 30",
                      [](Rgb) {
                          return Rgb{200 * 257.0, 90 * 257.0, 30 * 257.0};
                      },
                      Mixing::OldFirst};
const Work kContrast{"contbrit 20 5 0 1 1 1", contrasted, Mixing::ResultFirst};
const Work kGamma{"gamma 2", brightened, Mixing::ResultFirst};

void registerWork(const std::string &name, double limit, const Work &work, Mask mask,
                  int mode = kBlendMatte)
{
    registerRatio(name.c_str(), limit, [=] { return operatorCase(work, mask, mode); });
}

/// The whole picture selected, shaped by one of the curves.
BenchCase shaping(int mode)
{
    std::shared_ptr<image> picture = benchImage(kFull);
    const auto shape = [picture, mode] {
        workspace()->curveMode = mode;
        workspace()->curveAmplitude = 0.5;
        diffuseMask(picture.get());
        workspace()->curveMode = 1;
        workspace()->curveAmplitude = 1.0;
    };
    const auto reset = [picture] { picture->fillGmask(65535); };
    const auto check = [picture, shape, reset, mode] {
        reset();
        shape();
        const int x = 1500, y = 3000;
        const double halves[] = {x / 3000.0 * 0.5 * ((3999.0 - y) / 2000.0) * 0.5, 0.5,
                                 (1 - std::hypot(1500.0, 1000.0) / 3000.0) * 0.5,
                                 std::sin(x * M_PI / 6001) * 0.5 * std::sin(y * M_PI / 4001) * 0.5};
        return std::abs(picture->maskAt(x, y) - halves[mode] * 65535) < 2;
    };
    return {shape, reset, check};
}
/// Plain operators and those that look up channels: some planes read, three written.
void registerPlainWork()
{
    registerWork("exposure/full", 1.0, kExposure, kFull);
    registerWork("exposure/soft", 1.5, kExposure, kSoft);
    registerWork("negative/full", 1.0, kNegative, kFull);
    registerWork("negative/soft", 1.5, kNegative, kSoft);
    registerWork("contbrit/full", 1.0, kContrast, kFull);
    registerWork("contbrit/soft", 2.5, kContrast, kSoft);
    registerRatio("contbrit/full, shades", 1.0,
                  [] { return operatorCase(kContrast, kFull, kBlendMatte, Content::Shades); });
    registerRatio("contbrit/soft, shades", 2.5,
                  [] { return operatorCase(kContrast, kSoft, kBlendMatte, Content::Shades); });
    registerWork("burn/full", 2.0, kBurn, kFull);
    registerWork("dodge/full", 2.0, kDodge, kFull);
    registerWork("dodge/soft", 2.0, kDodge, kSoft);
    registerWork("monochrome/full", 2.0, kMonochrome, kFull);
    registerWork("monochrome/soft", 2.0, kMonochrome, kSoft);
    registerWork("colorfill/full", 2.0, kColorFill, kFull);
    for (int mode = kBlendMatte; mode <= kBlendBackground; ++mode)
        if (mode != kBlendDissolve && mode != kBlendSoftDissolve)
            registerWork("burn/soft, blend mode " + std::to_string(mode), 4.0, kBurn, kSoft, mode);
}

void registerColourModelWork()
{
    registerWork("exposure/luma", 12.0, kLuma, kFull);
    const std::pair<const char *, const Work *> works[] = {
        {"saturation", &kSaturation}, {"hue", &kHue}, {"colorize", &kColorize}, {"gamma", &kGamma}};
    for (const auto &[name, work] : works) {
        registerWork(std::string(name) + "/full", 8.0, *work, kFull);
        registerWork(std::string(name) + "/soft", 8.0, *work, kSoft);
    }
}

void registerEmptyMasks()
{
    const std::pair<const char *, const Work *> works[] = {
        {"exposure", &kExposure},     {"negative", &kNegative},
        {"contbrit", &kContrast},     {"gamma", &kGamma},
        {"saturation", &kSaturation}, {"hue", &kHue},
        {"colorize", &kColorize},     {"burn", &kBurn},
        {"dodge", &kDodge},           {"monochrome", &kMonochrome},
        {"colorfill", &kColorFill}};
    for (const auto &[name, work] : works)
        registerWork(std::string(name) + "/empty", 0.5, *work, kEmpty);
}
} // namespace

void registerOperatorBenchmarks()
{
    registerPlainWork();
    registerColourModelWork();
    registerEmptyMasks();
    registerRatio("diffuse/conical", 1.5, [] { return shaping(0); });
    registerRatio("diffuse/flat", 1.5, [] { return shaping(1); });
    registerRatio("diffuse/axis", 1.5, [] { return shaping(2); });
    registerRatio("diffuse/sine", 1.5, [] { return shaping(3); });
    // Measured against other programs; as a ratio they are of no interest.
    registerRatio("apply/gain", 20.0, [] { return applyCase("exposure 25 0"); });
    registerRatio("apply/gamma", 20.0, [] { return applyCase("gamma 2"); });
    registerRatio("apply/saturation", 20.0, [] { return applyCase("saturation 40"); });
}
