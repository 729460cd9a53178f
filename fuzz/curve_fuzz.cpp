// SPDX-License-Identifier: GPL-3.0-or-later
#include "scripttarget.h"

SCRIPT_FUZZ_TARGET("curve")
