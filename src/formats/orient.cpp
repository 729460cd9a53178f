// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/orient.h"

#include "core/image.h"
#include "core/rows.h"
#include "core/undo.h"
#include "core/warpfield.h"
#include "core/workspace.h"
#include "formats/exif.h"
#include "layers/stack.h"

#include <QtEndian>

#include <algorithm>
#include <utility>

namespace
{
constexpr uint16_t kMaster = 1, kLayer = 2;
constexpr int kUpright = 1, kLastOrientation = 8;

// --- In the block ---------------------------------------------------------------------------

const QByteArray kSignature("Exif\0\0", 6);
constexpr int kEntryBytes = 12;
constexpr uint16_t kOrientationTag = 0x0112, kShortType = 3;

/// Reads the numbers of an EXIF block, which may lie about where they are: what lies outside of
/// the block reads as 0.
class BlockNumbers
{
public:
    explicit BlockNumbers(const QByteArray &source) : block(source)
    {
        bigEndian = block.mid(kSignature.size(), 2) == "MM";
    }
    bool holds(int64_t at, int bytes) const { return at >= 0 && at + bytes <= block.size(); }
    uint16_t word(int64_t at) const
    {
        if (!holds(at, 2))
            return 0;
        const char *bytes = block.constData() + at;
        return bigEndian ? qFromBigEndian<uint16_t>(bytes) : qFromLittleEndian<uint16_t>(bytes);
    }
    uint32_t longWord(int64_t at) const
    {
        const uint32_t first = word(at), second = word(at + 2);
        return bigEndian ? first << 16 | second : second << 16 | first;
    }
    bool isBigEndian() const { return bigEndian; }

private:
    const QByteArray &block;
    bool bigEndian;
};

/// Place of the two bytes of the main directory's orientation; -1 if there is none.
int64_t orientationPlace(const QByteArray &block)
{
    const BlockNumbers numbers(block);
    const int start = kSignature.size();
    const bool ordered = numbers.isBigEndian() || block.mid(start, 2) == "II";
    if (!block.startsWith(kSignature) || !ordered || numbers.word(start + 2) != 42)
        return -1;
    const int64_t directory = start + int64_t(numbers.longWord(start + 4));
    const int entries = numbers.word(directory);
    for (int i = 0; i < entries; ++i) {
        const int64_t entry = directory + 2 + int64_t(i) * kEntryBytes;
        if (!numbers.holds(entry, kEntryBytes))
            return -1;
        if (numbers.word(entry) == kOrientationTag)
            return numbers.word(entry + 2) == kShortType && numbers.longWord(entry + 4) == 1
                       ? entry + 8
                       : -1;
    }
    return -1;
}

bool isOrientation(int value)
{
    return value >= kUpright && value <= kLastOrientation;
}

// --- In the planes --------------------------------------------------------------------------

/// An orientation as a quarter turn clockwise, if any, and then mirrorings.
struct Steps {
    bool quarter, mirrorX, mirrorY;
};
constexpr Steps kSteps[kLastOrientation + 1] = {
    {false, false, false}, {false, false, false}, {false, true, false},
    {false, true, true},   {false, false, true},  {true, true, false},
    {true, false, false},  {true, false, true},   {true, true, true},
};

void mirrorPlanes(const image &img, bool x, bool y)
{
    const auto planes = img.workPlanes();
    const int64_t width = img.width;
    // Each band works on its rows from the top and their partners from the bottom.
    parallelRows((img.height + 1) / 2, img.width * 2 * int(planes.size()), [&](int first, int end) {
        for (uint16_t *plane : planes)
            for (int64_t row = first; row < end; ++row) {
                uint16_t *upper = plane + row * width;
                uint16_t *lower = plane + (img.height - 1 - row) * width;
                if (y && upper != lower)
                    std::swap_ranges(upper, upper + width, lower);
                if (x)
                    std::reverse(upper, upper + width);
                if (x && upper != lower)
                    std::reverse(lower, lower + width);
            }
    });
}

/// Places follow their samples. They may come from a file, so what a place becomes may lie
/// outside of what an int holds.
class PlaceTurn
{
public:
    PlaceTurn(const Steps &of, const image &img)
        : steps(of), oldHeight(img.height), width(of.quarter ? img.height : img.width),
          height(of.quarter ? img.width : img.height)
    {
    }

