// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/scriptlibrarydialog.h"

#include "app/filebag.h"
#include "app/filepicker.h"
#include "app/getstringgeneral.h"
#include "app/scriptlibrary.h"
#include "core/workspace.h"
#include "formats/writers.h"

#include "ui_scriptlibrarydialog.h"

#include <QFile>
#include <QHeaderView>
#include <QKeySequence>
#include <QPushButton>
#include <QSaveFile>

#include <algorithm>
#include <utility>

namespace
{
enum Column { kName, kKey, kLines };
constexpr int kWidthInLetters = 76, kHeightInLines = 22;
constexpr int kKeyLetters = 14, kLinesLetters = 8;
constexpr qint64 kMostFileBytes = qint64(1) << 28;

QString keyText(int key)
{
    return key ? QKeySequence(key).toString(QKeySequence::NativeText) : QString();
}
} // namespace

ScriptLibraryDialog::ScriptLibraryDialog(ScriptLibrary *scripts, KeyUse useOf, FileBag *bag,
                                         QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::ScriptLibraryDialog>()), library(scripts),
      keyUse(std::move(useOf)), fileBag(bag)
{
    ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    ui->buttonBox->button(QDialogButtonBox::Close)->setAutoDefault(false);
    const QFontMetrics metrics(font());
    ui->list->header()->setStretchLastSection(false);
    ui->list->header()->setSectionResizeMode(kName, QHeaderView::Stretch);
    ui->list->header()->resizeSection(kLines, metrics.averageCharWidth() * kLinesLetters);
    ui->list->header()->resizeSection(kKey, metrics.averageCharWidth() * kKeyLetters);
    ui->message->setMinimumHeight(metrics.lineSpacing() * 2);
    resize(metrics.averageCharWidth() * kWidthInLetters, metrics.lineSpacing() * kHeightInLines);
    connect(library, &ScriptLibrary::changed, this, &ScriptLibraryDialog::fill);
    fill();
}

ScriptLibraryDialog::~ScriptLibraryDialog() = default;

QString ScriptLibraryDialog::chosen() const
{
    const QTreeWidgetItem *item = ui->list->currentItem();
    return item ? item->text(kName) : QString();
}

void ScriptLibraryDialog::fill()
{
    const QString before = chosen();
    const int row = std::max(0, ui->list->indexOfTopLevelItem(ui->list->currentItem()));
    ui->list->clear();
    for (const SavedScript &script : library->scripts()) {
        const int lines = script.text.trimmed().count(QLatin1Char('\n')) + 1;
        auto *item = new QTreeWidgetItem(
            ui->list, {script.name, keyText(script.key), QString::number(lines)});
        item->setToolTip(kName, script.text.section(QLatin1Char('\n'), 0, 11)
                                    .toHtmlEscaped()
                                    .replace(QLatin1Char('\n'), QLatin1String("<br>")));
    }
    choose(before);
    if (!ui->list->currentItem() && ui->list->topLevelItemCount() > 0)
        ui->list->setCurrentItem(
            ui->list->topLevelItem(std::min(row, ui->list->topLevelItemCount() - 1)));
    on_list_currentItemChanged();
    ui->exportFile->setEnabled(!library->scripts().isEmpty());
    if (library->scripts().isEmpty())
        tell(tr("No script is saved yet. \"Store in Saved Scripts\" in the script editor keeps "
                "the script under a name."));
}

void ScriptLibraryDialog::choose(const QString &name)
{
    const auto found = ui->list->findItems(name, Qt::MatchExactly, kName);
    if (!found.isEmpty())
        ui->list->setCurrentItem(found.constFirst());
}

void ScriptLibraryDialog::on_list_currentItemChanged()
{
    const SavedScript *script = library->find(chosen());
    for (QWidget *act : {static_cast<QWidget *>(ui->run), static_cast<QWidget *>(ui->edit),
                         static_cast<QWidget *>(ui->rename), static_cast<QWidget *>(ui->remove),
                         static_cast<QWidget *>(ui->capture)})
        act->setEnabled(script);
    ui->clearKey->setEnabled(script && script->key);
    ui->capture->setText(script ? keyText(script->key) : QString());
    ui->message->clear();
}

void ScriptLibraryDialog::tell(const QString &text)
{
    ui->message->setText(text);
}

void ScriptLibraryDialog::on_list_itemActivated()
{
    on_run_clicked();
}

void ScriptLibraryDialog::on_run_clicked()
{
    if (!chosen().isEmpty())
        emit runRequested(chosen());
}

void ScriptLibraryDialog::on_edit_clicked()
{
    if (!chosen().isEmpty())
        emit editRequested(chosen());
}

void ScriptLibraryDialog::on_rename_clicked()
{
    const QString name = chosen();
    GetStringGeneral dialog(tr("Rename the Script"), tr("Name:"), name, this);
    if (name.isEmpty() || dialog.exec() != QDialog::Accepted)
        return;
    QString error;
    if (library->rename(name, dialog.text(), &error))
        choose(dialog.text().simplified());
    else
        tell(error);
}

void ScriptLibraryDialog::on_remove_clicked()
{
    const QString name = chosen();
    const int answer = workspace()->question(
        tr("Delete the Script"),
        tr("Delete the saved script \"%1\"? It cannot be brought back.").arg(name.toHtmlEscaped()),
        {tr("Cancel"), tr("Delete")}, 1, 0);
    if (answer == 1)
        library->remove(name);
}

void ScriptLibraryDialog::on_capture_captured(int key)
{
    const QString name = chosen();
    const QString use = keyUse(key);
    if (!use.isEmpty()) {
        on_list_currentItemChanged();
        tell(tr("%1 is %2. Choose another key.").arg(keyText(key), use));
        return;
    }
    const SavedScript *other = library->findKey(key);
    const QString from = other && other->name != name ? other->name : QString();
    library->setKey(name, key);
    tell(from.isEmpty() ? tr("%1 runs this script now.").arg(keyText(key))
                        : tr("%1 runs this script now, no longer \"%2\".").arg(keyText(key), from));
}

void ScriptLibraryDialog::on_clearKey_clicked()
{
    library->setKey(chosen(), 0);
}

void ScriptLibraryDialog::on_importFile_clicked()
{
    const QString path =
        filePicker::pick(this, fileBag, filePicker::PickFor::Open, tr("Import Saved Scripts"))
            .value(0);
    if (path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > kMostFileBytes) {
        tell(tr("%1 could not be read: %2")
                 .arg(path, file.isOpen() ? tr("it is too large") : file.errorString()));
        return;
    }
    QString error;
    const int count = library->addJson(file.read(kMostFileBytes), &error);
    tell(count < 0 ? error : tr("Scripts imported: %1").arg(count));
}

void ScriptLibraryDialog::on_exportFile_clicked()
{
    const QString path = filePicker::pick(this, fileBag, filePicker::PickFor::Save,
                                          tr("Export Saved Scripts"), QStringLiteral("scripts"))
                             .value(0);
    if (path.isEmpty())
        return;
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(library->toJson());
    tell(commitWhole(file) ? tr("Exported to %1.").arg(path)
                           : tr("%1 could not be written: %2").arg(path, file.errorString()));
}
