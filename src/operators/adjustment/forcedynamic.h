// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Stretches the tones between the darkest and the brightest sample over the whole range.
class ForceDynamic : public DeclaredOp
{
    Q_OBJECT
public:
    explicit ForceDynamic(OperatorTable *table);

    void apply(image *target, image *brush) override;

    bool sample;  ///< take the statistics from the target
    bool exclude; ///< and there from fully selected samples only
};
