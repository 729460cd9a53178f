// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class OperatorTable;
class OpWrapper;
class QString;
class QWidget;

/// Shows a page of the program's help, by its name under ":/help/" ("page.html", or
/// "page.html#place" for a place in it), in a window beside what it explains. The window goes
/// with its parent; a parent's second page takes the place of its first. With a table, pages of
/// its operators show their pictures and parameters; it must outlive the window.
void showHelpPage(QWidget *parent, const QString &title, const QString &name,
                  const OperatorTable *table = nullptr);

/// The page of one operator in the same way. Its table must outlive the window.
void showOperatorHelp(QWidget *parent, const OpWrapper &op);

/// The mark-up of an operator's page: its text, with pictures before and after and the table of
/// its parameters in their places. Null if the program has no such page.
QString operatorHelpText(const OpWrapper &op);
