// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class image;

/// Asks for the numeric rectangle of an image. exec() is Accepted when it is to be selected;
/// the settings nrectX1 and so on then hold it.
class XYRect : public QDialog
{
    Q_OBJECT
public:
    XYRect(image *img, QWidget *parent);
};
