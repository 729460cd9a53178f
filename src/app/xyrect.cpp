// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/xyrect.h"

XYRect::XYRect(image *, QWidget *parent) : QDialog(parent) {}
