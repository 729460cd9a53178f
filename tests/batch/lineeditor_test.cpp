// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/lineeditor.h"

#include <gtest/gtest.h>

#include <sstream>

namespace
{
void type(LineEditor &editor, const char *keys)
{
    editor.begin(80);
    for (; *keys; ++keys)
        editor.feed(*keys);
}

TEST(LineEditor, KeysGiveTheText)
{
    struct {
        const char *fault, *keys, *text;
    } const cases[] = {
        {"inserts at the cursor", "ac\033[Db", "abc"},
        {"backspace at the start", "\177\033[D\177a", "a"},
        {"delete at the end", "ab\033[3~\033[D\033[3~\033[3~", "a"},
        {"home and end", "b\033[Ha\033OFc", "abc"},
        {"kill to either end", "abc\x02\x0b\x02\x15", "b"},
        {"kill word", "one two  \x17three", "one three"},
        {"characters of several bytes", "\xc3\xa4\xe2\x82\xac\x7f!", "\xc3\xa4!"},
        {"earlier lines", "\033[A\033[A\033[A\033[B!", "second!"},
        {"back to a fresh line", "\033[A\033[B\033[Bx", "x"},
        {"unknown sequences leave nothing", "\033[15~\033[1;5C\033[99999999999x", "99999x"},
        {"given up", "abc\003d", "d"}};
    for (const auto &c : cases) {
        std::ostringstream screen;
        LineEditor editor(screen, "> ");
        type(editor, "first\n");
        type(editor, "second\n");
        type(editor, c.keys);
        EXPECT_EQ(editor.text().toStdString(), c.text) << c.fault;
    }
}

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
