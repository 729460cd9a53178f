// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"
#include "formats/load.h"
#include "formats/save.h"
#include "formats/tagged.h"
#include "formats/writers.h"
#include "support/debuglog.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
// --- A second writer, made after docs/file-formats.md alone --------------------------------

QByteArray number(qint64 value)
{
    QByteArray bytes(8, '\0');
    qToBigEndian<qint64>(value, bytes.data());
    return bytes;
}

QByteArray unsignedNumber(int32_t value)
{
    return number(quint32(value));
}

QByteArray field(const QByteArray &tag, const QByteArray &data = {})
{
    EXPECT_EQ(tag.size(), 8);
    return tag + number(data.size()) + data;
}

QByteArray real(double value)
{
    return QByteArray::number(value, 'f', 6);
}

QByteArray samples(const uint16_t *plane, int64_t count)
{
    QByteArray bytes;
    for (int64_t i = 0; i < count; ++i)
        bytes.append(char(plane[i] >> 8)).append(char(plane[i] & 255));
    return bytes;
}

QByteArray flag(bool value)
{
    return value ? "T" : "F";
}

QByteArray description(const QByteArray &p, const image &i)
{
    return field(p + "_NAME", i.name.toUtf8()) + field(p + "_ANNO", i.annotation.toUtf8()) +
           field(p + "_CPYR", i.copyright.toUtf8()) + field(p + "_AUTH", i.author.toUtf8()) +
           field(p + "_SOFT", i.software.toUtf8()) + field(p + "_CTIM", i.creationTime.toUtf8()) +
           field(p + "_MTIM", i.modificationTime.toUtf8()) + field(p + "_LATI", real(i.latitude)) +
           field(p + "_LONG", real(i.longitude)) + field(p + "_ALTI", real(i.altitude)) +
           field(p + "_SHUT", real(i.shutter)) + field(p + "_APER", real(i.aperture)) +
           field(p + "_FOCA", real(i.focalLength)) + field(p + "_ISOS", real(i.iso));
}

QByteArray pictureHead(const QByteArray &p, const image &i, const QByteArray &packed = "T")
{
    return description(p, i) + field(p + "_XWID", number(i.width)) +
           field(p + "_YWID", number(i.height)) + field(p + "_XDPI", unsignedNumber(i.xDpi)) +
           field(p + "_YDPI", unsignedNumber(i.yDpi)) + field(p + "_IMOD", number(i.imageMode)) +
           field(p + "_XCEN", unsignedNumber(i.xCenter)) +
           field(p + "_YCEN", unsignedNumber(i.yCenter)) + field(p + "_COMP", packed) +
           field(p == "ATO" ? "IMAGEKEY" : "LAYERKEY");
}

QByteArray settings(const QByteArray &p, const image &i)
{
    return field(p + "_MODE", number(i.layerMode)) + field(p + "_XOFF", number(i.xOffset)) +
           field(p + "_YOFF", number(i.yOffset)) + field(p + "_OPAC", real(i.opacity)) +
           field(p + "_ROTA", real(i.rotation)) + field(p + "_FRXX", real(i.xFraction)) +
           field(p + "_FRYY", real(i.yFraction)) + field(p + "_FACT", real(i.factor)) +
           field(p + "_VISI", flag(i.visible)) + field(p + "_LOCS", flag(i.localStack)) +
           field(p + "_GLOM", flag(i.globalMask)) + field(p + "_LOKS", flag(i.lockStep));
}

QByteArray planes(const QByteArray &p, const image &i, bool packed = true)
{
    QByteArray bytes;
    const auto four = i.colorPlanes();
    for (int k = 0; k < 4; ++k) {
        const QByteArray plain = samples(four[k], i.sampleCount());
        bytes += field(p + '_' + "RGBA"[k] + "CHN", packed ? qCompress(plain, 9) : plain);
    }
    return bytes;
}

