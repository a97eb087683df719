// The producer-PID aging walk and the VRF class tables.
#include <set>

#include "session_kinds.h"
#include "support.h"

namespace nimbet_test {
namespace {

// ---------------------------------------------------------------- aging

// One aging table: its id, its session kind, where the PID lives in the
// record, and the key setter's message on a failed root iterator.
struct AgeTable {
    uint32_t id;
    int kind;
    size_t pidOffset;  // of the u32 producer PID in the caller record
    const char *msgSetKey;
};

const AgeTable kAgeTables[] = {
    {2, 2, offsetof(NIMBET_DB_PING_SESS_ENTRY, attr1), "SetPingSessPidKey ret not QEX_OK, ret: 77"},
    {3, 0, offsetof(NIMBET_DB_INET_SESS_ENTRY, hPid), "SetInetSessPidKey ret not QEX_OK, ret: 77"},
    {4, 3, offsetof(NIMBET_DB_GROUP_SESS_ENTRY, attr3), "SetGroupSessPidKey ret not QEX_OK"},
    {5, 5, offsetof(NIMBET_DB_ISIS_SESS_ENTRY, attr2), "SetIsisSessPidKey ret not QEX_OK. ret = 77."},
    {77, 1, offsetof(NIMBET_DB_INET6_SESS_ENTRY, hPid), "SetInet6SessPidKey ret not QEX_OK, ret: 77"},
    {78, 4, offsetof(NIMBET_DB_GROUP6_SESS_ENTRY, attr4), "SetGroup6SessPidKey ret not QEX_OK, ret: 77"},
};
void PrintTo(const AgeTable &t, std::ostream *os) { *os << kSessionKinds[t.kind].name; }

std::vector<std::string> diag_texts() {
    std::vector<std::string> out;
    for (uint32_t i = 0; i < NIMBET_HostTest_DiagCount(); ++i) {
        NIMBET_HOST_DIAG_LINE l{};
        NIMBET_HostTest_DiagGet(i, &l);
        EXPECT_EQ((std::vector<uint32_t>{5, 0, 4, 3}), std::vector<uint32_t>(l.words, l.words + 4)) << l.text;
        out.push_back(l.text);
    }
    return out;
}

class Aging : public LibTest, public ::testing::WithParamInterface<AgeTable> {
protected:
    const SessionKind &kind() const { return kSessionKinds[GetParam().kind]; }
    // Writes rows 0..n-1, row i carrying PID 100 + i % 3.
    void write_rows(uint32_t n) {
        std::vector<uint8_t> r(kind().recSize);
        for (uint32_t i = 0; i < n; ++i) {
            kind().make(r.data(), i);
            const uint32_t pid = 100 + i % 3;
            std::memcpy(r.data() + GetParam().pidOffset, &pid, 4);
            ASSERT_EQ(0u, kind().write(r.data()));
        }
    }
    uint32_t pid_of(const std::vector<uint8_t> &r) const {
        uint32_t pid;
        std::memcpy(&pid, r.data() + GetParam().pidOffset, 4);
        return pid;
    }
    uint32_t smooth11() const { return g_nimbetSmoothCnt[11] - before_.smooth[11]; }
};

TEST_P(Aging, DeliversExactlyTheRowsOfOnePid) {
    write_rows(30);
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreatePidIterator(GetParam().id, 101);
    ASSERT_NE(nullptr, it);
    std::vector<uint8_t> rec(kind().recSize);
    std::set<uint32_t> rows;
    uint32_t r;
    while ((r = NIMBET_DB_GetNextTableByAgeIterator(GetParam().id, it, rec.data())) == 0) {
        EXPECT_EQ(101u, pid_of(rec));
        uint32_t sockId;
        std::memcpy(&sockId, rec.data(), 4);
        EXPECT_TRUE(rows.insert(sockId).second);
    }
    EXPECT_EQ(NIMBET_DB_ITER_END, r);
    NIMBET_DB_ReleaseAgeIterator(GetParam().id, it);
    EXPECT_EQ(10u, rows.size());
    EXPECT_EQ(2u, smooth11()) << "one create, one release";
    EXPECT_EQ((std::vector<std::string>{"nimbet db CreatPidObject, ret = 0.", "nimbet db Creat iterator, ret = 0."}),
              diag_texts());
    EXPECT_TRUE(messages().empty());
}

TEST_P(Aging, AgingOutDuringTheWalkRemovesEveryRowOfThePid) {
    write_rows(60);
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreatLrAgeIterator(GetParam().id, 102);
    ASSERT_NE(nullptr, it);
    std::vector<uint8_t> rec(kind().recSize);
    uint32_t aged = 0;
    while (NIMBET_DB_GetNextTableByAgeIterator(GetParam().id, it, rec.data()) == 0) {
        ASSERT_EQ(0u, kind().remove(rec.data()));
        ++aged;
    }
    NIMBET_DB_ReleaseLrAgeIterator(GetParam().id, it);
    EXPECT_EQ(20u, aged);
    EXPECT_EQ(40u, db_test_row_count(kind().table));
}

TEST_P(Aging, FailedRootIteratorReleasesTheObjectOnceAndGivesNoHandle) {
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_ROOT_ITER, kind().table, nullptr, 1, 1, 77));
    EXPECT_EQ(nullptr, NIMBET_DB_CreatePidIterator(GetParam().id, 1));
    EXPECT_EQ(std::vector<std::string>{GetParam().msgSetKey}, texts());
    EXPECT_EQ(1u, db_test_call_count(DB_OP_RELEASE_OBJ, kind().table));
    EXPECT_EQ(2u, smooth11());
    EXPECT_EQ((std::vector<std::string>{"nimbet db CreatPidObject, ret = 0.", "nimbet db Creat iterator, ret = 77."}),
              diag_texts());
}

