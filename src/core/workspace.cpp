// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/workspace.h"

#include "core/memory.h"

#include <algorithm>
#include <bit>

namespace
{
constexpr size_t kByteValues = 256;
constexpr size_t kSampleValues = 65536;

Workspace *theWorkspace = nullptr;
} // namespace

Workspace *workspace()
{
    return theWorkspace;
}

Workspace::Workspace()
{
    theWorkspace = this;
    buildTables();
    buildSettings();
}

Workspace::~Workspace()
{
    upfree(&colorSpaceBackup);
    upfree(&colorSpace);
    upfree(&colorMapBlue);
    upfree(&colorMapGreen);
    upfree(&colorMapRed);
    upfree(&cvt8to32);
    upfree(&colorCount);
    if (theWorkspace == this)
        theWorkspace = nullptr;
}

bool Workspace::buildTables()
{
    bool complete = ucalloc(&colorCount, kByteValues, 1, "colorcount array");
    complete = ucalloc(&cvt8to32, kByteValues, sizeof(uint32_t), "cvt8to32 map") && complete;
    complete = ucalloc(&colorMapRed, kSampleValues, 2, "color map red") && complete;
    complete = ucalloc(&colorMapGreen, kSampleValues, 2, "color map green") && complete;
    complete = ucalloc(&colorMapBlue, kSampleValues, 2, "color map blue") && complete;
    for (size_t i = 0; i < kByteValues; ++i) {
        if (colorCount)
            colorCount[i] = uint8_t(std::popcount(i));
        if (cvt8to32)
            cvt8to32[i] = uint32_t(i) * 0x01010101U;
    }
    return complete;
}

bool Workspace::ensureColorSpace()
{
    if (!colorSpace)
        ucalloc(&colorSpace, kColorSpaceBytes, 1, "colorSpace");
    if (!colorSpaceBackup)
        ucalloc(&colorSpaceBackup, kColorSpaceBytes, 1, "colorSpaceBackup");
    return colorSpace && colorSpaceBackup;
}

void Workspace::giveSerial(image *img)
{
    if (!img)
        return;
    img->serial = ++imageSerial;
    img->rebuildTitle();
}

bool Workspace::validImage(const image *img)
{
    return img && img->valid();
}

bool Workspace::ownsImage(const image *img) const
{
    // Only the listed images are read: the pointer asked about may dangle.
    return img && std::any_of(images.begin(), images.end(), [img](const image *listed) {
               if (!listed || listed == img)
                   return listed == img;
               const auto &layers = listed->layers;
               return listed->master == img ||
                      std::find(layers.begin(), layers.end(), img) != layers.end();
           });
}

void Workspace::assignBrush(image *img)
{
    brushImage = validImage(img) ? img : nullptr;
    if (!brushImage)
        brushCleared();
}

void Workspace::assignOrigin(image *img)
{
    originImage = validImage(img) ? img : nullptr;
    if (!originImage)
        originCleared();
}

void Workspace::forgetImage(const image *img)
{
    if (!img)
        return;
    if (brushImage == img)
        assignBrush(nullptr);
    if (originImage == img)
        assignOrigin(nullptr);
}

void Workspace::refreshViews(image *) {}

void Workspace::statusText(const QString &) {}

void Workspace::messageBox(const QString &, const QString &) {}

int Workspace::question(const QString &, const QString &, const QStringList &, int goingOnAnswer,
                        int)
{
    return goingOnAnswer;
}

bool Workspace::askQuality(int *, bool)
{
    return true;
}

bool Workspace::askText(const QString &, const QString &, QString *)
{
    return true;
}

bool Workspace::askSlider(const QString &, const QString &, int, int, int *)
{
    return true;
}

void Workspace::progress(const QString &, int64_t, int64_t) {}

bool Workspace::cancelRequested()
{
    return false;
}

void Workspace::brushCleared() {}

void Workspace::originCleared() {}

void Workspace::showImage(image *img, const FileRecord &)
{
    // Without views the list alone keeps the image reachable for whoever runs this.
    if (img && !images.contains(img))
        images << img;
}

void Workspace::closeWindowsOf(image *) {}

void Workspace::layersChanged(image *) {}
void Workspace::undoStateChanged(image *) {}

void Workspace::previewOutdated() {}

void Workspace::clearAreaSelection(image *) {}
