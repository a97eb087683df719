// Subnet broadcast and UDP helper tables.
#include <set>

#include "support.h"

namespace nimbet_test {
namespace {

class Service : public LibTest {
protected:
    std::map<unsigned, uint32_t> udp_slots() const { return slot_delta(before_.udpHelper, g_nimbetUdpHelperCnt); }
};
using Slots = std::map<unsigned, uint32_t>;

NIMBET_DB_SUB_BC_ENTRY sub_bc(uint32_t key1, uint32_t key2) {
    NIMBET_DB_SUB_BC_ENTRY e;
    std::memset(&e, 0xAA, sizeof e);  // the caller's own bytes included
    e.key1 = key1;
    e.key2 = key2;
    e.value1 = 0x11111111u * key2;
    e.value2 = 7;
    e.flag1 = 1;
    e.flag2 = 2;
    e.flag3 = 3;
    e.flag4 = 4;
    return e;
}

TEST_F(Service, SubBcReordersItsFlagsAndKeepsTheCallersBytes) {
    const NIMBET_DB_SUB_BC_ENTRY e = sub_bc(5, 6);
    uint8_t img[28];
    std::memset(img, 0xEE, sizeof img);
    std::memset(img + 20, 0, 8);
    NIMBET_SetSubBcCfgItemLite(&e, img);
    EXPECT_EQ((std::vector<uint8_t>{2, 4, 1, 3, 0, 0, 0, 0, 0, 0, 0, 0}), std::vector<uint8_t>(img + 16, img + 28));
    ASSERT_EQ(0u, NIMBET_DB_WriteSubBc(&e));
    NIMBET_DB_SUB_BC_ENTRY got;
    std::memset(&got, 0x55, sizeof got);
    got.key1 = 5;
    got.key2 = 6;
    ASSERT_EQ(0u, NIMBET_DB_ReadSubBc(&got));
    EXPECT_EQ(std::vector<uint8_t>(36, 0x55), std::vector<uint8_t>(got.reserved, got.reserved + 36));
    EXPECT_EQ(1, got.flag1);
    EXPECT_EQ(2, got.flag2);
    EXPECT_EQ(3, got.flag3);
    EXPECT_EQ(4, got.flag4);
    EXPECT_EQ(e.value1, got.value1);
    // A key without a row answers 60 and leaves the record alone.
    NIMBET_DB_SUB_BC_ENTRY missing = sub_bc(9, 9);
    const NIMBET_DB_SUB_BC_ENTRY before = missing;
    EXPECT_EQ(NIMBET_DB_ITER_END, NIMBET_DB_ReadSubBc(&missing));
    EXPECT_EQ(0, std::memcmp(&before, &missing, sizeof missing));
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

TEST_F(Service, SubBcWalksWholeAndByGroup) {
    for (uint32_t g = 1; g <= 3; ++g)
        for (uint32_t k = 0; k < 4; ++k) ASSERT_EQ(0u, NIMBET_DB_WriteSubBc(&(const NIMBET_DB_SUB_BC_ENTRY &)sub_bc(g, k)));
    auto walk = [](NIMBET_DB_ITER_INFO *it) {
        std::set<std::pair<uint32_t, uint32_t>> rows;
        NIMBET_DB_SUB_BC_ENTRY e = sub_bc(0, 0);
        uint32_t r;
        while ((r = NIMBET_DB_GetNextSubBc(it, &e)) == 0) {
            rows.insert({e.key1, e.key2});
            EXPECT_EQ(0xAA, e.reserved[0]);
        }
        EXPECT_EQ(NIMBET_DB_ITER_END, r);
        NIMBET_DB_ReleaseSubBcIterator(it);
        return rows;
    };
    EXPECT_EQ(12u, walk(NIMBET_DB_CreateSubBcIterator()).size());
    const auto group2 = walk(NIMBET_DB_CreateSubBcIteratorByGroupId(2));
    EXPECT_EQ(4u, group2.size());
    for (const auto &[g, k] : group2) EXPECT_EQ(2u, g);
    EXPECT_TRUE(walk(NIMBET_DB_CreateSubBcIteratorByGroupId(9)).empty());
    NIMBET_DB_ReleaseSubBcIterator(nullptr);
    // A by-group walk that cannot start is silent and leaves nothing behind.
    for (DB_TEST_OP op : {DB_OP_CREATE_OBJ, DB_OP_CREATE_ROOT_ITER}) {
        ASSERT_EQ(0u, db_test_inject(op, "subnet_bc", nullptr, 1, 1, 3));
        EXPECT_EQ(nullptr, NIMBET_DB_CreateSubBcIteratorByGroupId(2));
    }
    NIMBET_HostTest_FailAlloc(1, 1);
    EXPECT_EQ(nullptr, NIMBET_DB_CreateSubBcIteratorByGroupId(2));
    EXPECT_TRUE(messages().empty());
}

TEST_F(Service, SubBcRowGoneInAWalkIsOneNotSixty) {
    ASSERT_EQ(0u, NIMBET_DB_WriteSubBc(&(const NIMBET_DB_SUB_BC_ENTRY &)sub_bc(1, 1)));
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreateSubBcIterator();
    ASSERT_NE(nullptr, it);
    ASSERT_EQ(0u, db_test_inject(DB_OP_READ_WITH_BUF, "subnet_bc", nullptr, 1, 1, DB_RET_NO_RECORD));
    NIMBET_DB_SUB_BC_ENTRY e = sub_bc(0, 0);
    EXPECT_EQ(1u, NIMBET_DB_GetNextSubBc(it, &e));
    NIMBET_DB_ReleaseSubBcIterator(it);
    EXPECT_TRUE(messages().empty());
}

// Failure paths of the service tables, one table of cases.
struct ServiceCase {
    const char *name;
    uint32_t (*run)();
    const char *table;
    DB_TEST_OP inject;
    uint32_t status, result;
    std::vector<std::string> texts;
    StatDelta stats;
    Slots udpSlots;
};
void PrintTo(const ServiceCase &c, std::ostream *os) { *os << c.name; }

NIMBET_DB_UDP_HELPER_PORT_ENTRY port(uint32_t key1, uint16_t key2) { return {key1, key2, 0x1234, 0x55667788}; }
NIMBET_DB_UDP_HELPER_SERVER_ENTRY server(uint32_t key1, uint32_t key2, uint32_t key3) { return {key1, key2, key3, 99}; }

uint32_t sub_write() { const auto e = sub_bc(1, 2); return NIMBET_DB_WriteSubBc(&e); }
uint32_t sub_read() { auto e = sub_bc(1, 2); return NIMBET_DB_ReadSubBc(&e); }
uint32_t sub_delete() { const auto e = sub_bc(1, 2); return NIMBET_DB_DeleteSubBc(&e); }
uint32_t port_write() { const auto e = port(1, 2); return NIMBET_DB_WriteUdpHelperPort(&e); }
uint32_t port_read() { auto e = port(1, 2); return NIMBET_DB_ReadUdpHelperPort(&e); }
uint32_t port_delete() { const auto e = port(1, 2); return NIMBET_DB_DeleteUdpHelperPort(&e); }
uint32_t server_write() { const auto e = server(1, 2, 3); return NIMBET_DB_WriteUdpHelperServer(&e); }
uint32_t server_read() { auto e = server(1, 2, 3); return NIMBET_DB_ReadUdpHelperServer(&e); }
uint32_t server_delete() { const auto e = server(1, 2, 3); return NIMBET_DB_DeleteUdpHelperServer(&e); }

class ServicePath : public Service, public ::testing::WithParamInterface<ServiceCase> {};

TEST_P(ServicePath, ResultMessagesStatisticsAndSlots) {
    const ServiceCase &c = GetParam();
    ASSERT_EQ(0u, sub_write());
    ASSERT_EQ(0u, port_write());
    ASSERT_EQ(0u, server_write());
    before_ = Counters::now();
    if (c.table != nullptr) {
        ASSERT_EQ(0u, db_test_inject(c.inject, c.table, nullptr, 1, 1, c.status));
    }
    EXPECT_EQ(c.result, c.run());
    EXPECT_EQ(c.texts, texts());
    EXPECT_EQ(c.stats, stats());
    EXPECT_EQ(c.udpSlots, udp_slots());
}

constexpr uint32_t kSub = DB_STAT_SUBNET_BC, kPort = DB_STAT_UDP_HELPER_PORT, kServer = DB_STAT_UDP_HELPER_SERVER;
INSTANTIATE_TEST_SUITE_P(
    Paths, ServicePath,
    ::testing::Values(
        ServiceCase{"SubBcWriteOpen", sub_write, "subnet_bc", DB_OP_CREATE_OBJ, 4, 1, {"Get create subnet bc obj fail. ret = 4"}, {}, {}},
        ServiceCase{"SubBcReadOpen", sub_read, "subnet_bc", DB_OP_CREATE_OBJ, 4, 1, {"Get create subnet bc obj fail. ret = 4"}, {}, {}},
        ServiceCase{"SubBcDeleteOpen", sub_delete, "subnet_bc", DB_OP_CREATE_OBJ, 4, 1, {"Get create subnet bc obj fail. ret = 4"}, {}, {}},
        ServiceCase{"SubBcImageRefused", sub_write, "subnet_bc", DB_OP_SET_ALL_FIELDS, 4242, 4242, {}, {}, {}},
        ServiceCase{"SubBcWriteTolerated", sub_write, "subnet_bc", DB_OP_WRITE, DB_RET_TOLERATED, 0, {}, {{{kSub, DB_ERR_TOLERATED}, 1}}, {}},
        ServiceCase{"SubBcWriteFails", sub_write, "subnet_bc", DB_OP_WRITE, 5, 1, {"Write sub bc db fail. ret = 5"}, {{{kSub, DB_ERR_WRITE}, 1}}, {}},
        ServiceCase{"SubBcReadFails", sub_read, "subnet_bc", DB_OP_READ_WITH_BUF, 6, 1, {"Get sub bc db fail. ret = 6"}, {{{kSub, DB_ERR_READ}, 1}}, {}},
        ServiceCase{"SubBcRemoveTolerated", sub_delete, "subnet_bc", DB_OP_REMOVE, DB_RET_TOLERATED, 0, {}, {{{kSub, DB_ERR_TOLERATED}, 1}}, {}},
        ServiceCase{"SubBcRemoveFails", sub_delete, "subnet_bc", DB_OP_REMOVE, 7, 1, {"Remove sub bc db fail. ret = 7"}, {{{kSub, DB_ERR_REMOVE}, 1}}, {}},
        ServiceCase{"PortWriteOpen", port_write, "udp_helper_port", DB_OP_CREATE_OBJ, 4, 1, {"Get create udp helper port obj fail. ret = 4"}, {}, {}},
        ServiceCase{"PortImageRefused", port_write, "udp_helper_port", DB_OP_SET_ALL_FIELDS, 4242, 4242, {}, {}, {{2, 1}, {3, 1}}},
        ServiceCase{"PortWriteFails", port_write, "udp_helper_port", DB_OP_WRITE, 5, 1, {"Write udp helper port db fail. ret = 5"}, {{{kPort, DB_ERR_WRITE}, 1}}, {{2, 1}, {3, 1}}},
        ServiceCase{"PortReadMissing", port_read, "udp_helper_port", DB_OP_READ_WITH_BUF, DB_RET_NO_RECORD, 1, {}, {}, {{0, 1}, {1, 1}}},
        ServiceCase{"PortReadFails", port_read, "udp_helper_port", DB_OP_READ_WITH_BUF, 6, 1, {"Get udp helper port db fail. ret = 6"}, {{{kPort, DB_ERR_READ}, 1}}, {{0, 1}, {1, 1}}},
        ServiceCase{"PortRemoveFails", port_delete, "udp_helper_port", DB_OP_REMOVE, 7, 1, {"Remove udp helper port db fail. ret = 7"}, {{{kPort, DB_ERR_REMOVE}, 1}}, {{4, 1}, {5, 1}}},
        ServiceCase{"PortRemoveNull", [] { return NIMBET_DB_DeleteUdpHelperPort(nullptr); }, nullptr, DB_OP_NUM, 0, 1,
                    {"NIMBET_DB_DeleteUdpHelperPort, the parameter entry is null"}, {}, {}},
        ServiceCase{"ServerReadOpen", server_read, "udp_helper_server", DB_OP_CREATE_OBJ, 4, 1, {"Get create udp helper server obj fail. ret = 4"}, {}, {}},
        ServiceCase{"ServerWriteTolerated", server_write, "udp_helper_server", DB_OP_WRITE, DB_RET_TOLERATED, 0, {}, {{{kServer, DB_ERR_TOLERATED}, 1}}, {{2, 1}, {3, 1}}},
        ServiceCase{"ServerWriteFails", server_write, "udp_helper_server", DB_OP_WRITE, 5, 1, {"Write udp helper server db fail. ret = 5"}, {{{kServer, DB_ERR_WRITE}, 1}}, {{2, 1}, {3, 1}}},
        ServiceCase{"ServerReadFails", server_read, "udp_helper_server", DB_OP_READ_WITH_BUF, 6, 1, {"Get udp helper server db fail. ret = 6"}, {{{kServer, DB_ERR_READ}, 1}}, {{0, 1}, {1, 1}}},
        ServiceCase{"ServerRemoveFails", server_delete, "udp_helper_server", DB_OP_REMOVE, 7, 1, {"Remove udp helper server db fail. ret = 7"}, {{{kServer, DB_ERR_REMOVE}, 1}}, {{4, 1}, {5, 1}}},
        ServiceCase{"ServerRemoveNull", [] { return NIMBET_DB_DeleteUdpHelperServer(nullptr); }, nullptr, DB_OP_NUM, 0, 1,
                    {"NIMBET_DB_DeleteUdpHelperServer,the parameter entry is QEX_NULL"}, {}, {}}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(Service, UdpHelperRowsRoundTripAndWalkWithTheirOwnSlots) {
    ASSERT_EQ(0u, port_write());
    ASSERT_EQ(0u, server_write());
    NIMBET_DB_UDP_HELPER_PORT_ENTRY p = {1, 2, 0, 0};
    ASSERT_EQ(0u, NIMBET_DB_ReadUdpHelperPort(&p));
    EXPECT_EQ(0x1234, p.value1);
    EXPECT_EQ(0x55667788u, p.value2);
    uint8_t img[16];
    std::memset(img, 0xEE, sizeof img);
    std::memset(img + 12, 0, 4);
    UDPHELPER_SetPortItemLite(&p, img);
    EXPECT_EQ((std::vector<uint8_t>{1, 0, 0, 0, 2, 0, 0x34, 0x12, 0x88, 0x77, 0x66, 0x55, 0, 0, 0, 0}),
              std::vector<uint8_t>(img, img + 16));

    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreatUdpHelperPortIterator();
    ASSERT_NE(nullptr, it);
    EXPECT_EQ(0u, NIMBET_DB_GetNextUdpHelperPort(it, &p));
    EXPECT_EQ(NIMBET_DB_ITER_END, NIMBET_DB_GetNextUdpHelperPort(it, &p));
    NIMBET_DB_ReleaseUdpHelperPortIterator(it);
    EXPECT_EQ((Slots{{0, 1}, {1, 1}, {2, 2}, {3, 2}, {6, 1}, {7, 1}}), udp_slots());
    it = NIMBET_DB_CreatUdpHelperServerIterator();
    NIMBET_DB_UDP_HELPER_SERVER_ENTRY s{};
    EXPECT_EQ(0u, NIMBET_DB_GetNextUdpHelperServer(it, &s));
    EXPECT_EQ(3u, s.key3);
    NIMBET_DB_ReleaseUdpHelperServerIterator(it);
    EXPECT_EQ(1u, udp_slots()[8]);
    EXPECT_EQ(1u, udp_slots()[9]);
}

TEST_F(Service, UdpHelperCountsRowsOfTheKey2OnlyKey) {
    ASSERT_EQ(0u, NIMBET_DB_WriteUdpHelperPort(&(const NIMBET_DB_UDP_HELPER_PORT_ENTRY &)port(0, 67)));
    ASSERT_EQ(0u, NIMBET_DB_WriteUdpHelperPort(&(const NIMBET_DB_UDP_HELPER_PORT_ENTRY &)port(5, 67)));
    ASSERT_EQ(0u, NIMBET_DB_WriteUdpHelperServer(&(const NIMBET_DB_UDP_HELPER_SERVER_ENTRY &)server(0, 68, 0)));
    ASSERT_EQ(0u, NIMBET_DB_WriteUdpHelperServer(&(const NIMBET_DB_UDP_HELPER_SERVER_ENTRY &)server(0, 68, 1)));
    uint32_t n = 99;
    const auto probe = port(123, 67);  // key1 of the probe plays no part
    EXPECT_EQ(0u, NIMBET_DB_ReadEntryGetUdpHelperPortNum(&probe, &n));
    EXPECT_EQ(1u, n) << "only the row whose other key bytes are zero";
    const auto sprobe = server(7, 68, 7);
    EXPECT_EQ(0u, NIMBET_DB_ReadEntryGetUdpHelperServerNum(&sprobe, &n));
    EXPECT_EQ(1u, n);
    ASSERT_EQ(0u, db_test_inject(DB_OP_COUNT_BY_KEY, "udp_helper_port", nullptr, 1, 1, 8));
    n = 99;
    EXPECT_EQ(8u, NIMBET_DB_ReadEntryGetUdpHelperPortNum(&probe, &n));
    EXPECT_EQ(99u, n);
    EXPECT_EQ(1u, NIMBET_DB_ReadEntryGetUdpHelperPortNum(&probe, nullptr));
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

TEST_F(Service, ServerKeyCopyLeavesKey3) {
    NIMBET_DB_UDP_HELPER_SERVER_ENTRY dst = {9, 9, 9, 9};
    const NIMBET_DB_UDP_HELPER_SERVER_ENTRY src = {1, 2, 3, 4};
    NIMBET_DB_SetEntryKeyUdpHelperServer(&dst, nullptr);
    EXPECT_EQ(9u, dst.key1);
    NIMBET_DB_SetEntryKeyUdpHelperServer(&dst, &src);
    EXPECT_EQ((std::vector<uint32_t>{1, 2, 9, 9}), (std::vector<uint32_t>{dst.key1, dst.key2, dst.key3, dst.value1}));
    NIMBET_DB_UDP_HELPER_PORT_ENTRY pd = {9, 9, 9, 9};
    const NIMBET_DB_UDP_HELPER_PORT_ENTRY ps = {1, 2, 3, 4};
    NIMBET_DB_SetEntryKeyUdpHelperPort(&pd, &ps);
    EXPECT_EQ((std::vector<uint32_t>{1, 2, 9, 9}), (std::vector<uint32_t>{pd.key1, pd.key2, pd.value1, pd.value2}));
}

}  // namespace
}  // namespace nimbet_test
