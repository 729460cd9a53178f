// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Makes the tones from a cut up white and stretches those below it. The cut comes from the
/// statistics that Sample keeps, or from the target itself.
class Ceiling : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Ceiling(OperatorTable *table);

    void apply(image *target, image *brush) override;

    bool sample;  ///< take the statistics from the target
    int32_t mode; ///< a ToneCut
};
