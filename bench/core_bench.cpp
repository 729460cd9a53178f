// SPDX-License-Identifier: GPL-3.0-or-later
#include "yardstick.h"

#include "core/bilinear_inline.h"
#include "core/scale.h"
#include "core/undo.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kScaledWidth = 1600;
constexpr int kScaledHeight = 1067;
constexpr int kUndoLevels = 3;

std::shared_ptr<image> benchPicture()
{
    return benchImage(1);
}

std::shared_ptr<image> emptyPicture(int width, int height)
{
    auto made = std::make_shared<image>();
    return made->allocate(width, height, QStringLiteral("target")) ? made : nullptr;
}

/// A few samples of a bilinear scale, by the plain formula.
bool scaledWell(const image &from, const image &to)
{
    for (int y = 0; y < to.height; y += 97)
        for (int x = 0; x < to.width; x += 89) {
            const double sx = x * (double(from.width) / to.width);
            const double sy = y * (double(from.height) / to.height);
            const int64_t at = int64_t(sy) * from.width + int64_t(sx);
            const int right = int(sx) < from.width - 1, below = int(sy) < from.height - 1;
            const uint16_t *s = from.red + at;
            const double mixed =
                bilinearMix(s[0], s[right], s[below * from.width], s[below * from.width + right],
                            sx - std::floor(sx), sy - std::floor(sy));
            if (to.red[int64_t(y) * to.width + x] != uint16_t(mixed))
                return false;
        }
    return true;
}

BenchCase scaleCase(bool (*scale)(const image *, image *, bool), bool checked)
{
    const auto from = benchPicture();
    const auto to = emptyPicture(kScaledWidth, kScaledHeight);
    const auto run = [=] { scale(from.get(), to.get(), false); };
    return {run, nullptr, [=] {
                run();
                return !checked || scaledWell(*from, *to);
            }};
}

/// Undo records into memory in use: the list is full, so each record replaces the oldest.
BenchCase undoInUse()
{
    const auto img = benchPicture();
    img->undoLevels = kUndoLevels;
    for (int i = 0; i < kUndoLevels; ++i)
        saveUndo(img.get(), true);
    return {[=] { saveUndo(img.get(), true); }, nullptr,
            [=] {
                const image &last = *img->undoList.last();
                return img->undoList.size() == kUndoLevels &&
                       std::equal(img->gmask, img->gmask + img->sampleCount(), last.gmask);
            }};
}

BenchCase undoFresh()
{
    const auto img = benchPicture();
    img->undoLevels = kUndoLevels;
    return {[=] { saveUndo(img.get(), true); }, [=] { clearUndoList(img.get()); }, nullptr};
}

BenchCase turn()
{
    const auto img = benchPicture();
    img->noUndo = true;
    return {[=] { img->quarterTurn(); }, nullptr,
            [=] {
                const uint16_t corner = img->red[0];
                img->quarterTurn();
                const bool moved = img->red[img->width - 1] == corner;
                for (int i = 0; i < 3; ++i)
                    img->quarterTurn();
                return moved && img->red[0] == corner;
            }};
}

BenchCase allocation()
{
    const auto made = std::make_shared<std::unique_ptr<image>>();
    return {[=] {
                *made = std::make_unique<image>();
                (*made)->allocate(kBenchWidth, kBenchHeight, QStringLiteral("fresh"));
            },
            [=] { made->reset(); }, nullptr};
}

BenchCase reduceCase()
{
    const auto from = benchPicture();
    const auto to = emptyPicture(kScaledWidth / 4, kScaledHeight / 4);
    return {[=] { smartReduce(from.get(), to.get()); }, nullptr, nullptr};
}
} // namespace

void registerCoreBenchmarks()
{
    registerRatio("core/scale bilinear to 1600 x 1067", 0.7,
                  [] { return scaleCase(scaleBilinear, true); });
    registerRatio("core/scale nearest to 1600 x 1067", 0.7,
                  [] { return scaleCase(scaleNearest, false); });
    registerRatio("core/smart reduce to 400 x 266", 8, reduceCase);
    registerRatio("core/undo record, memory in use", 2, undoInUse);
    registerRatio("core/undo record, fresh memory", 4, undoFresh);
    registerRatio("core/quarter turn", 6, turn);
    registerRatio("core/image allocation", 4, allocation);
}
