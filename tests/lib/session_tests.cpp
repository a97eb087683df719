// The six session kinds: one body over all kinds for the common steps,
// then the byte layouts and messages where the kinds differ.
#include <arpa/inet.h>

#include <array>
#include <set>

#include "session_kinds.h"
#include "support.h"

namespace nimbet_test {
namespace {

class Session : public LibTest, public ::testing::WithParamInterface<SessionKind> {
protected:
    std::vector<uint8_t> rec(uint32_t seed) {
        std::vector<uint8_t> r(GetParam().recSize);
        GetParam().make(r.data(), seed);
        return r;
    }
    std::map<unsigned, uint32_t> slots() const { return slot_delta(before_.session, g_nimbetSessionCnt); }
    // The record of `full` with only its key fields, the rest a sentinel.
    std::vector<uint8_t> key_only(const std::vector<uint8_t> &full) {
        std::vector<uint8_t> k(full.size(), 0);
        GetParam().copy_key(k.data(), full.data());
        return k;
    }
    // Row images of two records, time stamps left out.
    std::vector<uint8_t> image(const std::vector<uint8_t> &r) {
        std::vector<uint8_t> img(GetParam().rowLen, 0);
        GetParam().fill(r.data(), img.data());
        img.resize(img.size() - 8);
        return img;
    }
};

using Slots = std::map<unsigned, uint32_t>;

TEST_P(Session, WriteThenReadByKeyGivesEveryStoredField) {
    const SessionKind &k = GetParam();
    const auto a = rec(1);
    ASSERT_EQ(0u, k.write(a.data()));
    auto got = key_only(a);
    ASSERT_EQ(0u, k.read(got.data()));
    EXPECT_EQ(a, got);
    EXPECT_EQ((Slots{{0, 1}, {1, 1}, {2, 1}, {3, 1}}), slots());
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

TEST_P(Session, TheRowImageStartsWithTheKeyAndEndsWithTheWriteTime) {
    const SessionKind &k = GetParam();
    const auto a = rec(2);
    std::vector<uint8_t> img(k.rowLen, 0);
    const int64_t lo = NIMBET_DB_GetSysTime();
    k.fill(a.data(), img.data());
    int64_t stamp = 0;
    for (int i = 7; i >= 0; --i) stamp = stamp << 8 | img[k.rowLen - 8 + i];
    EXPECT_LE(lo, stamp);
    EXPECT_GE(NIMBET_DB_GetSysTime(), stamp);
    // The key bytes of the row are those of the key-only record.
    std::vector<uint8_t> keyImg(k.rowLen, 0);
    k.fill(key_only(a).data(), keyImg.data());
    EXPECT_EQ(std::vector<uint8_t>(img.begin(), img.begin() + k.keyLen),
              std::vector<uint8_t>(keyImg.begin(), keyImg.begin() + k.keyLen));
    // And the image converts back into the record.
    std::vector<uint8_t> back(a.size(), 0);
    k.get(img.data(), back.data());
    EXPECT_EQ(a, back);
}

TEST_P(Session, AttributesShareTheRowAndKeyFieldsDoNot) {
    const SessionKind &k = GetParam();
    auto a = rec(3);
    ASSERT_EQ(0u, k.write(a.data()));
    auto b = a;
    k.mutate_attrs(b.data());
    ASSERT_NE(a, b);
    ASSERT_EQ(0u, k.write(b.data()));
    EXPECT_EQ(1u, db_test_row_count(k.table)) << "same key, replaced";
    auto got = key_only(a);
    ASSERT_EQ(0u, k.read(got.data()));
    EXPECT_EQ(b, got);
    auto c = a;
    k.mutate_key(c.data());
    ASSERT_EQ(0u, k.write(c.data()));
    EXPECT_EQ(2u, db_test_row_count(k.table));
    ASSERT_EQ(0u, k.remove(a.data()));
    EXPECT_EQ(1u, db_test_row_count(k.table));
    got = key_only(c);
    EXPECT_EQ(0u, k.read(got.data()));
}

TEST_P(Session, MissingRowReadIsSilentAndLeavesTheRecord) {
    const SessionKind &k = GetParam();
    auto a = rec(4);
    const auto before = a;
    EXPECT_EQ(1u, k.read(a.data()));
    EXPECT_EQ(before, a);
    EXPECT_EQ((Slots{{0, 1}, {1, 1}}), slots());
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

TEST_P(Session, NullRecordsMoveNoCounterAndLogOnlyWhereTheKindDoes) {
    const SessionKind &k = GetParam();
    EXPECT_EQ(1u, k.write(nullptr));
    EXPECT_EQ(1u, k.read(nullptr));
    EXPECT_EQ(1u, k.remove(nullptr));
    std::vector<std::string> expected;
    if (k.msgReadNull) expected.push_back(k.msgReadNull);
    if (k.msgDeleteNull) expected.push_back(k.msgDeleteNull);
    EXPECT_EQ(expected, texts());
    EXPECT_TRUE(slots().empty());
    EXPECT_EQ(0u, db_test_call_count(DB_OP_CREATE_OBJ, nullptr));
    // Copying a key with a null side changes nothing.
    auto a = rec(5);
    const auto before = a;
    k.copy_key(a.data(), nullptr);
    k.copy_key(nullptr, a.data());
    EXPECT_EQ(before, a);
}

TEST_P(Session, ReadOfThePositionedObject) {
    const SessionKind &k = GetParam();
    const auto a = rec(6);
    ASSERT_EQ(0u, k.write(a.data()));
    // The aging walk positions an object of the kind's table and converts
    // its row; any walk of the table positions one the same way.
    NIMBET_DB_ITER_INFO *walk = NIMBET_DB_CreatObjectIteratorInfo(k.db_create, k.db_release);
    ASSERT_NE(nullptr, walk);
    ASSERT_EQ(0u, db_root_iterator_next(walk->rootIter));
    const auto obj = static_cast<uint32_t>(walk->dbHandle);
    std::vector<uint8_t> got(a.size(), 0);
    k.by_object(obj, got.data());
    EXPECT_EQ(a, got);
    // The row removed under the object: nothing is read, nothing logged.
    ASSERT_EQ(0u, k.remove(a.data()));
    std::vector<uint8_t> untouched(a.size(), 0xEE);
    k.by_object(obj, untouched.data());
    EXPECT_EQ(std::vector<uint8_t>(a.size(), 0xEE), untouched);
    EXPECT_TRUE(messages().empty());
    // A failed read is logged with the short message and counted.
    ASSERT_EQ(0u, db_test_inject(DB_OP_READ_WITH_BUF, k.table, nullptr, 1, 1, 5150));
    k.by_object(obj, untouched.data());
    EXPECT_EQ(std::vector<std::string>{k.msgShortRead}, formats());
    EXPECT_EQ(std::string(k.msgShortRead).replace(std::string(k.msgShortRead).find("%d"), 2, "5150"), texts().at(0));
    EXPECT_EQ((StatDelta{{{k.stat, DB_ERR_READ}, 1}}), stats());
    k.db_release(walk->dbHandle);
    NIMBET_FreeMem(walk);
}

auto kind_name = [](const auto &info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(Kinds, Session, ::testing::ValuesIn(kSessionKinds), kind_name);

// ---------------------------------------------------------------- failure paths

enum class Op { Write, Read, Delete };

struct PathCase {
    const char *name;
    Op op;
    DB_TEST_OP inject;  // DB_OP_NUM: memcpy_s fails instead
    uint32_t status;
    uint32_t result;   // 0xFFFFFFFF: the injected status itself
    const char *SessionKind::*message;  // null member: silent
    int statKind;      // -1: none
    Slots slots;
};

const PathCase kPaths[] = {
    {"WriteOpen", Op::Write, DB_OP_CREATE_OBJ, 21, 1, &SessionKind::msgWriteOpen, -1, {}},
    {"WriteAllFields", Op::Write, DB_OP_SET_ALL_FIELDS, 22, 0xFFFFFFFFu, nullptr, -1, {{2, 1}, {3, 1}}},
    {"WriteTolerated", Op::Write, DB_OP_WRITE, DB_RET_TOLERATED, 0, nullptr, DB_ERR_TOLERATED, {{2, 1}, {3, 1}}},
    {"WriteFails", Op::Write, DB_OP_WRITE, 23, 1, &SessionKind::msgWriteFail, DB_ERR_WRITE, {{2, 1}, {3, 1}}},
    {"ReadOpen", Op::Read, DB_OP_CREATE_OBJ, 24, 1, &SessionKind::msgReadOpen, -1, {}},
    {"ReadFails", Op::Read, DB_OP_READ_WITH_BUF, 25, 1, &SessionKind::msgReadFail, DB_ERR_READ, {{0, 1}, {1, 1}}},
    {"DeleteOpen", Op::Delete, DB_OP_CREATE_OBJ, 26, 1, &SessionKind::msgDeleteOpen, -1, {}},
    {"DeleteTolerated", Op::Delete, DB_OP_REMOVE, DB_RET_TOLERATED, 0, nullptr, DB_ERR_TOLERATED, {{4, 1}, {5, 1}}},
    {"DeleteNoRecord", Op::Delete, DB_OP_REMOVE, DB_RET_NO_RECORD, 1, &SessionKind::msgRemoveFail, DB_ERR_REMOVE,
     {{4, 1}, {5, 1}}},
};

// Both bounds-checked copies fail with 7: the message shows their sum.
const PathCase kMemcpyPaths[] = {
    {"ReadMemcpy", Op::Read, DB_OP_NUM, 14, 1, &SessionKind::msgReadMemcpy, -1, {}},
    {"DeleteMemcpy", Op::Delete, DB_OP_NUM, 14, 1, &SessionKind::msgDeleteMemcpy, -1, {}},
};

void PrintTo(const PathCase &c, std::ostream *os) { *os << c.name; }

class SessionPath : public LibTest, public ::testing::WithParamInterface<std::tuple<SessionKind, PathCase>> {};

TEST_P(SessionPath, ResultMessageStatisticsAndCounters) {
    const SessionKind &k = std::get<0>(GetParam());
    const PathCase &c = std::get<1>(GetParam());
    std::vector<uint8_t> r(k.recSize);
    k.make(r.data(), 9);
    ASSERT_EQ(0u, k.write(r.data()));
    before_ = Counters::now();
    if (c.inject == DB_OP_NUM) {
        ASSERT_EQ(0, NIMBET_HostTest_FailMemcpy(2, 7));
    } else {
        ASSERT_EQ(0u, db_test_inject(c.inject, k.table, nullptr, 1, 1, c.status));
    }
    const uint32_t creates = db_test_call_count(DB_OP_CREATE_OBJ, k.table);
    const uint32_t result = c.op == Op::Write ? k.write(r.data()) : c.op == Op::Read ? k.read(r.data()) : k.remove(r.data());
    EXPECT_EQ(c.result == 0xFFFFFFFFu ? c.status : c.result, result);
    const char *msg = c.message ? k.*c.message : nullptr;
    EXPECT_EQ(msg ? std::vector<std::string>{msg} : std::vector<std::string>{}, formats());
    if (msg) {
        EXPECT_EQ(0u, texts()[0].find(std::string(msg).substr(0, std::string(msg).find('%')) + std::to_string(c.status)))
            << "the status comes first: " << texts()[0];
    }
    StatDelta expected;
    if (c.statKind >= 0) expected[{k.stat, static_cast<unsigned>(c.statKind)}] = 1;
    EXPECT_EQ(expected, stats());
    const std::map<unsigned, uint32_t> moved = slot_delta(before_.session, g_nimbetSessionCnt);
    EXPECT_EQ(c.slots, moved);
    if (c.inject == DB_OP_NUM) {
        EXPECT_EQ(creates, db_test_call_count(DB_OP_CREATE_OBJ, k.table)) << "no object after a failed copy";
    }
}

auto path_name = [](const auto &info) {
    return std::string(std::get<0>(info.param).name) + std::get<1>(info.param).name;
};
INSTANTIATE_TEST_SUITE_P(Kinds, SessionPath,
                         ::testing::Combine(::testing::ValuesIn(kSessionKinds), ::testing::ValuesIn(kPaths)), path_name);
INSTANTIATE_TEST_SUITE_P(MemcpyKinds, SessionPath,
                         ::testing::Combine(::testing::Values(kSessionKinds[1], kSessionKinds[4], kSessionKinds[5]),
                                            ::testing::ValuesIn(kMemcpyPaths)),
                         path_name);

// ---------------------------------------------------------------- layouts

std::vector<uint8_t> image_of(const SessionKind &k, const void *rec) {
    std::vector<uint8_t> img(k.rowLen, 0);
    k.fill(rec, img.data());
    return img;
}
std::vector<uint8_t> bytes(const std::vector<uint8_t> &img, size_t off, size_t n) {
    return {img.begin() + static_cast<long>(off), img.begin() + static_cast<long>(off + n)};
}
using B = std::vector<uint8_t>;

TEST(SessionLayout, InetStoresThePortsThreeTimes) {
    NIMBET_DB_INET_SESS_ENTRY r{};
    r.srcPort = 0x1234;
    r.dstPort = 0xABCD;
    r.protocol = 0x77;
    const auto img = image_of(kSessionKinds[0], &r);
    EXPECT_EQ((B{0xCD, 0xAB, 0x34, 0x12, 0x77}), bytes(img, 24, 5));
    EXPECT_EQ((B{0x34, 0x12, 0xCD, 0xAB}), bytes(img, 56, 4));
}

TEST(SessionLayout, Inet6StoresAddressesInOrderAndPortsThreeTimes) {
    NIMBET_DB_INET6_SESS_ENTRY r{};
    for (uint8_t i = 0; i < 16; ++i) {
        r.srcIp[i] = i;
        r.dstIp[i] = static_cast<uint8_t>(0xF0 | i);
    }
    r.srcPort = 0x1234;
    r.dstPort = 0xABCD;
    r.attr1 = 0x01020304;
    const auto img = image_of(kSessionKinds[1], &r);
    EXPECT_EQ(B(r.srcIp, r.srcIp + 16), bytes(img, 16, 16));
    EXPECT_EQ(B(r.dstIp, r.dstIp + 16), bytes(img, 32, 16));
    EXPECT_EQ((B{0xCD, 0xAB, 0x34, 0x12}), bytes(img, 48, 4));
    EXPECT_EQ((B{0x34, 0x12, 0xCD, 0xAB, 4, 3, 2, 1}), bytes(img, 92, 8));
}

TEST(SessionLayout, PingPacksFieldsAtOddOffsets) {
    NIMBET_DB_PING_SESS_ENTRY r{};
    r.protocol = 0x01;
    r.testId = 0xBEEF;
    r.attr1 = 0x11223344;
    r.attr6 = 0x5566;
    r.attr14 = 0x0807060504030201ull;
    r.attr15 = 0xA0B0C0D0;
    const auto img = image_of(kSessionKinds[2], &r);
    EXPECT_EQ((B{0x01, 0xEF, 0xBE, 0x44, 0x33, 0x22, 0x11}), bytes(img, 20, 7));
    EXPECT_EQ((B{0x66, 0x55}), bytes(img, 34, 2));
    EXPECT_EQ((B{1, 2, 3, 4, 5, 6, 7, 8, 0xD0, 0xC0, 0xB0, 0xA0}), bytes(img, 64, 12));
}

TEST(SessionLayout, GroupPutsSrcAddrBeforeAttr1) {
    NIMBET_DB_GROUP_SESS_ENTRY r{};
    r.groupIp = 0xE1;
    r.protocol = 0x11;
    r.srcPort = 0x0208;
    r.ifIndex = 0x0A0B0C0D;
    r.attr1 = 0xCAFE;
    r.srcAddr = 0xC0A80101;
    const auto img = image_of(kSessionKinds[3], &r);
    EXPECT_EQ((B{0xE1, 0x11, 0x08, 0x02, 0x0D, 0x0C, 0x0B, 0x0A, 0x01, 0x01, 0xA8, 0xC0, 0xFE, 0xCA}),
              bytes(img, 4, 14));
}

TEST(SessionLayout, Group6OrdersItsKeyAndNeverTouchesTheCallersField) {
    NIMBET_DB_GROUP6_SESS_ENTRY r{};
    r.srcPort = 0x1234;
    r.protocol = 0x59;
    r.attr1 = 0x5A;
    r.attr2 = 0xBBAA;
    r.ifIndex = 0x01020304;
    r.reserved = 0x7777;
    const auto img = image_of(kSessionKinds[4], &r);
    EXPECT_EQ((B{4, 3, 2, 1}), bytes(img, 20, 4));
    EXPECT_EQ((B{0x34, 0x12, 0x59, 0x5A, 0xAA, 0xBB}), bytes(img, 40, 6));
    NIMBET_DB_GROUP6_SESS_ENTRY back;
    std::memset(&back, 0, sizeof back);
    back.reserved = 0xBEEF;
    NIMBET_DB_GetGroup6Sess(img.data(), &back);
    EXPECT_EQ(0xBEEF, back.reserved);
    EXPECT_EQ(0xBBAA, back.attr2);
}

TEST(SessionLayout, IsisPutsIsisIdBetweenTheMacs) {
    NIMBET_DB_ISIS_SESS_ENTRY r{};
    std::memset(r.macAddr, 0xFF, 6);
    std::memset(r.srcMacAddr, 0x00, 6);
    r.srcMacAddr[5] = 0x42;
    r.isisId = 0x0102;
    r.attr1 = 0x0A0B0C0D;
    const auto img = image_of(kSessionKinds[5], &r);
    EXPECT_EQ((B{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x02, 0x01, 0, 0, 0, 0, 0, 0x42, 0, 0, 0x0D, 0x0C, 0x0B, 0x0A}),
              bytes(img, 8, 20));
}

// Row bytes that no field covers stay zero whatever the record holds.
struct Gaps {
    int kind;
    std::vector<std::pair<size_t, size_t>> ranges;  // [from, to)
};

class SessionGaps : public ::testing::TestWithParam<Gaps> {};

TEST_P(SessionGaps, UncoveredBytesAreZero) {
    const SessionKind &k = kSessionKinds[GetParam().kind];
    std::vector<uint8_t> rec(k.recSize, 0xFF);
    const auto img = image_of(k, rec.data());
    for (const auto &[from, to] : GetParam().ranges)
        for (size_t i = from; i < to; ++i) EXPECT_EQ(0, img[i]) << k.name << " byte " << i;
}

INSTANTIATE_TEST_SUITE_P(Kinds, SessionGaps,
                         ::testing::Values(Gaps{0, {{29, 56}, {60, 68}, {84, 96}}}, Gaps{1, {{53, 92}, {112, 124}}},
                                           Gaps{3, {{18, 36}, {44, 56}, {64, 76}}}, Gaps{4, {{46, 72}, {88, 100}}},
                                           Gaps{5, {{22, 24}, {28, 56}, {64, 76}}}));

// ---------------------------------------------------------------- address text

class AddressText : public LibTest {};

std::string ntop(const uint8_t (&a)[16]) {
    char buf[INET6_ADDRSTRLEN];
    return inet_ntop(AF_INET6, a, buf, sizeof buf);
}

TEST_F(AddressText, Ipv6AddressesReadAsInetNtopWritesThem) {
    std::vector<std::array<uint8_t, 16>> cases = {
        {}, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, {0, 1},
        {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
        {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 1, 2, 3, 4}, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4},
        {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1},
        {0x20, 0x01, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1}, {0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 1},
        {0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xfe, 1, 2, 3, 4}};
    std::array<uint8_t, 16> ones;
    ones.fill(0xFF);
    cases.push_back(ones);
    uint32_t seed = 12345;
    for (int n = 0; n < 300; ++n) {  // random groups, many of them zero
        std::array<uint8_t, 16> a{};
        for (int g = 0; g < 8; ++g) {
            seed = seed * 1103515245u + 12345u;
            if ((seed >> 16) % 3 != 0) {
                a[2 * g] = static_cast<uint8_t>(seed >> 8);
                a[2 * g + 1] = static_cast<uint8_t>(seed >> 24);
            }
        }
        cases.push_back(a);
    }
    NIMBET_DB_INET6_SESS_ENTRY r{};
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, "inet6_sess", nullptr, 1, static_cast<uint32_t>(cases.size()), 3));
    for (const auto &c : cases) {
        std::memcpy(r.srcIp, c.data(), 16);
        std::memset(r.dstIp, 0, 16);
        messages().clear();
        ASSERT_EQ(1u, NIMBET_DB_WriteEntryInet6(&r));
        ASSERT_EQ(1u, messages().size());
        EXPECT_NE(std::string::npos, messages()[0].text.find("srcIp = " + ntop(r.srcIp) + ", dstIp = ::."))
            << messages()[0].text;
    }
}

TEST_F(AddressText, MacAddressesAreLowerCaseColonSeparated) {
    NIMBET_DB_ISIS_SESS_ENTRY r{};
    const uint8_t mac[6] = {0x00, 0x1A, 0x2b, 0xC3, 0xd4, 0xFF};
    std::memcpy(r.macAddr, mac, 6);
    std::memset(r.srcMacAddr, 0xFF, 6);
    r.sockId = 1;
    r.ifIndex = 2;
    r.isisId = 65535;
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, "isis_sess", nullptr, 1, 1, 4));
    EXPECT_EQ(1u, NIMBET_DB_DeleteEntryIsis(&r));
    EXPECT_EQ((std::vector<std::string>{"Delete issi create obj failed. ret = 4, sockId = 1, ifIndex = 2, isisId = 65535, "
                                        "macAddr = 00:1a:2b:c3:d4:ff, srcMacAddr = ff:ff:ff:ff:ff:ff."}),
              texts());
}

TEST_F(AddressText, EachPathShowsItsOwnFields) {
    // inet6 read failures show no vrId and no protocol; group6 memcpy
    // failures name protocol before ifIndex.
    NIMBET_DB_INET6_SESS_ENTRY i6{};
    i6.sockId = 1;
    i6.hPid = 2;
    i6.vrId = 3;
    i6.vrfId = 4;
    i6.protocol = 5;
    i6.srcIp[15] = 1;
    ASSERT_EQ(0u, db_test_inject(DB_OP_READ_WITH_BUF, "inet6_sess", nullptr, 1, 1, 6));
    EXPECT_EQ(1u, NIMBET_DB_ReadEntryInet6(&i6));
    NIMBET_DB_GROUP6_SESS_ENTRY g6{};
    g6.sockId = 7;
    g6.srcPort = 8;
    g6.protocol = 9;
    g6.ifIndex = 10;
    ASSERT_EQ(0, NIMBET_HostTest_FailMemcpy(1, 3));
    EXPECT_EQ(1u, NIMBET_DB_DeleteEntryGroup6(&g6));
    EXPECT_EQ((std::vector<std::string>{
                  "Get inet6 sess db failed. ret=6, sockId=1, hPid=2, vrfId=4, srcIp=::1, dstIp=::.",
                  "Delete group6 memcpy failed. ret = 3, sockId = 7, srcPort = 8, protocol = 9, ifIndex = 10."}),
              texts());
}

}  // namespace
}  // namespace nimbet_test
