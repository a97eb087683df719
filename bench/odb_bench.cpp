// Cost of the object database's calls on table inet_sess, next to bare hash
// maps that hold the same 104-byte rows under the same 29-byte keys:
// absl::flat_hash_map and std::unordered_map with the rows inline, and the
// engine's own FlatIndex and an absl::flat_hash_map from key to slot, both
// with the rows in a vector. Every operation is measured at 1,000 and at
// 1,000,000 rows; lookups go in a shuffled order so that the large tables
// pay their cache misses.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <unordered_map>
#include <vector>

#include "db_nimbet.h"
#include "db_nimbet_test.h"
#include "flat_index.h"

#ifdef NIMBET_BENCH_ABSL
#include <absl/container/flat_hash_map.h>
#endif

namespace {

constexpr uint32_t kRowLen = 104;
constexpr uint32_t kKeyLen = 29;
constexpr uint32_t kPidRows = 10;  // rows that share one hPid value
constexpr uint16_t kSharedPort = 80;
constexpr uint16_t kLonePort = 81;  // srcPort of row 0 only

using Key = std::array<uint8_t, kKeyLen>;
using Row = std::array<uint8_t, kRowLen>;

const uint32_t kPrimary = DB_KEY_PRIMARY(kKeyLen);  // bytes 0-28
const uint32_t kByTuple = DB_KEY_INDEX(1, 7);       // protocol @28, srcPort @56, attr1 @68
const uint32_t kByPid = DB_KEY_INDEX(3, 4);         // hPid @4

void put_le(uint8_t *p, uint64_t v, unsigned n) {
    for (unsigned i = 0; i < n; ++i) p[i] = static_cast<uint8_t>(v >> (8 * i));
}

// Row `id` of the workload. The multiplier is odd, so sockId stays unique
// while consecutive ids land far apart in the key space.
Row make_row(uint32_t id, uint32_t pid, uint64_t stamp) {
    Row r{};
    put_le(&r[0], id * 0x9E3779B1u, 4);
    put_le(&r[4], pid, 4);
    put_le(&r[8], id % 7, 4);
    put_le(&r[12], id >> 10, 4);
    put_le(&r[16], 0x0A000000u | (id & 0xFFFFFFu), 4);
    put_le(&r[20], 0xC0A80001u, 4);
    put_le(&r[24], id ^ 0x5A5A5A5Au, 4);
    r[28] = 6;
    put_le(&r[56], id == 0 ? kLonePort : kSharedPort, 2);
    put_le(&r[58], id & 0xFFFFu, 2);
    put_le(&r[68], 7, 4);
    put_le(&r[96], stamp, 8);
    return r;
}

// Row i of an n-row table; its hPid group holds rows [10g, 10g + 9].
Row table_row(uint32_t i, uint64_t stamp = 0) { return make_row(i, i / kPidRows, stamp); }

// A row that is not in the table, with the same hPid as table row j.
Row extra_row(uint32_t n, uint32_t j) { return make_row(n + j, j / kPidRows, 0); }

Key key_of(const Row &r) {
    Key k;
    std::memcpy(k.data(), r.data(), kKeyLen);
    return k;
}

std::array<uint8_t, 4> pid_key(uint32_t pid) {
    std::array<uint8_t, 4> k;
    put_le(k.data(), pid, 4);
    return k;
}

std::array<uint8_t, 7> tuple_key(uint16_t srcPort) {
    std::array<uint8_t, 7> k{};
    k[0] = 6;
    put_le(&k[1], srcPort, 2);
    put_le(&k[3], 7, 4);
    return k;
}

// Orders and keys of one table size, built once with fixed seeds. The probe
// keys sit in one array read front to back, so fetching them costs no miss.
struct Workload {
    uint32_t n = 0;
    std::vector<uint32_t> loadOrder;
    std::vector<uint32_t> probeOrder;
    std::vector<Key> probeKeys;
};

const Workload &workload(uint32_t n) {
    static std::map<uint32_t, std::unique_ptr<Workload>> cache;
    auto &w = cache[n];
    if (!w) {
        w = std::make_unique<Workload>();
        w->n = n;
        w->loadOrder.resize(n);
        std::iota(w->loadOrder.begin(), w->loadOrder.end(), 0u);
        w->probeOrder = w->loadOrder;
        std::mt19937_64 rng(0x6E696D62ull + n);
        // Loading in a shuffled order scatters each hPid group over the row pool.
        std::shuffle(w->loadOrder.begin(), w->loadOrder.end(), rng);
        std::shuffle(w->probeOrder.begin(), w->probeOrder.end(), rng);
        w->probeKeys.reserve(n);
        for (uint32_t i : w->probeOrder) w->probeKeys.push_back(key_of(table_row(i)));
    }
    return *w;
}

// Cycles through 0..n-1.
struct Cursor {
    uint32_t k = 0, n;
    explicit Cursor(uint32_t size) : n(size) {}
    uint32_t next() {
        const uint32_t v = k;
        if (++k == n) k = 0;
        return v;
    }
};

uint32_t size_of(const benchmark::State &state) { return static_cast<uint32_t>(state.range(0)); }

[[noreturn]] void fail(const char *what, uint32_t status) {
    std::fprintf(stderr, "odb_bench: %s answered %u\n", what, status);
    std::abort();
}

void must(uint32_t status, const char *what) {
    if (status != 0) fail(what, status);
}

// ---------------------------------------------------------------- database

DB_HANDLE db_open(uint32_t mode) {
    DB_HANDLE h = 0;
    must(db_create_inet_sess_obj(mode, 0, &h), "db_create_inet_sess_obj");
    return h;
}

void db_close(DB_HANDLE h) { must(db_release_inet_sess_object(h), "db_release_inet_sess_object"); }

void db_put(const Row &r) {
    const DB_HANDLE h = db_open(DB_OPEN_WRITE);
    must(db_set_inet_sess_all_fields(h, r.data(), kRowLen), "db_set_inet_sess_all_fields");
    must(db_write_obj(h), "db_write_obj");
    db_close(h);
}

void db_remove(const uint8_t *key) {
    const DB_HANDLE h = db_open(DB_OPEN_REMOVE);
    must(db_remove_obj(h, &kPrimary, key), "db_remove_obj");
    db_close(h);
}

// What a benchmark does to the shape of the table (walk lists, dead
// entries) beyond replacing rows in place.
enum class Reshape { None, InsertRemove, RemoveReinsert, Churn };

struct DbTable {
    uint32_t n = 0;
    Reshape by = Reshape::None;
};
DbTable g_table;

// The n-row table, freshly loaded unless it is already loaded and no other
// benchmark has reshaped it since.
void db_table(uint32_t n, Reshape by) {
    if (g_table.n != n || (g_table.by != Reshape::None && g_table.by != by)) {
        db_test_reset();
        db_test_counting(0);  // measure the calls as a production host makes them
        for (uint32_t i : workload(n).loadOrder) db_put(table_row(i));
        if (db_test_row_count("inet_sess") != n) fail("loading the table", 0);
        g_table = DbTable{n, Reshape::None};
    }
    if (by != Reshape::None && g_table.by == Reshape::None) {
        g_table.by = by;
        if (by == Reshape::Churn) {
            // Remove and write back the oldest 45% of the rows: they move
            // to the end of every walk list and leave dead entries in front,
            // fewer than the live ones, so no list is compacted.
            const Workload &w = workload(n);
            for (uint32_t k = 0; k < n * 45ull / 100; ++k) {
                const Row r = table_row(w.loadOrder[k]);
                db_remove(r.data());
                db_put(r);
            }
        }
    }
}

void DbReplace(benchmark::State &state) {
    const uint32_t n = size_of(state);
    db_table(n, Reshape::None);
    const Workload &w = workload(n);
    Cursor c(n);
    uint64_t stamp = 0;
    for (auto _ : state) db_put(table_row(w.probeOrder[c.next()], ++stamp));
    state.SetItemsProcessed(state.iterations());
}

// The same replace on one write object kept open: the object's own cost
// is the difference.
void DbReplaceKeptObject(benchmark::State &state) {
    const uint32_t n = size_of(state);
    db_table(n, Reshape::None);
    const Workload &w = workload(n);
    Cursor c(n);
    uint64_t stamp = 0;
    const DB_HANDLE h = db_open(DB_OPEN_WRITE);
    for (auto _ : state) {
        const Row r = table_row(w.probeOrder[c.next()], ++stamp);
        must(db_set_inet_sess_all_fields(h, r.data(), kRowLen), "db_set_inet_sess_all_fields");
        must(db_write_obj(h), "db_write_obj");
    }
    db_close(h);
    state.SetItemsProcessed(state.iterations());
}

void DbInsertRemove(benchmark::State &state) {
    const uint32_t n = size_of(state);
    db_table(n, Reshape::InsertRemove);
    const Workload &w = workload(n);
    Cursor c(n);
    for (auto _ : state) {
        const Row r = extra_row(n, w.probeOrder[c.next()]);
        db_put(r);
        db_remove(r.data());
    }
    state.SetItemsProcessed(state.iterations());
}

void DbRead(benchmark::State &state) {
    const uint32_t n = size_of(state);
    db_table(n, Reshape::None);
    const Workload &w = workload(n);
    Cursor c(n);
    Row buf;
    for (auto _ : state) {
        const DB_HANDLE h = db_open(DB_OPEN_READ);
        must(db_read_obj_with_buf(h, &kPrimary, w.probeKeys[c.next()].data(), buf.data(), kRowLen),
             "db_read_obj_with_buf");
        db_close(h);
        benchmark::DoNotOptimize(buf);
    }
    state.SetItemsProcessed(state.iterations());
}

void DbReadKeptObject(benchmark::State &state) {
    const uint32_t n = size_of(state);
    db_table(n, Reshape::None);
    const Workload &w = workload(n);
    Cursor c(n);
    Row buf;
    const DB_HANDLE h = db_open(DB_OPEN_READ);
    for (auto _ : state) {
        must(db_read_obj_with_buf(h, &kPrimary, w.probeKeys[c.next()].data(), buf.data(), kRowLen),
             "db_read_obj_with_buf");
        benchmark::DoNotOptimize(buf);
    }
    db_close(h);
    state.SetItemsProcessed(state.iterations());
}

void DbRemoveReinsert(benchmark::State &state) {
    const uint32_t n = size_of(state);
    db_table(n, Reshape::RemoveReinsert);
    const Workload &w = workload(n);
    Cursor c(n);
    for (auto _ : state) {
        const Row r = table_row(w.probeOrder[c.next()]);
        db_remove(r.data());
        db_put(r);
    }
    state.SetItemsProcessed(state.iterations());
}

// Steps a walk to its end, copying out every row; answers the rows seen.
uint64_t db_drain(DB_HANDLE obj, DB_HANDLE iter, Row &buf) {
    uint64_t rows = 0;
    uint32_t s;
    while ((s = db_root_iterator_next(iter)) == 0) {
        must(db_read_obj_with_buf(obj, nullptr, nullptr, buf.data(), kRowLen), "db_read_obj_with_buf");
        benchmark::DoNotOptimize(buf);
        ++rows;
    }
    if (s != DB_RET_ITER_END) fail("db_root_iterator_next", s);
    return rows;
}

void DbWalkAll(benchmark::State &state) {
    const uint32_t n = size_of(state);
    db_table(n, Reshape::None);
    Row buf;
    const DB_HANDLE h = db_open(DB_OPEN_SCAN);
    for (auto _ : state) {
        DB_HANDLE it = 0;
        must(db_create_root_iter(h, nullptr, nullptr, &it), "db_create_root_iter");
        if (db_drain(h, it, buf) != n) fail("whole-table walk", 0);
    }
    db_close(h);
    state.SetItemsProcessed(state.iterations() * n);
}

void DbWalkPid(benchmark::State &state) {
    const uint32_t n = size_of(state);
    db_table(n, Reshape::None);
    const Workload &w = workload(n);
    Cursor c(n);
    Row buf;
    const DB_HANDLE h = db_open(DB_OPEN_SCAN);
    for (auto _ : state) {
        const auto key = pid_key(w.probeOrder[c.next()] / kPidRows);
        DB_HANDLE it = 0;
        must(db_create_root_iter(h, &kByPid, key.data(), &it), "db_create_root_iter");
        if (db_drain(h, it, buf) != kPidRows) fail("hPid walk", 0);
    }
    db_close(h);
    state.SetItemsProcessed(state.iterations());
}

// Is there a row with this index-1 key: open the walk and take one step.
void db_presence(benchmark::State &state, uint16_t srcPort, Reshape by) {
    const uint32_t n = size_of(state);
    db_table(n, by);
    const auto key = tuple_key(srcPort);
    const DB_HANDLE h = db_open(DB_OPEN_SCAN);
    db_test_counting(1);  // the entries a query examines are part of what is shown
    const uint64_t examined = db_test_rows_examined("inet_sess");
    for (auto _ : state) {
        DB_HANDLE it = 0;
        must(db_create_root_iter(h, &kByTuple, key.data(), &it), "db_create_root_iter");
        must(db_root_iterator_next(it), "db_root_iterator_next");
    }
    db_test_counting(0);
    db_close(h);
    state.SetItemsProcessed(state.iterations());
    state.counters["examined"] = benchmark::Counter(
        static_cast<double>(db_test_rows_examined("inet_sess") - examined), benchmark::Counter::kAvgIterations);
}

void DbPresenceLoneKey(benchmark::State &state) { db_presence(state, kLonePort, Reshape::None); }
void DbPresenceSharedKey(benchmark::State &state) { db_presence(state, kSharedPort, Reshape::None); }
void DbPresenceSharedKeyChurned(benchmark::State &state) { db_presence(state, kSharedPort, Reshape::Churn); }

void DbCountByPid(benchmark::State &state) {
    const uint32_t n = size_of(state);
    db_table(n, Reshape::None);
    const Workload &w = workload(n);
    Cursor c(n);
    const DB_HANDLE h = db_open(DB_OPEN_COUNT);
    for (auto _ : state) {
        const auto key = pid_key(w.probeOrder[c.next()] / kPidRows);
        uint64_t count = 0;
        must(db_get_table_record_count_by_key(h, &kByPid, key.data(), &count), "db_get_table_record_count_by_key");
        if (count != kPidRows) fail("count by hPid", 0);
    }
    db_close(h);
    state.SetItemsProcessed(state.iterations());
}

// ---------------------------------------------------------------- bare maps

struct KeyHash {
    size_t operator()(const Key &k) const noexcept { return odb::hash_bytes(k.data(), k.size()); }
};

using StdMap = std::unordered_map<Key, Row, KeyHash>;
#ifdef NIMBET_BENCH_ABSL
using AbslMap = absl::flat_hash_map<Key, Row>;
#endif

// Rows in a vector whose slots never move, as in the store's row pool;
// freed slots are reused.
class RowSlots {
public:
    uint32_t add(const Row &r) {
        if (free_.empty()) {
            rows_.push_back(r);
            live_.push_back(1);
            return static_cast<uint32_t>(rows_.size() - 1);
        }
        const uint32_t slot = free_.back();
        free_.pop_back();
        rows_[slot] = r;
        live_[slot] = 1;
        return slot;
    }

