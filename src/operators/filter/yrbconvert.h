// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Codes the whole picture as luma, red and blue, or takes it back to red, green and blue,
/// whatever is selected: a picture holds one of the two codes throughout.
class yrbConvert : public DeclaredOp
{
    Q_OBJECT
public:
    explicit yrbConvert(OperatorTable *table);

    void apply(image *target, image *brush) override;

    enum Mode { ToYrb, ToRgb };
    int32_t mode;
};
