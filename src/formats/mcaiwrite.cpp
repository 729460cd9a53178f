// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"
#include "core/workspace.h"
#include "formats/mcai.h"
#include "formats/mcaiblock.h"
#include "formats/taggeddescription.h"
#include "formats/writers.h"

#include <QCoreApplication>
#include <QSaveFile>
#include <QThread>
#include <QtConcurrentMap>
#include <QtEndian>

#include <algorithm>
#include <memory>
#include <vector>

#include <libdeflate.h>

namespace
{
constexpr int kLevel = 12;
/// Blocks that are packed at a time: a person who cancels waits for these.
constexpr int kBlocksPerThread = 2;

QString text(const char *source)
{
    return QCoreApplication::translate("formats", source);
}

void putNumber(uint32_t value, QByteArray *to)
{
    char bytes[4];
    qToBigEndian(value, bytes);
    to->append(bytes, 4);
}

uint32_t checksum(const QByteArray &bytes)
{
    return libdeflate_crc32(0, bytes.constData(), size_t(bytes.size()));
}

/// A section: its length, the length packed, and the deflate data. False if memory is short.
bool putSection(const QByteArray &bytes, QByteArray *to)
{
    const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor *)> packer(
        libdeflate_alloc_compressor(kLevel), libdeflate_free_compressor);
    if (!packer)
        return false;
    QByteArray packed(int(libdeflate_deflate_compress_bound(packer.get(), size_t(bytes.size()))),
                      Qt::Uninitialized);
    packed.resize(
        int(libdeflate_deflate_compress(packer.get(), bytes.constData(), size_t(bytes.size()),
                                        packed.data(), size_t(packed.size()))));
    putNumber(uint32_t(bytes.size()), to);
    putNumber(uint32_t(packed.size()), to);
    to->append(packed);
    return true;
}

class McaiWriter
{
public:
    McaiWriter(const image &picture, QSaveFile *target)
        : img(picture), file(target), tables(McaiTables::of(picture)),
          blocks(size_t(mcaiBlockCount(picture.width, picture.height)))
    {
    }
    ~McaiWriter()
    {
        if (workspace())
            workspace()->progress({}, 0, 0);
    }
    McaiWriter(const McaiWriter &) = delete;
    McaiWriter &operator=(const McaiWriter &) = delete;

    /// The header ends with what is known only when the blocks are there: its room is left first.
    bool write(QString *error)
    {
        if (!describePicture())
            reason = text("There is not enough memory.");
        else if (putStart() && putBlocks() && file->seek(0) && putStart() && commitWhole(*file))
            return true;
        *error = reason.isEmpty() ? file->errorString() : reason;
        return false;
    }

private:
    struct Block {
        uint32_t size = 0, crc = 0;
    };
    struct Job {
        int first, end;
        QByteArray packed;
    };

    /// Makes the part of the header that does not depend on the blocks.
    bool describePicture()
    {
        putNumber(uint32_t(img.width), &description);
        putNumber(uint32_t(img.height), &description);
        putNumber(tables.masked() ? kMcaiMaskFlag : 0, &description);
        return putSection(tables.color.bitmap(), &description) &&
               putSection(tables.alpha.bitmap(), &description) &&
               (!tables.masked() || putSection(tables.mask.bitmap(), &description)) &&
               putSection(describe(img), &description);
    }
    bool putStart()
    {
        QByteArray header = description;
        for (const Block &block : blocks) {
            putNumber(block.size, &header);
            putNumber(block.crc, &header);
        }
        QByteArray start(kMcaiMagic, kMcaiMagicBytes);
        putNumber(kMcaiVersion, &start);
        putNumber(uint32_t(header.size()), &start);
        putNumber(checksum(header), &start);
        return put(start) && put(header);
    }
    bool put(const QByteArray &bytes) { return file->write(bytes) == bytes.size(); }

    bool putBlocks()
    {
        const int count = int(blocks.size());
        const int atOnce = std::max(1, QThread::idealThreadCount()) * kBlocksPerThread;
        for (int first = 0; first < count; first += atOnce)
            if (!tell(first) || !putBlocks(first, std::min(first + atOnce, count)))
                return false;
        return true;
    }
    bool putBlocks(int first, int end)
    {
        const int rows = mcaiBlockRows(img.width);
        std::vector<Job> jobs;
        for (int i = first; i < end; ++i)
            jobs.push_back({i * rows, std::min((i + 1) * rows, img.height), {}});
        QtConcurrent::blockingMap(
            jobs, [this](Job &job) { job.packed = packRows(img, tables, job.first, job.end); });
        for (const Job &job : jobs) {
            if (job.packed.isNull()) {
                reason = text("There is not enough memory.");
                return false;
            }
            if (!put(job.packed))
                return false;
            blocks[size_t(first++)] = {uint32_t(job.packed.size()), checksum(job.packed)};
        }
        return true;
    }
    /// False once the person cancelled.
    bool tell(int done)
    {
        Workspace *space = workspace();
        if (!space)
            return true;
        space->progress(text("saving image"), done, int64_t(blocks.size()));
        if (space->cancelRequested())
            reason = QLatin1String(kSaveCancelled);
        return reason.isEmpty();
    }

    const image &img;
    QSaveFile *file;
    const McaiTables tables;
    QByteArray description;
    std::vector<Block> blocks;
    QString reason;
};
} // namespace

bool writeMcai(const image *img, const QString &path, QString *error)
{
    if (!img || !img->valid() || path.isEmpty()) {
        *error = QStringLiteral("no image or no name");
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = file.errorString();
        return false;
    }
    return McaiWriter(*img, &file).write(error);
}
