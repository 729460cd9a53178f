// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/iffpixels.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>

namespace
{
constexpr int kPixelsAtOnce = 8;
constexpr int kChannelPlanes = 8;

/// The bits of a byte as bytes of 0 or 1, the highest bit first in memory.
uint64_t spread(uint8_t bits)
{
    static const auto table = [] {
        std::array<uint64_t, 256> all = {};
        for (int value = 0; value < 256; ++value)
            for (int bit = 0; bit < 8; ++bit)
                all[value] |= uint64_t(value >> bit & 1) << (8 * (7 - bit));
        for (uint64_t &entry : all)
            entry = qFromLittleEndian(entry);
        return all;
    }();
    return table[bits];
}

/// A part of a channel scaled to all of its 8 bits.
int widened(int value, int bits)
{
    return bits == 4 ? value * 17 : value << 2 | value >> 4;
}
} // namespace

int64_t IffLayout::rowBytes() const
{
    if (chunky)
        return width + width % 2;
    return int64_t(planeRowBytes()) * (planes + (masking == MaskPlane ? 1 : 0));
}

IffRows::IffRows(const IffLayout &form, const QByteArray &body)
    : layout(form), at(reinterpret_cast<const uint8_t *>(body.constData())), end(at + body.size()),
      row(size_t(form.rowBytes()))
{
    const int used = form.chunky ? 1 : (form.planes + kChannelPlanes - 1) / kChannelPlanes;
    for (int c = 0; c < used; ++c)
        channels[c].resize(size_t(form.planeRowBytes()) * kPixelsAtOnce);
}

/// Runs may go on over the end of a row: some writers pack all rows as one. What is missing
/// becomes zero; false if all of it is.
bool IffRows::fetch(uint8_t *bytes, int count)
{
    int done = 0;
    while (done < count) {
        if (!layout.packed)
            literal = int(std::min<int64_t>(count - done, end - at));
        while (layout.packed && literal == 0 && run == 0 && at < end) {
            const int code = int8_t(*at++);
            if (code >= 0)
                literal = code + 1;
            else if (code != -128 && at < end) {
                run = 1 - code;
                repeated = *at++;
            }
        }
        const int part = std::min({run > 0 ? run : literal, count - done,
                                   run > 0 ? count : int(std::min<int64_t>(end - at, count))});
        if (part <= 0)
            break;
        if (run > 0) {
            std::memset(bytes + done, repeated, size_t(part));
            run -= part;
        } else {
            std::memcpy(bytes + done, at, size_t(part));
            at += part;
            literal -= part;
        }
        done += part;
    }
    std::memset(bytes + done, 0, size_t(count - done));
    isCut = isCut || done < count;
    return done > 0;
}

bool IffRows::next(QRgb *pixels)
{
    if (!fetch(row.data(), int(row.size())))
        return false;
    if (layout.chunky)
        std::copy_n(row.begin(), layout.width, channels[0].begin());
    else
        toChannels();
    if (layout.colors == IffLayout::HoldAndModify)
        paintHeld(pixels);
    else
        paint(pixels);
    applyMask(pixels);
    return true;
}

/// Planes stand one behind the other, each channel's lowest bit first.
void IffRows::toChannels()
{
    const int bytes = layout.planeRowBytes();
    for (int first = 0; first < layout.planes; first += kChannelPlanes) {
        uint8_t *out = channels[first / kChannelPlanes].data();
        const int count = std::min(kChannelPlanes, layout.planes - first);
        for (int i = 0; i < bytes; ++i) {
            uint64_t eight = 0;
            for (int plane = 0; plane < count; ++plane)
                eight |= spread(row[size_t(first + plane) * size_t(bytes) + size_t(i)]) << plane;
            std::memcpy(out + i * kPixelsAtOnce, &eight, sizeof eight);
        }
    }
}

void IffRows::paint(QRgb *pixels) const
{
    const auto &[red, green, blue, alpha] = channels;
    for (int x = 0; x < layout.width; ++x)
        pixels[x] = layout.colors != IffLayout::True
                        ? layout.palette[red[x]]
                        : qRgba(red[x], green[x], blue[x], alpha.empty() ? 255 : alpha[x]);
}

/// A pixel is a colour of the palette, or the pixel to its left with one channel replaced;
/// before the first stands the palette's first colour.
void IffRows::paintHeld(QRgb *pixels) const
{
    enum { FromPalette, Blue, Red, Green };
    const int bits = layout.planes > 6 ? 6 : 4;
    const int colors = 1 << bits;
    QRgb held = layout.palette[0];
    for (int x = 0; x < layout.width; ++x) {
        const int code = channels[0][x];
        const int data = code & (colors - 1), value = widened(data, bits);
        switch (code >> bits) {
        case FromPalette:
            held = layout.palette[data];
            break;
        case Blue:
            held = qRgb(qRed(held), qGreen(held), value);
            break;
        case Red:
            held = qRgb(value, qGreen(held), qBlue(held));
            break;
        case Green:
            held = qRgb(qRed(held), value, qBlue(held));
            break;
        }
        pixels[x] = held;
    }
}

void IffRows::applyMask(QRgb *pixels) const
{
    constexpr QRgb color = 0xFFFFFF;
    if (layout.masking == IffLayout::MaskPlane && !layout.chunky) {
        const uint8_t *mask = row.data() + layout.planes * layout.planeRowBytes();
        for (int x = 0; x < layout.width; ++x)
            if (!(mask[x >> 3] >> (~x & 7) & 1))
                pixels[x] &= color;
    }
    if (layout.masking == IffLayout::TransparentColor && layout.planes <= kChannelPlanes)
        for (int x = 0; x < layout.width; ++x)
            if (channels[0][x] == layout.transparent)
                pixels[x] &= color;
}
