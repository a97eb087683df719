// URPF mode and trunk member tables.
#include <set>

#include "support.h"

namespace nimbet_test {
namespace {

class Urpf : public LibTest {};

NIMBET_DB_URPF_MODE_ENTRY mode(uint32_t key1, uint32_t key2) {
    NIMBET_DB_URPF_MODE_ENTRY e;
    std::memset(&e, 0xAA, sizeof e);  // the caller's own fields included
    e.key1 = key1;
    e.key2 = key2;
    e.key3 = 3;
    e.svcStatus = 4;
    e.value1 = 5;
    e.value2 = 6;
    e.value3 = 0x0708;
    e.value4 = 0x090A0B0C;
    e.flags = 0x11223344;
    e.tableSmoothId = 0x55667788;
    return e;
}

std::vector<uint8_t> mode_row(uint32_t key1, uint32_t key2, uint8_t key3) {
    std::vector<uint8_t> row(36);
    DB_HANDLE h = 0;
    EXPECT_EQ(0u, db_create_urpf_mode_obj(DB_OPEN_READ, 0, &h));
    const uint32_t desc = 0x00010009u;
    uint8_t key[9];
    std::memcpy(key, &key1, 4);
    std::memcpy(key + 4, &key2, 4);
    key[8] = key3;
    EXPECT_EQ(0u, db_read_obj_with_buf(h, &desc, key, row.data(), 36));
    db_release_urpf_mode_object(h);
    return row;
}

TEST_F(Urpf, ModeRowLayoutAndTheCallersFields) {
    const NIMBET_DB_URPF_MODE_ENTRY e = mode(1, 2);
    const int64_t lo = NIMBET_DB_GetSysTime();
    ASSERT_EQ(0u, NIMBET_DB_WriteUrpfMode(&e));
    const auto row = mode_row(1, 2, 3);
    EXPECT_EQ((std::vector<uint8_t>{3, 4, 0, 0, 5, 6, 8, 7, 0x0C, 0x0B, 0x0A, 9, 0x44, 0x33, 0x22, 0x11, 0x88, 0x77, 0x66,
                                    0x55}),
              std::vector<uint8_t>(row.begin() + 8, row.begin() + 28));
    int64_t stamp = 0;
    std::memcpy(&stamp, row.data() + 28, 8);
    EXPECT_LE(lo, stamp);
    NIMBET_DB_URPF_MODE_ENTRY got;
    std::memset(&got, 0x55, sizeof got);
    got.key1 = 1;
    got.key2 = 2;
    got.key3 = 3;
    ASSERT_EQ(0u, NIMBET_DB_ReadUrpfMode(&got));
    EXPECT_EQ(e.flags, got.flags);
    EXPECT_EQ(e.tableSmoothId, got.tableSmoothId);
    EXPECT_EQ(e.value3, got.value3);
    EXPECT_EQ(0x55, got.reserved1[0]);
    EXPECT_EQ(0x55, got.reserved2[3]);
    EXPECT_EQ(0x55, got.reserved3[127]);
    got.key1 = 9;
    EXPECT_EQ(NIMBET_DB_ITER_END, NIMBET_DB_ReadUrpfMode(&got)) << "no such row";
    EXPECT_TRUE(messages().empty());
}

TEST_F(Urpf, ByGroupWalkTakesUrpfMemoryAndReleasesToTheGeneralService) {
    for (uint32_t k = 0; k < 3; ++k) ASSERT_EQ(0u, NIMBET_DB_WriteUrpfMode(&(const NIMBET_DB_URPF_MODE_ENTRY &)mode(7, k)));
    ASSERT_EQ(0u, NIMBET_DB_WriteUrpfMode(&(const NIMBET_DB_URPF_MODE_ENTRY &)mode(8, 0)));
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreateUrpfModeIteratorByGroupId(7);
    ASSERT_NE(nullptr, it);
    EXPECT_EQ(1u, NIMBET_HostTest_AllocCount(NIMBET_HOST_ALLOC_URPF));
    NIMBET_DB_URPF_MODE_ENTRY e = mode(0, 0);
    std::set<uint32_t> keys;
    while (NIMBET_DB_GetNextUrpfMode(it, &e) == 0) {
        EXPECT_EQ(7u, e.key1);
        keys.insert(e.key2);
    }
    NIMBET_DB_ReleaseUrpfModeIterator(it);
    EXPECT_EQ(3u, keys.size());
    EXPECT_EQ(1u, NIMBET_HostTest_FreeCount(NIMBET_HOST_ALLOC_GENERAL));
    EXPECT_EQ(0u, NIMBET_HostTest_FreeCount(NIMBET_HOST_ALLOC_URPF));
}

TEST_F(Urpf, ModeWalkStepFailureAnswersTheStatusItself) {
    ASSERT_EQ(0u, NIMBET_DB_WriteUrpfMode(&(const NIMBET_DB_URPF_MODE_ENTRY &)mode(1, 1)));
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreateUrpfModeIterator();
    ASSERT_NE(nullptr, it);
    ASSERT_EQ(0u, db_test_inject(DB_OP_ITER_NEXT, "urpf_mode", nullptr, 1, 1, 4321));
    NIMBET_DB_URPF_MODE_ENTRY e = mode(0, 0);
    EXPECT_EQ(4321u, NIMBET_DB_GetNextUrpfMode(it, &e));
    ASSERT_EQ(0u, db_test_inject(DB_OP_READ_WITH_BUF, "urpf_mode", nullptr, 1, 1, DB_RET_NO_RECORD));
    EXPECT_EQ(1u, NIMBET_DB_GetNextUrpfMode(it, &e)) << "a row gone inside a walk";
    NIMBET_DB_ReleaseUrpfModeIterator(it);
    EXPECT_EQ(std::vector<std::string>{"Get next urpf mode db fail. ret = 4321"}, texts());
    EXPECT_EQ((StatDelta{{{DB_STAT_URPF_MODE, DB_ERR_NEXT}, 1}}), stats());
}

TEST_F(Urpf, ModeRevalidationUpdatesFourFieldsInPlace) {
    NIMBET_DB_URPF_MODE_ENTRY e = mode(1, 2);
    ASSERT_EQ(0u, NIMBET_DB_WriteUrpfMode(&e));
    e.flags = 0xF1;
    e.svcStatus = 0xF2;
    e.tableSmoothId = 0xF3;
    e.value4 = 0xF4;  // not part of the re-validation
    ASSERT_EQ(0u, NIMBET_DB_UpdateUrpfValid(&e));
    NIMBET_DB_URPF_MODE_ENTRY got = mode(1, 2);
    ASSERT_EQ(0u, NIMBET_DB_ReadUrpfMode(&got));
    EXPECT_EQ(0xF1u, got.flags);
    EXPECT_EQ(0xF2, got.svcStatus);
    EXPECT_EQ(0xF3u, got.tableSmoothId);
    EXPECT_EQ(0x090A0B0Cu, got.value4);
}

TEST_F(Urpf, ModeRevalidationCallsEverySetterWhenOneFails) {
    const NIMBET_DB_URPF_MODE_ENTRY e = mode(1, 2);
    ASSERT_EQ(0u, NIMBET_DB_WriteUrpfMode(&e));
    db_test_reset_counts();
    ASSERT_EQ(0u, db_test_inject(DB_OP_SET_FIELD, "urpf_mode", "svcStatus", 1, 1, 0x40));
    EXPECT_EQ(1u, NIMBET_DB_UpdateUrpfValid(&e));
    EXPECT_EQ(4u, db_test_call_count(DB_OP_SET_FIELD, "urpf_mode"));
    EXPECT_EQ(0u, db_test_call_count(DB_OP_UPDATE, "urpf_mode"));
    EXPECT_EQ(std::vector<std::string>{"DB set urpf mode flags fail, ret = 64."}, texts());
    EXPECT_TRUE(stats().empty());
    messages().clear();
    ASSERT_EQ(0u, db_test_inject(DB_OP_UPDATE, "urpf_mode", nullptr, 1, 1, DB_RET_TOLERATED));
    EXPECT_EQ(0u, NIMBET_DB_UpdateUrpfValid(&e));
    ASSERT_EQ(0u, db_test_inject(DB_OP_UPDATE, "urpf_mode", nullptr, 1, 1, 9));
    EXPECT_EQ(1u, NIMBET_DB_UpdateUrpfValid(&e));
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, "urpf_mode", nullptr, 1, 1, 10));
    EXPECT_EQ(1u, NIMBET_DB_UpdateUrpfValid(&e));
    EXPECT_EQ((std::vector<std::string>{"Update urpf mode db fail. ret = 9", "Get create urpf mode obj fail. ret = 10"}),
              texts());
    EXPECT_EQ((StatDelta{{{DB_STAT_URPF_MODE, DB_ERR_TOLERATED}, 1}, {{DB_STAT_URPF_MODE, DB_ERR_UPDATE}, 1}}), stats());
}

