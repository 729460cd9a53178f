// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/render_kernels.h"

#include "core/colour_inline.h"

#include <cstddef>
#include <cstring>

namespace
{
/// Gathering is scalar and mixing is not: samples go through small arrays in between.
constexpr int kChunk = 256;

struct Chunk {
    uint16_t red[kChunk], green[kChunk], blue[kChunk], alpha[kChunk];
};

/// Exactly value / 65535 for every sum of two products that weigh samples by alpha and
/// its complement.
inline uint32_t overWhite(uint32_t value)
{
    return (value + 1 + (value >> 16)) >> 16;
}

inline uint32_t mixedByte(uint32_t sample, uint32_t alpha, uint32_t backdrop)
{
    return overWhite(sample * alpha + backdrop * (65535U - alpha)) >> 8;
}

void gather(const RenderJob &job, int64_t base, const int32_t *columns, int count, Chunk *chunk)
{
    const uint16_t *red = job.red + base, *green = job.green + base, *blue = job.blue + base;
    const uint16_t *alpha = job.alpha + base;
    for (int i = 0; i < count; ++i) {
        const int32_t at = columns[i];
        chunk->red[i] = red[at];
        chunk->green[i] = green[at];
        chunk->blue[i] = blue[at];
        chunk->alpha[i] = alpha[at];
    }
}

void decodeYrb(Chunk *chunk, int count)
{
    for (int i = 0; i < count; ++i) {
        const Rgb rgb = inlined::yrbToRgb(
            {double(chunk->red[i]), double(chunk->green[i]), double(chunk->blue[i])});
        chunk->red[i] = uint16_t(rgb.red);
        chunk->green[i] = uint16_t(rgb.green);
        chunk->blue[i] = uint16_t(rgb.blue);
    }
}

void mix(const Chunk &chunk, const uint16_t *backdrop, int count, uint32_t *out)
{
    for (int i = 0; i < count; ++i) {
        const uint32_t a = chunk.alpha[i], grey = backdrop[i];
        out[i] = 0xFF000000U | mixedByte(chunk.red[i], a, grey) << 16 |
                 mixedByte(chunk.green[i], a, grey) << 8 | mixedByte(chunk.blue[i], a, grey);
    }
}

void fillPixels(uint32_t *out, int first, int end, uint32_t value)
{
    for (int x = first; x < end; ++x)
        out[x] = value;
}

/// Most pictures are opaque, and there the mix is no more than the high bytes.
bool opaque(const RenderJob &job, int64_t base, const int32_t *columns, int count)
{
    const uint16_t *alpha = job.alpha + base;
    uint32_t all = 65535U;
    for (int i = 0; i < count; ++i)
        all &= alpha[columns[i]];
    return all == 65535U;
}

void pack(const RenderJob &job, int64_t base, const int32_t *columns, int count, uint32_t *out)
{
    const uint16_t *red = job.red + base, *green = job.green + base, *blue = job.blue + base;
    for (int i = 0; i < count; ++i) {
        const int32_t at = columns[i];
        out[i] = 0xFF000000U | (red[at] & 0xFF00U) << 8 | (green[at] & 0xFF00U) |
                 uint32_t(blue[at]) >> 8;
    }
}

void renderRow(const RenderJob &job, int row, int phase, uint32_t *out)
{
    const int64_t base = int64_t(row) * job.imageWidth;
    const int first = job.firstColumn > job.left ? job.firstColumn : job.left;
    const int end = job.endColumn < job.right ? job.endColumn : job.right;
    fillPixels(out, job.left, job.right < first ? job.right : first, job.surround);
    fillPixels(out, job.left > end ? job.left : end, job.right, job.surround);
    Chunk chunk;
    for (int x = first; x < end; x += kChunk) {
        const int count = end - x < kChunk ? end - x : kChunk;
        if (!job.yrb && opaque(job, base, job.columns + x, count)) {
            pack(job, base, job.columns + x, count, out + x);
            continue;
        }
        gather(job, base, job.columns + x, count, &chunk);
        if (job.yrb)
            decodeYrb(&chunk, count);
        mix(chunk, job.backdrop[phase] + x, count, out + x);
    }
}
} // namespace

namespace KERNEL_NAMESPACE
{
void renderRows(const RenderJob &job, int first, int end)
{
    int lastRow = -1, lastPhase = 0;
    for (int y = first; y < end; ++y) {
        uint32_t *out = job.out + int64_t(y) * job.outWidth;
        const int row = job.rows[y], phase = ((y + job.rowPhase) / job.cell) & 1;
        if (row < 0)
            fillPixels(out, job.left, job.right, job.surround);
        else if (row == lastRow && phase == lastPhase) // zoomed in, rows repeat
            std::memcpy(out + job.left, out - job.outWidth + job.left,
                        size_t(job.right - job.left) * sizeof(uint32_t));
        else
            renderRow(job, row, phase, out);
        lastRow = row;
        lastPhase = phase;
    }
}
} // namespace KERNEL_NAMESPACE
