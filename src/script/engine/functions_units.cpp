// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "script/engine/numbers.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double kLight = 299792458.0; ///< metres a second
constexpr double kDegree = 0.017453292519943295;
constexpr double kMilliwatt = 0.001;
constexpr double kImpedance = 50.0;                                ///< ohms of a receiver
constexpr double kS1 = 120.96910013008056, kS9 = 72.9756257004598; ///< below 1 mW, in dB

double voltsToDbm(double volts, double impedance)
{
    return 10.0 * std::log10(volts * volts / impedance / kMilliwatt);
}

double dbmToSunits(double d)
{
    return d <= -kS9 ? (d + kS1) / 6.0 + 1.0 : (d + kS9) / 1000.0 + 9.0;
}
} // namespace

// --- Functions of one number --------------------------------------------------------------
// The names of some promise another thing than is computed; scripts rely on what is computed.

double fnBtow(exParser &, double x)
{
    return x / 3.413;
}

double fnCtok(exParser &, double x)
{
    return x + 273.15;
}

double fnCtor(exParser &, double x)
{
    return 1.8 * x + 32.0 + 460.0;
}

double fnPrat(exParser &, double x)
{
    return std::pow(10.0, x / 10.0);
}

double fnVrat(exParser &, double x)
{
    return std::pow(10.0, x / 20.0);
}

double fnDctodf(exParser &, double x)
{
    return x * 5.0 / 9.0;
}

double fnDftodc(exParser &, double x)
{
    return 1.8 * x;
}

double fnDtow(exParser &, double x)
{
    return std::pow(10.0, x / 10.0) / 1000.0;
}

double fnFtok(exParser &, double x)
{
    return (x - 32.0) * 5.0 / 9.0 + 273.15;
}

double fnFtom(exParser &, double x)
{
    return x * 0.3048;
}

double fnFtor(exParser &, double x)
{
    return x + 460.0;
}

double fnFtow(exParser &, double x)
{
    return x == 0.0 ? x : kLight / x;
}

double fnGtod(exParser &, double x)
{
    return x * 0.9;
}

double fnKtoc(exParser &, double x)
{
    return x - 273.15;
}

double fnKtof(exParser &, double x)
{
    return (x - 273.15) * 1.8 + 32.0;
}

double fnKtor(exParser &, double x)
{
    return (x - 273.15) * 1.8 + 32.0 + 460.0;
}

double fnLton(exParser &, double x)
{
    return x * 4.4482216152605094;
}

double fnMtof(exParser &, double x)
{
    return x * 3.280839895013123;
}

double fnNtol(exParser &, double x)
{
    return x * 0.22480894309971;
}

double fnRtoc(exParser &, double x)
{
    return (x - 460.0 - 32.0) * 5.0 / 9.0;
}

double fnRtof(exParser &, double x)
{
    return x - 460.0;
}

double fnRtok(exParser &, double x)
{
    return (x - 460.0 - 32.0) * 5.0 / 9.0 + 273.15;
}

double fnStoe(exParser &, double x)
{
    return (x - 1.76) / 6.02;
}

double fnRtod(exParser &, double x)
{
    return x / kDegree;
}

double fnDtog(exParser &, double x)
{
    return x * 1.1111111111111112;
}

double fnDtor(exParser &, double x)
{
    return x * kDegree;
}

double fnWtob(exParser &, double x)
{
    return x * 3.413;
}

double fnWtod(exParser &, double x)
{
    return 10.0 * std::log10(x) + 30.0;
}

// --- Temperature and levels ---------------------------------------------------------------

double fnCtof(FunctionCall &call)
{
    if (!takesNumbers(call, 1, 52))
        return 0;
    return 1.8 * call.a[0] + 32.0;
}

double fnDbm(FunctionCall &call)
{
    if (!takesNumbers(call, 1, 2, 59))
        return 0;
    return voltsToDbm(call.a[0], call.count == 2 ? call.a[1] : kImpedance);
}

double fnDbpr(FunctionCall &call)
{
    if (!takesNumbers(call, 2, 57))
        return 0;
    return call.a[1] == 0.0 ? 0.0 : 10.0 * std::log10(call.a[0] / call.a[1]);
}

double fnDbvr(FunctionCall &call)
{
    if (!takesNumbers(call, 2, 58))
        return 0;
    return call.a[1] == 0.0 ? 0.0 : 20.0 * std::log10(call.a[0] / call.a[1]);
}

double fnDtos(FunctionCall &call)
{
    if (!takesNumbers(call, 1, 53))
        return 0;
    return dbmToSunits(call.a[0]);
}

double fnDtov(FunctionCall &call)
{
    if (!takesNumbers(call, 1, 55))
        return 0;
    return std::sqrt(std::pow(10.0, call.a[0] / 10.0) * kMilliwatt * kImpedance);
}

double fnFtoc(FunctionCall &call)
{
    if (!takesNumbers(call, 1, 50))
        return 0;
    return (call.a[0] - 32.0) * 5.0 / 9.0;
}

double fnStodbm(FunctionCall &call)
{
    if (!takesNumbers(call, 1, 54))
        return 0;
    const double s = call.a[0];
    return s < 9.0 ? (s - 1.0) * 6.0 - kS1 : (s - 9.0) * 1000.0 - kS9;
}

double fnSunits(FunctionCall &call)
{
    if (!takesNumbers(call, 1, 56))
        return 0;
    return dbmToSunits(voltsToDbm(call.a[0], kImpedance));
}

// --- Voltage e, current i, resistance r, power p ------------------------------------------
// The count word of these rows is 2, and no call comes with less.

double fnProduct(FunctionCall &call)
{
    return call.a[0] * call.a[1];
}

double fnQuotient(FunctionCall &call)
{
    return call.a[0] / call.a[1];
}

double fnSquareByOther(FunctionCall &call)
{
    return call.a[0] * call.a[0] / call.a[1];
}

double fnIrtop(FunctionCall &call)
{
    return call.a[0] * call.a[0] * call.a[1];
}

double fnPitor(FunctionCall &call)
{
    return call.a[0] / (call.a[1] * call.a[1]);
}

double fnPrtoi(FunctionCall &call)
{
    return std::sqrt(call.a[0] / call.a[1]);
}

double fnPrtoe(FunctionCall &call)
{
    return std::sqrt(call.a[0] * call.a[1]);
}

// --- Parts in series and in parallel ------------------------------------------------------
// In series resistors and inductors add up, in parallel capacitors do: see fnSum.

/// What parts side by side come to: one alone itself, any zero a zero.
double fnInParallel(FunctionCall &call)
{
    if (call.count == 1)
        return call.a[0];
    double sum = 0.0;
    for (int i = 0; i < call.count; ++i) {
        if (call.a[i] == 0.0)
            return 0;
        sum += 1.0 / call.a[i];
    }
    return call.count > 0 ? 1.0 / sum : 0;
}
