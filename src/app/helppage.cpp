// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/helppage.h"

#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"

#include <QCoreApplication>
#include <QDialog>
#include <QFile>
#include <QRegularExpression>
#include <QTextBrowser>
#include <QTextDocument>
#include <QUrl>
#include <QVBoxLayout>

#include <utility>

namespace
{
constexpr int kMargin = 14;
constexpr QSize kPageSize(600, 640); // two pictures side by side, and a small screen's height

QString text(const char *source)
{
    return QCoreApplication::translate("HelpPage", source);
}

/// A text file of the help, null if there is none.
QString resourceText(const QString &name)
{
    QFile file(QStringLiteral(":/help/") + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The script lines of an operator that made its picture, empty if it took other commands.
QString exampleLine(const QString &scriptName)
{
    const QString examples = resourceText(QStringLiteral("examples.txt"));
    for (const QString &line : examples.split(QLatin1Char('\n'))) {
        if (!line.startsWith(scriptName + QLatin1Char('|')))
            continue;
        QStringList commands = line.section(QLatin1Char('|'), 1).split(QLatin1Char(';'));
        return commands.filter(QRegularExpression(QLatin1Char('^') + scriptName))
            .join(QLatin1String("; "));
    }
    return QString();
}

QString picturesMarkup(const OpWrapper &op)
{
    const QString after = QStringLiteral("pictures/%1.jpg").arg(op.scriptName);
    if (!QFile::exists(QStringLiteral(":/help/") + after))
        return QString();
    QString caption = text("After").toHtmlEscaped();
    const QString line = exampleLine(op.scriptName);
    if (!line.isEmpty())
        caption += QStringLiteral(": <tt>%1</tt>").arg(line.toHtmlEscaped());
    return QStringLiteral("<table cellpadding=\"4\"><tr><td><img src=\"pictures/before.jpg\"></td>"
                          "<td><img src=\"%1\"></td></tr><tr><td>%2</td><td>%3</td></tr></table>")
        .arg(after, text("Before").toHtmlEscaped(), caption);
}

QString parametersMarkup(const OpWrapper &op)
{
    QString markup;
    const QString rows = op.helpRows();
    if (!rows.isEmpty()) {
        // The values may be a long list, so they get the room.
        const std::pair<const char *, int> columns[] = {
            {QT_TRANSLATE_NOOP("HelpPage", "Control"), 20},
            {QT_TRANSLATE_NOOP("HelpPage", "Values"), 50},
            {QT_TRANSLATE_NOOP("HelpPage", "At first"), 12},
            {QT_TRANSLATE_NOOP("HelpPage", "Place in the script line"), 18}};
        QString heads;
        for (const auto &[head, percent] : columns)
            heads += QStringLiteral("<th align=\"left\" width=\"%1%\">%2</th>")
                         .arg(QString::number(percent), text(head).toHtmlEscaped());
        // A middle grey is seen on light and on dark ground.
        markup +=
            QStringLiteral("<table border=\"1\" cellspacing=\"0\" cellpadding=\"4\" width=\"100%\" "
                           "style=\"border-collapse: collapse; border-color: #808080\">"
                           "<tr>%1</tr>\n%2</table>\n")
                .arg(heads, rows);
    }
    if (!op.usage().isEmpty()) {
        const QString usage = op.usage().trimmed().toHtmlEscaped();
        markup += QStringLiteral("<p>%1: <tt>%2</tt></p>\n")
                      .arg(text("Usage in a script").toHtmlEscaped(),
                           QString(usage).replace(QLatin1Char('\n'), QLatin1String("<br>")));
    }
    return markup;
}

const OpWrapper *operatorOfPage(const OperatorTable *table, const QString &page)
{
    if (table)
        for (const OpWrapper *op : table->operators())
            if (op->self && op->helpPage == page)
                return op;
    return nullptr;
}

/// Fills in what the program knows of an operator whenever its page is shown, also by a link.
class HelpBrowser : public QTextBrowser
{
public:
    const OperatorTable *table = nullptr;

    QVariant loadResource(int type, const QUrl &name) override
    {
        const OpWrapper *op =
            type == QTextDocument::HtmlResource ? operatorOfPage(table, name.fileName()) : nullptr;
        const QString page = op ? operatorHelpText(*op) : QString();
        return page.isNull() ? QTextBrowser::loadResource(type, name) : QVariant(page);
    }
};

QDialog *makePage(QWidget *parent, const QString &objectName)
{
    auto *page = new QDialog(parent);
    page->setObjectName(objectName);
    page->setAttribute(Qt::WA_DeleteOnClose);
    auto *browser = new HelpBrowser;
    browser->setOpenExternalLinks(true);
    browser->document()->setDocumentMargin(kMargin);
    auto *column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(browser);
    page->resize(kPageSize);
    return page;
}
} // namespace

QString operatorHelpText(const OpWrapper &op)
{
    QString page = resourceText(op.helpPage);
    page.replace(QLatin1String("<!--pictures-->"), picturesMarkup(op));
    page.replace(QLatin1String("<!--parameters-->"), parametersMarkup(op));
    return page;
}

void showHelpPage(QWidget *parent, const QString &title, const QString &name,
                  const OperatorTable *table)
{
    const QString objectName = QStringLiteral("helpPage");
    // Not that of a dialog below: it would show the page of another window.
    auto *page = parent->findChild<QDialog *>(objectName, Qt::FindDirectChildrenOnly);
    if (!page)
        page = makePage(parent, objectName);
    page->setWindowTitle(title);
    auto *browser = static_cast<HelpBrowser *>(page->findChild<QTextBrowser *>());
    browser->table = table;
    browser->setAccessibleName(title);
    browser->setSource(QUrl(QStringLiteral("qrc:/help/") + name));
    page->show();
    page->raise();
    page->activateWindow();
}

void showOperatorHelp(QWidget *parent, const OpWrapper &op)
{
    showHelpPage(parent, text("Help: %1").arg(op.menuName), op.helpPage, op.ops);
}
