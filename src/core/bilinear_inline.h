// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The one bilinear mix of four neighbours. First along each row, then between the rows:
///     upper = a + (b - a) * fx,  lower = c + (d - c) * fx,
///     result = upper + (lower - upper) * fy
/// These are the usual weights (1-fx)(1-fy), fx(1-fy), (1-fx)fy and fx fy, in the order
/// of operations that gives equal neighbours back unchanged: a sum of four products can
/// fall just short of them, and opaque pixels would lose a step of alpha when truncated.
[[gnu::always_inline]] inline double bilinearMix(double a, double b, double c, double d, double fx,
                                                 double fy)
{
    const double upper = a + (b - a) * fx;
    const double lower = c + (d - c) * fx;
    return upper + (lower - upper) * fy;
}
