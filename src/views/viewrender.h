// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

#include <cstdint>

class image;

/// Which part of an image a client area shows, in device pixels.
struct ViewGeometry {
    double xStep = 1.0, yStep = 1.0; ///< image samples per device pixel
    int panX = 0, panY = 0;          ///< image position of the top left corner
    int width = 0, height = 0;       ///< of the client area
};

/// What stands behind transparent samples and around the image.
struct ViewBackdrop {
    bool checker = true;
    int dark = 118, light = 138;
    int cell = 8; ///< side of a checker square in device pixels
    uint32_t surround = 0xFF3C3C3C;
};

/// Renders what the geometry shows into `out`, which is made anew if its size differs.
/// Only the samples shown are read. False if memory is short or nothing can be shown.
bool renderView(const image &img, const ViewGeometry &view, const ViewBackdrop &backdrop,
                QImage *out);

/// Draws the outline of the area selection as it falls on the client area into `out`, in
/// dashes of two colours on transparency. False, with `out` of no use, if none of it is
/// seen. `dash` is a dash's length in device pixels.
bool maskOutline(const image &img, const ViewGeometry &view, int dash, QImage *out);
