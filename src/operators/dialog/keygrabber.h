// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

/// A modal box that waits for one key: any key that types a single character is taken
/// and ends it. Escape gives up.
class KeyGrabber : public QDialog
{
    Q_OBJECT
public:
    KeyGrabber(const QString &operatorName, bool hasKey, QWidget *parent);

    /// The character typed; empty if the present key is to be taken away.
    QString key() const { return typed; }
    /// The window command that the key is bound to, 0 for none.
    int command() const { return bound; }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QString typed;
    int bound = 0;
};
