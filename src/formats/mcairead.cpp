// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/workspace.h"
#include "formats/bounds.h"
#include "formats/mcai.h"
#include "formats/mcaiblock.h"
#include "formats/taggeddescription.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QtConcurrentMap>
#include <QtEndian>

#include <algorithm>
#include <memory>
#include <vector>

#include <libdeflate.h>

namespace
{
constexpr int kBlocksPerThread = 8;
/// Deflate makes nothing smaller than this.
constexpr int64_t kMostExpansion = 1032;
/// A block of planes of one value each is no more than its entry in the header.
constexpr int64_t kPixelsPerByte = kMcaiBlockSamples / 8;
/// No section of a sound file is longer.
constexpr int64_t kLongestSection = int64_t(256) << 20;

QString text(const char *source)
{
    return QCoreApplication::translate("formats", source);
}

uint32_t checksum(const QByteArray &bytes)
{
    return libdeflate_crc32(0, bytes.constData(), size_t(bytes.size()));
}

/// Takes the header apart. What it lacks reads as 0 or empty, and is remembered.
class HeaderBytes
{
public:
    explicit HeaderBytes(const QByteArray &header) : bytes(header) {}
    uint32_t number()
    {
        const QByteArray four = take(4);
        return four.size() == 4 ? qFromBigEndian<uint32_t>(four.constData()) : 0;
    }
    /// The content of a section, empty if it is damaged.
    QByteArray section()
    {
        const int64_t size = number();
        const QByteArray packed = take(number());
        good = good && size <= std::min(packed.size() * kMostExpansion, kLongestSection);
        const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor *)>
            unpacker(libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
        if (!good || !unpacker)
            return QByteArray();
        QByteArray result(int(size), Qt::Uninitialized);
        good = libdeflate_deflate_decompress(unpacker.get(), packed.constData(),
                                             size_t(packed.size()), result.data(), size_t(size),
                                             nullptr) == LIBDEFLATE_SUCCESS;
        return good ? result : QByteArray();
    }
    bool whole() const { return good; }

private:
    QByteArray take(int64_t count)
    {
        good = good && count <= bytes.size() - at;
        if (!good)
            return QByteArray();
        const QByteArray taken = bytes.mid(at, int(count));
        at += int(count);
        return taken;
    }

    const QByteArray &bytes;
    int at = 0;
    bool good = true;
};

class McaiReader
{
public:
    explicit McaiReader(const FileRecord &source) : record(source), file(source.fullPath) {}
    ~McaiReader() { endProgress(); }
    McaiReader(const McaiReader &) = delete;
    McaiReader &operator=(const McaiReader &) = delete;

    bool isOurs()
    {
        return QFileInfo(record.fullPath).isFile() && file.open(QIODevice::ReadOnly) &&
               file.read(kMcaiMagicBytes) == QByteArray(kMcaiMagic, kMcaiMagicBytes);
    }
    /// Null with a complaint, or without one if the person cancelled.
    ImageHolder read(QString *complaint)
    {
        const bool all = readHeader(complaint) && makeImage(complaint) && readBlocks();
        endProgress(); // before any box
        if (!all)
            return nullptr;
        if (lostRows == img->height) {
            *complaint = text("This MCAI file is damaged: nothing of its picture is left.<br>Try "
                              "another copy of it.");
            return nullptr;
        }
        if (lostRows > 0)
            sayInBox(text("MCAI"),
                     text("This MCAI file is damaged: %1 of %2 rows of the picture are lost and "
                          "stay empty.<br>Try another copy of it.")
                         .arg(lostRows)
                         .arg(img->height));
        if (!record.mcaiOption)
            takeDescription(description, img.get());
        return std::exchange(img, nullptr);
    }

private:
    struct Block {
        uint32_t size, crc;
    };
    struct Job {
        int first, end;
        uint32_t crc;
        QByteArray packed;
        bool good;
    };