    void release(uint32_t slot) {
        live_[slot] = 0;
        free_.push_back(slot);
    }

    Row &at(uint32_t slot) { return rows_[slot]; }
    const Row &at(uint32_t slot) const { return rows_[slot]; }

    template <class F>
    void for_each(F &&f) const {
        for (size_t i = 0; i < rows_.size(); ++i)
            if (live_[i]) f(rows_[i]);
    }

private:
    std::vector<Row> rows_;
    std::vector<uint8_t> live_;
    std::vector<uint32_t> free_;
};

// The engine's index on its own: ids are row slots, and the key is
// compared in place in the row, as the store does.
class FlatRows {
public:
    const Row *find(const Key &k) const {
        const uint32_t id = locate(odb::hash_bytes(k.data(), kKeyLen), k);
        return id == odb::FlatIndex::kEmpty ? nullptr : &rows_.at(id);
    }

    void insert_or_assign(const Key &k, const Row &r) {
        const uint64_t hash = odb::hash_bytes(k.data(), kKeyLen);
        const uint32_t id = locate(hash, k);
        if (id != odb::FlatIndex::kEmpty) {
            rows_.at(id) = r;
            return;
        }
        const uint32_t slot = rows_.add(r);
        index_.reserve_for(slot);
        index_.insert(slot, hash);
    }

