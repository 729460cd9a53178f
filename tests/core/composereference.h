// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/bilinear_inline.h"
#include "core/colour.h"
#include "core/image.h"
#include "core/warpfield.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

/// Composes a master the plain way: one layer after the other, one sample after the other,
/// each formula longhand. Too slow for people and easy to compare with its rules; the tests
/// hold compose() against it, bit for bit.
class ReferenceComposer
{
public:
    explicit ReferenceComposer(image *composed) : master(composed) { outer.img = composed; }

    void run()
    {
        clearPlanes();
        for (int i = 0; i < master->layers.size(); ++i)
            turn(i);
        master->needsRebuild = false;
    }

private:
    // clang-format off
    enum Mode { // by id, from 0
        Normal, Add, AbsSub, Subtract, AddGrey, Multiply, Warp, Mask, Dodge, Burn,
        InvMask, Maximum, Minimum, Average, Luma, Red, Green, Blue, Cyan, Magenta,
        Yellow, Black, Vivid, Screen, GreyMask, HCKeyPlus, HCKeyMinus, AccAvg, Darken, Median,
        Hue, Saturation, Value, Tint, Saturate, Envalue, Overlay, Behind, Divide, Brightness,
        Contrast, Brighten, Dominate, Submit, And, Nand, Or, Nor, Xor, Xnor,
        Drive, HueOfMean, SaturationOfMean, ValueOfMean, Difference, PcbCopper, PcbLegend,
        PcbDrill, PcbProfile, PcbMask, Match, NoMatch
    };
    // clang-format on
    static constexpr double kPerWhite = 1.52590218967e-05;
    static constexpr double kScreenPerWhite = 1.5259021896696422e-05;

    using Colour = std::array<double, 3>;
    struct Sample {
        Colour colour;
        double alpha;
    };
    /// A layer where it stood in its turn.
    struct Placed {
        const image *layer;
        int64_t x, y;
    };
    struct Destination {
        image *img = nullptr;
        int64_t lockX = 0, lockY = 0;
        std::vector<Placed> medians;
        std::vector<Colour> sums; ///< of the present run of "Acc+Avg" layers, by place
        int summed = 0;
    };

    // --- The walk ---------------------------------------------------------------------
    void clearPlanes()
    {
        for (uint16_t *plane : master->colorPlanes())
            std::fill(plane, plane + master->sampleCount(), uint16_t(0));
    }

    static bool isPcb(int mode) { return mode >= PcbCopper && mode <= PcbMask; }

    bool stacksOnTheOneBelow(int i) const
    {
        return i < master->layers.size() && master->layers[i]->localStack;
    }
    bool isBase(int i) const
    {
        return i > 0 && master->layers[i]->layerMode != Warp && stacksOnTheOneBelow(i + 1);
    }

    void turn(int i)
    {
        image *layer = master->layers[i];
        if (isPcb(layer->layerMode)) {
            layer->xOffset = layer->yOffset = 0;
            layer->xFraction = layer->yFraction = 0.0;
        }
        if (current == &outer && isBase(i)) {
            openGroup(*layer);
        } else {
            blendThing(*layer, layer->visible, i);
            if (current == &group && !stacksOnTheOneBelow(i + 1)) {
                layer = group.img;
                current = &outer;
                blendThing(*layer, true, i);
            }
        }
        if (layer->globalMask)
            clearAlphaAround(place(*layer));
        if (layer->lockStep) {
            current->lockX += layer->xOffset;
            current->lockY += layer->yOffset;
        } else {
            current->lockX = current->lockY = 0;
        }
    }

    void openGroup(const image &base)
    {
        // Kept to the end: a group of the mode "Median" counts for later ones as well.
        groups.push_back(std::make_unique<image>());
        image *made = groups.back().get();
        made->allocate(base.width, base.height, QStringLiteral("group"));
        for (size_t p = 0; p < 4; ++p)
            std::copy_n(base.colorPlanes()[p], base.sampleCount(), made->colorPlanes()[p]);
        made->xOffset = base.xOffset;
        made->yOffset = base.yOffset;
        made->factor = base.factor;
        made->opacity = base.opacity;
        made->layerMode = base.layerMode;
        made->lockStep = base.lockStep;
        group = Destination();
        group.img = made;
        current = &group;
    }

    Placed place(const image &layer) const
    {
        if (isPcb(layer.layerMode))
            return {&layer, 0, 0};
        return {&layer, layer.xOffset + current->lockX, layer.yOffset + current->lockY};
    }

