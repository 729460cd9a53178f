// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"

#include "core/memory.h"
#include "core/rows.h"
#include "core/undo.h"
#include "core/workspace.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>

namespace
{
constexpr uint16_t kFreshGrey = 36863;
constexpr uint16_t kOpaque = 65535;
constexpr int kDefaultUndos = 10;
constexpr int kDefaultDpi = 300;
} // namespace

image::image() : undoLevels(kDefaultUndos), scaleMemory(1.0F), xDpi(kDefaultDpi), yDpi(kDefaultDpi)
{
    if (const Workspace *space = workspace()) {
        undoLevels = space->maxUndos;
        scaleMemory = float(space->scaleMemory);
        xDpi = space->xDpi;
        yDpi = space->yDpi;
        annotation = space->mainAnnotation;
        author = space->mainAuthor;
        copyright = space->mainCopyright;
    }
    creationTime = timeStamp();
    modificationTime = creationTime;
}

image::~image()
{
    release();
}

bool image::allocatePlane(uint16_t **plane, const char *label, int64_t samples)
{
    const QByteArray full = label + name.toUtf8();
    *plane = static_cast<uint16_t *>(ucalloc(size_t(samples), sizeof(uint16_t), full.constData()));
    return *plane != nullptr;
}

bool image::allocateUnfilled(int newWidth, int newHeight, const QString &newName)
{
    releasePlanes();
    width = int16_t(newWidth);
    height = int16_t(newHeight);
    const bool possible = width > 0 && height > 0;
    const int64_t samples = sampleCount() + int64_t(2) * width;
    name = newName; // the planes' labels take the name as given, even an empty one
    const bool made = possible && allocatePlane(&red, "red channel: ", samples) &&
                      allocatePlane(&green, "green channel: ", samples) &&
                      allocatePlane(&blue, "blue channel: ", samples) &&
                      allocatePlane(&alpha, "alpha channel: ", samples) &&
                      allocatePlane(&gmask, "gmask channel: ", samples) &&
                      (lightweight || (allocatePlane(&mask2, "mask 2 channel: ", samples) &&
                                       allocatePlane(&mask3, "mask 3 channel: ", samples)));
    if (!made) {
        releasePlanes();
        width = height = 0;
        return false;
    }
    validMark = kImageMark;
    if (name.isEmpty())
        name = QStringLiteral("New Image %1").arg(serial);
    if (lightweight)
        return true;
    shutter = aperture = focalLength = iso = 1.0;
    rotation = xFraction = yFraction = 0;
    imageMode = 0;
    xCenter = width / 2;
    yCenter = height / 2;
    return true;
}

bool image::allocate(int newWidth, int newHeight, const QString &newName)
{
    if (!allocateUnfilled(newWidth, newHeight, newName))
        return false;
    if (!lightweight)
        fill(kFreshGrey, kFreshGrey, kFreshGrey, kOpaque);
    return true;
}

void image::releasePlanes()
{
    validMark = 0;
    if (Workspace *space = workspace())
        space->forgetImage(this);
    for (uint16_t **plane : {&red, &green, &blue, &alpha, &gmask, &mask2, &mask3})
        upfree(plane);
    maskBackupValid = false;
}

void image::release()
{
    notations.clear();
    clearRedoList(this);
    clearUndoList(this);
    releasePlanes();
}

void image::fill(uint16_t r, uint16_t g, uint16_t b, uint16_t a)
{
    if (!valid())
        return;
    const std::array<uint16_t, 4> values = {r, g, b, a};
    const auto planes = colorPlanes();
    parallelRows(height, width * 4, [&](int first, int end) {
        for (size_t p = 0; p < planes.size(); ++p)
            std::fill(planes[p] + int64_t(first) * width, planes[p] + int64_t(end) * width,
                      values[p]);
    });
}

void image::clearToTransparentWhite()
{
    fill(65535, 65535, 65535, 0);
    changed = true;
}

void image::copyWorkPlanes(const image &source)
{
    if (!valid() || !source.valid() || sampleCount() != source.sampleCount())
        return;
    const auto from = source.workPlanes();
    const auto to = workPlanes();
    parallelRows(height, width * int(to.size()), [&](int first, int end) {
        for (size_t p = 0; p < to.size(); ++p)
            std::copy(from[p] + int64_t(first) * width, from[p] + int64_t(end) * width,
                      to[p] + int64_t(first) * width);
    });
}

double image::dpiAspect() const
{
    return xDpi == 0 || yDpi == 0 ? 1.0 : double(xDpi) / double(yDpi);
}

void image::copyMetadata(const image &source)
{
    annotation = source.annotation;
    author = source.author;
    copyright = source.copyright;
    software = source.software;
    latitude = source.latitude;
    longitude = source.longitude;
    altitude = source.altitude;
    xDpi = source.xDpi;
    yDpi = source.yDpi;
}

void image::stampModification()
{
    modificationTime = timeStamp();
}

QString timeStamp()
{
    return QLocale::c().toString(QDateTime::currentDateTimeUtc(),
                                 QStringLiteral("yyyyMMdd:hhmmss")) +
           QStringLiteral(" UTC");
}
