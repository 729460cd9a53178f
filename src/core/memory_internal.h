// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <mutex>

/// What the two source files of tracked memory share, and nobody else uses.

/// Guards memRecord. Preview jobs allocate beside the main thread; nothing is logged
/// while it is held, so that a message handler may itself allocate.
extern std::mutex memMutex;
