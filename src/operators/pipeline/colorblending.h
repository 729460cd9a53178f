// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// Mixes one channel of a result into a picture by the Blend Mode of the workspace.
/// One object belongs to whoever runs the program; its constructor seeds the system
/// library's generator, so that a run's dissolve pattern repeats.
class colorblending
{
public:
    colorblending();
    ~colorblending();
    colorblending(const colorblending &) = delete;
    colorblending &operator=(const colorblending &) = delete;

    /// `a` and `b` are samples, `t` the weight of `b`, 0 to 1. Called once per channel in
    /// the order red, green, blue. The caller truncates the result to 16 bits.
    double blend(double a, double b, double t);

    int blendMode = 0;
    int32_t channel = 0;      ///< counts 0, 1, 2 through the channels of a pixel
    double dissolveValue = 0; ///< the random number of the present pixel

private:
    double matte(double a, double b, double t) const;
    double *tables[5] = {};
};
