// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Turns the hue of each pixel around the colour circle, by a tenth of it at most.
class Hue : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Hue(OperatorTable *table);

    void apply(image *target, image *brush) override;

    int32_t hue; ///< -100 to 100 stand for 36 degrees each way
};
