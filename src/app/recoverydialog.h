// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/recoverystore.h"

#include <QDialog>
#include <QList>

class QPushButton;
class QTreeWidget;
class Recovery;

/// Offers the pictures that a run which ended badly left behind: each can be recovered,
/// discarded after a question, or left for the next start.
class RecoveryDialog : public QDialog
{
    Q_OBJECT
public:
    RecoveryDialog(Recovery *recovery, const QList<RecoveredPicture> &pictures, QWidget *parent);

    /// Shows the dialog if there is anything to offer, and returns when the person is done.
    static void offer(Recovery *recovery, QWidget *parent);

private:
    void addRow(const RecoveredPicture &picture);
    QList<int> checkedRows() const;
    void takeRow(int row);
    void followChecks();
    void recoverChecked();
    void discardChecked();

    Recovery *recovery;
    QList<RecoveredPicture> pictures; ///< in the order of the rows
    QTreeWidget *list;
    QPushButton *recoverButton, *discardButton;
};