TEST_P(Aging, FailedCreateCountsOnceAndGivesNoHandle) {
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, kind().table, nullptr, 1, 1, 78));
    EXPECT_EQ(nullptr, NIMBET_DB_CreatePidIterator(GetParam().id, 1));
    EXPECT_EQ(1u, smooth11());
    EXPECT_EQ(std::vector<std::string>{"nimbet db CreatPidObject, ret = 1."}, diag_texts());
    EXPECT_EQ(0u, db_test_call_count(DB_OP_RELEASE_OBJ, nullptr));
}

TEST_P(Aging, MapRowHoldsTheTablesOwnFunctions) {
    const NIMBET_DB_SMOOTH_OBJECT_MAP *row = nullptr;
    for (const auto &r : g_nimbetSmoothDbObjectMapTable)
        if (r.tableId == GetParam().id) row = &r;
    ASSERT_NE(nullptr, row);
    EXPECT_EQ(kind().db_create, row->createFunc);
    EXPECT_EQ(kind().db_release, row->releaseFunc);
}

INSTANTIATE_TEST_SUITE_P(Tables, Aging, ::testing::ValuesIn(kAgeTables),
                         [](const auto &info) { return std::string(kSessionKinds[info.param.kind].name); });

class AgingEdges : public LibTest {};

TEST_F(AgingEdges, UnknownTableIdsOpenNothing) {
    for (uint32_t id : {0u, 1u, 6u, 76u, 79u}) {
        EXPECT_EQ(nullptr, NIMBET_DB_CreatePidIterator(id, 1));
        DB_HANDLE h = 0;
        EXPECT_EQ(1u, NIMBET_DB_CreatPidObject(id, &h));
    }
    EXPECT_EQ(1u, NIMBET_DB_CreatPidObject(3, nullptr));
    EXPECT_EQ(before_.smooth, Counters::now().smooth);
    EXPECT_EQ(0u, db_test_call_count(DB_OP_CREATE_OBJ, nullptr));
    EXPECT_EQ(nullptr, NIMBET_DB_CreatVrfTableAgeIterator());
    NIMBET_DB_ReleaseAgeIterator(3, nullptr);
    NIMBET_DB_ReleaseAgeObject(3, 0);
    EXPECT_EQ(before_.smooth, Counters::now().smooth);
}

