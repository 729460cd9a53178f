// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"
#include "core/memory_internal.h"

#include <QDebug>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

// Constant-initialised, hence ready before any constructor runs.
std::mutex memMutex;

// A static object elsewhere may allocate in its constructor, so this one comes first.
__attribute__((init_priority(101))) MemRecord memRecord;

namespace
{
constexpr size_t kGuardBytes = 8;
constexpr unsigned char kHeadGuard[kGuardBytes] = {0xDE, 0xAD, 0xBE, 0xEF, 0xBE, 0xDD, 0xAB, 0x1E};
constexpr unsigned char kTailGuard[kGuardBytes] = {0xCA, 0x5C, 0xAD, 0xED, 0xDE, 0xCE, 0xA5, 0xED};

/// More than this fits neither the system library nor a signed 64-bit count.
constexpr size_t kMaxRequest = size_t(PTRDIFF_MAX) - 2 * kGuardBytes;
constexpr size_t kHugePageWorthwhile = size_t(4) << 20;

/// Allocations until the one that fails on purpose; 0 when none is to.
int failCountdown = 0;

struct Request {
    size_t size, count, elementSize;
    bool zeroed; ///< asked for through ucalloc
    const char *label;
};

void copyLabel(char (&to)[64], const char *from)
{
    std::memset(to, 0, sizeof to);
    if (from)
        std::memcpy(to, from, strnlen(from, kMemLabelLength));
}

void refuse(const char *label)
{
    std::lock_guard lock(memMutex);
    ++memRecord.allocationFailures;
    copyLabel(memRecord.lastFailLabel, label);
}

/// Adds a request to the account, before it is known whether the system grants it.
/// Only ucalloc raises the high-water mark. False if this request is to fail on purpose.
bool countRequest(const Request &request)
{
    int64_t total;
    bool granted = true;
    {
        std::lock_guard lock(memMutex);
        // Refused requests stay counted, so the sum can run over; it wraps, defined.
        total = int64_t(uint64_t(memRecord.currentBytes) + request.size);
        memRecord.currentBytes = total;
        if (request.zeroed)
            memRecord.peakBytes = std::max(memRecord.peakBytes, total);
        if (failCountdown > 0)
            granted = --failCountdown > 0;
    }
    if (total < 0)
        qDebug().noquote() << "total has gone negative in"
                           << (request.zeroed ? "ucalloc" : "umalloc") << total;
    return granted;
}

/// First touch of fresh memory is two to three times as fast on huge pages.
void adviseHugePages(void *block, size_t bytes)
{
#if defined(__linux__)
    if (bytes < kHugePageWorthwhile)
        return;
    const auto page = uintptr_t(sysconf(_SC_PAGESIZE));
    const uintptr_t first = (uintptr_t(block) + page - 1) / page * page;
    const uintptr_t end = (uintptr_t(block) + bytes) / page * page;
    madvise(reinterpret_cast<void *>(first), end - first, MADV_HUGEPAGE);
#else
    Q_UNUSED(block)
    Q_UNUSED(bytes)
#endif
}

MemSlot makeSlot(const Request &request, void *block)
{
    auto *bytes = static_cast<char *>(block);
    MemSlot slot{};
    copyLabel(slot.label, request.label);
    slot.block = slot.headGuard = block;
    slot.user = bytes + kGuardBytes;
    slot.tailGuard = bytes + kGuardBytes + request.size;
    slot.size = int64_t(request.size);
    slot.count = int64_t(request.count);
    slot.elementSize = int64_t(request.elementSize);
    slot.inUse = 1;
    std::memcpy(slot.headGuard, kHeadGuard, kGuardBytes);
    std::memcpy(slot.tailGuard, kTailGuard, kGuardBytes);
    return slot;
}

/// Walks upward from the slot just taken to the one that the next block will take.
/// False at the end of the table: then firstFree stays, and the next block overwrites it.
bool findNextFree()
{
    for (int slot = memRecord.firstFree + 1; slot < kMemSlots; ++slot) {
        if (memRecord.memblock[slot].inUse)
            continue;
        const int64_t distance = slot - memRecord.firstFree;
        memRecord.longestSearch = std::max(memRecord.longestSearch, distance);
        memRecord.firstFree = slot;
        return true;
    }
    return false;
}

void enter(const MemSlot &slot)
{
    bool found;
    {
        std::lock_guard lock(memMutex);
        ++memRecord.currentBlocks;
        memRecord.peakBlocks = std::max(memRecord.peakBlocks, memRecord.currentBlocks);
        memRecord.memblock[memRecord.firstFree] = slot;
        found = findNextFree();
    }
    if (!found)
        qDebug().noquote() << QStringLiteral(
                                  "WARNING: Unable to find an empty memblock for \"%1\"!")
                                  .arg(QString::fromUtf8(slot.label));
}

void *allocateTracked(const Request &request)
{
    void *block = nullptr;
    if (countRequest(request)) {
        const size_t bytes = request.size + 2 * kGuardBytes;
        block = request.zeroed ? std::calloc(1, bytes) : std::malloc(bytes);
    }
    if (!block) {
        refuse(request.label);
        return nullptr;
    }
    adviseHugePages(block, request.size + 2 * kGuardBytes);
    const MemSlot slot = makeSlot(request, block);
    enter(slot);
    return slot.user;
}

MemSlot *findLive(const void *user)
{
    for (MemSlot &slot : memRecord.memblock)
        if (slot.user == user && slot.inUse)
            return &slot;
    return nullptr;
}

std::pair<bool, bool> checkGuards(MemSlot *slot)
{
    std::pair<bool, bool> broken{false, false};
    if (!slot->underrunSeen && std::memcmp(slot->headGuard, kHeadGuard, kGuardBytes) != 0) {
        ++memRecord.underruns;
        copyLabel(memRecord.lastUnderrunLabel, slot->label);
        slot->underrunSeen = 1;
        broken.first = true;
    }
    if (!slot->overrunSeen && std::memcmp(slot->tailGuard, kTailGuard, kGuardBytes) != 0) {
        ++memRecord.overruns;
        copyLabel(memRecord.lastOverrunLabel, slot->label);
        slot->overrunSeen = 1;
        broken.second = true;
    }
    return broken;
}

/// Takes a block out of the table and the account, returning its record as it was.
/// False if no live slot has it.
bool leave(const void *user, MemSlot *left, int64_t *total)
{
    std::lock_guard lock(memMutex);
    MemSlot *slot = findLive(user);
    if (!slot)
        return false;
    *left = *slot;
    --memRecord.currentBlocks;
    memRecord.currentBytes = int64_t(uint64_t(memRecord.currentBytes) - uint64_t(slot->size));
    *total = memRecord.currentBytes;
    slot->inUse = 0;
    slot->size = 0;
    memRecord.firstFree = std::min(memRecord.firstFree, int32_t(slot - memRecord.memblock));
    checkGuards(left);
    return true;
}

void logSweep(int slot, const char *what, const char *label)
{
    qDebug().noquote() << QStringLiteral("Block %1 %2: %3")
                              .arg(QString::number(slot + 1), QLatin1String(what),
                                   QString::fromUtf8(label));
}
} // namespace

