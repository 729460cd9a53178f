// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/compose.h"
#include "core/workspace.h"
#include "formats/bounds.h"
#include "formats/tagged.h"
#include "formats/taggedfields.h"
#include "formats/taggedplanes.h"
#include "formats/taggedstream.h"
#include "formats/taggedvalues.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <optional>

namespace
{
/// A plane that the file does not have is left as a new picture has it.
constexpr uint16_t kFreshGrey = 36863;
constexpr uint16_t kOpaque = 65535;
constexpr int kTellMilliseconds = 50;

/// What reading goes on with after a field.
enum class Step { GoOn, GiveUp };

/// Holds the pictures of one file, and the work of composing them, against what its bytes can
/// justify.
class PixelBudget
{
public:
    explicit PixelBudget(int64_t fileBytes) : bytes(fileBytes) {}

    /// A picture whose planes are in the file, which shares its bytes with the others.
    bool allowsStored(int64_t pixels)
    {
        // A zlib stream is at least a 1032nd of its content, a pixel has eight bytes.
        constexpr int64_t pixelsPerByte = 130;
        stored += pixels;
        work += composed;
        return fileCanHold(stored, bytes, pixelsPerByte) && memoryHolds() && workIsJustified();
    }
    /// A master has no planes of its own in the file: its layers may well be smaller.
    bool allowsComposed(int64_t pixels)
    {
        constexpr int64_t harmless = int64_t(64) << 20;
        constexpr int64_t pixelsPerByte = 1024;
        composed += pixels;
        return (pixels <= harmless || fileCanHold(pixels, bytes, pixelsPerByte)) && memoryHolds();
    }

private:
    /// Composing may pass over the whole master for each layer, however small that is. A
    /// layer with all its fields has a thousand bytes, one of the master's size far more.
    bool workIsJustified() const
    {
        constexpr int64_t harmless = int64_t(256) << 20;
        constexpr int64_t pixelsPerByte = 8192;
        return work <= harmless || work / pixelsPerByte <= bytes;
    }
    bool memoryHolds() const
    {
        constexpr int64_t readerBytes = 2;
        return memoryCanHold(stored + composed, readerBytes);
    }

    int64_t bytes, stored = 0, composed = 0, work = 0;
};

/// Reads the fields of one kind of picture.
class PartReader
{
public:
    PartReader(const TaggedPart &kind, const FileRecord &source)
        : part(kind), record(source), head(kind.head), settings(kind.settings), notes(kind)
    {
    }

    bool isKeyMark(const QByteArray &tag) const { return tag == part.keyMark; }
    bool isBuildMark(const QByteArray &tag) const
    {
        return !part.buildMark.isEmpty() && tag == part.buildMark;
    }
    int64_t pixels() const
    {
        const int64_t width = head.value<int32_t>(part.widthTag);
        const int64_t height = head.value<int32_t>(part.heightTag);
        return sidesInRange(width, height) ? width * height : 0;
    }
    /// Makes the picture at the size read so far; false if memory is short.
    bool make()
    {
        const QString name = head.value<QString>(part.prefix + "_NAME");
        picture = std::make_unique<image>();
        planesSeen.fill(false);
        if (!picture->allocateUnfilled(head.value<int32_t>(part.widthTag),
                                       head.value<int32_t>(part.heightTag),
                                       name + QLatin1String(part.label)))
            return false;
        picture->name = name;
        picture->saveBag = record;
        picture->saveBag.isSet = true;
        return true;
    }
    /// Takes the field if it is one of this kind of picture.
    bool take(FieldReader &field, PlaneUnpacker *unpacker)
    {
        if (head.take(field) || settings.take(field) || notes.take(field, picture.get()))
            return true;
        if (!part.packedTag.isEmpty() && field.tag() == part.packedTag) {
            packed = field.data().startsWith('T');
            return true;
        }
        const auto plane = std::find(part.planes.begin(), part.planes.end(), field.tag());
        if (plane == part.planes.end())
            return false;
        if (picture)
            takePlane(field, unpacker, size_t(plane - part.planes.begin()));
        return true;
    }
    /// Copies what was read into the picture. The planes may still be under way.
    void build(uint16_t kind)
    {
        head.copyTo(picture.get());
        settings.copyTo(picture.get());
        picture->opacity = std::clamp(picture->opacity, 0.0, 1.0);
        picture->kind = kind;
    }
    void fillMissingPlanes()
    {
        const auto planes = picture->colorPlanes();
        for (size_t i = 0; i < planes.size(); ++i)
            if (!planesSeen[i])
                std::fill_n(planes[i], picture->sampleCount(), i == 3 ? kOpaque : kFreshGrey);
        planesSeen.fill(true);
    }
    /// Ready for another picture: it inherits nothing.
    void reset()
    {
        picture.reset();
        head.reset();
        settings.reset();
        notes.reset();
        packed = true;
    }

