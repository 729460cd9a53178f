// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/scriptreference.h"

#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "script/engine/optable.h"
#include "script/run/verbs.h"

#include "ui_scriptreference.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QTreeWidgetItemIterator>

#include <algorithm>

namespace
{
constexpr int kEntryRole = Qt::UserRole;
constexpr int kDetailLines = 6;
constexpr int kWordLetters = 21, kPanelLetters = 50;

constexpr struct {
    const char *name, *explanation;
} kVerbs[] = {
    {"mix",
     QT_TRANSLATE_NOOP("ScriptReference", "Mixes the picture with its state before the run, by a "
                                          "percentage.")},
    {"pause", QT_TRANSLATE_NOOP("ScriptReference", "Waits so many seconds.")},
    {"rect", QT_TRANSLATE_NOOP("ScriptReference", "Selects a rectangle by two corners.")},
    {"entire", QT_TRANSLATE_NOOP("ScriptReference", "Selects the whole picture.")},
    {"ellipse", QT_TRANSLATE_NOOP("ScriptReference", "Selects an ellipse by centre and radii.")},
    {"rellipse",
     QT_TRANSLATE_NOOP("ScriptReference", "Selects the ellipse that fills a rectangle.")},
    {"vload", QT_TRANSLATE_NOOP("ScriptReference",
                                "Loads a picture file; the flags make it the origin and load it "
                                "again.")},
    {"wand",
     QT_TRANSLATE_NOOP("ScriptReference", "Selects what has a colour like that of one sample.")},
    {"text", QT_TRANSLATE_NOOP("ScriptReference",
                               "Selects a text in the shape of its letters; Y is the bottom of "
                               "the line. m_fontpoints is its size.")},
    {"area", QT_TRANSLATE_NOOP("ScriptReference",
                               "Selects as the area tools and the Selection menu do, by the "
                               "settings that the tools have.")},
    {"selection",
     QT_TRANSLATE_NOOP("ScriptReference", "A whole selection, as recorded macros keep it.")},
    {"use", QT_TRANSLATE_NOOP("ScriptReference",
                              "Gives a setting or a parameter of an operator a value for the rest "
                              "of the run, or all settings of selecting and applying their "
                              "defaults.")},
    {"shape", QT_TRANSLATE_NOOP("ScriptReference",
                                "Multiplies the selection by the blend curve and inverts it if "
                                "that is set, as Apply does first.")},
    {"perform", QT_TRANSLATE_NOOP("ScriptReference",
                                  "Runs an operator with its present parameters, also one that "
                                  "has no line of its own.")},
};

/// Keywords of the statements that steer a run; to the expressions they are functions.
bool steers(int code)
{
    return code == SO_IF || code == SO_ELSE || code == SO_ENDIF || code == SO_LOOPIN ||
           code == SO_LOOPOUT;
}

QString groupOf(const OtDefinition &row)
{
    if (steers(row.opCode))
        return ScriptReference::tr("Control flow");
    switch (row.opClass) {
    case OT_TFUNC:
        return ScriptReference::tr("Texts");
    case OT_DUAL:
    case OT_OPENP:
    case OT_CLOSEP:
    case OT_COMMA:
        return ScriptReference::tr("Signs");
    default:
        break;
    }
    if (row.opCode == SO_PUSHS)
        return ScriptReference::tr("Texts");
    return row.count > 255 ? ScriptReference::tr("Arrays and names")
                           : ScriptReference::tr("Functions");
}

/// What a person would type of a keyword.
QString typedForm(const OtDefinition &row, const QString &word)
{
    const QString usage = QString::fromLatin1(row.usage);
    if (row.opClass != OT_DUAL && usage.contains(word + QLatin1Char('(')))
        return usage.contains(word + QLatin1String("()")) ? word + QLatin1String("()")
                                                          : word + QLatin1String("(|)");
    return word;
}

void addKeywords(std::vector<ReferenceEntry> *entries)
{
    for (const OtDefinition &row : kOtDefinitions) {
        const QString word = QString::fromLatin1(row.keyword);
        // Some rows have a keyword that nobody is to write.
        if (word.isEmpty() || row.opCode == SO_NEGATE2 || row.opCode == SO_NOP ||
            row.opCode == SO_XYZZY)
            continue;
        entries->push_back({groupOf(row), word, QString::fromLatin1(row.usage),
                            QString::fromUtf8(row.explanation), typedForm(row, word)});
    }
}

void addVerbs(std::vector<ReferenceEntry> *entries)
{
    const QStringList names = verbNames();
    for (const QString &name : names) {
        QString explanation;
        for (const auto &verb : kVerbs)
            if (name == QLatin1String(verb.name))
                explanation = ScriptReference::tr(verb.explanation);
        entries->push_back({ScriptReference::tr("Verbs"), name,
                            QString::fromLatin1(findVerb(name)->usage), explanation,
                            name + QLatin1Char(' ')});
    }
}

void addOperators(std::vector<ReferenceEntry> *entries, const OperatorTable &operators)
{
    for (OpWrapper *op : operators.operators()) {
        QString usage;
        op->readArguments(0, {}, &usage);
        if (usage.isEmpty())
            continue; // not for scripts
        entries->push_back(
            {ScriptReference::tr("Operators"), op->scriptName, usage,
             ScriptReference::tr("Applies the operator %1 to what is selected.").arg(op->menuName),
             op->scriptName + QLatin1Char(' ')});
    }
}
} // namespace

