// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/filerecord.h"
#include "core/image.h"

#include <QString>

#include <memory>

/// Frees a picture, a master with all its layers.
struct TreeDeleter {
    TreeDeleter() = default;
    TreeDeleter(std::default_delete<image>) {} // what make_unique gives may be handed on
    void operator()(image *img) const { destroyTree(&img); }
};

/// The readers without the step of showing the picture, which the dispatch does last.
using ImageHolder = std::unique_ptr<image, TreeDeleter>;

ImageHolder readThroughQt(const QString &path, const FileRecord &record);
ImageHolder readThroughLibRaw(const QString &path, const FileRecord &record);
ImageHolder readPix(const QString &path, const QString &name, bool checkExtension);

/// Hands a picture to the workspace to be shown. `announce`: say "Image Loaded" after it.
image *finishLoad(ImageHolder img, const FileRecord &record, bool announce);

/// A line for the status bar, if there is a workspace.
void sayStatus(const QString &text);
/// A message box, if there is a workspace.
void sayInBox(const QString &title, const QString &text);

/// Whether a name ends so, in any case.
bool endsWith(const QString &name, const char *ending);
