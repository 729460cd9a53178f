// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Multiplies the light of a picture: each channel by itself, or the value alone.
class Exposure : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Exposure(OperatorTable *table);

    void apply(image *target, image *brush) override;

    enum Mode { RawRgb, Luma };
    int32_t amount;
    int32_t mode;
};
