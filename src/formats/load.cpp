// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/load.h"

#include "core/workspace.h"
#include "formats/develop.h"
#include "formats/exif.h"
#include "formats/iff.h"
#include "formats/mcai.h"
#include "formats/readers.h"
#include "formats/tagged.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <iterator>

namespace
{
constexpr int kMagicBytes = 8;
const QString kUnknown = QStringLiteral("Unknown Image Format");

/// What one step of the dispatch came to. Where `final` is set no later step is tried.
struct Outcome {
    ImageHolder img;
    bool final = false;
    bool announce = false; ///< "Image Loaded" after the picture is shown
    QString complaint;     ///< for the status line, if there is no picture

    bool settled() const { return final || img; }
};

/// A form told by its first eight bytes.
struct MagicForm {
    const char *magic;
    ImageHolder (*read)(const FileRecord &record, bool *cancelled);
};
const MagicForm kMagicForms[] = {
    {"ATO16BIT", readAtomic},
    {"ELF16BIT", readMaster},
};

QString cancelledText()
{
    return QCoreApplication::translate("formats", "load cancelled");
}

/// A reader that finds out by itself whether a file is of its form.
using WholeFileReader = ImageHolder (*)(const FileRecord &record, bool *cancelled);

Outcome runReader(WholeFileReader read, const FileRecord &record)
{
    Outcome outcome;
    outcome.img = read(record, &outcome.final);
    outcome.complaint = outcome.final ? cancelledText() : kUnknown;
    return outcome;
}

/// The first bytes of a regular file, fewer if it has fewer.
QByteArray firstBytes(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    return file.read(kMagicBytes);
}

Outcome readNative(const FileRecord &record)
{
    Outcome outcome;
    const QString &path = record.fullPath;
    if (!QFileInfo(path).isFile())
        return outcome;
    if (endsWith(path, ".rgba")) {
        outcome.img.reset(readRgba32(path, record.name));
        if (!outcome.img)
            outcome.img.reset(readRgba64(path, record.name));
        if (outcome.img)
            return outcome;
    }
    const QByteArray magic = firstBytes(path);
    for (const MagicForm &form : kMagicForms)
        if (magic == form.magic) {
            outcome.img = form.read(record, &outcome.final);
            if (outcome.final)
                outcome.complaint = cancelledText();
        }
    return outcome;
}

Outcome readQtForm(const FileRecord &record)
{
    const QString &path = record.fullPath;
    const bool jpeg = endsWith(path, ".jpg") || endsWith(path, ".jpeg");
    const ExifContent exif = jpeg ? readExif(path) : ExifContent();
    Outcome outcome{readThroughQt(path, record), true, true, {}};
    if (outcome.img) {
        outcome.img->tagLines = exif.lines;
        outcome.img->tagBlock = exif.block;
    }
    return outcome;
}

/// A picture of its own to look at, if the person wants that: undoing brings the linear
/// samples back. It is not changed by it, no more than a JPEG is by its decoding.
Outcome readCameraRaw(const FileRecord &record)
{
    Outcome outcome{readThroughLibRaw(record.fullPath, record), true, true, {}};
    if (outcome.img && workspace() && workspace()->rawDevelop && developRaw(outcome.img.get()))
        outcome.img->changed = false;
    return outcome;
}

bool inList(const QString &path, const QStringList &extensions)
{
    return std::any_of(extensions.begin(), extensions.end(), [&path](const QString &extension) {
        return path.endsWith(extension, Qt::CaseInsensitive);
    });
}

/// The steps that go by the name. What they settle on is final: a ".jpg" that cannot be
/// read is not sniffed for something else, and a broken RAW file says nothing more.
Outcome readByName(const FileRecord &record)
{
    const QString &path = record.fullPath;
    if (inList(path, qtExtensions()))
        return readQtForm(record);
    if (inList(path, rawExtensions()))
        return readCameraRaw(record);
    if (endsWith(path, ".iff")) {
        Outcome outcome = runReader(readIff, record);
        outcome.final = true;
        return outcome;
    }
    if (endsWith(path, ".pix"))
        return {readPix(path, record.name, true), true, false, kUnknown};
    return {};
}

/// The steps that go by the first bytes, for names that say nothing.
Outcome readByContent(const FileRecord &record)
{
    const QString &path = record.fullPath;
    const QByteArray magic = firstBytes(path);
    if (magic.size() < kMagicBytes)
        return {nullptr, true, false, kUnknown};
    Outcome outcome;
    if (magic.startsWith("FORM"))
        outcome = runReader(readIff, record);
    else if (magic.startsWith("\xFF\xD8") || magic == "\x89PNG\r\n\x1A\n")
        outcome = {readThroughQt(path, record), false, true, {}};
    if (!outcome.settled())
        outcome = runReader(readMcai, record);
    if (!outcome.settled())
        outcome = {readPix(path, record.name, false), true, false, kUnknown};
    return outcome;
}

/// The record to work with: the one given, or the workspace's, for the path asked for.
FileRecord recordFor(const QString &path, const QString &name, const FileRecord *given)
{
    FileRecord record = given ? *given : workspace() ? workspace()->fileRecord : FileRecord();
    if (!path.isEmpty() && record.fullPath != path) {
        const FileRecord own = FileRecord::fromPath(path);
        record.fullPath = own.fullPath;
        record.folder = own.folder;
        record.name = own.name;
    }
    if (record.name.isEmpty())
        record.name = name.isEmpty() ? FileRecord::fromPath(record.fullPath).name : name;
    return record;
}

void nameAfterFile(image &img, const FileRecord &record)
{
    img.fullPath = record.fullPath;
    img.name = record.name;
    img.folder = record.folder;
}
} // namespace

