// Shared fixture of the library tests: a fresh database, captured log
// messages, statistics and counters as deltas, and a leak check at the end.
#pragma once

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "db_nimbet_test.h"
#include "nimbet_db.h"
#include "nimbet_host_test.h"

namespace nimbet_test {

struct Message {
    std::string format;
    std::string text;
};

inline std::vector<Message> &messages() {
    static std::vector<Message> m;
    return m;
}

inline void capture(const char *format, ...) {
    char buf[1024];
    va_list ap;
    va_start(ap, format);
    vsnprintf(buf, sizeof buf, format, ap);
    va_end(ap);
    messages().push_back({format, buf});
}

// A snapshot of every exported counter, so a test states the cells it
// expects to move and any other change fails.
struct Counters {
    std::vector<uint32_t> errStat, ipOption, session, smooth, udpHelper;
    static Counters now() {
        return {{g_nimbetDbErrStat, g_nimbetDbErrStat + NIMBET_DB_ERR_STAT_NUM},
                {g_nimbetIpOptionCnt, g_nimbetIpOptionCnt + NIMBET_DB_IP_OPTION_CNT_NUM},
                {g_nimbetSessionCnt, g_nimbetSessionCnt + NIMBET_DB_SESSION_CNT_NUM},
                {g_nimbetSmoothCnt, g_nimbetSmoothCnt + NIMBET_DB_SMOOTH_CNT_NUM},
                {g_nimbetUdpHelperCnt, g_nimbetUdpHelperCnt + NIMBET_DB_UDP_HELPER_CNT_NUM}};
    }
};

// Cells of g_nimbetDbErrStat that moved since `before`: (table, kind) -> delta.
inline std::map<std::pair<unsigned, unsigned>, uint32_t> stat_delta(const Counters &before) {
    std::map<std::pair<unsigned, unsigned>, uint32_t> d;
    for (unsigned i = 0; i < NIMBET_DB_ERR_STAT_NUM; ++i)
        if (g_nimbetDbErrStat[i] != before.errStat[i])
            d[{i / NIMBET_DB_ERR_KIND_NUM, i % NIMBET_DB_ERR_KIND_NUM}] = g_nimbetDbErrStat[i] - before.errStat[i];
    return d;
}

using StatDelta = std::map<std::pair<unsigned, unsigned>, uint32_t>;

// Slots of one counter array that moved: slot -> delta.
inline std::map<unsigned, uint32_t> slot_delta(const std::vector<uint32_t> &before, const uint32_t *now) {
    std::map<unsigned, uint32_t> d;
    for (unsigned i = 0; i < before.size(); ++i)
        if (now[i] != before[i]) d[i] = now[i] - before[i];
    return d;
}

class LibTest : public ::testing::Test {
protected:
    void SetUp() override {
        db_test_reset();
        NIMBET_HostTest_Reset();
        messages().clear();
        const NIMBET_DB_CONTEXT ctx = {nullptr, capture};
        ASSERT_EQ(0u, NIMBET_DB_ContextInit(&ctx));
        before_ = Counters::now();
    }
    void TearDown() override {
        EXPECT_EQ(0u, db_test_live_objects()) << "a database object was not released";
        EXPECT_EQ(0u, NIMBET_HostTest_OutstandingTotal()) << "a host memory block was not freed";
        const NIMBET_DB_CONTEXT none = {nullptr, nullptr};
        NIMBET_DB_ContextInit(&none);
    }

    StatDelta stats() const { return stat_delta(before_); }
    std::vector<std::string> formats() const {
        std::vector<std::string> f;
        for (const Message &m : messages()) f.push_back(m.format);
        return f;
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> t;
        for (const Message &m : messages()) t.push_back(m.text);
        return t;
    }

    Counters before_;
};

}  // namespace nimbet_test
