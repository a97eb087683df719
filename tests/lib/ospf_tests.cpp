// OSPF NVO3 state rows.
#include "support.h"

namespace nimbet_test {
namespace {

class OspfNvo3 : public LibTest {};

NIMBET_DB_OSPF_NVO3_ENTRY make(uint32_t vrId) {
    NIMBET_DB_OSPF_NVO3_ENTRY e;
    std::memset(&e, 0, sizeof e);
    e.vrId = vrId;
    uint32_t *words = &e.ospf_disable;  // the sixteen state words are contiguous u32s
    for (uint32_t i = 0; i < 16; ++i) words[i] = 0x100 * vrId + i;
    e.time_stamp_create = 1111;
    e.if_update = 21;
    e.if_update_time = 2222;
    e.peerlink_update = 31;
    e.peerlink_update_time = 3333;
    e.peerlink_del = 41;
    e.peerlink_del_time = 4444;
    return e;
}

NIMBET_DB_OSPF_NVO3_ENTRY read_back(uint32_t vrId) {
    NIMBET_DB_OSPF_NVO3_ENTRY got;
    std::memset(&got, 0, sizeof got);
    got.vrId = vrId;
    EXPECT_EQ(0u, NIMBET_DB_ReadEntryOspfNvo3(&got));
    return got;
}

TEST_F(OspfNvo3, ClearFlagsStoreTheRecordsStamps) {
    for (uint32_t flags : {0x0u, 0x10u, 0xF0u}) {  // bits beyond the four are ignored
        const NIMBET_DB_OSPF_NVO3_ENTRY e = make(7);
        ASSERT_EQ(0u, NIMBET_DB_WriteEntryOspfNvo3(flags, &e));
        const NIMBET_DB_OSPF_NVO3_ENTRY got = read_back(7);
        EXPECT_EQ(0, std::memcmp(&e, &got, sizeof e)) << flags;
    }
    EXPECT_TRUE(messages().empty());
}

TEST_F(OspfNvo3, EachFlagStampsItsFieldWithOneTime) {
    struct Case {
        uint32_t flag;
        int64_t NIMBET_DB_OSPF_NVO3_ENTRY::*field;
    };
    const Case cases[] = {{OSPF_NVO3_STAMP_CREATE, &NIMBET_DB_OSPF_NVO3_ENTRY::time_stamp_create},
                          {OSPF_NVO3_STAMP_IF_UPDATE, &NIMBET_DB_OSPF_NVO3_ENTRY::if_update_time},
                          {OSPF_NVO3_STAMP_PEERLINK_UPDATE, &NIMBET_DB_OSPF_NVO3_ENTRY::peerlink_update_time},
                          {OSPF_NVO3_STAMP_PEERLINK_DEL, &NIMBET_DB_OSPF_NVO3_ENTRY::peerlink_del_time}};
    const int64_t lo = NIMBET_DB_GetSysTime();
    for (const Case &c : cases) {
        const NIMBET_DB_OSPF_NVO3_ENTRY e = make(3);
        ASSERT_EQ(0u, NIMBET_DB_WriteEntryOspfNvo3(c.flag, &e));
        NIMBET_DB_OSPF_NVO3_ENTRY got = read_back(3);
        EXPECT_LE(lo, got.*c.field);
        got.*c.field = e.*c.field;  // everything else as the record held it
        EXPECT_EQ(0, std::memcmp(&e, &got, sizeof e)) << c.flag;
    }
    const NIMBET_DB_OSPF_NVO3_ENTRY e = make(4);
    uint8_t image[112] = {};
    NIMBET_DB_WriteEntryOspfNvo3SetAllFiled(0xF, image, &e);
    int64_t stamps[4];
    for (int i = 0, off[4] = {68, 80, 92, 104}; i < 4; ++i) std::memcpy(&stamps[i], image + off[i], 8);
    EXPECT_LE(lo, stamps[0]);
    EXPECT_EQ(stamps[0], stamps[1]);
    EXPECT_EQ(stamps[0], stamps[2]);
    EXPECT_EQ(stamps[0], stamps[3]);
    EXPECT_EQ(0x400u, image[4] | image[5] << 8) << "state words follow vrId in record order";
    EXPECT_EQ(0x40Fu, image[64] | image[65] << 8);
    EXPECT_EQ(21, image[76]);
    EXPECT_EQ(41, image[100]);
}

TEST_F(OspfNvo3, MissingRowReadsAsOneSilently) {
    NIMBET_DB_OSPF_NVO3_ENTRY got = make(8);
    EXPECT_EQ(1u, NIMBET_DB_ReadEntryOspfNvo3(&got));
    EXPECT_EQ(1u, NIMBET_DB_ReadEntryOspfNvo3(nullptr));
    EXPECT_EQ(1u, NIMBET_DB_WriteEntryOspfNvo3(0, nullptr));
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

TEST_F(OspfNvo3, FieldReadAnswersTheOrOfItsGetters) {
    const NIMBET_DB_OSPF_NVO3_ENTRY e = make(5);
    ASSERT_EQ(0u, NIMBET_DB_WriteEntryOspfNvo3(0, &e));
    ASSERT_EQ(0u, db_test_inject(DB_OP_GET_FIELD, "ospf_nvo3", "ospf_discard_ret", 1, 1, 0x10));
    ASSERT_EQ(0u, db_test_inject(DB_OP_GET_FIELD, "ospf_nvo3", "peerlink_del_time", 1, 1, 0x01));
    NIMBET_DB_OSPF_NVO3_ENTRY got;
    std::memset(&got, 0, sizeof got);
    got.vrId = 5;
    EXPECT_EQ(0x11u, NIMBET_DB_ReadEntryOspfNvo3(&got));
    EXPECT_EQ(0u, got.ospf_discard_ret);
    EXPECT_EQ(e.ospfv3_discard, got.ospfv3_discard) << "the getters after a failed one still run";
    EXPECT_TRUE(messages().empty());
}

struct OspfCase {
    const char *name;
    int op;  // 0 write, 1 read, 2 delete
    DB_TEST_OP inject;
    uint32_t status, result;
    std::vector<std::string> texts;
    StatDelta stats;
};
void PrintTo(const OspfCase &c, std::ostream *os) { *os << c.name; }

class OspfPath : public OspfNvo3, public ::testing::WithParamInterface<OspfCase> {};

TEST_P(OspfPath, ResultMessagesAndStatistics) {
    const OspfCase &c = GetParam();
    NIMBET_DB_OSPF_NVO3_ENTRY e = make(9);
    ASSERT_EQ(0u, NIMBET_DB_WriteEntryOspfNvo3(0, &e));
    before_ = Counters::now();
    ASSERT_EQ(0u, db_test_inject(c.inject, "ospf_nvo3", nullptr, 1, 1, c.status));
    const uint32_t r = c.op == 0 ? NIMBET_DB_WriteEntryOspfNvo3(0, &e)
                       : c.op == 1 ? NIMBET_DB_ReadEntryOspfNvo3(&e)
                                   : NIMBET_DB_DeleteOspfNvo3(9);
    EXPECT_EQ(c.result, r);
    EXPECT_EQ(c.texts, texts());
    EXPECT_EQ(c.stats, stats());
}

constexpr uint32_t kS = DB_STAT_OSPF_NVO3;
INSTANTIATE_TEST_SUITE_P(
    Paths, OspfPath,
    ::testing::Values(
        OspfCase{"WriteOpen", 0, DB_OP_CREATE_OBJ, 3, 1, {"Write ospfnvo3 create obj failed. ret = 3, vrId = 9."}, {}},
        OspfCase{"WriteAllFields", 0, DB_OP_SET_ALL_FIELDS, 4, 4, {}, {}},
        OspfCase{"WriteTolerated", 0, DB_OP_WRITE, DB_RET_TOLERATED, 0, {}, {{{kS, DB_ERR_TOLERATED}, 1}}},
        OspfCase{"WriteFails", 0, DB_OP_WRITE, 5, 1, {"Write ospf nvo3 db failed. ret = 5, vrId = 9."},
                 {{{kS, DB_ERR_WRITE}, 1}}},
        OspfCase{"ReadOpen", 1, DB_OP_CREATE_OBJ, 6, 1, {"Read ospf nvo3 disable create obj failed. ret = 6, vrId = 9."}, {}},
        OspfCase{"ReadFails", 1, DB_OP_READ, 7, 1, {"Get ospf nvo3 disable db failed. ret = 7, vrId = 9."},
                 {{{kS, DB_ERR_READ}, 1}}},
        OspfCase{"DeleteOpen", 2, DB_OP_CREATE_OBJ, 8, 1, {"Delete ospf nvo3 create obj failed. ret = 8, vrId = 9."}, {}},
        OspfCase{"DeleteTolerated", 2, DB_OP_REMOVE, DB_RET_TOLERATED, 0, {}, {{{kS, DB_ERR_TOLERATED}, 1}}},
        OspfCase{"DeleteFails", 2, DB_OP_REMOVE, DB_RET_NO_RECORD, 1,
                 {"Remove ospf nvo3 db failed. ret = 15005, vrId = 9."}, {{{kS, DB_ERR_REMOVE}, 1}}}),
    [](const auto &info) { return std::string(info.param.name); });

}  // namespace
}  // namespace nimbet_test
