// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Turns colours into grey by three weights, given by themselves or by one of eight presets.
class Monochrome : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Monochrome(OperatorTable *table);

    void apply(image *target, image *brush) override;
    void settings(bool save) override;
    void scriptLine(QString *out) override;
    /// One number names a preset, three are the weights.
    bool readArguments(int argc, const QStringList &args, QString *usage) override;
    bool setParameter(const QString &key, const QString &value) override;
    int combo(int index, int value) override;
    int dubspin(int index, double value) override;

    int32_t preset; ///< kOwnWeights if the weights are those of none
    double redWeight, greenWeight, blueWeight;

    static constexpr int kPresets = 8;
    static constexpr int kOwnWeights = kPresets;

private:
    void usePreset(int index);
    void findPreset();
};
