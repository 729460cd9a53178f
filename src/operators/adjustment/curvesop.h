// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/adjustment/tonecurve.h"
#include "operators/base/opwrapper.h"

/// Sends the value of each pixel through a curve that is drawn by hand.
class Curvesop : public OpWrapper
{
    Q_OBJECT
public:
    explicit Curvesop(OperatorTable *table);

    void reset() override;
    void apply(image *target, image *brush) override;
    void settings(bool save) override;
    void build(OpPage *page) override;
    int combo(int index, int value) override;
    int dubspin(int index, double value) override;
    int button(int index) override;
    void curveEdited() override;
    bool setParameter(const QString &key, const QString &value) override;
    QString parameterText(const QString &key) const override;
    QString helpRows() const override;

    ToneCurve curve;

private:
    OpPage *ownPage() const;
    void setCurve(const ToneCurve &shown);
    int presetRow() const;
    void showFields();
    void exchangeFile(bool save);

    int curveIndex = -1; ///< of the curve on the page
};
