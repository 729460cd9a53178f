// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/transsetter.h"

TransSetter::TransSetter(QWidget *parent) : QDialog(parent) {}
