// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnailer/thumbnail.h"

#include "core/image.h"
#include "core/workspace.h"
#include "formats/load.h"
#include "formats/writers.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QSaveFile>
#include <QSize>
#include <QUrl>

#include <libraw/libraw.h>

#include <algorithm>
#include <memory>

namespace
{
constexpr unsigned kMostEmbeddedBytes = 1 << 27;

/// Keeps the last thing that a reader said: the reason, if it gave no picture.
class QuietWorkspace : public Workspace
{
public:
    void statusText(const QString &text) override { said = text; }
    void messageBox(const QString &, const QString &text) override { said = text; }

    QString said;
};

QString say(const char *text)
{
    return QCoreApplication::translate("thumbnailer", text);
}

bool isCameraRaw(const QString &input)
{
    const QStringList &raw = rawExtensions();
    return std::any_of(raw.begin(), raw.end(), [&input](const QString &extension) {
        return input.endsWith(extension, Qt::CaseInsensitive);
    });
}

/// The picture that the camera left in its RAW file for this purpose: there at once, and as
/// bright as the camera would show it. Null if there is none. `original`: the RAW's own size.
QImage embeddedPicture(const QString &input, QSize *original)
{
    LibRaw raw;
    int failure = 0;
    if (raw.open_file(QFile::encodeName(input).constData()) != LIBRAW_SUCCESS ||
        raw.unpack_thumb() != LIBRAW_SUCCESS)
        return {};
    const std::unique_ptr<libraw_processed_image_t, void (*)(libraw_processed_image_t *)> thumb(
        raw.dcraw_make_mem_thumb(&failure), LibRaw::dcraw_clear_mem);
    if (!thumb || failure != LIBRAW_SUCCESS || thumb->type != LIBRAW_IMAGE_JPEG)
        return {};
    *original = QSize(raw.imgdata.sizes.iwidth, raw.imgdata.sizes.iheight);
    const int bytes = int(std::min<unsigned>(thumb->data_size, kMostEmbeddedBytes));
    return QImage::fromData(thumb->data, bytes, "JPEG");
}

/// A picture of the high bytes, to be gone before the scaled one is made. Null with a reason.
QImage readPicture(const QString &input, QSize *original, QString *error)
{
    const QImage embedded = isCameraRaw(input) ? embeddedPicture(input, original) : QImage();
    if (!embedded.isNull())
        return embedded;
    QuietWorkspace space;
    image *img = loadImageFile(input, {}, nullptr, false);
    if (!img) {
        *error = space.said.isEmpty() ? say("The picture cannot be read.") : space.said;
        return {};
    }
    QImage picture = img->toQImage();
    destroyTree(&img);
    if (picture.isNull())
        *error = say("There is not enough memory.");
    *original = picture.size();
    return picture;
}

/// Smooth scaling weighs colours by alpha, so that what hides in transparent places does
/// not tint the rims.
QImage scaledDown(const QImage &picture, int side)
{
    if (std::max(picture.width(), picture.height()) <= side)
        return picture;
    const QSize size = picture.size().scaled(side, side, Qt::KeepAspectRatio);
    return picture.scaled(size.expandedTo({1, 1}), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

void describe(const QFileInfo &file, const QDateTime &modified, const QSize &original,
              QImage *thumbnail)
{
    const auto key = [thumbnail](const char *name, const QString &text) {
        thumbnail->setText(QString::fromLatin1(name), text);
    };
    const QUrl url = QUrl::fromLocalFile(file.absoluteFilePath());
    key("Thumb::URI", QString::fromLatin1(url.toEncoded()));
    key("Thumb::MTime", QString::number(modified.toSecsSinceEpoch()));
    key("Thumb::Size", QString::number(file.size()));
    key("Thumb::Image::Width", QString::number(original.width()));
    key("Thumb::Image::Height", QString::number(original.height()));
    key("Software", QStringLiteral("Kestrane"));
}

bool writePng(const QImage &picture, const QString &output, QString *error)
{
    QSaveFile file(output);
    QImageWriter writer(&file, "png");
    if (file.open(QIODevice::WriteOnly) && writer.write(picture) && commitWhole(file))
        return true;
    *error = file.error() == QFileDevice::NoError ? writer.errorString() : file.errorString();
    return false;
}
} // namespace

bool writeThumbnail(const QString &input, const QString &output, int side, QString *error)
{
    const QFileInfo file(input);
    if (!file.isFile() || !file.isReadable()) {
        *error = say("There is no such file, or it may not be read.");
        return false;
    }
    // Asked before reading: the time that is written must not be newer than the content.
    const QDateTime modified = file.lastModified();
    QSize original;
    const QImage picture = readPicture(input, &original, error);
    if (picture.isNull())
        return false;
    QImage thumbnail = scaledDown(picture, side);
    if (thumbnail.isNull()) {
        *error = say("There is not enough memory.");
        return false;
    }
    describe(file, modified, original, &thumbnail);
    return writePng(thumbnail, output, error);
}