    void clearAlphaAround(const Placed &at)
    {
        const image &img = *current->img;
        for (int y = 0; y < img.height; ++y)
            for (int x = 0; x < img.width; ++x)
                if (x < at.x || x >= at.x + at.layer->width || y < at.y ||
                    y >= at.y + at.layer->height)
                    img.alpha[int64_t(y) * img.width + x] = 0;
    }

    /// Whether no thing of the mode "Acc+Avg" goes on with a run that stands at layer `i`.
    bool runEnds(int i) const
    {
        for (int next = i + 1; next < master->layers.size(); ++next) {
            const image &layer = *master->layers[next];
            if (current == &group && !layer.localStack)
                return true;
            if (layer.visible || (current == &outer && isBase(next)))
                return layer.layerMode != AccAvg;
        }
        return true;
    }

    /// A layer, or a group at its close, in its turn.
    void blendThing(const image &layer, bool visible, int i)
    {
        if (!visible)
            return;
        const Placed at = place(layer);
        const double opacity = limitedOpacity(layer.opacity);
        if (layer.layerMode == Median)
            current->medians.push_back(at);
        if (layer.layerMode == AccAvg) {
            accumulate(at);
            if (!runEnds(i))
                return;
            if (opacity != 0.0)
                blend(at, opacity);
            current->sums.clear();
            current->summed = 0;
        } else if (opacity != 0.0 && layer.layerMode == Warp) {
            warp(at);
        } else if (opacity != 0.0) {
            blend(at, opacity);
        }
    }

    static double limitedOpacity(double opacity)
    {
        return !(opacity > 0.0) ? 0.0 : opacity > 1.0 ? 1.0 : opacity;
    }

    // --- Samples ----------------------------------------------------------------------
    static Colour fromYrb(const Colour &yrb)
    {
        const Rgb rgb = yrbToRgb({yrb[0], yrb[1], yrb[2]});
        return {rgb.red, rgb.green, rgb.blue};
    }

    static Sample own(const image &layer, int x, int y)
    {
        const int64_t i = int64_t(y) * layer.width + x;
        const Colour stored = {double(layer.red[i]), double(layer.green[i]), double(layer.blue[i])};
        return {layer.imageMode == 1 ? fromYrb(stored) : stored, double(layer.alpha[i])};
    }

    /// The bilinear sample of a turned and shifted layer; false outside of the layer.
    static bool turned(const image &layer, double x, double y, Sample *out)
    {
        const double radians = layer.rotation * M_PI / 180.0;
        const double c = std::cos(radians), s = std::sin(-radians);
        const double dx = x - layer.xCenter, dy = y - layer.yCenter;
        const double sx = layer.xCenter + c * dx - s * dy + layer.xFraction;
        const double sy = layer.yCenter + s * dx + c * dy + layer.yFraction;
        *out = {{0.0, 0.0, 0.0}, 0.0};
        if (!(sx >= 0.0 && sx < layer.width && sy >= 0.0 && sy < layer.height))
            return false;
        const Rgba read = layer.sampleAt(sx, sy);
        const Colour colour = {read.red, read.green, read.blue};
        *out = {layer.imageMode == 1 ? fromYrb(colour) : colour, read.alpha};
        return true;
    }

    template <class Work>
    void forEachCovered(const Placed &at, Work work) const
    {
        const image &img = *current->img;
        for (int y = 0; y < at.layer->height; ++y)
            for (int x = 0; x < at.layer->width; ++x)
                if (x + at.x >= 0 && x + at.x < img.width && y + at.y >= 0 && y + at.y < img.height)
                    work(x, y, (y + at.y) * img.width + x + at.x);
    }

    /// By place in the destination: a turned layer counts wherever its picture lies, also
    /// outside of its own rectangle.
    void accumulate(const Placed &at)
    {
        const image &img = *current->img;
        current->sums.resize(size_t(img.sampleCount()));
        ++current->summed;
        for (int64_t i = 0; i < img.sampleCount(); ++i) {
            Sample sample;
            if (turned(*at.layer, double(i % img.width - at.x), double(i / img.width - at.y),
                       &sample))
                for (size_t c = 0; c < 3; ++c)
                    current->sums[size_t(i)][c] += sample.colour[c];
        }
    }

    Sample averageAt(const image &last, int x, int y, int64_t to) const
    {
        Sample sample;
        turned(last, x, y, &sample);
        for (size_t c = 0; c < 3; ++c)
            sample.colour[c] = current->sums[size_t(to)][c] / current->summed;
        return sample;
    }

