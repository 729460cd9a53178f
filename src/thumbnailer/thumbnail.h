// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

constexpr int kDefaultThumbnailSide = 128;
constexpr int kMaxThumbnailSide = 4096;

/// Writes a PNG of the picture in a file, scaled down so that neither side is beyond `side`
/// (1 to kMaxThumbnailSide) and with the text keys that thumbnail caches ask for. A smaller
/// picture keeps its size. False with a reason; an older output file then stands. Needs a
/// QCoreApplication and no workspace: it makes its own.
bool writeThumbnail(const QString &input, const QString &output, int side, QString *error);
