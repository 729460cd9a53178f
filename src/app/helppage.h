// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QString;
class QWidget;

/// Shows a page of the program's help, by its name under ":/help/", in a window beside what
/// it explains. The window goes with its parent.
void showHelpPage(QWidget *parent, const QString &title, const QString &name);