    void erase(const Key &k) {
        const uint32_t id = locate(odb::hash_bytes(k.data(), kKeyLen), k);
        if (id == odb::FlatIndex::kEmpty) return;
        index_.erase(id);
        rows_.release(id);
    }

    template <class F>
    void for_each(F &&f) const {
        rows_.for_each(f);
    }

private:
    uint32_t locate(uint64_t hash, const Key &k) const {
        uint64_t probes = 0;
        return index_.find(
            hash, [&](uint32_t id) { return std::memcmp(rows_.at(id).data(), k.data(), kKeyLen) == 0; }, probes);
    }

    odb::FlatIndex index_;
    RowSlots rows_;
};

// A general map from key to row slot, over the same row vector: the
// alternative to FlatIndex that keeps rows where they are.
template <class Index>
class SlotRows {
public:
    const Row *find(const Key &k) const {
        const auto it = index_.find(k);
        return it == index_.end() ? nullptr : &rows_.at(it->second);
    }

    void insert_or_assign(const Key &k, const Row &r) {
        const auto [it, fresh] = index_.try_emplace(k, 0u);
        if (fresh)
            it->second = rows_.add(r);
        else
            rows_.at(it->second) = r;
    }

    void erase(const Key &k) {
        const auto it = index_.find(k);
        if (it == index_.end()) return;
        rows_.release(it->second);
        index_.erase(it);
    }

