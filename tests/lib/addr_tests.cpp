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

// Whole-row operations of both address tables through one set of adapters.
struct Family {
    const char *table;
    uint32_t stat;
    uint32_t (*write)(uint32_t ifIndex, uint32_t count);
    uint32_t (*read)(uint32_t ifIndex);
    uint32_t (*remove)(uint32_t ifIndex);
};

uint32_t write_v4(uint32_t ifIndex, uint32_t count) {
    const NIMBET_DB_IPV4_ADDR_ENTRY e = make_entry(ifIndex, count);
    return NIMBET_DB_WriteIpv4Entry(&e);
}
uint32_t read_v4(uint32_t ifIndex) {
    NIMBET_DB_IPV4_ADDR_ENTRY e = sentinel(ifIndex);
    return NIMBET_DB_ReadIpv4Entry(&e);
}
uint32_t remove_v4(uint32_t ifIndex) { return NIMBET_DB_RemoveIpv4Entry(&ifIndex); }

NIMBET_DB_IPV6_ADDR_ENTRY make_entry6(uint32_t ifIndex, uint32_t count) {
    NIMBET_DB_IPV6_ADDR_ENTRY e;
    std::memset(&e, 0, sizeof e);
    e.ifIndex = ifIndex;
    e.vrfIndex = ifIndex + 3;
    e.app_serial_id = 0x600D0000u + ifIndex;
    e.status_normal_prio = 1;
    e.errcode_normal_prio = 2;
    e.addressCount = count;
    for (uint32_t i = 0; i < count; ++i) {
        for (uint8_t b = 0; b < 16; ++b) e.addresses[i].address[b] = static_cast<uint8_t>(0x20 + 16 * i + b);
        e.addresses[i].prefixlen = static_cast<uint8_t>(64 + i);
        e.addresses[i].type = static_cast<uint8_t>(i + 1);
    }
    return e;
}
uint32_t write_v6(uint32_t ifIndex, uint32_t count) {
    const NIMBET_DB_IPV6_ADDR_ENTRY e = make_entry6(ifIndex, count);
    return NIMBET_DB_WriteIpv6Entry(&e);
}
uint32_t read_v6(uint32_t ifIndex) {
    NIMBET_DB_IPV6_ADDR_ENTRY e;
    std::memset(&e, 0xEE, sizeof e);
    e.ifIndex = ifIndex;
    return NIMBET_DB_ReadIpv6Entry(&e);
}
uint32_t remove_v6(uint32_t ifIndex) { return NIMBET_DB_RemoveIpv6Entry(&ifIndex); }

const Family kV4 = {"ifm_ipv4_address", DB_STAT_IFM_IPV4_ADDRESS, write_v4, read_v4, remove_v4};
const Family kV6 = {"ifm_ipv6_address", DB_STAT_IFM_IPV6_ADDRESS, write_v6, read_v6, remove_v6};

// One failure path of a whole-row operation, driven by fault injection.
struct PathCase {
    const char *name;
    const Family *family;
    int op;  // 0 read, 1 write, 2 remove
    DB_TEST_OP inject;
    const char *field;
    uint32_t status;
    uint32_t result;
    std::vector<std::string> texts;
    StatDelta stats;
    bool rowAfter;  // the table holds the row of ifIndex 2 afterwards
};

void PrintTo(const PathCase &c, std::ostream *os) { *os << c.name; }

class AddrPath : public Ipv4Addr, public ::testing::WithParamInterface<PathCase> {};

TEST_P(AddrPath, ResultMessagesAndStatistics) {
    const PathCase &c = GetParam();
    const Family &f = *c.family;
    if (c.op != 1) {
        ASSERT_EQ(0u, f.write(2, 3));
    }
    before_ = Counters::now();
    ASSERT_EQ(0u, db_test_inject(c.inject, f.table, c.field, 1, 1, c.status));
    const uint32_t r = c.op == 0 ? f.read(2) : c.op == 1 ? f.write(2, 3) : f.remove(2);
    EXPECT_EQ(c.result, r);
    EXPECT_EQ(c.texts, texts());
    EXPECT_EQ(c.stats, stats());
    EXPECT_EQ(c.rowAfter ? 1u : 0u, db_test_row_count(f.table));
}

constexpr uint32_t kStat6 = DB_STAT_IFM_IPV6_ADDRESS;