// ---------------------------------------------------------------- trunk members

TEST_F(Urpf, TrunkMemberRowSwapsTheTwoIndexes) {
    const NIMBET_DB_URPF_TRUNKMEM_ENTRY e = {7, 3, 1};
    ASSERT_EQ(0u, NIMBET_DB_AddTrunkMember(&e));
    uint8_t img[20] = {};
    NIMBET_DB_SetTrunkMemInfo(&e, img);
    EXPECT_EQ((std::vector<uint8_t>{3, 0, 0, 0, 7, 0, 0, 0, 1, 0, 0, 0}), std::vector<uint8_t>(img, img + 12));
    NIMBET_DB_URPF_TRUNKMEM_ENTRY got = {};
    ASSERT_EQ(0u, NIMBET_DB_GetRecordByMember(3, &got));
    EXPECT_EQ((std::vector<uint32_t>{7, 3, 1}), (std::vector<uint32_t>{got.trunkIfIndex, got.memberIfIndex, got.flag}));
    EXPECT_EQ(NIMBET_DB_ITER_END, NIMBET_DB_GetRecordByMember(4, &got));
    ASSERT_EQ(0u, NIMBET_DB_DelTrunkMember(3));
    EXPECT_EQ(NIMBET_DB_ITER_END, NIMBET_DB_GetRecordByMember(3, &got));
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(1u, NIMBET_DB_AddTrunkMember(nullptr));
    EXPECT_EQ(1u, NIMBET_DB_GetRecordByMember(3, nullptr));
}

