// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "entries.h"

/// The entries of the script language. They stand apart from those of the readers because
/// they need operators and fonts, and with these a QGuiApplication.
const std::vector<FuzzEntry> &scriptFuzzEntries();
