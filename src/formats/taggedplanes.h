// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "formats/taggedstream.h"

#include <QByteArray>
#include <QThreadPool>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

/// A packed plane is what qCompress makes of its samples, high byte first, at level 9:
/// their length in bytes as 32 bits, high byte first, and one zlib stream. A stream cannot
/// be shared out, so it is planes that are worked on side by side. A reader takes any level.

constexpr int kSmallLevel = 9; ///< of files that are kept
constexpr int kQuickLevel = 1; ///< of files that live for minutes

struct PlaneSource {
    const uint16_t *samples;
    int64_t count;
};

/// Packs planes on all cores. They come out in order; only a few are packed ahead of the
/// one that was taken last, so that memory stays bounded.
class PlanePacker
{
public:
    explicit PlanePacker(std::vector<PlaneSource> sources, int level = kSmallLevel);
    /// Gives up what is not packed yet.
    ~PlanePacker();
    PlanePacker(const PlanePacker &) = delete;
    PlanePacker &operator=(const PlanePacker &) = delete;

    /// Waits for the next plane, at most that long; whether it can be taken.
    bool ready(int milliseconds);
    /// The next plane, once it is ready; no pieces if memory was short.
    std::vector<QByteArray> take();
    int64_t samplesDone() const { return done.load(std::memory_order_relaxed); }
    int64_t samplesInAll() const { return inAll; }

private:
    struct Slot {
        std::vector<QByteArray> pieces;
        bool finished = false;
    };
    void work();

    const std::vector<PlaneSource> planes;
    const int packLevel;
    const size_t ahead;
    int64_t inAll = 0;
    std::mutex lock; ///< guards results, begun and taken
    std::condition_variable changed;
    std::vector<Slot> results;
    size_t begun = 0, taken = 0;
    std::atomic<int64_t> done{0};
    std::atomic<bool> stopped{false};
    QThreadPool pool;
};

/// Unpacks planes on all cores while the caller reads on.
class PlaneUnpacker
{
public:
    PlaneUnpacker();
    ~PlaneUnpacker();
    PlaneUnpacker(const PlaneUnpacker &) = delete;
    PlaneUnpacker &operator=(const PlaneUnpacker &) = delete;

    /// Begins to fill a plane, whose samples stay the unpacker's until wait(). First waits
    /// while too many others are under way. What the data lacks becomes zero.
    void start(FieldReader::Block data, bool packed, uint16_t *samples, int64_t count);
    void wait();
    /// Whether a plane so far was short or not a whole stream.
    bool damageSeen() const { return damaged.load(std::memory_order_relaxed); }
    /// The most bytes of data that a plane of that many samples can have use for.
    static int64_t mostBytes(bool packed, int64_t count);

private:
    void finished();

    std::mutex lock; ///< guards underWay
    std::condition_variable changed;
    int underWay = 0;
    std::atomic<bool> damaged{false};
    QThreadPool pool;
};

/// Fills a plane from its field's data. What is missing or cannot be unpacked becomes
/// zero, what is too much is left out; false in the first case.
bool unpackPlane(const unsigned char *data, int64_t size, bool packed, uint16_t *samples,
                 int64_t count);
