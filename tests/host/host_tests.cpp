// Tests of libnimbet_host.so through its exported C interface.

#include "nimbet_host.h"
#include "nimbet_host_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

extern "C" int nimbet_host_c_smoke(void);

namespace {

using AllocFn = void *(*)(uint32_t);
using FreeFn = void (*)(void *);

class HostTest : public ::testing::Test {
protected:
    void SetUp() override { NIMBET_HostTest_Reset(); }
    void TearDown() override {
        EXPECT_EQ(NIMBET_HostTest_OutstandingTotal(), 0u) << "a test leaked host memory";
        NIMBET_HostTest_Reset();
    }
};

// ---- Memory ----

struct CrossFreeCase {
    const char *name;
    AllocFn alloc;
    uint32_t origin;
    FreeFn release;
    uint32_t via;
};

// Short names in the test list instead of byte dumps of each case.
void PrintTo(const CrossFreeCase &c, std::ostream *os) { *os << c.name; }

class CrossFree : public HostTest, public ::testing::WithParamInterface<CrossFreeCase> {};

TEST_P(CrossFree, EitherFreeTakesEitherBlockAndChargesTheMaker) {
    const CrossFreeCase &c = GetParam();
    const uint32_t other = 1u - c.origin;
    constexpr uint32_t kSize = 2 * sizeof(void *);

    c.release(nullptr);  // a no-op, not counted
    EXPECT_EQ(NIMBET_HostTest_FreeCount(c.via), 0u);

    void *block = c.alloc(kSize);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0u);
    std::memset(block, 0x5A, kSize);  // the whole size is usable (the sanitizer build checks)
    EXPECT_EQ(NIMBET_HostTest_LastAllocSize(), kSize);
    EXPECT_EQ(NIMBET_HostTest_AllocCount(c.origin), 1u);
    EXPECT_EQ(NIMBET_HostTest_AllocCount(other), 0u);
    EXPECT_EQ(NIMBET_HostTest_Outstanding(c.origin), 1u);
    EXPECT_EQ(NIMBET_HostTest_Outstanding(other), 0u);
    EXPECT_EQ(NIMBET_HostTest_OutstandingTotal(), 1u);

