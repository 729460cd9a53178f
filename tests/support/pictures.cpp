// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/pictures.h"

#include <algorithm>
#include <random>

ImagePtr randomImage(int width, int height, uint32_t seed)
{
    auto img = std::make_unique<image>();
    if (!img->allocate(width, height, QStringLiteral("random")))
        return nullptr;
    std::mt19937 generator(seed);
    const uint16_t corners[] = {0, 1, 32767, 32768, 65535};
    auto sample = [&]() {
        const uint32_t r = generator();
        return r % 4 == 0 ? corners[(r >> 8) % 5] : uint16_t(r >> 16);
    };
    for (int64_t i = 0; i < img->sampleCount(); ++i) {
        for (uint16_t *plane : img->workPlanes())
            plane[i] = sample();
        if (generator() % 8 == 0)
            img->green[i] = img->blue[i] = img->red[i];
    }
    return img;
}

ImagePtr plainImage(int width, int height, uint16_t r, uint16_t g, uint16_t b, uint16_t a)
{
    auto img = std::make_unique<image>();
    if (!img->allocate(width, height, QStringLiteral("plain")))
        return nullptr;
    img->fill(r, g, b, a);
    return img;
}

static bool samePlane(const image &one, const image &other, const uint16_t *a, const uint16_t *b)
{
    return one.width == other.width && one.height == other.height &&
           std::equal(a, a + one.sampleCount(), b);
}

bool samePlanes(const image &one, const image &other)
{
    return sameColors(one, other) && samePlane(one, other, one.gmask, other.gmask);
}

bool sameColors(const image &one, const image &other)
{
    for (int i = 0; i < 4; ++i)
        if (!samePlane(one, other, one.colorPlanes()[i], other.colorPlanes()[i]))
            return false;
    return true;
}
