// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/pipeline/samplestatistics.h"

#include "core/image.h"
#include "core/rows.h"

#include <algorithm>
#include <mutex>

namespace
{
/// Which samples count.
struct SampleChoice {
    bool byMask = false;
    uint16_t maskAbove = 0;
    bool unseenToo = false; ///< those of alpha 0
};

/// Samples of one row; a null mask counts all of them. Without branches, for vectors.
void sumRow(const image &img, int64_t start, int count, const SampleChoice &choice,
            SampleSums *sums)
{
    const uint16_t *mask = choice.byMask ? img.gmask + start : nullptr;
    const uint16_t maskAbove = choice.maskAbove, alphaAtLeast = choice.unseenToo ? 0 : 1;
    const uint16_t *const planes[3] = {img.red + start, img.green + start, img.blue + start};
    const uint16_t *alpha = img.alpha + start;
    int32_t counted = 0;
    for (int i = 0; i < count; ++i)
        counted += (!mask || mask[i] > maskAbove) && alpha[i] >= alphaAtLeast;
    if (counted == 0)
        return;
    sums->count += counted;
    for (size_t channel = 0; channel < 3; ++channel) {
        const uint16_t *plane = planes[channel];
        int32_t least = 65535, most = 0;
        uint32_t sum = 0; // a row has at most 32767 samples
        for (int i = 0; i < count; ++i) {
            const int32_t in = -int32_t((!mask || mask[i] > maskAbove) && alpha[i] >= alphaAtLeast);
            const int32_t sample = plane[i];
            least = std::min(least, sample | (~in & 65535));
            most = std::max(most, sample & in);
            sum += uint32_t(sample & in);
        }
        sums->least[channel] = std::min(sums->least[channel], least);
        sums->most[channel] = std::max(sums->most[channel], most);
        sums->sum[channel] += sum;
    }
}

SampleSums sumRows(const image &img, const QRect &samples, const SampleChoice &choice)
{
    SampleSums all;
    const QRect inside = samples & QRect(0, 0, img.width, img.height);
    if (inside.isEmpty() || !img.red || !img.green || !img.blue || !img.alpha || !img.gmask)
        return all;
    std::mutex joining;
    parallelRows(inside.height(), inside.width(), [&](int first, int end) {
        SampleSums band;
        for (int y = inside.top() + first; y < inside.top() + end; ++y) {
            const int64_t start = int64_t(y) * img.width + inside.left();
            sumRow(img, start, inside.width(), choice, &band);
        }
        const std::lock_guard<std::mutex> lock(joining);
        all.join(band);
    });
    return all;
}
} // namespace

void SampleSums::join(const SampleSums &other)
{
    count += other.count;
    for (size_t channel = 0; channel < 3; ++channel) {
        least[channel] = std::min(least[channel], other.least[channel]);
        most[channel] = std::max(most[channel], other.most[channel]);
        sum[channel] += other.sum[channel];
    }
}

bool SampleSums::write(int32_t out[9]) const
{
    if (count == 0)
        return false;
    for (size_t channel = 0; channel < 3; ++channel) {
        out[channel] = least[channel];
        out[3 + channel] = most[channel];
        out[6 + channel] = int32_t(sum[channel] / count);
    }
    return true;
}

SampleSums sumSelected(const image &img, uint16_t maskAbove, bool unseenToo)
{
    return sumRows(img, QRect(0, 0, img.width, img.height), {true, maskAbove, unseenToo});
}

SampleSums sumRectangle(const image &img, const QRect &samples)
{
    return sumRows(img, samples, {});
}

bool gatherStatistics(const image &img, uint16_t maskAbove, int32_t out[9])
{
    return sumSelected(img, maskAbove).write(out);
}

bool gatherStatistics(const image &img, const QRect &samples, int32_t out[9])
{
    return sumRectangle(img, samples).write(out);
}