    c.release(block);
    EXPECT_EQ(NIMBET_HostTest_Outstanding(c.origin), 0u);
    EXPECT_EQ(NIMBET_HostTest_Outstanding(other), 0u);
    EXPECT_EQ(NIMBET_HostTest_FreeCount(c.via), 1u);
    EXPECT_EQ(NIMBET_HostTest_FreeCount(1u - c.via), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, CrossFree,
    ::testing::Values(
        CrossFreeCase{"GeneralByGeneral", NIMBET_AllocMem, NIMBET_HOST_ALLOC_GENERAL, NIMBET_FreeMem,
                      NIMBET_HOST_ALLOC_GENERAL},
        CrossFreeCase{"GeneralByUrpf", NIMBET_AllocMem, NIMBET_HOST_ALLOC_GENERAL, NIMBET_URPF_FreeMem,
                      NIMBET_HOST_ALLOC_URPF},
        CrossFreeCase{"UrpfByGeneral", NIMBET_URPF_AllocMem, NIMBET_HOST_ALLOC_URPF, NIMBET_FreeMem,
                      NIMBET_HOST_ALLOC_GENERAL},
        CrossFreeCase{"UrpfByUrpf", NIMBET_URPF_AllocMem, NIMBET_HOST_ALLOC_URPF, NIMBET_URPF_FreeMem,
                      NIMBET_HOST_ALLOC_URPF}),
    [](const ::testing::TestParamInfo<CrossFreeCase> &info) { return std::string(info.param.name); });

TEST_F(HostTest, OutstandingFollowsEveryBlockBackToZero) {
    std::vector<void *> general;
    std::vector<void *> urpf;
    for (uint32_t i = 0; i < 5; ++i) {
        general.push_back(NIMBET_AllocMem(i));  // size 0 included: still a distinct block
        urpf.push_back(NIMBET_URPF_AllocMem(16 + i));
    }
    ASSERT_EQ(std::count(general.begin(), general.end(), nullptr), 0);
    ASSERT_EQ(std::count(urpf.begin(), urpf.end(), nullptr), 0);
    EXPECT_NE(general[0], general[1]);
    EXPECT_EQ(NIMBET_HostTest_Outstanding(NIMBET_HOST_ALLOC_GENERAL), 5u);
    EXPECT_EQ(NIMBET_HostTest_Outstanding(NIMBET_HOST_ALLOC_URPF), 5u);
    EXPECT_EQ(NIMBET_HostTest_OutstandingTotal(), 10u);

    for (std::size_t i = 0; i < 5; ++i) {
        NIMBET_URPF_FreeMem(general[i]);
        NIMBET_FreeMem(urpf[i]);
        EXPECT_EQ(NIMBET_HostTest_OutstandingTotal(), 8u - 2u * i);
    }
    EXPECT_EQ(NIMBET_HostTest_AllocCount(NIMBET_HOST_ALLOC_GENERAL), 5u);
    EXPECT_EQ(NIMBET_HostTest_AllocCount(NIMBET_HOST_ALLOC_URPF), 5u);
}

TEST_F(HostTest, BlocksFromBeforeResetLeaveTheNewCountsAlone) {
    void *old = NIMBET_AllocMem(8);
    ASSERT_NE(old, nullptr);
    NIMBET_HostTest_Reset();
    EXPECT_EQ(NIMBET_HostTest_OutstandingTotal(), 0u);

    void *fresh = NIMBET_AllocMem(8);
    ASSERT_NE(fresh, nullptr);
    NIMBET_URPF_FreeMem(old);
    EXPECT_EQ(NIMBET_HostTest_Outstanding(NIMBET_HOST_ALLOC_GENERAL), 1u);
    NIMBET_FreeMem(fresh);
}

// One allocation call of a planned sequence; the allocator alternates so the
// countdown is shown to span both.
struct FailAllocCase {
    const char *name;
    uint32_t nth;
    uint32_t times;
    std::vector<bool> fails;  // expected outcome of each call after arming
};

void PrintTo(const FailAllocCase &c, std::ostream *os) { *os << c.name; }

class FailAlloc : public HostTest, public ::testing::WithParamInterface<FailAllocCase> {};

TEST_P(FailAlloc, FailsExactlyThePlannedCalls) {
    const FailAllocCase &c = GetParam();
    NIMBET_HostTest_FailAlloc(c.nth, c.times);

    std::vector<void *> blocks;
    uint64_t expectedFailures = 0;
    uint64_t expectedSuccesses[2] = {0, 0};
    for (std::size_t i = 0; i < c.fails.size(); ++i) {
        const uint32_t allocator = static_cast<uint32_t>(i % 2);
        void *block = allocator == NIMBET_HOST_ALLOC_GENERAL ? NIMBET_AllocMem(24) : NIMBET_URPF_AllocMem(24);
        EXPECT_EQ(block == nullptr, c.fails[i]) << "call " << i + 1;
        if (block != nullptr) {
            blocks.push_back(block);
            ++expectedSuccesses[allocator];
        } else {
            ++expectedFailures;
        }
    }
    EXPECT_EQ(NIMBET_HostTest_FailedAllocs(), expectedFailures);
    EXPECT_EQ(NIMBET_HostTest_AllocCount(NIMBET_HOST_ALLOC_GENERAL), expectedSuccesses[0]);
    EXPECT_EQ(NIMBET_HostTest_AllocCount(NIMBET_HOST_ALLOC_URPF), expectedSuccesses[1]);
    EXPECT_EQ(NIMBET_HostTest_OutstandingTotal(), blocks.size());
    for (void *b : blocks) {
        NIMBET_FreeMem(b);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Plans, FailAlloc,
    ::testing::Values(FailAllocCase{"NextCall", 1, 1, {true, false, false}},
                      FailAllocCase{"ThirdCall", 3, 1, {false, false, true, false, false}},
                      FailAllocCase{"TwoInARowAcrossAllocators", 2, 2, {false, true, true, false}},
                      FailAllocCase{"ZeroTimesMeansOnce", 1, 0, {true, false}},
                      FailAllocCase{"ZeroNthDisarms", 0, 3, {false, false, false}}),
    [](const ::testing::TestParamInfo<FailAllocCase> &info) { return std::string(info.param.name); });

TEST_F(HostTest, ArmingAgainReplacesThePlan) {
    NIMBET_HostTest_FailAlloc(1, 5);
    NIMBET_HostTest_FailAlloc(2, 1);
    void *first = NIMBET_AllocMem(8);
    void *second = NIMBET_AllocMem(8);
    void *third = NIMBET_AllocMem(8);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_NE(third, nullptr);
    EXPECT_EQ(NIMBET_HostTest_LastAllocSize(), 8u);
    NIMBET_FreeMem(first);
    NIMBET_FreeMem(third);

    NIMBET_HostTest_FailAlloc(1, 1);
    NIMBET_HostTest_FailAlloc(0, 0);
    void *after = NIMBET_URPF_AllocMem(8);
    EXPECT_NE(after, nullptr);
    NIMBET_URPF_FreeMem(after);
}

// ---- Diagnostic record ----

TEST_F(HostTest, DiagKeepsWordsAndFormattedText) {
    struct Case {
        uint32_t words[4];
        std::string expected;
    };
    const Case cases[] = {
        {{1, 0, 2, 1}, "nimbet db create object failed, ret = 15005"},
        {{5, 0, 4, 3}, "nimbet db Creat iterator, ret = -7."},
        {{0xFFFFFFFFu, 7, 8, 9}, "trunkIfIndex = 4294967295"},
        {{1, 2, 3, 4}, "iface eth0 slot 3"},
    };
    EXPECT_EQ(NIMBET_DIAG_Record(1, 0, 2, 1, "nimbet db create object failed, ret = %d", 15005), 0u);
    NIMBET_DIAG_Record(5, 0, 4, 3, "nimbet db Creat iterator, ret = %d.", -7);
    NIMBET_DIAG_Record(0xFFFFFFFFu, 7, 8, 9, "trunkIfIndex = %u", 0xFFFFFFFFu);
    NIMBET_DIAG_Record(1, 2, 3, 4, "iface %s slot %u", "eth0", 3u);

    ASSERT_EQ(NIMBET_HostTest_DiagCount(), std::size(cases));
    for (uint32_t i = 0; i < std::size(cases); ++i) {
        NIMBET_HOST_DIAG_LINE line{};
        ASSERT_EQ(NIMBET_HostTest_DiagGet(i, &line), 0);
        for (int w = 0; w < 4; ++w) {
            EXPECT_EQ(line.words[w], cases[i].words[w]) << "line " << i << " word " << w;
        }
        EXPECT_EQ(std::string(line.text), cases[i].expected);
        EXPECT_EQ(line.length, cases[i].expected.size());
    }
}

TEST_F(HostTest, DiagCutsLongTextButReportsItsLength) {
    const std::string longText(NIMBET_HOST_DIAG_TEXT_MAX + 100, 'x');
    NIMBET_DIAG_Record(1, 0, 2, 1, "%s!", longText.c_str());
    NIMBET_HOST_DIAG_LINE line{};
    ASSERT_EQ(NIMBET_HostTest_DiagGet(0, &line), 0);
    EXPECT_EQ(line.length, longText.size() + 1);
    EXPECT_EQ(std::string(line.text), longText.substr(0, NIMBET_HOST_DIAG_TEXT_MAX - 1));
}

TEST_F(HostTest, DiagEdgeCases) {
    EXPECT_NE(NIMBET_DIAG_Record(9, 8, 7, 6, nullptr), 0u);
    NIMBET_HOST_DIAG_LINE line{};
    ASSERT_EQ(NIMBET_HostTest_DiagGet(0, &line), 0);
    EXPECT_EQ(line.words[0], 9u) << "a null format still keeps the words";
    EXPECT_EQ(line.words[3], 6u);
    EXPECT_STREQ(line.text, "");

    line.words[0] = 42;
    EXPECT_NE(NIMBET_HostTest_DiagGet(1, &line), 0);
    EXPECT_EQ(line.words[0], 42u) << "an index past the kept lines writes nothing";
    EXPECT_NE(NIMBET_HostTest_DiagGet(0, nullptr), 0);
}

TEST_F(HostTest, DiagDumpWritesKeptLinesOldestFirst) {
    NIMBET_DIAG_Record(1, 0, 2, 1, "first %d", 1);
    NIMBET_DIAG_Record(5, 0, 4, 3, "second");
    std::FILE *out = std::tmpfile();
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(NIMBET_HOST_DiagDump(out), 2u);
    std::rewind(out);
    std::array<char, 256> buf{};
    std::size_t n = std::fread(buf.data(), 1, buf.size() - 1, out);
    std::fclose(out);
    EXPECT_EQ(std::string(buf.data(), n), "1 0 2 1 first 1\n5 0 4 3 second\n");
    EXPECT_EQ(NIMBET_HOST_DiagDump(nullptr), 0u);
}

TEST_F(HostTest, DiagPrintsToStderrOnlyWhenEchoIsOn) {
    ::testing::internal::CaptureStderr();
    NIMBET_DIAG_Record(1, 0, 2, 1, "quiet");
    NIMBET_HOST_DiagEcho(1);
    NIMBET_DIAG_Record(5, 0, 4, 3, "loud %d", 2);
    NIMBET_HOST_DiagEcho(0);
    NIMBET_DIAG_Record(1, 0, 2, 1, "quiet again");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "5 0 4 3 loud 2\n");
    EXPECT_EQ(NIMBET_HostTest_DiagCount(), 3u);
}

// ---- memcpy_s ----

#if defined(NIMBET_HOST_PROVIDES_MEMCPY_S)

constexpr std::size_t kBuf = 64;

enum class Src { Null, Separate, InsideDest };
enum class After { Copied, Zeroed, Untouched };

struct MemcpyCase {
    const char *name;
    bool nullDest;
    Src src;
    std::ptrdiff_t srcOffset;  // for InsideDest: src = dest + srcOffset
    std::size_t destMax;
    std::size_t count;
    bool ok;
    After after;
};

void PrintTo(const MemcpyCase &c, std::ostream *os) { *os << c.name; }

class MemcpyS : public HostTest, public ::testing::WithParamInterface<MemcpyCase> {};

TEST_P(MemcpyS, FollowsTheBoundsCheckedRules) {
    const MemcpyCase &c = GetParam();
    // dest sits at offset 16 of the buffer so a source may start before it.
    std::array<unsigned char, kBuf> buf{};
    std::array<unsigned char, kBuf> separate{};
    for (std::size_t i = 0; i < kBuf; ++i) {
        buf[i] = static_cast<unsigned char>(i + 1);
        separate[i] = static_cast<unsigned char>(0x40 + i);
    }
    const auto before = buf;
    unsigned char *dest = c.nullDest ? nullptr : buf.data() + 16;
    const unsigned char *src = c.src == Src::Null       ? nullptr
                               : c.src == Src::Separate ? separate.data()
                                                        : buf.data() + 16 + c.srcOffset;

    const int rc = memcpy_s(dest, c.destMax, src, c.count);
    EXPECT_EQ(rc == 0, c.ok) << "rc " << rc;

    std::size_t changedEnd = 16;  // bytes at and after this index must be as before
    switch (c.after) {
    case After::Copied:
        for (std::size_t i = 0; i < c.count; ++i) {
            ASSERT_EQ(buf[16 + i], c.src == Src::Separate ? separate[i] : before[16 + c.srcOffset + i]) << i;
        }
        changedEnd = 16 + c.count;
        break;
    case After::Zeroed:
        for (std::size_t i = 0; i < c.destMax; ++i) {
            ASSERT_EQ(buf[16 + i], 0) << i;
        }
        changedEnd = 16 + c.destMax;
        break;
    case After::Untouched:
        break;
    }
    for (std::size_t i = 0; i < kBuf; ++i) {
        if (i < 16 || i >= changedEnd) {
            ASSERT_EQ(buf[i], before[i]) << "byte " << i << " outside the allowed range changed";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MemcpyS,
    ::testing::Values(
        MemcpyCase{"FullDestination", false, Src::Separate, 0, 16, 16, true, After::Copied},
        MemcpyCase{"ShorterThanDestination", false, Src::Separate, 0, 16, 5, true, After::Copied},
        MemcpyCase{"NothingToCopy", false, Src::Separate, 0, 16, 0, true, After::Untouched},
        MemcpyCase{"AdjacentSourceAfter", false, Src::InsideDest, 8, 8, 8, true, After::Copied},
        MemcpyCase{"AdjacentSourceBefore", false, Src::InsideDest, -8, 8, 8, true, After::Copied},
        MemcpyCase{"NullDestination", true, Src::Separate, 0, 16, 16, false, After::Untouched},
        MemcpyCase{"NullSource", false, Src::Null, 0, 16, 16, false, After::Zeroed},
        MemcpyCase{"CountAboveDestMax", false, Src::Separate, 0, 6, 7, false, After::Zeroed},
        MemcpyCase{"CountAboveRsizeMax", false, Src::Separate, 0, 16, SIZE_MAX, false, After::Zeroed},
        MemcpyCase{"DestMaxAboveRsizeMax", false, Src::Separate, 0, SIZE_MAX, 16, false, After::Untouched},
        MemcpyCase{"SourceOverlapsTail", false, Src::InsideDest, 4, 16, 8, false, After::Zeroed},
        MemcpyCase{"SourceOverlapsHead", false, Src::InsideDest, -4, 16, 8, false, After::Zeroed},
        MemcpyCase{"SameRange", false, Src::InsideDest, 0, 16, 1, false, After::Zeroed}),
    [](const ::testing::TestParamInfo<MemcpyCase> &info) { return std::string(info.param.name); });

TEST_F(HostTest, MemcpyHookFailsTheNextCallsWithoutCopying) {
    const unsigned char src[6] = {1, 2, 3, 4, 5, 6};
    unsigned char dest[6] = {9, 9, 9, 9, 9, 9};
    const unsigned char untouched[6] = {9, 9, 9, 9, 9, 9};

    ASSERT_EQ(NIMBET_HostTest_FailMemcpy(2, 77), 0);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(memcpy_s(dest, sizeof dest, src, sizeof src), 77);
        EXPECT_EQ(std::memcmp(dest, untouched, sizeof dest), 0);
    }
    EXPECT_EQ(memcpy_s(dest, sizeof dest, src, sizeof src), 0);
    EXPECT_EQ(std::memcmp(dest, src, sizeof dest), 0);

    ASSERT_EQ(NIMBET_HostTest_FailMemcpy(1, 0), 0);
    EXPECT_NE(memcpy_s(dest, sizeof dest, src, sizeof src), 0) << "a status of 0 must still fail";
    EXPECT_EQ(NIMBET_HostTest_MemcpyCalls(), 4u);

    NIMBET_HostTest_FailMemcpy(3, 5);
    NIMBET_HostTest_Reset();
    EXPECT_EQ(memcpy_s(dest, sizeof dest, src, sizeof src), 0) << "reset must disarm the hook";
}

#endif  // NIMBET_HOST_PROVIDES_MEMCPY_S

// ---- Threads ----

TEST_F(HostTest, ConcurrentUseKeepsTheAccountsExact) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 2000;
    constexpr uint32_t kInjected = 37;
    NIMBET_HostTest_FailAlloc(1, kInjected);

    std::atomic<uint64_t> nulls{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &nulls] {
            std::array<void *, 4> held{};
            for (int r = 0; r < kRounds; ++r) {
                void *&slot = held[static_cast<std::size_t>(r) % held.size()];
                // Each block goes back through the other allocator's free.
                if (r % 2 == 0) {
                    NIMBET_URPF_FreeMem(slot);
                    slot = NIMBET_AllocMem(16);
                } else {
                    NIMBET_FreeMem(slot);
                    slot = NIMBET_URPF_AllocMem(16);
                }
                if (slot == nullptr) {
                    nulls.fetch_add(1);
                } else {
                    std::memset(slot, t, 16);
                }
                if (r % 64 == 0) {
                    NIMBET_DIAG_Record(static_cast<uint32_t>(t), 0, 0, 0, "thread %d round %d", t, r);
                }
            }
            for (void *b : held) {
                NIMBET_FreeMem(b);
            }
        });
    }
    for (auto &th : threads) {
        th.join();
    }

    const uint64_t calls = uint64_t{kThreads} * kRounds;
    EXPECT_EQ(nulls.load(), kInjected);
    EXPECT_EQ(NIMBET_HostTest_FailedAllocs(), kInjected);
    EXPECT_EQ(NIMBET_HostTest_AllocCount(NIMBET_HOST_ALLOC_GENERAL) +
                  NIMBET_HostTest_AllocCount(NIMBET_HOST_ALLOC_URPF),
              calls - kInjected);
    EXPECT_EQ(NIMBET_HostTest_OutstandingTotal(), 0u);
    EXPECT_EQ(NIMBET_HostTest_DiagTotal(), uint64_t{kThreads} * ((kRounds + 63) / 64));
}

// ---- C hosts ----

TEST_F(HostTest, HeadersWorkFromC) { EXPECT_EQ(nimbet_host_c_smoke(), 0) << "first failing step"; }

}  // namespace
