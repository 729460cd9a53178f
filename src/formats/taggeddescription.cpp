// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/taggeddescription.h"

#include "core/image.h"
#include "formats/exif.h"
#include "formats/taggedfields.h"
#include "formats/taggedvalues.h"

#include <QBuffer>

#include <algorithm>

namespace
{
/// Not in ".ato" files, whose fields are fixed.
const QByteArray kExifTag("ATO_EXIF");
} // namespace

void writeNotes(const TaggedPart &part, const image &img, FieldWriter *out)
{
    for (const Notation &note : img.notations) {
        out->field(part.noteText, note.text.toUtf8());
        writeRules(part.note, note, out);
        for (const QPoint &point : note.points) {
            out->field(part.pointX, encodeField(FieldValue(int32_t(point.x())), true));
            out->field(part.pointY, encodeField(FieldValue(int32_t(point.y())), true));
        }
        out->mark(part.noteMark);
    }
}

QByteArray describe(const image &img)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    FieldWriter out(&buffer);
    const TaggedPart &part = atomicPart();
    writeRules(part.head, img, &out);
    writeRules(part.settings, img, &out);
    writeNotes(part, img, &out);
    if (!img.tagBlock.isEmpty())
        out.field(kExifTag, img.tagBlock);
    return buffer.data();
}

void takeDescription(const QByteArray &fields, image *img)
{
    QBuffer buffer;
    buffer.setData(fields);
    buffer.open(QIODevice::ReadOnly);
    FieldReader in(&buffer);
    const TaggedPart &part = atomicPart();
    FieldValues<image> head(part.head), settings(part.settings);
    NoteReader notes(part);
    while (in.next())
        if (in.tag() == kExifTag)
            img->tagBlock = in.data();
        else if (!head.take(in) && !settings.take(in))
            notes.take(in, img);
    head.copyTo(img);
    settings.copyTo(img);
    img->opacity = std::clamp(img->opacity, 0.0, 1.0);
    img->tagLines = exifLines(img->tagBlock);
}
