// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Sets or changes the alpha of a picture, or turns alpha into a grey picture and back.
/// A changed alpha is mixed in by the mask alone, by squares as under Matte; the grey picture
/// goes through the Blend Mode.
class AlphaMod : public DeclaredOp
{
    Q_OBJECT
public:
    explicit AlphaMod(OperatorTable *table);

    void apply(image *target, image *brush) override;

    enum Mode { Set, Invert, ToRgb, Average, Luma, FromRed, FromGreen, FromBlue, Harden, Soften };
    int32_t amount;
    int32_t mode;

private:
    void soften(image *target) const;
};
