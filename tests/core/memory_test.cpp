// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/memory.h"
#include "support/debuglog.h"

#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{
const char kUnknownWarning[] = "WARNING: Unable to find memory to be freed in memblock list";

/// Each test starts from the record of a fresh process and puts the real one back.
class Memory : public testing::Test
{
protected:
    void SetUp() override
    {
        memRecord = *std::make_unique<MemRecord>();
        takeDebugLines();
    }
    void TearDown() override
    {
        memFailAt(0);
        for (const MemSlot &slot : memRecord.memblock)
            if (slot.inUse)
                std::free(slot.block);
        memRecord = *saved;
    }

    static QString info(const void *user, int hint)
    {
        QString text;
        memGetInfo(&text, user, hint);
        return text;
    }

private:
    std::unique_ptr<MemRecord> saved = std::make_unique<MemRecord>(memRecord);
};

const MemSlot &slotOf(int index)
{
    return memRecord.memblock[index];
}

TEST_F(Memory, BlocksLieBetweenTheirGuards)
{
    const unsigned char head[] = {0xDE, 0xAD, 0xBE, 0xEF, 0xBE, 0xDD, 0xAB, 0x1E};
    const unsigned char tail[] = {0xCA, 0x5C, 0xAD, 0xED, 0xDE, 0xCE, 0xA5, 0xED};
    const size_t sizes[] = {0, 1, 30, size_t(5) << 20}; // the last one on huge pages
    for (int i = 0; i < 4; ++i) {
        auto *user = static_cast<char *>(ucalloc(sizes[i], 2, "zeroed"));
        ASSERT_NE(user, nullptr);
        EXPECT_EQ(user, static_cast<char *>(slotOf(i).block) + 8);
        EXPECT_EQ(std::memcmp(user - 8, head, 8), 0);
        EXPECT_EQ(std::memcmp(user + sizes[i] * 2, tail, 8), 0);
        EXPECT_EQ(std::count(user, user + sizes[i] * 2, 0), ptrdiff_t(sizes[i] * 2));
        EXPECT_EQ(memSize(user), int64_t(sizes[i] * 2));
        EXPECT_EQ(slotOf(i).count, int64_t(sizes[i]));
        EXPECT_EQ(slotOf(i).elementSize, 2);
    }
    umalloc(30, std::string(80, 'L').c_str());
    EXPECT_EQ(slotOf(4).count, 1);
    EXPECT_EQ(slotOf(4).elementSize, 46);
    EXPECT_EQ(std::string(slotOf(4).label), std::string(62, 'L'));
    EXPECT_TRUE(memRelabel(slotOf(4).user, "other"));
    EXPECT_STREQ(slotOf(4).label, "other");
    EXPECT_FALSE(memRelabel(this, "other"));
}

TEST_F(Memory, OnlyUcallocRaisesThePeak)
{
    void *plain = umalloc(1000, "plain");
    EXPECT_EQ(memRecord.peakBytes, 0);
    ufree(ucalloc(10, 4, "zeroed"));
    EXPECT_EQ(memRecord.peakBytes, 1040);
    upfree(&plain);
    EXPECT_EQ(plain, nullptr);
    EXPECT_EQ(memRecord.currentBytes, 0);
    EXPECT_EQ(memRecord.currentBlocks, 0);
    EXPECT_EQ(memRecord.peakBlocks, 2);
}

TEST_F(Memory, RefusedRequestsStayCounted)
{
    memFailAt(2);
    void *block = ucalloc(3, 2, "granted");
    void *refused = block;
    EXPECT_FALSE(ucalloc(&refused, 5, 2, "refused"));
    EXPECT_EQ(refused, nullptr);
    EXPECT_TRUE(ucalloc(&refused, 1, 1, "after"));
    EXPECT_EQ(memRecord.allocationFailures, 1);
    EXPECT_STREQ(memRecord.lastFailLabel, "refused");
    EXPECT_EQ(memRecord.currentBytes, 6 + 10 + 1);
    EXPECT_EQ(memRecord.currentBlocks, 2);

    // A product or a block beyond 64 bits is refused too, and has no size to count.
    EXPECT_EQ(ucalloc(SIZE_MAX / 2, 4, "product"), nullptr);
    EXPECT_EQ(umalloc(SIZE_MAX - 4, "whole block"), nullptr);
    EXPECT_EQ(memRecord.allocationFailures, 3);
    EXPECT_STREQ(memRecord.lastFailLabel, "whole block");
    EXPECT_EQ(memRecord.currentBytes, 17);
}