QByteArray notes(const QByteArray &p, const image &i)
{
    QByteArray bytes;
    for (const Notation &n : i.notations) {
        bytes += field(p + "_INOT", n.text.toUtf8()) + field(p + "_INPU", flag(n.pointing)) +
                 field(p + "_INAM", number(n.mode)) + field(p + "_INTX", unsignedNumber(n.textX)) +
                 field(p + "_INTY", unsignedNumber(n.textY)) +
                 field(p + "_INAX", unsignedNumber(n.tailX)) +
                 field(p + "_INAY", unsignedNumber(n.tailY)) +
                 field(p + "_INEX", unsignedNumber(n.headX)) +
                 field(p + "_INEY", unsignedNumber(n.headY)) + field(p + "_INOP", real(n.opacity));
        for (const QPoint &point : n.points)
            bytes += field(p + "_INPX", unsignedNumber(point.x())) +
                     field(p + "_INPY", unsignedNumber(point.y()));
        bytes += field(p + "_INBU");
    }
    return bytes;
}

const QByteArray kAtomicHeader =
    field("ATO16BIT") + field("AVERSION", number(1)) + field("AKEYVALU", number(0x2E5A9B3E));
const QByteArray kStackHeader =
    field("ELF16BIT") + field("EVERSION", number(1)) + field("EKEYVALU", number(0x1F4B8C3D));

QByteArray atomicBytes(const image &i)
{
    return kAtomicHeader + pictureHead("ATO", i) + settings("ATO", i) + planes("ATO", i) +
           field("IMAGEBLD") + notes("ATO", i);
}

QByteArray masterBytes(const image &m)
{
    return description("MST", m) + field("MASTERXD", number(m.width)) +
           field("MASTERYD", number(m.height)) + field("MST_XDPI", unsignedNumber(m.xDpi)) +
           field("MST_YDPI", unsignedNumber(m.yDpi)) + field("MAST_KEY") + notes("MST", m);
}

QByteArray layerBytes(const image &i)
{
    return pictureHead("LAY", i) + notes("LAY", i) + settings("LAY", i) + planes("LAY", i) +
           field("LAYERBLD");
}

QByteArray stackBytes(const image &m)
{
    QByteArray bytes = kStackHeader + masterBytes(m);
    for (const image *layer : m.layers)
        bytes += layerBytes(*layer);
    return bytes;
}

// --- Pictures in which no field has its default ----------------------------------------------

void describe(image *i, int k)
{
    i->name = QStringLiteral("Größe %1 \u6587").arg(k);
    i->annotation = QStringLiteral("a\nb");
    i->copyright = QStringLiteral("c%1").arg(k);
    i->author.clear();
    i->software = QStringLiteral("s");
    i->creationTime = QStringLiteral("20200101:000000 UTC");
    i->modificationTime = QStringLiteral("20210101:000000 UTC");
    i->latitude = -12.5 - k;
    i->longitude = 170.25;
    i->altitude = 1e300;
    i->shutter = 0.004;
    i->aperture = 2.8;
    i->focalLength = 50;
    i->iso = 400;
    i->xDpi = 72 + k;
    i->yDpi = -1;
    const auto note = [](const char *text, double opacity, QPolygon points) {
        Notation n;
        n.textX = -5;
        n.textY = 6;
        n.tailX = 7;
        n.tailY = INT32_MIN;
        n.headX = INT32_MAX;
        n.headY = 10;
        n.points = std::move(points);
        n.text = QString::fromUtf8(text);
        n.opacity = opacity;
        n.mode = 2;
        n.pointing = true;
        return n;
    };
    i->notations << note("ü", 0.5, QPolygon({{1, -2}, {3, 4}, {3, 4}})) << note("", 1, {});
}

ImagePtr filledPicture(int width, int height, int k)
{
    ImagePtr i = randomImage(width, height, uint32_t(k + 1));
    describe(i.get(), k);
    i->imageMode = k & 1;
    i->xCenter = -k;
    i->yCenter = 3;
    i->layerMode = k;
    i->xOffset = -3 - k;
    i->yOffset = 40000;
    i->opacity = 1.0 / (k + 2);
    i->rotation = -90.5;
    i->xFraction = 0.25;
    i->yFraction = 0.75;
    i->factor = -2.5;
    i->visible = k & 1;
    i->localStack = !(k & 1);
    i->globalMask = true;
    i->lockStep = true;
    return i;
}

/// A master that takes its layers along.
struct OwnStack {
    image *master = randomImage(6, 5, 99).release();

