// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/codeedit.h"

#include "script/engine/exparser.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QTest>

#include <gtest/gtest.h>

namespace
{
ScriptWords languageWords()
{
    const exParser parser;
    ScriptWords words;
    words.setLanguage(parser.operatorTable(), {QStringLiteral("negative")},
                      {QStringLiteral("rect"), QStringLiteral("text")});
    words.setKnownVariables({QStringLiteral("m_width")});
    return words;
}

/// One letter for each sign of the line: what it is taken for.
std::string partsOf(const QString &line, const QSet<QString> &variables = {})
{
    static const char letters[] = ".:scftovxn\"#"; // in the order of ScriptPart
    std::string parts(size_t(line.size()), '.');
    for (const ScriptSpan &span : scriptSpans(line, languageWords(), variables))
        for (int i = 0; i < span.length; ++i)
            parts[size_t(span.start + i)] = letters[int(span.part)];
    return parts;
}
} // namespace

TEST(ScriptSpans, LinesAreSplitAsTheRunnerSplitsThem)
{
    const struct {
        const char *fault, *line, *parts;
    } rows[] = {
        {"CommentEndsAtColon", "x=1:#y=2:z=3", "x:n:####:x:n"},
        {"DoubledColonIsLiteral", "#a::b", "#####"},
        {"ColonEndsText", "s~\"a:b\"", "x:\"\":.\""},
        {"DoubledColonInText", "s~\"a::b\"", "x:\"\"\"\"\"\""},
        {"ElseLooksAtTheBeginning", "elsewhere=1", "ccccccccccc"},
        {"EqualityAssignsNothing", "x==1", ".ssn"},
        {"BlankBeforeTheSign", "x = 1", "x.:.n"},
        {"OperatorOpensOnly", "negative", "oooooooo"},
        {"OperatorNameInside", "x=negative", "x:........"},
        {"VerbThenNumbers", " rect 1 m_WIDTH", ".vvvv.n.xxxxxxx"},
        {"RadixAndSplitExponent", "0x1F+1e-3", "nnnns..sn"},
        {"WordsOfEachKind", "sin(author(if(", "fffsttttttsccs"},
        {"UnclosedText", "s~\"a ", "x:\"\"\""},
        {"RelationIsOneSign", "if(a<=b)", "ccs.ss.s"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(partsOf(QString::fromLatin1(row.line)), row.parts) << row.fault;
    EXPECT_EQ(partsOf(QStringLiteral("y=sin+1"), {QStringLiteral("sin")}), "x:xxxsn");
}

TEST(ScriptSpans, AnyLineIsCoveredInOrder)
{
    const QString signs = QStringLiteral("ax1 .:#\"~=!<>()+-,%é\t");
    uint32_t seed = 12345;
    for (int round = 0; round < 2000; ++round) {
        QString line;
        for (int i = 0; i < 24; ++i) {
            seed = seed * 1664525U + 1013904223U;
            line += signs.at(int(seed >> 16) % signs.size());
        }
        int end = 0;
        for (const ScriptSpan &span : scriptSpans(line, languageWords(), {})) {
            ASSERT_GE(span.start, end) << line.toStdString();
            end = span.start + span.length;
            ASSERT_LE(end, line.size()) << line.toStdString();
        }
    }
}

TEST(AssignedNames, AreThoseThatTheTextSets)
{
    EXPECT_EQ(assignedNames(QStringLiteral("Width=3:b ~ \"q\"\n#c=1\nwidth=4\nd==2\n5e=1\nx>=5")),
              QStringList({QStringLiteral("Width"), QStringLiteral("b")}));
}

TEST(CodeEdit, WordsAreCompletedAndReturnStaysANewLine)
{
    CodeEdit edit;
    edit.setWords(languageWords());
    edit.show();
    edit.setPlainText(QStringLiteral("hypotenuse=1\n"));
    edit.moveCursor(QTextCursor::End);
    QTest::keyClicks(&edit, QStringLiteral("hyp"));
    auto *popup = edit.findChild<QCompleter *>()->popup();
    ASSERT_TRUE(popup->isVisible());
    QTest::keyClick(popup, Qt::Key_Tab); // the first one
    EXPECT_EQ(edit.toPlainText(), QStringLiteral("hypotenuse=1\nhypo"));
    QTest::keyClick(&edit, Qt::Key_Space, Qt::ControlModifier);
    ASSERT_TRUE(popup->isVisible());
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Return);
    EXPECT_EQ(edit.toPlainText(), QStringLiteral("hypotenuse=1\nhypotenuse"));
    QTest::keyClicks(&edit, QStringLiteral("+si"));
    ASSERT_TRUE(popup->isVisible());
    QTest::keyClick(popup, Qt::Key_Return); // none is chosen: the line ends
    EXPECT_EQ(edit.toPlainText(), QStringLiteral("hypotenuse=1\nhypotenuse+si\n"));
    EXPECT_FALSE(popup->isVisible());
}

TEST(CodeEdit, MarksMoveWithTheirLinesAndUndoBringsATextBack)
{
    CodeEdit edit;
    edit.setPlainText(QStringLiteral("a=1\nb=2\nc=3"));
    edit.markError(2, QStringLiteral("first"));
    edit.markError(2, QStringLiteral("second"));
    edit.markError(9, QStringLiteral("nowhere"));
    edit.moveCursor(QTextCursor::Start);
    QTest::keyClick(&edit, Qt::Key_Return);
    const QMap<int, QString> marks = edit.errors();
    EXPECT_EQ(marks.size(), 1);
    EXPECT_EQ(marks.value(3), QStringLiteral("first\nsecond"));
    edit.goToLine(3);
    edit.toggleComment();
    EXPECT_EQ(edit.toPlainText(), QStringLiteral("\na=1\n#b=2\nc=3"));
    edit.toggleComment();
    edit.replaceText(QStringLiteral("new"));
    edit.undo();
    EXPECT_EQ(edit.toPlainText(), QStringLiteral("\na=1\nb=2\nc=3"));
    edit.goToLine(99);
    EXPECT_EQ(edit.currentLine(), 4);
}
