// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"

#include "core/rows.h"
#include "support/debuglog.h"

#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{
const char kUnknownWarning[] = "WARNING: Unable to find memory to be freed in memblock list";

/// Each test starts from the record of a fresh process and puts the real one back.
class Memory : public testing::Test
{
protected:
    Memory()
    {
        memRecord = *std::make_unique<MemRecord>();
        takeDebugLines();
    }
    ~Memory() override
    {
        memFailAt(0);
        for (const MemSlot &slot : memRecord.memblock)
            if (slot.inUse)
                std::free(slot.block);
        memRecord = *saved;
    }

    std::unique_ptr<MemRecord> saved = std::make_unique<MemRecord>(memRecord);
    const MemSlot *table = memRecord.memblock;
};

TEST_F(Memory, BlocksLieBetweenTheirGuards)
{
    const unsigned char head[] = {0xDE, 0xAD, 0xBE, 0xEF, 0xBE, 0xDD, 0xAB, 0x1E};
    const unsigned char tail[] = {0xCA, 0x5C, 0xAD, 0xED, 0xDE, 0xCE, 0xA5, 0xED};
    const size_t sizes[] = {0, 1, 30, size_t(5) << 20}; // the last one on huge pages
    for (int i = 0; i < 4; ++i) {
        auto *user = static_cast<char *>(ucalloc(sizes[i], 2, "zeroed"));
        ASSERT_NE(user, nullptr);
        EXPECT_EQ(user, static_cast<char *>(table[i].block) + 8);
        EXPECT_EQ(std::memcmp(user - 8, head, 8), 0);
        EXPECT_EQ(std::memcmp(user + sizes[i] * 2, tail, 8), 0);
        EXPECT_EQ(std::count(user, user + sizes[i] * 2, 0), ptrdiff_t(sizes[i] * 2));
        EXPECT_EQ(memSize(user), int64_t(sizes[i] * 2));
    }
    umalloc(30, std::string(80, 'L').c_str());
    EXPECT_EQ(std::string(table[4].label), std::string(62, 'L'));
}

TEST_F(Memory, RefusedRequestsStayCounted)
{
    memFailAt(2);
    void *refused = ucalloc(3, 2, "granted");
    EXPECT_FALSE(ucalloc(&refused, 5, 2, "refused"));
    EXPECT_EQ(refused, nullptr);
    EXPECT_STREQ(memRecord.lastFailLabel, "refused");
    EXPECT_TRUE(ucalloc(&refused, 1, 1, "after"));
    EXPECT_EQ(memRecord.currentBlocks, 2);

    // A product or a block beyond 64 bits is refused too, and has no size to count.
    EXPECT_EQ(ucalloc(SIZE_MAX / 2, 4, "product"), nullptr);
    EXPECT_EQ(umalloc(SIZE_MAX - 4, "whole block"), nullptr);
    EXPECT_EQ(memRecord.allocationFailures, 3);
    EXPECT_EQ(memRecord.currentBytes, 6 + 10 + 1);
}

TEST_F(Memory, LogsATotalThatRunsOver)
{
    for (int i = 0; i < 2; ++i) {
        memFailAt(1); // the sanitizers would take such a request for a mistake
        EXPECT_EQ(umalloc(size_t(1) << 62, "refused"), nullptr);
    }
    ufree(ucalloc(1, 8, "c"));
    EXPECT_EQ(takeDebugLines(),
              QStringList({"total has gone negative in umalloc -9223372036854775808",
                           "total has gone negative in ucalloc -9223372036854775800",
                           "total has gone negative -9223372036854775808 c"}));
}

TEST_F(Memory, DamagedGuardsAreCountedOnce)
{
    for (const int offset : {-8, -1, 0, 15, 16, 23}) // of the byte written into or near 16
        for (const bool swept : {true, false}) {
            memRecord = *std::make_unique<MemRecord>();
            auto *user = static_cast<unsigned char *>(umalloc(16, "victim"));
            user[offset] ^= 0x55;
            for (int i = 0; swept && i < 3; ++i)
                memSweep();
            ufree(user);
            EXPECT_EQ(memRecord.underruns, offset < 0) << offset;
            EXPECT_EQ(memRecord.overruns, offset > 15) << offset;
            const char *const text = offset < 0    ? "Block 1 under-run: victim"
                                     : offset > 15 ? "Block 1 over-run: victim"
                                                   : nullptr;
            EXPECT_EQ(takeDebugLines(), swept && text ? QStringList(text) : QStringList());
        }
}

TEST_F(Memory, SlotsAreTakenLowestFirstAndPacked)
{
    EXPECT_EQ(memPack(), "Nothing to pack");
    std::vector<void *> users;
    for (size_t i = 0; i < 6; ++i)
        users.push_back(umalloc(i + 1, "x"));
    ufree(users[1]);
    ufree(users[3]);
    for (const int slot : {1, 3}) { // the lowest first
        EXPECT_EQ(memRecord.firstFree, slot);
        users[size_t(slot)] = umalloc(size_t(slot) + 1, "y");
    }
    EXPECT_EQ(memRecord.firstFree, 6);
    EXPECT_EQ(memRecord.longestSearch, 3);
    EXPECT_EQ(memPack(), "Tight: 6=6");
    ufree(users[0]);
    ufree(users[2]);
    EXPECT_EQ(memPack(), QStringLiteral("Packed: 6\u21924"));
    EXPECT_EQ(memRecord.firstFree, 4);
    for (const size_t i : {1, 3, 4, 5})
        EXPECT_EQ(memSize(users[i]), int64_t(i + 1));
}

