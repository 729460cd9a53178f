// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Makes pixels transparent whose colour is in the set that Sample gathers. A pixel selected
/// ever so little counts as selected.
class keyOp : public DeclaredOp
{
    Q_OBJECT
public:
    explicit keyOp(OperatorTable *table);

    void apply(image *target, image *brush) override;
    void build(OpPage *page) override;
    int button(int index) override;
};