TEST_F(Memory, LogsATotalThatRunsOver)
{
    constexpr size_t half = size_t(1) << 62;
    for (int i = 0; i < 2; ++i) {
        memFailAt(1); // the sanitizers would take such a request for a mistake
        EXPECT_EQ(umalloc(half, "refused"), nullptr);
    }
    EXPECT_EQ(takeDebugLines(),
              QStringList{"total has gone negative in umalloc -9223372036854775808"});
    void *user = ucalloc(1, 8, "c");
    EXPECT_EQ(takeDebugLines(),
              QStringList{"total has gone negative in ucalloc -9223372036854775800"});
    ufree(user);
    EXPECT_EQ(takeDebugLines(), QStringList{"total has gone negative -9223372036854775808 c"});
}

struct Damage {
    int offset; ///< of the byte written, from the user pointer of 16 bytes
    int underruns, overruns;
};

TEST_F(Memory, DamagedGuardsAreCountedOnce)
{
    for (const Damage &damage : {Damage{-8, 1, 0}, Damage{-1, 1, 0}, Damage{0, 0, 0},
                                 Damage{15, 0, 0}, Damage{16, 0, 1}, Damage{23, 0, 1}}) {
        for (const bool swept : {true, false}) {
            memRecord = *std::make_unique<MemRecord>();
            auto *user = static_cast<unsigned char *>(umalloc(16, "victim"));
            user[damage.offset] ^= 0x55;
            for (int i = 0; swept && i < 3; ++i)
                memSweep();
            ufree(user);
            EXPECT_EQ(memRecord.underruns, damage.underruns) << damage.offset;
            EXPECT_EQ(memRecord.overruns, damage.overruns) << damage.offset;
            QStringList expected;
            if (swept && damage.underruns)
                expected << "Block 1 under-run: victim";
            if (swept && damage.overruns)
                expected << "Block 1 over-run: victim";
            EXPECT_EQ(takeDebugLines(), expected) << damage.offset << swept;
        }
    }
}

TEST_F(Memory, TakesTheLowestSlotThatWasFreed)
{
    std::vector<void *> users;
    for (int i = 0; i < 6; ++i)
        users.push_back(umalloc(8, "x"));
    ufree(users[3]);
    ufree(users[1]);
    EXPECT_EQ(memRecord.firstFree, 1);
    EXPECT_EQ(slotOf(1).size, 0);
    void *user = umalloc(8, "y");
    EXPECT_EQ(slotOf(1).user, user);
    EXPECT_EQ(memRecord.firstFree, 3);
    umalloc(8, "z");
    EXPECT_EQ(memRecord.firstFree, 6);
    EXPECT_EQ(memRecord.longestSearch, 3);
}

TEST_F(Memory, AFullTableLosesTheLastBlockButNotTheMemory)
{
    for (int i = 0; i < kMemSlots - 1; ++i)
        umalloc(1, "x");
    EXPECT_TRUE(takeDebugLines().isEmpty());
    void *lost[3];
    for (void *&user : lost)
        user = umalloc(1, "x");
    void *kept = umalloc(1, "x");
    ASSERT_NE(kept, nullptr);
    const QString full = "WARNING: Unable to find an empty memblock for \"x\"!";
    EXPECT_EQ(takeDebugLines(), (QStringList{full, full, full, full}));
    EXPECT_EQ(slotOf(kMemSlots - 1).user, kept);
    EXPECT_EQ(memRecord.currentBlocks, kMemSlots + 3);
    for (void *user : lost) {
        ufree(user);
        EXPECT_EQ(takeDebugLines(), QStringList{kUnknownWarning});
        std::free(static_cast<char *>(user) - 8);
    }

    // More blocks are counted than the table has: sweep and pack stay within it.
    ufree(slotOf(0).user);
    memSweep();
    EXPECT_EQ(memPack(), QStringLiteral("Packed: 32768\u219232770"));
    EXPECT_EQ(memRecord.firstFree, kMemSlots - 1);
}

TEST_F(Memory, PackMovesRecordsOnly)
{
    EXPECT_EQ(memPack(), "Nothing to pack");
    std::vector<void *> users;
    for (int i = 0; i < 5; ++i)
        users.push_back(umalloc(size_t(i + 1), "x"));
    EXPECT_EQ(memPack(), "Tight: 5=5");
    ufree(users[0]);
    ufree(users[2]);
    EXPECT_EQ(memPack(), QStringLiteral("Packed: 5\u21923"));
    EXPECT_EQ(memRecord.firstFree, 3);
    for (const int i : {1, 3, 4})
        EXPECT_EQ(memSize(users[size_t(i)]), i + 1);
    EXPECT_EQ(slotOf(0).user, users[1]);
    EXPECT_EQ(slotOf(3).inUse, 0);
    EXPECT_EQ(memPack(), "Tight: 3=3");
}

