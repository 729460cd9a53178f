// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The value that a setting has in a fresh workspace, as text; null for an unknown key, and
/// for all of them before there was a workspace.
QString defaultSettingText(const QString &key);
