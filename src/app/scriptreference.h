// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <memory>
#include <vector>

class OperatorTable;
class QTreeWidgetItem;
namespace Ui
{
class ScriptReference;
}

/// One word of the language as the reference shows it.
struct ReferenceEntry {
    QString group, word, usage, explanation;
    QString inserted; ///< what goes into the text; "|" is where the cursor then stands
};

/// Every keyword, verb, operator and variable of the language, by groups. `names` are those
/// of the variables that the program sets.
std::vector<ReferenceEntry> referenceEntries(const OperatorTable &operators,
                                             const QStringList &names);

/// The panel that lists the words of the language and tells what they do.
class ScriptReference : public QWidget
{
    Q_OBJECT
public:
    explicit ScriptReference(QWidget *parent = nullptr);
    ~ScriptReference() override;

    void setEntries(const std::vector<ReferenceEntry> &list);
    /// Shows one word, if there is an entry of it.
    bool choose(const QString &word);
    void focusFilter();

signals:
    /// An entry is to go into the text; "|" is where the cursor then stands.
    void insertRequested(const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void on_filter_textChanged(const QString &text);
    void on_filter_returnPressed();
    void on_words_currentItemChanged(QTreeWidgetItem *current);
    void on_words_itemActivated(QTreeWidgetItem *item);

private:
    std::unique_ptr<Ui::ScriptReference> ui;
    std::vector<ReferenceEntry> entries;
};
