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

QDialog *makePage(QWidget *parent, const QString &objectName)
{
    auto *page = new QDialog(parent);
    page->setObjectName(objectName);
    page->setAttribute(Qt::WA_DeleteOnClose);
    auto *browser = new QTextBrowser;
    browser->document()->setDocumentMargin(kMargin);
    auto *column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(browser);
    page->resize(460, 520);
    return page;
}
} // namespace

void showHelpPage(QWidget *parent, const QString &title, const QString &name)
{
    const QString objectName = QStringLiteral("helpPage");
    // Not that of a dialog below: it would show the page of another window.
    auto *page = parent->findChild<QDialog *>(objectName, Qt::FindDirectChildrenOnly);
    if (!page)
        page = makePage(parent, objectName);
    page->setWindowTitle(title);
    auto *browser = page->findChild<QTextBrowser *>();
    browser->setAccessibleName(title);
    browser->setSource(QUrl(QStringLiteral("qrc:/help/") + name));
    page->show();
    page->raise();
    page->activateWindow();
}
