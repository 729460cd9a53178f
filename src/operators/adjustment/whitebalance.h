// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Takes a colour cast away: makes a reference colour grey.
class WhiteBalance : public DeclaredOp
{
    Q_OBJECT
public:
    explicit WhiteBalance(OperatorTable *table);

    void apply(image *target, image *brush) override;
    int button(int index) override;
    void build(OpPage *page) override;

    bool direct;              ///< the reference is the stored colour, not the sampled average
    int32_t red, green, blue; ///< 0 to 255

private:
    QString readingText() const;

    int readingLabel = -1;
};
