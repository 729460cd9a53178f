// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// A small picture frame with the lines of a crop guide in it.
class GuideSample : public QWidget
{
    Q_OBJECT
public:
    explicit GuideSample(QWidget *parent) : QWidget(parent) {}

    /// `aspect` is width to height of the frame.
    void setGuide(int guide, double aspect);
    QSize sizeHint() const override { return {150, 110}; }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int shownGuide = 0;
    double shownAspect = 1.0;
};
