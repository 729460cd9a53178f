// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/helppage.h"

#include <QDialog>
#include <QTextBrowser>
#include <QTextDocument>
#include <QUrl>
#include <QVBoxLayout>

namespace
{
constexpr int kMargin = 14;
}

void showHelpPage(QWidget *parent, const QString &title, const QString &name)
{
    const QString objectName = QStringLiteral("helpPage");
    if (auto *shown = parent->findChild<QDialog *>(objectName)) {
        shown->raise();
        shown->activateWindow();
        return;
    }
    auto *page = new QDialog(parent);
    page->setObjectName(objectName);
    page->setAttribute(Qt::WA_DeleteOnClose);
    page->setWindowTitle(title);
    auto *browser = new QTextBrowser;
    browser->setAccessibleName(title);
    browser->document()->setDocumentMargin(kMargin);
    browser->setSource(QUrl(QStringLiteral("qrc:/help/") + name));
    auto *column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(browser);
    page->resize(460, 520);
    page->show();
}
