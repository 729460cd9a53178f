// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Lightens: the same amount is added to every sample but black ones, up to white.
class Dodge : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Dodge(OperatorTable *table);

    void apply(image *target, image *brush) override;

    int32_t amount; ///< 0 to 100
};