    Sample medianAt(const Placed &at, int x, int y) const
    {
        std::vector<Sample> found;
        for (const Placed &other : current->medians) {
            Sample sample;
            if (turned(*other.layer, double(at.x + x - other.x), double(at.y + y - other.y),
                       &sample))
                found.push_back(sample);
        }
        if (found.empty())
            return own(*at.layer, x, y);
        std::stable_sort(found.begin(), found.end(), [](const Sample &one, const Sample &other) {
            return mean(one.colour) < mean(other.colour);
        });
        const size_t half = found.size() / 2;
        if (found.size() % 2 == 1)
            return found[half];
        const Sample &low = found[half - 1], &high = found[half];
        Sample middle;
        for (size_t c = 0; c < 3; ++c)
            middle.colour[c] = (low.colour[c] + high.colour[c]) / 2;
        middle.alpha = (low.alpha + high.alpha) / 2;
        return middle;
    }

    void warp(const Placed &at)
    {
        const image &img = *current->img;
        image before;
        before.allocate(img.width, img.height, QStringLiteral("before"));
        for (size_t p = 0; p < 4; ++p)
            std::copy_n(img.colorPlanes()[p], img.sampleCount(), before.colorPlanes()[p]);
        forEachCovered(at, [&](int x, int y, int64_t to) {
            const Displacement d = displacementAt(*at.layer, int64_t(y) * at.layer->width + x);
            const double sx = double(x + at.x) + d.x, sy = double(y + at.y) + d.y;
            if (sx < 0.0 || sx >= img.width || sy < 0.0 || sy >= img.height)
                return;
            const int x0 = int(std::floor(sx)), x1 = std::min(x0 + 1, img.width - 1);
            const int y0 = int(std::floor(sy)), y1 = std::min(y0 + 1, img.height - 1);
            for (size_t p = 0; p < 4; ++p) {
                const uint16_t *upper = before.colorPlanes()[p] + int64_t(y0) * img.width;
                const uint16_t *lower = before.colorPlanes()[p] + int64_t(y1) * img.width;
                img.colorPlanes()[p][to] = stored(
                    bilinearMix(upper[x0], upper[x1], lower[x0], lower[x1], sx - x0, sy - y0));
            }
        });
    }

    void blend(const Placed &at, double opacity)
    {
        const image &layer = *at.layer;
        const auto planes = current->img->colorPlanes();
        forEachCovered(at, [&](int x, int y, int64_t to) {
            Sample over = own(layer, x, y);
            if (layer.layerMode == AccAvg)
                over = averageAt(layer, x, y, to);
            else if (layer.layerMode == Median)
                over = medianAt(at, x, y);
            else if (layer.layerMode == AbsSub || layer.layerMode == Subtract)
                if (!turned(layer, x, y, &over))
                    return;
            Sample under = {{double(planes[0][to]), double(planes[1][to]), double(planes[2][to])},
                            double(planes[3][to])};
            blendSample(layer.layerMode, layer.factor, opacity, over, &under);
            for (size_t c = 0; c < 3; ++c)
                planes[c][to] = stored(under.colour[c]);
            planes[3][to] = stored(under.alpha);
        });
    }

    // --- The modes --------------------------------------------------------------------
    static uint16_t stored(double value) { return uint16_t(clampSampleValue(value)); }
    static double mean(const Colour &v) { return (v[0] + v[1] + v[2]) / 3; }
    static double luma(const Colour &v) { return 0.3 * v[0] + 0.59 * v[1] + 0.11 * v[2]; }
    static double clamp(double value) { return clampSampleValue(value); }
    static Hsv hsvOf(const Colour &v) { return rgbToHsv({v[0], v[1], v[2]}); }
    static Colour colourOf(const Hsv &hsv)
    {
        const Rgb rgb = hsvToRgb(hsv);
        return {rgb.red, rgb.green, rgb.blue};
    }
    static double mixSquared(double n, double b, double q, double k)
    {
        return std::sqrt(n * n * q + b * b * k);
    }