    template <class F>
    void for_each(F &&f) const {
        rows_.for_each(f);
    }

private:
    Index index_;
    RowSlots rows_;
};

#ifdef NIMBET_BENCH_ABSL
using AbslSlotRows = SlotRows<absl::flat_hash_map<Key, uint32_t>>;
#endif

template <class M>
const Row *lookup(const M &m, const Key &k) {
    const auto it = m.find(k);
    return it == m.end() ? nullptr : &it->second;
}
const Row *lookup(const FlatRows &m, const Key &k) { return m.find(k); }
template <class I>
const Row *lookup(const SlotRows<I> &m, const Key &k) {
    return m.find(k);
}

template <class M, class F>
void for_each_row(const M &m, F &&f) {
    for (const auto &kv : m) f(kv.second);
}
template <class F>
void for_each_row(const FlatRows &m, F &&f) {
    m.for_each(f);
}
template <class I, class F>
void for_each_row(const SlotRows<I> &m, F &&f) {
    m.for_each(f);
}

// One map per type and size, filled in the table's load order.
template <class M>
M &bare(uint32_t n) {
    static std::map<uint32_t, std::unique_ptr<M>> cache;
    auto &m = cache[n];
    if (!m) {
        m = std::make_unique<M>();
        for (uint32_t i : workload(n).loadOrder) {
            const Row r = table_row(i);
            m->insert_or_assign(key_of(r), r);
        }
    }
    return *m;
}

template <class M>
void MapReplace(benchmark::State &state) {
    const uint32_t n = size_of(state);
    M &m = bare<M>(n);
    const Workload &w = workload(n);
    Cursor c(n);
    uint64_t stamp = 0;
    for (auto _ : state) {
        const Row r = table_row(w.probeOrder[c.next()], ++stamp);
        m.insert_or_assign(key_of(r), r);
    }
    state.SetItemsProcessed(state.iterations());
}

template <class M>
void MapInsertRemove(benchmark::State &state) {
    const uint32_t n = size_of(state);
    M &m = bare<M>(n);
    const Workload &w = workload(n);
    Cursor c(n);
    for (auto _ : state) {
        const Row r = extra_row(n, w.probeOrder[c.next()]);
        const Key k = key_of(r);
        m.insert_or_assign(k, r);
        m.erase(k);
    }
    state.SetItemsProcessed(state.iterations());
}

template <class M>
void MapRead(benchmark::State &state) {
    const uint32_t n = size_of(state);
    const M &m = bare<M>(n);
    const Workload &w = workload(n);
    Cursor c(n);
    Row buf;
    for (auto _ : state) {
        const Row *r = lookup(m, w.probeKeys[c.next()]);
        if (r == nullptr) fail("bare map find", 0);
        std::memcpy(buf.data(), r->data(), kRowLen);
        benchmark::DoNotOptimize(buf);
    }
    state.SetItemsProcessed(state.iterations());
}

template <class M>
void MapRemoveReinsert(benchmark::State &state) {
    const uint32_t n = size_of(state);
    M &m = bare<M>(n);
    const Workload &w = workload(n);
    Cursor c(n);
    for (auto _ : state) {
        const Row r = table_row(w.probeOrder[c.next()]);
        const Key k = key_of(r);
        m.erase(k);
        m.insert_or_assign(k, r);
    }
    state.SetItemsProcessed(state.iterations());
}

template <class M>
void MapWalkAll(benchmark::State &state) {
    const uint32_t n = size_of(state);
    const M &m = bare<M>(n);
    Row buf;
    for (auto _ : state) {
        uint64_t rows = 0;
        for_each_row(m, [&](const Row &r) {
            std::memcpy(buf.data(), r.data(), kRowLen);
            benchmark::DoNotOptimize(buf);
            ++rows;
        });
        if (rows != n) fail("bare map walk", 0);
    }
    state.SetItemsProcessed(state.iterations() * n);
}

// The keyed walk without the database: hPid -> slots of its rows, the rows
// in a vector in load order, so that a group is as scattered as in the table.
template <class PidMap>
struct PidRows {
    std::vector<Row> rows;
    PidMap groups;
};

template <class PidMap>
const PidRows<PidMap> &pid_rows(uint32_t n) {
    static std::map<uint32_t, std::unique_ptr<PidRows<PidMap>>> cache;
    auto &p = cache[n];
    if (!p) {
        p = std::make_unique<PidRows<PidMap>>();
        p->rows.reserve(n);
        for (uint32_t i : workload(n).loadOrder) {
            p->groups[i / kPidRows].push_back(static_cast<uint32_t>(p->rows.size()));
            p->rows.push_back(table_row(i));
        }
    }
    return *p;
}

template <class PidMap>
void MapWalkPid(benchmark::State &state) {
    const uint32_t n = size_of(state);
    const PidRows<PidMap> &p = pid_rows<PidMap>(n);
    const Workload &w = workload(n);
    Cursor c(n);
    Row buf;
    for (auto _ : state) {
        const auto it = p.groups.find(w.probeOrder[c.next()] / kPidRows);
        if (it == p.groups.end() || it->second.size() != kPidRows) fail("bare hPid walk", 0);
        for (uint32_t slot : it->second) {
            std::memcpy(buf.data(), p.rows[slot].data(), kRowLen);
            benchmark::DoNotOptimize(buf);
        }
    }
    state.SetItemsProcessed(state.iterations());
}

using StdPidMap = std::unordered_map<uint32_t, std::vector<uint32_t>>;
#ifdef NIMBET_BENCH_ABSL
using AbslPidMap = absl::flat_hash_map<uint32_t, std::vector<uint32_t>>;
#endif

}  // namespace