    ImageHolder picture;

private:
    void takePlane(FieldReader &field, PlaneUnpacker *unpacker, size_t index)
    {
        if (planesSeen[index])
            unpacker->wait(); // two must not write the same plane at a time
        planesSeen[index] = true;
        const int64_t count = picture->sampleCount();
        unpacker->start(field.block(PlaneUnpacker::mostBytes(packed, count)), packed,
                        picture->colorPlanes()[index], count);
    }

    const TaggedPart &part;
    const FileRecord &record;
    FieldValues<image> head, settings;
    NoteReader notes;
    std::array<bool, 4> planesSeen = {};
    bool packed = true;
};

/// Tells the workspace how far reading came, and ends that on every path.
class LoadProgress
{
public:
    explicit LoadProgress(int64_t fileBytes) : total(std::max<int64_t>(fileBytes, 1)) {}
    ~LoadProgress()
    {
        if (!text.isEmpty() && workspace())
            workspace()->progress({}, 0, 0);
    }
    LoadProgress(const LoadProgress &) = delete;
    LoadProgress &operator=(const LoadProgress &) = delete;

    void begin(const QString &what)
    {
        text = what;
        lastTold.invalidate();
    }
    /// False if the person wants no more of it.
    bool goOn(int64_t position)
    {
        Workspace *space = workspace();
        if (!space)
            return true;
        // A file may have millions of fields: to tell of each would take longer than they do.
        if (!text.isEmpty() && (!lastTold.isValid() || lastTold.hasExpired(kTellMilliseconds))) {
            space->progress(text, std::min(position, total), total);
            lastTold.start();
        }
        cancelled = cancelled || space->cancelRequested();
        return !cancelled;
    }
    bool wasCancelled() const { return cancelled; }

private:
    QString text;
    QElapsedTimer lastTold;
    int64_t total;
    bool cancelled = false;
};

/// What both forms have in common: the magic, the key, and the walk over the fields.
class FormReader
{
public:
    FormReader(const FileRecord &source, const TaggedHeader &form)
        : record(source), header(form), file(source.fullPath)
    {
    }
    virtual ~FormReader() = default;
    FormReader(const FormReader &) = delete;
    FormReader &operator=(const FormReader &) = delete;

    /// Null as the file deserves it; tells whether the person cancelled.
    ImageHolder read(bool *cancelled)
    {
        if (!QFileInfo(record.fullPath).isFile() || !file.open(QIODevice::ReadOnly))
            return nullptr;
        fields.emplace(&file);
        budget.emplace(file.size());
        progress.emplace(file.size());
        // The magic is a field without data.
        const bool known = fields->next() && fields->tag() == header.magic && fields->length() == 0;
        const bool whole = known && readFields();
        unpacker.wait();
        if (unpacker.damageSeen())
            qDebug("%s: a plane is damaged", qPrintable(record.fullPath));
        ImageHolder result = whole ? finish() : nullptr;
        if (cancelled)
            *cancelled = progress->wasCancelled();
        progress.reset();
        return result;
    }

protected:
    virtual Step takeField(const QByteArray &tag) = 0;
    /// The picture that was read; the planes are all there.
    virtual ImageHolder finish() = 0;

