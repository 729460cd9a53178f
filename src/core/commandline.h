// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

/// The arguments after the program's name, for a program without windows; call it before
/// anything else. Under the C locale, as services and scheduled jobs have it, Qt would turn
/// every other character of a file name into "?", so such names are taken as UTF-8.
/// Diagnostics, Qt's among them, are no messages: they are silent unless QT_LOGGING_RULES
/// brings them back.
QStringList commandLineArguments(int argc, char **argv);