TEST_F(Urpf, MemberListingStopsAtMaxNum) {
    for (uint32_t m = 1; m <= 5; ++m) {
        const NIMBET_DB_URPF_TRUNKMEM_ENTRY e = {100, m, 0};
        ASSERT_EQ(0u, NIMBET_DB_AddTrunkMember(&e));
    }
    const NIMBET_DB_URPF_TRUNKMEM_ENTRY other = {200, 9, 0};
    ASSERT_EQ(0u, NIMBET_DB_AddTrunkMember(&other));
    struct Case {
        uint32_t trunk, maxNum, expected;
    };
    for (const Case &c : {Case{100, 0, 0}, Case{100, 3, 3}, Case{100, 8, 5}, Case{300, 8, 0}}) {
        std::vector<uint32_t> members(8, 0xEEEEEEEEu);
        uint32_t count = 99;
        EXPECT_EQ(0u, NIMBET_DB_GetTrunkMemByIfIndex(c.trunk, c.maxNum, members.data(), &count));
        EXPECT_EQ(c.expected, count);
        std::set<uint32_t> got(members.begin(), members.begin() + count);
        for (uint32_t m : got) EXPECT_TRUE(m >= 1 && m <= 5) << m;
        EXPECT_EQ(count, got.size());
        EXPECT_EQ(0xEEEEEEEEu, members[count]) << "nothing past the members found";
    }
    // Every walk took URPF memory and gave it back there.
    EXPECT_EQ(4u, NIMBET_HostTest_AllocCount(NIMBET_HOST_ALLOC_URPF));
    EXPECT_EQ(4u, NIMBET_HostTest_FreeCount(NIMBET_HOST_ALLOC_URPF));
    EXPECT_TRUE(messages().empty());
}