#define ODB_BENCH(fn, name) BENCHMARK(fn)->Name(name)->Arg(1000)->Arg(1000000)
#define MAP_BENCH(fn, map, name) BENCHMARK_TEMPLATE(fn, map)->Name(name)->Arg(1000)->Arg(1000000)

ODB_BENCH(DbReplace, "db/replace");
ODB_BENCH(DbReplaceKeptObject, "db/replace_kept_object");
ODB_BENCH(DbInsertRemove, "db/insert_remove");
ODB_BENCH(DbRead, "db/read");
ODB_BENCH(DbReadKeptObject, "db/read_kept_object");
ODB_BENCH(DbRemoveReinsert, "db/remove_reinsert");
ODB_BENCH(DbWalkAll, "db/walk_all");
ODB_BENCH(DbWalkPid, "db/walk_pid10");
ODB_BENCH(DbPresenceLoneKey, "db/presence_1row");
ODB_BENCH(DbPresenceSharedKey, "db/presence_allrows");
ODB_BENCH(DbCountByPid, "db/count_by_key");
ODB_BENCH(DbPresenceSharedKeyChurned, "db/presence_allrows_churned");

#ifdef NIMBET_BENCH_ABSL
MAP_BENCH(MapReplace, AbslMap, "absl/replace");
MAP_BENCH(MapInsertRemove, AbslMap, "absl/insert_remove");
MAP_BENCH(MapRead, AbslMap, "absl/read");
MAP_BENCH(MapRemoveReinsert, AbslMap, "absl/remove_reinsert");
MAP_BENCH(MapWalkAll, AbslMap, "absl/walk_all");
MAP_BENCH(MapWalkPid, AbslPidMap, "absl/walk_pid10");

