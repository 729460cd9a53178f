// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Spreads the values of the selected pixels so that each part of the range holds as many.
/// Pixels of no alpha do not count.
class HistEq : public DeclaredOp
{
    Q_OBJECT
public:
    explicit HistEq(OperatorTable *table);

    void apply(image *target, image *brush) override;
};
