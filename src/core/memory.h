// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <utility>

/// Tracked memory: every large buffer of the program comes from here, so that a leak
/// or an over-run in an image routine can be found from inside the running program.
/// Each block is fenced by an 8-byte guard on either side and recorded, with a label,
/// in one static table. Failures are logged to the debug channel and never fatal.

constexpr int kMemSlots = 32768;
constexpr int kMemLabelLength = 62;

/// One live block. 128 bytes, so that the table is exactly 4 MiB.
struct MemSlot {
    char label[64]; ///< what the block is for, cut to 62 characters
    void *block;    ///< what the system library returned
    void *user;     ///< what the caller holds: block + 8
    void *headGuard;
    void *tailGuard;
    int64_t size; ///< bytes that the caller asked for, guards excluded
    int64_t count;
    int64_t elementSize;
    uint8_t inUse;
    uint8_t underrunSeen; ///< a broken guard is counted once only
    uint8_t overrunSeen;
};
static_assert(sizeof(MemSlot) == 128);

/// The one record of the process. Open for reading; written by memory.cpp alone.
struct MemRecord {
    char lastUnderrunLabel[64];
    char lastOverrunLabel[64];
    char lastFailLabel[64];
    int64_t overruns;
    int64_t underruns;
    int64_t allocationFailures;
    int64_t currentBytes; ///< bytes requested; a refused request stays counted
    int64_t currentBlocks;
    int64_t peakBytes; ///< raised by ucalloc only
    int64_t peakBlocks;
    int64_t longestSearch;
    int32_t firstFree;
    uint8_t tracking; ///< 0: pass straight through to the system library
    uint8_t waiting;  ///< set while memWait runs
    MemSlot memblock[kMemSlots];

    MemRecord();
};

extern MemRecord memRecord;

/// Allocates `size` bytes with undefined content; null if the system refuses.
/// Recorded with count 1 and elementSize size + 16, the size of the whole block.
void *umalloc(size_t size, const char *label);

/// Allocates `count` x `elementSize` zeroed bytes; null if the product overflows or
/// the system refuses. Recorded with its own count and elementSize.
void *ucalloc(size_t count, size_t elementSize, const char *label);

/// As ucalloc, storing the pointer (null on failure) in *result.
/// Returns whether the allocation succeeded.
bool ucalloc(void **result, size_t count, size_t elementSize, const char *label);

template <class T>
bool ucalloc(T **result, size_t count, size_t elementSize, const char *label)
{
    *result = static_cast<T *>(ucalloc(count, elementSize, label));
    return *result != nullptr;
}

/// Frees a block by its user pointer. An unknown pointer is logged and left alone.
void ufree(void *user);

/// Frees through a pointer to pointer and nulls it. A pointer to null is accepted.
void upfree(void **pointerToPointer);

template <class T>
void upfree(T **pointerToPointer)
{
    // Through a void pointer of its own: a T * must not be written as if it were one.
    void *user = pointerToPointer ? *pointerToPointer : nullptr;
    upfree(pointerToPointer ? &user : nullptr);
    if (pointerToPointer)
        *pointerToPointer = nullptr;
}

/// Bytes recorded for a user pointer, 0 if no live slot holds it.
int64_t memSize(const void *user);

/// Gives a live block another label (cut to 62 characters). False if unknown.
/// Undo uses it to hand the planes of the oldest snapshot to the newest one.
bool memRelabel(const void *user, const char *label);

/// Tests both guards of one slot, counting each broken guard once.
/// The returned pair is {head newly broken, tail newly broken}.
std::pair<bool, bool> memCheckGuards(MemSlot *slot);

/// Tests the guards of every live block and logs each newly broken one.
void memSweep();

/// Puts a line about the block into *text. The search for the user pointer starts at
/// slot `slotHint` and walks upward; -1 starts at slot 0.
void memGetInfo(QString *text, const void *user, int slotHint);

/// The report shown by MemReport; `details` adds one line per live slot.
/// Empty while tracking is off.
QString memReport(bool details);

/// Moves the records of live blocks to the front of the table; no block moves.
/// Returns the one-line result that MemReport shows.
QString memPack();

/// Handles application events for 1 to 10 seconds; any other count returns at once.
void memWait(int seconds);

/// Lower-case hexadecimal of 2, 4, 8 or 16 digits, padded with zeros.
QString hexByte(uint8_t value);
QString hexWord(uint16_t value);
QString hexLong(uint32_t value);
QString hexQuad(uint64_t value);
QString reversed(const QString &text);

/// Groups the digits before the first `decimalMark` in threes, from the right.
/// Characters other than digits end the grouping and are copied as they stand.
QString groupDigits(const QString &number, QChar decimalMark, QChar groupMark);
/// A count in decimal with a comma between groups of three digits.
QString groupDigits(int64_t value);

/// The argument, or 0.0001 in place of an exact zero. NaN passes through.
double nonZero(double value);
/// The larger of the argument and 1e-7.
double atLeastTiny(double value);

/// For tests: makes the n-th allocation from now on fail (1 is the next); 0 ends it.
void memFailAt(int n);

/// Owns one tracked array for the length of a scope.
template <class T>
class TrackedBuffer
{
public:
    /// Zeroed elements; test the buffer before use, it is null if memory is short.
    TrackedBuffer(size_t count, const char *label)
        : pointer(static_cast<T *>(ucalloc(count, sizeof(T), label)))
    {
    }
    ~TrackedBuffer() { upfree(&pointer); }
    TrackedBuffer(const TrackedBuffer &) = delete;
    TrackedBuffer &operator=(const TrackedBuffer &) = delete;

    explicit operator bool() const { return pointer != nullptr; }
    T *get() const { return pointer; }
    T &operator[](size_t index) const { return pointer[index]; }

private:
    T *pointer;
};
