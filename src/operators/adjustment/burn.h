// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Darkens: the same amount is taken from every sample, down to black.
class Burn : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Burn(OperatorTable *table);

    void apply(image *target, image *brush) override;

    int32_t amount; ///< 0 to 100
};