const PathCase kPaths[] = {
    {"V4ReadOpenFails", &kV4, 0, DB_OP_CREATE_OBJ, nullptr, 321, 1,
     {"Get create ifm ipv4 address obj fail, ret = 321."}, {}, true},
    {"V4ReadFails", &kV4, 0, DB_OP_READ, nullptr, 555, 1,
     {"Get ifm ipv4 address db fail, ret = 555."}, {{{kStat, DB_ERR_READ}, 1}}, true},
    {"V4WriteOpenFails", &kV4, 1, DB_OP_CREATE_OBJ, nullptr, 9, 1,
     {"Get create ifm ipv4 address obj fail, ret = 9."}, {}, false},
    {"V4WriteTolerated", &kV4, 1, DB_OP_WRITE, nullptr, DB_RET_TOLERATED, 0, {}, {{{kStat, DB_ERR_TOLERATED}, 1}}, false},
    {"V4WriteFailsSilently", &kV4, 1, DB_OP_WRITE, nullptr, 77, 1, {}, {{{kStat, DB_ERR_WRITE}, 1}}, false},
    // A header setter failing: the store answers the OR of the five setters.
    {"V4HeaderSetterFails", &kV4, 1, DB_OP_SET_FIELD, "app_serial_id", 0x30, 0x30,
     {"set ifm ipv4 address fail, ret.", "set ipv4 address item fail, ret = 48."}, {}, false},
    {"V4ChildNodeFails", &kV4, 1, DB_OP_CREATE_CHILD, nullptr, 66, 1, {"set ipv4 address item fail, ret = 1."}, {}, false},
    {"V4PushBackFails", &kV4, 1, DB_OP_CHILD_PUSH_BACK, nullptr, 66, 1, {"set ipv4 address item fail, ret = 1."}, {}, false},
    {"V4ListSetterFails", &kV4, 1, DB_OP_SET_FIELD, "ipv4_address_list_masklen", 66, 1,
     {"set ifm ipv4 address fail, ret.", "set ipv4 address item fail, ret = 1."}, {}, false},
    {"V4StampSetterFails", &kV4, 1, DB_OP_SET_FIELD, "time_stamp_create", 1234, 1234,
     {"set ipv4 address item fail, ret = 1234."}, {}, false},
    {"V4RemoveOpenFails", &kV4, 2, DB_OP_CREATE_OBJ, nullptr, 5, 1,
     {"Get create ifm ipv4 address obj fail, ret = 5."}, {}, true},
    {"V4RemoveTolerated", &kV4, 2, DB_OP_REMOVE, nullptr, DB_RET_TOLERATED, 0, {}, {{{kStat, DB_ERR_TOLERATED}, 1}}, true},
    {"V4RemoveFails", &kV4, 2, DB_OP_REMOVE, nullptr, DB_RET_NO_RECORD, 1,
     {"Remove l3if db fail, ret = 15005."}, {{{kStat, DB_ERR_REMOVE}, 1}}, true},
    // IPv6: the same steps, with its own messages and statuses passed through.
    {"V6ReadOpenFails", &kV6, 0, DB_OP_CREATE_OBJ, nullptr, 321, 1,
     {"Get create ifm ipv6 address obj fail, ret = 321."}, {}, true},
    {"V6ReadFails", &kV6, 0, DB_OP_READ, nullptr, 555, 1,
     {"Get ifm ipv6 address db fail, ret = 555."}, {{{kStat6, DB_ERR_READ}, 1}}, true},
    {"V6WriteTolerated", &kV6, 1, DB_OP_WRITE, nullptr, DB_RET_TOLERATED, 0, {}, {{{kStat6, DB_ERR_TOLERATED}, 1}}, false},
    {"V6WriteFailsLoudly", &kV6, 1, DB_OP_WRITE, nullptr, 77, 1,
     {"Write ifm ipv6 address db fail, ret = 77."}, {{{kStat6, DB_ERR_WRITE}, 1}}, false},
    {"V6HeaderSetterFails", &kV6, 1, DB_OP_SET_FIELD, "vrfIndex", 0x30, 0x30,
     {"set ifm ipv6 address vrfindex fail", "db set ipv6 address item fail, ret = 48."}, {}, false},
    {"V6ChildNodeFails", &kV6, 1, DB_OP_CREATE_CHILD, nullptr, 66, 66,
     {"create child node fail, ret: 66", "db set ipv6 address item fail, ret = 66."}, {}, false},
    {"V6PushBackFails", &kV6, 1, DB_OP_CHILD_PUSH_BACK, nullptr, 67, 67,
     {"child push back fail, ret: 67", "db set ipv6 address item fail, ret = 67."}, {}, false},
    {"V6ListSetterFails", &kV6, 1, DB_OP_SET_FIELD, "ipv6_address_list_address", 66, 1,
     {"set ifm ipv6 address fail.", "db set ipv6 address item fail, ret = 1."}, {}, false},
    {"V6RemoveTolerated", &kV6, 2, DB_OP_REMOVE, nullptr, DB_RET_TOLERATED, 0, {}, {{{kStat6, DB_ERR_TOLERATED}, 1}}, true},
    {"V6RemoveFails", &kV6, 2, DB_OP_REMOVE, nullptr, 99, 1,
     {"Remove l3if db fail, ret = 99."}, {{{kStat6, DB_ERR_REMOVE}, 1}}, true},
    {"V6RemoveOpenFails", &kV6, 2, DB_OP_CREATE_OBJ, nullptr, 5, 1,
     {"Get create ifm ipv6 address obj fail, ret = 5."}, {}, true},
};

