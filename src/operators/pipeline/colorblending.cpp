// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/colorblending.h"

#include "core/memory.h"
#include "core/workspace.h"
#include "operators/pipeline/random15.h"

#include <cmath>

namespace
{
constexpr double kWhiteSquared = 4294836225.0;
constexpr double kDissolveLow = 0.007812619211108568; // 512 / 65535
constexpr double kDissolveHigh = 0.9921873807888915;  // 65023 / 65535
constexpr int kTableSize = 256;

colorblending *newest = nullptr;

/// Mixes a square with the old value.
double rootMix(double square, double a, double t)
{
    return std::sqrt(t * square + (1.0 - t) * a * a);
}

/// The square of a sum that is limited to white.
double squareToWhite(double s)
{
    return s > kWhite ? kWhiteSquared : s * s;
}

double divided(double a, double b, double t)
{
    if (b < 1.0)
        return kWhite;
    return rootMix(squareToWhite(a / (b / kWhite)), a, t);
}

double multiplied(double a, double b, double t)
{
    const double p = (b / kWhite) * a;
    return std::sqrt(t * p * p + (1.0 - t) * a * a);
}
} // namespace

colorblending::colorblending() : blendMode(workspace() ? workspace()->blendMode : ownMode)
{
    newest = this;
    seedRandom15(1);
    initcolors();
}

colorblending::~colorblending()
{
    if (newest == this)
        newest = nullptr;
    for (double *&table : tables)
        upfree(&table);
}

colorblending *colorblending::current()
{
    return newest;
}

/// Factors of a byte, their complements and roots. blend works from its operands alone;
/// the tables belong to the program's memory report.
void colorblending::initcolors()
{
    static const char *const labels[] = {
        "colorblending initcolors() iBlendsPrime8", "colorblending initcolors() iBlends8",
        "colorblending initcolors() iFactors8", "colorblending initcolors() iFactorsPrime8",
        "colorblending initcolors() iRoots8"};
    for (int i = 0; i < 5; ++i)
        if (!ucalloc(reinterpret_cast<void **>(&tables[i]), kTableSize, sizeof(double), labels[i]))
            return;
    for (int i = 0; i < kTableSize; ++i) {
        const double factor = i / 255.0;
        tables[0][i] = (1.0 - factor) * kWhite;
        tables[1][i] = factor * kWhite;
        tables[2][i] = factor;
        tables[3][i] = 1.0 - factor;
        tables[4][i] = std::sqrt(factor);
    }
}

double colorblending::matte(double a, double b, double t)
{
    return std::sqrt((1.0 - t) * a * a + t * b * b);
}

void colorblending::nextChannel()
{
    channel = channel >= 2 ? 0 : channel + 1;
}

/// Draws one number of 0 to 1 per pixel.
bool colorblending::aboveRandom(double t)
{
    if (channel == 0)
        dissolveValue = random15() / kRandom15Span;
    nextChannel();
    return t > dissolveValue;
}

double colorblending::colour(bool foreground)
{
    const Workspace *space = workspace();
    const int32_t component = channel;
    nextChannel();
    if (!space)
        return foreground ? 0.0 : kWhite;
    if (component == 0)
        return foreground ? space->foreRed : space->backRed;
    if (component == 1)
        return foreground ? space->foreGreen : space->backGreen;
    return foreground ? space->foreBlue : space->backBlue;
}

double colorblending::blend(double a, double b, double t)
{
    switch (blendMode) {
    case kBlendMatte:
        return matte(a, b, t);
    case kBlendAdd:
        return rootMix(squareToWhite(a + b), a, t);
    case kBlendAddGrey: // a sum below black comes back as a positive one, by its square
        return rootMix(squareToWhite((b - 32768.0) + a), a, t);
    case kBlendSubtractGrey:
        return rootMix(squareToWhite(a - (b - 32768.0)), a, t);
    case kBlendSubtract:
        return rootMix(a - b >= 0.0 ? (a - b) * (a - b) : 0.0, a, t);
    case kBlendMultiply:
        return multiplied(a, b, t);
    case kBlendDivide:
        return divided(a, b, t);
    case kBlendDissolve:
        if (t < kDissolveLow)
            return a;
        if (t > kDissolveHigh)
            return b;
        return aboveRandom(t) ? b : a;
    case kBlendSoftDissolve:
        if (t < kDissolveLow)
            return a;
        return aboveRandom(t) ? matte(a, b, t) : a;
    case kBlendForeground:
    case kBlendBackground:
        return matte(a, colour(blendMode == kBlendForeground), t);
    default:
        return a;
    }
}
