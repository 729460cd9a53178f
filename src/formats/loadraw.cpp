// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/rows.h"
#include "formats/bounds.h"
#include "formats/load.h"
#include "formats/readers.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>

#include <libraw/libraw.h>

#include <algorithm>

namespace
{
constexpr int kOpenLimit = 0xFA00000;
constexpr unsigned kMemoryLimitMb = 2048;
/// Sensor samples that a byte of file can stand for: the best predictor leaves a bit.
constexpr int kSamplesPerByte = 64;
/// Raw samples, the picture of four channels and a copy of it while it is developed.
constexpr int kReaderBytes = 2 + 8 + 8;

void reportFailure(const char *call, int code)
{
    qDebug().nospace().noquote() << "FAILED: iProcessor." << call << " with " << code;
}

ImageHolder reportNoImage()
{
    qDebug().noquote() << "FAILED: Could not allocate image";
    return nullptr;
}

void noteDataError(void *seen, const char *, int)
{
    *static_cast<bool *>(seen) = true;
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

void takeMetadata(const libraw_data_t &data, image &img)
{
    const libraw_gps_info_t &gps = data.other.parsed_gps;
    img.latitude = degreesOf(gps.latitude);
    img.longitude = degreesOf(gps.longitude);
    img.altitude = double(gps.altitude);
    img.shutter = double(data.other.shutter);
    img.aperture = double(data.other.aperture);
    img.focalLength = double(data.other.focal_len);
    img.iso = double(data.other.iso_speed);
    if (const QString description = textOf(data.other.desc); !description.isEmpty())
        img.annotation = description;
    if (const QString artist = textOf(data.other.artist); !artist.isEmpty())
        img.author = artist;
    img.software = textOf(data.idata.software);
    if (img.software.isEmpty())
        img.software = QStringLiteral("LibRAW construct");
}

void copyPixels(const ushort (*pixels)[4], image &img)
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

bool sizeAllowed(const libraw_image_sizes_t &sizes, int64_t fileBytes)
{
    const int64_t pixels =
        int64_t(std::max(sizes.raw_width, sizes.width)) * std::max(sizes.raw_height, sizes.height);
    return sidesInRange(sizes.raw_width, sizes.raw_height) &&
           sidesInRange(sizes.width, sizes.height) &&
           fileCanHold(pixels, fileBytes, kSamplesPerByte) && memoryCanHold(pixels, kReaderBytes);
}

/// Return codes do not tell of lost data: a file cut short decodes to black with code 0.
/// So the picture itself is looked at, and LibRaw's data error callback counts.
void warnOfLostData(const image &img, bool damaged)
{
    const auto planes = img.colorPlanes();
    const bool flat = std::all_of(planes.begin(), planes.end(), [&img](const uint16_t *plane) {
        return std::all_of(plane, plane + img.sampleCount(),
                           [plane](uint16_t sample) { return sample == plane[0]; });
    });
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

ImageHolder develop(LibRaw &processor, const QString &path, const FileRecord &record)
{
    const QFileInfo info(path);
    // A pipe or a device would keep LibRaw reading for ever.
    int code = info.isFile() || !info.exists() ? LIBRAW_SUCCESS : LIBRAW_IO_ERROR;
    if (code == LIBRAW_SUCCESS)
        code = processor.open_file(path.toLocal8Bit().constData(), kOpenLimit);
    if (code != LIBRAW_SUCCESS) {
        reportFailure("open_file(file.toLocal8Bit().constData())", code);
        return nullptr;
    }
    if (!sizeAllowed(processor.imgdata.sizes, info.size()))
        return reportNoImage();
    code = processor.unpack();
    if (code != LIBRAW_SUCCESS) {
        reportFailure("unpack()", code);
        return nullptr;
    }
    processor.raw2image();
    processor.imgdata.params.use_camera_wb = 1;
    processor.subtract_black();
    processor.dcraw_process();

    const libraw_data_t &data = processor.imgdata;
    auto img = std::make_unique<image>();
    if (!data.image || !sidesInRange(data.sizes.iwidth, data.sizes.iheight) ||
        !img->allocateUnfilled(data.sizes.iwidth, data.sizes.iheight,
                               path + QLatin1String(" via process_image()")))
        return reportNoImage();
    img->saveBag = record;
    copyPixels(data.image, *img);
    takeMetadata(data, *img);
    return img;
}
} // namespace

ImageHolder readThroughLibRaw(const QString &path, const FileRecord &record)
{
    ImageHolder img;
    bool damaged = false;
    try {
        // On the heap: the processor is far larger than a thread's stack likes.
        const auto processor = std::make_unique<LibRaw>(LIBRAW_OPTIONS_NONE);
        processor->set_dataerror_handler(noteDataError, &damaged);
        processor->imgdata.params.max_raw_memory_mb = kMemoryLimitMb;
        img = develop(*processor, path, record);
        processor->recycle();
    } catch (...) {
        return reportNoImage();
    }
    if (img)
        warnOfLostData(*img, damaged);
    return img;
}

image *loadThroughLibRaw(const FileRecord &record, const QString &name, bool show)
{
    const QString path = record.fullPath.isEmpty() ? name : record.fullPath;
    ImageHolder img = readThroughLibRaw(path, record);
    return img && show ? finishLoad(std::move(img), record, true) : img.release();
}
