// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// Values of the Blend Mode menu.
enum BlendMode {
    kBlendMatte,
    kBlendAdd,
    kBlendAddGrey,
    kBlendSubtractGrey,
    kBlendSubtract,
    kBlendMultiply,
    kBlendDivide,
    kBlendDissolve,
    kBlendSoftDissolve,
    kBlendForeground,
    kBlendBackground
};

/// Mixes one channel of a result into a picture by the Blend Mode of the workspace.
/// One object belongs to whoever runs the program; its constructor seeds the system
/// library's generator, so that a run's dissolve pattern repeats.
class colorblending
{
public:
    /// The workspace of this moment must outlive the object.
    colorblending();
    ~colorblending();
    /// The newest one that still stands, or null.
    static colorblending *current();
    colorblending(const colorblending &) = delete;
    colorblending &operator=(const colorblending &) = delete;

    /// `a` and `b` are samples, `t` the weight of `b`, 0 to 1. Called once per channel in
    /// the order red, green, blue. The caller truncates the result to 16 bits. The mix is
    /// one of squares: a half weight gives the root mean square of the two.
    double blend(double a, double b, double t);

    int &blendMode;           ///< the workspace's word itself: the two can never differ
    int32_t channel = 0;      ///< counts 0, 1, 2 through the channels of a pixel
    double dissolveValue = 0; ///< the random number of the present pixel

private:
    static double matte(double a, double b, double t);
    bool aboveRandom(double t);
    double colour(bool foreground);
    void nextChannel();
    void initcolors();

    int ownMode = 0; ///< stands in for the workspace's word where there is no workspace
    double *tables[5] = {};
};
