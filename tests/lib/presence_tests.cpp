// Presence queries over the session tables.
#include "session_kinds.h"
#include "support.h"

namespace nimbet_test {
namespace {

// One query: the table it looks at, a matching record, and mutations that
// each break exactly one compared field.
struct Query {
    const char *name;
    int kind;  // index into kSessionKinds
    uint32_t (*ask)(const void *rec);
    void (*match)(void *rec);  // make the record carry the looked-for values
    std::vector<void (*)(void *)> breakers;
    const char *msgCreate, *msgIter, *msgNext;
};

template <class E>
E &as(void *p) {
    return *static_cast<E *>(p);
}

const Query kQueries[] = {
    {"BgpSrcPort", 0, [](const void *r) { return NIMBET_DB_IsBgpSessExist(static_cast<const NIMBET_DB_INET_SESS_ENTRY *>(r), 1); },
     [](void *r) { auto &e = as<NIMBET_DB_INET_SESS_ENTRY>(r); e.protocol = 6; e.srcPort = 179; e.attr1 = 5; },
     {[](void *r) { as<NIMBET_DB_INET_SESS_ENTRY>(r).protocol = 17; },
      [](void *r) { as<NIMBET_DB_INET_SESS_ENTRY>(r).srcPort = 180; },
      [](void *r) { as<NIMBET_DB_INET_SESS_ENTRY>(r).attr1 = 6; }},
     "Create bgp session obj fail. ret %d", "Create bgp sess iter fail. ret %d", "Get bgp sess db fail. ret %d"},
    {"BgpDstPort", 0, [](const void *r) { return NIMBET_DB_IsBgpSessExist(static_cast<const NIMBET_DB_INET_SESS_ENTRY *>(r), 2); },
     [](void *r) { auto &e = as<NIMBET_DB_INET_SESS_ENTRY>(r); e.protocol = 6; e.dstPort = 179; e.attr1 = 5; },
     {[](void *r) { as<NIMBET_DB_INET_SESS_ENTRY>(r).dstPort = 180; },
      [](void *r) { as<NIMBET_DB_INET_SESS_ENTRY>(r).attr1 = 6; }},
     "Create bgp session obj fail. ret %d", "Create bgp sess iter fail. ret %d", "Get bgp sess db fail. ret %d"},
    {"Bgp4PlusSrcPort", 1, [](const void *r) { return NIMBET_DB_IsBgp4PlusExist(static_cast<const NIMBET_DB_INET6_SESS_ENTRY *>(r), 1); },
     [](void *r) { auto &e = as<NIMBET_DB_INET6_SESS_ENTRY>(r); e.protocol = 6; e.srcPort = 179; e.attr1 = 5; },
     {[](void *r) { as<NIMBET_DB_INET6_SESS_ENTRY>(r).srcPort = 180; },
      [](void *r) { as<NIMBET_DB_INET6_SESS_ENTRY>(r).protocol = 17; }},
     "Create bgp plus session obj fail. ret %d", "Create bgp plus sess iter fail. ret %d", "Get bgp plus sess db fail. ret %d"},
    {"Bgp4PlusDstPort", 1, [](const void *r) { return NIMBET_DB_IsBgp4PlusExist(static_cast<const NIMBET_DB_INET6_SESS_ENTRY *>(r), 0); },
     [](void *r) { auto &e = as<NIMBET_DB_INET6_SESS_ENTRY>(r); e.protocol = 6; e.dstPort = 179; e.attr1 = 5; },
     {[](void *r) { as<NIMBET_DB_INET6_SESS_ENTRY>(r).dstPort = 180; },
      [](void *r) { as<NIMBET_DB_INET6_SESS_ENTRY>(r).attr1 = 9; }},
     "Create bgp plus session obj fail. ret %d", "Create bgp plus sess iter fail. ret %d", "Get bgp plus sess db fail. ret %d"},
    {"Rip", 3, [](const void *r) { return NIMBET_DB_IsRipSessExist(static_cast<const NIMBET_DB_GROUP_SESS_ENTRY *>(r)); },
     [](void *r) { auto &e = as<NIMBET_DB_GROUP_SESS_ENTRY>(r); e.protocol = 17; e.srcPort = 520; e.attr1 = 3; e.attr2 = 4; },
     {[](void *r) { as<NIMBET_DB_GROUP_SESS_ENTRY>(r).srcPort = 521; },
      [](void *r) { as<NIMBET_DB_GROUP_SESS_ENTRY>(r).attr1 = 7; },
      [](void *r) { as<NIMBET_DB_GROUP_SESS_ENTRY>(r).attr2 = 7; }},
     "Create rip group session obj fail. ret = %d", "Create group sess iter fail. ret %d", "Get group sess db fail. ret %d"},
    {"Ospf", 3, [](const void *r) { return NIMBET_DB_IsOspfSessExist(static_cast<const NIMBET_DB_GROUP_SESS_ENTRY *>(r)); },
     [](void *r) { auto &e = as<NIMBET_DB_GROUP_SESS_ENTRY>(r); e.protocol = 89; e.attr1 = 3; e.attr2 = 4; },
     {[](void *r) { as<NIMBET_DB_GROUP_SESS_ENTRY>(r).protocol = 88; },
      [](void *r) { as<NIMBET_DB_GROUP_SESS_ENTRY>(r).attr1 = 7; }},
     "Create ospf session obj fail. ret = %d", "Create ospf sess iter fail. ret = %d", "Get ospf sess db fail. ret = %d"},
    {"Ripng", 4, [](const void *r) { return NIMBET_DB_IsRipngSessExist(static_cast<const NIMBET_DB_GROUP6_SESS_ENTRY *>(r)); },
     [](void *r) { auto &e = as<NIMBET_DB_GROUP6_SESS_ENTRY>(r); e.protocol = 17; e.srcPort = 521; e.attr2 = 3; e.attr3 = 4; },
     {[](void *r) { as<NIMBET_DB_GROUP6_SESS_ENTRY>(r).srcPort = 520; },
      [](void *r) { as<NIMBET_DB_GROUP6_SESS_ENTRY>(r).attr3 = 9; }},
     "Create ripng session obj fail. ret = %d", "Create ripng sess iter fail. ret = %d", "Get ripng sess db fail. ret = %d"},
    {"Ospfv3", 4, [](const void *r) { return NIMBET_DB_IsOspfv3SessExist(static_cast<const NIMBET_DB_GROUP6_SESS_ENTRY *>(r)); },
     [](void *r) { auto &e = as<NIMBET_DB_GROUP6_SESS_ENTRY>(r); e.protocol = 89; e.attr2 = 3; e.attr3 = 4; },
     {[](void *r) { as<NIMBET_DB_GROUP6_SESS_ENTRY>(r).attr2 = 9; },
      [](void *r) { as<NIMBET_DB_GROUP6_SESS_ENTRY>(r).protocol = 88; }},
     "Create ospfv3 session obj fail. ret = %d", "Create ospfv3 sess iter fail. ret = %d", "Get ospfv3 sess db fail. ret = %d"},
    {"Isis", 5, [](const void *r) { return NIMBET_DB_IsIsisSessExist(static_cast<const NIMBET_DB_ISIS_SESS_ENTRY *>(r)); },
     [](void *r) { as<NIMBET_DB_ISIS_SESS_ENTRY>(r).attr1 = 0x5151; },
     {[](void *r) { as<NIMBET_DB_ISIS_SESS_ENTRY>(r).attr1 = 0x5152; }},
     "Create isis session obj fail. ret %d", "Create isis sess iter fail. ret %d", "Get isis sess db fail. ret %d"},
};

void PrintTo(const Query &q, std::ostream *os) { *os << q.name; }

class Presence : public LibTest, public ::testing::WithParamInterface<Query> {
protected:
    const SessionKind &kind() const { return kSessionKinds[GetParam().kind]; }
    std::vector<uint8_t> record(uint32_t seed) {
        std::vector<uint8_t> r(kind().recSize);
        kind().make(r.data(), seed);
        GetParam().match(r.data());
        return r;
    }
};

TEST_P(Presence, AnswersOneOnlyWhileAMatchingRowExists) {
    const Query &q = GetParam();
    const auto probe = record(1);
    EXPECT_EQ(0u, q.ask(probe.data())) << "empty table";
    // Rows that each differ in one compared field do not match.
    uint32_t seed = 10;
    for (auto breaker : q.breakers) {
        auto r = record(seed++);
        breaker(r.data());
        ASSERT_EQ(0u, kind().write(r.data()));
    }
    EXPECT_EQ(0u, q.ask(probe.data()));
    const auto hit = record(seed++);
    ASSERT_EQ(0u, kind().write(hit.data()));
    EXPECT_EQ(1u, q.ask(probe.data()));
    ASSERT_EQ(0u, kind().write(record(seed++).data()));
    EXPECT_EQ(1u, q.ask(probe.data())) << "two matches answer the same";
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
    EXPECT_EQ(before_.session[2] + seed - 10, g_nimbetSessionCnt[2]) << "only the writes counted";
    EXPECT_EQ(before_.session[12], g_nimbetSessionCnt[12]);
}

TEST_P(Presence, FailuresAnswerZeroWithTheQuerysMessage) {
    const Query &q = GetParam();
    const auto probe = record(1);
    ASSERT_EQ(0u, kind().write(probe.data()));
    before_ = Counters::now();
    const std::pair<DB_TEST_OP, const char *> paths[] = {
        {DB_OP_CREATE_OBJ, q.msgCreate}, {DB_OP_CREATE_ROOT_ITER, q.msgIter}, {DB_OP_ITER_NEXT, q.msgNext}};
    for (const auto &[op, msg] : paths) {
        messages().clear();
        ASSERT_EQ(0u, db_test_inject(op, kind().table, nullptr, 1, 1, 4040));
        EXPECT_EQ(0u, q.ask(probe.data())) << msg;
        EXPECT_EQ(std::vector<std::string>{msg}, formats());
        EXPECT_NE(std::string::npos, texts().at(0).find("4040"));
    }
    EXPECT_TRUE(stats().empty());
    EXPECT_EQ(before_.session, Counters::now().session);
    EXPECT_EQ(1u, q.ask(probe.data()));
}

INSTANTIATE_TEST_SUITE_P(Queries, Presence, ::testing::ValuesIn(kQueries),
                         [](const auto &info) { return std::string(info.param.name); });

class PresenceEdges : public LibTest {};

TEST_F(PresenceEdges, NullRecords) {
    EXPECT_EQ(1u, NIMBET_DB_IsRipSessExist(nullptr));
    EXPECT_EQ(1u, NIMBET_DB_IsOspfSessExist(nullptr));
    EXPECT_EQ(0u, NIMBET_DB_IsBgpSessExist(nullptr, 1));
    EXPECT_EQ(0u, NIMBET_DB_IsIsisSessExist(nullptr));
    EXPECT_EQ(0u, db_test_call_count(DB_OP_CREATE_OBJ, nullptr));
}

TEST_F(PresenceEdges, PortSelectorPicksTheSourceOrTheDestination) {
    NIMBET_DB_INET_SESS_ENTRY r{};
    r.protocol = 6;
    r.srcPort = 179;
    r.dstPort = 40000;
    ASSERT_EQ(0u, NIMBET_DB_WriteEntryInet(&r));
    NIMBET_DB_INET_SESS_ENTRY probe{};
    probe.protocol = 6;
    probe.srcPort = 179;
    probe.dstPort = 179;
    EXPECT_EQ(1u, NIMBET_DB_IsBgpSessExist(&probe, 1));
    EXPECT_EQ(0u, NIMBET_DB_IsBgpSessExist(&probe, 0));
    EXPECT_EQ(0u, NIMBET_DB_IsBgpSessExist(&probe, 2));
}

TEST_F(PresenceEdges, Ospfv3IgnoresThePortWhereRipngNeedsIt) {
    NIMBET_DB_GROUP6_SESS_ENTRY r{};
    r.protocol = 89;
    r.srcPort = 1;
    r.attr2 = 3;
    r.attr3 = 4;
    ASSERT_EQ(0u, NIMBET_DB_WriteEntryGroup6(&r));
    NIMBET_DB_GROUP6_SESS_ENTRY probe = r;
    probe.srcPort = 2;
    EXPECT_EQ(1u, NIMBET_DB_IsOspfv3SessExist(&probe));
    // The key's zero byte is a constant of the index, not attr1 of the row.
    probe.attr1 = 0x7F;
    EXPECT_EQ(1u, NIMBET_DB_IsOspfv3SessExist(&probe));
    NIMBET_DB_DeleteEntryGroup6(&r);
    r.attr1 = 0x7F;
    ASSERT_EQ(0u, NIMBET_DB_WriteEntryGroup6(&r));
    EXPECT_EQ(1u, NIMBET_DB_IsOspfv3SessExist(&probe));
    EXPECT_EQ(0u, NIMBET_DB_IsRipngSessExist(&probe));
}

// A presence query touches the entries of its key, not the table.
TEST_F(PresenceEdges, ExaminesOnlyTheMatchingRowsOfALargeTable) {
    NIMBET_DB_INET_SESS_ENTRY r{};
    r.protocol = 6;
    r.dstPort = 179;
    for (uint32_t i = 0; i < 100000; ++i) {
        r.sockId = i;
        r.attr1 = i < 3 ? 1 : 2;  // three rows match, the rest share another key
        ASSERT_EQ(0u, NIMBET_DB_WriteEntryInet(&r));
    }
    r.attr1 = 1;
    db_test_reset_counts();
    EXPECT_EQ(1u, NIMBET_DB_IsBgpSessExist(&r, 0));
    EXPECT_LE(db_test_rows_examined("inet_sess"), 3u);
    r.attr1 = 2;
    db_test_reset_counts();
    EXPECT_EQ(1u, NIMBET_DB_IsBgpSessExist(&r, 0)) << "a key that 99,997 rows share";
    EXPECT_LE(db_test_rows_examined("inet_sess"), 3u);
}

}  // namespace
}  // namespace nimbet_test
