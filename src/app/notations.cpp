// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/notations.h"

#include "core/image.h"
#include "core/workspace.h"
#include "views/imgwindow.h"
#include "views/notationacts.h"
#include "views/viewhost.h"

#include "ui_notations.h"

#include <QKeyEvent>
#include <QPushButton>
#include <QScopedValueRollback>

#include <algorithm>
#include <utility>

namespace
{
constexpr int kNumber = 0, kText = 1, kKind = 2; // columns
constexpr int kTextLines = 3;
constexpr int kShownText = 200; // of a text that a file may have made very long
constexpr int kLastMode = 2;

QString kindOf(const Notation &note)
{
    QStringList parts;
    if (!note.text.trimmed().isEmpty() || (!note.pointing && note.points.isEmpty()))
        parts << Notations::tr("text");
    if (note.pointing)
        parts << Notations::tr("arrow");
    if (!note.points.isEmpty())
        parts << Notations::tr("polygon of %1").arg(note.points.size());
    return parts.join(QStringLiteral(", "));
}

int percentOf(double part)
{
    return part >= 0.0 ? qRound(std::min(part, 1.0) * 100) : part < 0.0 ? 0 : 100;
}
} // namespace

Notations::Notations(QWidget *parent) : QDialog(parent), ui(std::make_unique<Ui::Notations>())
{
    const QScopedValueRollback<bool> guard(filling, true);
    ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    // Return in the list goes to the text; it must not close the dialog.
    ui->buttonBox->button(QDialogButtonBox::Close)->setAutoDefault(false);
    const QFontMetrics metrics(font());
    ui->noteText->setFixedHeight(metrics.lineSpacing() * kTextLines + 14);
    ui->list->setMinimumWidth(metrics.averageCharWidth() * 44);
    ui->list->setMinimumHeight(metrics.lineSpacing() * 7);
    ui->list->setColumnWidth(kNumber, metrics.averageCharWidth() * 7);
    ui->list->setColumnWidth(kText, metrics.averageCharWidth() * 22);
    ui->opacity->setMinimumWidth(ui->opacity->sizeHint().width());
    for (QObject *field :
         {static_cast<QObject *>(ui->noteText), static_cast<QObject *>(ui->list),
          static_cast<QObject *>(ui->opacity), static_cast<QObject *>(ui->opacitySlider)})
        field->installEventFilter(this);
    fillList();
}

Notations::~Notations() = default;

// --- Showing ----------------------------------------------------------------------------

/// The picture of the window shown, if both still stand.
image *Notations::picture() const
{
    ViewHost *host = viewHost();
    return host && host->isWindow(shown) && shown->validImage() ? shown->img : nullptr;
}

int Notations::row() const
{
    return ui->list->indexOfTopLevelItem(ui->list->currentItem());
}

const Notation *Notations::chosenNote() const
{
    const image *img = picture();
    return img && row() >= 0 && row() < img->notations.size() ? &img->notations.at(row()) : nullptr;
}

void Notations::follow(imgWindow *window)
{
    if (window == shown && (!window || picture()))
        return;
    closeNotationAct();
    shown = window;
    fillList();
    showChosen(picture() ? shown->notes.chosenNote() : -1);
}

void Notations::notationsChanged(const image *img, int chosen)
{
    if (!isVisible() || img != picture())
        return;
    fillList();
    showChosen(std::max(chosen, picture() ? shown->notes.chosenNote() : -1));
}

void Notations::editNotation(imgWindow *window, int index)
{
    follow(window);
    if (!isVisible())
        show();
    fillList();
    showChosen(index);
    raise();
    activateWindow();
    on_editText_clicked();
}

/// Keeps the rows that are there: the keyboard's place in the list stays with them.
void Notations::fillList()
{
    const QScopedValueRollback<bool> guard(filling, true);
    const image *img = picture();
    const int count = img ? img->notations.size() : 0;
    while (ui->list->topLevelItemCount() > count)
        delete ui->list->takeTopLevelItem(ui->list->topLevelItemCount() - 1);
    QList<QTreeWidgetItem *> more;
    for (int i = ui->list->topLevelItemCount(); i < count; ++i)
        more << new QTreeWidgetItem;
    ui->list->addTopLevelItems(more);
    for (int i = 0; i < count; ++i)
        fillRow(i, img->notations.at(i));
    ui->newNote->setEnabled(img != nullptr);
    ui->showAll->setChecked(workspace() && workspace()->showNotations);
    setWindowTitle(img ? tr("Notations: %1").arg(img->title) : tr("Notations"));
}

