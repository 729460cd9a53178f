// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/assignsdialog.h"

#include "app/filebag.h"
#include "app/filepicker.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace
{
enum Column { NameColumn, FolderColumn, NoteColumn };
constexpr int kWidthInLetters = 84, kHeightInLines = 22;

QPushButton *makeButton(const char *name, const QString &text)
{
    auto *button = new QPushButton(text);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    return button;
}
} // namespace

AssignsDialog::AssignsDialog(QWidget *parent)
    : QDialog(parent), edited(assigns()), table(new QTreeWidget)
{
    setWindowTitle(tr("Assigned Paths"));
    auto *column = new QVBoxLayout(this);
    auto *hint = new QLabel(tr("An assign is a short name for a folder. With “photos” standing "
                               "for a folder of pictures, photos:2024/a.png is a path wherever "
                               "one is typed."));
    hint->setWordWrap(true);
    table->setObjectName(QStringLiteral("assigns"));
    table->setAccessibleName(tr("Assigns"));
    table->setHeaderLabels({tr("Name"), tr("Stands for"), tr("Note")});
    table->setRootIsDecorated(false);
    table->setTextElideMode(Qt::ElideMiddle);
    table->header()->setStretchLastSection(false);
    table->header()->setSectionResizeMode(NameColumn, QHeaderView::ResizeToContents);
    table->header()->setSectionResizeMode(FolderColumn, QHeaderView::Stretch);
    table->header()->setSectionResizeMode(NoteColumn, QHeaderView::ResizeToContents);
    connect(table, &QTreeWidget::itemSelectionChanged, this, &AssignsDialog::showSelected);
    column->addWidget(hint);
    column->addWidget(table, 1);
    makeForm();
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName(QStringLiteral("buttonBox"));
    connect(buttons, &QDialogButtonBox::accepted, this, &AssignsDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
    fillTable(edited.names().value(0));
    check();
    resize(fontMetrics().averageCharWidth() * kWidthInLetters,
           fontMetrics().lineSpacing() * kHeightInLines);
}

void AssignsDialog::makeForm()
{
    auto *grid = new QGridLayout;
    nameEdit = new QLineEdit;
    nameEdit->setObjectName(QStringLiteral("name"));
    folderEdit = new QLineEdit;
    folderEdit->setObjectName(QStringLiteral("folder"));
    noteLabel = new QLabel;
    noteLabel->setObjectName(QStringLiteral("note"));
    noteLabel->setWordWrap(true);
    noteLabel->setTextFormat(Qt::PlainText);
    noteLabel->setMinimumHeight(2 * fontMetrics().lineSpacing());
    noteLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    QPushButton *browseButton = makeButton("browse", tr("&Browse…"));
    addButton = makeButton("add", tr("&Add"));
    changeButton = makeButton("change", tr("&Change"));
    removeButton = makeButton("remove", tr("&Remove"));
    auto *nameLabel = new QLabel(tr("&Name:"));
    nameLabel->setBuddy(nameEdit);
    auto *folderLabel = new QLabel(tr("&Stands for:"));
    folderLabel->setBuddy(folderEdit);
    auto *acts = new QHBoxLayout;
    for (QPushButton *button : {addButton, changeButton, removeButton})
        acts->addWidget(button);
    acts->addStretch();
    grid->addWidget(nameLabel, 0, 0);
    grid->addWidget(nameEdit, 0, 1);
    grid->addWidget(folderLabel, 1, 0);
    grid->addWidget(folderEdit, 1, 1);
    grid->addWidget(browseButton, 1, 2);
    grid->addWidget(noteLabel, 2, 1, 1, 2);
    grid->addLayout(acts, 3, 1, 1, 2);
    static_cast<QVBoxLayout *>(layout())->addLayout(grid);
    connect(nameEdit, &QLineEdit::textChanged, this, &AssignsDialog::check);
    connect(folderEdit, &QLineEdit::textChanged, this, &AssignsDialog::check);
    connect(browseButton, &QPushButton::clicked, this, &AssignsDialog::browse);
    connect(addButton, &QPushButton::clicked, this, &AssignsDialog::add);
    connect(changeButton, &QPushButton::clicked, this, &AssignsDialog::change);
    connect(removeButton, &QPushButton::clicked, this, &AssignsDialog::remove);
}

void AssignsDialog::fillTable(const QString &current)
{
    const QSignalBlocker quiet(table);
    table->clear();
    for (const QString &name : edited.names()) {
        const QString path = edited.resolve(name + QLatin1Char(':'));
        const bool leads = path.startsWith(QLatin1Char('/'));
        auto *item = new QTreeWidgetItem(table, {name, edited.folder(name)});
        item->setToolTip(FolderColumn, path);
        if (!leads || !QFileInfo(path).isDir()) {
            item->setText(NoteColumn, leads ? tr("Folder is missing") : tr("Leads nowhere"));
            item->setIcon(NoteColumn, style()->standardIcon(QStyle::SP_MessageBoxWarning));
        }
        if (name == current)
            table->setCurrentItem(item);
    }
    showSelected();
}

QString AssignsDialog::selectedName() const
{
    const QList<QTreeWidgetItem *> items = table->selectedItems();
    return items.isEmpty() ? QString() : items.constFirst()->text(NameColumn);
}

void AssignsDialog::showSelected()
{
    const QString name = selectedName();
    if (!name.isEmpty()) {
        nameEdit->setText(name);
        folderEdit->setText(edited.folder(name));
    }
    check();
}

/// Tells what stands against the two fields, and offers only what can be done with them.
void AssignsDialog::check()
{
    const QString name = nameEdit->text().trimmed(), selected = selectedName();
    const bool same = !name.compare(selected, Qt::CaseInsensitive);
    const bool taken = edited.contains(name);
    Assigns trial = edited;
    QString problem;
    const bool possible = trial.set(name, folderEdit->text(), &problem);
    if (possible && taken && !same)
        problem = tr("“%1” stands for another folder already.").arg(name);
    else if (possible && !QFileInfo(trial.resolve(name + QLatin1Char(':'))).isDir())
        problem = tr("This folder does not exist now.");
    noteLabel->setText(name.isEmpty() && folderEdit->text().isEmpty() ? QString() : problem);
    addButton->setEnabled(possible && !taken);
    changeButton->setEnabled(possible && !selected.isEmpty() && (!taken || same) &&
                             (name != selected || edited.folder(name) != folderEdit->text()));
    removeButton->setEnabled(!selected.isEmpty());
}

void AssignsDialog::add()
{
    const QString name = nameEdit->text().trimmed();
    QString error;
    if (edited.set(name, folderEdit->text(), &error))
        fillTable(name);
}

void AssignsDialog::change()
{
    const QString name = nameEdit->text().trimmed();
    QString error;
    Assigns changed = edited;
    changed.remove(selectedName());
    if (changed.set(name, folderEdit->text(), &error)) {
        edited = changed;
        fillTable(name);
    } else {
        noteLabel->setText(error); // it stood for itself by its old name
    }
}

void AssignsDialog::remove()
{
    edited.remove(selectedName());
    nameEdit->clear();
    folderEdit->clear();
    fillTable(edited.names().value(0));
}

void AssignsDialog::browse()
{
    FileBag bag;
    bag.record.folder = edited.resolve(folderEdit->text());
    const QStringList picked =
        filePicker::pick(this, &bag, filePicker::PickFor::Folder, tr("Folder of the Assign"));
    if (!picked.isEmpty())
        folderEdit->setText(picked.constFirst());
}

/// What stands in the fields and was not added yet is not lost.
void AssignsDialog::accept()
{
    if (addButton->isEnabled())
        add();
    else if (changeButton->isEnabled())
        change();
    assigns() = edited;
    QDialog::accept();
}
