// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "area/numbers.h"
#include "area/smoothing.h"
#include "core/image.h"
#include "operators/pipeline/colorblending.h"
#include "script/engine/blending.h"
#include "script/engine/numbers.h"

#include <cmath>

namespace
{
constexpr int kMostScriptRadius = 20;

/// A place by the low 16 bits of its whole number; what 32 bits do not hold is off the picture.
int wordPlace(double value)
{
    return std::fabs(value) < 2147483648.0 ? int16_t(uint32_t(int32_t(value))) : -1;
}

/// The number of a sample in the planes, -1 off the image or without one.
int64_t sampleIndex(const image *img, int x, int y)
{
    const bool inside = img && x >= 0 && y >= 0 && x < img->width && y < img->height;
    return inside ? int64_t(y) * img->width + x : -1;
}

const uint16_t *channelPlane(const image &img, int channel)
{
    switch (channel) {
    case 0:
        return img.red;
    case 2:
        return img.blue;
    case 3:
        return img.alpha;
    default:
        return img.green;
    }
}
} // namespace

// --- Samples ------------------------------------------------------------------------------

/// A fourth number, of any value, reads the origin image.
double fnReadch(FunctionCall &call)
{
    if (!takesNumbers(call, 3, 4, 47))
        return 0;
    const image *img = call.count == 4 ? call.parser.images.origin : call.parser.images.target;
    const int64_t at = sampleIndex(img, wordPlace(call.a[0]), wordPlace(call.a[1]));
    return at < 0 ? 0 : channelPlane(*img, wholeNumber(call.a[2]))[at];
}

/// Colours go in through the blend mode by the selection. Alpha is mixed the other way round:
/// a full selection keeps it.
double fnWritep(FunctionCall &call)
{
    if (!takesNumbers(call, 5, 6, 41))
        return 0;
    image *img = call.parser.images.target;
    const int64_t at = sampleIndex(img, wordPlace(call.a[0]), wordPlace(call.a[1]));
    if (at < 0)
        return 0;
    const double m = img->gmask[at] / kWhite;
    const Rgb under = {double(img->red[at]), double(img->green[at]), double(img->blue[at])};
    const Rgb over = {sampleValue(call.a[2]), sampleValue(call.a[3]), sampleValue(call.a[4])};
    const Rgb mixed = blendPixel(call.parser.blending, under, over, m);
    img->red[at] = sampleNumber(mixed.red);
    img->green[at] = sampleNumber(mixed.green);
    img->blue[at] = sampleNumber(mixed.blue);
    if (call.count == 6)
        img->alpha[at] = sampleNumber(img->alpha[at] * m + (1.0 - m) * call.a[5]);
    return 1;
}

double fnCmix(FunctionCall &call)
{
    if (!takesNumbers(call, 3, 39))
        return 0;
    return blendSample(call.parser.blending, sampleValue(call.a[0]), sampleValue(call.a[1]),
                       shareNumber(call.a[2]));
}

// --- The selection ------------------------------------------------------------------------

double fnReadm(FunctionCall &call)
{
    if (!takesNumbers(call, 2, 45))
        return 0;
    const image *img = call.parser.images.target;
    return img ? img->maskAt(truncatedSample(call.a[0]), truncatedSample(call.a[1])) : 0;
}

double fnWritem(FunctionCall &call)
{
    if (!takesNumbers(call, 3, 46))
        return 0;
    image *img = call.parser.images.target;
    const int64_t at = sampleIndex(img, truncatedSample(call.a[0]), truncatedSample(call.a[1]));
    if (at < 0)
        return 0;
    img->gmask[at] = sampleNumber(call.a[2]);
    return 1;
}

double fnSetm(FunctionCall &call)
{
    if (!takesNumbers(call, 1, 44))
        return 0;
    image *img = call.parser.images.target;
    if (!img)
        return 0;
    img->fillGmask(sampleNumber(call.a[0]));
    return 1;
}

double fnLinem(FunctionCall &call)
{
    if (!takesNumbers(call, 5, 43))
        return 0;
    const image *img = call.parser.images.target;
    if (!img)
        return 0;
    const int x1 = truncatedSample(call.a[0]), y1 = truncatedSample(call.a[1]);
    const int x2 = truncatedSample(call.a[2]), y2 = truncatedSample(call.a[3]);
    img->line(img->gmask, x1, y1, x2, y2, sampleNumber(call.a[4]));
    return std::hypot(double(x2) - x1, double(y2) - y1);
}

/// A radius of 0 weighs each sample alone, which changes nothing.
double fnAam(FunctionCall &call)
{
    if (!takesNumbers(call, 2, 42))
        return 0;
    const double radius = std::trunc(call.a[0]), amount = call.a[1];
    if (!(radius >= 0.0 && radius <= kMostScriptRadius && amount >= 0.0 && amount <= 1.0))
        return call.parser.badParameters(call.opCode, 42);
    image *img = call.parser.images.target;
    if (!img)
        return 0;
    return radius == 0.0 || smoothSelection(img, int(radius), amount) ? 1 : 0;
}
