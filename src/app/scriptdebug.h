// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "script/engine/scripthost.h"

#include <QDialog>
#include <QStringList>
#include <QTimer>

#include <memory>

struct FileBag;
namespace Ui
{
class ScriptDebug;
}

/// The log of script runs: messages in rich text, each with its step, which leads to its line.
class ScriptDebug : public QDialog
{
    Q_OBJECT
public:
    /// `bag` is where the log is saved; borrowed.
    explicit ScriptDebug(FileBag *bag, QWidget *parent = nullptr);
    ~ScriptDebug() override;

    void append(const ScriptReport &report);
    /// A remark in grey, with its place if `line` is not 0.
    void appendHint(const QString &text, bool inPresets, int line);
    /// Begins the messages of another run, once there are any.
    void beginRun(const QString &title);
    /// Shows at once what was appended; otherwise a timer does, so that a script with many
    /// errors does not spend its time here.
    void flush();
    int errorCount() const { return errors; }
    /// The log without mark-up.
    QString plainText() const;

signals:
    /// A step or a line was clicked.
    void placeRequested(bool inPresets, int line);

protected:
    void showEvent(QShowEvent *event) override;

private slots:
    void on_clear_clicked();
    void on_copy_clicked();
    void on_save_clicked();
    void on_log_anchorClicked(const QUrl &link);

private:
    void add(const QString &html);
    QString shown(QString html) const;
    QString placeLink(const QString &text, bool inPresets, int line) const;

    std::unique_ptr<Ui::ScriptDebug> ui;
    FileBag *fileBag;
    QStringList waiting;
    int leftOut = 0; ///< messages of the waiting ones that were too many
    int errors = 0;  ///< since the run began
    bool placed = false;
    QString runTitle;
    QTimer flushTimer;
};
