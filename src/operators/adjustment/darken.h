// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Draws the tones up to a limit towards black and leaves those above it alone.
class Darken : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Darken(OperatorTable *table);

    void apply(image *target, image *brush) override;

    int32_t amount, limit;
};