INSTANTIATE_TEST_SUITE_P(Paths, AddrPath, ::testing::ValuesIn(kPaths),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(Ipv4Addr, OpenFailureMessagesUseTheOneFormat) {
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, kTable, nullptr, 1, 3, 8));
    NIMBET_DB_IPV4_ADDR_ENTRY e = make_entry(1, 1);
    EXPECT_EQ(1u, NIMBET_DB_ReadIpv4Entry(&e));
    EXPECT_EQ(1u, NIMBET_DB_WriteIpv4Entry(&e));
    EXPECT_EQ(1u, NIMBET_DB_RemoveIpv4Entry(&e.ifIndex));
    EXPECT_EQ((std::vector<std::string>{kOpenFail, kOpenFail, kOpenFail}), formats());
}

// ---------------------------------------------------------------- IPv6

TEST_F(Ipv4Addr, Ipv6RowReadsBackEntryByEntry) {
    NIMBET_DB_IPV6_ADDR_ENTRY e = make_entry6(12, 3);
    std::memset(e.addresses[0].address, 0x00, 16);
    std::memset(e.addresses[2].address, 0xFF, 16);
    ASSERT_EQ(0u, NIMBET_DB_WriteIpv6Entry(&e));
    NIMBET_DB_IPV6_ADDR_ENTRY got;
    std::memset(&got, 0xEE, sizeof got);
    got.ifIndex = 12;
    ASSERT_EQ(0u, NIMBET_DB_ReadIpv6Entry(&got));
    EXPECT_EQ(e.vrfIndex, got.vrfIndex);
    EXPECT_EQ(e.app_serial_id, got.app_serial_id);
    ASSERT_EQ(3u, got.addressCount);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(0, std::memcmp(e.addresses[i].address, got.addresses[i].address, 16)) << i;
        EXPECT_EQ(e.addresses[i].prefixlen, got.addresses[i].prefixlen) << i;
        EXPECT_EQ(e.addresses[i].type, got.addresses[i].type) << i;
    }
    EXPECT_EQ(0xEE, got.addresses[3].prefixlen);
    EXPECT_TRUE(messages().empty());
}

// The fill on an object the caller positioned on a row.
template <class Entry, uint32_t (*Create)(uint32_t, uint32_t, DB_HANDLE *), uint32_t (*Release)(DB_HANDLE)>
class FillOn : public Ipv4Addr {
protected:
    void open(uint32_t ifIndex) {
        ASSERT_EQ(0u, Create(DB_OPEN_READ, 0, &h_));
        const uint32_t desc = 0x00010004u;
        uint8_t key[4] = {static_cast<uint8_t>(ifIndex), 0, 0, 0};
        ASSERT_EQ(0u, db_read_obj(h_, &desc, key));
        std::memset(&got_, 0xEE, sizeof got_);
    }
    void TearDown() override {
        Release(h_);
        Ipv4Addr::TearDown();
    }
    DB_HANDLE h_ = 0;
    Entry got_;
};

using Ipv4Fill = FillOn<NIMBET_DB_IPV4_ADDR_ENTRY, db_create_ifm_ipv4_address_obj, db_release_ifm_ipv4_address_object>;
using Ipv6Fill = FillOn<NIMBET_DB_IPV6_ADDR_ENTRY, db_create_ifm_ipv6_address_obj, db_release_ifm_ipv6_address_object>;

