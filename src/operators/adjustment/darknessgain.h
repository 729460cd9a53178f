// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Brightens the dark tones by a hump that fades out towards the middle.
class DarknessGain : public DeclaredOp
{
    Q_OBJECT
public:
    explicit DarknessGain(OperatorTable *table);

    void apply(image *target, image *brush) override;

    int32_t gain, hump, range;
};
