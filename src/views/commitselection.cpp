// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/commitselection.h"

void commitSelection(imgWindow *) {}