void Notations::fillRow(int index, const Notation &note)
{
    QTreeWidgetItem *item = ui->list->topLevelItem(index);
    const QString text = note.text.left(kShownText).simplified();
    item->setText(kNumber, QString::number(index + 1));
    item->setText(kText, text.isEmpty() ? tr("(no text)") : text);
    item->setText(kKind, kindOf(note));
}

void Notations::showChosen(int index)
{
    {
        const QScopedValueRollback<bool> guard(filling, true);
        QTreeWidgetItem *item = index < 0 ? nullptr : ui->list->topLevelItem(index);
        ui->list->setCurrentItem(item);
        if (!item)
            ui->list->clearSelection();
    }
    fillFields();
}

void Notations::fillFields()
{
    const QScopedValueRollback<bool> guard(filling, true);
    const Notation *note = chosenNote();
    for (QWidget *field : {static_cast<QWidget *>(ui->look), static_cast<QWidget *>(ui->editText),
                           static_cast<QWidget *>(ui->deleteNote)})
        field->setEnabled(note != nullptr);
    const Notation none, &shownNote = note ? *note : none;
    // Only a text that differs is set: setting it puts the cursor to its start.
    if (ui->noteText->toPlainText() != shownNote.text)
        ui->noteText->setPlainText(shownNote.text);
    ui->mode->setCurrentIndex(std::clamp(shownNote.mode, 0, kLastMode));
    ui->opacity->setValue(percentOf(shownNote.opacity));
    ui->opacitySlider->setValue(percentOf(shownNote.opacity));
    ui->pointing->setChecked(shownNote.pointing);
    ui->ownFont->setChecked(!shownNote.font.isEmpty());
    ui->fontFamily->setEnabled(!shownNote.font.isEmpty());
    ui->fontFamily->setCurrentFont(
        QFont(shownNote.font.isEmpty() ? QStringLiteral("Times") : shownNote.font));
    ui->moveUp->setEnabled(note && row() > 0);
    ui->moveDown->setEnabled(note && row() + 1 < ui->list->topLevelItemCount());
}

// --- Choosing ---------------------------------------------------------------------------

void Notations::on_list_currentItemChanged()
{
    if (filling)
        return;
    closeNotationAct();
    if (picture())
        shown->notes.choose(row());
    fillFields();
}

void Notations::on_list_itemActivated()
{
    on_editText_clicked();
}

void Notations::on_editText_clicked()
{
    if (!chosenNote())
        return;
    ui->noteText->setFocus();
    ui->noteText->selectAll();
}

// --- The list ---------------------------------------------------------------------------

void Notations::changeList(int chosen, const std::function<void(QList<Notation> *)> &set)
{
    image *img = picture();
    if (!img)
        return;
    beginNotationAct(img, chosen, NotationAct::Remove); // of its own, whatever came before
    set(&img->notations);
    shown->notes.choose(chosen);
    endNotationAct(img, chosen);
    fillList();
    showChosen(chosen);
}

void Notations::on_newNote_clicked()
{
    image *img = picture();
    if (!img)
        return;
    const QPoint middle = shown->windowToSample(shown->width() / 2.0, shown->height() / 2.0);
    Notation note;
    note.textX = note.tailX = note.headX = middle.x();
    note.textY = note.tailY = note.headY = middle.y();
    const int index = img->notations.size();
    beginNotationAct(img, index, NotationAct::Make);
    img->notations.append(note);
    shown->notes.choose(index);
    endNotationAct(img, index);
    fillList();
    showChosen(index);
    on_editText_clicked();
}

void Notations::on_deleteNote_clicked()
{
    const int gone = row();
    if (!chosenNote())
        return;
    const int next = std::min(gone, picture()->notations.size() - 2);
    changeList(next, [gone](QList<Notation> *notes) { notes->removeAt(gone); });
}

