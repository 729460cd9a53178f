// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"
#include "core/memory_internal.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace
{
constexpr int kSliceMs = 50;
constexpr int kIdleMs = 5;

QString labelText(const char *label)
{
    return QString::fromUtf8(label);
}

/// memGetInfo for a caller that holds the lock.
QString infoLine(const void *user, int firstSlot)
{
    for (int i = firstSlot; i < kMemSlots; ++i) {
        const MemSlot &slot = memRecord.memblock[i];
        if (slot.user != user)
            continue;
        if (!slot.inUse)
            return QStringLiteral("memGetInfo() :: pointer found, but invalid!\n");
        return QStringLiteral("Slot %1: %2 -- %3 (%4 x %5)\n")
            .arg(QString::number(i + 1), labelText(slot.label), groupDigits(slot.size),
                 groupDigits(slot.count), groupDigits(slot.elementSize));
    }
    return QStringLiteral("memGetInfo() :: pointer not found!\n");
}

/// The count of one kind of trouble and, if there was any, where it was last.
QString troubleLines(int64_t count, const char *kind, const char *none, const char *mostRecent,
                     const char *label)
{
    if (count == 0)
        return QStringLiteral("0 %1\n").arg(QLatin1String(none));
    return QStringLiteral("%1 %2\nMost recent %3: %4\n")
        .arg(groupDigits(count), QLatin1String(kind), QLatin1String(mostRecent), labelText(label));
}

QString slotLines()
{
    if (memRecord.currentBlocks <= 0)
        return QStringLiteral("No slots in use\n");
    QString lines;
    for (int i = 0; i < kMemSlots; ++i)
        if (memRecord.memblock[i].inUse)
            lines += infoLine(memRecord.memblock[i].user, i);
    return lines;
}

QString countLine(const char *what, int64_t count)
{
    return QLatin1String(what) + groupDigits(count) + QLatin1Char('\n');
}

/// Walks the used slots up to the number of live blocks and returns how many slots
/// that took, free ones included.
int64_t walkLiveBlocks()
{
    int64_t walked = 0;
    for (int64_t seen = 0; walked < kMemSlots && seen < memRecord.currentBlocks; ++walked)
        seen += memRecord.memblock[walked].inUse ? 1 : 0;
    return walked;
}

/// Not through the tracker, which is the table being rewritten.
bool moveLiveRecordsToFront()
{
    const std::unique_ptr<void, decltype(&std::free)> memory(
        std::malloc(sizeof(MemSlot) * kMemSlots), &std::free);
    auto *scratch = static_cast<MemSlot *>(memory.get());
    if (!scratch)
        return false;
    int live = 0;
    for (MemSlot &slot : memRecord.memblock) {
        if (slot.inUse)
            scratch[live++] = slot;
        slot.inUse = 0;
    }
    std::copy(scratch, scratch + live, memRecord.memblock);
    // Blocks lost to a full table are still counted; the index must stay in the table.
    memRecord.firstFree = int32_t(std::min<int64_t>(memRecord.currentBlocks, kMemSlots - 1));
    return true;
}

QString padded(uint64_t value, int digits)
{
    return QStringLiteral("%1").arg(qulonglong(value), digits, 16, QLatin1Char('0'));
}
} // namespace

void memGetInfo(QString *text, const void *user, int slotHint)
{
    if (!text)
        return;
    std::lock_guard lock(memMutex);
    *text = infoLine(user, std::max(slotHint, 0));
}

QString memReport(bool details)
{
    if (!memRecord.tracking)
        return QString();
    std::lock_guard lock(memMutex);
    const MemRecord &m = memRecord;
    QString text =
        countLine("Current # of Memory Blocks: ", m.currentBlocks) +
        countLine("Current Size of Allocated Memory: ", m.currentBytes) +
        countLine("Peak Amount of Allocated Memory: ", m.peakBytes) +
        countLine("Peak Concurrent Memory Blocks: ", m.peakBlocks) +
        countLine("First free Block: ", m.firstFree + 1) +
        countLine("Longest block search: ", m.longestSearch) +
        troubleLines(m.underruns, "Memory Underruns", "Memory Underruns", "Memory Underun",
                     m.lastUnderrunLabel) +
        troubleLines(m.overruns, "Memory Overruns", "Memory Overruns", "Memory Overrun",
                     m.lastOverrunLabel) +
        troubleLines(m.allocationFailures, "Allocation Failures", "Memory Allocation Failures",
                     "Allocation Failure", m.lastFailLabel);
    if (details)
        text += slotLines();
    text.chop(1);
    return text;
}

QString memPack()
{
    std::lock_guard lock(memMutex);
    if (memRecord.currentBlocks == 0)
        return QStringLiteral("Nothing to pack");
    const int64_t walked = walkLiveBlocks();
    const QString live = QString::number(memRecord.currentBlocks);
    if (walked == memRecord.currentBlocks)
        return QStringLiteral("Tight: %1=%2").arg(QString::number(walked), live);
    if (!moveLiveRecordsToFront())
        return QStringLiteral("!error!");
    return QStringLiteral("Packed: %1\u2192%2").arg(QString::number(walked), live);
}

void memWait(int seconds)
{
    if (seconds < 1 || seconds > 10)
        return;
    const uint8_t waitingBefore = memRecord.waiting;
    memRecord.waiting = 1;
    QElapsedTimer timer;
    timer.start();
    for (;;) {
        const int64_t left = int64_t(seconds) * 1000 - timer.elapsed();
        if (left <= 0)
            break;
        QCoreApplication::processEvents(QEventLoop::AllEvents,
                                        int(std::min<int64_t>(left, kSliceMs)));
        // Without events the call above returns at once; the processor need not spin.
        QThread::msleep(kIdleMs);
    }
    memRecord.waiting = waitingBefore;
}

QString hexByte(uint8_t value)
{
    return padded(value, 2);
}

QString hexWord(uint16_t value)
{
    return padded(value, 4);
}

QString hexLong(uint32_t value)
{
    return padded(value, 8);
}

QString hexQuad(uint64_t value)
{
    return padded(value, 16);
}

QString reversed(const QString &text)
{
    QString result = text;
    std::reverse(result.begin(), result.end());
    return result;
}

QString groupDigits(const QString &number, QChar decimalMark, QChar groupMark)
{
    const int mark = number.indexOf(decimalMark);
    const int end = mark < 0 ? number.size() : mark;
    int first = end;
    while (first > 0 && number[first - 1] >= QLatin1Char('0') &&
           number[first - 1] <= QLatin1Char('9'))
        --first;
    QString result = number;
    for (int place = end - 3; place > first; place -= 3)
        result.insert(place, groupMark);
    return result;
}

QString groupDigits(int64_t value)
{
    return groupDigits(QString::number(value), QLatin1Char('.'), QLatin1Char(','));
}

double nonZero(double value)
{
    return value == 0.0 ? 0.0001 : value;
}

double atLeastTiny(double value)
{
    return value > 1e-7 ? value : 1e-7;
}
