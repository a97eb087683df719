// Iterator handles and the walks of the address and IP option tables.
#include <set>

#include "session_kinds.h"
#include "support.h"

namespace nimbet_test {
namespace {

// ---------------------------------------------------------------- creation

class IteratorInfo : public LibTest {};

NIMBET_HOST_DIAG_LINE diag(uint32_t i) {
    NIMBET_HOST_DIAG_LINE line{};
    EXPECT_EQ(0, NIMBET_HostTest_DiagGet(i, &line));
    return line;
}

void expect_failure_diag(const char *text) {
    ASSERT_EQ(1u, NIMBET_HostTest_DiagCount());
    const NIMBET_HOST_DIAG_LINE l = diag(0);
    EXPECT_EQ(1u, l.words[0]);
    EXPECT_EQ(0u, l.words[1]);
    EXPECT_EQ(2u, l.words[2]);
    EXPECT_EQ(1u, l.words[3]);
    EXPECT_STREQ(text, l.text);
}

TEST_F(IteratorInfo, AllocatesAHandleSizedBlockAndWalksTheWholeTable) {
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreatObjectIteratorInfo(db_create_if_ipoption_obj, db_release_if_ipoption_object);
    ASSERT_NE(nullptr, it);
    EXPECT_EQ(sizeof(NIMBET_DB_ITER_INFO), NIMBET_HostTest_LastAllocSize());
    EXPECT_EQ(DB_RET_ITER_END, db_root_iterator_next(it->rootIter));
    db_release_if_ipoption_object(it->dbHandle);
    NIMBET_FreeMem(it);
    EXPECT_EQ(0u, NIMBET_HostTest_DiagCount());
}

TEST_F(IteratorInfo, FailedAllocationIsRecordedAndOpensNothing) {
    NIMBET_HostTest_FailAlloc(1, 1);
    EXPECT_EQ(nullptr, NIMBET_DB_CreatObjectIteratorInfo(db_create_if_ipoption_obj, db_release_if_ipoption_object));
    expect_failure_diag("nimbet db create object iterator malloc failed.");
    EXPECT_EQ(0u, db_test_call_count(DB_OP_CREATE_OBJ, nullptr));
    EXPECT_TRUE(messages().empty()) << "set-up failures never reach the error log";
}

TEST_F(IteratorInfo, FailedOpenFreesTheBlockAndReleasesNothing) {
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, "if_ipoption", nullptr, 1, 1, 4711));
    EXPECT_EQ(nullptr, NIMBET_DB_CreatObjectIteratorInfo(db_create_if_ipoption_obj, db_release_if_ipoption_object));
    expect_failure_diag("nimbet db create object failed, ret = 4711");
    EXPECT_EQ(0u, db_test_call_count(DB_OP_RELEASE_OBJ, nullptr));
    EXPECT_TRUE(messages().empty());
}

TEST_F(IteratorInfo, FailedRootIteratorReleasesTheObjectOnce) {
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_ROOT_ITER, nullptr, nullptr, 1, 1, 4712));
    EXPECT_EQ(nullptr, NIMBET_DB_CreatObjectIteratorInfo(db_create_if_ipoption_obj, db_release_if_ipoption_object));
    expect_failure_diag("nimbet db create root iterator failed. ret = 4712");
    EXPECT_EQ(1u, db_test_call_count(DB_OP_RELEASE_OBJ, "if_ipoption"));
    EXPECT_TRUE(messages().empty());
}

// ---------------------------------------------------------------- table walks

// One walkable table, seen through adapters so one body tests them all.
struct WalkTable {
    const char *name;
    const char *table;
    uint32_t stat;
    size_t recSize;
    NIMBET_DB_ITER_INFO *(*create)();
    uint32_t (*next)(NIMBET_DB_ITER_INFO *, void *);
    void (*release)(NIMBET_DB_ITER_INFO *);
    void (*write)(uint32_t i);               // row number i
    uint32_t (*row_of)(const void *rec);     // which row a record holds
    const char *msgCreate, *msgNext, *msgRead;  // null: silent
    uint32_t *counters;                      // iterator slot pair, or null
    unsigned slotCreate, slotRelease;
};