void Notations::moveNote(int step)
{
    const int from = row(), to = from + step;
    if (!chosenNote() || to < 0 || to >= picture()->notations.size())
        return;
    changeList(to, [from, to](QList<Notation> *notes) { notes->move(from, to); });
}

void Notations::on_moveUp_clicked()
{
    moveNote(-1);
}

void Notations::on_moveDown_clicked()
{
    moveNote(1);
}

// --- The look ---------------------------------------------------------------------------

void Notations::change(const std::function<void(Notation *)> &set)
{
    if (filling || !chosenNote())
        return;
    const int index = row();
    image *img = picture();
    Notation changed = notationAt(*img, index);
    set(&changed);
    beginNotationAct(img, index, NotationAct::Look);
    setNotation(img, index, std::move(changed));
    endNotationAct(img, index);
    fillRow(index, img->notations.at(index));
}

void Notations::on_noteText_textChanged()
{
    const QString text = ui->noteText->toPlainText();
    if (chosenNote() && chosenNote()->text != text)
        change([text](Notation *note) { note->text = text; });
}

void Notations::on_mode_activated(int mode)
{
    closeNotationAct();
    change([mode](Notation *note) { note->mode = mode; });
    closeNotationAct();
}

void Notations::on_opacity_valueChanged(int percent)
{
    ui->opacitySlider->setValue(percent);
    change([percent](Notation *note) { note->opacity = percent / 100.0; });
}

void Notations::on_opacitySlider_valueChanged(int percent)
{
    ui->opacity->setValue(percent);
}

void Notations::on_opacitySlider_sliderReleased()
{
    closeNotationAct();
}

void Notations::on_pointing_clicked(bool on)
{
    const image *img = picture();
    if (!img)
        return;
    // An arrow without a length gets one: a part of the view, down to the right.
    const QPointF reach = shown->scaleToImage(shown->width() / 8.0, shown->height() / 8.0);
    closeNotationAct();
    change([on, reach](Notation *note) {
        note->pointing = on;
        if (on && note->tailX == note->headX && note->tailY == note->headY) {
            note->headX += std::max(1, int(reach.x()));
            note->headY += std::max(1, int(reach.y()));
        }
    });
    closeNotationAct();
}

void Notations::on_ownFont_clicked(bool on)
{
    ui->fontFamily->setEnabled(on);
    on_fontFamily_activated(0);
}

void Notations::on_fontFamily_activated(int)
{
    const QString family =
        ui->ownFont->isChecked() ? ui->fontFamily->currentFont().family() : QString();
    closeNotationAct();
    change([family](Notation *note) { note->font = family; });
    closeNotationAct();
}

void Notations::on_showAll_clicked(bool on)
{
    if (!workspace() || !viewHost())
        return;
    workspace()->showNotations = on;
    for (imgWindow *window : qAsConst(viewHost()->windows))
        window->refreshOverlay();
    viewHost()->updateMenus();
}

// --- Open and closed --------------------------------------------------------------------

void Notations::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    ViewHost *host = viewHost();
    if (event->spontaneous() || !host)
        return;
    host->editingNotations = true;
    workspace()->showNotations = true; // whoever opens this wants to see them
    shown = host->validCurrent();
    on_showAll_clicked(true);
    fillList();
    showChosen(picture() ? shown->notes.chosenNote() : -1);
}

void Notations::hideEvent(QHideEvent *event)
{
    QDialog::hideEvent(event);
    ViewHost *host = viewHost();
    if (event->spontaneous() || !host)
        return;
    host->editingNotations = false;
    closeNotationAct();
    for (imgWindow *window : qAsConst(host->windows))
        window->notes.stop();
    host->updateMenus();
}

bool Notations::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusOut)
        closeNotationAct(); // what is changed next is another step
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (watched == ui->list && key == Qt::Key_Delete) {
            on_deleteNote_clicked();
            return true;
        }
        if (watched == ui->noteText && key == Qt::Key_Escape && picture()) {
            shown->activateWindow(); // done with the text: back to the picture
            shown->setFocus();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}