TEST_F(Memory, AFullTableLosesTheLastBlockButNotTheMemory)
{
    for (int i = 0; i < kMemSlots - 1; ++i)
        umalloc(1, "x");
    EXPECT_TRUE(takeDebugLines().isEmpty());
    void *const lost[] = {umalloc(1, "x"), umalloc(1, "x")}, *const kept = umalloc(1, "x");
    const QString full = "WARNING: Unable to find an empty memblock for \"x\"!";
    EXPECT_EQ(table[kMemSlots - 1].user, kept);
    ufree(lost[0]);
    EXPECT_EQ(takeDebugLines(), QStringList({full, full, full, kUnknownWarning}));
    for (void *user : lost)
        std::free(static_cast<char *>(user) - 8);
    // More blocks are counted than the table has: sweep and pack stay within it.
    ufree(table[0].user);
    memSweep();
    EXPECT_EQ(memPack(), QStringLiteral("Packed: 32768\u219232769"));
    EXPECT_EQ(memRecord.firstFree, kMemSlots - 1);
}

TEST_F(Memory, ReportsEveryLine)
{
    EXPECT_TRUE(memReport(true).endsWith("\n0 Memory Underruns\n0 Memory Overruns\n"
                                         "0 Memory Allocation Failures\nNo slots in use"));
    void *gone = ucalloc(1000, 2, "gone");
    auto *second = static_cast<char *>(ucalloc(3, 4, "second"));
    void *third = umalloc(1234567, "third %1"); // which does not raise the peak
    ufree(gone);
    memFailAt(1);
    umalloc(10, "refused");
    second[-1] = second[12] = 0;
    memSweep();
    const char report[] =
        "Current # of Memory Blocks: 2\nCurrent Size of Allocated Memory: 1,234,589\n"
        "Peak Amount of Allocated Memory: 2,012\nPeak Concurrent Memory Blocks: 3\n"
        "First free Block: 1\nLongest block search: 1\n"
        "1 Memory Underruns\nMost recent Memory Underun: second\n"
        "1 Memory Overruns\nMost recent Memory Overrun: second\n"
        "1 Allocation Failures\nMost recent Allocation Failure: refused\n"
        "Slot 2: second -- 12 (3 x 4)\nSlot 3: third %1 -- 1,234,567 (1 x 1,234,583)";
    EXPECT_EQ(memReport(true), report);
    EXPECT_FALSE(memReport(false).contains("Slot"));

    const auto info = [](const void *user, int hint) {
        QString text;
        memGetInfo(&text, user, hint);
        return text;
    };
    EXPECT_EQ(info(third, -1), "Slot 3: third %1 -- 1,234,567 (1 x 1,234,583)\n");
    EXPECT_EQ(info(third, 3), "memGetInfo() :: pointer not found!\n");
    EXPECT_EQ(info(gone, 0), "memGetInfo() :: pointer found, but invalid!\n");
}

TEST_F(Memory, FreeingWhatIsNotThereOrTracked)
{
    upfree(static_cast<void **>(nullptr));
    EXPECT_EQ(takeDebugLines(), QStringList{"upfree() pointerToPointer is NULL"});
    void *user = umalloc(4, "twice"), *const again = user;
    for (int twice = 0; twice < 2; ++twice)
        upfree(&user);
    EXPECT_EQ(user, nullptr);
    EXPECT_TRUE(takeDebugLines().isEmpty());
    ufree(again);
    EXPECT_EQ(takeDebugLines(), QStringList{kUnknownWarning});
    EXPECT_EQ(memSize(again), 0);
    memRecord.tracking = 0; // with which nothing is recorded
    ufree(umalloc(10, "plain"));
    ufree(ucalloc(10, 2, "zeroed"));
    EXPECT_EQ(memReport(true) + takeDebugLines().join("|"), "");
    EXPECT_EQ(memRecord.peakBlocks, 1);
}

TEST_F(Memory, ThreadsMayAllocateAtOnce)
{
    parallelRows(1000, 1 << 16, [](int first, int end) {
        for (int i = first; i < end; ++i)
            TrackedBuffer<int> buffer(size_t(i) + 1, "worker");
    });
    EXPECT_EQ(memRecord.currentBytes + memRecord.currentBlocks + memRecord.firstFree, 0);
}

TEST_F(Memory, WaitHandlesEventsMeanwhile)
{
    int seen = -1;
    QTimer::singleShot(0, [&seen] { seen = memRecord.waiting; });
    memWait(0);
    memWait(11);
    EXPECT_EQ(seen, -1);
    memWait(1);
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(memRecord.waiting, 0);
}

TEST(MemoryText, GroupsAndGuardsNumbers)
{
    for (const QString pair : {"=", "999=999", "-100=-100", "-1000=-1,000", "12x3456=12x3,456",
                               "1234567.8901.2=1,234,567.8901.2", "1234e=1234e"})
        EXPECT_EQ(groupDigits(pair.section('=', 0, 0), '.', ','), pair.section('=', 1));
    EXPECT_EQ(groupDigits(QString("1234567,5"), ',', '.'), "1.234.567,5");
    EXPECT_EQ(groupDigits(INT64_MIN), "-9,223,372,036,854,775,808");
    EXPECT_EQ(hexByte(0xA) + hexWord(0xBEEF) + hexLong(0x12), "0abeef00000012");
    EXPECT_EQ(reversed(hexQuad(0x1234)), "4321000000000000");
    EXPECT_EQ(nonZero(-0.0), 0.0001);
    EXPECT_EQ(atLeastTiny(-5), 1e-7);
}
} // namespace