    bool readHeader(QString *complaint)
    {
        const QByteArray bytes = file.read(kMcaiStartBytes - kMcaiMagicBytes);
        HeaderBytes start(bytes);
        const uint32_t version = start.number(), size = start.number(), crc = start.number();
        if (start.whole() && version != kMcaiVersion) {
            *complaint = text("This MCAI file is of a version that this program does not know."
                              "<br>A newer version of the program can read it.");
            return false;
        }
        const QByteArray header = size <= file.size() ? file.read(size) : QByteArray();
        if (!start.whole() || header.size() != int64_t(size) || checksum(header) != crc ||
            !takeHeader(header)) {
            *complaint = text("This MCAI file is damaged and cannot be read.<br>Try another copy "
                              "of it.");
            return false;
        }
        return true;
    }
    bool takeHeader(const QByteArray &header)
    {
        HeaderBytes in(header);
        width = in.number();
        height = in.number();
        const bool masked = in.number() & kMcaiMaskFlag;
        if (!ValueTable::fromBitmap(in.section(), &tables.color) ||
            !ValueTable::fromBitmap(in.section(), &tables.alpha) ||
            (masked && !ValueTable::fromBitmap(in.section(), &tables.mask)))
            return false;
        description = in.section();
        if (!in.whole() || !sidesInRange(width, height))
            return false;
        blocks.resize(size_t(mcaiBlockCount(int(width), int(height))));
        for (Block &block : blocks) {
            block.size = in.number();
            block.crc = in.number();
        }
        return in.whole();
    }
    bool makeImage(QString *complaint)
    {
        const int64_t pixels = width * height;
        auto made = std::make_unique<image>();
        if (!fileCanHold(pixels, file.size(), kPixelsPerByte) || !memoryCanHold(pixels, 2) ||
            !made->allocateUnfilled(int(width), int(height), record.fullPath)) {
            *complaint = text("There is not enough memory for this picture.");
            return false;
        }
        made->saveBag = record;
        made->saveBag.isSet = true;
        img = std::move(made);
        return true;
    }
    /// False if the person cancelled.
    bool readBlocks()
    {
        const int count = int(blocks.size());
        const int atOnce = std::max(1, QThread::idealThreadCount()) * kBlocksPerThread;
        for (int first = 0; first < count; first += atOnce) {
            if (!tell(first))
                return false;
            readBlocks(first, std::min(first + atOnce, count));
        }
        return true;
    }
    void readBlocks(int first, int end)
    {
        const int rows = mcaiBlockRows(img->width);
        std::vector<Job> jobs;
        for (int i = first; i < end; ++i)
            jobs.push_back(
                {i * rows, std::min((i + 1) * rows, img->height), blocks[size_t(i)].crc,
                 file.read(std::min<int64_t>(blocks[size_t(i)].size, file.size() - file.pos())),
                 false});
        QtConcurrent::blockingMap(jobs, [this](Job &job) {
            job.good = checksum(job.packed) == job.crc &&
                       unpackRows(job.packed, tables, job.first, job.end, withMask(), img.get());
        });
        for (const Job &job : jobs)
            if (!job.good)
                clearRows(job.first, job.end);
    }
    void clearRows(int first, int end)
    {
        lostRows += end - first;
        for (uint16_t *plane : img->workPlanes())
            std::fill(plane + int64_t(first) * img->width, plane + int64_t(end) * img->width, 0);
    }
    bool withMask() const { return tables.masked() && !record.mcaiOption; }
    void endProgress()
    {
        if (told && workspace())
            workspace()->progress({}, 0, 0);
        told = false;
    }
    bool tell(int done)
    {
        Workspace *space = workspace();
        if (!space)
            return true;
        told = true;
        space->progress(text("loading image"), done, int64_t(blocks.size()));
        return !space->cancelRequested();
    }

    const FileRecord &record;
    QFile file;
    int64_t width = 0, height = 0;
    McaiTables tables;
    QByteArray description;
    std::vector<Block> blocks;
    ImageHolder img;
    int lostRows = 0;
    bool told = false; ///< of progress that has not ended
};
} // namespace

ImageHolder readMcai(const FileRecord &record, bool *cancelled)
{
    McaiReader reader(record);
    if (!reader.isOurs())
        return nullptr;
    QString complaint;
    ImageHolder img = reader.read(&complaint);
    if (!complaint.isEmpty())
        sayInBox(text("MCAI"), complaint);
    if (cancelled)
        *cancelled = !img && complaint.isEmpty();
    return img;
}