TEST_F(Memory, ReportsEveryLine)
{
    EXPECT_TRUE(memReport(true).endsWith("\n0 Memory Underruns\n0 Memory Overruns\n"
                                         "0 Memory Allocation Failures\nNo slots in use"));
    void *first = umalloc(1234567, "first %1");
    void *gone = ucalloc(1000, 2, "gone");
    auto *third = static_cast<char *>(ucalloc(3, 4, "third"));
    ufree(gone);
    memFailAt(1);
    umalloc(10, "refused");
    third[-1] = third[12] = 0;
    memSweep();
    EXPECT_EQ(memReport(true), "Current # of Memory Blocks: 2\n"
                               "Current Size of Allocated Memory: 1,234,589\n"
                               "Peak Amount of Allocated Memory: 1,236,579\n"
                               "Peak Concurrent Memory Blocks: 3\n"
                               "First free Block: 2\n"
                               "Longest block search: 1\n"
                               "1 Memory Underruns\n"
                               "Most recent Memory Underun: third\n"
                               "1 Memory Overruns\n"
                               "Most recent Memory Overrun: third\n"
                               "1 Allocation Failures\n"
                               "Most recent Allocation Failure: refused\n"
                               "Slot 1: first %1 -- 1,234,567 (1 x 1,234,583)\n"
                               "Slot 3: third -- 12 (3 x 4)");
    EXPECT_FALSE(memReport(false).contains("Slot"));

    EXPECT_EQ(info(first, -1), "Slot 1: first %1 -- 1,234,567 (1 x 1,234,583)\n");
    EXPECT_EQ(info(first, 1), "memGetInfo() :: pointer not found!\n");
    EXPECT_EQ(info(first, kMemSlots), "memGetInfo() :: pointer not found!\n");
    EXPECT_EQ(info(gone, 0), "memGetInfo() :: pointer found, but invalid!\n");
}

TEST_F(Memory, WithoutTrackingNothingIsRecorded)
{
    memRecord.tracking = 0;
    ufree(umalloc(10, "plain"));
    ufree(ucalloc(10, 2, "zeroed"));
    EXPECT_EQ(memReport(true), QString());
    EXPECT_EQ(memRecord.peakBlocks, 0);
    EXPECT_TRUE(takeDebugLines().isEmpty());
}

TEST_F(Memory, FreeingWhatIsNotThereIsLoggedOnly)
{
    upfree(static_cast<void **>(nullptr));
    EXPECT_EQ(takeDebugLines(), QStringList{"upfree() pointerToPointer is NULL"});
    uint16_t *null = nullptr;
    upfree(&null);
    EXPECT_TRUE(takeDebugLines().isEmpty());
    void *user = umalloc(4, "twice");
    ufree(user);
    ufree(user);
    EXPECT_EQ(takeDebugLines(), QStringList{kUnknownWarning});
    EXPECT_EQ(memSize(user), 0);
}

TEST_F(Memory, ThreadsMayAllocateAtOnce)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] {
            for (size_t i = 1; i < 300; ++i)
                TrackedBuffer<int> buffer(i, "worker");
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(memRecord.currentBytes, 0);
    EXPECT_EQ(memRecord.currentBlocks, 0);
    EXPECT_EQ(memRecord.firstFree, 0);
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

TEST(MemoryText, GroupsDigits)
{
    const char *cases[][2] = {{"", ""},
                              {"999", "999"},
                              {"1000", "1,000"},
                              {"-100", "-100"},
                              {"-1000", "-1,000"},
                              {"1234567.8901.2", "1,234,567.8901.2"},
                              {"12x3456", "12x3,456"},
                              {"1234e", "1234e"}};
    for (const auto &[number, grouped] : cases)
        EXPECT_EQ(groupDigits(QString(number), '.', ','), grouped);
    EXPECT_EQ(groupDigits(QString("1234567,5"), ',', '.'), "1.234.567,5");
    EXPECT_EQ(groupDigits(INT64_MIN), "-9,223,372,036,854,775,808");
}

TEST(MemoryText, FormatsAndGuardsNumbers)
{
    EXPECT_EQ(hexByte(0xA), "0a");
    EXPECT_EQ(hexWord(0xBEEF), "beef");
    EXPECT_EQ(hexLong(0x12), "00000012");
    EXPECT_EQ(hexQuad(UINT64_MAX), "ffffffffffffffff");
    EXPECT_EQ(reversed("abc"), "cba");
    EXPECT_EQ(nonZero(-0.0), 0.0001);
    EXPECT_TRUE(std::isnan(nonZero(NAN)));
    EXPECT_EQ(atLeastTiny(-5), 1e-7);
}
} // namespace
