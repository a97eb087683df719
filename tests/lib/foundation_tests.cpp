// Context, error statistics and clock.
#include <ctime>

#include "support.h"

namespace nimbet_test {
namespace {

class Foundation : public LibTest {};

struct StatCase {
    uint32_t table, kind;
    int cell;  // element of g_nimbetDbErrStat that moves, -1: none
    const char *text;
};

class RecordErrStat : public Foundation, public ::testing::WithParamInterface<StatCase> {};

TEST_P(RecordErrStat, MovesOnlyItsCellOrLogsTheRefusal) {
    const StatCase &c = GetParam();
    NIMBET_DB_RecordErrStat(c.table, c.kind);
    std::vector<uint32_t> expected = before_.errStat;
    if (c.cell >= 0) ++expected[c.cell];
    EXPECT_EQ(expected, Counters::now().errStat);
    if (c.text == nullptr) {
        EXPECT_TRUE(messages().empty());
    } else {
        ASSERT_EQ(1u, messages().size());
        EXPECT_EQ("Set db error stat fail. table %u, error %u", messages()[0].format);
        EXPECT_EQ(c.text, messages()[0].text);
    }
}

INSTANTIATE_TEST_SUITE_P(Cells, RecordErrStat,
                         ::testing::Values(StatCase{0, 0, 0, nullptr}, StatCase{19, 5, 119, nullptr},
                                           StatCase{18, 3, 111, nullptr}, StatCase{13, 1, 79, nullptr},
                                           StatCase{20, 0, -1, "Set db error stat fail. table 20, error 0"},
                                           StatCase{0, 6, -1, "Set db error stat fail. table 0, error 6"},
                                           StatCase{0xFFFFFFFFu, 0xFFFFFFFFu, -1,
                                                    "Set db error stat fail. table 4294967295, error 4294967295"}));

TEST_F(Foundation, OutOfRangeStatisticWithoutCallbackIsSilentAndCountsNothing) {
    const NIMBET_DB_CONTEXT none = {nullptr, nullptr};
    ASSERT_EQ(0u, NIMBET_DB_ContextInit(&none));
    NIMBET_DB_RecordErrStat(20, 0);
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(before_.errStat, Counters::now().errStat);
}

void other_log(const char *, ...) {}

TEST_F(Foundation, ContextInitReplacesBothCallbacksAndRefusesNull) {
    const NIMBET_DB_CONTEXT ctx = {other_log, nullptr};
    EXPECT_EQ(0u, NIMBET_DB_ContextInit(&ctx));
    EXPECT_EQ(&other_log, NIMBET_DB_GetInfoLogCallBack());
    EXPECT_EQ(nullptr, NIMBET_DB_GetErrLogCallBack());
    EXPECT_EQ(&other_log, g_nimbetDbContext.infoLogCallBack);

    EXPECT_EQ(1u, NIMBET_DB_ContextInit(nullptr));
    EXPECT_EQ(&other_log, NIMBET_DB_GetInfoLogCallBack()) << "a refused init keeps the previous pair";

    const NIMBET_DB_CONTEXT ctx2 = {nullptr, capture};
    EXPECT_EQ(0u, NIMBET_DB_ContextInit(&ctx2));
    EXPECT_EQ(nullptr, NIMBET_DB_GetInfoLogCallBack());
    EXPECT_EQ(&capture, NIMBET_DB_GetErrLogCallBack());
}

TEST_F(Foundation, SysTimeIsTheCalendarTimeInSeconds) {
    const time_t lo = time(nullptr);
    const int64_t t = NIMBET_DB_GetSysTime();
    const time_t hi = time(nullptr);
    EXPECT_LE(static_cast<int64_t>(lo), t);
    EXPECT_GE(static_cast<int64_t>(hi), t);
}

}  // namespace
}  // namespace nimbet_test
