// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Moves one colour channel along the rows, as a lens parts the colours. What leaves a row on
/// one side comes in on the other.
class RgbRotate : public DeclaredOp
{
    Q_OBJECT
public:
    explicit RgbRotate(OperatorTable *table);

    void apply(image *target, image *brush) override;

    int32_t shift;
    int32_t channel;
    bool right;
};
