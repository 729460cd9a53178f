// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// Colour reduction for forms with a palette. Channels are bytes; a colour in one number is
/// 0xRRGGBB.

struct PaletteColor {
    uint8_t red, green, blue;
};

/// Colours and how often each was seen, in some megabytes whatever the picture: beyond
/// 65536 colours neighbours are kept together, first two a channel, then four and so on.
class ColorHistogram
{
public:
    /// A colour, or some colours kept together, with the sums of their channels.
    struct Cell {
        uint32_t key = 0;
        uint64_t count = 0;
        std::array<uint64_t, 3> sums = {};
    };

    ColorHistogram();
    /// Counts a colour `times` times, 1 or more.
    void add(uint32_t rgb, uint64_t times);
    /// Whether each cell is a single colour.
    bool exact() const { return mask == 0xFFFFFF; }
    size_t size() const { return used; }
    /// The cells in the order of their keys.
    std::vector<Cell> cells() const;

private:
    Cell &slotOf(uint32_t key);
    void coarsen();

    std::vector<Cell> buckets; ///< hashed by key; a count of 0 marks a free one
    size_t used = 0;
    uint32_t mask = 0xFFFFFF;
};

/// At most `most` (1 to 256) colours for what was counted: those themselves if they are as
/// few, else means of groups that are cut where the squared error falls most. Empty only
/// for an empty histogram.
std::vector<PaletteColor> reduceColors(const ColorHistogram &histogram, int most);

/// Finds the nearest entry of a palette. Remembers for each of 32^3 parts of the colour cube
/// the few entries that can be nearest there, so the answer is exact and quick.
class NearestColor
{
public:
    /// For 1 to 256 colours.
    explicit NearestColor(std::vector<PaletteColor> colors);
    /// Index of the entry with the least squared distance, the first of equal ones.
    int find(int red, int green, int blue);
    const std::vector<PaletteColor> &palette() const { return colors; }

private:
    struct Part {
        uint32_t first = 0, count = 0; ///< in `candidates`; no count: not looked at yet
    };
    void look(Part *part, const std::array<int, 3> &corner);

    std::vector<PaletteColor> colors;
    std::vector<Part> parts;
    std::vector<uint8_t> candidates;
};
