// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/operators.h"

#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/keygrabber.h"
#include "operators/dialog/oppreview.h"
#include "views/imgwindow.h"
#include "views/keytable.h"
#include "views/viewhost.h"

#include "ui_operators.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QKeyEvent>
#include <QMessageBox>
#include <QSpacerItem>

#include <algorithm>
#include <array>

namespace
{
/// A command of its own, which a hotkey would hide.
constexpr QChar kReservedKey = QLatin1Char('h');
/// It steps through the operators in the dialog.
constexpr QChar kStepKey = QLatin1Char('n');
constexpr int kWarningWidth = 500, kWarningHeight = 200;

/// Operators with text fields: there, Control and a letter belong to the text.
constexpr std::array kTextOperators = {2, 3, 19, 63, 72, 82, 85};

bool isModifierKey(int key)
{
    return key == Qt::Key_Control || key == Qt::Key_Shift || key == Qt::Key_Alt ||
           key == Qt::Key_AltGr || key == Qt::Key_Meta;
}
} // namespace

void Operators::recordModifiers(Qt::KeyboardModifiers modifiers)
{
    modShift = modifiers.testFlag(Qt::ShiftModifier);
    modMeta = modifiers.testFlag(Qt::MetaModifier);
    modAlt = modifiers.testFlag(Qt::AltModifier);
    modControl = modifiers.testFlag(Qt::ControlModifier);
}

void Operators::keyPressEvent(QKeyEvent *event)
{
    if (!handleKey(event))
        QDialog::keyPressEvent(event);
}

bool Operators::handleKey(QKeyEvent *event)
{
    if (viewHost() && viewHost()->globalKey(event))
        return true;
    recordModifiers(event->modifiers());
    if (passToMainWindow(event) || (currentView() && viewKey(event->key())))
        return true;
    return !modAlt && !modMeta && hotkeyPressed(event->text());
}

/// A list box would search its entries for every letter, with or without Control and Alt.
bool Operators::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || !qobject_cast<QComboBox *>(watched))
        return QDialog::eventFilter(watched, event);
    auto *key = static_cast<QKeyEvent *>(event);
    const bool opensList = key->key() == Qt::Key_Up || key->key() == Qt::Key_Down;
    const bool withCommand =
        key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if ((withCommand && !opensList) || key->key() == Qt::Key_N || operatorOfHotkey(key->text()))
        return handleKey(key);
    return false;
}

const OpWrapper *Operators::operatorOfHotkey(const QString &text) const
{
    for (const OpWrapper *op : table->operators())
        if (op->self && text.size() == 1 && op->hotkey == text)
            return op;
    return nullptr;
}

bool Operators::hotkeyPressed(const QString &text)
{
    const OpWrapper *op = operatorOfHotkey(text);
    if (!op)
        return false;
    if (op->id != table->currentOp)
        selectOperator(op->id);
    workspace()->statusText(tr("Operator: %1").arg(op->menuName));
    return true;
}

void Operators::keyReleaseEvent(QKeyEvent *event)
{
    recordModifiers(event->modifiers());
    QDialog::keyReleaseEvent(event);
}

bool Operators::passToMainWindow(QKeyEvent *event)
{
    const auto end = kTextOperators.end();
    const bool hasText = std::find(kTextOperators.begin(), end, table->currentOp) != end;
    // Control alone must not call the main window up: a combination may follow.
    if (!modControl || hasText || !parentWidget() || isModifierKey(event->key()))
        return false;
    QWidget *mainWindow = parentWidget()->window();
    mainWindow->activateWindow();
    QKeyEvent copy(event->type(), event->key(), event->modifiers(), event->text(),
                   event->isAutoRepeat(), ushort(event->count()));
    QCoreApplication::sendEvent(mainWindow, &copy);
    return true;
}

bool Operators::viewKey(int key)
{
    const image *img = currentView()->img;
    if (key == Qt::Key_N && modMeta)
        viewHost()->showNewImageDialog();
    else if (key == Qt::Key_N)
        stepOperator(modShift ? -1 : 1);
    else if (key == Qt::Key_Home && modShift)
        setOrigin(img->width / 2 - kPreviewSide / 2, img->height / 2 - kPreviewSide / 2);
    else if (key == Qt::Key_Home && modMeta)
        setOrigin(img->width - kPreviewSide, img->height - kPreviewSide);
    else if (key == Qt::Key_Home)
        setOrigin(0, 0);
    else if (modAlt && key >= Qt::Key_0 && key <= Qt::Key_9)
        emit digitAction((key - Qt::Key_0 + 9) % 10);
    else
        return moveByArrow(key);
    return true;
}

bool Operators::moveByArrow(int key)
{
    const int step = modShift ? 10 : modAlt ? 100 : 1;
    if (key == Qt::Key_Left)
        prod(-step, 0);
    else if (key == Qt::Key_Right)
        prod(step, 0);
    else if (key == Qt::Key_Up)
        prod(0, -step);
    else if (key == Qt::Key_Down)
        prod(0, step);
    else
        return false;
    return true;
}

void Operators::setOrigin(int x, int y)
{
    imgWindow *window = currentView();
    window->previewX = x;
    window->previewY = y;
    scheduleKeepingSource();
}

/// To the next row in that direction that can be chosen, if there is one.
void Operators::stepOperator(int step)
{
    int row = ui->opCombo->currentIndex() + step;
    while (row >= 0 && row < ui->opCombo->count() && !isChoosable(row))
        row += step;
    if (row >= 0 && row < ui->opCombo->count())
        ui->opCombo->setCurrentIndex(row);
}

void Operators::on_setHotkey_clicked()
{
    OpWrapper *op = currentOperator();
    if (!op)
        return;
    KeyGrabber grabber(op->menuName, !op->hotkey.isEmpty(), this);
    if (grabber.exec() == QDialog::Accepted)
        assignHotkey(op, grabber.key(), grabber.command());
}

void Operators::assignHotkey(OpWrapper *op, const QString &key, int command)
{
    if (key == kReservedKey) {
        refuseKey(tr("Key Not Allowed"),
                  tr("\"h\" cannot be used as a hotkey.\nHow about \"H\" instead?"));
        return;
    }
    for (const OpWrapper *other : table->operators())
        if (other != op && !key.isEmpty() && other->hotkey == key) {
            refuseKey(tr("Key In Use"), tr("This hotkey is already in use"));
            return;
        }
    const WindowCommand *taken = key.isEmpty() ? nullptr : windowCommand(command);
    if (taken) {
        // A picture would obey the command and never hear of the operator.
        refuseKey(tr("Key In Use"),
                  tr("This key is already in use for \"%1\"").arg(taken->title()));
        return;
    }
    if (key.toLower() == kStepKey || key == QLatin1String(" ")) {
        refuseKey(
            tr("Key Not Allowed"),
            key == QLatin1String(" ")
                ? tr("The space bar presses buttons and moves pictures.\n"
                     "Please choose another key.")
                : tr("\"%1\" steps through the operators.\nPlease choose another key.").arg(key));
        return;
    }
    op->hotkey = key;
    updateButtons();
}

void Operators::refuseKey(const QString &title, const QString &text)
{
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok, this);
    // A message box takes its size from its content alone.
    auto *grid = qobject_cast<QGridLayout *>(box.layout());
    if (grid) {
        const int missing = std::max(0, kWarningHeight - box.sizeHint().height());
        grid->addItem(new QSpacerItem(kWarningWidth, missing), grid->rowCount(), 0, 1,
                      grid->columnCount());
    }
    box.exec();
}
