// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Gives every pixel the hue of one colour, and its saturation too if asked for.
class Colorize : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Colorize(OperatorTable *table);

    /// Grey has no hue: with a grey colour nothing changes.
    void apply(image *target, image *brush) override;

    int32_t red, green, blue; ///< 0 to 255
    int32_t mixture;          ///< share of the tinted picture, in per cent
    bool applySaturation;
};
