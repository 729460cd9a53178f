// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/lineeditor.h"

#include <gtest/gtest.h>

#include <sstream>

namespace
{
struct Keys {
    const char *fault, *keys, *text;
};
class LineKeys : public testing::TestWithParam<Keys>
{
};

TEST_P(LineKeys, GiveTheText)
{
    std::ostringstream screen;
    LineEditor editor(screen, "> ");
    for (const char *earlier : {"first\n", "second\n"}) {
        editor.begin(80);
        for (; *earlier; ++earlier)
            editor.feed(*earlier);
    }
    editor.begin(80);
    for (const char *key = GetParam().keys; *key; ++key)
        editor.feed(*key);
    EXPECT_EQ(editor.text().toStdString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, LineKeys,
    testing::Values(Keys{"InsertsAtTheCursor", "ac\033[Db", "abc"},
                    Keys{"BackspaceAtTheStart",
                         "\x7f\033[D\x7f"
                         "a",
                         "a"},
                    Keys{"DeleteAtTheEnd", "ab\033[3~\033[D\033[3~\033[3~", "a"},
                    Keys{"HomeAndEnd", "b\033[Ha\033OFc", "abc"},
                    Keys{"KillToEitherEnd", "abc\x02\x0b\x02\x15", "b"},
                    Keys{"KillWord", "one two  \x17three", "one three"},
                    Keys{"CharactersOfSeveralBytes", "\xc3\xa4\xe2\x82\xac\x7f!", "\xc3\xa4!"},
                    Keys{"EarlierLines", "\033[A\033[A\033[A\033[B!", "second!"},
                    Keys{"BackToAFreshLine", "\033[A\033[B\033[Bx", "x"},
                    Keys{"UnknownSequencesLeaveNothing", "\033[15~\033[1;5C\033[99999999999x",
                         "99999x"},
                    Keys{"GivenUp",
                         "abc\x03"
                         "d",
                         "d"}),
    [](const auto &row) { return row.param.fault; });

TEST(LineEditor, ShowsThePartAroundTheCursorOfAWideLine)
{
    std::ostringstream screen;
    LineEditor editor(screen, "> ");
    editor.begin(20);
    for (char c = 'a'; c <= 'z'; ++c)
        editor.feed(c);
    const std::string last = screen.str().substr(screen.str().rfind("\r>"));
    EXPECT_EQ(last, "\r> jklmnopqrstuvwxyz\033[K\r\033[19C");
    EXPECT_EQ(editor.feed('\n'), LineEditor::Step::Line);
    editor.begin(20);
    EXPECT_EQ(editor.feed('\x04'), LineEditor::Step::End);
}
} // namespace