    explicit OwnStack(int count)
    {
        describe(master, 50);
        master->kind = 1;
        for (int k = 0; k < count; ++k) {
            image *layer = filledPicture(3 + k, 4, k).release();
            layer->kind = 2;
            layer->master = master;
            master->layers << layer;
        }
    }
    ~OwnStack() { destroyTree(&master); }
};

class TaggedTest : public testing::Test
{
protected:
    struct Telling : RecordingWorkspace {
        void progress(const QString &text, int64_t, int64_t total) override
        {
            open = !text.isEmpty() && total > 0;
            if (open && !told.contains(text))
                told << text;
            stop = stop || (open && text == stopAt);
        }
        bool cancelRequested() override { return stop; }

        QStringList told;
        QString stopAt;
        bool open = false, stop = false;
    };

    QString path(const char *name) const { return folder.filePath(QLatin1String(name)); }
    FileRecord put(const char *name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        file.remove(); // to cut an old file short is slow on a disk
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return FileRecord::fromPath(file.fileName());
    }
    QByteArray content(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    ImageHolder atomic(const QByteArray &bytes) { return readAtomic(put("t.ato", bytes)); }
    ImageHolder stack(const QByteArray &bytes) { return readMaster(put("t.elx", bytes)); }

    QTemporaryDir folder;
    Telling ws;
    QString error;
};

TEST_F(TaggedTest, WritersEqualTheDocumentedBytes)
{
    // The larger one goes through the packer in many bites.
    for (const QSize size : {QSize(3, 2), QSize(701, 399)}) {
        const ImagePtr img = filledPicture(size.width(), size.height(), 1);
        ASSERT_TRUE(writeAtomic(img.get(), path("a.ato"), &error)) << qPrintable(error);
        EXPECT_TRUE(content("a.ato") == atomicBytes(*img));
    }
    const OwnStack s(3);
    ASSERT_TRUE(writeMaster(s.master->layers[1], path("a.elx"), &error)) << qPrintable(error);
    EXPECT_TRUE(content("a.elx") == stackBytes(*s.master));
    EXPECT_EQ(ws.told.mid(1).join('|'),
              "saving layer 1 of 3|saving layer 2 of 3|saving layer 3 of 3");
    EXPECT_FALSE(ws.open);
}

TEST_F(TaggedTest, AtomicComesBackWithEverything)
{
    const ImagePtr img = filledPicture(701, 399, 1);
    const ImageHolder back = atomic(atomicBytes(*img));
    ASSERT_TRUE(back);
    EXPECT_TRUE(sameColors(*img, *back));
    EXPECT_EQ(back->kind, 0);
    EXPECT_EQ(back->xFraction, 0.0) << "fractions stay in the file";
    img->xFraction = img->yFraction = 0;
    EXPECT_TRUE(atomicBytes(*back) == atomicBytes(*img));
}

TEST_F(TaggedTest, TwelveLayersComeBackWithEverything)
{
    const OwnStack s(12);
    for (image *layer : s.master->layers)
        layer->xFraction = layer->yFraction = 0;
    ws.imageSerial = 20;
    const ImageHolder back = stack(stackBytes(*s.master));
    ASSERT_TRUE(back);
    EXPECT_TRUE(stackBytes(*back) == stackBytes(*s.master));
    EXPECT_EQ(back->kind, 1);
    EXPECT_FALSE(back->needsRebuild) << "it is composed";
    for (int k = 0; k < 12; ++k) {
        const image &layer = *back->layers[k];
        EXPECT_EQ(layer.kind, 2);
        EXPECT_EQ(layer.master, back.get());
        EXPECT_EQ(layer.viewCount, 1);
        EXPECT_EQ(layer.serial, 21 + k);
        EXPECT_EQ(layer.saveBag.name, "t.elx");
    }
    EXPECT_EQ(ws.told.size(), 13);
    EXPECT_EQ(ws.told[0] + ws.told[12], "Setting up masterSetting up layer 12");
    EXPECT_FALSE(ws.open);
}

TEST_F(TaggedTest, OddFilesThatAreInOrder)
{
    const ImagePtr img = filledPicture(3, 2, 1);
    img->xFraction = img->yFraction = 0;
    const QByteArray whole = atomicBytes(*img), start = kAtomicHeader + pictureHead("ATO", *img);
    const QByteArray head = pictureHead("ATO", *img), body = settings("ATO", *img);
    const QByteArray rest = field("IMAGEBLD") + notes("ATO", *img);
    const QByteArray key = field("IMAGEKEY"), name = field("ATO_NAME", img->name.toUtf8());
    QByteArray lying = whole;
    lying.replace(qCompress(samples(img->red, 6), 9).left(4), QByteArray("\x7F\xFF\xFF\xFF", 4));
    const QByteArray longer = samples(img->red, 6) + QByteArray(4000, '\x55');
    QByteArray longPlane = whole;
    longPlane.replace(field("ATO_RCHN", qCompress(samples(img->red, 6), 9)),
                      field("ATO_RCHN", qCompress(longer, 9)));
    QByteArray nameLast = whole;
    nameLast.replace(name, "").replace(field("IMAGEBLD"), name + field("IMAGEBLD"));
    const struct {
        const char *what;
        QByteArray bytes;
    } cases[] = {
        {"NoKeyNoVersion", field("ATO16BIT") + head + body + planes("ATO", *img) + rest},
        {"UnknownTags", QByteArray(start).replace(key, field("ATO_FUTR", "x") + key) + body +
                            field("LAY_NAME", "no") + planes("ATO", *img) + rest},
        {"PlanesBeforeSettings", start + planes("ATO", *img) + body + rest},
        {"NotesFirst", start + notes("ATO", *img) + body + planes("ATO", *img) + field("IMAGEBLD")},
        {"NameLast", nameLast},
        {"RawPlanes",
         kAtomicHeader + pictureHead("ATO", *img, "F") + body + planes("ATO", *img, false) + rest},
        {"PlanesTwice", start + body + planes("ATO", *img) + planes("ATO", *img) + rest},
        {"BuiltTwice", start + body + planes("ATO", *img) + field("IMAGEBLD") + rest},
        {"KeyTwice", start + key + body + planes("ATO", *img) + rest},
        {"LyingInflatedSize", lying},
        {"PlaneTooLong", longPlane},
        {"ScrapsAtTheEnd", whole + "1234567"},
        {"WidthOver32Bits",
         QByteArray(whole).replace(field("ATO_XWID", number(3)),
                                   field("ATO_XWID", number((qint64(5) << 32) + 3)))},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        const ImageHolder back = atomic(c.bytes);
        ASSERT_TRUE(back);
        EXPECT_TRUE(atomicBytes(*back) == whole);
    }
}

TEST_F(TaggedTest, WhatIsMissingIsZeroOrDefault)
{
    const ImagePtr img = filledPicture(3, 2, 1);
    const QByteArray size = field("LAY_XWID", number(3)) + field("LAY_YWID", number(2));
    const QByteArray half = qCompress(samples(img->red, 3), 9), noise("12345678901234");
    const OwnStack one(1);
    const ImageHolder back =
        stack(stackBytes(*one.master) + size + field("LAY_OPAC", "1,5") + field("LAY_FACT", "nan") +
              field("LAY_XOFF", "123") + field("LAYERKEY") + field("LAY_RCHN", half) +
              field("LAY_GCHN", noise) + field("LAY_BCHN") + field("LAYERBLD") + size +
              field("LAY_NAME", "unfinished") + field("LAYERKEY"));
    ASSERT_TRUE(back);
    ASSERT_EQ(back->layers.size(), 2) << "a layer without its end is none";
    const image &bare = *back->layers[1];
    EXPECT_EQ(samples(bare.red, 6), samples(img->red, 3) + QByteArray(6, '\0'));
    EXPECT_EQ(samples(bare.green, 6) + samples(bare.blue, 6), QByteArray(24, '\0'));
    EXPECT_EQ(bare.alpha[5], 65535) << "a plane without a field is as in a new picture";
    EXPECT_EQ(bare.name + bare.annotation + bare.creationTime, QString());
    EXPECT_EQ(bare.opacity, 1.0) << "what cannot be read is the default, too";
    EXPECT_EQ(bare.factor, 1.0);
    EXPECT_EQ(bare.iso, 1.0);
    EXPECT_EQ(bare.xOffset + bare.layerMode + bare.xCenter, 0);
    EXPECT_EQ(bare.xDpi, 300);
    EXPECT_TRUE(bare.visible && !bare.localStack && !bare.globalMask && !bare.lockStep);
    EXPECT_TRUE(bare.notations.isEmpty());

    const ImageHolder partial = atomic(kAtomicHeader + pictureHead("ATO", *img));
    ASSERT_TRUE(partial) << "without its end an atomic picture is what there is";
    EXPECT_EQ(partial->name, img->name);
    EXPECT_EQ(partial->iso, 1.0);
    EXPECT_EQ(partial->blue[5], 36863);
}

TEST_F(TaggedTest, RefusedFilesLeaveNothing)
{
    const ImagePtr img = filledPicture(3, 2, 1);
    const OwnStack s(2);
    const auto sized = [](qint64 w, qint64 h) {
        return kAtomicHeader + field("ATO_XWID", number(w)) + field("ATO_YWID", number(h)) +
               field("IMAGEKEY") + field("IMAGEBLD");
    };
    const QByteArray big = field("LAY_XWID", number(1000)) + field("LAY_YWID", number(1000)) +
                           field("LAYERKEY") + field("LAYERBLD");
    const struct {
        const char *what;
        QByteArray bytes;
    } cases[] = {
        {"MagicWithData", field("ATO16BIT", "x") + pictureHead("ATO", *img)},
        {"WrongKey", field("ATO16BIT") + pictureHead("ATO", *img) +
                         field("AKEYVALU", number(0x2E5A9B3F)) + field("IMAGEBLD")},
        {"OtherFormsKey",
         field("ELF16BIT") + field("EKEYVALU", number(0x2E5A9B3E)) + masterBytes(*s.master)},
        {"NoSize", kAtomicHeader + field("IMAGEKEY") + field("IMAGEBLD")},
        {"Negative", sized(-3, 2)},
        {"Zero", sized(0, 2)},
        {"TooWide", sized(32768, 1)},
        {"GigabytesFromAFewBytes", sized(32767, 32767)},
        {"ManyLayersFromAFewBytes", kStackHeader + masterBytes(*s.master) + big.repeated(100)},
        {"WorkForMinutesFromAFewBytes",
         kStackHeader + field("MASTERXD", number(8000)) + field("MASTERYD", number(8000)) +
             field("MAST_KEY") +
             (field("LAY_XWID", number(9)) + field("LAY_YWID", number(9)) + field("LAYERKEY") +
              field("LAYERBLD"))
                 .repeated(50)},
        {"HugeMaster", kStackHeader + field("MASTERXD", number(32767)) +
                           field("MASTERYD", number(32767)) + field("MAST_KEY")},
        {"LengthBeyondTheFile", kAtomicHeader + "ATO_NAME" + number(INT64_MAX) + "x"},
        {"NegativeLength", kAtomicHeader + "ATO_NAME" + number(-1) + "x"},
        {"LayersWithoutMaster", kStackHeader + layerBytes(*s.master->layers[0])},
        {"NothingButHeader", kAtomicHeader},
    };
    const int64_t before = memRecord.currentBytes;
    ws.imageSerial = 5;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_FALSE(loadImageFile(put("t.bin", c.bytes).fullPath, {}, nullptr, true));
        EXPECT_EQ(ws.statusTexts.join('|'), "Unknown Image Format");
        ws.statusTexts.clear();
        EXPECT_EQ(memRecord.currentBytes, before);
    }
    EXPECT_EQ(ws.imageSerial, 5);
    EXPECT_FALSE(ws.open);
    takeDebugLines();
    atomic(cases[1].bytes);
    EXPECT_EQ(takeDebugLines(), QStringList("image file key is invalid"));
}

