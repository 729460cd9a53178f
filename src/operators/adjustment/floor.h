// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Makes the tones below a cut black and lets those above begin there. The cut comes from the
/// statistics that Sample keeps, or from the target itself.
class Floor : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Floor(OperatorTable *table);

    void apply(image *target, image *brush) override;

    bool sample;  ///< take the statistics from the target
    int32_t mode; ///< a ToneCut
};
