// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/windowacts.h"

#include "core/compose.h"
#include "core/image.h"
#include "core/scale.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "formats/develop.h"
#include "formats/load.h"
#include "formats/orient.h"
#include "layers/stack.h"
#include "script/run/macrorecorder.h"
#include "views/imgwindow.h"
#include "views/viewhost.h"

#include <QCoreApplication>

#include <algorithm>
#include <memory>

namespace
{
QString translated(const char *text)
{
    return QCoreApplication::translate("imgWindow", text);
}

void tellNoMemory()
{
    workspace()->messageBox(QString(), translated("Image Allocation Failed"));
}

void say(const char *text)
{
    workspace()->messageBox(QString(), translated(text));
}

/// A master has no planes of its own to turn.
bool refusesTurn(const image *img)
{
    if (img->kind == 1)
        say("A layered image is turned<br>layer by layer, in their windows.");
    return img->kind == 1;
}

void copyStory(const image &source, image *copy)
{
    copy->copyMetadata(source);
    copy->copyNotations(source, source.width, source.height, copy->width, copy->height);
    copy->tagLines = source.tagLines;
    copy->tagBlock = source.tagBlock;
    copy->shutter = source.shutter;
    copy->aperture = source.aperture;
    copy->focalLength = source.focalLength;
    copy->iso = source.iso;
    copy->imageMode = source.imageMode;
    copy->quantised = source.quantised;
    copy->paletteSource = source.paletteSource;
    copy->changed = true;
}

} // namespace

void selectionChanged(const image *img)
{
    if (!viewHost())
        return;
    for (imgWindow *window : viewHost()->windowsOf(img))
        window->refreshOverlay();
    viewHost()->updateMenus();
}

void changeDone(image *img)
{
    img->changed = true;
    img->stampModification();
    img->markMasterForRebuild();
    workspace()->refreshViews(img);
    if (ViewHost *host = viewHost()) {
        host->refreshOperatorSource();
        host->updateMenus();
    }
}
void cloneImage(image *source, QSize scaledTo)
{
    if (source->kind == 1 && source->needsRebuild)
        compose(source, true);
    const bool scaled = scaledTo.isValid();
    auto copy = std::make_unique<image>();
    const QString name = source->name + QLatin1String(scaled ? "[scaled]" : "[clone]");
    const QSize size = scaled ? scaledTo : QSize(source->width, source->height);
    bool made = copy->allocateUnfilled(size.width(), size.height(), name);
    if (made && scaled)
        made = smartReduce(source, copy.get());
    else if (made)
        copy->copyWorkPlanes(*source);
    if (!made) {
        tellNoMemory();
        return;
    }
    copyStory(*source, copy.get());
    workspace()->showImage(copy.release(), FileRecord());
}

void showAsLayered(image *img)
{
    if (img->kind != 0) {
        workspace()->messageBox(QString(), translated("This image is layered already."));
        return;
    }
    image *master = makeLayered(img);
    if (!master)
        tellNoMemory();
    else if (viewHost())
        viewHost()->openView(master);
}

void restoreCrop(const image *cropped)
{
    image *origin = cropped->cropSource;
    if (!origin || !workspace()->ownsImage(origin) || !origin->valid() || origin == cropped)
        return;
    const int64_t left = std::max(cropped->cropX, 0), top = std::max(cropped->cropY, 0);
    const int64_t right =
        std::min<int64_t>(origin->width, int64_t(cropped->cropX) + cropped->width);
    const int64_t bottom =
        std::min<int64_t>(origin->height, int64_t(cropped->cropY) + cropped->height);
    if (left >= right || top >= bottom)
        return;
    saveUndo(origin, true);
    clearRedoList(origin);
    for (int c = 0; c < 4; ++c) {
        const uint16_t *from = cropped->colorPlanes()[c];
        uint16_t *to = origin->colorPlanes()[c];
        for (int64_t y = top; y < bottom; ++y) {
            const int64_t at = (y - cropped->cropY) * cropped->width + (left - cropped->cropX);
            std::copy(from + at, from + at + (right - left), to + y * origin->width + left);
        }
    }
    changeDone(origin);
}

