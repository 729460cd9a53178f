// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <cstdint>
#include <functional>

/// A strip that shows a range of colours from left to right.
class cRange : public QWidget
{
    Q_OBJECT
public:
    using Colours = std::function<uint32_t(double place)>;

    /// `wantedWidth` is what it asks for; it takes what the page has.
    cRange(Colours colourAt, int wantedWidth, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Colours colours; ///< 0xRRGGBB for a place of 0 (left) to 1 (right)
    int wanted;
};
