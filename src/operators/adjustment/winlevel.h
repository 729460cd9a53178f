// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Stretches a window of the tones over the whole range.
class WinLevel : public DeclaredOp
{
    Q_OBJECT
public:
    explicit WinLevel(OperatorTable *table);

    void apply(image *target, image *brush) override;

    int32_t window, level;
    bool clip; ///< what lies above the window becomes black, not white
};
