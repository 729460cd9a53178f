// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <gtest/gtest.h>

/// The widget of this name within another one; a test fails without it.
template <class Widget>
Widget *child(const QWidget &in, const char *name)
{
    auto *found = in.findChild<Widget *>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
}
