// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

/// An EXIF block, "Exif\0\0" included, that names a maker and the exposure.
QByteArray syntheticExif();
