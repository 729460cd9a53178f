// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class image;

/// The multiplier of the factor list's entry: 1, 2, 3, 5, 10, 25, 50, 100; 1.0 for any
/// index outside of 1 to 7.
double factorValue(int index);

/// Fills `length` doubles, each limited to 0 to 1, with a profile of the blend curve:
/// mode 0 conical, 1 flat, 3 sine, 2 maximum axis; any other mode leaves them alone.
/// `amplitude` already holds the factor; `floorValue` is what the curve rises from.
void buildCurve(double *out, int length, int mode, double amplitude, double floorValue);

/// The blend factors over the box of an image's selection, made for one Apply.
class dmask
{
public:
    dmask() = default;
    ~dmask();
    dmask(const dmask &) = delete;
    dmask &operator=(const dmask &) = delete;

    /// Makes room for width x height factors; false if memory is short.
    bool init(int newWidth, int newHeight);
    /// Builds the factors from the workspace's curve settings over the bounds of the
    /// image's mask. False: the mask stays as it is (the flat curve at full height, a
    /// curve that does not exist, an empty mask, no image or no memory).
    bool createmask(const image *source);

    /// Bilinear scale of the factors of one into another of any size; nothing if either is
    /// null or has none.
    static void rescale(const dmask *source, dmask *target);

    /// The part of createmask that makes no array: box, profiles and centre, after which
    /// factorRow knows every factor. False as in createmask.
    bool prepare(const image *source);
    /// Writes the factors of row `y` of the box, from column `x` on, `count` of them.
    void factorRow(int y, int x, int count, double *out) const;

    double *mask = nullptr;
    double unit = 1.0;
    int width = 0, height = 0, size = 0;
    int left = 0, top = 0, right = 0, bottom = 0; ///< right and bottom raised by 1
    int boxWidth = 0, boxHeight = 0;              ///< raised by 1
    double centerX = 0, centerY = 0;

private:
    bool makeProfiles();

    double *row = nullptr; ///< the curve across the box
    double *col = nullptr; ///< the curve down the box
    int mode = 1;
    double heightFactor = 1.0; ///< amplitude times factor
    double floorValue = 0.0;
};

/// Multiplies the selection by the blend curve, in place: a second call shapes it again.
/// The factors are made row by row as they are used; an array of them would take four
/// times the mask's memory and most of the time.
void diffuseMask(image *source);