TEST_F(Urpf, MemberListingFailures) {
    const NIMBET_DB_URPF_TRUNKMEM_ENTRY e = {100, 1, 0};
    ASSERT_EQ(0u, NIMBET_DB_AddTrunkMember(&e));
    uint32_t members[2] = {0xEE, 0xEE}, count = 99;
    // A first step that fails: result 0 with nothing found.
    ASSERT_EQ(0u, db_test_inject(DB_OP_ITER_NEXT, "urpf_trunkmem", nullptr, 1, 1, 55));
    EXPECT_EQ(0u, NIMBET_DB_GetTrunkMemByIfIndex(100, 2, members, &count));
    EXPECT_EQ(0u, count);
    EXPECT_EQ(std::vector<std::string>{"Get next urpf trunkmem db failed. ret = 55"}, texts());
    EXPECT_EQ((StatDelta{{{DB_STAT_URPF_TRUNKMEM, DB_ERR_NEXT}, 1}}), stats());
    // No walk at all: a diagnostic record, result 1, outputs untouched.
    count = 99;
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_ROOT_ITER, "urpf_trunkmem", nullptr, 1, 1, 56));
    EXPECT_EQ(1u, NIMBET_DB_GetTrunkMemByIfIndex(100, 2, members, &count));
    EXPECT_EQ(99u, count);
    EXPECT_EQ(0xEEu, members[0]);
    NIMBET_HOST_DIAG_LINE line{};
    ASSERT_EQ(0, NIMBET_HostTest_DiagGet(0, &line));
    EXPECT_STREQ("nimbet urpf trunkmem get db failed, handle is NULL, trunkIfIndex = 100", line.text);
    EXPECT_EQ((std::vector<uint32_t>{1, 0, 2, 1}), std::vector<uint32_t>(line.words, line.words + 4));
    EXPECT_EQ(1u, NIMBET_DB_GetTrunkMemByIfIndex(100, 2, nullptr, &count));
}

TEST_F(Urpf, TrunkOpenFailuresPassTheStatusOnlyForAddAndLookUp) {
    const NIMBET_DB_URPF_TRUNKMEM_ENTRY e = {1, 2, 3};
    NIMBET_DB_URPF_TRUNKMEM_ENTRY got{};
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, "urpf_trunkmem", nullptr, 1, 4, 77));
    EXPECT_EQ(77u, NIMBET_DB_AddTrunkMember(&e));
    EXPECT_EQ(77u, NIMBET_DB_GetRecordByMember(2, &got));
    EXPECT_EQ(1u, NIMBET_DB_DelTrunkMember(2));
    EXPECT_EQ(1u, NIMBET_DB_UpdateUrpfTrunkMemValid(&e));
    const std::string open = "Create urpf trunkmem db obj fail. ret = 77";
    EXPECT_EQ((std::vector<std::string>{open, open, open, "Create urpf trunkmem db obj failed, ret = 77."}), texts());
    EXPECT_TRUE(stats().empty());
}

