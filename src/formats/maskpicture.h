// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class image;

/// Writes the selection as a grey PNG: at 16 bits exactly, at 8 the high bytes. False with a
/// reason; the old file then stands.
bool saveMaskPicture(const image &img, const QString &path, int bits, QString *error);

/// Reads a picture of any form to make a selection of, a PNG with all of its 16 bits whatever
/// the settings say; of a stack what it shows. The caller owns it. Null with a reason.
image *loadMaskPicture(const QString &path, QString *error);