void sayStatus(const QString &text)
{
    if (Workspace *space = workspace())
        space->statusText(text);
}

void sayInBox(const QString &title, const QString &text)
{
    if (Workspace *space = workspace())
        space->messageBox(title, text);
}

bool endsWith(const QString &name, const char *ending)
{
    return name.endsWith(QLatin1String(ending), Qt::CaseInsensitive);
}

image *finishLoad(ImageHolder img, const FileRecord &record, bool announce)
{
    image *shown = img.release();
    if (Workspace *space = workspace())
        space->showImage(shown, record);
    if (announce)
        sayStatus(QStringLiteral("Image Loaded"));
    return shown;
}

image *loadImageFile(const QString &path, const QString &name, const FileRecord *given, bool show,
                     bool mcaiOption)
{
    FileRecord record = recordFor(path, name, given);
    record.mcaiOption = mcaiOption;
    Outcome outcome = readNative(record);
    if (!outcome.settled())
        outcome = readByName(record);
    if (!outcome.settled())
        outcome = readByContent(record);
    if (!outcome.img) {
        if (!outcome.complaint.isEmpty())
            sayStatus(outcome.complaint);
        return nullptr;
    }
    nameAfterFile(*outcome.img, record);
    return show ? finishLoad(std::move(outcome.img), record, outcome.announce)
                : outcome.img.release();
}

image *loadNative(const FileRecord &record, bool show)
{
    Outcome outcome = readNative(record);
    return outcome.img && show ? finishLoad(std::move(outcome.img), record, false)
                               : outcome.img.release();
}

const QStringList &nativeExtensions()
{
    static const QStringList list = {".elx", ".ato", ".rgba"};
    return list;
}

const QStringList &qtExtensions()
{
    static const QStringList list = {".jpeg", ".jpg", ".png", ".gif", ".pbm",
                                     ".pgm",  ".ppm", ".xbm", ".xpm"};
    return list;
}

const QStringList &rawExtensions()
{
    static const QStringList list = {
        ".bay", ".bmq", ".cr2", ".crw", ".cs1", ".dc2", ".dcr", ".dng", ".erf",  ".fff",
        ".hdr", ".k25", ".kdc", ".mdc", ".mos", ".mrw", ".nef", ".orf", ".pef",  ".pxn",
        ".raf", ".raw", ".rdc", ".sr2", ".srf", ".x3f", ".arw", ".3fr", ".cine", ".ia",
        ".kc2", ".mef", ".nrw", ".qtk", ".rw2", ".sti", ".rwl", ".srw"};
    return list;
}
