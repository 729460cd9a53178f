// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/antialiassettings.h"

AntialiasSettings::AntialiasSettings(QWidget *parent) : QDialog(parent) {}
void AntialiasSettings::settingsChanged() {}