MemRecord::MemRecord()
    : lastUnderrunLabel{}, lastOverrunLabel{}, lastFailLabel{}, overruns(0), underruns(0),
      allocationFailures(0), currentBytes(0), currentBlocks(0), peakBytes(0), peakBlocks(0),
      longestSearch(0), firstFree(0), tracking(1), waiting(0), memblock{}
{
}

void *umalloc(size_t size, const char *label)
{
    if (!memRecord.tracking)
        return std::malloc(size);
    if (size > kMaxRequest) {
        refuse(label);
        return nullptr;
    }
    return allocateTracked({size, 1, size + 2 * kGuardBytes, false, label});
}

void *ucalloc(size_t count, size_t elementSize, const char *label)
{
    if (!memRecord.tracking)
        return std::calloc(count, elementSize);
    if (elementSize != 0 && count > kMaxRequest / elementSize) {
        refuse(label);
        return nullptr;
    }
    return allocateTracked({count * elementSize, count, elementSize, true, label});
}

bool ucalloc(void **result, size_t count, size_t elementSize, const char *label)
{
    *result = ucalloc(count, elementSize, label);
    return *result != nullptr;
}

void ufree(void *user)
{
    if (!memRecord.tracking) {
        std::free(user);
        return;
    }
    MemSlot left;
    int64_t total = 0;
    if (!leave(user, &left, &total)) {
        qDebug() << "WARNING: Unable to find memory to be freed in memblock list";
        return;
    }
    if (total < 0)
        qDebug().noquote() << "total has gone negative" << total << QString::fromUtf8(left.label);
    std::free(left.block);
}

void upfree(void **pointerToPointer)
{
    if (!pointerToPointer) {
        qDebug() << "upfree() pointerToPointer is NULL";
        return;
    }
    if (*pointerToPointer)
        ufree(*pointerToPointer);
    *pointerToPointer = nullptr;
}

int64_t memSize(const void *user)
{
    std::lock_guard lock(memMutex);
    const MemSlot *slot = findLive(user);
    return slot ? slot->size : 0;
}

bool memRelabel(const void *user, const char *label)
{
    std::lock_guard lock(memMutex);
    MemSlot *slot = findLive(user);
    if (slot)
        copyLabel(slot->label, label);
    return slot != nullptr;
}

std::pair<bool, bool> memCheckGuards(MemSlot *slot)
{
    std::lock_guard lock(memMutex);
    return checkGuards(slot);
}

void memSweep()
{
    for (int64_t i = 0, live = 0; i < kMemSlots; ++i) {
        std::pair<bool, bool> broken;
        char label[sizeof(MemSlot::label)];
        {
            std::lock_guard lock(memMutex);
            if (live >= memRecord.currentBlocks)
                return;
            MemSlot &slot = memRecord.memblock[i];
            if (!slot.inUse)
                continue;
            ++live;
            broken = checkGuards(&slot);
            std::memcpy(label, slot.label, sizeof label);
        }
        if (broken.first)
            logSweep(int(i), "under-run", label);
        if (broken.second)
            logSweep(int(i), "over-run", label);
    }
}

void memFailAt(int n)
{
    std::lock_guard lock(memMutex);
    failCountdown = n;
}
