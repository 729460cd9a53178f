// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QColor>

/// A field that shows a colour and can be clicked.
class ColorWell : public QAbstractButton
{
    Q_OBJECT
public:
    explicit ColorWell(QWidget *parent = nullptr, int wellId = 0);

    QColor color() const { return shown; }
    /// Shows a colour of 8-bit components.
    void setColor8(int red, int green, int blue);
    /// Shows a colour of 16-bit components, of which the top byte is used.
    void setColor16(int red, int green, int blue);

    QSize sizeHint() const override;

signals:
    /// The well was clicked; `value` is its colour as 0xRRGGBB.
    void sendId(int id, int value);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int id;
    QColor shown = Qt::black;
};
