// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/image.h"

#include <functional>
#include <memory>

/// The pictures that every benchmark works on: 24 megapixels.
constexpr int kBenchWidth = 6000;
constexpr int kBenchHeight = 4000;

/// What one benchmark does. `run` is timed; `reset`, if any, is called untimed before
/// each run; `check` proves once, before any timing, that the output is right.
struct BenchCase {
    std::function<void()> run;
    std::function<void()> reset;
    std::function<bool()> check;
};

/// Registers an operation whose time is reported as a multiple of one plane copy: copying
/// a picture's five planes into memory already in use, on all cores, in the same run. The
/// two are timed in turns and their medians compared. `limit` is printed beside the ratio.
void registerRatio(const char *name, double limit, std::function<BenchCase()> make);

/// Registers an operation whose time is reported as a multiple of another one's.
void registerAgainst(const char *name, double limit, std::function<BenchCase()> make,
                     std::function<BenchCase()> peer);

/// A picture of the benchmark size with repeatable content; mask: 0 none, 1 soft, 2 full.
std::unique_ptr<image> benchImage(int mask);

/// Copies the five work planes on all cores: the yardstick itself.
void copyFivePlanes(const image &from, image &to);