std::vector<ReferenceEntry> referenceEntries(const OperatorTable &operators,
                                             const QStringList &names)
{
    std::vector<ReferenceEntry> entries;
    addKeywords(&entries);
    addVerbs(&entries);
    addOperators(&entries, operators);
    for (const QString &name : names)
        entries.push_back({ScriptReference::tr("Variables of the program"), name, name,
                           ScriptReference::tr("A variable that each run begins with."), name});
    return entries;
}

ScriptReference::ScriptReference(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::ScriptReference>())
{
    ui->setupUi(this);
    const QFontMetrics metrics(font());
    ui->details->setMinimumHeight(metrics.lineSpacing() * kDetailLines);
    ui->words->header()->resizeSection(0, metrics.averageCharWidth() * kWordLetters);
    ui->filter->installEventFilter(this);
    setMinimumWidth(metrics.averageCharWidth() * kPanelLetters / 2);
    on_words_currentItemChanged(nullptr);
}

ScriptReference::~ScriptReference() = default;

void ScriptReference::setEntries(const std::vector<ReferenceEntry> &list)
{
    entries = list;
    ui->words->clear();
    QHash<QString, QTreeWidgetItem *> groups;
    for (int i = 0; i < int(entries.size()); ++i) {
        const ReferenceEntry &entry = entries.at(size_t(i));
        QTreeWidgetItem *&group = groups[entry.group];
        if (!group) {
            group = new QTreeWidgetItem(ui->words, {entry.group});
            group->setFirstColumnSpanned(true);
            QFont bold = font();
            bold.setBold(true);
            group->setFont(0, bold);
        }
        auto *item = new QTreeWidgetItem(group, {entry.word, entry.usage});
        item->setData(0, kEntryRole, i);
        item->setToolTip(1, entry.usage);
    }
    ui->words->expandAll();
    on_filter_textChanged(ui->filter->text());
}

bool ScriptReference::choose(const QString &word)
{
    for (QTreeWidgetItemIterator it(ui->words); *it; ++it) {
        if ((*it)->parent() && (*it)->text(0) == word) {
            ui->filter->clear();
            ui->words->setCurrentItem(*it);
            ui->words->scrollToItem(*it, QAbstractItemView::PositionAtCenter);
            return true;
        }
    }
    return false;
}

void ScriptReference::focusFilter()
{
    ui->filter->setFocus(Qt::ShortcutFocusReason);
    ui->filter->selectAll();
}

/// A word that matches counts more than an explanation that does: it comes to be the chosen one.
void ScriptReference::on_filter_textChanged(const QString &text)
{
    const QString wanted = text.trimmed();
    QTreeWidgetItem *best = nullptr;
    int bestRank = 4;
    for (int g = 0; g < ui->words->topLevelItemCount(); ++g) {
        QTreeWidgetItem *group = ui->words->topLevelItem(g);
        bool any = false;
        for (int i = 0; i < group->childCount(); ++i) {
            QTreeWidgetItem *item = group->child(i);
            const ReferenceEntry &entry = entries.at(size_t(item->data(0, kEntryRole).toInt()));
            const int rank = entry.word == wanted                                 ? 0
                             : entry.word.startsWith(wanted, Qt::CaseInsensitive) ? 1
                             : entry.word.contains(wanted, Qt::CaseInsensitive)   ? 2
                             : (entry.usage + QLatin1Char(' ') + entry.explanation)
                                     .contains(wanted, Qt::CaseInsensitive)
                                 ? 3
                                 : 4;
            item->setHidden(rank == 4);
            any = any || rank < 4;
            if (rank < bestRank) {
                bestRank = rank;
                best = item;
            }
        }
        group->setHidden(!any);
    }
    if (!wanted.isEmpty()) {
        ui->words->setCurrentItem(best);
        if (best)
            ui->words->scrollToItem(best, QAbstractItemView::PositionAtCenter);
    }
    if (!best)
        ui->details->setText(tr("Nothing matches <b>%1</b>.").arg(wanted.toHtmlEscaped()));
}

void ScriptReference::on_filter_returnPressed()
{
    on_words_itemActivated(ui->words->currentItem());
}

void ScriptReference::on_words_currentItemChanged(QTreeWidgetItem *current)
{
    if (!current || !current->parent()) {
        ui->details->setText(tr("Choose a word to read what it does. Double click inserts it."));
        return;
    }
    const ReferenceEntry &entry = entries.at(size_t(current->data(0, kEntryRole).toInt()));
    ui->details->setText(QStringLiteral("<tt><b>%1</b></tt><br>%2")
                             .arg(entry.usage.toHtmlEscaped(), entry.explanation.toHtmlEscaped()));
}

void ScriptReference::on_words_itemActivated(QTreeWidgetItem *item)
{
    if (item && item->parent())
        emit insertRequested(entries.at(size_t(item->data(0, kEntryRole).toInt())).inserted);
}

/// The arrow keys move through the words while the filter is typed.
bool ScriptReference::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == ui->filter && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Down || key == Qt::Key_Up || key == Qt::Key_PageDown ||
            key == Qt::Key_PageUp) {
            QCoreApplication::sendEvent(ui->words, event);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
