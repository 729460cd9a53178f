// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Spreads the samples of the chosen channels about a centre, or draws them together, and
/// moves them up or down.
class ContrastBrightness : public DeclaredOp
{
    Q_OBJECT
public:
    explicit ContrastBrightness(OperatorTable *table);

    void apply(image *target, image *brush) override;
    void build(OpPage *page) override;

    int32_t contrast, brightness, center;
    int32_t multiplier; ///< row of the list: how far full contrast reaches
    bool red, green, blue;
};
