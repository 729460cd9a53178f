// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/getstringgeneral.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace
{
constexpr int kLineLetters = 44; ///< of the line's width
}

GetStringGeneral::GetStringGeneral(const QString &title, const QString &prompt,
                                   const QString &preset, QWidget *parent)
    : QDialog(parent), line(new QLineEdit(preset))
{
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowTitle(title);
    line->setObjectName(QStringLiteral("text"));
    line->setAccessibleName(prompt.isEmpty() ? title : prompt);
    line->setMinimumWidth(fontMetrics().averageCharWidth() * kLineLetters);
    line->selectAll();
    auto *column = new QVBoxLayout(this);
    if (!prompt.isEmpty()) {
        auto *caption = new QLabel;
        caption->setTextFormat(Qt::PlainText); // a script's text is no mark-up
        caption->setText(prompt);
        caption->setWordWrap(true);
        caption->setBuddy(line);
        column->addWidget(caption);
    }
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(line);
    column->addStretch(1);
    column->addWidget(buttons);
    line->setFocus();
}

QString GetStringGeneral::text() const
{
    return line->text();
}