void write_v4(uint32_t i) {
    auto *e = new NIMBET_DB_IPV4_ADDR_ENTRY{};
    e->ifIndex = 1000 + i;
    e->addressCount = 1;
    e->addresses[0].address = i;
    ASSERT_EQ(0u, NIMBET_DB_WriteIpv4Entry(e));
    delete e;
}
void write_v6(uint32_t i) {
    auto *e = new NIMBET_DB_IPV6_ADDR_ENTRY{};
    e->ifIndex = 1000 + i;
    e->addressCount = 1;
    e->addresses[0].address[15] = static_cast<uint8_t>(i);
    ASSERT_EQ(0u, NIMBET_DB_WriteIpv6Entry(e));
    delete e;
}
void write_if(uint32_t i) {
    const NIMBET_DB_IF_IPOPTION_ENTRY e = {7, 1000 + i, 3, i, 0, 0, 0};
    ASSERT_EQ(0u, NIMBET_DB_OptWriteIfEntry(&e));
}
void write_ospf(uint32_t i) {
    NIMBET_DB_OSPF_NVO3_ENTRY e{};
    e.vrId = i;
    e.ospf_disable = i + 1;
    ASSERT_EQ(0u, NIMBET_DB_WriteEntryOspfNvo3(0, &e));
}
void write_global(uint32_t i) {
    const NIMBET_DB_GLOBAL_IPOPTION_ENTRY e = {7, 1000 + i, i, 0, 0, 0};
    ASSERT_EQ(0u, NIMBET_DB_OptWriteGlobalEntry(&e));
}

const WalkTable kWalks[] = {
    {"Ipv4Addr", "ifm_ipv4_address", DB_STAT_IFM_IPV4_ADDRESS, sizeof(NIMBET_DB_IPV4_ADDR_ENTRY),
     NIMBET_DB_CreateIpv4AddrIterator,
     [](NIMBET_DB_ITER_INFO *it, void *r) { return NIMBET_DB_GetNextIpv4Addr(it, static_cast<NIMBET_DB_IPV4_ADDR_ENTRY *>(r)); },
     NIMBET_DB_ReleaseIpv4AddrIterator, write_v4,
     [](const void *r) { return static_cast<const NIMBET_DB_IPV4_ADDR_ENTRY *>(r)->ifIndex - 1000; },
     "nimbet create ipv4 address interator failed.", "Get next ifm ipv4 address db fail, ret = %u.", nullptr,
     nullptr, 0, 0},
    {"Ipv6Addr", "ifm_ipv6_address", DB_STAT_IFM_IPV6_ADDRESS, sizeof(NIMBET_DB_IPV6_ADDR_ENTRY),
     NIMBET_DB_CreateIpv6AddrIterator,
     [](NIMBET_DB_ITER_INFO *it, void *r) { return NIMBET_DB_GetNextIpv6Addr(it, static_cast<NIMBET_DB_IPV6_ADDR_ENTRY *>(r)); },
     NIMBET_DB_ReleaseIpv6AddrIterator, write_v6,
     [](const void *r) { return static_cast<const NIMBET_DB_IPV6_ADDR_ENTRY *>(r)->ifIndex - 1000; },
     "nimbet create ipv6 address interator failed.", nullptr, nullptr, nullptr, 0, 0},
    {"IfOption", "if_ipoption", DB_STAT_IF_IPOPTION, sizeof(NIMBET_DB_IF_IPOPTION_ENTRY),
     NIMBET_DB_CreateOptIfIterator,
     [](NIMBET_DB_ITER_INFO *it, void *r) { return NIMBET_DB_OptGetNextIf(it, static_cast<NIMBET_DB_IF_IPOPTION_ENTRY *>(r)); },
     NIMBET_DB_ReleaseOptIfIterator, write_if,
     [](const void *r) { return static_cast<const NIMBET_DB_IF_IPOPTION_ENTRY *>(r)->ifIndex - 1000; }, nullptr,
     "[ip opt]Get next int ipoption db fail. ret = %d", "[ip opt]Get next int ipoption db fail. ret = %d",
     g_nimbetIpOptionCnt, 10, 11},
    {"GlobalOption", "global_ipoption", DB_STAT_GLOBAL_IPOPTION, sizeof(NIMBET_DB_GLOBAL_IPOPTION_ENTRY),
     NIMBET_DB_CreateOptGlobalIterator,
     [](NIMBET_DB_ITER_INFO *it, void *r) { return NIMBET_DB_OptGetNextGlobal(it, static_cast<NIMBET_DB_GLOBAL_IPOPTION_ENTRY *>(r)); },
     NIMBET_DB_ReleaseOptGlobalIterator, write_global,
     [](const void *r) { return static_cast<const NIMBET_DB_GLOBAL_IPOPTION_ENTRY *>(r)->optionType - 1000; },
     nullptr, "[ip opt]Get next global ipoption db fail. ret = %d",
     "[ip opt]Get next global ipoption db fail. ret = %d", g_nimbetIpOptionCnt, 10, 11},
    {"OspfNvo3", "ospf_nvo3", DB_STAT_OSPF_NVO3, sizeof(NIMBET_DB_OSPF_NVO3_WALK_ITEM), NIMBET_DB_CreatOspfNvo3Iterator,
     [](NIMBET_DB_ITER_INFO *it, void *r) { return NIMBET_DB_GetNextOspfNvo3(it, static_cast<NIMBET_DB_OSPF_NVO3_WALK_ITEM *>(r)); },
     NIMBET_DB_ReleaseOspfNvo3Iterator, write_ospf,
     [](const void *r) {
         const auto *item = static_cast<const NIMBET_DB_OSPF_NVO3_WALK_ITEM *>(r);
         // Every item is of type 3 and carries its row's first state word.
         return item->itemType == 3 && item->ospf_disable == item->vrId + 1 ? item->vrId : 0xFFFFFFFFu;
     },
     nullptr, "Get next ospf nvo3 db fail. ret = %d", "Get ospf nvo3 db fail. ret = %d", nullptr, 0, 0},
};

