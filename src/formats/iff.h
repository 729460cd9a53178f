// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "formats/readers.h"

struct FileRecord;

/// Reads the picture of an IFF file: FORM ILBM of 1 to 8, 24 or 32 bit planes, with a palette,
/// half-brite or hold-and-modify colours, and the chunky FORM PBM; of a FORM ANIM the first
/// frame. Texts of the file become metadata, its pixel aspect the resolution. What the file
/// lacks of the picture is black, and the person is told. Null, without a word, for anything
/// else.
ImageHolder readIff(const FileRecord &record, bool *cancelled = nullptr);
