// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Turns light into dark: each sample becomes its distance from white.
class Negative : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Negative(OperatorTable *table);

    void apply(image *target, image *brush) override;
};
