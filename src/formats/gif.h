// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QList>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>

class image;

/// How an animation plays.
struct GifAnimation {
    int delay = 10;         ///< hundredths of a second a frame, 0 to 65535
    int repeats = 0;        ///< 0: for ever
    int colors = 256;       ///< most colours of a frame, 2 to 256, one of them for transparency
    bool dither = true;     ///< error diffusion where colours are reduced
    QList<int> delays = {}; ///< of each frame, by its number; empty: `delay` for all
    bool reversed = false;  ///< frames play from the last to the first

    int delayOf(int frame) const { return delays.isEmpty() ? delay : delays.value(frame, delay); }
};

/// Makes a frame by its number; null if memory is short.
using GifFrameSource = std::function<std::shared_ptr<const image>(int number)>;

/// Writes `count` frames, all of one size, as a GIF; a single frame gives a plain GIF.
/// Samples whose alpha is below 32768 are transparent. A frame with no more colours than
/// allowed keeps them exactly (high bytes). Each frame is asked for once, in the order of
/// playing, and at most two are held, so a long stack of large frames needs no more memory.
/// An older file of that name stays until the new one is complete. False with a reason,
/// kSaveCancelled if the person cancelled (Workspace::progress).
bool writeGif(int count, const GifFrameSource &source, const GifAnimation &animation,
              const QString &path, QString *error);
bool writeGif(const QList<const image *> &frames, const GifAnimation &animation,
              const QString &path, QString *error);

/// A frame as a file will show it.
struct GifPreview {
    QImage picture;    ///< ARGB32 of the frame's size; null if the work was stopped
    int64_t bytes = 0; ///< that the frame takes in the file
};
/// Reduces one frame as writeGif does (which takes one colour less where the next frame has
/// holes and this one has none). Asks and tells nobody, so it may run beside the main thread.
/// Ends early, with a null picture, once `stop` is set.
GifPreview previewGifFrame(const image &frame, const GifAnimation &animation, bool animated,
                           const std::atomic<bool> &stop);
