// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Exchanges the colour channels with one another.
class ChannelMove : public DeclaredOp
{
    Q_OBJECT
public:
    explicit ChannelMove(OperatorTable *table);

    void apply(image *target, image *brush) override;

    enum Select { RedGreen, GreenBlue, RedBlue, Onward, Back };
    int32_t select;
};
