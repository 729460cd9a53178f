// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QRgb>

#include <cstdint>
#include <vector>

/// From the BODY of an IFF picture to pixels, row by row.

/// What the header chunks say about a picture.
struct IffLayout {
    enum Masking : uint8_t { NoMask, MaskPlane, TransparentColor, Lasso };
    enum Colors : uint8_t { Palette, HalfBrite, HoldAndModify, True };

    int width = 0, height = 0;
    int planes = 0; ///< without the mask plane
    Masking masking = NoMask;
    bool packed = false; ///< by runs of bytes
    bool chunky = false; ///< a byte a pixel instead of planes
    int transparent = 0; ///< index, for two kinds of masking
    Colors colors = Palette;
    std::vector<QRgb> palette; ///< 256 entries, opaque

    int planeRowBytes() const { return (width + 15) / 16 * 2; }
    /// Bytes of a row before packing.
    int64_t rowBytes() const;
};

/// Reads rows one after the other.
class IffRows
{
public:
    IffRows(const IffLayout &form, const QByteArray &body);
    /// The next row; false, with the row undefined, if no byte of it is left.
    bool next(QRgb *pixels);
    /// Some byte of a row was missing.
    bool cut() const { return isCut; }
    /// Indices of the row that was read last; for pictures of at most 8 planes.
    const uint8_t *indices() const { return channels[0].data(); }

private:
    bool fetch(uint8_t *bytes, int count);
    void toChannels();
    void paint(QRgb *pixels) const;
    void paintHeld(QRgb *pixels) const;
    void applyMask(QRgb *pixels) const;

    const IffLayout &layout;
    const uint8_t *at, *end;
    int literal = 0, run = 0; ///< bytes left of the run that is being unpacked
    uint8_t repeated = 0;
    bool isCut = false;
    std::vector<uint8_t> row;
    std::vector<uint8_t> channels[4]; ///< eight planes each
};