    static void blendSample(int mode, double factor, double opacity, const Sample &over,
                            Sample *under)
    {
        const Colour &l = over.colour;
        const Colour b = under->colour;
        const double a = over.alpha, bA = under->alpha;
        const double k = 1 - (a / 65535) * opacity, q = 1 - k;
        const auto alphaMix = [&] { under->alpha = q * a + k * bA; };
        const auto mixChannel = [&](size_t c, double n) {
            under->colour[c] = mixSquared(n, b[c], q, k);
        };
        const auto mixAll = [&](const Colour &n) {
            for (size_t c = 0; c < 3; ++c)
                mixChannel(c, n[c]);
        };
        const auto mixEach = [&](auto newValue) {
            for (size_t c = 0; c < 3; ++c)
                mixChannel(c, newValue(l[c], b[c]));
            alphaMix();
        };

        switch (mode) {
        case Normal:
        case Median:
            mixAll(l);
            alphaMix();
            break;
        case AccAvg:
            mixAll(l);
            break;
        case Add:
            mixEach([](double L, double B) { return clamp(L + B); });
            break;
        case AbsSub:
            mixEach([](double L, double B) { return std::min(std::abs(B - L), 65535.0); });
            break;
        case Subtract:
            mixEach([](double L, double B) { return clamp(B - L); });
            break;
        case AddGrey:
            mixEach([](double L, double B) { return clamp(L - 32768 + B); });
            break;
        case Multiply:
            mixEach([](double L, double B) { return clamp(L * kPerWhite * B); });
            break;
        case Mask:
            under->alpha = clamp(a * factor);
            break;
        case InvMask:
            under->alpha = clamp((65535 - a) * factor);
            break;
        case Dodge:
            mixEach([](double L, double B) {
                return L == 0 ? B : clamp(B + L * B / std::max(1.0, B));
            });
            break;
        case Burn:
            mixEach([](double L, double B) { return L == 65535 ? B : clamp(B - (65535 - L)); });
            break;
        case Maximum:
            if (mean(l) > mean(b)) {
                mixAll(l);
                alphaMix();
            }
            break;
        case Minimum:
            if (mean(l) < mean(b)) {
                mixAll(l);
                alphaMix();
            }
            break;
        case Average:
            mixAll({mean(l), mean(l), mean(l)});
            alphaMix();
            break;
        case Luma:
            mixAll({luma(l), luma(l), luma(l)});
            alphaMix();
            break;
        case Red:
            mixChannel(0, l[0]);
            alphaMix();
            break;
        case Green:
            mixChannel(1, l[1]);
            alphaMix();
            break;
        case Blue:
            mixChannel(2, l[2]);
            alphaMix();
            break;
        case Cyan:
            if (k != 1)
                mixChannel(0, clamp((l[1] + l[2]) / 2));
            alphaMix();
            break;
        case Magenta:
            if (k != 1)
                mixChannel(1, clamp((l[0] + l[2]) / 2));
            alphaMix();
            break;
        case Yellow:
            if (k != 1)
                mixChannel(2, clamp((l[0] + l[1]) / 2));
            alphaMix();
            break;
        case Black:
            if (k != 1)
                for (size_t c = 0; c < 3; ++c)
                    mixChannel(c, bA == 0 ? clamp(mean(l)) : clamp(b[c] + mean(l)));
            alphaMix();
            break;
        case Vivid: {
            const double m = (l[0] / 65535 + l[1] / 65535 + l[2] / 65535) / 3;
            mixEach([m](double, double B) {
                const double under1 = B / 65535;
                if (m > 0.5)
                    return clamp(under1 / (1 - 2 * (m - 0.5)) * 65535);
                return clamp((1 - (1 - under1) / (2 * m)) * 65535);
            });
            break;
        }
        case Screen:
            mixEach([](double L, double B) {
                return 65535 - (65535 - L) * (65535 - B) * kScreenPerWhite;
            });
            break;
        case GreyMask:
            under->alpha = q * mean(l) + k * bA;
            break;
        case HCKeyPlus:
        case HCKeyMinus: {
            const double tolerance = factor * factor * 65535;
            bool outside = false;
            for (size_t c = 0; c < 3; ++c)
                outside = outside || b[c] < l[c] - tolerance || b[c] > l[c] + tolerance;
            under->alpha = outside == (mode == HCKeyPlus) ? 65535 : 0;
            break;
        }
        case Darken:
            mixAll(luma(b) < luma(l) ? b : l);
            alphaMix();
            break;
        case Brighten:
            mixAll(luma(l) < luma(b) ? b : l);
            alphaMix();
            break;
        case Hue:
        case Saturation:
        case Value:
        case Tint:
        case Saturate:
        case Envalue:
        case HueOfMean:
        case SaturationOfMean:
        case ValueOfMean:
            mixAll(colourOf(changedHsv(mode, l, hsvOf(b))));
            alphaMix();
            break;
        case Overlay:
            mixEach([](double L, double B) {
                if (B >= 32768)
                    return 65535 - (65535 - B) * (65535 - L) / 65535;
                return L * 2 * B / 65535;
            });
            break;
        case Behind: {
            const double keep = bA / 65535, take = 1 - keep;
            for (size_t c = 0; c < 3; ++c)
                under->colour[c] = mixSquared(l[c], b[c], take, keep);
            under->alpha = a * opacity * take + bA * keep;
            break;
        }
        case Divide:
            mixEach([](double L, double B) { return clamp(((1 - L * kPerWhite) + 1) * B); });
            break;
        case Brightness:
            mixEach([](double L, double B) { return clamp(2 * L * kPerWhite * B); });
            break;
        case Contrast:
            mixEach(
                [](double L, double B) { return clamp(2 * L * kPerWhite * (B - 32768) + 32768); });
            break;
        case Drive:
            mixEach([factor](double L, double B) {
                return clamp(((L * kPerWhite - 0.5) * 8 * factor + 1) * (B - 32768) + 32768);
            });
            break;
        case Dominate:
            for (size_t c = 0; c < 3; ++c)
                if (b[c] < l[c])
                    mixChannel(c, l[c]);
            alphaMix();
            break;
        case Submit:
            for (size_t c = 0; c < 3; ++c)
                if (l[c] < b[c])
                    mixChannel(c, l[c]);
            alphaMix();
            break;
        case And:
        case Nand:
        case Or:
        case Nor:
        case Xor:
        case Xnor:
            for (size_t c = 0; c < 3; ++c)
                under->colour[c] = bitwise(mode, stored(b[c]), stored(l[c]));
            break;
        case Difference:
            mixEach([](double L, double B) { return clamp(B - L + 32768); });
            break;
        case PcbCopper:
        case PcbLegend:
        case PcbDrill:
        case PcbMask:
            if (anyDark(l)) {
                const double keep = 1 - opacity;
                for (size_t c = 0; c < 3; ++c)
                    under->colour[c] = mixSquared(l[c], b[c], 1 - keep, keep);
            }
            break;
        case PcbProfile:
            under->colour = anyDark(l) ? l : Colour{65535, 65535, 65535};
            under->alpha = 65535;
            break;
        case Match:
            under->alpha = b == l ? 65535 : 0;
            break;
        case NoMatch:
            under->alpha = b == l ? 0 : 65535;
            break;
        default:
            break; // a number that no mode has
        }
    }

