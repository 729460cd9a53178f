// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Lifts the tones between a black and a white point along a curve that rises steeply first.
class Gain : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Gain(OperatorTable *table);

    void apply(image *target, image *brush) override;

    int32_t black, gain, white;
};
