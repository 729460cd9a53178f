// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class image;

/// What became of a selection that was to become its outline.
enum class OutlineResult {
    Done,
    Nothing, ///< no sample qualified: the selection is as it was
    NoMemory ///< likewise
};

/// Turns the selection into an outline as the settings outlineExpand, outline8w, edgeOnly and
/// outlinethresh say: of the object that alpha shows within the selection, or of the
/// selection itself.
OutlineResult outlineSelect(image *img);
