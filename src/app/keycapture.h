// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

/// A field that takes the next key with its modifiers, whatever it is: Tab, function and
/// arrow keys too. It waits from start() or a click on; Escape and a loss of the focus end
/// the waiting.
class KeyCapture : public QLineEdit
{
    Q_OBJECT
public:
    explicit KeyCapture(QWidget *parent = nullptr);

    void start();
    bool isWaiting() const { return waiting; }

signals:
    /// A key in the plain form of the key table was pressed; the field waits no longer.
    void captured(int key);
    /// The person gave up.
    void ended();

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void keyPressed(const QKeyEvent &event);
    void stop();

    bool waiting = false;
};
