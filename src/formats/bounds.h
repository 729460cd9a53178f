// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// What a reader asks before it believes the size that a file claims.

/// Whether both sides are 1 to 32767. Ask with the number as it stands in the file:
/// 65600 cut to 16 bits would look like 64.
bool sidesInRange(int64_t width, int64_t height);

/// Whether a file of `fileBytes` can hold that many pixels, when its form packs at best
/// `pixelsPerByte` of them into a byte. Small pictures always pass.
bool fileCanHold(int64_t pixels, int64_t fileBytes, int64_t pixelsPerByte);

/// Whether reading a picture of that many pixels fits into this machine's memory, with
/// the image's own planes and `readerBytes` a pixel for what the reader keeps meanwhile.
bool memoryCanHold(int64_t pixels, int64_t readerBytes);
