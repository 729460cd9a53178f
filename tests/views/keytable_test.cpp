// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/imgwindow.h"
#include "views/keyfile.h"

#include <QFile>

#include <gtest/gtest.h>

#include <random>

namespace
{
std::string text(int number, const KeyTable &table)
{
    return table.sequenceOf(number).toString(QKeySequence::PortableText).toStdString();
}

/// The rows of docs/keys.md, one for each command.
QByteArray documentedRows()
{
    const KeyTable table = KeyTable::defaults();
    QString rows = QStringLiteral("| | command | group | keys |\n|---|---|---|---|\n");
    for (const WindowCommand &command : windowCommands()) {
        QStringList keys;
        for (const int key : table.keysOf(command.number))
            keys << QLatin1Char('`') + QKeySequence(key).toString(QKeySequence::PortableText) +
                        QLatin1Char('`');
        rows += QStringLiteral("| %1 | %2 | %3 | %4 |\n")
                    .arg(QString::number(command.number), command.title(), command.groupName(),
                         keys.join(QLatin1Char(' ')));
    }
    return rows.toUtf8();
}
} // namespace

TEST(KeyTable, SignsDigitsAndTabsAreFoundHoweverTheyAreReached)
{
    const KeyTable table = KeyTable::defaults();
    const struct {
        int key;
        Qt::KeyboardModifiers modifiers;
        int command;
    } rows[] = {
        {Qt::Key_Plus, Qt::ControlModifier | Qt::ShiftModifier, kCommandZoomIn},
        {Qt::Key_Plus, Qt::KeypadModifier, kCommandZoomIn},
        {Qt::Key_2, Qt::ShiftModifier, kCommandRatioFirst + 8}, // digits behind Shift
        {Qt::Key_2, Qt::ShiftModifier | Qt::AltModifier, kCommandRecentFirst + 1},
        {Qt::Key_Tab, Qt::ControlModifier | Qt::ShiftModifier, kCommandPreviousImage},
        {Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier, kCommandPreviousImage},
        {Qt::Key_U, Qt::GroupSwitchModifier, kCommandUndo},
        {Qt::Key_U, Qt::MetaModifier, 0},
    };
    for (const auto &row : rows)
        EXPECT_EQ(table.command(row.key, row.modifiers), row.command) << std::hex << row.key;
    for (const int free : {int(Qt::Key_H), int(Qt::Key_H) | int(Qt::SHIFT)})
        EXPECT_EQ(table.commandAt(free), 0) << free; // of hotkeys
    for (const auto &[key, command] : {std::pair(Qt::Key_F1, kCommandToolEntire),
                                       {Qt::Key_F12, kCommandToolMagnify},
                                       {Qt::Key_T, kCommandToolText}})
        EXPECT_EQ(table.commandAt(key), command) << key;
    for (const KeyTable::Binding &binding : table.bindings())
        EXPECT_TRUE(KeyTable::isBindable(binding.key)) << binding.key;
}

TEST(KeyFile, KeepsEveryKeyAndItsPlace)
{
    std::mt19937 random(5);
    KeyTable table;
    const QList<WindowCommand> &commands = windowCommands();
    for (const int modifiers : {0, int(Qt::SHIFT), int(Qt::CTRL), int(Qt::ALT) | int(Qt::META)})
        for (int code = 0x20; code < 0x600; ++code)
            for (const int key : {code | modifiers, (Qt::Key_Escape + code) | modifiers})
                if (KeyTable::isBindable(KeyTable::plainKey(key)))
                    table.bind(key, commands.at(int(random() % unsigned(commands.size()))).number);
    ASSERT_GT(table.bindings().size(), 3000);
    KeyTable read;
    QStringList problems;
    EXPECT_TRUE(keysFromText(keysToText(table), &read, &problems));
    EXPECT_EQ(problems.join('\n').toStdString(), "");
    for (const WindowCommand &command : commands)
        EXPECT_EQ(read.keysOf(command.number), table.keysOf(command.number)) << command.name;

    EXPECT_TRUE(keysFromText(keysToText(KeyTable()), &read, &problems));
    EXPECT_TRUE(read.bindings().isEmpty()); // and no default comes back
}

TEST(KeyFile, LeavesOutNonsenseLineByLine)
{
    const QByteArray file = "\xEF\xBB\xBFKestrane keys 1\r\n"
                            "# a remark\r\n\r\n"
                            "  14\t#  # the sign, and a remark\r\n"
                            "14 Num+7 # the keypad's\r\n"
                            "16 Shift++\n"
                            "500 A\n" // line 7
                            "-1 A\n"
                            "14 Crtl+A\n"
                            "14 Ctrl+A, Ctrl+B\n"
                            "14 Shift\n"
                            "14 \n"
                            "37 #\n"
                            "some words\n" // line 14
                            "37 none\n"
                            "45 C";
    KeyTable table;
    QStringList problems;
    ASSERT_TRUE(keysFromText(file, &table, &problems));
    EXPECT_EQ(table.keysOf(kCommandUndo), (QList<int>{Qt::Key_NumberSign, Qt::Key_7}));
    EXPECT_EQ(text(kCommandZoomIn, table), "+");
    EXPECT_EQ(table.keysOf(kCommandRedo), QList<int>());
    EXPECT_EQ(text(kCommandRename, table), "C");
    EXPECT_EQ(table.keysOf(kCommandCentre), QList<int>()); // its default is another's now
    EXPECT_EQ(text(kCommandSave, table), "Ctrl+S");        // not named, so as ever
    ASSERT_EQ(problems.size(), 8) << problems.join('\n').toStdString();
    for (int i = 0; i < 8; ++i)
        EXPECT_TRUE(problems.at(i).startsWith(QStringLiteral("Line %1: ").arg(i + 7)))
            << problems.at(i).toStdString();
    EXPECT_TRUE(problems.at(6).contains("\"Undo\"")) << problems.at(6).toStdString();
}

TEST(KeyFile, RefusesWhatIsNoKeyTable)
{
    const KeyTable before = KeyTable::defaults();
    const QByteArray magic = "Kestrane keys 1\n";
    const QByteArray rows[] = {{},
                               "\n",
                               "Kestrane keys\n14 A",
                               "Kestrane keys 0\n14 A",
                               "Kestrane keys x\n14 A",
                               "\x89PNG\r\n\x1A\n",
                               QByteArray(2000, '\0'),
                               magic + QByteArray(kMostKeyTextBytes, ' ')};
    for (const QByteArray &row : rows) {
        KeyTable table = before;
        QStringList problems;
        EXPECT_FALSE(keysFromText(row, &table, &problems)) << row.left(40).toStdString();
        EXPECT_EQ(table.bindings(), before.bindings());
        EXPECT_EQ(problems.size(), 1);
    }
    KeyTable table;
    QStringList problems;
    EXPECT_TRUE(keysFromText("Kestrane keys 2\n14 A", &table, &problems)); // told, and read
    EXPECT_EQ(problems.size(), 1);
    EXPECT_EQ(text(kCommandUndo, table), "A");
    EXPECT_TRUE(keysFromText(magic + QByteArray("x\n").repeated(100000), &table, &problems));
    EXPECT_LT(problems.size(), 300);
}

TEST(KeyFile, TheManualListsTheDefaults)
{
    QFile manual(QStringLiteral(KESTRANE_SOURCE_DIR "/docs/keys.md"));
    ASSERT_TRUE(manual.open(QIODevice::ReadOnly));
    EXPECT_TRUE(manual.readAll().endsWith('\n' + documentedRows()))
        << "the end of docs/keys.md should read:\n"
        << documentedRows().toStdString();
}
