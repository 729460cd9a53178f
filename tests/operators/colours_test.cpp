// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/burn.h"
#include "operators/adjustment/colorize.h"
#include "operators/adjustment/dodge.h"
#include "operators/adjustment/hue.h"
#include "operators/adjustment/saturation.h"
#include "operators/compose/colorfill.h"
#include "operators/filter/monochrome.h"

#include "core/colour.h"
#include "core/cpu.h"
#include "operators/base/operatortable.h"
#include "operators/pipeline/colorblending.h"
#include "operators/table/allops.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <random>

namespace
{
constexpr double kTop = 65535.0;

enum Mask { RandomWords, Runs, Full, Empty, FullButOne, kMasks };

/// Greys, primaries, black, white and near ties come first, random pixels and alpha of runs of
/// 0 after them.
ImagePtr testPicture(int mask)
{
    ImagePtr img = randomImage(1021, 5, uint32_t(mask) + 1);
    std::mt19937 generator(7);
    const uint16_t corners[] = {0, 1, 32768, 65534, 65535};
    for (int i = 0; i < 1021; ++i) {
        const auto grey = uint16_t(i * 64);
        img->red[i] = i < 400 ? grey : corners[i % 5];
        img->green[i] = i < 400 ? grey : corners[i / 5 % 5];
        img->blue[i] = i < 400 ? uint16_t(grey + i % 2) : corners[i / 25 % 5];
    }
    for (int64_t i = 2000; i < 2900; ++i)
        img->alpha[i] = i < 2600 ? 0 : 65535;
    if (mask == Full || mask == FullButOne)
        img->fillGmask(65535);
    if (mask == Empty)
        img->fillGmask(0);
    if (mask == FullButOne)
        img->gmask[3000] = 65534;
    for (int64_t i = 0; mask == Runs && i < img->sampleCount();) {
        const uint16_t word = generator() % 3 == 0 ? 0 : generator() % 2 ? 65535 : 300;
        for (int64_t n = generator() % 700; n >= 0 && i < img->sampleCount(); --n)
            img->gmask[i++] = word;
    }
    return img;
}

/// What an operator makes of a pixel; nothing: the pixel is passed over.
using Rule = std::function<std::optional<Rgb>(Rgb old, uint16_t alpha, uint16_t mask)>;

struct Case {
    const char *name;
    OpWrapper *op;
    Rule rule;
    bool blends = true, fills = false;
};

void byHand(image &img, const Case &one, bool throughAlpha)
{
    colorblending mixer;
    for (int64_t i = 0; i < img.sampleCount(); ++i) {
        const Rgb old{double(img.red[i]), double(img.green[i]), double(img.blue[i])};
        const std::optional<Rgb> made = one.rule(old, img.alpha[i], img.gmask[i]);
        if (!made)
            continue;
        double m = img.gmask[i] / kTop;
        if (throughAlpha)
            m = img.alpha[i] / kTop * m;
        const auto mixed = [&](double a, double b) {
            return uint16_t(one.blends ? mixer.blend(a, b, m) : a * (1 - m) + b * m);
        };
        img.red[i] = mixed(old.red, made->red);
        img.green[i] = mixed(old.green, made->green);
        img.blue[i] = mixed(old.blue, made->blue);
        if (one.fills && !throughAlpha)
            img.alpha[i] = uint16_t(std::min(img.gmask[i] + img.alpha[i], 65535));
    }
}

Rule whereSeen(std::function<Rgb(Rgb)> plain)
{
    return [plain](Rgb old, uint16_t alpha, uint16_t mask) -> std::optional<Rgb> {
        if (alpha == 0 || mask == 0)
            return std::nullopt;
        return plain(old);
    };
}

Rule everywhere(std::function<Rgb(Rgb)> plain)
{
    return [plain](Rgb old, uint16_t, uint16_t) { return plain(old); };
}

Rgb each(Rgb old, const std::function<double(double)> &channel)
{
    return {channel(old.red), channel(old.green), channel(old.blue)};
}

Rule saturated(int amount)
{
    return whereSeen([factor = (amount + 100) / 100.0](Rgb old) {
        Hsl hsl = rgbToHsl(old);
        hsl.saturation = std::min(hsl.saturation * factor, 100.0);
        return hslToRgb(hsl);
    });
}

Rule turned(int amount)
{
    return whereSeen([shift = amount / 100.0 * 36](Rgb old) {
        Hsl hsl = rgbToHsl(old);
        hsl.hue += shift;
        if (hsl.hue > 360)
            hsl.hue -= 360;
        if (hsl.hue < 0)
            hsl.hue += 360;
        return hslToRgb(hsl);
    });
}

Rule tinted(Rgb bytes, int mixture, bool saturation)
{
    const Hsv colour = rgbToHsv(each(bytes, [](double c) { return c * 257; }));
    return whereSeen([=](Rgb old) {
        Hsv hsv = rgbToHsv(old);
        hsv.hue = colour.hue;
        if (saturation)
            hsv.saturation = colour.saturation;
        const Rgb made = hsvToRgb(hsv);
        const double mix = mixture / 100.0;
        return Rgb{made.red * mix + old.red * (1 - mix), made.green * mix + old.green * (1 - mix),
                   made.blue * mix + old.blue * (1 - mix)};
    });
}

Rule burnt(int amount)
{
    const double depth = kTop - std::trunc((100 - amount) / 100.0 * 65535);
    return everywhere([depth](Rgb old) {
        return each(old, [&](double c) { return std::clamp(c - depth, 0.0, kTop); });
    });
}

Rule dodged(int amount)
{
    const double height = std::trunc(amount / 100.0 * 65535);
    return everywhere([height](Rgb old) {
        return each(old, [&](double c) {
            return std::clamp(c + height * c / std::max(1.0, c), 0.0, kTop);
        });
    });
}

Rule greyed(double r, double g, double b)
{
    return everywhere([=](Rgb old) {
        const double grey =
            std::floor((r * old.red + g * old.green + b * old.blue) / (r + g + b) + 0.5);
        return Rgb{grey, grey, grey};
    });
}

Rule filled(double r, double g, double b)
{
    return [=](Rgb, uint16_t, uint16_t mask) -> std::optional<Rgb> {
        if (mask == 0)
            return std::nullopt;
        return Rgb{r * 257, g * 257, b * 257};
    };
}

class Colours : public testing::Test
{
protected:
    RecordingWorkspace space;
    OperatorTable table;

