// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "script/engine/numbers.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace
{
constexpr double kNoFraction = 4503599627370496.0; ///< 2 to the 52: from here on all are whole
constexpr int kLargestFactorial = 65;
constexpr int kMostPlaces = 15;

/// Rounding up can give a negative zero, which would be shown with its sign.
double withoutSignOfZero(double value)
{
    return value + 0.0;
}
} // namespace

// --- Functions of one number --------------------------------------------------------------

double fnAbs(exParser &, double x)
{
    return std::fabs(x);
}

double fnAcos(exParser &, double x)
{
    return std::acos(x);
}

double fnAcosh(exParser &, double x)
{
    return std::acosh(x);
}

double fnAlog(exParser &, double x)
{
    return std::pow(10.0, x);
}

double fnAsin(exParser &, double x)
{
    return std::asin(x);
}

double fnAsinh(exParser &, double x)
{
    return std::asinh(x);
}

double fnAtan(exParser &, double x)
{
    return std::atan(x);
}

double fnAtanh(exParser &, double x)
{
    return std::atanh(x);
}

double fnCbrt(exParser &, double x)
{
    return std::cbrt(x);
}

double fnCeil(exParser &, double x)
{
    return withoutSignOfZero(std::ceil(x));
}

/// An 8-bit sample raised to 16 bits; what is more than one becomes white.
double fnChup(exParser &, double x)
{
    const int r = roundedNumber(x);
    return r < 0 ? 0 : r > 255 ? 65535 : (r * 257) & 0xffff;
}

double fnCos(exParser &, double x)
{
    return std::cos(x);
}

double fnCosh(exParser &, double x)
{
    return std::cosh(x);
}

double fnDec(exParser &, double x)
{
    return x - 1.0;
}

double fnExp(exParser &, double x)
{
    return std::exp(x);
}

/// The product wraps above 20!, as 64 bits do.
double fnFact(exParser &parser, double x)
{
    const double n = std::round(std::fabs(x));
    if (!(n >= 1.0 && n <= kLargestFactorial)) {
        parser.report(
            QStringLiteral("e: Factorial candidate %1 out of range").arg(n, 0, 'g', kMostPlaces));
        return 0;
    }
    uint64_t product = 1;
    for (uint64_t factor = 2; factor <= uint64_t(n); ++factor)
        product *= factor;
    return double(product);
}

double fnFloor(exParser &, double x)
{
    return std::floor(x);
}

/// Numbers that hold no fraction have none, the infinite ones included.
double fnFrac(exParser &, double x)
{
    return std::fabs(x) >= kNoFraction ? 0.0 : x - std::floor(x);
}

double fnInc(exParser &, double x)
{
    return x + 1.0;
}

double fnLn(exParser &, double x)
{
    return std::log(x);
}

double fnLog(exParser &, double x)
{
    return std::log10(x);
}

double fnNegate(exParser &, double x)
{
    return -x;
}

double fnSin(exParser &, double x)
{
    return std::sin(x);
}

double fnSinh(exParser &, double x)
{
    return std::sinh(x);
}

double fnSqrt(exParser &, double x)
{
    return std::sqrt(x);
}

double fnTan(exParser &, double x)
{
    return std::tan(x);
}

double fnTanh(exParser &, double x)
{
    return std::tanh(x);
}

double fnIdentity(exParser &, double x)
{
    return x;
}

// --- Infix operators ----------------------------------------------------------------------

double fnAdd(exParser &, double x, double y)
{
    return x + y;
}

double fnSubtract(exParser &, double x, double y)
{
    return x - y;
}

double fnTimes(exParser &, double x, double y)
{
    return x * y;
}

double fnOver(exParser &parser, double x, double y)
{
    if (y == 0.0) {
        parser.report(QStringLiteral("e: Division by zero"));
        return 0;
    }
    return x / y;
}

/// The remainder of the whole parts. A divisor that has none is a zero too.
double fnRemainder(exParser &parser, double x, double y)
{
    const int64_t left = wholeNumber(x), right = wholeNumber(y);
    if (right == 0) {
        parser.report(QStringLiteral("e: Can't mod by zero"));
        return 0;
    }
    return double(left % right); // of 64 bits: the lowest number has no counterpart in 32
}

double fnEqual(exParser &, double x, double y)
{
    return x == y;
}

double fnUnequal(exParser &, double x, double y)
{
    return x != y;
}

double fnGreater(exParser &, double x, double y)
{
    return x > y;
}

double fnGreaterOrEqual(exParser &, double x, double y)
{
    return x >= y;
}

double fnLess(exParser &, double x, double y)
{
    return x < y;
}

double fnLessOrEqual(exParser &, double x, double y)
{
    return x <= y;
}

// --- Functions of several numbers ---------------------------------------------------------

double fnAmix(FunctionCall &call)
{
    if (!takesNumbers(call, 3, 40))
        return 0;
    const double mix = shareNumber(call.a[2]);
    return mix * sampleValue(call.a[1]) + (1.0 - mix) * sampleValue(call.a[0]);
}

double fnAtan2(FunctionCall &call)
{
    if (!takesNumbers(call, 2, 49))
        return 0;
    return std::atan2(call.a[0], call.a[1]);
}

double fnHypo(FunctionCall &call)
{
    if (!takesNumbers(call, 2, 51))
        return 0;
    return std::sqrt(call.a[0] * call.a[0] + call.a[1] * call.a[1]);
}

double fnLength(FunctionCall &call)
{
    if (!takesNumbers(call, 4, 48))
        return 0;
    return std::hypot(call.a[2] - call.a[0], call.a[3] - call.a[1]);
}

double fnMod(FunctionCall &call)
{
    if (!takesNumbers(call, 2, 38))
        return 0;
    return std::fmod(call.a[0], call.a[1]);
}

double fnPercent(FunctionCall &call)
{
    if (!takesNumbers(call, 2, 37))
        return 0;
    return call.a[0] / (call.a[1] / 100.0);
}

double fnPow(FunctionCall &call)
{
    if (!takesNumbers(call, 2, 36))
        return 0;
    return std::pow(call.a[0], call.a[1]);
}

double fnRound(FunctionCall &call)
{
    if (!takesNumbers(call, 1, 2, 35))
        return 0;
    if (call.count == 1)
        return withoutSignOfZero(std::round(call.a[0]));
    const double m = std::pow(10.0, std::clamp(roundedNumber(call.a[1]), 0, kMostPlaces));
    return withoutSignOfZero(std::round(call.a[0] * m) / m);
}

// --- Statistics ---------------------------------------------------------------------------

double fnSum(FunctionCall &call)
{
    return std::accumulate(call.a, call.a + call.count, 0.0);
}

double fnAvg(FunctionCall &call)
{
    return call.count > 0 ? fnSum(call) / call.count : 0;
}

double fnCount(FunctionCall &call)
{
    return call.count;
}

double fnMax(FunctionCall &call)
{
    return call.count > 0 ? *std::max_element(call.a, call.a + call.count) : 0;
}

double fnMin(FunctionCall &call)
{
    return call.count > 0 ? *std::min_element(call.a, call.a + call.count) : 0;
}

double fnMedian(FunctionCall &call)
{
    if (call.count < 1)
        return 0;
    std::vector<double> sorted(call.a, call.a + call.count);
    // What is no number comes last: sorting needs an order of all.
    std::sort(sorted.begin(), sorted.end(),
              [](double a, double b) { return a < b || (std::isnan(b) && !std::isnan(a)); });
    const size_t middle = sorted.size() / 2;
    return sorted.size() % 2 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2.0;
}
