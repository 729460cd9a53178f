// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QStringList;
class QWidget;

/// A modal box with a summary and, below it, a list of problems that scrolls and can be
/// copied. Does nothing without problems.
void showProblems(QWidget *parent, const QString &title, const QString &summary,
                  const QStringList &problems);