TEST_F(TaggedTest, CutAndFlippedFilesAreSurvived)
{
    const ImagePtr img = filledPicture(3, 2, 1);
    const OwnStack s(2);
    const int64_t before = memRecord.currentBytes, blocks = memRecord.currentBlocks;
    for (const QByteArray &whole : {atomicBytes(*img), stackBytes(*s.master)}) {
        const auto load = [&](const QByteArray &bytes) {
            return whole.startsWith("ATO") ? atomic(bytes) : stack(bytes);
        };
        int cutWithinAField = 0;
        // Every byte of the short file; of the other, a step that meets all parts of fields.
        const int step = whole.size() < 3000 ? 1 : 5;
        for (int length = 0; length < whole.size(); length += step)
            cutWithinAField += !load(whole.left(length));
        EXPECT_GT(cutWithinAField, whole.size() / step / 2);
        for (int at = 0; at < whole.size(); at += step) {
            QByteArray bytes = whole;
            bytes[at] = char(bytes[at] ^ (1 << at % 8));
            load(bytes);
        }
        EXPECT_EQ(memRecord.currentBytes, before);
    }
    takeDebugLines();
    for (int n = 1; n <= 21; ++n) { // planes of the master and of two layers
        memFailAt(n);
        EXPECT_FALSE(stack(stackBytes(*s.master))) << n;
        memFailAt(0);
    }
    EXPECT_EQ(memRecord.currentBlocks, blocks);
    takeDebugLines();
}