TEST_F(Ipv4Fill, ChildCountFailureIsLoggedAndReturned) {
    ASSERT_EQ(0u, write_v4(11, 4));
    open(11);
    ASSERT_EQ(0u, db_test_inject(DB_OP_CHILD_COUNT, kTable, nullptr, 1, 1, 9876));
    EXPECT_EQ(9876u, NIMBET_DB_GetIpv4AddrItem(h_, &got_));
    EXPECT_EQ(std::vector<std::string>{"get child count fail, ret = 9876."}, texts());
    EXPECT_EQ(0xEEEEEEEEu, got_.addressCount);
    EXPECT_EQ(11u, got_.ifIndex);
}

TEST_F(Ipv4Fill, FailuresAfterTheCountAnswerOne) {
    ASSERT_EQ(0u, write_v4(11, 4));
    open(11);
    ASSERT_EQ(0u, db_test_inject(DB_OP_CHILD_GET, kTable, nullptr, 3, 1, 9876));
    EXPECT_EQ(1u, NIMBET_DB_GetIpv4AddrItem(h_, &got_));
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(4u, got_.addressCount);
    EXPECT_EQ(make_entry(11, 4).addresses[1].address, got_.addresses[1].address);
    EXPECT_EQ(0xEEEEEEEEu, got_.addresses[2].address);

    ASSERT_EQ(0u, db_test_inject(DB_OP_GET_FIELD, kTable, "ipv4_address_list_type", 1, 1, 5));
    EXPECT_EQ(1u, NIMBET_DB_GetIpv4AddrItem(h_, &got_));
    EXPECT_EQ(std::vector<std::string>{"get ifm ipv4 address fail."}, formats());
}

TEST_F(Ipv6Fill, CountFailureGoesOnWithAnEmptyList) {
    ASSERT_EQ(0u, write_v6(11, 2));
    open(11);
    ASSERT_EQ(0u, db_test_inject(DB_OP_CHILD_COUNT, "ifm_ipv6_address", nullptr, 1, 1, 9876));
    EXPECT_EQ(9876u, NIMBET_DB_GetIpv6AddrItem(h_, &got_));
    EXPECT_EQ(std::vector<std::string>{"GetIpv6AddrItem get child count fail, ret = 9876."}, texts());
    EXPECT_EQ(0u, got_.addressCount);
}

struct Ipv6FillCase {
    const char *name;
    DB_TEST_OP op;
    const char *field;
    uint32_t nth;
    std::vector<std::string> formats;
};

class Ipv6FillPath : public Ipv6Fill, public ::testing::WithParamInterface<Ipv6FillCase> {};

TEST_P(Ipv6FillPath, PassesTheDatabaseStatusThrough) {
    ASSERT_EQ(0u, write_v6(11, 2));
    open(11);
    ASSERT_EQ(0u, db_test_inject(GetParam().op, "ifm_ipv6_address", GetParam().field, GetParam().nth, 1, 0x41));
    EXPECT_EQ(0x41u, NIMBET_DB_GetIpv6AddrItem(h_, &got_));
    EXPECT_EQ(GetParam().formats, formats());
}