TEST_F(AgingEdges, HandleAllocationFailureIsSilent) {
    NIMBET_HostTest_FailAlloc(1, 1);
    EXPECT_EQ(nullptr, NIMBET_DB_CreatePidIterator(3, 1));
    EXPECT_EQ(0u, NIMBET_HostTest_DiagCount());
    EXPECT_EQ(0u, db_test_call_count(DB_OP_CREATE_OBJ, nullptr));
}

TEST_F(AgingEdges, NextStepRules) {
    NIMBET_DB_INET_SESS_ENTRY r{};
    r.hPid = 5;
    ASSERT_EQ(0u, NIMBET_DB_WriteEntryInet(&r));
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreatePidIterator(3, 5);
    ASSERT_NE(nullptr, it);
    EXPECT_EQ(1u, NIMBET_DB_GetNextTableByAgeIterator(3, nullptr, &r));
    EXPECT_EQ(1u, NIMBET_DB_GetNextTableByAgeIterator(3, it, nullptr));
    ASSERT_EQ(0u, db_test_inject(DB_OP_ITER_NEXT, "inet_sess", nullptr, 1, 1, 99));
    EXPECT_EQ(1u, NIMBET_DB_GetNextTableByAgeIterator(3, it, &r));
    EXPECT_EQ(std::vector<std::string>{"Get next table by age iterator fail. tableId 3, ret = 99"}, texts());
    EXPECT_TRUE(stats().empty());
    // A table id outside the six fills nothing, and the step still succeeds.
    std::vector<uint8_t> untouched(sizeof r, 0xEE);
    EXPECT_EQ(0u, NIMBET_DB_GetNextTableByAgeIterator(9, it, untouched.data()));
    EXPECT_EQ(std::vector<uint8_t>(sizeof r, 0xEE), untouched);
    EXPECT_EQ(NIMBET_DB_ITER_END, NIMBET_DB_GetNextTableByAgeIterator(3, it, &r));
    NIMBET_DB_ReleaseAgeIterator(3, it);
}

TEST_F(AgingEdges, PidWalkExaminesOnlyItsRows) {
    NIMBET_DB_INET_SESS_ENTRY r{};
    for (uint32_t i = 0; i < 100000; ++i) {
        r.sockId = i;
        r.hPid = i % 10000 == 0 ? 7 : 8;  // ten rows of PID 7
        ASSERT_EQ(0u, NIMBET_DB_WriteEntryInet(&r));
    }
    db_test_reset_counts();
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreatePidIterator(3, 7);
    ASSERT_NE(nullptr, it);
    uint32_t n = 0;
    while (NIMBET_DB_GetNextTableByAgeIterator(3, it, &r) == 0) ++n;
    NIMBET_DB_ReleaseAgeIterator(3, it);
    EXPECT_EQ(10u, n);
    EXPECT_LE(db_test_rows_examined("inet_sess"), 10u + 2u) << "the ten rows and the key lookups";
}

// ---------------------------------------------------------------- VRF class state

class VrfClass : public LibTest {
protected:
    std::map<unsigned, uint32_t> slots() const { return slot_delta(before_.smooth, g_nimbetSmoothCnt); }
};
using Slots = std::map<unsigned, uint32_t>;

TEST_F(VrfClass, StateRowRoundTripsAndTheMachineIsOneByte) {
    const NIMBET_DB_VRF_CLASS_STATE_ENTRY e = {7, 8, 0xAB, 0x01020304};
    ASSERT_EQ(0u, NIMBET_DB_WriteClassItem(&e));
    NIMBET_DB_VRF_CLASS_STATE_ENTRY got;
    std::memset(&got, 0xEE, sizeof got);
    got.tableId = 7;
    got.producerPid = 8;
    ASSERT_EQ(0u, NIMBET_DB_ReadClassItem(&got));
    EXPECT_EQ(0xAB, got.vrfStateMachine);
    EXPECT_EQ(0x01020304u, got.vrfStateVersion);
    // Nothing beside the byte is written (the record's padding keeps its bytes).
    const auto *bytes = reinterpret_cast<const uint8_t *>(&got);
    for (size_t i = offsetof(NIMBET_DB_VRF_CLASS_STATE_ENTRY, vrfStateMachine) + 1;
         i < offsetof(NIMBET_DB_VRF_CLASS_STATE_ENTRY, vrfStateVersion); ++i)
        EXPECT_EQ(0xEE, bytes[i]);
    EXPECT_EQ((Slots{{0, 1}, {1, 1}, {2, 1}, {3, 1}}), slots());
    EXPECT_TRUE(messages().empty());
}