    void apply(int32_t *x, int32_t *y) const
    {
        if (steps.quarter)
            *x = mirrored(std::exchange(*y, *x), oldHeight);
        if (steps.mirrorX)
            *x = mirrored(*x, width);
        if (steps.mirrorY)
            *y = mirrored(*y, height);
    }
    void apply(Notation *note) const
    {
        apply(&note->textX, &note->textY);
        apply(&note->tailX, &note->tailY);
        apply(&note->headX, &note->headY);
        for (QPoint &point : note->points)
            apply(&point.rx(), &point.ry());
    }
    /// Guides stand at the left and upper edge of a sample, from 0 to the size.
    void applyToGuides(image *img) const
    {
        QList<int> &x = img->guidesX, &y = img->guidesY;
        if (steps.quarter) {
            x.swap(y);
            mirrorEdges(&x, oldHeight);
        }
        if (steps.mirrorX)
            mirrorEdges(&x, width);
        if (steps.mirrorY)
            mirrorEdges(&y, height);
    }

private:
    static int32_t mirrored(int32_t value, int size)
    {
        return int32_t(std::clamp<int64_t>(int64_t(size) - 1 - value, INT32_MIN, INT32_MAX));
    }
    static void mirrorEdges(QList<int> *places, int size)
    {
        for (int &place : *places)
            place = size - place;
    }

    const Steps &steps;
    int oldHeight, width, height;
};

/// The displacements of a warp layer are directions in the picture, and turn with it.
void turnField(image *field, const Steps &steps)
{
    parallelRows(field->height, field->width * 4, [=](int first, int end) {
        const int64_t stop = int64_t(end) * field->width;
        for (int64_t i = int64_t(first) * field->width; i < stop; ++i) {
            Displacement d = displacementAt(*field, i);
            if (steps.quarter)
                d = {-d.y, d.x};
            if (steps.mirrorX)
                d.x = -d.x;
            if (steps.mirrorY)
                d.y = -d.y;
            setDisplacement(field, i, d);
        }
    });
}

/// The turn of the planes with the undo record before it; false if memory is short.
bool turnPlanes(image *img, const Steps &steps)
{
    if (steps.quarter) {
        if (!img->quarterTurn()) // makes the undo record
            return false;
    } else {
        if (Workspace *space = workspace())
            space->clearAreaSelection(img);
        beginAct(img);
    }
    if (steps.mirrorX || steps.mirrorY)
        mirrorPlanes(*img, steps.mirrorX, steps.mirrorY);
    if (img->kind == kLayer && img->layerMode == kWarpMode)
        turnField(img, steps);
    return true;
}

/// Gives the lines that tell the old block's content the new one's. Others stay.
void followBlock(QStringList *lines, const QByteArray &before, const QByteArray &after)
{
    const QStringList old = exifLines(before), fresh = exifLines(after);
    for (int i = 0; i < old.size() && i < fresh.size(); ++i)
        if (old[i] != fresh[i])
            if (const int at = int(lines->indexOf(old[i])); at >= 0)
                (*lines)[at] = fresh[i];
}
} // namespace

int exifOrientation(const QByteArray &block)
{
    const int64_t place = orientationPlace(block);
    const int value = place < 0 ? 0 : BlockNumbers(block).word(place);
    return isOrientation(value) ? value : 0;
}

bool setExifOrientation(QByteArray *block, int orientation)
{
    const int64_t place = orientationPlace(*block);
    if (place < 0 || !isOrientation(orientation))
        return false;
    const bool bigEndian = BlockNumbers(*block).isBigEndian();
    char *bytes = block->data() + place;
    if (bigEndian)
        qToBigEndian(uint16_t(orientation), bytes);
    else
        qToLittleEndian(uint16_t(orientation), bytes);
    return true;
}

bool orientImage(image *img, int orientation)
{
    if (!img || !img->valid() || img->kind == kMaster || !isOrientation(orientation))
        return false;
    if (orientation == kUpright)
        return true;
    const Steps &steps = kSteps[orientation];
    const PlaceTurn places(steps, *img);
    if (!turnPlanes(img, steps))
        return false;
    img->maskBackupValid = false; // it is of the selection as it lay before
    if (steps.quarter)
        std::swap(img->xDpi, img->yDpi);
    places.apply(&img->xCenter, &img->yCenter);
    places.applyToGuides(img);
    for (Notation &note : img->notations)
        places.apply(&note);
    samplesChanged(img);
    return true;
}

bool turnUpright(image *img)
{
    const int orientation = img ? exifOrientation(img->tagBlock) : 0;
    if (orientation <= kUpright || !orientImage(img, orientation))
        return false;
    forgetOrientation(img);
    return true;
}

void forgetOrientation(image *img)
{
    if (img->cameraOrientation > kUpright)
        img->cameraOrientation = kUpright;
    if (exifOrientation(img->tagBlock) <= kUpright)
        return;
    const QByteArray before = img->tagBlock;
    setExifOrientation(&img->tagBlock, kUpright);
    followBlock(&img->tagLines, before, img->tagBlock);
}