INSTANTIATE_TEST_SUITE_P(
    Paths, Ipv6FillPath,
    ::testing::Values(Ipv6FillCase{"HeaderGetter", DB_OP_GET_FIELD, "app_serial_id", 1, {"get ifm ipv6 address fail."}},
                      Ipv6FillCase{"ChildNode", DB_OP_CREATE_CHILD, nullptr, 1, {}},
                      Ipv6FillCase{"ChildGet", DB_OP_CHILD_GET, nullptr, 2, {}},
                      Ipv6FillCase{"AddressGetter", DB_OP_GET_FIELD, "ipv6_address_list_address", 2,
                                   {"get ifm ipv6 address fail."}}),
    [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- counts

TEST_F(Ipv4Addr, PerInterfaceCountsOfBothTables) {
    ASSERT_EQ(0u, write_v4(1, 3));
    ASSERT_EQ(0u, write_v4(2, 0));
    ASSERT_EQ(0u, write_v6(1, 5));
    uint32_t n = 99;
    EXPECT_EQ(0u, NIMBET_DB_GetIFIpv4AddrCount(1, &n));
    EXPECT_EQ(3u, n);
    EXPECT_EQ(0u, NIMBET_DB_GetIFIpv4AddrCount(2, &n));
    EXPECT_EQ(0u, n);
    EXPECT_EQ(0u, NIMBET_DB_GetIFIpv6AddrCount(1, &n));
    EXPECT_EQ(5u, n);
    n = 99;
    EXPECT_EQ(1u, NIMBET_DB_GetIFIpv6AddrCount(2, &n)) << "no row";
    EXPECT_EQ(1u, NIMBET_DB_GetIFIpv4AddrCount(3, &n));
    EXPECT_EQ(99u, n);
    EXPECT_EQ(1u, NIMBET_DB_GetIFIpv4AddrCount(1, nullptr));
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

struct CountCase {
    const char *name;
    uint32_t (*count)(uint32_t, uint32_t *);
    const char *table;
    DB_TEST_OP op;
    uint32_t result;
    const char *text;
    StatDelta stats;
};

class CountPath : public Ipv4Addr, public ::testing::WithParamInterface<CountCase> {};

TEST_P(CountPath, FailuresOfTheCountRoad) {
    const CountCase &c = GetParam();
    ASSERT_EQ(0u, write_v4(1, 2));
    ASSERT_EQ(0u, write_v6(1, 2));
    before_ = Counters::now();
    ASSERT_EQ(0u, db_test_inject(c.op, c.table, nullptr, 1, 1, 812));
    uint32_t n = 99;
    EXPECT_EQ(c.result, c.count(1, &n));
    EXPECT_EQ(99u, n);
    EXPECT_EQ(c.text ? std::vector<std::string>{c.text} : std::vector<std::string>{}, texts());
    EXPECT_EQ(c.stats, stats());
}

INSTANTIATE_TEST_SUITE_P(
    Paths, CountPath,
    ::testing::Values(
        CountCase{"V4Open", NIMBET_DB_GetIFIpv4AddrCount, "ifm_ipv4_address", DB_OP_CREATE_OBJ, 1,
                  "Get create ifm ipv4 address obj fail, ret = 812.", {}},
        CountCase{"V4Read", NIMBET_DB_GetIFIpv4AddrCount, "ifm_ipv4_address", DB_OP_READ, 1,
                  "Get ifm ipv4 address db failm, ret = 812.", {{{kStat, DB_ERR_READ}, 1}}},
        CountCase{"V4ListCount", NIMBET_DB_GetIFIpv4AddrCount, "ifm_ipv4_address", DB_OP_CHILD_COUNT, 812, nullptr, {}},
        CountCase{"V4ChildNode", NIMBET_DB_GetIFIpv4AddrCount, "ifm_ipv4_address", DB_OP_CREATE_CHILD, 812, nullptr, {}},
        CountCase{"V6Open", NIMBET_DB_GetIFIpv6AddrCount, "ifm_ipv6_address", DB_OP_CREATE_OBJ, 1,
                  "Get create ifm ipv6 address obj fail, ret = 812.", {}},
        CountCase{"V6Read", NIMBET_DB_GetIFIpv6AddrCount, "ifm_ipv6_address", DB_OP_READ, 1,
                  "Get ifm ipv6 address db fail, ret = 812.", {{{kStat6, DB_ERR_READ}, 1}}},
        CountCase{"V6ListCount", NIMBET_DB_GetIFIpv6AddrCount, "ifm_ipv6_address", DB_OP_CHILD_COUNT, 812, nullptr, {}}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(Ipv4Addr, Ipv6InterfaceCountIsTheRowCountAndSilent) {
    uint32_t n = 99;
    EXPECT_EQ(0u, NIMBET_DB_GetIpV6IfCount(&n));
    EXPECT_EQ(0u, n);
    for (uint32_t i = 1; i <= 3; ++i) ASSERT_EQ(0u, write_v6(i, 1));
    ASSERT_EQ(0u, write_v4(9, 1));
    EXPECT_EQ(0u, NIMBET_DB_GetIpV6IfCount(&n));
    EXPECT_EQ(3u, n);
    EXPECT_EQ(1u, NIMBET_DB_GetIpV6IfCount(nullptr));

    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, "ifm_ipv6_address", nullptr, 1, 1, 71));
    n = 99;
    EXPECT_EQ(71u, NIMBET_DB_GetIpV6IfCount(&n));
    ASSERT_EQ(0u, db_test_inject(DB_OP_COUNT, "ifm_ipv6_address", nullptr, 1, 1, 72));
    const uint64_t releases = db_test_call_count(DB_OP_RELEASE_OBJ, "ifm_ipv6_address");
    EXPECT_EQ(72u, NIMBET_DB_GetIpV6IfCount(&n));
    EXPECT_EQ(99u, n);
    EXPECT_EQ(releases + 1, db_test_call_count(DB_OP_RELEASE_OBJ, "ifm_ipv6_address")) << "the object is released";
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

}  // namespace
}  // namespace nimbet_test