struct VrfCase {
    const char *name;
    int op;  // 0 state write, 1 state read, 2 data write, 3 data read, 4 data delete
    DB_TEST_OP inject;
    const char *field;
    uint32_t status, result;
    std::vector<std::string> texts;
    StatDelta stats;
    Slots slots;
};
void PrintTo(const VrfCase &c, std::ostream *os) { *os << c.name; }

class VrfPath : public VrfClass, public ::testing::WithParamInterface<VrfCase> {};

TEST_P(VrfPath, ResultMessagesStatisticsAndSlots) {
    const VrfCase &c = GetParam();
    NIMBET_DB_VRF_CLASS_STATE_ENTRY st = {1, 2, 3, 4};
    NIMBET_DB_VRF_CLASS_DATA_ENTRY da = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    ASSERT_EQ(0u, NIMBET_DB_WriteClassItem(&st));
    ASSERT_EQ(0u, NIMBET_DB_WriteVrfClassState(&da));
    before_ = Counters::now();
    const char *table = c.op < 2 ? "vrf_class_state" : "vrf_class_data";
    ASSERT_EQ(0u, db_test_inject(c.inject, table, c.field, 1, 1, c.status));
    uint32_t r = 0;
    switch (c.op) {
        case 0: r = NIMBET_DB_WriteClassItem(&st); break;
        case 1: r = NIMBET_DB_ReadClassItem(&st); break;
        case 2: r = NIMBET_DB_WriteVrfClassState(&da); break;
        case 3: r = NIMBET_DB_ReadVrfClassState(&da); break;
        default: r = NIMBET_DB_DeleteVrfClassState(&da);
    }
    EXPECT_EQ(c.result, r);
    EXPECT_EQ(c.texts, texts());
    EXPECT_EQ(c.stats, stats());
    EXPECT_EQ(c.slots, slots());
}

