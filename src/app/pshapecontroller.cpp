// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/pshapecontroller.h"

pShapeController::pShapeController(QWidget *parent) : QDialog(parent) {}
void pShapeController::shapeChanged() {}
