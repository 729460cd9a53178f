// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"
#include "operators/pipeline/samplestatistics.h"

/// Reads the selected samples: their extremes and averages for the operators that work from
/// statistics, and their colours into the set that Key to Colorspace takes. Changes no picture.
class Sample : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Sample(OperatorTable *table);

    void apply(image *target, image *brush) override;
    int button(int index) override;
    void build(OpPage *page) override;

    bool accumulate; ///< join with what was read before
    bool subtract;   ///< take the colours out of the set, and no more

private:
    void keepStatistics(const SampleSums &now);
    void showReading();
    QString setText() const;

    SampleSums all; ///< everything since the last plain sample
    int readingLabel = -1, setLabel = -1;
};
