// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/image.h"

#include "core/memory.h"
#include "core/rows.h"

#include <bit>
#include <memory>

namespace
{
/// A hash set of numbers, made once for as many as may come. Zero marks a free place,
/// so numbers are kept plus one.
template <class Number>
class NumberSet
{
public:
    explicit NumberSet(size_t expected)
        : mask(std::bit_ceil(expected + expected / 4 + 1) - 1), places(mask + 1, "color count")
    {
    }
    bool usable() const { return bool(places); }
    int64_t size() const { return count; }
    void insert(uint64_t number)
    {
        const Number kept = Number(number + 1);
        size_t at = size_t((number * 0x9E3779B97F4A7C15U) >> 20) & mask;
        while (places[at] != 0 && places[at] != kept)
            at = (at + 1) & mask;
        count += places[at] == 0;
        places[at] = kept;
    }

private:
    size_t mask;
    int64_t count = 0;
    TrackedBuffer<Number> places;
};

template <class Number, class NumberAt>
int64_t countDistinct(int64_t samples, NumberAt numberAt)
{
    NumberSet<Number> seen{size_t(samples)};
    if (!seen.usable())
        return 0;
    uint64_t before = 0;
    for (int64_t i = 0; i < samples; ++i) {
        const uint64_t number = numberAt(i);
        if (i == 0 || number != before)
            seen.insert(number);
        before = number;
    }
    return seen.size();
}
} // namespace

int64_t image::colorCount24() const
{
    if (!valid())
        return 0;
    return countDistinct<uint32_t>(sampleCount(), [this](int64_t i) {
        return uint64_t(red[i] >> 8) << 16 | uint64_t(green[i] >> 8) << 8 | uint64_t(blue[i] >> 8);
    });
}

int64_t image::colorCount48() const
{
    if (!valid())
        return 0;
    return countDistinct<uint64_t>(sampleCount(), [this](int64_t i) {
        return uint64_t(red[i]) << 32 | uint64_t(green[i]) << 16 | blue[i];
    });
}

QImage image::toQImage() const
{
    if (!valid())
        return {};
    QImage picture(width, height, QImage::Format_ARGB32);
    if (picture.isNull())
        return {};
    uchar *bits = picture.bits(); // once, before the threads: it may detach
    const int64_t stride = picture.bytesPerLine();
    parallelRows(height, width * 4, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            QRgb *out = reinterpret_cast<QRgb *>(bits + y * stride);
            const int64_t row = int64_t(y) * width;
            for (int x = 0; x < width; ++x)
                out[x] = qRgba(red[row + x] >> 8, green[row + x] >> 8, blue[row + x] >> 8,
                               alpha[row + x] >> 8);
        }
    });
    return picture;
}

image *imgFromQImage(const QImage &source)
{
    // The untruncated size is tested: 65600 would wrap to 64 and the copy run past the planes.
    if (source.isNull() || source.width() > kMaxImageSide || source.height() > kMaxImageSide)
        return nullptr;
    const QImage picture = source.convertToFormat(QImage::Format_ARGB32);
    auto made = std::make_unique<image>();
    if (picture.isNull() || !made->allocateUnfilled(picture.width(), picture.height(),
                                                    QStringLiteral("imgFromQImage()")))
        return nullptr;
    const uchar *bits = picture.constBits();
    const int64_t stride = picture.bytesPerLine();
    const auto planes = made->colorPlanes();
    const int width = made->width;
    parallelRows(made->height, width * 4, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            const QRgb *in = reinterpret_cast<const QRgb *>(bits + y * stride);
            const int64_t row = int64_t(y) * width;
            for (int x = 0; x < width; ++x) {
                planes[0][row + x] = uint16_t(qRed(in[x]) * 257);
                planes[1][row + x] = uint16_t(qGreen(in[x]) * 257);
                planes[2][row + x] = uint16_t(qBlue(in[x]) * 257);
                planes[3][row + x] = uint16_t(qAlpha(in[x]) * 257);
            }
        }
    });
    return made.release();
}
