// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/base/declaredop.h"

/// Bends the tones by a power, so that the middle brightens or darkens while black and white
/// stay.
class Gamma : public DeclaredOp
{
    Q_OBJECT
public:
    explicit Gamma(OperatorTable *table);

    void reset() override;
    void apply(image *target, image *brush) override;
    void scriptLine(QString *out) override;
    bool readArguments(int argc, const QStringList &args, QString *usage) override;
    bool setParameter(const QString &key, const QString &value) override;
    QString helpRows() const override;
    int slider(int index, int value) override;
    void build(OpPage *page) override;

    double field; ///< place on the slider, 0 to 100; a script speaks of the gamma itself
    double gammaValue() const;

private:
    void showGamma();
    QString gammaText() const;
    int label = -1; ///< the page's label that shows the gamma
};
