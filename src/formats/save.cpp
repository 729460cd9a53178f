// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/save.h"

#include "core/compose.h"
#include "core/rows.h"
#include "core/workspace.h"
#include "formats/mcai.h"
#include "formats/readers.h"
#include "formats/tagged.h"
#include "formats/writers.h"

#include <QCoreApplication>

#include <algorithm>
#include <atomic>

namespace
{
enum class Result { Saved, Cancelled, Failed };

/// A writer of one of the program's own forms, chosen by the name's ending.
struct OwnForm {
    const char *ending;
    bool layered; ///< holds masters with their layers, and nothing else
    bool (*write)(const image *img, const QString &path, QString *error); ///< null: none yet
};
const OwnForm kOwnForms[] = {
    {".elx", true, writeMaster},
    {".ato", false, writeAtomic},
    {".mcai", false, writeMcai},
};

QString text(const char *source)
{
    return QCoreApplication::translate("formats", source);
}

Result refuse(const char *reason)
{
    sayInBox(text("Save"), text(reason));
    return Result::Failed;
}

Result refuseForm()
{
    return refuse("Can't save in this format.<br>Use .ato, .png, .rgba, .mcai, or .jpg");
}

/// The one place that tells the person why a save failed and what to do about it.
Result report(bool written, const QString &path, const QString &error)
{
    if (written)
        return Result::Saved;
    qDebug("save %s: %s", qPrintable(path), qPrintable(error));
    sayInBox(text("Save"),
             text("%1 could not be saved.<br>%2<br><br>The image is still unsaved, and an older "
                  "file of this name is as it was. Choose another folder or name, or make room "
                  "there, and save again.")
                 .arg(path.toHtmlEscaped(), error.toHtmlEscaped()));
    return Result::Failed;
}

bool anyTransparent(const image &img)
{
    std::atomic<bool> found{false};
    parallelRows(img.height, img.width, [&](int first, int end) {
        for (int y = first; y < end && !found; ++y) {
            const uint16_t *row = img.alpha + int64_t(y) * img.width;
            if (std::any_of(row, row + img.width, [](uint16_t a) { return a < 65535; }))
                found = true;
        }
    });
    return found;
}

bool acceptsLossOfAlpha(const image &img)
{
    if (!anyTransparent(img))
        return true;
    const int going = 0, cancel = 1;
    return workspace()->question(
               text("Warning"),
               text("This image has transparency. Saving in .jpg is <i>not</i> recommended. In "
                    "order to save with the transparency information intact, you should save in "
                    "either .png or .ato format.<br><br>Continue with save anyway?"),
               {text("Save"), text("Cancel")}, going, cancel) == going;
}

Result saveJpeg(const image &img, const QString &path)
{
    if (!acceptsLossOfAlpha(img))
        return Result::Cancelled;
    Workspace *space = workspace();
    int quality = space->jpegImageQuality;
    if (!space->askQuality(&quality, false))
        return Result::Cancelled;
    space->jpegImageQuality = quality;
    QString error;
    const bool written = writeThroughQt(img, path, true, quality, &error);
    return report(written, path, error);
}

Result savePng(const image &img, const QString &path)
{
    QString error;
    const bool written = writeThroughQt(img, path, false, workspace()->jpegImageQuality, &error);
    return report(written, path, error);
}

Result saveRgba(const image &img, const QString &path)
{
    const int depths[] = {64, 32};
    const QStringList buttons = {text("64 bit RGBA"), text("32 bit RGBA"), text("Cancel Save")};
    const int goingOn = workspace()->rgbaDepth == depths[1] ? 1 : 0;
    const int answer =
        workspace()->question(text("Save"), text("Select image bit depth:"), buttons, goingOn, 0);
    if (answer != 0 && answer != 1) {
        sayStatus(text("save cancelled"));
        return Result::Cancelled;
    }
    QString error;
    const bool written = writeRgbaFile(&img, path, depths[answer], &error);
    if (written)
        sayStatus(text("Save Complete"));
    return report(written, path, error);
}

Result saveOwnForm(const OwnForm &form, const image &img, const QString &path)
{
    if (!form.write)
        return refuseForm();
    QString error;
    const bool written = form.write(&img, path, &error);
    if (written)
        sayStatus(text("Save Complete"));
    if (!written && error == QLatin1String(kSaveCancelled)) {
        sayStatus(text("save cancelled"));
        return Result::Cancelled;
    }
    return report(written, path, error);
}

const OwnForm *ownFormOf(const QString &path)
{
    const auto found =
        std::find_if(std::begin(kOwnForms), std::end(kOwnForms),
                     [&path](const OwnForm &form) { return endsWith(path, form.ending); });
    return found == std::end(kOwnForms) ? nullptr : found;
}

Result saveLayered(const image &member, const QString &path)
{
    const OwnForm *form = ownFormOf(path);
    if (!form || !form->layered)
        return refuse("Can't save a layered image in this format.<br>Use .elx");
    const image *master = member.kind == 2 && member.master ? member.master : &member;
    return saveOwnForm(*form, *master, path);
}

/// What a flat form holds of a picture: of a stack, whichever of its pictures is meant, the
/// composition as it is now.
const image &flatSource(image &img)
{
    image *master = masterOf(&img);
    if (!master || !master->valid())
        return img;
    if (master->needsRebuild)
        compose(master, false);
    return *master;
}

Result saveFlat(const image &img, const QString &path)
{
    const OwnForm *form = ownFormOf(path);
    if (form && !form->layered)
        return saveOwnForm(*form, img, path);
    if (endsWith(path, ".jpg") || endsWith(path, ".jpeg"))
        return saveJpeg(img, path);
    if (endsWith(path, ".rgba"))
        return saveRgba(img, path);
    if (endsWith(path, ".png"))
        return savePng(img, path);
    return refuseForm();
}

/// The image is from now on the one in that file.
void nameAfterFile(image &img, const FileRecord &record)
{
    const FileRecord place = FileRecord::fromPath(record.fullPath);
    img.fullPath = place.fullPath;
    img.folder = place.folder;
    img.name = place.name;
    img.saveBag = record;
    img.saveBag.isSet = true;
    img.rebuildTitle();
    img.changed = false;
}

void settle(image &img, const FileRecord &record, bool layered)
{
    image *saved = layered && img.kind == 2 && img.master ? img.master : &img;
    nameAfterFile(*saved, record);
    if (layered)
        for (image *layer : qAsConst(saved->layers))
            layer->changed = false;
}
} // namespace

bool saveImageFile(const FileRecord &record, image *img, bool flat)
{
    if (!workspace() || !img || !img->valid())
        return false;
    const bool layered = img->kind != 0 && !flat;
    const Result result =
        layered ? saveLayered(*img, record.fullPath) : saveFlat(flatSource(*img), record.fullPath);
    // A flat picture of a stack is a copy: the layers themselves are still unsaved.
    if (result == Result::Saved && (layered || img->kind == 0))
        settle(*img, record, layered);
    return result == Result::Saved;
}
