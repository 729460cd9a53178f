// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Fills the selection with one colour and makes it opaque; with M/Alpha on, alpha stays and
/// weighs the fill instead.
class ColorFill : public DeclaredOp
{
    Q_OBJECT
public:
    explicit ColorFill(OperatorTable *table);

    void apply(image *target, image *brush) override;
    void build(OpPage *page) override;
    int button(int index) override;

    int32_t red, green, blue; ///< 0 to 255
};