TEST_F(Urpf, TrunkWalkEndsWhenTheRowVanishes) {
    for (uint32_t m = 1; m <= 2; ++m) {
        const NIMBET_DB_URPF_TRUNKMEM_ENTRY e = {5, m, 0};
        ASSERT_EQ(0u, NIMBET_DB_AddTrunkMember(&e));
    }
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreateUrpfTrunkIfIndexIterator(5);
    ASSERT_NE(nullptr, it);
    NIMBET_DB_URPF_TRUNKMEM_ENTRY got{};
    ASSERT_EQ(0u, NIMBET_DB_GetNextUrpfTrunk(it, &got));
    ASSERT_EQ(0u, NIMBET_DB_DelTrunkMember(got.memberIfIndex == 1 ? 2 : 1));
    EXPECT_EQ(NIMBET_DB_ITER_END, NIMBET_DB_GetNextUrpfTrunk(it, &got));
    EXPECT_EQ(1u, NIMBET_DB_GetNextUrpfTrunk(it, nullptr));
    NIMBET_DB_ReleaseUrpfTrunkIterator(it);
    ASSERT_EQ(0u, db_test_inject(DB_OP_READ_WITH_BUF, "urpf_trunkmem", nullptr, 1, 1, DB_RET_NO_RECORD));
    it = NIMBET_DB_CreateUrpfTrunkIfIndexIterator(5);
    EXPECT_EQ(NIMBET_DB_ITER_END, NIMBET_DB_GetNextUrpfTrunk(it, &got)) << "the read-status mapping";
    NIMBET_DB_ReleaseUrpfTrunkIterator(it);
    EXPECT_TRUE(messages().empty());
}

TEST_F(Urpf, TrunkRevalidationAndReadStatusMapping) {
    NIMBET_DB_URPF_TRUNKMEM_ENTRY e = {1, 2, 3};
    ASSERT_EQ(0u, NIMBET_DB_AddTrunkMember(&e));
    e.flag = 9;
    e.trunkIfIndex = 99;  // not part of the re-validation
    ASSERT_EQ(0u, NIMBET_DB_UpdateUrpfTrunkMemValid(&e));
    NIMBET_DB_URPF_TRUNKMEM_ENTRY got{};
    ASSERT_EQ(0u, NIMBET_DB_GetRecordByMember(2, &got));
    EXPECT_EQ(9u, got.flag);
    EXPECT_EQ(1u, got.trunkIfIndex);
    ASSERT_EQ(0u, db_test_inject(DB_OP_SET_FIELD, "urpf_trunkmem", "flag", 1, 1, 0x10));
    EXPECT_EQ(1u, NIMBET_DB_UpdateUrpfTrunkMemValid(&e));
    EXPECT_EQ(4u, db_test_call_count(DB_OP_SET_FIELD, "urpf_trunkmem")) << "both setters, both times";
    ASSERT_EQ(0u, db_test_inject(DB_OP_UPDATE, "urpf_trunkmem", nullptr, 1, 1, 11));
    EXPECT_EQ(1u, NIMBET_DB_UpdateUrpfTrunkMemValid(&e));
    EXPECT_EQ(0u, NIMBET_DB_ProcUrpfTrunkMemDBReadRet(0));
    EXPECT_EQ(NIMBET_DB_ITER_END, NIMBET_DB_ProcUrpfTrunkMemDBReadRet(DB_RET_NO_RECORD));
    EXPECT_EQ(1u, NIMBET_DB_ProcUrpfTrunkMemDBReadRet(12));
    EXPECT_EQ((std::vector<std::string>{"Set urpf trunkmem db flag failed, ret = 16", "Update urpf trunkmem db fail. ret = 11",
                                        "Get urpf trunkmem db fail. ret = 12"}),
              texts());
    EXPECT_EQ((StatDelta{{{DB_STAT_URPF_TRUNKMEM, DB_ERR_UPDATE}, 1}, {{DB_STAT_URPF_TRUNKMEM, DB_ERR_READ}, 1}}), stats());
}

}  // namespace
}  // namespace nimbet_test