bool revertImage(image *img)
{
    if (img->kind != 0 || img->fullPath.isEmpty())
        return false;
    const FileRecord record = FileRecord::fromPath(img->fullPath);
    const std::unique_ptr<image> read(
        loadImageFile(record.fullPath, record.name, &record, false, img->saveBag.mcaiOption));
    // Reading may have shown a box, in which everything could be closed.
    if (!read || !workspace()->ownsImage(img) || read->sampleCount() != img->sampleCount())
        return false;
    beginAct(img);
    img->copyWorkPlanes(*read);
    img->width = read->width;
    img->height = read->height;
    img->imageMode = read->imageMode;
    workspace()->refreshViews(img);
    return true;
}

void turnImage(image *img, int orientation)
{
    if (refusesTurn(img))
        return;
    if (!orientImage(img, orientation)) {
        tellNoMemory();
        return;
    }
    forgetOrientation(img);
    changeDone(img);
}

void turnImageUpright(image *img)
{
    if (refusesTurn(img))
        return;
    const int orientation = exifOrientation(img->tagBlock);
    if (orientation == 0)
        say("This image has no EXIF data that say<br>how the camera was held.");
    else if (orientation == 1)
        say("This image is upright,<br>as its EXIF data say.");
    else if (turnUpright(img))
        changeDone(img);
    else
        tellNoMemory();
}

void developImage(image *img)
{
    if (img->cameraOrientation == 0)
        say("This is no camera RAW, or it is developed already.");
    else if (developRaw(img))
        changeDone(img);
    else
        tellNoMemory();
}

void renameImage(image *img, const QString &name)
{
    if (name.isEmpty() || name == img->name)
        return;
    img->name = name;
    img->rebuildTitle();
    changeDone(img);
}

UndoRecord::UndoRecord(image *of) : img(of)
{
    if (img->kind == 1)
        return;
    redoList.swap(img->redoList);
    const int32_t serial = img->undoSerial;
    beginAct(img);
    recorded = img->undoSerial != serial; // there is none without memory
}

UndoRecord::~UndoRecord()
{
    if (!kept && recorded)
        dropLastUndo(img);
    if (kept)
        qDeleteAll(redoList);
    else if (img->kind != 1)
        img->redoList.swap(redoList);
    workspace()->undoStateChanged(img);
}

bool actOnSelection(image *img, const std::function<bool()> &act, const QString &words)
{
    for (imgWindow *window : viewHost() ? viewHost()->windowsOf(img) : QList<imgWindow *>())
        window->settleJobs(); // or a late mask would replace what is made here
    MacroRecorder *recorder = viewHost() ? viewHost()->recorder() : nullptr;
    if (recorder)
        recorder->areaBegins(*img, MacroRecorder::usesSelection(words));
    UndoRecord record(img);
    if (!act()) {
        workspace()->statusText(translated("Not enough memory: the selection is as it was"));
        return false;
    }
    record.keep();
    if (recorder)
        recorder->areaDone(*img, words);
    selectionChanged(img);
    return true;
}

void selectWhole(image *img, bool selected)
{
    if (!img->gmask)
        return;
    const uint16_t value = selected ? 65535 : 0;
    const uint16_t *first = img->gmask, *end = first + img->sampleCount();
    if (std::any_of(first, end, [value](uint16_t sample) { return sample != value; }))
        actOnSelection(
            img, [=]() { return img->fillGmask(value), true; },
            selected ? QStringLiteral("all") : QStringLiteral("none"));
}

void invertSelection(image *img)
{
    actOnSelection(
        img, [img]() { return img->invertMask(), true; }, QStringLiteral("invert"));
}

void setSelectMode(bool on)
{
    const bool turnedOn = on && !workspace()->selectMode;
    workspace()->selectMode = on;
    for (imgWindow *window : turnedOn &&viewHost() ? viewHost()->windows : QList<imgWindow *>()) {
        if (!window->validImage())
            continue;
        window->finishJobs(false);
        window->img->fillGmask(0);
        window->refreshOverlay();
    }
    if (viewHost())
        viewHost()->updateMenus();
}
