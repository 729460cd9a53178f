// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/operators.h"

#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/keygrabber.h"
#include "operators/dialog/oppreview.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include "ui_operators.h"

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
    if (viewHost() && viewHost()->globalKey(event))
        return;
    recordModifiers(event->modifiers());
    if (passToMainWindow(event) || (currentView() && viewKey(event->key())))
        return;
    QDialog::keyPressEvent(event);
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
    refreshPreview();
}

void Operators::stepOperator(int step)
{
    const int row = ui->opCombo->currentIndex() + step;
    ui->opCombo->setCurrentIndex(std::clamp(row, 0, ui->opCombo->count() - 1));
}

void Operators::on_setHotkey_clicked()
{
    OpWrapper *op = currentOperator();
    if (!op)
        return;
    KeyGrabber grabber(op->menuName, !op->hotkey.isEmpty(), this);
    if (grabber.exec() == QDialog::Accepted)
        assignHotkey(op, grabber.key());
}

void Operators::assignHotkey(OpWrapper *op, const QString &key)
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
