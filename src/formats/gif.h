// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

class image;

/// How an animation plays.
struct GifAnimation {
    int delay = 10;     ///< hundredths of a second a frame, 0 to 65535
    int repeats = 0;    ///< 0: for ever
    int colors = 256;   ///< most colours of a frame, 2 to 256, one of them for transparency
    bool dither = true; ///< error diffusion where colours are reduced
};

/// Writes frames, all of one size, as a GIF; a single frame gives a plain GIF. Samples
/// whose alpha is below 32768 are transparent. A frame with no more colours than allowed
/// keeps them exactly (high bytes). An older file of that name stays until the new one is
/// complete. False with a reason, kSaveCancelled if the person cancelled (Workspace::progress).
bool writeGif(const QList<const image *> &frames, const GifAnimation &animation,
              const QString &path, QString *error);