    static bool anyDark(const Colour &l) { return l[0] < 32768 || l[1] < 32768 || l[2] < 32768; }

    static Hsv changedHsv(int mode, const Colour &l, Hsv hsv)
    {
        const double t = (l[0] + l[1] + l[2]) / 196605 - 0.5;
        switch (mode) {
        case Hue:
            hsv.hue = hsvOf(l).hue;
            break;
        case Saturation:
            hsv.saturation = hsvOf(l).saturation;
            break;
        case Value:
            hsv.value = hsvOf(l).value;
            break;
        case Tint:
            hsv.hue += 2 * t * 45;
            if (hsv.hue < 0)
                hsv.hue += 360;
            else if (hsv.hue > 360)
                hsv.hue -= 360;
            break;
        case Saturate:
            hsv.saturation = clampRange(hsv.saturation + 2 * t * 100, 0, 100);
            break;
        case Envalue:
            hsv.value = clampRange(hsv.value + 2 * t * 100, 0, 100);
            break;
        case HueOfMean:
            hsv.hue = mean(l) / 65535 * 360;
            break;
        case SaturationOfMean:
            hsv.saturation = mean(l) / 65535 * 100;
            break;
        default:
            hsv.value = mean(l) / 65535 * 100;
            break;
        }
        return hsv;
    }

    static uint16_t bitwise(int mode, uint16_t b, uint16_t l)
    {
        switch (mode) {
        case And:
            return b & l;
        case Nand:
            return uint16_t(~(b & l));
        case Or:
            return b | l;
        case Nor:
            return uint16_t(~(b | l));
        case Xor:
            return b ^ l;
        default:
            return uint16_t(~(b ^ l));
        }
    }

    image *master;
    Destination outer, group;
    Destination *current = &outer;
    std::vector<std::unique_ptr<image>> groups;
};

inline void referenceCompose(image *master)
{
    ReferenceComposer(master).run();
}
