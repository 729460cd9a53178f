// SPDX-License-Identifier: GPL-3.0-or-later
#include "yardstick.h"

#include "core/rows.h"
#include "core/workspace.h"
#include "formats/load.h"
#include "formats/save.h"

#include <QTemporaryDir>

#include <algorithm>

namespace
{
/// Where the files go: a folder that is named by KESTRANE_BENCH_FOLDER is kept, with the
/// picture in raw samples beside, for programs that it is compared with.
QString folder()
{
    static const QTemporaryDir temporary;
    const QString given = qEnvironmentVariable("KESTRANE_BENCH_FOLDER");
    return given.isEmpty() ? temporary.path() : given;
}

/// Smooth shapes with a little grain in 16 bits, like a developed photograph.
std::shared_ptr<image> photograph()
{
    const std::shared_ptr<image> img = benchImage(0);
    parallelRows(img->height, img->width, [&](int first, int end) {
        for (int y = first; y < end; ++y)
            for (int x = 0; x < img->width; ++x) {
                const int64_t i = int64_t(y) * img->width + x;
                uint32_t grain = uint32_t(i) * 2654435761U;
                grain = (grain ^ (grain >> 15)) * 2246822519U;
                img->red[i] = uint16_t(x * 9 + (grain >> 24));
                img->green[i] = uint16_t(y * 13 + (grain >> 16 & 255));
                img->blue[i] = uint16_t((x + y) * 5 + (grain >> 8 & 255));
            }
    });
    return img;
}

FileRecord nativeFile()
{
    return FileRecord::fromPath(folder() + QStringLiteral("/picture.ato"));
}

image *openNative()
{
    return loadImageFile(nativeFile().fullPath, nativeFile().fullPath, nullptr, false);
}

bool savesWhatItOpens(const std::shared_ptr<image> &img)
{
    if (!saveImageFile(nativeFile(), img.get(), true))
        return false;
    const std::unique_ptr<image> back(openNative());
    if (!back || back->sampleCount() != img->sampleCount())
        return false;
    for (size_t p = 0; p < 4; ++p)
        if (!std::equal(img->colorPlanes()[p], img->colorPlanes()[p] + img->sampleCount(),
                        back->colorPlanes()[p]))
            return false;
    return qEnvironmentVariableIsEmpty("KESTRANE_BENCH_FOLDER") ||
           writeRgba64(img.get(), folder() + QStringLiteral("/picture.rgba"));
}
} // namespace

void registerNativeBenchmarks()
{
    registerRatio("native/save a 24 Mpx picture", 200, [] {
        const auto img = photograph();
        return BenchCase{[=] { saveImageFile(nativeFile(), img.get(), true); }, nullptr,
                         [=] { return savesWhatItOpens(img); }};
    });
    registerRatio("native/open a 24 Mpx picture", 20, [] {
        const auto img = photograph();
        return BenchCase{[] { delete openNative(); }, nullptr,
                         [=] { return savesWhatItOpens(img); }};
    });
}