TEST_F(TaggedTest, ALayerBeforeItsMasterIsDropped)
{
    const OwnStack s(2);
    const QByteArray early = layerBytes(*s.master->layers[0]);
    const ImageHolder back = stack(kStackHeader + early + masterBytes(*s.master) + early +
                                   masterBytes(*s.master) + early);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->layers.size(), 2) << "and a second master does not take the first one's place";
}

TEST_F(TaggedTest, CancelLeavesEverythingAsItWas)
{
    const OwnStack s(3);
    const FileRecord record = put("t.elx", stackBytes(*s.master));
    const int64_t before = memRecord.currentBytes;
    ws.stopAt = "Setting up layer 3";
    EXPECT_FALSE(loadImageFile(record.fullPath, {}, nullptr, true));
    EXPECT_EQ(ws.statusTexts, QStringList("load cancelled"));
    EXPECT_EQ(memRecord.currentBytes, before);
    EXPECT_FALSE(ws.open);

    ws.stop = false;
    ws.stopAt = "saving layer 2 of 3";
    s.master->changed = true;
    put("t.elx", "old");
    EXPECT_FALSE(saveImageFile(record, s.master, false));
    EXPECT_EQ(ws.statusTexts.last(), "save cancelled");
    EXPECT_TRUE(ws.boxes.isEmpty());
    EXPECT_TRUE(s.master->changed);
    EXPECT_EQ(content("t.elx"), "old");
    EXPECT_FALSE(ws.open);
    EXPECT_FALSE(writeMaster(s.master, record.fullPath, &error));
    EXPECT_EQ(error, kSaveCancelled);
}

