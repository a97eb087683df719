// Tests of the embedded object database: row semantics, refused calls,
// child lists, secondary-index walks, removal during walks, test hooks,
// allocation failure, concurrent callers and a device-sized table.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "db_nimbet.h"
#include "db_nimbet_test.h"

extern "C" int odb_c_smoke(void);

namespace {

using Row = std::vector<uint8_t>;

void put32(uint8_t *p, uint32_t v) { for (int i = 0; i < 4; ++i) p[i] = static_cast<uint8_t>(v >> 8 * i); }
uint32_t get32(const uint8_t *p) { return p[0] | p[1] << 8 | p[2] << 16 | static_cast<uint32_t>(p[3]) << 24; }

// One table through its generated accessors. A field table gets a test-side
// image of its leading u32 fields, written and read back through the accessors.
struct Ops {
    const char *name;
    uint32_t len;
    DB_CREATE_OBJ_FUNC create;
    DB_RELEASE_OBJ_FUNC release;
    uint32_t (*fill)(DB_HANDLE w, const uint8_t *img);
    uint32_t (*current)(DB_HANDLE o, uint8_t *img);  // the row the object stands on
};

#define IMAGE_OPS(t, n)                                                                              \
    Ops {                                                                                             \
        #t, n, db_create_##t##_obj, db_release_##t##_object,                                         \
            [](DB_HANDLE w, const uint8_t *img) { return db_set_##t##_all_fields(w, img, n); },      \
            [](DB_HANDLE o, uint8_t *img) { return db_read_obj_with_buf(o, nullptr, nullptr, img, n); } \
    }

const Ops kInet = IMAGE_OPS(inet_sess, 104);
const Ops kInet6 = IMAGE_OPS(inet6_sess, 132);
const Ops kGroup = IMAGE_OPS(group_sess, 84);
const Ops kGroup6 = IMAGE_OPS(group6_sess, 108);
const Ops kIsis = IMAGE_OPS(isis_sess, 84);
const Ops kPing = IMAGE_OPS(ping_sess, 84);
const Ops kSubnet = IMAGE_OPS(subnet_bc, 28);
const Ops kUrpf = IMAGE_OPS(urpf_mode, 36);
const Ops kTrunk = IMAGE_OPS(urpf_trunkmem, 20);
const Ops kVrfData{"vrf_class_data", 16, db_create_vrf_class_data_obj, db_release_vrf_class_data_object,
    [](DB_HANDLE w, const uint8_t *img) {
        return db_set_vrf_class_data_table_id(w, get32(img)) | db_set_vrf_class_data_producer_pid(w, get32(img + 4)) |
               db_set_vrf_class_data_vr_id(w, get32(img + 8)) | db_set_vrf_class_data_vrf_index(w, get32(img + 12));
    },
    [](DB_HANDLE o, uint8_t *img) {
        uint32_t v[4] = {};
        const uint32_t s = db_get_vrf_class_data_table_id(o, &v[0]) | db_get_vrf_class_data_producer_pid(o, &v[1]) |
                           db_get_vrf_class_data_vr_id(o, &v[2]) | db_get_vrf_class_data_vrf_index(o, &v[3]);
        for (int i = 0; i < 4; ++i) put32(img + 4 * i, v[i]);
        return s;
    }};
#define FIELD_OPS(t) Ops{#t, 0, db_create_##t##_obj, db_release_##t##_object, nullptr, nullptr}
const Ops kV4 = FIELD_OPS(ifm_ipv4_address), kV6 = FIELD_OPS(ifm_ipv6_address), kVrfState = FIELD_OPS(vrf_class_state);

// An object released at scope exit.
class Obj {
public:
    Obj(const Ops &t, uint32_t mode) : release_(t.release) { EXPECT_EQ(0u, t.create(mode, 0, &h_)); }
    ~Obj() { if (h_ != 0) release_(h_); }
    operator DB_HANDLE() const { return h_; }
    DB_HANDLE drop() {  // release now; the stale value stays for the caller
        EXPECT_EQ(0u, release_(h_));
        return std::exchange(h_, 0);
    }

private:
    DB_RELEASE_OBJ_FUNC release_;
    DB_HANDLE h_ = 0;
};

uint32_t write_row(const Ops &t, const Row &r) {
    Obj w(t, DB_OPEN_WRITE);
    const uint32_t s = t.fill(w, r.data());
    return s != 0 ? s : db_write_obj(w);
}

// Rows a walk delivers (null descriptor and key: the whole table). With
// racing, another thread may remove the row under the cursor before it is read.
std::vector<Row> walk(const Ops &t, const uint32_t *desc, const void *key, bool racing = false) {
    Obj s(t, DB_OPEN_SCAN);
    DB_HANDLE it = 0;
    std::vector<Row> out;
    EXPECT_EQ(0u, db_create_root_iter(s, desc, key, &it));
    uint32_t st;
    while ((st = db_root_iterator_next(it)) == 0) {
        out.emplace_back(t.len);
        const uint32_t cs = t.current(s, out.back().data());
        if (racing && cs == DB_RET_NO_RECORD) out.pop_back();
        else EXPECT_EQ(0u, cs);
    }
    EXPECT_EQ(DB_RET_ITER_END, st);
    EXPECT_EQ(DB_RET_ITER_END, db_root_iterator_next(it));
    return out;
}

// Byte order of rows, spelled out: g++ 12 misreads the memcmp of vector's operator<.
struct RowLess {
    bool operator()(const Row &a, const Row &b) const {
        for (size_t i = 0; i < a.size() && i < b.size(); ++i)
            if (a[i] != b[i]) return a[i] < b[i];
        return a.size() < b.size();
    }
};
using RowSet = std::multiset<Row, RowLess>;

RowSet as_set(const std::vector<Row> &v) { return RowSet(v.begin(), v.end()); }

uint64_t count_by_key(const Ops &t, uint32_t desc, const void *key) {
    Obj c(t, DB_OPEN_COUNT);
    uint64_t n = ~0ull;
    EXPECT_EQ(0u, db_get_table_record_count_by_key(c, &desc, key, &n));
    return n;
}

// An inet_sess row: sockId = tag and producer hPid are primary-key bytes;
// flavor moves the row between the buckets of indexes 1 and 2.
Row inet_row(uint32_t tag, uint32_t hPid, uint32_t flavor = 0) {
    Row r(104, 0);
    put32(&r[0], tag), put32(&r[4], hPid), put32(&r[68], 0x100 + flavor);
    r[28] = 6, r[56] = static_cast<uint8_t>(flavor), r[58] = static_cast<uint8_t>(flavor + 1);
    put32(&r[72], tag * 7 + flavor);  // a plain field, so the version of a row shows
    return r;
}

Row inet_key(uint32_t index, const Row &r) {
    if (index == 3) return Row(&r[4], &r[8]);
    Row k{r[28]};
    const size_t port = index == 1 ? 56 : 58;
    k.insert(k.end(), &r[port], &r[port + 2]);
    k.insert(k.end(), &r[68], &r[72]);
    return k;
}

constexpr uint32_t kPrimaryInet = DB_KEY_PRIMARY(29);

class Odb : public ::testing::Test {
protected:
    void SetUp() override { db_test_reset(); }
    void TearDown() override { EXPECT_EQ(0u, db_test_live_objects()); }
};

TEST_F(Odb, CHostCompilesAndRuns) { EXPECT_EQ(0, odb_c_smoke()); }

// ---------------------------------------------------------------- row semantics

void write_v4(uint32_t ifIndex, uint32_t vrf, uint32_t serial, const std::vector<uint32_t> &addresses) {
    Obj w(kV4, DB_OPEN_WRITE);
    ASSERT_EQ(0u, db_set_ifm_ipv4_address_ifIndex(w, ifIndex));
    // Unset fields stay unset, to read back 0.
    ASSERT_EQ(0u, vrf ? db_set_ifm_ipv4_address_vrfIndex(w, vrf) : 0);
    ASSERT_EQ(0u, serial ? db_set_ifm_ipv4_address_app_serial_id(w, serial) : 0);
    DB_HANDLE child = 0;
    ASSERT_EQ(0u, db_create_child_node(w, 0, "ipv4_address_list", 0, 0, &child));
    for (size_t i = 0; i < addresses.size(); ++i) {
        ASSERT_EQ(0u, db_child_push_back(child));
        ASSERT_EQ(0u, db_set_ifm_ipv4_address_ipv4_address_list_address(child, addresses[i]));
        ASSERT_EQ(0u, db_set_ifm_ipv4_address_ipv4_address_list_masklen(child, static_cast<uint8_t>(8 + i)));
    }
    // Go back to the first entry and set it again.
    ASSERT_EQ(0u, db_child_get(child, 0));
    ASSERT_EQ(0u, db_set_ifm_ipv4_address_ipv4_address_list_type(child, 3));
    ASSERT_EQ(0u, db_write_obj(w));
}

// Reads the row of ifIndex and checks its fields and child list.
void expect_v4(uint32_t ifIndex, uint32_t vrf, uint32_t serial, const std::vector<uint32_t> &addresses) {
    Obj r(kV4, DB_OPEN_READ);
    const uint32_t desc = DB_KEY_PRIMARY(4);
    ASSERT_EQ(0u, db_read_obj(r, &desc, &ifIndex));
    uint32_t v = ~0u, v2 = ~0u, n = ~0u;
    EXPECT_EQ(0u, db_get_ifm_ipv4_address_vrfIndex(r, &v) | db_get_ifm_ipv4_address_app_serial_id(r, &v2));
    EXPECT_EQ(vrf, v);
    EXPECT_EQ(serial, v2);
    DB_HANDLE child = 0;
    ASSERT_EQ(0u, db_create_child_node(r, 0, "ipv4_address_list", 0, 0, &child));
    ASSERT_EQ(0u, db_child_count(child, &n));
    ASSERT_EQ(addresses.size(), n);
    for (uint32_t i = 0; i < n; ++i) {
        uint8_t masklen = 0, type = 0;
        ASSERT_EQ(0u, db_child_get(child, i));
        EXPECT_EQ(0u, db_get_ifm_ipv4_address_ipv4_address_list_address(child, &v) |
                          db_get_ifm_ipv4_address_ipv4_address_list_masklen(child, &masklen) |
                          db_get_ifm_ipv4_address_ipv4_address_list_type(child, &type));
        EXPECT_EQ(addresses[i], v);
        EXPECT_EQ(8 + i, static_cast<uint32_t>(masklen));
        EXPECT_EQ(i == 0 ? 3 : 0, type);
    }
    EXPECT_EQ(DB_RET_INDEX_RANGE, db_child_get(child, n));
}

TEST_F(Odb, WriteReplacesTheWholeRowAndItsChildList) {
    write_v4(7, 3, 0, {0x0A000001, 0x0A000002, 0x0A000003});
    write_v4(8, 4, 0, {0x0B000001});
    expect_v4(7, 3, 0, {0x0A000001, 0x0A000002, 0x0A000003});
    write_v4(7, 0, 9, {0xC0A80001});  // vrfIndex left unset: reads back 0
    expect_v4(7, 0, 9, {0xC0A80001});
    expect_v4(8, 4, 0, {0x0B000001});
    EXPECT_EQ(2u, db_test_row_count("ifm_ipv4_address"));
}

TEST_F(Odb, RemoveToleratesAMissingKey) {
    ASSERT_EQ(0u, write_row(kInet, inet_row(1, 1)));
    Obj rm(kInet, DB_OPEN_REMOVE);
    const Row present = inet_row(1, 1), missing = inet_row(1, 2);
    EXPECT_EQ(DB_RET_TOLERATED, db_remove_obj(rm, &kPrimaryInet, missing.data()));
    EXPECT_EQ(1u, db_test_row_count("inet_sess"));
    EXPECT_EQ(0u, db_remove_obj(rm, &kPrimaryInet, present.data()));
    EXPECT_EQ(DB_RET_TOLERATED, db_remove_obj(rm, &kPrimaryInet, present.data()));
    EXPECT_EQ(0u, db_test_row_count("inet_sess"));
}

TEST_F(Odb, UpdateChangesOnlyTheFieldsSet) {
    Row img(36);
    for (size_t i = 0; i < img.size(); ++i) img[i] = static_cast<uint8_t>(0x10 + i);
    ASSERT_EQ(0u, write_row(kUrpf, img));
    Obj u(kUrpf, DB_OPEN_UPDATE);
    ASSERT_EQ(0u, db_set_urpf_mode_flags(u, 0xA1B2C3D4) | db_set_urpf_mode_svcStatus(u, 0x77));
    const uint32_t desc = 0x00010009;
    Row missing = img;
    missing[8] ^= 1;  // last primary-key byte
    EXPECT_EQ(DB_RET_NO_RECORD, db_update_obj(u, &desc, missing.data()));
    EXPECT_EQ(1u, db_test_row_count("urpf_mode"));
    ASSERT_EQ(0u, db_update_obj(u, &desc, img.data()));
    Row want = img, got(36);
    put32(&want[20], 0xA1B2C3D4), want[9] = 0x77;
    Obj r(kUrpf, DB_OPEN_READ);
    ASSERT_EQ(0u, db_read_obj_with_buf(r, &desc, img.data(), got.data(), 36));
    EXPECT_EQ(want, got);
}

TEST_F(Odb, UpdateKeepsTheChildList) {
    write_v4(7, 3, 0, {0x0A000001, 0x0A000002});
    Obj u(kV4, DB_OPEN_UPDATE);
    ASSERT_EQ(0u, db_set_ifm_ipv4_address_app_serial_id(u, 5));
    const uint32_t desc = DB_KEY_PRIMARY(4), ifIndex = 7;
    ASSERT_EQ(0u, db_update_obj(u, &desc, &ifIndex));
    expect_v4(7, 3, 5, {0x0A000001, 0x0A000002});
}

TEST_F(Odb, Ipv6ChildListKeepsSixteenByteAddresses) {
    uint8_t addr[3][16];
    for (int e = 0; e < 3; ++e)
        for (int b = 0; b < 16; ++b) addr[e][b] = static_cast<uint8_t>(0x20 * e + b * 15 + 1);
    {
        Obj w(kV6, DB_OPEN_WRITE);
        DB_HANDLE child = 0;
        ASSERT_EQ(0u, db_set_ifm_ipv6_address_ifIndex(w, 5));
        ASSERT_EQ(0u, db_create_child_node(w, 0, "ipv6_address_list", 0, 0, &child));
        for (int e = 0; e < 3; ++e) {
            ASSERT_EQ(0u, db_child_push_back(child));
            ASSERT_EQ(0u, db_set_ifm_ipv6_address_ipv6_address_list_address(child, addr[e], 16) |
                              db_set_ifm_ipv6_address_ipv6_address_list_prefixlen(child, static_cast<uint8_t>(64 + e)));
        }
        ASSERT_EQ(0u, db_write_obj(w));
    }
    Obj r(kV6, DB_OPEN_READ);
    const uint32_t desc = DB_KEY_PRIMARY(4), ifIndex = 5;
    ASSERT_EQ(0u, db_read_obj(r, &desc, &ifIndex));
    DB_HANDLE child = 0;
    uint32_t n = 0;
    ASSERT_EQ(0u, db_create_child_node(r, 0, "ipv6_address_list", 0, 0, &child));
    ASSERT_EQ(0u, db_child_count(child, &n));
    ASSERT_EQ(3u, n);
    for (uint32_t e = 0; e < n; ++e) {
        uint8_t *p = nullptr, prefixlen = 0;
        uint32_t len = 0;
        ASSERT_EQ(0u, db_child_get(child, e));
        ASSERT_EQ(0u, db_get_ifm_ipv6_address_ipv6_address_list_address(child, &p, &len));
        ASSERT_EQ(16u, len);  // p points into the object's copy of the entry
        EXPECT_EQ(0, std::memcmp(p, addr[e], 16)) << "entry " << e;
        EXPECT_EQ(0u, db_get_ifm_ipv6_address_ipv6_address_list_prefixlen(child, &prefixlen));
        EXPECT_EQ(64 + e, static_cast<uint32_t>(prefixlen));
    }
    EXPECT_EQ(DB_RET_INDEX_RANGE, db_child_get(child, 3));
}

// ---------------------------------------------------------------- refused calls

struct Env {
    DB_HANDLE w, u, r, r0, rm, s, c, it, gone, goneIter, goneChild;
    DB_HANDLE v6w, v6c, v6empty, v6r, v6rc, v6cnt, vrfw;
    Row key;  // primary key of the row r holds
};

constexpr uint32_t kWroteOut = 0xBAD0u;  // the refused call wrote its out argument
// Calls f with an out argument holding a sentinel; a refusal must leave it.
template <class T, class F>
uint32_t kept(F &&f) {
    T v = T(5);
    const uint32_t s = f(&v);
    return v == T(5) ? s : kWroteOut;
}
using H = DB_HANDLE;
uint32_t read_by(const Env &e, uint32_t desc) { return db_read_obj(e.r, &desc, e.key.data()); }
const uint32_t kShortPrimary = DB_KEY_PRIMARY(28), kLongIndex = DB_KEY_INDEX(3, 5);
uint8_t gBuf[200];

struct StatusCase {
    const char *what;
    uint32_t status;
    uint32_t (*call)(const Env &);
};
#define CASE(what, status, ...) {what, status, [](const Env &e) -> uint32_t { (void)e; return __VA_ARGS__; }}
#define V6_LIST "ipv6_address_list"

const StatusCase kStatusCases[] = {
    CASE("primary key too short", DB_RET_BAD_KEY, read_by(e, kShortPrimary)),
    CASE("index key too long", DB_RET_BAD_KEY, read_by(e, DB_KEY_INDEX(1, 8))),
    CASE("no index 4", DB_RET_BAD_KEY, read_by(e, DB_KEY_INDEX(4, 4))),
    CASE("neither primary nor index", DB_RET_BAD_KEY, read_by(e, 0x0002001Du)),
    CASE("0x08 for 0x09", DB_RET_BAD_KEY, read_by(e, 0x03080004u)),
    CASE("count by bad key", DB_RET_BAD_KEY, kept<uint64_t>([&](uint64_t *n) {
             return db_get_table_record_count_by_key(e.c, &kLongIndex, e.key.data(), n); })),
    CASE("walk by bad key", DB_RET_BAD_KEY,
         kept<H>([&](H *it) { return db_create_root_iter(e.s, &kShortPrimary, e.key.data(), it); })),
    CASE("remove by bad key", DB_RET_BAD_KEY, db_remove_obj(e.rm, &kShortPrimary, e.key.data())),
    CASE("update by bad key", DB_RET_BAD_KEY, db_update_obj(e.u, &kLongIndex, e.key.data())),
    CASE("row image short", DB_RET_BAD_LENGTH, db_set_inet_sess_all_fields(e.w, gBuf, 103)),
    CASE("keyed read buffer short", DB_RET_BAD_LENGTH, db_read_obj_with_buf(e.r, &kPrimaryInet, e.key.data(), gBuf, 103)),
    CASE("current-row buffer long", DB_RET_BAD_LENGTH, db_read_obj_with_buf(e.r, nullptr, nullptr, gBuf, 105)),
    CASE("address of 15 bytes", DB_RET_BAD_LENGTH, db_set_ifm_ipv6_address_ipv6_address_list_address(e.v6c, gBuf, 15)),
    CASE("write on a read object", DB_RET_WRONG_MODE, db_write_obj(e.r)),
    CASE("update on a write object", DB_RET_WRONG_MODE, db_update_obj(e.w, &kPrimaryInet, e.key.data())),
    CASE("keyed read on a scan object", DB_RET_WRONG_MODE, db_read_obj(e.s, &kPrimaryInet, e.key.data())),
    CASE("current row of a write object", DB_RET_WRONG_MODE, db_read_obj_with_buf(e.w, nullptr, nullptr, gBuf, 104)),
    CASE("remove on a read object", DB_RET_WRONG_MODE, db_remove_obj(e.r, &kPrimaryInet, e.key.data())),
    CASE("walk on a read object", DB_RET_WRONG_MODE,
         kept<H>([&](H *it) { return db_create_root_iter(e.r, nullptr, nullptr, it); })),
    CASE("count on a scan object", DB_RET_WRONG_MODE,
         kept<uint64_t>([&](uint64_t *n) { return db_get_table_record_count(e.s, n); })),
    CASE("count by key on a read object", DB_RET_WRONG_MODE, kept<uint64_t>([&](uint64_t *n) {
             return db_get_table_record_count_by_key(e.r, &kPrimaryInet, e.key.data(), n); })),
    CASE("setter on a read object", DB_RET_WRONG_MODE, db_set_inet_sess_vrId(e.r, 1)),
    CASE("row image on a remove object", DB_RET_WRONG_MODE, db_set_inet_sess_all_fields(e.rm, gBuf, 104)),
    CASE("getter on a write object", DB_RET_WRONG_MODE,
         kept<uint32_t>([&](uint32_t *v) { return db_get_inet_sess_vrId(e.w, v); })),
    CASE("child node on a count object", DB_RET_WRONG_MODE,
         kept<H>([&](H *ch) { return db_create_child_node(e.v6cnt, 0, V6_LIST, 0, 0, ch); })),
    CASE("push on a read child", DB_RET_WRONG_MODE, db_child_push_back(e.v6rc)),
    CASE("entry setter on a read child", DB_RET_WRONG_MODE, db_set_ifm_ipv6_address_ipv6_address_list_type(e.v6rc, 1)),
    CASE("entry getter on a write child", DB_RET_WRONG_MODE,
         kept<uint8_t>([&](uint8_t *v) { return db_get_ifm_ipv6_address_ipv6_address_list_type(e.v6c, v); })),
    CASE("unknown open mode", DB_RET_WRONG_MODE, kept<H>([](H *h) { return db_create_inet_sess_obj(2, 0, h); })),
    CASE("zero handle", DB_RET_BAD_HANDLE, db_write_obj(0)),
    CASE("released handle", DB_RET_BAD_HANDLE, db_write_obj(e.gone)),
    CASE("released twice", DB_RET_BAD_HANDLE, db_release_inet_sess_object(e.gone)),
    CASE("released by another table", DB_RET_BAD_HANDLE, db_release_urpf_mode_object(e.w)),
    CASE("iterator released with its object", DB_RET_BAD_HANDLE, db_root_iterator_next(e.goneIter)),
    CASE("child released with its object", DB_RET_BAD_HANDLE, db_child_push_back(e.goneChild)),
    CASE("object as iterator", DB_RET_BAD_HANDLE, db_root_iterator_next(e.s)),
    CASE("iterator as object", DB_RET_BAD_HANDLE, db_release_inet_sess_object(e.it)),
    CASE("child as object", DB_RET_BAD_HANDLE, db_set_ifm_ipv6_address_vrfIndex(e.v6c, 1)),
    CASE("object as child", DB_RET_BAD_HANDLE, kept<uint32_t>([&](uint32_t *n) { return db_child_count(e.v6r, n); })),
    CASE("forged 0xFFFFFFFF", DB_RET_BAD_HANDLE, db_write_obj(0xFFFFFFFFu)),
    CASE("forged all ones", DB_RET_BAD_HANDLE, db_root_iterator_next(~DB_HANDLE{0})),
    CASE("null handle out", DB_RET_BAD_ARG, db_create_inet_sess_obj(DB_OPEN_READ, 0, nullptr)),
    CASE("reserved not 0", DB_RET_BAD_ARG, kept<H>([](H *h) { return db_create_inet_sess_obj(DB_OPEN_READ, 1, h); })),
    CASE("null getter out", DB_RET_BAD_ARG, db_get_inet_sess_vrId(e.r, nullptr)),
    CASE("null count out", DB_RET_BAD_ARG, db_get_table_record_count(e.c, nullptr)),
    CASE("null iterator out", DB_RET_BAD_ARG, db_create_root_iter(e.s, nullptr, nullptr, nullptr)),
    CASE("null address out", DB_RET_BAD_ARG, kept<uint32_t>([&](uint32_t *len) {
             return db_get_ifm_ipv6_address_ipv6_address_list_address(e.v6rc, nullptr, len); })),
    CASE("descriptor without key", DB_RET_BAD_ARG, db_read_obj(e.r, &kPrimaryInet, nullptr)),
    CASE("null list name", DB_RET_BAD_ARG,
         kept<H>([&](H *ch) { return db_create_child_node(e.v6w, 0, nullptr, 0, 0, ch); })),
    CASE("null read buffer", DB_RET_BAD_ARG, db_read_obj_with_buf(e.r, nullptr, nullptr, nullptr, 104)),
    CASE("null row image", DB_RET_BAD_ARG, db_set_inet_sess_all_fields(e.w, nullptr, 104)),
    CASE("widened byte over 255", DB_RET_BAD_ARG, db_set_vrf_class_state_vrf_state_machine(e.vrfw, 256)),
    CASE("list of another table", DB_RET_UNKNOWN, kept<H>([&](H *ch) {
             return db_create_child_node(e.v6w, 0, "ipv4_address_list", 0, 0, ch); })),
    CASE("entry past the end", DB_RET_INDEX_RANGE, db_child_get(e.v6rc, 1)),
    CASE("entry setter before a push", DB_RET_INDEX_RANGE,
         db_set_ifm_ipv6_address_ipv6_address_list_type(e.v6empty, 1)),
    CASE("getter before a read", DB_RET_NO_ROW,
         kept<uint32_t>([&](uint32_t *v) { return db_get_inet_sess_vrId(e.r0, v); })),
    CASE("read of a missing key", DB_RET_NO_RECORD, db_read_obj(e.r0, &kPrimaryInet, inet_row(9, 9).data())),
};

TEST_F(Odb, RefusedCallsAnswerTheirOwnStatus) {
    const Row row = inet_row(1, 1);
    ASSERT_EQ(0u, write_row(kInet, row));
    Obj w(kInet, DB_OPEN_WRITE), u(kInet, DB_OPEN_UPDATE), r(kInet, DB_OPEN_READ), r0(kInet, DB_OPEN_READ),
        rm(kInet, DB_OPEN_REMOVE), s(kInet, DB_OPEN_SCAN), c(kInet, DB_OPEN_COUNT), gone(kInet, DB_OPEN_READ),
        goneScan(kInet, DB_OPEN_SCAN), goneV6(kV6, DB_OPEN_WRITE), v6w(kV6, DB_OPEN_WRITE), v6w2(kV6, DB_OPEN_WRITE),
        v6r(kV6, DB_OPEN_READ), v6cnt(kV6, DB_OPEN_COUNT), vrfw(kVrfState, DB_OPEN_WRITE);
    Env e{w, u, r, r0, rm, s, c, 0, 0, 0, 0, v6w, 0, 0, v6r, 0, v6cnt, vrfw, Row(row.begin(), row.begin() + 29)};
    ASSERT_EQ(0u, db_set_ifm_ipv6_address_ifIndex(v6w, 5));
    ASSERT_EQ(0u, db_create_child_node(v6w, 0, V6_LIST, 0, 0, &e.v6c));
    ASSERT_EQ(0u, db_child_push_back(e.v6c));
    ASSERT_EQ(0u, db_write_obj(v6w));
    const uint32_t d4 = DB_KEY_PRIMARY(4), ifIndex = 5;
    ASSERT_EQ(0u, db_read_obj(v6r, &d4, &ifIndex));
    ASSERT_EQ(0u, db_create_child_node(v6r, 0, V6_LIST, 0, 0, &e.v6rc));
    ASSERT_EQ(0u, db_child_get(e.v6rc, 0));
    ASSERT_EQ(0u, db_create_child_node(v6w2, 0, V6_LIST, 0, 0, &e.v6empty));
    ASSERT_EQ(0u, db_read_obj(r, &kPrimaryInet, e.key.data()));
    ASSERT_EQ(0u, db_create_root_iter(s, nullptr, nullptr, &e.it));
    ASSERT_EQ(0u, db_create_root_iter(goneScan, nullptr, nullptr, &e.goneIter));
    ASSERT_EQ(0u, db_create_child_node(goneV6, 0, V6_LIST, 0, 0, &e.goneChild));
    e.gone = gone.drop();
    goneScan.drop();
    goneV6.drop();

    const uint64_t live = db_test_live_objects();
    for (const StatusCase &k : kStatusCases) EXPECT_EQ(k.status, k.call(e)) << k.what;
    EXPECT_EQ(live, db_test_live_objects());
    EXPECT_EQ(1u, db_test_row_count("inet_sess"));
    // The refused calls left every object usable.
    uint32_t v = 0;
    EXPECT_EQ(0u, db_set_inet_sess_vrId(w, 1));
    EXPECT_EQ(0u, db_get_inet_sess_sockId(r, &v));
    EXPECT_EQ(1u, v);
    EXPECT_EQ(0u, db_root_iterator_next(e.it));
}

TEST_F(Odb, StaleHandleOfAReusedSlotIsRefused) {
    // Enough live objects that the store hands the freed slot out again.
    std::vector<DB_HANDLE> hs(1100);
    for (DB_HANDLE &h : hs) ASSERT_EQ(0u, db_create_urpf_mode_obj(DB_OPEN_READ, 0, &h));
    const DB_HANDLE old = hs[0];
    ASSERT_EQ(0u, db_release_urpf_mode_object(old));
    ASSERT_EQ(0u, db_create_urpf_mode_obj(DB_OPEN_COUNT, 0, &hs[0]));
    uint64_t n = 5;
    EXPECT_EQ(DB_RET_BAD_HANDLE, db_get_table_record_count(old, &n));
    EXPECT_EQ(5u, n);
    EXPECT_EQ(DB_RET_BAD_HANDLE, db_release_urpf_mode_object(old));
    EXPECT_EQ(0u, db_get_table_record_count(hs[0], &n));
    for (DB_HANDLE h : hs) EXPECT_EQ(0u, db_release_urpf_mode_object(h));
}

TEST_F(Odb, ReleasedHandleStaysRefusedThroughManyCycles) {
    // More cycles than one slot has generations: the slot must rotate.
    DB_HANDLE old = 0;
    ASSERT_EQ(0u, db_create_urpf_mode_obj(DB_OPEN_COUNT, 0, &old));
    ASSERT_EQ(0u, db_release_urpf_mode_object(old));
    uint64_t n = 0;
    for (int i = 0; i < 20000; ++i) {
        DB_HANDLE h = 0;
        ASSERT_EQ(0u, db_create_urpf_mode_obj(DB_OPEN_COUNT, 0, &h));
        ASSERT_NE(old, h) << "cycle " << i;
        ASSERT_EQ(DB_RET_BAD_HANDLE, db_get_table_record_count(old, &n));
        ASSERT_EQ(0u, db_release_urpf_mode_object(h));
    }
}

// ---------------------------------------------------------------- keyed walks

struct Comp {
    int off, len;  // off < 0: the constant byte 0x00
};
struct IndexCase {
    const Ops *t;
    uint32_t number;
    std::vector<Comp> comps;
    int tag;                // 4 primary-key bytes outside the index, unique per row
    std::vector<int> vary;  // bytes that take no part in the index: they differ among matches
};

void PrintTo(const IndexCase &c, std::ostream *os) { *os << c.t->name << " index " << c.number; }

class OdbIndex : public Odb, public ::testing::WithParamInterface<IndexCase> {};

TEST_P(OdbIndex, KeyedWalkDeliversExactlyTheMatchingRows) {
    const IndexCase &c = GetParam();
    const Ops &t = *c.t;
    Row key;
    for (const Comp &p : c.comps)
        for (int b = 0; b < (p.off < 0 ? 1 : p.len); ++b)
            key.push_back(p.off < 0 ? 0 : static_cast<uint8_t>(0x31 + 13 * key.size()));
    auto make = [&](uint32_t tag) {
        Row r(t.len, 0);
        size_t k = 0;
        for (const Comp &p : c.comps) {
            if (p.off >= 0) std::memcpy(&r[p.off], &key[k], p.len);
            k += p.off < 0 ? 1 : p.len;
        }
        put32(&r[c.tag], tag);
        for (int v : c.vary) r[v] = static_cast<uint8_t>(tag * 3);
        return r;
    };
    std::multiset<uint32_t> want, got;
    for (uint32_t tag = 1; tag <= 4; ++tag) {
        ASSERT_EQ(0u, write_row(t, make(tag)));
        want.insert(tag);
    }
    // One row per indexed byte, differing from the key in that byte alone.
    uint32_t tag = 100;
    for (const Comp &p : c.comps)
        for (int b = 0; p.off >= 0 && b < p.len; ++b) {
            Row r = make(++tag);
            r[p.off + b] ^= 0x5A;
            ASSERT_EQ(0u, write_row(t, r));
        }
    const uint32_t desc = DB_KEY_INDEX(c.number, key.size());
    for (const Row &r : walk(t, &desc, key.data())) got.insert(get32(&r[c.tag]));
    EXPECT_EQ(want, got);
    EXPECT_EQ(want.size(), count_by_key(t, desc, key.data()));
    for (size_t i = 0; i < key.size(); ++i) {  // the constant byte included
        Row other = key;
        other[i] ^= 0xA5;
        EXPECT_EQ(0u, count_by_key(t, desc, other.data())) << "key byte " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(
    EveryIndex, OdbIndex,
    ::testing::Values(IndexCase{&kInet, 1, {{28, 1}, {56, 2}, {68, 4}}, 0, {58, 59}},
                      IndexCase{&kInet, 2, {{28, 1}, {58, 2}, {68, 4}}, 0, {56, 57}},
                      IndexCase{&kInet, 3, {{4, 4}}, 0, {28, 56, 68}},
                      IndexCase{&kInet6, 1, {{52, 1}, {92, 2}, {96, 4}}, 0, {94, 95}},
                      IndexCase{&kInet6, 2, {{52, 1}, {94, 2}, {96, 4}}, 0, {92, 93}},
                      IndexCase{&kInet6, 3, {{4, 4}}, 0, {52, 96}},
                      IndexCase{&kGroup, 1, {{5, 1}, {6, 2}, {16, 2}, {36, 4}}, 0, {40}},
                      IndexCase{&kGroup, 2, {{5, 1}, {16, 2}, {36, 4}}, 0, {6, 7}},
                      IndexCase{&kGroup, 5, {{40, 4}}, 0, {5, 36}},
                      IndexCase{&kGroup6, 1, {{42, 1}, {40, 2}, {44, 2}, {72, 4}}, 0, {43}},
                      IndexCase{&kGroup6, 2, {{42, 1}, {-1, 1}, {44, 2}, {72, 4}}, 0, {43, 40, 41}},
                      IndexCase{&kGroup6, 4, {{76, 4}}, 0, {72}},
                      IndexCase{&kIsis, 1, {{24, 4}}, 0, {56}},
                      IndexCase{&kIsis, 3, {{56, 4}}, 0, {24}},
                      IndexCase{&kPing, 1, {{23, 4}}, 0, {27}},
                      IndexCase{&kVrfData, 1, {{0, 4}, {4, 4}}, 8, {12}},
                      IndexCase{&kSubnet, 1, {{0, 4}}, 4, {8}},
                      IndexCase{&kUrpf, 1, {{0, 4}}, 4, {8}},
                      IndexCase{&kTrunk, 1, {{4, 4}}, 0, {8}}),
    [](const ::testing::TestParamInfo<IndexCase> &i) {
        return std::string(i.param.t->name) + "_" + std::to_string(i.param.number);
    });

TEST_F(Odb, PrimaryKeyWalkDeliversAtMostTheOneRow) {
    for (uint32_t tag = 1; tag <= 3; ++tag) ASSERT_EQ(0u, write_row(kInet, inet_row(tag, 1)));
    const Row hit = inet_row(2, 1), miss = inet_row(2, 2);
    const std::vector<Row> rows = walk(kInet, &kPrimaryInet, hit.data());
    ASSERT_EQ(1u, rows.size());
    EXPECT_EQ(hit, rows[0]);
    EXPECT_TRUE(walk(kInet, &kPrimaryInet, miss.data()).empty());
    EXPECT_EQ(1u, count_by_key(kInet, kPrimaryInet, hit.data()));
    EXPECT_EQ(0u, count_by_key(kInet, kPrimaryInet, miss.data()));
}

// ---------------------------------------------------------------- removal during a walk

class OdbWalkRemoval : public Odb, public ::testing::WithParamInterface<bool> {};

TEST_P(OdbWalkRemoval, RemovedRowsAreNeverDelivered) {
    const bool keyed = GetParam();
    constexpr uint32_t kRows = 200, kOthers = 50;  // enough that the walk lists compact mid-walk
    for (uint32_t tag = 1; tag <= kRows; ++tag) ASSERT_EQ(0u, write_row(kInet, inet_row(tag, 1)));
    for (uint32_t tag = 1; tag <= kOthers; ++tag) ASSERT_EQ(0u, write_row(kInet, inet_row(1000 + tag, 2)));
    Obj s(kInet, DB_OPEN_SCAN), rm(kInet, DB_OPEN_REMOVE);
    const uint32_t desc = DB_KEY_INDEX(3, 4);
    const uint8_t pid[4] = {1, 0, 0, 0};
    uint32_t descArg = desc;
    uint8_t keyArg[4] = {1, 0, 0, 0};
    DB_HANDLE it = 0;
    ASSERT_EQ(0u, db_create_root_iter(s, keyed ? &descArg : nullptr, keyed ? keyArg : nullptr, &it));
    descArg = 0, keyArg[0] = 2;  // the walk keeps its own copy of both
    std::set<uint32_t> removed;
    std::map<uint32_t, int> seen;
    auto remove = [&](uint32_t tag) {
        const Row r = inet_row(tag, 1);
        EXPECT_EQ(removed.insert(tag).second ? 0u : DB_RET_TOLERATED, db_remove_obj(rm, &kPrimaryInet, r.data()));
    };
    Row cur(104);
    uint32_t st;
    while ((st = db_root_iterator_next(it)) == 0) {
        ASSERT_EQ(0u, db_read_obj_with_buf(s, nullptr, nullptr, cur.data(), 104));
        const uint32_t tag = get32(&cur[0]);
        ASSERT_EQ(0u, removed.count(tag)) << "row " << tag << " delivered after its removal";
        ASSERT_EQ(1, ++seen[tag]) << "row " << tag << " delivered twice";
        if (tag > kRows) continue;
        if (tag % 3 == 0 && tag + 7 <= kRows) remove(tag + 7);  // ahead of the cursor
        if (tag % 5 == 0) remove(tag - 3);                      // behind it
        if (tag % 2 == 0) {
            remove(tag);
            uint32_t v = 5;
            EXPECT_EQ(DB_RET_NO_RECORD, db_read_obj_with_buf(s, nullptr, nullptr, cur.data(), 104));
            EXPECT_EQ(DB_RET_NO_RECORD, db_get_inet_sess_sockId(s, &v));
        }
    }
    EXPECT_EQ(DB_RET_ITER_END, st);
    ASSERT_EQ(0u, write_row(kInet, inet_row(kRows + 1, 1)));  // a matching row after the end
    for (int i = 0; i < 3; ++i) EXPECT_EQ(DB_RET_ITER_END, db_root_iterator_next(it));
    for (uint32_t tag = 1; tag <= kRows; ++tag)
        EXPECT_TRUE(removed.count(tag) != 0 || seen.count(tag) == 1) << "row " << tag << " never delivered";
    size_t others = 0;
    for (const auto &[tag, n] : seen) others += tag > kRows;
    EXPECT_EQ(keyed ? 0u : kOthers, others);
    EXPECT_EQ(kRows + kOthers + 1 - removed.size(), db_test_row_count("inet_sess"));
    EXPECT_EQ(kRows + 1 - removed.size(), count_by_key(kInet, desc, pid));
}

INSTANTIATE_TEST_SUITE_P(WholeAndKeyed, OdbWalkRemoval, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool> &i) { return i.param ? "Keyed" : "Whole"; });

// ---------------------------------------------------------------- test hooks

TEST_F(Odb, InjectedWriteStoresNothing) {
    ASSERT_EQ(0u, db_test_inject(DB_OP_WRITE, "inet_sess", nullptr, 2, 2, 4242));
    std::vector<uint32_t> got;
    for (uint32_t tag = 1; tag <= 4; ++tag) got.push_back(write_row(kInet, inet_row(tag, 1)));
    EXPECT_EQ((std::vector<uint32_t>{0, 4242, 4242, 0}), got);
    EXPECT_EQ(0u, write_row(kUrpf, Row(36, 1)));  // another table: no rule
    EXPECT_EQ(4u, db_test_call_count(DB_OP_WRITE, "inet_sess"));
    EXPECT_EQ(1u, db_test_call_count(DB_OP_WRITE, "urpf_mode"));
    EXPECT_EQ(5u, db_test_call_count(DB_OP_WRITE, nullptr));
    EXPECT_EQ(4u, db_test_call_count(DB_OP_CREATE_OBJ, "inet_sess"));
    EXPECT_EQ(2u, db_test_row_count("inet_sess"));
    for (uint32_t tag = 1; tag <= 4; ++tag)
        EXPECT_EQ(tag == 1 || tag == 4 ? 1u : 0u, count_by_key(kInet, kPrimaryInet, inet_row(tag, 1).data()));
}

TEST_F(Odb, RefusedCreateMakesNoObject) {
    DB_HANDLE h = 0;
    ASSERT_EQ(0u, db_test_inject(DB_OP_CREATE_OBJ, nullptr, nullptr, 1, 1, 77));
    EXPECT_EQ(77u, db_create_inet_sess_obj(DB_OPEN_READ, 0, &h));
    db_test_fail_nth_alloc(1);
    EXPECT_EQ(DB_RET_NO_MEMORY, db_create_inet_sess_obj(DB_OPEN_READ, 0, &h));
    EXPECT_EQ(0u, h);
    EXPECT_EQ(0u, db_test_live_objects());
    // An injected release still releases.
    ASSERT_EQ(0u, db_create_inet_sess_obj(DB_OPEN_READ, 0, &h));
    ASSERT_EQ(0u, db_test_inject(DB_OP_RELEASE_OBJ, "inet_sess", nullptr, 1, 1, 78));
    EXPECT_EQ(78u, db_release_inet_sess_object(h));
    EXPECT_EQ(0u, db_test_live_objects());
    EXPECT_EQ(DB_RET_BAD_HANDLE, db_release_inet_sess_object(h));
}

TEST_F(Odb, InjectionSelectsTableFieldAndHandle) {
    ASSERT_EQ(0u, db_test_inject(DB_OP_SET_FIELD, "urpf_mode", "flags", 1, 1, 99));
    {
        Obj w(kUrpf, DB_OPEN_WRITE);
        EXPECT_EQ(0u, db_set_urpf_mode_svcStatus(w, 5));
        EXPECT_EQ(99u, db_set_urpf_mode_flags(w, 0x1234));
        ASSERT_EQ(0u, db_write_obj(w));
    }
    Row want(36, 0), got(36);
    want[9] = 5;  // svcStatus set, flags not
    Obj r(kUrpf, DB_OPEN_READ);
    const uint32_t desc = DB_KEY_PRIMARY(9);
    ASSERT_EQ(0u, db_read_obj_with_buf(r, &desc, want.data(), got.data(), 36));
    EXPECT_EQ(want, got);
    // A rule naming a table never matches a call on an invalid handle.
    ASSERT_EQ(0u, db_test_inject(DB_OP_WRITE, "inet_sess", nullptr, 1, 1, 55));
    EXPECT_EQ(DB_RET_BAD_HANDLE, db_write_obj(0));
    ASSERT_EQ(0u, db_test_inject(DB_OP_WRITE, nullptr, nullptr, 1, 1, 56));
    EXPECT_EQ(56u, db_write_obj(0));
    EXPECT_EQ(DB_RET_UNKNOWN, db_test_inject(DB_OP_WRITE, "no_such_table", nullptr, 1, 1, 5));
    EXPECT_EQ(DB_RET_UNKNOWN, db_test_inject(DB_OP_SET_FIELD, "urpf_mode", "no_such_field", 1, 1, 5));
    EXPECT_EQ(DB_RET_BAD_ARG, db_test_inject(DB_OP_WRITE, nullptr, nullptr, 0, 1, 5));
}

TEST_F(Odb, KeyedWalkExaminesOnlyItsMatches) {
    Obj w(kInet, DB_OPEN_WRITE);
    for (uint32_t i = 0; i < 100000; ++i) {
        const Row r = inet_row(i + 1, i < 10 ? 0xBEEF : 1 + i % 5000);
        ASSERT_EQ(0u, kInet.fill(w, r.data()));
        ASSERT_EQ(0u, db_write_obj(w));
    }
    db_test_reset_counts();
    const uint32_t desc = DB_KEY_INDEX(3, 4);
    const uint8_t pid[4] = {0xEF, 0xBE, 0, 0};
    const std::vector<Row> rows = walk(kInet, &desc, pid);
    EXPECT_EQ(10u, rows.size());
    for (const Row &r : rows) EXPECT_EQ(0xBEEFu, get32(&r[4]));
    EXPECT_GE(db_test_rows_examined("inet_sess"), 10u);
    EXPECT_LT(db_test_rows_examined("inet_sess"), 50u);
}

// ---------------------------------------------------------------- allocation failure

class OdbAlloc : public Odb, public ::testing::WithParamInterface<bool> {};

TEST_P(OdbAlloc, FailedWriteLeavesTheTableAsItWas) {
    const bool replace = GetParam();
    for (uint32_t tag = 1; tag <= 20; ++tag) ASSERT_EQ(0u, write_row(kInet, inet_row(tag, tag % 4)));
    const Row old = inet_row(7, 3);
    // New buckets in every index the row moves to.
    const Row next = replace ? inet_row(7, 3, 50) : inet_row(21, 9, 50);
    auto snapshot = [&] {
        std::vector<RowSet> s{as_set(walk(kInet, nullptr, nullptr))};
        for (const Row *r : {&old, &next})
            for (uint32_t n = 1; n <= 3; ++n) {
                const Row k = inet_key(n, *r);
                const uint32_t d = DB_KEY_INDEX(n, k.size());
                s.push_back(as_set(walk(kInet, &d, k.data())));
            }
        return s;
    };
    const auto before = snapshot();
    Obj w(kInet, DB_OPEN_WRITE);
    ASSERT_EQ(0u, kInet.fill(w, next.data()));
    uint32_t nth = 1;
    for (;; ++nth) {
        db_test_fail_nth_alloc(nth);
        const uint32_t st = db_write_obj(w);
        db_test_fail_nth_alloc(0);
        if (st == 0) break;
        ASSERT_EQ(DB_RET_NO_MEMORY, st) << "allocation " << nth;
        ASSERT_EQ(before, snapshot()) << "allocation " << nth;
        ASSERT_LT(nth, 64u);
    }
    EXPECT_GT(nth, 1u);  // some allocation of the write did fail
    EXPECT_EQ(replace ? 20u : 21u, db_test_row_count("inet_sess"));
    for (uint32_t n = 1; n <= 3; ++n) {
        const Row k = inet_key(n, next);
        const uint32_t d = DB_KEY_INDEX(n, k.size());
        const std::vector<Row> rows = walk(kInet, &d, k.data());
        EXPECT_EQ(1, std::count(rows.begin(), rows.end(), next)) << "index " << n;
    }
    const Row k = inet_key(1, old);
    const uint32_t d = DB_KEY_INDEX(1, k.size());
    EXPECT_EQ(replace ? 19u : 20u, walk(kInet, &d, k.data()).size());
}

INSTANTIATE_TEST_SUITE_P(InsertAndReplace, OdbAlloc, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool> &i) { return i.param ? "Replace" : "Insert"; });

// ---------------------------------------------------------------- scale and threads

TEST_F(Odb, ConcurrentWritersReadersRemoversAndWalkers) {
    constexpr uint32_t kThreads = 4, kPer = 1000, kRounds = 3;
    auto tag_of = [](uint32_t k, uint32_t i) { return k * 100000 + i + 1; };
    auto worker = [&](uint32_t k) {
        Obj w(kInet, DB_OPEN_WRITE), r(kInet, DB_OPEN_READ), rm(kInet, DB_OPEN_REMOVE);
        const uint8_t pid[4] = {static_cast<uint8_t>(k + 1), 0, 0, 0};
        const uint32_t d3 = DB_KEY_INDEX(3, 4);
        Row got(104);
        for (uint32_t round = 0; round < kRounds; ++round) {
            for (uint32_t i = 0; i < kPer; ++i) {
                const Row row = inet_row(tag_of(k, i), k + 1, round);
                EXPECT_EQ(0u, kInet.fill(w, row.data()));
                EXPECT_EQ(0u, db_write_obj(w));
            }
            for (uint32_t i = 0; i < kPer; ++i) {
                const Row row = inet_row(tag_of(k, i), k + 1, round);
                EXPECT_EQ(0u, db_read_obj_with_buf(r, &kPrimaryInet, row.data(), got.data(), 104));
                EXPECT_EQ(row, got);
                EXPECT_EQ(0u, i % 2 == 1 ? db_remove_obj(rm, &kPrimaryInet, row.data()) : 0u);
            }
            std::map<uint32_t, int> seen;
            for (const Row &x : walk(kInet, nullptr, nullptr, true)) ++seen[get32(&x[0])];
            // Odd rows of other threads may be removed and written again under
            // the walk, and then arrive once more as new rows; even rows never.
            for (const auto &[tag, n] : seen) EXPECT_TRUE(n == 1 || tag % 2 == 0) << "row " << tag << " twice";
            for (uint32_t i = 0; i < kPer; ++i) EXPECT_EQ(i % 2 == 0 ? 1 : 0, seen[tag_of(k, i)]) << "own row " << i;
            EXPECT_EQ(kPer / 2, walk(kInet, &d3, pid).size());
        }
    };
    std::vector<std::thread> threads;
    for (uint32_t k = 0; k < kThreads; ++k) threads.emplace_back(worker, k);
    for (std::thread &t : threads) t.join();

    EXPECT_EQ(kThreads * kPer / 2, db_test_row_count("inet_sess"));
    RowSet want;
    for (uint32_t k = 0; k < kThreads; ++k)
        for (uint32_t i = 0; i < kPer; i += 2) want.insert(inet_row(tag_of(k, i), k + 1, kRounds - 1));
    Obj r(kInet, DB_OPEN_READ);
    Row got(104);
    for (const Row &row : want) {
        ASSERT_EQ(0u, db_read_obj_with_buf(r, &kPrimaryInet, row.data(), got.data(), 104));
        EXPECT_EQ(row, got);
    }
    const std::vector<Row> all = walk(kInet, nullptr, nullptr);
    EXPECT_EQ(want.size(), all.size());
    EXPECT_EQ(want, as_set(all));
}

TEST_F(Odb, MillionRows) {
    constexpr uint32_t kN = 1000000;
    {
        Obj w(kInet, DB_OPEN_WRITE);
        for (uint32_t i = 1; i <= kN; ++i) {
            const Row r = inet_row(i, i % 1000, i % 64);
            ASSERT_EQ(0u, kInet.fill(w, r.data()));
            ASSERT_EQ(0u, db_write_obj(w));
        }
    }
    Obj c(kInet, DB_OPEN_COUNT), r(kInet, DB_OPEN_READ), s(kInet, DB_OPEN_SCAN), rm(kInet, DB_OPEN_REMOVE);
    uint64_t n = 0;
    ASSERT_EQ(0u, db_get_table_record_count(c, &n));
    EXPECT_EQ(kN, n);
    Row got(104);
    for (uint32_t i = 1; i <= kN; i += 9973) {
        const Row want = inet_row(i, i % 1000, i % 64);
        ASSERT_EQ(0u, db_read_obj_with_buf(r, &kPrimaryInet, want.data(), got.data(), 104));
        EXPECT_EQ(want, got);
    }
    std::vector<uint8_t> seen(kN + 1, 0);
    DB_HANDLE it = 0;
    uint32_t walked = 0, st;
    ASSERT_EQ(0u, db_create_root_iter(s, nullptr, nullptr, &it));
    while ((st = db_root_iterator_next(it)) == 0) {
        uint32_t tag = 0;
        ASSERT_EQ(0u, db_get_inet_sess_sockId(s, &tag));
        ASSERT_TRUE(tag >= 1 && tag <= kN && seen[tag]++ == 0) << "row " << tag;
        ++walked;
    }
    EXPECT_EQ(DB_RET_ITER_END, st);
    EXPECT_EQ(kN, walked);
    for (uint32_t i = 1; i <= kN; ++i) {
        const Row key = inet_row(i, i % 1000);
        ASSERT_EQ(0u, db_remove_obj(rm, &kPrimaryInet, key.data()));
    }
    ASSERT_EQ(0u, db_get_table_record_count(c, &n));
    EXPECT_EQ(0u, n);
}

}  // namespace