    Step makePicture(PartReader *part, bool stored)
    {
        const int64_t pixels = part->pixels();
        const bool allowed =
            pixels > 0 && (stored ? budget->allowsStored(pixels) : budget->allowsComposed(pixels));
        if (allowed) {
            unpacker.wait(); // a picture that this one replaces goes
            if (part->make())
                return Step::GoOn;
        }
        qDebug("%s: no picture of that size", qPrintable(record.fullPath));
        return Step::GiveUp;
    }
    Step tell() { return progress->goOn(fields->position()) ? Step::GoOn : Step::GiveUp; }

    const FileRecord &record;
    const TaggedHeader &header;
    QFile file;
    std::optional<FieldReader> fields;
    std::optional<PixelBudget> budget;
    std::optional<LoadProgress> progress;
    PlaneUnpacker unpacker;

private:
    bool readFields()
    {
        while (fields->next())
            if (!keyHolds() || takeField(fields->tag()) == Step::GiveUp || fields->cut())
                return false;
        return !fields->cut();
    }
    bool keyHolds()
    {
        if (fields->tag() != header.keyTag || fields->data() == encodeInt(header.key))
            return true;
        qDebug("image file key is invalid");
        return false;
    }
};

class AtomicReader : public FormReader
{
public:
    explicit AtomicReader(const FileRecord &source)
        : FormReader(source, atomicHeader()), part(atomicPart(), source)
    {
    }

protected:
    Step takeField(const QByteArray &tag) override
    {
        if (part.isKeyMark(tag))
            return makePicture(&part, true);
        if (!part.isBuildMark(tag))
            part.take(*fields, &unpacker);
        else if (part.picture)
            part.build(0);
        return tell();
    }
    ImageHolder finish() override
    {
        if (part.picture)
            part.fillMissingPlanes();
        return std::move(part.picture);
    }

private:
    PartReader part;
};

class MasterReader : public FormReader
{
public:
    explicit MasterReader(const FileRecord &source)
        : FormReader(source, masterHeader()), stack(masterPart(), source),
          layer(layerPart(), source)
    {
    }

protected:
    Step takeField(const QByteArray &tag) override
    {
        if (stack.isKeyMark(tag))
            return beginStack();
        if (layer.isKeyMark(tag))
            return beginLayer();
        if (layer.isBuildMark(tag))
            return endLayer();
        if (!stack.take(*fields, &unpacker))
            layer.take(*fields, &unpacker);
        return tell();
    }
    ImageHolder finish() override
    {
        if (!stack.picture)
            return nullptr;
        image &master = *stack.picture;
        stack.build(1);
        for (image *one : qAsConst(master.layers)) {
            if (Workspace *space = workspace())
                one->serial = ++space->imageSerial;
            one->rebuildTitle();
        }
        master.rebuildTitle();
        master.needsRebuild = true;
        compose(&master, false);
        return std::move(stack.picture);
    }

private:
    Step beginStack()
    {
        if (stack.picture)
            return tell(); // there is one master; its layers stay with it
        progress->begin(QCoreApplication::translate("formats", "Setting up master"));
        return tell() == Step::GoOn ? makePicture(&stack, false) : Step::GiveUp;
    }
    Step beginLayer()
    {
        if (!stack.picture) {
            qDebug("%s: a layer stands before its master", qPrintable(record.fullPath));
            return tell();
        }
        const int number = int(stack.picture->layers.size()) + 1;
        progress->begin(QCoreApplication::translate("formats", "Setting up layer %1").arg(number));
        return tell() == Step::GoOn ? makePicture(&layer, true) : Step::GiveUp;
    }
    Step endLayer()
    {
        if (layer.picture) {
            layer.build(2);
            layer.fillMissingPlanes();
            image *made = layer.picture.release();
            made->master = stack.picture.get();
            made->viewCount = 1;
            made->master->layers.append(made);
        }
        layer.reset();
        return tell();
    }

    PartReader stack, layer;
};
} // namespace

ImageHolder readAtomic(const FileRecord &record, bool *cancelled)
{
    return AtomicReader(record).read(cancelled);
}

ImageHolder readMaster(const FileRecord &record, bool *cancelled)
{
    return MasterReader(record).read(cancelled);
}