TEST_F(TaggedTest, TheDispatchSavesStacksWholeOrFlat)
{
    OwnStack s(2);
    image *layer = s.master->layers[0];
    s.master->changed = layer->changed = true;
    for (const char *name : {"a.png", "a.ato", "elx"})
        EXPECT_FALSE(saveImageFile(FileRecord::fromPath(path(name)), layer, false));
    EXPECT_EQ(ws.boxes.last(), "Save: Can't save a layered image in this format.<br>Use .elx");

    ASSERT_TRUE(saveImageFile(FileRecord::fromPath(path("a.ato")), layer, true));
    const ImagePtr flat(loadImageFile(path("a.ato"), {}, nullptr, false));
    ASSERT_TRUE(flat);
    EXPECT_TRUE(sameColors(*flat, *s.master)) << "the composition";
    EXPECT_EQ(flat->name, "a.ato");
    EXPECT_TRUE(s.master->changed) << "a flat copy is not the stack";

    ASSERT_TRUE(saveImageFile(FileRecord::fromPath(path("a.ELX")), layer, false));
    EXPECT_EQ(ws.statusTexts.last(), "Save Complete");
    EXPECT_EQ(s.master->name, "a.ELX");
    EXPECT_NE(layer->name, "a.ELX");
    EXPECT_FALSE(s.master->changed || layer->changed);
    image *back = loadImageFile(path("a.ELX"), {}, nullptr, true);
    ASSERT_TRUE(back);
    EXPECT_EQ(ws.images, QList<image *>{back});
    EXPECT_EQ(back->name, "a.ELX");
    EXPECT_EQ(back->layers[0]->name, layer->name);
    ws.images.clear();
    destroyTree(&back);
    s.master->needsRebuild = true;
    ASSERT_TRUE(saveImageFile(FileRecord::fromPath(path("b.ato")), layer, true));
    EXPECT_FALSE(s.master->needsRebuild) << "composed first";
}
} // namespace
