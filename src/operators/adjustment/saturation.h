// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Makes colours stronger or weaker: the saturation of each pixel is multiplied, hue and
/// lightness stay.
class Saturation : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Saturation(OperatorTable *table);

    void apply(image *target, image *brush) override;

    int32_t saturation; ///< -100 grey, 0 as it is, 100 twice as strong
};