    void SetUp() override
    {
        addAllOperators(&table);
        space.foreRed = 1000, space.foreGreen = 40000, space.foreBlue = 65535;
        space.backRed = 0, space.backGreen = 30000, space.backBlue = 9;
    }
    void TearDown() override { limitKernels(KernelLevel::Avx512); }

    /// The operator of a script line, which must be one, with its parameters read.
    OpWrapper *set(const QString &line)
    {
        QStringList words = line.split(' ');
        OpWrapper *op = table.byScriptName(words.takeFirst());
        QString usage;
        EXPECT_TRUE(op && op->readArguments(words.size(), words, &usage)) << qPrintable(line);
        return op;
    }

    void compare(const Case &one, int mode, bool throughAlpha = false)
    {
        space.blendMode = mode;
        space.maskWithTargetAlpha = throughAlpha;
        for (int mask = 0; mask < kMasks; ++mask) {
            const ImagePtr wanted = testPicture(mask);
            byHand(*wanted, one, throughAlpha);
            for (KernelLevel level :
                 {KernelLevel::Baseline, KernelLevel::Avx2, KernelLevel::Avx512}) {
                limitKernels(level);
                const ImagePtr img = testPicture(mask);
                const colorblending mixer; // the dissolve pattern begins anew
                one.op->apply(img.get(), nullptr);
                EXPECT_TRUE(samePlanes(*img, *wanted))
                    << one.name << " mode " << mode << " mask " << mask << " level " << int(level);
            }
        }
    }
};
} // namespace

TEST_F(Colours, ThoseThatBlendEqualTheirFormulasInEveryMode)
{
    const std::pair<const char *, Rule> lines[] = {
        {"saturation -100", saturated(-100)},
        {"saturation 0", saturated(0)},
        {"saturation 65", saturated(65)},
        {"hue -100", turned(-100)},
        {"hue 33", turned(33)},
        {"colorize 10 200 30 100 1", tinted({10, 200, 30}, 100, true)},
        {"colorize 255 0 255 40 0", tinted({255, 0, 255}, 40, false)},
        {"burn 1", burnt(1)},
        {"burn 55", burnt(55)},
        {"burn 100", burnt(100)},
    };
    for (const auto &[line, rule] : lines) {
        const Case one{line, set(QString::fromLatin1(line)), rule};
        for (int mode = kBlendMatte; mode <= kBlendBackground + 1; ++mode)
            compare(one, mode);
    }
}

TEST_F(Colours, ColorFillKeepsTheUnselectedAndEitherFillsAlphaOrIsWeighedByIt)
{
    for (const auto &[line, rule] : {std::pair("colorfill 0 0 0", filled(0, 0, 0)),
                                     std::pair("colorfill 255 3 128", filled(255, 3, 128))}) {
        const Case one{line, set(QString::fromLatin1(line)), rule, true, true};
        for (int mode = kBlendMatte; mode <= kBlendBackground + 1; ++mode) {
            compare(one, mode);
            compare(one, mode, true);
        }
    }
    auto *fill = dynamic_cast<ColorFill *>(set(QStringLiteral("colorfill 1 2 3")));
    ASSERT_TRUE(fill);
    EXPECT_EQ(fill->button(0), 1); // "Foreground"
    EXPECT_EQ(fill->red, 1000 / 257);
    EXPECT_EQ(fill->blue, 255);
}

