// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/workspace.h"
#include "formats/tagged.h"
#include "formats/taggedfields.h"
#include "formats/taggedplanes.h"
#include "formats/taggedvalues.h"
#include "formats/writers.h"

#include <QCoreApplication>
#include <QSaveFile>

#include <algorithm>

namespace
{
/// How often the person is told how far packing came, and asked whether to go on.
constexpr int kTellMilliseconds = 100;

QString text(const char *source)
{
    return QCoreApplication::translate("formats", source);
}

std::vector<PlaneSource> planesOf(const QList<const image *> &pictures)
{
    std::vector<PlaneSource> planes;
    for (const image *picture : pictures)
        for (const uint16_t *plane : picture->colorPlanes())
            planes.push_back({plane, picture->sampleCount()});
    return planes;
}

/// Writes one file: the fields at once, the planes as they are packed. In the background it
/// leaves the workspace alone, which belongs to the main thread.
class FormWriter
{
public:
    FormWriter(QSaveFile *target, const QList<const image *> &pictures,
               BackgroundWrite *inBackground)
        : file(target), out(target), background(inBackground),
          packer(planesOf(pictures), inBackground ? kQuickLevel : kSmallLevel)
    {
    }
    ~FormWriter()
    {
        if (!background && workspace())
            workspace()->progress({}, 0, 0);
    }
    FormWriter(const FormWriter &) = delete;
    FormWriter &operator=(const FormWriter &) = delete;

    void writeHeader(const TaggedHeader &header)
    {
        out.mark(header.magic);
        out.field(header.versionTag, encodeInt(kTaggedVersion));
        out.field(header.keyTag, encodeInt(header.key));
    }
    void writeHead(const TaggedPart &part, const image &img)
    {
        writeRules(part.head, img, &out);
        if (!part.packedTag.isEmpty())
            out.field(part.packedTag, QByteArray("T"));
        out.mark(part.keyMark);
    }
    /// The planes have to be the next ones of the list that the writer was made with.
    void writeBody(const TaggedPart &part, const image &img, const QString &progressText)
    {
        writeRules(part.settings, img, &out);
        for (const QByteArray &tag : part.planes)
            writePlane(tag, progressText);
        out.mark(part.buildMark);
    }
    FieldWriter *fields() { return &out; }
    /// Puts the new file in its place, if nothing went wrong.
    bool commit(QString *error)
    {
        if (reason.isEmpty() && out.good() && commitWhole(*file))
            return true;
        *error = reason.isEmpty() ? file->errorString() : reason;
        return false;
    }

private:
    void writePlane(const QByteArray &tag, const QString &progressText)
    {
        do
            tell(progressText);
        while (goingOn() && !packer.ready(kTellMilliseconds));
        if (!goingOn())
            return;
        const std::vector<QByteArray> pieces = packer.take();
        if (pieces.empty())
            reason = text("There is not enough memory.");
        else
            out.field(tag, pieces);
    }
    bool goingOn() const { return reason.isEmpty() && out.good(); }
    void tell(const QString &progressText)
    {
        Workspace *space = workspace();
        if (!goingOn() || (!background && !space))
            return;
        const int64_t done = packer.samplesDone(), inAll = packer.samplesInAll();
        if (background)
            background->percent = int(done * 100 / std::max<int64_t>(inAll, 1));
        else
            space->progress(progressText, done, inAll);
        if (background ? background->stop.load() : space->cancelRequested())
            reason = QLatin1String(kSaveCancelled);
    }

    QSaveFile *file;
    FieldWriter out;
    QString reason;              ///< why no more is written
    BackgroundWrite *background; ///< null: the person saves
    PlanePacker packer;
};

bool openFor(QSaveFile *file, QString *error)
{
    if (file->open(QIODevice::WriteOnly))
        return true;
    *error = file->errorString();
    return false;
}

bool allValid(const QList<const image *> &pictures)
{
    return std::all_of(pictures.begin(), pictures.end(),
                       [](const image *one) { return one && one->valid(); });
}

bool writeAtomicForm(const image *img, const QString &path, BackgroundWrite *background,
                     QString *error)
{
    if (!allValid({img}) || path.isEmpty()) {
        *error = QStringLiteral("no image or no name");
        return false;
    }
    QSaveFile file(path);
    if (!openFor(&file, error))
        return false;
    FormWriter writer(&file, {img}, background);
    writer.writeHeader(atomicHeader());
    writer.writeHead(atomicPart(), *img);
    writer.writeBody(atomicPart(), *img, text("saving image"));
    writeNotes(atomicPart(), *img, writer.fields());
    return writer.commit(error);
}

bool writeMasterForm(const image *member, const QString &path, BackgroundWrite *background,
                     QString *error)
{
    const image *master = masterOf(const_cast<image *>(member));
    QList<const image *> layers;
    if (master)
        for (const image *layer : master->layers)
            layers << layer;
    if (!allValid({master}) || !allValid(layers) || path.isEmpty()) {
        *error = QStringLiteral("no stack of layers or no name");
        return false;
    }
    QSaveFile file(path);
    if (!openFor(&file, error))
        return false;
    FormWriter writer(&file, layers, background);
    writer.writeHeader(masterHeader());
    writer.writeHead(masterPart(), *master);
    writeNotes(masterPart(), *master, writer.fields());
    for (int i = 0; i < layers.size(); ++i) {
        writer.writeHead(layerPart(), *layers[i]);
        writeNotes(layerPart(), *layers[i], writer.fields());
        writer.writeBody(layerPart(), *layers[i],
                         text("saving layer %1 of %2").arg(i + 1).arg(layers.size()));
    }
    return writer.commit(error);
}
} // namespace

bool writeAtomic(const image *img, const QString &path, QString *error)
{
    return writeAtomicForm(img, path, nullptr, error);
}

bool writeMaster(const image *member, const QString &path, QString *error)
{
    return writeMasterForm(member, path, nullptr, error);
}

bool writeInBackground(const image &picture, const QString &path, BackgroundWrite *state,
                       QString *error)
{
    return picture.kind == 1 ? writeMasterForm(&picture, path, state, error)
                             : writeAtomicForm(&picture, path, state, error);
}
