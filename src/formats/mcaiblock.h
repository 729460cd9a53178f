// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <array>
#include <cstdint>
#include <vector>

class image;

/// How the samples of some rows are packed in an ".mcai" file; docs/file-formats.md tells it
/// step by step. Each sample is predicted from its neighbours, and what the prediction missed
/// goes to one of several streams, by how rough the picture is there: each stream then holds
/// bytes of like size, which deflate packs well.

/// The sample values that a plane or a group of planes uses, in rising order. Samples are
/// packed as places in it, so that a picture of 8-bit origin costs 8 bits.
class ValueTable
{
public:
    /// Without any value.
    ValueTable() = default;
    static constexpr int kValues = 65536;
    /// Presence of each of the 65536 values, a bit each, the highest bit of a byte first.
    static constexpr int kBitmapBytes = kValues / 8;

    /// The values of these planes. Where they use most of the 65536, every value is taken as
    /// used: places are then values.
    static ValueTable of(const std::vector<const uint16_t *> &planes, int width, int height);
    /// False for a bitmap without a value.
    static bool fromBitmap(const QByteArray &bitmap, ValueTable *table);
    QByteArray bitmap() const;

    int count() const { return int(used.size()); }
    /// One value only: such planes are not packed at all.
    bool constant() const { return used.size() == 1; }
    /// Places have one byte, and are counted modulo 256, else 65536.
    bool small() const { return used.size() <= 256; }
    uint16_t placeOf(uint16_t value) const { return places[value]; }
    /// 0 for a place that there is not.
    uint16_t valueAt(uint16_t place) const { return place < used.size() ? used[place] : 0; }

private:
    explicit ValueTable(std::vector<uint16_t> values);

    std::vector<uint16_t> used;   ///< value by place
    std::vector<uint16_t> places; ///< place by value
};

/// The tables of a picture: red, green and blue share one. The mask's is empty if the
/// selection is not kept.
struct McaiTables {
    ValueTable color, alpha, mask;

    /// Those of an image; a selection that is nowhere set is not kept.
    static McaiTables of(const image &img);
    bool masked() const { return mask.count() > 0; }
};

/// Packs rows `first` to `end` - 1. Null if memory is short.
QByteArray packRows(const image &img, const McaiTables &tables, int first, int end);

/// Unpacks what packRows made into these rows; the mask's only `withMask`. False, with the rows'
/// content undefined, if the bytes are no such block.
bool unpackRows(const QByteArray &block, const McaiTables &tables, int first, int end,
                bool withMask, image *img);
