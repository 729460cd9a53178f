// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/rows.h"
#include "formats/load.h"
#include "formats/rawdecode.h"
#include "formats/readers.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>

#include <algorithm>

namespace
{
constexpr int kNotAFile = -100009; // LibRaw's own code for a failure to read

void reportFailure(const char *call, int code)
{
    qDebug().nospace().noquote() << "FAILED: iProcessor." << call << " with " << code;
}

ImageHolder reportNoImage()
{
    qDebug().noquote() << "FAILED: Could not allocate image";
    return nullptr;
}

/// Text of an array that may be full to its last byte.
template <size_t size>
QString textOf(const char (&text)[size])
{
    return QString::fromUtf8(text, int(qstrnlen(text, size)));
}

double degreesOf(const float (&parts)[3])
{
    return double(parts[0]) + double(parts[1]) / 60 + double(parts[2]) / 3600;
}

void takeMetadata(const RawOutcome &raw, image &img)
{
    img.latitude = degreesOf(raw.latitude);
    img.longitude = degreesOf(raw.longitude);
    img.altitude = double(raw.altitude);
    img.shutter = double(raw.shutter);
    img.aperture = double(raw.aperture);
    img.focalLength = double(raw.focalLength);
    img.iso = double(raw.iso);
    img.cameraOrientation = std::clamp(raw.orientation, 1, 8);
    if (const QString description = textOf(raw.description); !description.isEmpty())
        img.annotation = description;
    if (const QString artist = textOf(raw.artist); !artist.isEmpty())
        img.author = artist;
    img.software = textOf(raw.software);
    if (img.software.isEmpty())
        img.software = QStringLiteral("LibRAW construct");
}

void copyPixels(const uint16_t (*pixels)[4], image &img)
{
    parallelRows(img.height, img.width * 4, [&](int first, int end) {
        const int64_t stop = int64_t(end) * img.width;
        for (int64_t i = int64_t(first) * img.width; i < stop; ++i) {
            img.red[i] = pixels[i][0];
            img.green[i] = pixels[i][1];
            img.blue[i] = pixels[i][2];
            img.alpha[i] = 65535;
        }
    });
}

/// Return codes do not tell of lost data: a file cut short decodes to black with code 0.
/// So the picture itself is looked at, and LibRaw's data error callback counts.
void warnOfLostData(const image &img, bool damaged)
{
    const auto flatAt = [&img](const uint16_t *plane) {
        return std::all_of(plane, plane + img.sampleCount(),
                           [&img](uint16_t sample) { return sample == img.red[0]; });
    };
    const bool flat = flatAt(img.red) && flatAt(img.green) && flatAt(img.blue);
    if (!flat && !damaged)
        return;
    sayInBox(QCoreApplication::translate("formats", "Camera RAW"),
             flat ? QCoreApplication::translate(
                        "formats", "This camera RAW file holds no picture: all samples are "
                                   "equal.<br>It may be damaged; try another copy of it.")
                  : QCoreApplication::translate(
                        "formats", "This camera RAW file is damaged: part of the picture is "
                                   "missing.<br>Try another copy of it."));
}

/// True if the file was decoded; what failed goes to the debug channel alone.
bool decoded(const RawOutcome &raw)
{
    if (raw.stage == RawOutcome::OpenFailed)
        reportFailure("open_file(file.toLocal8Bit().constData())", raw.code);
    else if (raw.stage == RawOutcome::UnpackFailed)
        reportFailure("unpack()", raw.code);
    else if (raw.stage != RawOutcome::Done)
        reportNoImage();
    return raw.stage == RawOutcome::Done;
}
} // namespace

ImageHolder readThroughLibRaw(const QString &path, const FileRecord &record)
{
    const QFileInfo info(path);
    // A pipe or a device would keep LibRaw reading for ever.
    if (info.exists() && !info.isFile()) {
        reportFailure("open_file(file.toLocal8Bit().constData())", kNotAFile);
        return nullptr;
    }
    const RawDecoding decoding(path.toLocal8Bit(), info.size());
    const RawOutcome &raw = decoding.outcome();
    if (!decoded(raw))
        return nullptr;
    auto img = std::make_unique<image>();
    if (!img->allocateUnfilled(raw.width, raw.height, path + QLatin1String(" via process_image()")))
        return reportNoImage();
    img->saveBag = record;
    copyPixels(decoding.pixels(), *img);
    takeMetadata(raw, *img);
    warnOfLostData(*img, raw.damaged != 0);
    return img;
}

image *loadThroughLibRaw(const FileRecord &record, const QString &name, bool show)
{
    const QString path = record.fullPath.isEmpty() ? name : record.fullPath;
    ImageHolder img = readThroughLibRaw(path, record);
    return img && show ? finishLoad(std::move(img), record, true) : img.release();
}