constexpr uint32_t kState = DB_STAT_VRF_CLASS_STATE, kData = DB_STAT_VRF_CLASS_DATA;
INSTANTIATE_TEST_SUITE_P(
    Paths, VrfPath,
    ::testing::Values(
        VrfCase{"StateWriteOpen", 0, DB_OP_CREATE_OBJ, nullptr, 5, 1, {"Get create vrf class state obj fail. ret = 5"}, {}, {}},
        VrfCase{"StateWriteSetter", 0, DB_OP_SET_FIELD, "vrf_state_machine", 0x20, 1,
                {"DB set vrf class state fail, ret = 32."}, {}, {{2, 1}}},
        VrfCase{"StateWriteTolerated", 0, DB_OP_WRITE, nullptr, DB_RET_TOLERATED, 0, {}, {{{kState, DB_ERR_TOLERATED}, 1}},
                {{2, 1}, {3, 1}}},
        VrfCase{"StateWriteFails", 0, DB_OP_WRITE, nullptr, 6, 1, {"Write vrf class state db fail. ret = 6"},
                {{{kState, DB_ERR_WRITE}, 1}}, {{2, 1}, {3, 1}}},
        VrfCase{"StateReadOpen", 1, DB_OP_CREATE_OBJ, nullptr, 7, 1,
                {"Get create vrf class state obj failed. ret = 7, tableId = 1, state = 3."}, {}, {}},
        VrfCase{"StateReadGetter", 1, DB_OP_GET_FIELD, "vrf_state_version", 0x40, 0,
                {"DB get vrf class state failed, ret = 64, tableId = 1, state = 3."}, {}, {{0, 1}, {1, 1}}},
        VrfCase{"StateReadFails", 1, DB_OP_READ, nullptr, 8, 1, {"Get vrf class state db fail. ret = 8"},
                {{{kState, DB_ERR_READ}, 1}}, {{0, 1}, {1, 1}}},
        VrfCase{"StateReadMissing", 1, DB_OP_READ, nullptr, DB_RET_NO_RECORD, 1, {}, {}, {{0, 1}, {1, 1}}},
        VrfCase{"DataWriteOpen", 2, DB_OP_CREATE_OBJ, nullptr, 5, 1, {"Get create vrf class data obj fail. ret = 5"}, {}, {}},
        VrfCase{"DataWriteSetter", 2, DB_OP_SET_FIELD, "smooth_flag", 0x20, 1, {"DB set vrf class data fail, ret = 32."},
                {}, {{2, 1}}},
        VrfCase{"DataWriteTolerated", 2, DB_OP_WRITE, nullptr, DB_RET_TOLERATED, 0, {}, {{{kData, DB_ERR_TOLERATED}, 1}},
                {{2, 1}, {5, 1}}},
        VrfCase{"DataWriteFails", 2, DB_OP_WRITE, nullptr, 6, 1, {"Write vrf class data db fail. ret = 6"},
                {{{kData, DB_ERR_WRITE}, 1}}, {{2, 1}, {5, 1}}},
        VrfCase{"DataReadOpen", 3, DB_OP_CREATE_OBJ, nullptr, 7, 1, {"Get create vrf class data obj fail. ret = 7"}, {}, {}},
        VrfCase{"DataReadGetter", 3, DB_OP_GET_FIELD, "topology_id", 0x40, 0, {"DB get vrf class data fail, ret = 64."},
                {}, {{4, 1}, {5, 1}}},
        VrfCase{"DataReadFails", 3, DB_OP_READ, nullptr, 8, 1, {"Get vrf class data db fail. ret = 8"},
                {{{kData, DB_ERR_READ}, 1}}, {{4, 1}, {5, 1}}},
        VrfCase{"DataReadMissing", 3, DB_OP_READ, nullptr, DB_RET_NO_RECORD, 1, {}, {}, {{4, 1}, {5, 1}}},
        VrfCase{"DataDeleteOpen", 4, DB_OP_CREATE_OBJ, nullptr, 9, 1, {"Get create vrf class data obj fail. ret = 9"}, {}, {}},
        VrfCase{"DataDeleteTolerated", 4, DB_OP_REMOVE, nullptr, DB_RET_TOLERATED, 0, {}, {{{kData, DB_ERR_TOLERATED}, 1}},
                {{4, 1}, {5, 1}}},
        VrfCase{"DataDeleteFails", 4, DB_OP_REMOVE, nullptr, 10, 1, {"Remove vrf class data db fail. ret = 10"},
                {{{kData, DB_ERR_REMOVE}, 1}}, {{4, 1}, {5, 1}}}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(VrfClass, NullRecordsChangeNothing) {
    EXPECT_EQ(1u, NIMBET_DB_ReadClassItem(nullptr));
    EXPECT_EQ(1u, NIMBET_DB_WriteClassItem(nullptr));
    EXPECT_EQ(1u, NIMBET_DB_WriteVrfClassState(nullptr));
    EXPECT_EQ(1u, NIMBET_DB_ReadVrfClassState(nullptr));
    EXPECT_EQ(1u, NIMBET_DB_DeleteVrfClassState(nullptr));
    NIMBET_DB_SetVrfClassStateKey(1, 2, 3, 4, nullptr);
    NIMBET_DB_GetVrfClassStateItem(0, nullptr);
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(slots().empty());
}

TEST_F(VrfClass, DataRowRoundTripsFromItsKey) {
    NIMBET_DB_VRF_CLASS_DATA_ENTRY e;
    std::memset(&e, 0, sizeof e);  // padding too, for the byte compare below
    e.tableId = 1;
    e.producerPid = 2;
    e.vrId = 3;
    e.vrfIndex = 4;
    e.topologyId = 5;
    e.vrfState = 6;
    e.vrfDataMachine = 0xFE;
    e.vrfStateVersion = 8;
    e.vrfDataVersion = 9;
    e.smoothFlag = 10;
    ASSERT_EQ(0u, NIMBET_DB_WriteVrfClassState(&e));
    NIMBET_DB_VRF_CLASS_DATA_ENTRY got;
    std::memset(&got, 0, sizeof got);
    NIMBET_DB_SetVrfClassStateKey(1, 2, 3, 4, &got);
    ASSERT_EQ(0u, NIMBET_DB_ReadVrfClassState(&got));
    EXPECT_EQ(0, std::memcmp(&e, &got, sizeof e));
    ASSERT_EQ(0u, NIMBET_DB_DeleteVrfClassState(&got));
    EXPECT_EQ(1u, NIMBET_DB_ReadVrfClassState(&got));
    EXPECT_EQ((Slots{{2, 1}, {4, 3}, {5, 4}}), slots());
}

TEST_F(VrfClass, DataWalkDeliversTheRowsOfOneTableAndPid) {
    for (uint32_t i = 0; i < 12; ++i) {
        const NIMBET_DB_VRF_CLASS_DATA_ENTRY e = {1 + i % 2, 2 + i % 3, i, i, 0, 0, 0, 0, 0, 0};
        ASSERT_EQ(0u, NIMBET_DB_WriteVrfClassState(&e));
    }
    before_ = Counters::now();
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreatVrfClassStateIterator(1, 2);  // rows 0 and 6
    ASSERT_NE(nullptr, it);
    NIMBET_DB_VRF_CLASS_DATA_ENTRY got;
    std::set<uint32_t> seen;
    while (NIMBET_DB_GetNextVrfClassState(it, &got) == 0) {
        EXPECT_EQ(1u, got.tableId);
        EXPECT_EQ(2u, got.producerPid);
        seen.insert(got.vrId);
    }
    NIMBET_DB_ReleaseVrfClassStateIterator(it);
    EXPECT_EQ((std::set<uint32_t>{0, 6}), seen);
    EXPECT_EQ((Slots{{12, 1}, {13, 1}}), slots());

    it = NIMBET_DB_CreatVrfClassStateIterator(9, 9);
    ASSERT_NE(nullptr, it);
    EXPECT_EQ(NIMBET_DB_ITER_END, NIMBET_DB_GetNextVrfClassState(it, &got));
    EXPECT_EQ(1u, NIMBET_DB_GetNextVrfClassState(it, nullptr));
    ASSERT_EQ(0u, db_test_inject(DB_OP_ITER_NEXT, "vrf_class_data", nullptr, 1, 1, 12));
    EXPECT_EQ(1u, NIMBET_DB_GetNextVrfClassState(it, &got));
    NIMBET_DB_ReleaseVrfClassStateIterator(it);
    EXPECT_EQ((std::vector<std::string>{"getnextvrfclassstate dbRes or entry is QEX_NULL. para is NULL",
                                        "Get next vrf class state db fail. ret = 12"}),
              texts());
    EXPECT_EQ((StatDelta{{{DB_STAT_VRF_CLASS_STATE, DB_ERR_NEXT}, 1}}), stats()) << "counted under the state table";
}

TEST_F(VrfClass, DataWalkCreationFailures) {
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, "vrf_class_data", nullptr, 1, 1, 31));
    EXPECT_EQ(nullptr, NIMBET_DB_CreatVrfClassStateIterator(1, 2));
    EXPECT_EQ(std::vector<std::string>{"Get create vrf class data obj fail. ret = 31"}, texts());
    EXPECT_TRUE(slots().empty());
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_ROOT_ITER, "vrf_class_data", nullptr, 1, 1, 32));
    EXPECT_EQ(nullptr, NIMBET_DB_CreatVrfClassStateIterator(1, 2));
    EXPECT_EQ(1u, messages().size()) << "a failed root iterator is silent";
    EXPECT_EQ((Slots{{12, 1}, {13, 1}}), slots());
    NIMBET_HostTest_FailAlloc(1, 1);
    EXPECT_EQ(nullptr, NIMBET_DB_CreatVrfClassStateIterator(1, 2));
    EXPECT_EQ(1u, db_test_call_count(DB_OP_RELEASE_OBJ, "vrf_class_data"));
}

}  // namespace
}  // namespace nimbet_test
