// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "scriptentries.h"
#include "target.h"

#include <QGuiApplication>

/// A target of the script language: it draws text, so it has a screen that nobody sees.
#define SCRIPT_FUZZ_TARGET(entry)                                                                  \
    static const bool offscreen = qputenv("QT_QPA_PLATFORM", "offscreen");                         \
    FUZZ_TARGET_OF(QGuiApplication, scriptFuzzEntries(), entry)
