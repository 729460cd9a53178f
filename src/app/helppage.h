// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QString;
class QWidget;

/// Shows a page of the program's help, by its name under ":/help/" ("page.html", or
/// "page.html#place" for a place in it), in a window beside what it explains. The window goes
/// with its parent; a parent's second page takes the place of its first.
void showHelpPage(QWidget *parent, const QString &title, const QString &name);
