// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

/// What the debug channel said since the last call.
QStringList takeDebugLines();
