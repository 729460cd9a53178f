// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/image.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>

/// Pictures for tests, repeatable from a seed.
using ImagePtr = std::unique_ptr<image>;

/// Random samples in all five work planes, with 0, 1, 32767, 32768, 65535 and equal
/// channels well represented.
ImagePtr randomImage(int width, int height, uint32_t seed);
ImagePtr plainImage(int width, int height, uint16_t r, uint16_t g, uint16_t b, uint16_t a = 65535);
/// Whether the five work planes are equal, sample by sample (sizes too).
bool samePlanes(const image &one, const image &other);
/// Whether the four colour planes are equal.
bool sameColors(const image &one, const image &other);

/// A little-endian DNG file: one uncompressed 16-bit CFA plane (RGGB) of `value(x, y)`.
QByteArray syntheticDng(int width, int height, uint16_t (*value)(int x, int y));