TEST_F(Colours, DodgeAndMonochromeMixLinearlyWhateverTheMode)
{
    const std::pair<const char *, Rule> lines[] = {
        {"dodge 1", dodged(1)},
        {"dodge 60", dodged(60)},
        {"dodge 100", dodged(100)},
        {"monochrome 0", greyed(0.3, 0.59, 0.11)},
        {"monochrome 1", greyed(1, 1, 1)},
        {"monochrome 2", greyed(1, 0, 0)},
        {"monochrome 3", greyed(0, 1, 0)},
        {"monochrome 4", greyed(0, 0, 1)},
        {"monochrome 5", greyed(1, 1, 0)},
        {"monochrome 6", greyed(1, 0, 1)},
        {"monochrome 7", greyed(0, 1, 1)},
        {"monochrome 255 0.7 3", greyed(255, 0.7, 3)},
        {"monochrome 0 0 0", greyed(1, 1, 1)},
    };
    for (const auto &[line, rule] : lines)
        for (int mode : {int(kBlendMatte), int(kBlendDivide), int(kBlendDissolve)})
            compare({line, set(QString::fromLatin1(line)), rule, false}, mode);
}

TEST_F(Colours, SomeSettingsChangeNothingInAnyMode)
{
    for (const char *line : {"burn 0", "dodge 0", "colorize 90 90 90 100 1"})
        for (int mode = kBlendMatte; mode <= kBlendBackground; ++mode)
            compare({line, set(QString::fromLatin1(line)),
                     [](Rgb, uint16_t, uint16_t) { return std::nullopt; }},
                    mode);
}

TEST_F(Colours, BadLinesAnswerWithTheUsageAndChangeNothing)
{
    const char *const lines[] = {"saturation",
                                 "saturation 101",
                                 "saturation 1 2",
                                 "hue x",
                                 "hue -1e300",
                                 "burn -1",
                                 "dodge 101",
                                 "colorize 1 2 3 4",
                                 "colorize 1 2 3 101 1",
                                 "colorize 256 0 0 0 0",
                                 "colorfill 1 2",
                                 "colorfill 0 0 -1",
                                 "monochrome",
                                 "monochrome 8",
                                 "monochrome 1 2",
                                 "monochrome 1 2 256",
                                 "monochrome 1 2 x",
                                 "monochrome -1 0 0",
                                 "monochrome 1 2 3 4",
                                 "monochrome x"};
    const ImagePtr before = testPicture(Runs);
    for (const char *line : lines) {
        QStringList words = QString::fromLatin1(line).split(' ');
        OpWrapper *op = table.byScriptName(words.takeFirst());
        ASSERT_TRUE(op) << line;
        QString fields, fieldsAfter, usage;
        op->scriptLine(&fields);
        const ImagePtr img = testPicture(Runs);
        EXPECT_EQ(op->scriptCall(words.size(), &words, img.get(), &usage), 0) << line;
        EXPECT_EQ(usage, op->usage()) << line;
        op->scriptLine(&fieldsAfter);
        EXPECT_EQ(fields, fieldsAfter) << line;
        EXPECT_TRUE(samePlanes(*img, *before)) << line;
    }
}

TEST_F(Colours, MonochromesPresetFollowsItsWeights)
{
    auto *grey = dynamic_cast<Monochrome *>(set(QStringLiteral("monochrome 4+1")));
    ASSERT_TRUE(grey);
    EXPECT_EQ(grey->preset, 5);
    const auto line = [&] {
        QString text;
        grey->scriptLine(&text);
        return text;
    };
    EXPECT_EQ(line(), "monochrome 5\n");
    EXPECT_EQ(grey->dubspin(1, 0.25), 1);
    EXPECT_EQ(grey->preset, Monochrome::kOwnWeights);
    EXPECT_EQ(line(), "monochrome 1 0.25 0\n");
    EXPECT_EQ(grey->combo(0, Monochrome::kOwnWeights), 1); // keeps them
    EXPECT_EQ(line(), "monochrome 1 0.25 0\n");
    EXPECT_EQ(grey->combo(0, 7), 1);
    EXPECT_EQ(line(), "monochrome 7\n");
    EXPECT_TRUE(grey->setParameter(QStringLiteral("MonochromePreset"), QStringLiteral("2")));
    EXPECT_EQ(grey->redWeight + 10 * grey->greenWeight + 10 * grey->blueWeight, 1);
    set(QStringLiteral("monochrome 0.3 0.59 0.11"));
    EXPECT_EQ(line(), "monochrome 0\n");
}
