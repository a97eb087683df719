// IPv4 interface addresses: whole-row read, write and remove.
#include <ctime>

#include "support.h"

namespace nimbet_test {
namespace {

constexpr uint32_t kStat = DB_STAT_IFM_IPV4_ADDRESS;
constexpr const char *kTable = "ifm_ipv4_address";
constexpr const char *kOpenFail = "Get create ifm ipv4 address obj fail, ret = %u.";

NIMBET_DB_IPV4_ADDR_ENTRY make_entry(uint32_t ifIndex, uint32_t count) {
    NIMBET_DB_IPV4_ADDR_ENTRY e;
    std::memset(&e, 0, sizeof e);
    e.ifIndex = ifIndex;
    e.vrfIndex = ifIndex * 7 + 1;
    e.app_serial_id = 0xA5A50000u + ifIndex;
    e.status_normal_prio = 0x5A;
    e.errcode_normal_prio = 0xC3;
    e.addressCount = count;
    for (uint32_t i = 0; i < count; ++i)
        e.addresses[i] = {0x0A000001u + (ifIndex << 16) + i, static_cast<uint8_t>(8 + i % 25), static_cast<uint8_t>(i % 3)};
    return e;
}

// A record whose every byte is a sentinel, to see what a fill touched.
NIMBET_DB_IPV4_ADDR_ENTRY sentinel(uint32_t ifIndex) {
    NIMBET_DB_IPV4_ADDR_ENTRY e;
    std::memset(&e, 0xEE, sizeof e);
    e.ifIndex = ifIndex;
    return e;
}

void expect_same(const NIMBET_DB_IPV4_ADDR_ENTRY &want, const NIMBET_DB_IPV4_ADDR_ENTRY &got) {
    EXPECT_EQ(want.ifIndex, got.ifIndex);
    EXPECT_EQ(want.vrfIndex, got.vrfIndex);
    EXPECT_EQ(want.app_serial_id, got.app_serial_id);
    EXPECT_EQ(want.status_normal_prio, got.status_normal_prio);
    EXPECT_EQ(want.errcode_normal_prio, got.errcode_normal_prio);
    ASSERT_EQ(want.addressCount, got.addressCount);
    for (uint32_t i = 0; i < want.addressCount; ++i) {
        EXPECT_EQ(want.addresses[i].address, got.addresses[i].address) << i;
        EXPECT_EQ(want.addresses[i].masklen, got.addresses[i].masklen) << i;
        EXPECT_EQ(want.addresses[i].type, got.addresses[i].type) << i;
    }
}

class Ipv4Addr : public LibTest {};

TEST_F(Ipv4Addr, WriteThenReadGivesTheRecordBackAndStampsTheRow) {
    const NIMBET_DB_IPV4_ADDR_ENTRY e = make_entry(3, 3);
    const int64_t lo = time(nullptr);
    ASSERT_EQ(0u, NIMBET_DB_WriteIpv4Entry(&e));
    const int64_t hi = time(nullptr);
    NIMBET_DB_IPV4_ADDR_ENTRY got = sentinel(3);
    ASSERT_EQ(0u, NIMBET_DB_ReadIpv4Entry(&got));
    expect_same(e, got);

    // The creation stamp lives in the row only.
    DB_HANDLE h = 0;
    ASSERT_EQ(0u, db_create_ifm_ipv4_address_obj(DB_OPEN_READ, 0, &h));
    const uint32_t desc = 0x00010004u;
    const uint8_t key[4] = {3, 0, 0, 0};
    ASSERT_EQ(0u, db_read_obj(h, &desc, key));
    int64_t stamp = 0;
    EXPECT_EQ(0u, db_get_ifm_ipv4_address_time_stamp_create(h, &stamp));
    db_release_ifm_ipv4_address_object(h);
    EXPECT_LE(lo, stamp);
    EXPECT_GE(hi, stamp);
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

TEST_F(Ipv4Addr, EmptyListReadsBackAsZeroAndLeavesTheArrayAlone) {
    const NIMBET_DB_IPV4_ADDR_ENTRY e = make_entry(9, 0);
    ASSERT_EQ(0u, NIMBET_DB_WriteIpv4Entry(&e));
    NIMBET_DB_IPV4_ADDR_ENTRY got = sentinel(9);
    ASSERT_EQ(0u, NIMBET_DB_ReadIpv4Entry(&got));
    EXPECT_EQ(0u, got.addressCount);
    EXPECT_EQ(0xEEEEEEEEu, got.addresses[0].address);
    EXPECT_EQ(e.vrfIndex, got.vrfIndex);
}

TEST_F(Ipv4Addr, SecondWriteReplacesTheWholeList) {
    const NIMBET_DB_IPV4_ADDR_ENTRY first = make_entry(4, 5);
    NIMBET_DB_IPV4_ADDR_ENTRY second = make_entry(4, 2);
    second.addresses[0].address = 0xC0A80001u;
    second.vrfIndex = 77;
    ASSERT_EQ(0u, NIMBET_DB_WriteIpv4Entry(&first));
    ASSERT_EQ(0u, NIMBET_DB_WriteIpv4Entry(&second));
    NIMBET_DB_IPV4_ADDR_ENTRY got = sentinel(4);
    ASSERT_EQ(0u, NIMBET_DB_ReadIpv4Entry(&got));
    expect_same(second, got);
    EXPECT_EQ(1u, db_test_row_count(kTable));
}

TEST_F(Ipv4Addr, ListLongerThanTheRecordIsCutAtItsCapacity) {
    // Another writer of the table may store more entries than a record holds.
    DB_HANDLE h = 0, child = 0;
    ASSERT_EQ(0u, db_create_ifm_ipv4_address_obj(DB_OPEN_WRITE, 0, &h));
    ASSERT_EQ(0u, db_set_ifm_ipv4_address_ifIndex(h, 8));
    ASSERT_EQ(0u, db_create_child_node(h, 0, "ipv4_address_list", 0, 0, &child));
    for (uint32_t i = 0; i < NIMBET_DB_IPV4_ADDR_MAX_NUM + 4; ++i) {
        ASSERT_EQ(0u, db_child_push_back(child));
        ASSERT_EQ(0u, db_set_ifm_ipv4_address_ipv4_address_list_address(child, i));
    }
    ASSERT_EQ(0u, db_write_obj(h));
    db_release_ifm_ipv4_address_object(h);
    auto *got = new NIMBET_DB_IPV4_ADDR_ENTRY(sentinel(8));
    ASSERT_EQ(0u, NIMBET_DB_ReadIpv4Entry(got));
    EXPECT_EQ(NIMBET_DB_IPV4_ADDR_MAX_NUM, got->addressCount);
    EXPECT_EQ(NIMBET_DB_IPV4_ADDR_MAX_NUM - 1, got->addresses[NIMBET_DB_IPV4_ADDR_MAX_NUM - 1].address);
    delete got;
}

TEST_F(Ipv4Addr, NullArgumentsAndOverfullRecordsTouchNoDatabase) {
    NIMBET_DB_IPV4_ADDR_ENTRY big = make_entry(1, 0);
    big.addressCount = NIMBET_DB_IPV4_ADDR_MAX_NUM + 1;
    EXPECT_EQ(1u, NIMBET_DB_WriteIpv4Entry(&big));
    EXPECT_EQ(1u, NIMBET_DB_WriteIpv4Entry(nullptr));
    EXPECT_EQ(1u, NIMBET_DB_ReadIpv4Entry(nullptr));
    EXPECT_EQ(1u, NIMBET_DB_RemoveIpv4Entry(nullptr));
    EXPECT_EQ(1u, NIMBET_DB_GetIpv4AddrItem(0, nullptr));
    EXPECT_EQ(1u, NIMBET_DB_SetIpv4AddrItem(0, nullptr));
    EXPECT_EQ(0u, db_test_call_count(DB_OP_CREATE_OBJ, nullptr));
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

TEST_F(Ipv4Addr, ReadOfAMissingInterfaceIsSilent) {
    NIMBET_DB_IPV4_ADDR_ENTRY got = sentinel(42);
    EXPECT_EQ(1u, NIMBET_DB_ReadIpv4Entry(&got));
    EXPECT_EQ(0xEEEEEEEEu, got.vrfIndex);
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

TEST_F(Ipv4Addr, RemoveDeletesTheRowAndToleratesAMissingOne) {
    const NIMBET_DB_IPV4_ADDR_ENTRY e = make_entry(6, 1);
    ASSERT_EQ(0u, NIMBET_DB_WriteIpv4Entry(&e));
    EXPECT_EQ(0u, NIMBET_DB_RemoveIpv4Entry(&e.ifIndex));
    EXPECT_TRUE(stats().empty());
    NIMBET_DB_IPV4_ADDR_ENTRY got = sentinel(6);
    EXPECT_EQ(1u, NIMBET_DB_ReadIpv4Entry(&got));
    // The database answers a missing key with DB_RET_TOLERATED: success, counted.
    EXPECT_EQ(0u, NIMBET_DB_RemoveIpv4Entry(&e.ifIndex));
    EXPECT_EQ((StatDelta{{{kStat, DB_ERR_TOLERATED}, 1}}), stats());
    EXPECT_TRUE(messages().empty());
}

TEST_F(Ipv4Addr, ReadReportsSuccessEvenWhenAFieldGetterFails) {
    const NIMBET_DB_IPV4_ADDR_ENTRY e = make_entry(5, 2);
    ASSERT_EQ(0u, NIMBET_DB_WriteIpv4Entry(&e));
    ASSERT_EQ(0u, db_test_inject(DB_OP_GET_FIELD, kTable, "vrfIndex", 1, 1, 4242));
    NIMBET_DB_IPV4_ADDR_ENTRY got = sentinel(5);
    EXPECT_EQ(0u, NIMBET_DB_ReadIpv4Entry(&got));
    EXPECT_EQ(std::vector<std::string>{"get ifm ipv4 address vrfIndex fail."}, formats());
    // Every header getter ran; the failed one wrote nothing; the list was not reached.
    EXPECT_EQ(0xEEEEEEEEu, got.vrfIndex);
    EXPECT_EQ(e.app_serial_id, got.app_serial_id);
    EXPECT_EQ(e.errcode_normal_prio, got.errcode_normal_prio);
    EXPECT_EQ(0xEEEEEEEEu, got.addressCount);
    EXPECT_TRUE(stats().empty());
}

// One failure path of a whole-row operation, driven by fault injection.
struct PathCase {
    const char *name;
    int op;  // 0 read, 1 write, 2 remove
    DB_TEST_OP inject;
    const char *field;
    uint32_t status;
    uint32_t result;
    std::vector<std::string> texts;
    StatDelta stats;
    bool rowAfter;  // the table holds the row of ifIndex 2 afterwards
};

class Ipv4Path : public Ipv4Addr, public ::testing::WithParamInterface<PathCase> {};

TEST_P(Ipv4Path, ResultMessagesAndStatistics) {
    const PathCase &c = GetParam();
    NIMBET_DB_IPV4_ADDR_ENTRY e = make_entry(2, 3);
    if (c.op != 1) {
        ASSERT_EQ(0u, NIMBET_DB_WriteIpv4Entry(&e));
    }
    before_ = Counters::now();
    ASSERT_EQ(0u, db_test_inject(c.inject, kTable, c.field, 1, 1, c.status));
    uint32_t r = 0;
    if (c.op == 0) {
        r = NIMBET_DB_ReadIpv4Entry(&e);
    } else if (c.op == 1) {
        r = NIMBET_DB_WriteIpv4Entry(&e);
    } else {
        r = NIMBET_DB_RemoveIpv4Entry(&e.ifIndex);
    }
    EXPECT_EQ(c.result, r);
    EXPECT_EQ(c.texts, texts());
    EXPECT_EQ(c.stats, stats());
    EXPECT_EQ(c.rowAfter ? 1u : 0u, db_test_row_count(kTable));
}

const PathCase kPaths[] = {
    {"ReadOpenFails", 0, DB_OP_CREATE_OBJ, nullptr, 321, 1,
     {"Get create ifm ipv4 address obj fail, ret = 321."}, {}, true},
    {"ReadFails", 0, DB_OP_READ, nullptr, 555, 1,
     {"Get ifm ipv4 address db fail, ret = 555."}, {{{kStat, DB_ERR_READ}, 1}}, true},
    {"WriteOpenFails", 1, DB_OP_CREATE_OBJ, nullptr, 9, 1,
     {"Get create ifm ipv4 address obj fail, ret = 9."}, {}, false},
    {"WriteTolerated", 1, DB_OP_WRITE, nullptr, DB_RET_TOLERATED, 0, {}, {{{kStat, DB_ERR_TOLERATED}, 1}}, false},
    {"WriteFailsSilently", 1, DB_OP_WRITE, nullptr, 77, 1, {}, {{{kStat, DB_ERR_WRITE}, 1}}, false},
    // A header setter failing: the store answers the OR of the five setters.
    {"HeaderSetterFails", 1, DB_OP_SET_FIELD, "app_serial_id", 0x30, 0x30,
     {"set ifm ipv4 address fail, ret.", "set ipv4 address item fail, ret = 48."}, {}, false},
    {"ChildNodeFails", 1, DB_OP_CREATE_CHILD, nullptr, 66, 1, {"set ipv4 address item fail, ret = 1."}, {}, false},
    {"PushBackFails", 1, DB_OP_CHILD_PUSH_BACK, nullptr, 66, 1, {"set ipv4 address item fail, ret = 1."}, {}, false},
    {"ListSetterFails", 1, DB_OP_SET_FIELD, "ipv4_address_list_masklen", 66, 1,
     {"set ifm ipv4 address fail, ret.", "set ipv4 address item fail, ret = 1."}, {}, false},
    {"StampSetterFails", 1, DB_OP_SET_FIELD, "time_stamp_create", 1234, 1234,
     {"set ipv4 address item fail, ret = 1234."}, {}, false},
    {"RemoveOpenFails", 2, DB_OP_CREATE_OBJ, nullptr, 5, 1,
     {"Get create ifm ipv4 address obj fail, ret = 5."}, {}, true},
    {"RemoveTolerated", 2, DB_OP_REMOVE, nullptr, DB_RET_TOLERATED, 0, {}, {{{kStat, DB_ERR_TOLERATED}, 1}}, true},
    {"RemoveFails", 2, DB_OP_REMOVE, nullptr, DB_RET_NO_RECORD, 1,
     {"Remove l3if db fail, ret = 15005."}, {{{kStat, DB_ERR_REMOVE}, 1}}, true},
};

INSTANTIATE_TEST_SUITE_P(Paths, Ipv4Path, ::testing::ValuesIn(kPaths),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(Ipv4Addr, OpenFailureMessagesUseTheOneFormat) {
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, kTable, nullptr, 1, 3, 8));
    NIMBET_DB_IPV4_ADDR_ENTRY e = make_entry(1, 1);
    EXPECT_EQ(1u, NIMBET_DB_ReadIpv4Entry(&e));
    EXPECT_EQ(1u, NIMBET_DB_WriteIpv4Entry(&e));
    EXPECT_EQ(1u, NIMBET_DB_RemoveIpv4Entry(&e.ifIndex));
    EXPECT_EQ((std::vector<std::string>{kOpenFail, kOpenFail, kOpenFail}), formats());
}

// The fill on an object the caller positioned.
class Ipv4Fill : public Ipv4Addr {
protected:
    void SetUp() override {
        Ipv4Addr::SetUp();
        const NIMBET_DB_IPV4_ADDR_ENTRY e = make_entry(11, 4);
        ASSERT_EQ(0u, NIMBET_DB_WriteIpv4Entry(&e));
        ASSERT_EQ(0u, db_create_ifm_ipv4_address_obj(DB_OPEN_READ, 0, &h_));
        const uint32_t desc = 0x00010004u;
        const uint8_t key[4] = {11, 0, 0, 0};
        ASSERT_EQ(0u, db_read_obj(h_, &desc, key));
    }
    void TearDown() override {
        db_release_ifm_ipv4_address_object(h_);
        Ipv4Addr::TearDown();
    }
    DB_HANDLE h_ = 0;
};

TEST_F(Ipv4Fill, ChildCountFailureIsLoggedAndReturned) {
    ASSERT_EQ(0u, db_test_inject(DB_OP_CHILD_COUNT, kTable, nullptr, 1, 1, 9876));
    NIMBET_DB_IPV4_ADDR_ENTRY got = sentinel(0);
    EXPECT_EQ(9876u, NIMBET_DB_GetIpv4AddrItem(h_, &got));
    EXPECT_EQ(std::vector<std::string>{"get child count fail, ret = 9876."}, texts());
    EXPECT_EQ(0xEEEEEEEEu, got.addressCount);
    EXPECT_EQ(11u, got.ifIndex);
}

TEST_F(Ipv4Fill, ChildGetAndListGetterFailuresAnswerOne) {
    ASSERT_EQ(0u, db_test_inject(DB_OP_CHILD_GET, kTable, nullptr, 3, 1, 9876));
    NIMBET_DB_IPV4_ADDR_ENTRY got = sentinel(0);
    EXPECT_EQ(1u, NIMBET_DB_GetIpv4AddrItem(h_, &got));
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(4u, got.addressCount);
    EXPECT_EQ(make_entry(11, 4).addresses[1].address, got.addresses[1].address);
    EXPECT_EQ(0xEEEEEEEEu, got.addresses[2].address);

    ASSERT_EQ(0u, db_test_inject(DB_OP_GET_FIELD, kTable, "ipv4_address_list_type", 1, 1, 5));
    EXPECT_EQ(1u, NIMBET_DB_GetIpv4AddrItem(h_, &got));
    EXPECT_EQ(std::vector<std::string>{"get ifm ipv4 address fail."}, formats());
}

}  // namespace
}  // namespace nimbet_test
