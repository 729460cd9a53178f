// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

#include <cstdint>
#include <vector>

class image;

/// Which part of an image a client area shows, in device pixels.
struct ViewGeometry {
    double xStep = 1.0, yStep = 1.0; ///< image samples per device pixel
    int panX = 0, panY = 0;          ///< image position shown at the offset
    int width = 0, height = 0;       ///< of the client area
    int offsetX = 0, offsetY = 0;    ///< from the client's top left corner

    bool operator==(const ViewGeometry &other) const = default;
    /// The first pixel column that shows a sample at or right of an image position: where a
    /// line in front of that sample stands. Limited to a little more than the client area.
    int columnAt(double x) const;
    int rowAt(double y) const;
    /// Something of the image can be shown.
    bool usableFor(const image &img) const;
    /// The image columns (rows) that `count` client columns from `first` on show, kNoSample
    /// where they show none.
    void columnSamples(const image &img, int first, int count, int32_t *table) const;
    void rowSamples(const image &img, int first, int count, int32_t *table) const;
    /// Place of the client's first pixel, counted from image position 0 in whole pixels.
    int64_t originX() const;
    int64_t originY() const;
};

constexpr int32_t kNoSample = -1;

struct PixelRange {
    int first, end;
};

/// The entries of a table of samples that are not kNoSample; they are neighbours.
PixelRange samplesInside(const int32_t *table, int count);

/// What stands behind transparent samples and around the image. The checker lies still in
/// the image, so that it moves with a pan.
struct ViewBackdrop {
    bool checker = true;
    int dark = 118, light = 138;
    int cell = 8; ///< side of a checker square in device pixels
    uint32_t surround = 0xFF3C3C3C;

    bool operator==(const ViewBackdrop &other) const = default;
};

/// Renders what the geometry shows into `out`, which is made anew if its size differs.
/// Only the samples shown are read. False if memory is short or nothing can be shown.
bool renderView(const image &img, const ViewGeometry &view, const ViewBackdrop &backdrop,
                QImage *out);

/// Brings `out`, which shows an unchanged image by `before`, to `view`: moves what is still
/// seen and renders the strips that came in or that fall on other samples now. The pixels
/// are those of renderView. False, with `out` as it was, if the views have different scales
/// or sizes, or so little stays that rendering afresh is no slower.
bool scrollView(const image &img, const ViewGeometry &before, const ViewGeometry &view,
                const ViewBackdrop &backdrop, QImage *out);

/// The columns and rows of an image of which a view shows samples, each once, in their order.
struct ShownSamples {
    std::vector<int32_t> columns, rows;

    ShownSamples() = default;
    ShownSamples(const image &img, const ViewGeometry &view);
};

/// As renderView for an image of which `part` has only the shown samples.
bool renderShown(const image &img, const image &part, const ViewGeometry &view,
                 const ViewBackdrop &backdrop, QImage *out);