MAP_BENCH(MapReplace, AbslSlotRows, "absl_slot/replace");
MAP_BENCH(MapInsertRemove, AbslSlotRows, "absl_slot/insert_remove");
MAP_BENCH(MapRead, AbslSlotRows, "absl_slot/read");
MAP_BENCH(MapRemoveReinsert, AbslSlotRows, "absl_slot/remove_reinsert");
MAP_BENCH(MapWalkAll, AbslSlotRows, "absl_slot/walk_all");
#endif

MAP_BENCH(MapReplace, StdMap, "std/replace");
MAP_BENCH(MapInsertRemove, StdMap, "std/insert_remove");
MAP_BENCH(MapRead, StdMap, "std/read");
MAP_BENCH(MapRemoveReinsert, StdMap, "std/remove_reinsert");
MAP_BENCH(MapWalkAll, StdMap, "std/walk_all");
MAP_BENCH(MapWalkPid, StdPidMap, "std/walk_pid10");

MAP_BENCH(MapReplace, FlatRows, "flat/replace");
MAP_BENCH(MapInsertRemove, FlatRows, "flat/insert_remove");
MAP_BENCH(MapRead, FlatRows, "flat/read");
MAP_BENCH(MapRemoveReinsert, FlatRows, "flat/remove_reinsert");
MAP_BENCH(MapWalkAll, FlatRows, "flat/walk_all");

BENCHMARK_MAIN();
