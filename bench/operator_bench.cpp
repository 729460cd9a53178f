// SPDX-License-Identifier: GPL-3.0-or-later
#include "yardstick.h"

#include "area/blendcurve.h"
#include "core/colour.h"
#include "core/workspace.h"
#include "operators/adjustment/negative.h"
#include "operators/base/operatortable.h"
#include "operators/filter/exposure.h"

#include <algorithm>
#include <cmath>

namespace
{
enum Mask { kEmpty, kSoft, kFull };

using Rule = std::function<Rgb(Rgb)>;

/// Every sample of a prime stride is what the plain formula gives.
bool matches(const image &before, const image &after, const Rule &rule)
{
    const auto mixed = [](uint16_t c, double result, double m) {
        return uint16_t(c * (1 - m) + result * m);
    };
    for (int64_t i = 0; i < before.sampleCount(); i += 9973) {
        const double m = before.gmask[i] / 65535.0;
        const Rgb out =
            rule({double(before.red[i]), double(before.green[i]), double(before.blue[i])});
        if (after.red[i] != mixed(before.red[i], out.red, m) ||
            after.green[i] != mixed(before.green[i], out.green, m) ||
            after.blue[i] != mixed(before.blue[i], out.blue, m))
            return false;
    }
    return true;
}

/// An operator under one mask. The picture is what the run before left of it: the time
/// does not depend on the samples.
template <class Operator>
BenchCase operatorCase(Mask mask, const Rule &rule, void (*prepare)(Operator &))
{
    static OperatorTable table;
    auto op = std::make_shared<Operator>(&table);
    prepare(*op);
    std::shared_ptr<image> picture = benchImage(mask);
    BenchCase one;
    one.run = [op, picture] { op->apply(picture.get(), nullptr); };
    one.check = [op, picture, rule] {
        image before;
        if (!before.allocate(picture->width, picture->height, QStringLiteral("before")))
            return false;
        before.copyWorkPlanes(*picture);
        op->apply(picture.get(), nullptr);
        return matches(before, *picture, rule);
    };
    one.reset = [picture, fresh = std::shared_ptr<image>(benchImage(mask))] {
        copyFivePlanes(*fresh, *picture);
    };
    return one;
}

BenchCase exposure(Mask mask)
{
    return operatorCase<Exposure>(
        mask,
        [](Rgb c) {
            const auto scale = [](double v) { return std::min(1.25 * v, 65535.0); };
            return Rgb{scale(c.red), scale(c.green), scale(c.blue)};
        },
        [](Exposure &op) { op.amount = 25; });
}

BenchCase negative(Mask mask)
{
    return operatorCase<Negative>(
        mask,
        [](Rgb c) {
            return Rgb{65535 - c.red, 65535 - c.green, 65535 - c.blue};
        },
        [](Negative &) {});
}

BenchCase luma()
{
    return operatorCase<Exposure>(
        kFull,
        [](Rgb c) {
            Hsv hsv = rgbToHsv(c);
            hsv.value = std::min(hsv.value * 1.25, 100.0);
            return hsvToRgb(hsv);
        },
        [](Exposure &op) {
            op.amount = 25;
            op.mode = Exposure::Luma;
        });
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
} // namespace

void registerOperatorBenchmarks()
{
    registerRatio("exposure/full", 1.0, [] { return exposure(kFull); });
    registerRatio("exposure/soft", 1.5, [] { return exposure(kSoft); });
    registerRatio("exposure/empty", 0.5, [] { return exposure(kEmpty); });
    registerRatio("negative/full", 1.0, [] { return negative(kFull); });
    registerRatio("negative/soft", 1.5, [] { return negative(kSoft); });
    registerRatio("negative/empty", 0.5, [] { return negative(kEmpty); });
    registerRatio("exposure/luma", 12.0, [] { return luma(); });
    registerRatio("diffuse/conical", 1.5, [] { return shaping(0); });
    registerRatio("diffuse/flat", 1.5, [] { return shaping(1); });
    registerRatio("diffuse/axis", 1.5, [] { return shaping(2); });
    registerRatio("diffuse/sine", 1.5, [] { return shaping(3); });
}
