// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Sets black and white point, shadows, highlights and the middle of the tones.
class Levels : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Levels(OperatorTable *table);

    void apply(image *target, image *brush) override;

    int32_t black, shadow, mid, highlight, white;
};
