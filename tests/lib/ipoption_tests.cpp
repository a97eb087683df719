// Interface and global IP option tables.
#include <ctime>

#include "support.h"

namespace nimbet_test {
namespace {

// The stored row image of a key, read straight from the database.
template <size_t Len>
std::vector<uint8_t> stored(uint32_t (*create)(uint32_t, uint32_t, DB_HANDLE *), uint32_t (*release)(DB_HANDLE),
                            uint32_t desc, const void *key) {
    std::vector<uint8_t> image(Len);
    DB_HANDLE h = 0;
    EXPECT_EQ(0u, create(DB_OPEN_READ, 0, &h));
    EXPECT_EQ(0u, db_read_obj_with_buf(h, &desc, key, image.data(), Len));
    release(h);
    return image;
}

int64_t le64(const std::vector<uint8_t> &b, size_t off) {
    uint64_t v = 0;
    for (int i = 7; i >= 0; --i) v = (v << 8) | b[off + i];
    return static_cast<int64_t>(v);
}

class IpOption : public LibTest {
protected:
    std::map<unsigned, uint32_t> slots() const { return slot_delta(before_.ipOption, g_nimbetIpOptionCnt); }
};

TEST_F(IpOption, InterfaceRowRoundTripsWithoutCreationTime) {
    const NIMBET_DB_IF_IPOPTION_ENTRY e = {1, 2, 3, 0xDEADBEEFu, 0xBEEF, 0x1234, 0xCAFEBABEu};
    const int64_t lo = time(nullptr);
    ASSERT_EQ(0u, NIMBET_DB_OptWriteIfEntry(&e));
    const int64_t hi = time(nullptr);
    NIMBET_DB_IF_IPOPTION_ENTRY got = {1, 2, 3, 0, 0, 0, 0};
    ASSERT_EQ(0u, NIMBET_DB_OptReadIfEntry(&got));
    EXPECT_EQ(0, std::memcmp(&e, &got, sizeof e));

    const uint8_t key[12] = {1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0};
    const auto row = stored<40>(db_create_if_ipoption_obj, db_release_if_ipoption_object, 0x0001000Cu, key);
    const std::vector<uint8_t> head = {1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 0xEF, 0xBE, 0xAD, 0xDE,
                                       0xEF, 0xBE, 0x34, 0x12, 0xBE, 0xBA, 0xFE, 0xCA};
    EXPECT_EQ(head, std::vector<uint8_t>(row.begin(), row.begin() + 24));
    EXPECT_EQ(0, le64(row, 24)) << "createTime";
    EXPECT_LE(lo, le64(row, 32));
    EXPECT_GE(hi, le64(row, 32));
    EXPECT_EQ((std::map<unsigned, uint32_t>{{0, 1}, {1, 1}, {2, 1}, {3, 1}}), slots());
}

TEST_F(IpOption, GlobalRowIsCreatedAtItsWriteTime) {
    const NIMBET_DB_GLOBAL_IPOPTION_ENTRY e = {9, 4, 0x01020304u, 0x0506, 0x0708, 0x090A0B0Cu};
    ASSERT_EQ(0u, NIMBET_DB_OptWriteGlobalEntry(&e));
    NIMBET_DB_GLOBAL_IPOPTION_ENTRY got = {9, 4, 0, 0, 0, 0};
    ASSERT_EQ(0u, NIMBET_DB_OptReadGlobalEntry(&got));
    EXPECT_EQ(0, std::memcmp(&e, &got, sizeof e));
    const uint8_t key[8] = {9, 0, 0, 0, 4, 0, 0, 0};
    const auto row = stored<36>(db_create_global_ipoption_obj, db_release_global_ipoption_object, 0x00010008u, key);
    const std::vector<uint8_t> head = {9, 0, 0, 0, 4, 0, 0, 0, 4, 3, 2, 1, 6, 5, 8, 7, 0x0C, 0x0B, 0x0A, 9};
    EXPECT_EQ(head, std::vector<uint8_t>(row.begin(), row.begin() + 20));
    EXPECT_NE(0, le64(row, 28));
    EXPECT_EQ(le64(row, 28), le64(row, 20)) << "createTime equals lastWriteTime";
}

TEST_F(IpOption, TheTwoImageCopiesOrderTheirStampsDifferently) {
    const NIMBET_DB_IF_IPOPTION_ENTRY ie = {1, 2, 3, 4, 5, 6, 7};
    uint8_t ifImage[40] = {};
    ifImage[32] = 0x11;  // lastWriteTime 0x11 before the call
    const int64_t lo = time(nullptr);
    NIMBET_DB_OptSetIf(&ie, ifImage);
    EXPECT_EQ(0x11, ifImage[24]) << "createTime takes the previous lastWriteTime";
    EXPECT_LE(lo, le64(std::vector<uint8_t>(ifImage, ifImage + 40), 32));

    const NIMBET_DB_GLOBAL_IPOPTION_ENTRY ge = {1, 2, 3, 4, 5, 6};
    uint8_t gImage[36] = {};
    gImage[20] = 0x22;  // an existing creation time is kept
    NIMBET_DB_OptSetGlobal(&ge, gImage);
    EXPECT_EQ(0x22, le64(std::vector<uint8_t>(gImage, gImage + 36), 20));
}

TEST_F(IpOption, KeysSelectIndependentRows) {
    for (uint32_t type = 1; type <= 2; ++type) {
        const NIMBET_DB_IF_IPOPTION_ENTRY e = {1, 2, type, type * 10, 0, 0, 0};
        ASSERT_EQ(0u, NIMBET_DB_OptWriteIfEntry(&e));
        const NIMBET_DB_GLOBAL_IPOPTION_ENTRY g = {1, type, type * 100, 0, 0, 0};
        ASSERT_EQ(0u, NIMBET_DB_OptWriteGlobalEntry(&g));
    }
    NIMBET_DB_IF_IPOPTION_ENTRY i1 = {1, 2, 1, 0, 0, 0, 0};
    NIMBET_DB_GLOBAL_IPOPTION_ENTRY g2 = {1, 2, 0, 0, 0, 0};
    ASSERT_EQ(0u, NIMBET_DB_OptReadIfEntry(&i1));
    ASSERT_EQ(0u, NIMBET_DB_OptReadGlobalEntry(&g2));
    EXPECT_EQ(10u, i1.value1);
    EXPECT_EQ(200u, g2.value1);
    const NIMBET_DB_IF_IPOPTION_KEY k = {1, 2, 1};
    ASSERT_EQ(0u, NIMBET_DB_OptDeleteIfEntry(&k));
    EXPECT_EQ(1u, NIMBET_DB_OptReadIfEntry(&i1));
    EXPECT_EQ(1u, db_test_row_count("if_ipoption"));
    EXPECT_EQ(2u, db_test_row_count("global_ipoption"));
}

TEST_F(IpOption, MissingRowReadIsSilentButCountsItsOpenAndRelease) {
    NIMBET_DB_IF_IPOPTION_ENTRY i = {5, 5, 5, 0, 0, 0, 0};
    NIMBET_DB_GLOBAL_IPOPTION_ENTRY g = {5, 5, 0, 0, 0, 0};
    EXPECT_EQ(1u, NIMBET_DB_OptReadIfEntry(&i));
    EXPECT_EQ(1u, NIMBET_DB_OptReadGlobalEntry(&g));
    EXPECT_TRUE(messages().empty());
    EXPECT_TRUE(stats().empty());
    EXPECT_EQ((std::map<unsigned, uint32_t>{{IP_OPTION_CNT_READ_OPEN, 2}, {IP_OPTION_CNT_READ_RELEASE, 2}}), slots());
}

TEST_F(IpOption, SetEntryKeyCopiesOnlyWithBothPointers) {
    NIMBET_DB_IF_IPOPTION_KEY dst = {9, 9, 9};
    const NIMBET_DB_IF_IPOPTION_KEY src = {1, 2, 3};
    NIMBET_DB_OptSetIfEntryKey(&dst, nullptr);
    NIMBET_DB_OptSetIfEntryKey(nullptr, &src);
    EXPECT_EQ(9u, dst.vrId);
    NIMBET_DB_OptSetIfEntryKey(&dst, &src);
    EXPECT_EQ(0, std::memcmp(&dst, &src, sizeof dst));
    NIMBET_DB_GLOBAL_IPOPTION_KEY gd = {9, 9};
    const NIMBET_DB_GLOBAL_IPOPTION_KEY gs = {4, 5};
    NIMBET_DB_OptSetGlobalEntryKey(&gd, &gs);
    EXPECT_EQ(4u, gd.vrId);
    EXPECT_EQ(5u, gd.optionType);
}

// One failure path of one table; rows of key (1, 2, 3) / (1, 3) exist.
struct OptCase {
    const char *name;
    bool global;
    int op;  // 0 write, 1 read, 2 delete; +10: null argument
    DB_TEST_OP inject;
    uint32_t status;
    uint32_t result;
    std::vector<std::string> texts;
    StatDelta stats;
    std::map<unsigned, uint32_t> slots;
};

void PrintTo(const OptCase &c, std::ostream *os) { *os << c.name; }

class OptPath : public IpOption, public ::testing::WithParamInterface<OptCase> {};

TEST_P(OptPath, ResultMessagesStatisticsAndSlots) {
    const OptCase &c = GetParam();
    NIMBET_DB_IF_IPOPTION_ENTRY ie = {1, 2, 3, 4, 5, 6, 7};
    NIMBET_DB_GLOBAL_IPOPTION_ENTRY ge = {1, 3, 4, 5, 6, 7};
    ASSERT_EQ(0u, NIMBET_DB_OptWriteIfEntry(&ie));
    ASSERT_EQ(0u, NIMBET_DB_OptWriteGlobalEntry(&ge));
    before_ = Counters::now();
    if (c.status != 0) {
        ASSERT_EQ(0u, db_test_inject(c.inject, c.global ? "global_ipoption" : "if_ipoption", nullptr, 1, 1, c.status));
    }
    const bool null = c.op >= 10;
    uint32_t r = 0;
    switch (c.op % 10) {
        case 0:
            r = c.global ? NIMBET_DB_OptWriteGlobalEntry(null ? nullptr : &ge)
                         : NIMBET_DB_OptWriteIfEntry(null ? nullptr : &ie);
            break;
        case 1:
            r = c.global ? NIMBET_DB_OptReadGlobalEntry(null ? nullptr : &ge)
                         : NIMBET_DB_OptReadIfEntry(null ? nullptr : &ie);
            break;
        default: {
            const NIMBET_DB_IF_IPOPTION_KEY ik = {1, 2, 3};
            const NIMBET_DB_GLOBAL_IPOPTION_KEY gk = {1, 3};
            r = c.global ? NIMBET_DB_OptDeleteGlobalEntry(null ? nullptr : &gk)
                         : NIMBET_DB_OptDeleteIfEntry(null ? nullptr : &ik);
        }
    }
    EXPECT_EQ(c.result, r);
    EXPECT_EQ(c.texts, texts());
    EXPECT_EQ(c.stats, stats());
    EXPECT_EQ(c.slots, slots());
}

constexpr uint32_t kIf = DB_STAT_IF_IPOPTION, kGl = DB_STAT_GLOBAL_IPOPTION;
using Slots = std::map<unsigned, uint32_t>;

const OptCase kOptCases[] = {
    {"IfWriteNull", false, 10, DB_OP_WRITE, 0, 1, {}, {}, {}},
    {"IfWriteOpen", false, 0, DB_OP_CREATE_OBJ, 5, 1, {}, {}, {}},
    {"IfWriteAllFields", false, 0, DB_OP_SET_ALL_FIELDS, 4242, 4242, {}, {}, Slots{{2, 1}, {3, 1}}},
    {"IfWriteTolerated", false, 0, DB_OP_WRITE, DB_RET_TOLERATED, 0, {}, {{{kIf, DB_ERR_TOLERATED}, 1}}, Slots{{2, 1}, {3, 1}}},
    {"IfWriteFails", false, 0, DB_OP_WRITE, 6, 1, {}, {{{kIf, DB_ERR_WRITE}, 1}}, Slots{{2, 1}, {3, 1}}},
    {"IfReadNull", false, 11, DB_OP_READ, 0, 1,
     {"[ip opt]nimbet db readentryintoption entry is QEX_NULL. para is NULL"}, {}, {}},
    {"IfReadOpen", false, 1, DB_OP_CREATE_OBJ, 7, 1,
     {"[ip opt]Read interface option  create obj failed. ret = 7, vrId = 1, ifIndex = 2,             optionType = 3."},
     {}, {}},
    {"IfReadFails", false, 1, DB_OP_READ_WITH_BUF, 8, 1,
     {"[ip opt]Get interface option  db failed. ret = 8, vrId = 1, ifIndex = 2,                 optionType = 3."},
     {{{kIf, DB_ERR_READ}, 1}}, Slots{{0, 1}, {1, 1}}},
    {"IfDeleteNull", false, 12, DB_OP_REMOVE, 0, 1,
     {"[ip opt]nimbet db deleteentryoption entry is QEX_NULL, para is NULL"}, {}, {}},
    {"IfDeleteOpen", false, 2, DB_OP_CREATE_OBJ, 9, 1,
     {"[ip opt]Delete option  create obj failed. ret = 9, vrId = 1, ifIndex = 2,             optionType = 3."}, {}, {}},
    {"IfDeleteTolerated", false, 2, DB_OP_REMOVE, DB_RET_TOLERATED, 0, {}, {{{kIf, DB_ERR_TOLERATED}, 1}},
     Slots{{4, 1}, {5, 1}}},
    {"IfDeleteFails", false, 2, DB_OP_REMOVE, 10, 1,
     {"[ip opt]Remove option  db failed. ret = 10, vrId = 1, ifIndex = 2, optionType = 3."},
     {{{kIf, DB_ERR_REMOVE}, 1}}, Slots{{4, 1}, {5, 1}}},
    {"GlobalWriteNull", true, 10, DB_OP_WRITE, 0, 1, {}, {}, {}},
    {"GlobalWriteAllFields", true, 0, DB_OP_SET_ALL_FIELDS, 4242, 4242, {}, {}, Slots{{2, 1}, {3, 1}}},
    {"GlobalWriteFails", true, 0, DB_OP_WRITE, 6, 1, {}, {{{kGl, DB_ERR_WRITE}, 1}}, Slots{{2, 1}, {3, 1}}},
    {"GlobalReadNull", true, 11, DB_OP_READ, 0, 1,
     {"[ip opt]nimbet db readentryGlobaloption entry is QEX_NULL. para is NULL"}, {}, {}},
    {"GlobalReadOpen", true, 1, DB_OP_CREATE_OBJ, 7, 1,
     {"[ip opt]Read global option  create obj failed. ret = 7, vrId = 1, optionType = 3."}, {}, {}},
    {"GlobalReadFails", true, 1, DB_OP_READ_WITH_BUF, 8, 1,
     {"[ip opt]Get global option  db failed. ret = 8, vrId = 1, optionType = 3."}, {{{kGl, DB_ERR_READ}, 1}},
     Slots{{0, 1}, {1, 1}}},
    {"GlobalDeleteNull", true, 12, DB_OP_REMOVE, 0, 1,
     {"[ip opt]nimbet db deleteentryoption entry is QEX_NULL, para is NULL"}, {}, {}},
    {"GlobalDeleteOpen", true, 2, DB_OP_CREATE_OBJ, 9, 1,
     {"[ip opt]Delete option  create obj failed. ret = 9, vrId = 1, optionType = 3."}, {}, {}},
    {"GlobalDeleteTolerated", true, 2, DB_OP_REMOVE, DB_RET_TOLERATED, 0, {}, {{{kGl, DB_ERR_TOLERATED}, 1}},
     Slots{{4, 1}, {5, 1}}},
    {"GlobalDeleteFails", true, 2, DB_OP_REMOVE, 10, 1,
     {"[ip opt]Remove option  db failed. ret = 10, vrId = 1, optionType = 3."}, {{{kGl, DB_ERR_REMOVE}, 1}},
     Slots{{4, 1}, {5, 1}}},
};

INSTANTIATE_TEST_SUITE_P(Paths, OptPath, ::testing::ValuesIn(kOptCases),
                         [](const auto &info) { return std::string(info.param.name); });

}  // namespace
}  // namespace nimbet_test
