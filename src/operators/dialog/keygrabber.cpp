// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/keygrabber.h"

#include "views/keytable.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

KeyGrabber::KeyGrabber(const QString &operatorName, bool hasKey, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("keyGrabber"));
    setWindowTitle(tr("Set Hotkey"));
    auto *prompt =
        new QLabel(tr("Press the key that is to choose \"%1\".").arg(operatorName), this);
    auto *buttons = new QDialogButtonBox(this);
    QPushButton *remove = buttons->addButton(tr("No Key"), QDialogButtonBox::ResetRole);
    remove->setObjectName(QStringLiteral("removeKey"));
    remove->setEnabled(hasKey);
    QPushButton *cancel = buttons->addButton(QDialogButtonBox::Cancel);
    // A button with the focus would take the space bar for itself.
    remove->setFocusPolicy(Qt::NoFocus);
    cancel->setFocusPolicy(Qt::NoFocus);
    connect(remove, &QPushButton::clicked, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *column = new QVBoxLayout(this);
    column->addWidget(prompt);
    column->addWidget(buttons);
    setFocusPolicy(Qt::StrongFocus);
    setFocus();
}

void KeyGrabber::keyPressEvent(QKeyEvent *event)
{
    const Qt::KeyboardModifiers others =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    const QString text = event->text();
    if (!others && text.size() == 1 && text.at(0).isPrint()) {
        typed = text;
        bound = keyTable().command(event->key(), event->modifiers());
        accept();
        return;
    }
    if (event->key() == Qt::Key_Escape)
        reject();
}
