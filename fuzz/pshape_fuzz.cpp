// SPDX-License-Identifier: GPL-3.0-or-later
#include "target.h"

FUZZ_TARGET("pshape")
