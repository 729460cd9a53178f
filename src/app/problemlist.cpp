// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/problemlist.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace
{
constexpr int kWidthInLetters = 70;
constexpr int kHeightInLines = 12;
} // namespace

void showProblems(QWidget *parent, const QString &title, const QString &summary,
                  const QStringList &problems)
{
    if (problems.isEmpty())
        return;
    QDialog box(parent);
    box.setObjectName(QStringLiteral("problemList"));
    box.setWindowTitle(title);
    auto *column = new QVBoxLayout(&box);
    auto *said = new QLabel(summary);
    said->setTextFormat(Qt::PlainText);
    said->setWordWrap(true);
    auto *list = new QPlainTextEdit(problems.join(QLatin1Char('\n')));
    list->setObjectName(QStringLiteral("problems"));
    list->setReadOnly(true);
    list->setTabChangesFocus(true);
    list->setAccessibleName(summary);
    const QFontMetrics letters = list->fontMetrics();
    list->setMinimumSize(letters.averageCharWidth() * kWidthInLetters,
                         letters.lineSpacing() * kHeightInLines);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    buttons->setObjectName(QStringLiteral("buttonBox"));
    QObject::connect(buttons, &QDialogButtonBox::accepted, &box, &QDialog::accept);
    column->addWidget(said);
    column->addWidget(list, 1);
    column->addWidget(buttons);
    box.exec();
}