// The walkable session kinds, from the shared kind table.
template <int K>
void write_session(uint32_t i) {
    const SessionKind &k = kSessionKinds[K];
    std::vector<uint8_t> r(k.recSize);
    k.make(r.data(), i);
    ASSERT_EQ(0u, k.write(r.data()));
}
uint32_t session_row(const void *rec) {
    uint32_t sockId;  // every session record starts with it
    std::memcpy(&sockId, rec, sizeof sockId);
    return sockId;
}
template <int K>
WalkTable session_walk() {
    const SessionKind &k = kSessionKinds[K];
    return {k.name, k.table, k.stat, k.recSize, k.create, k.next, k.release, write_session<K>, session_row,
            nullptr, k.msgNext, k.msgShortRead, g_nimbetSessionCnt, k.slotCreate, k.slotRelease};
}
// Ping (index 2) has no walk.
const WalkTable kSessionWalks[] = {session_walk<0>(), session_walk<1>(), session_walk<3>(), session_walk<4>(),
                                   session_walk<5>()};

void PrintTo(const WalkTable &w, std::ostream *os) { *os << w.name; }

class TableWalk : public LibTest, public ::testing::WithParamInterface<WalkTable> {
protected:
    std::vector<uint8_t> rec_ = std::vector<uint8_t>(GetParam().recSize, 0xEE);
    void *rec() { return rec_.data(); }
    // Moves of the table's counter array (the IP option or the session one).
    std::map<unsigned, uint32_t> slots() const {
        const WalkTable &w = GetParam();
        if (w.counters == g_nimbetSessionCnt) return slot_delta(before_.session, g_nimbetSessionCnt);
        return slot_delta(before_.ipOption, g_nimbetIpOptionCnt);
    }
};

