// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/recoverysnapshot.h"

#include "core/image.h"
#include "core/rows.h"
#include "formats/taggedfields.h"

#include <QCryptographicHash>
#include <QFile>
#include <QThread>

#include <algorithm>
#include <limits>

#include <libdeflate.h>

namespace
{
constexpr int64_t kPlaneBytes = 2; ///< a pixel
constexpr int64_t kColorBytes = 8; ///< a pixel of all four planes
/// What has to stay free for the work that goes on.
constexpr int64_t kSpareBytes = int64_t(256) << 20;

const TaggedPart &partOf(const image &picture)
{
    return picture.kind == 0 ? atomicPart() : picture.kind == 1 ? masterPart() : layerPart();
}

template <class Owner>
void hashFields(const std::vector<FieldRule<Owner>> &rules, const Owner &owner,
                QCryptographicHash *hash)
{
    for (const FieldRule<Owner> &rule : rules) {
        const QByteArray data = encodeField(memberValue(owner, rule), rule.zeroExtended);
        hash->addData(encodeInt(uint64_t(data.size())));
        hash->addData(data);
    }
}

void hashNote(const TaggedPart &part, const Notation &note, QCryptographicHash *hash)
{
    hash->addData(note.text.toUtf8());
    hashFields(part.note, note, hash);
    for (const QPoint &point : note.points)
        hash->addData(encodeInt(uint32_t(point.x())) + encodeInt(uint32_t(point.y())));
}

void hashPicture(const image &picture, QCryptographicHash *hash)
{
    const TaggedPart &part = partOf(picture);
    hash->addData(encodeInt(picture.kind));
    hashFields(part.head, picture, hash);
    hashFields(part.settings, picture, hash);
    for (const Notation &note : picture.notations)
        hashNote(part, note, hash);
    if (part.planes.empty())
        return;
    // A checksum of each plane: it always shows a change of one sample, and runs as fast as
    // memory is read.
    for (const uint16_t *plane : picture.colorPlanes())
        hash->addData(
            encodeInt(libdeflate_crc32(0, plane, size_t(picture.sampleCount() * kPlaneBytes))));
}

/// Bytes that can be had without swapping; all there could be where the system does not tell.
int64_t availableMemory()
{
    QFile file(QStringLiteral("/proc/meminfo"));
    if (file.open(QIODevice::ReadOnly))
        for (const QByteArray &line : file.readAll().split('\n'))
            if (line.startsWith("MemAvailable:"))
                return line.simplified().split(' ').value(1).toLongLong() * 1024;
    return std::numeric_limits<int64_t>::max();
}

int64_t bytesToCopy(const image &picture)
{
    int64_t bytes = picture.kind == 1 ? 0 : picture.sampleCount() * kColorBytes;
    for (const image *layer : picture.layers)
        bytes += layer->sampleCount() * kColorBytes;
    return bytes;
}

std::unique_ptr<image> copyOf(const image &from)
{
    auto copy = std::make_unique<image>();
    copy->lightweight = true;
    if (!from.valid() || !copy->allocateUnfilled(from.width, from.height,
                                                 QStringLiteral("background save of ") + from.name))
        return nullptr;
    const TaggedPart &part = partOf(from);
    for (const auto &rules : {part.head, part.settings})
        for (const FieldRule<image> &rule : rules)
            setMember(copy.get(), rule, memberValue(from, rule));
    copy->kind = from.kind;
    copy->notations = from.notations;
    if (part.planes.empty())
        return copy;
    const auto source = from.colorPlanes();
    const auto target = copy->colorPlanes();
    const int64_t width = from.width;
    parallelRows(from.height, from.width * int(source.size()), [&](int first, int end) {
        for (size_t p = 0; p < source.size(); ++p)
            std::copy(source[p] + first * width, source[p] + end * width,
                      target[p] + first * width);
    });
    return copy;
}
} // namespace

QByteArray fingerprintOf(const image &picture)
{
    QCryptographicHash hash(QCryptographicHash::Md5);
    hashPicture(picture, &hash);
    for (const image *layer : picture.layers)
        hashPicture(*layer, &hash);
    return hash.result();
}

std::unique_ptr<RecoverySnapshot> RecoverySnapshot::of(const image &picture)
{
    // The packer holds a few packed planes beside the copy.
    const int64_t packed = picture.sampleCount() * kPlaneBytes * (QThread::idealThreadCount() + 2);
    if (bytesToCopy(picture) + packed + kSpareBytes > availableMemory())
        return nullptr;
    std::unique_ptr<RecoverySnapshot> snapshot(new RecoverySnapshot);
    snapshot->top = copyOf(picture).release();
    for (const image *layer : picture.layers) {
        std::unique_ptr<image> copy = snapshot->top ? copyOf(*layer) : nullptr;
        if (!copy)
            return nullptr;
        copy->master = snapshot->top;
        snapshot->top->layers.append(copy.release());
    }
    return snapshot->top ? std::move(snapshot) : nullptr;
}

RecoverySnapshot::~RecoverySnapshot()
{
    destroyTree(&top);
}
