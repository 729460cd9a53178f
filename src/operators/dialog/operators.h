// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

class OperatorTable;
class OpPreview;
class PageBuilder;
namespace Ui
{
class Operators;
}

/// The operator dialog: the current operator's controls, its preview and the buttons
/// that act on it. It shows one table of operators and forwards to it.
class Operators : public QDialog
{
    Q_OBJECT
public:
    explicit Operators(OperatorTable *table, QWidget *parent = nullptr);
    ~Operators() override;

    /// Makes the operator with this id current (0 for none) and rebuilds the page.
    void selectOperator(int id);
    /// Runs the current operator on the small preview image and shows it.
    void refreshPreview();
    /// Ignored without a current image; else refreshes the preview.
    void timetopreview();
    /// Dialog settings (opsX2Preview, opsX, opsY) in the table's store.
    void settings(bool save);

    OperatorTable *table;
    QString helpPageName;
    bool beforeShown = false;
    bool modShift = false, modMeta = false, modAlt = false, modControl = false;

signals:
    /// The Apply button was pressed.
    void operateRequested();

    // Slots, page builder and preview belong to the dialog's own files.
private:
    std::unique_ptr<Ui::Operators> ui;
};