TEST_P(TableWalk, DeliversEveryRowOnceThenEnds) {
    const WalkTable &w = GetParam();
    constexpr uint32_t kRows = 50;
    for (uint32_t i = 0; i < kRows; ++i) w.write(i);
    NIMBET_DB_ITER_INFO *it = w.create();
    ASSERT_NE(nullptr, it);
    std::set<uint32_t> seen;
    uint32_t r;
    while ((r = w.next(it, rec())) == 0) EXPECT_TRUE(seen.insert(w.row_of(rec())).second) << "row delivered twice";
    EXPECT_EQ(NIMBET_DB_ITER_END, r);
    EXPECT_EQ(NIMBET_DB_ITER_END, w.next(it, rec())) << "past the end the walk stays at its end";
    w.release(it);
    EXPECT_EQ(kRows, seen.size());
    EXPECT_EQ(kRows - 1, *seen.rbegin());
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

TEST_P(TableWalk, EmptyTableEndsAtOnceAndCountersPair) {
    const WalkTable &w = GetParam();
    NIMBET_DB_ITER_INFO *it = w.create();
    ASSERT_NE(nullptr, it);
    EXPECT_EQ(NIMBET_DB_ITER_END, w.next(it, rec()));
    EXPECT_EQ(std::vector<uint8_t>(w.recSize, 0xEE), rec_) << "the record is untouched";
    w.release(it);
    w.release(nullptr);  // does nothing, counts nothing
    std::map<unsigned, uint32_t> expected;
    if (w.counters != nullptr) expected = {{w.slotCreate, 1}, {w.slotRelease, 1}};
    EXPECT_EQ(expected, slots());
}

TEST_P(TableWalk, NullArgumentsAnswerOneAndDoNotMoveTheWalk) {
    const WalkTable &w = GetParam();
    w.write(7);
    NIMBET_DB_ITER_INFO *it = w.create();
    ASSERT_NE(nullptr, it);
    EXPECT_EQ(1u, w.next(it, nullptr));
    EXPECT_EQ(1u, w.next(nullptr, rec()));
    ASSERT_EQ(0u, w.next(it, rec()));
    EXPECT_EQ(7u, w.row_of(rec()));
    w.release(it);
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
}

TEST_P(TableWalk, FailedCreationLogsItsMessageAndCountsNothing) {
    const WalkTable &w = GetParam();
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, w.table, nullptr, 1, 1, 3));
    EXPECT_EQ(nullptr, w.create());
    EXPECT_EQ(w.msgCreate ? std::vector<std::string>{w.msgCreate} : std::vector<std::string>{}, formats());
    EXPECT_TRUE(slots().empty());
    EXPECT_EQ(1u, NIMBET_HostTest_DiagCount());
}

TEST_P(TableWalk, FailedStepIsCountedAndLoggedByTable) {
    const WalkTable &w = GetParam();
    w.write(1);
    NIMBET_DB_ITER_INFO *it = w.create();
    ASSERT_NE(nullptr, it);
    ASSERT_EQ(0u, db_test_inject(DB_OP_ITER_NEXT, w.table, nullptr, 1, 1, 31337));
    EXPECT_EQ(1u, w.next(it, rec()));
    EXPECT_EQ(w.msgNext ? std::vector<std::string>{w.msgNext} : std::vector<std::string>{}, formats());
    if (w.msgNext) {
        EXPECT_NE(std::string::npos, texts()[0].find("31337"));
    }
    EXPECT_EQ((StatDelta{{{w.stat, DB_ERR_NEXT}, 1}}), stats());
    // The handle stays usable: the next step delivers the row.
    EXPECT_EQ(0u, w.next(it, rec()));
    w.release(it);
}

// Row-image tables read the current row after each step.
class ImageWalk : public TableWalk {};

TEST_P(ImageWalk, FailedRowRead) {
    const WalkTable &w = GetParam();
    w.write(1);
    w.write(2);
    NIMBET_DB_ITER_INFO *it = w.create();
    ASSERT_NE(nullptr, it);
    ASSERT_EQ(0u, db_test_inject(DB_OP_READ_WITH_BUF, w.table, nullptr, 1, 1, DB_RET_NO_RECORD));
    EXPECT_EQ(1u, w.next(it, rec())) << "a row gone under the walk";
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
    ASSERT_EQ(0u, db_test_inject(DB_OP_READ_WITH_BUF, w.table, nullptr, 1, 1, 606));
    EXPECT_EQ(1u, w.next(it, rec()));
    EXPECT_EQ(std::vector<std::string>{w.msgRead}, formats());
    EXPECT_EQ((StatDelta{{{w.stat, DB_ERR_READ}, 1}}), stats());
    w.release(it);
}

auto name_of = [](const auto &info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(Tables, TableWalk, ::testing::ValuesIn(kWalks), name_of);
INSTANTIATE_TEST_SUITE_P(Tables, ImageWalk, ::testing::Values(kWalks[2], kWalks[3], kWalks[4]), name_of);
INSTANTIATE_TEST_SUITE_P(Sessions, TableWalk, ::testing::ValuesIn(kSessionWalks), name_of);
INSTANTIATE_TEST_SUITE_P(Sessions, ImageWalk, ::testing::ValuesIn(kSessionWalks), name_of);

}  // namespace
}  // namespace nimbet_test
