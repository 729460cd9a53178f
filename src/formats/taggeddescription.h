// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

class image;

/// All that a picture says beside its samples, as the fields that an ".ato" file has for it
/// between header and planes and behind them, and the EXIF block.
QByteArray describe(const image &img);

/// Takes over what describe() made. A field that is damaged or missing leaves its default.
void takeDescription(const QByteArray &fields, image *img);
