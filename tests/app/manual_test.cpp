// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/helppage.h"

#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/table/allops.h"
#include "support/recordingworkspace.h"

#include <QDialog>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextTable>
#include <QUrl>

#include <gtest/gtest.h>

namespace
{
constexpr int kIdScript = 82; ///< its page tells of a text, and has no table of controls

QByteArray resource(const QString &name)
{
    QFile file(QStringLiteral(":/help/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The table that has a head and a row for each parameter, null if there is none.
QTextTable *parameterTable(const QTextDocument &document)
{
    for (QTextFrame *frame : document.rootFrame()->childFrames())
        if (auto *table = qobject_cast<QTextTable *>(frame); table && table->columns() == 4)
            return table;
    return nullptr;
}
} // namespace

TEST(Manual, EveryOperatorHasAPageWithPicturesAndItsParameters)
{
    RecordingWorkspace space;
    OperatorTable table;
    addAllOperators(&table);
    const QImage before(QStringLiteral(":/help/pictures/before.jpg"));
    EXPECT_EQ(before.width(), 240);
    QWidget window;
    for (const OpWrapper *op : table.operators()) {
        if (!op->self)
            continue;
        const bool hasTable = op->id != kIdScript;
        const std::string name = op->scriptName.toStdString();
        const QByteArray page = resource(op->helpPage);
        EXPECT_EQ(page.count("<!--pictures-->"), 1) << name;
        EXPECT_EQ(page.count("<!--parameters-->"), hasTable) << name;
        const QImage after(QStringLiteral(":/help/pictures/%1.jpg").arg(op->scriptName));
        EXPECT_FALSE(after.isNull()) << name;
        EXPECT_NE(after, before) << name << ": the example shows nothing";

        showOperatorHelp(&window, *op);
        auto *browser = window.findChild<QTextBrowser *>();
        ASSERT_TRUE(browser);
        const QString shown = browser->toPlainText();
        EXPECT_TRUE(shown.contains(op->usage().section('\n', 0, 0).trimmed())) << name;
        EXPECT_TRUE(shown.contains(QChar::ObjectReplacementCharacter)) << name << ": no pictures";
        const QTextTable *rows = parameterTable(*browser->document());
        EXPECT_EQ(rows ? rows->rows() - 1 : 0, op->helpRows().count("<tr>")) << name;
    }
}

TEST(Manual, LinksLeadToPagesWithTheirParameters)
{
    RecordingWorkspace space;
    OperatorTable table;
    addAllOperators(&table);
    QWidget window;
    showOperatorHelp(&window, *table.byScriptName(QStringLiteral("keyop")));
    auto *browser = window.findChild<QTextBrowser *>();
    ASSERT_TRUE(browser);
    EXPECT_EQ(parameterTable(*browser->document()), nullptr);
    browser->setSource(browser->source().resolved(QUrl(QStringLiteral("opalphamodify.html"))));
    const QTextTable *rows = parameterTable(*browser->document());
    ASSERT_TRUE(rows);
    EXPECT_EQ(rows->cellAt(2, 0).firstCursorPosition().block().text(), QStringLiteral("Mode"));
    EXPECT_EQ(window.findChild<QDialog *>()->windowTitle(),
              QStringLiteral("Help: Key to Colorspace"));
    // Every link between pages has its page.
    const QRegularExpression link(QStringLiteral("href=\"([^\"#:]+)"));
    for (const OpWrapper *op : table.operators()) {
        auto found = link.globalMatch(QString::fromUtf8(resource(op->helpPage)));
        while (found.hasNext())
            EXPECT_FALSE(resource(found.next().captured(1)).isEmpty())
                << op->helpPage.toStdString();
    }
}
