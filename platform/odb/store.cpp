// The in-memory object store: tables of fixed-length rows with a primary
// hash index, secondary indexes, child lists, objects and walks.
//
// Layout of a table: rows live in one pool (slot * rowLen), with a meta
// record per slot (liveness, generation, positions in the walk lists).
// The primary index maps key bytes to a slot; each secondary index maps its
// key bytes to a bucket, and a bucket is a walk list. A walk list holds
// (sequence, slot) entries in ascending sequence; removal leaves a dead
// entry that compaction squeezes out once dead entries outnumber live ones.
// A walk remembers the last sequence it delivered, so it finds its place
// again after compaction by binary search, never delivers an entry twice,
// and never delivers a removed row. The whole table is one more walk list.
#include <algorithm>
#include <atomic>
#include <cstring>
#include <deque>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <vector>

#include "db_nimbet.h"
#include "db_nimbet_test.h"
#include "flat_index.h"
#include "schema.h"
#include "store.h"

namespace odb {
namespace {

constexpr uint32_t kDead = 0xFFFFFFFFu;
constexpr unsigned kMaxTables = 32;
constexpr unsigned kNoTable = kMaxTables;  // call counts of invalid handles

// ---------------------------------------------------------------- hooks

struct Rule {
    DB_TEST_OP op;
    int table;  // -1: any
    int field;  // -1: any; items are numbered from kItemBase
    uint32_t nth, times, status;
    uint64_t seen;
};
constexpr int kItemBase = 1000;

// Counting (calls, rows examined) starts with the first use of a test
// hook, so a host that never uses them pays one relaxed load per call.
struct Hooks {
    std::mutex mu;
    std::vector<Rule> rules;
    std::atomic<bool> any{false};
    std::atomic<bool> counting{false};
    std::atomic<uint64_t> calls[DB_OP_NUM][kMaxTables + 1] = {};
    std::atomic<uint32_t> allocCountdown{0};
};

Hooks &hooks() {
    static Hooks h;
    return h;
}

// Counts the call and answers an injected status (0: perform the call).
uint32_t hook(DB_TEST_OP op, unsigned table, int field = -1) {
    Hooks &h = hooks();
    if (h.counting.load(std::memory_order_relaxed))
        h.calls[op][table < kMaxTables ? table : kNoTable].fetch_add(1, std::memory_order_relaxed);
    if (!h.any.load(std::memory_order_acquire)) return 0;
    std::lock_guard<std::mutex> lock(h.mu);
    for (Rule &r : h.rules) {
        if (r.op != op) continue;
        if (r.table >= 0 && static_cast<unsigned>(r.table) != table) continue;
        if (r.field >= 0 && r.field != field) continue;
        const uint64_t n = ++r.seen;
        if (n >= r.nth && n < static_cast<uint64_t>(r.nth) + r.times) return r.status;
    }
    return 0;
}

// Every place that allocates calls this first, so a test can fail it.
void alloc_point() {
    std::atomic<uint32_t> &c = hooks().allocCountdown;
    uint32_t v = c.load(std::memory_order_relaxed);
    while (v != 0) {
        if (c.compare_exchange_weak(v, v - 1, std::memory_order_relaxed)) {
            if (v == 1) throw std::bad_alloc();
            return;
        }
    }
}

// ---------------------------------------------------------------- tables

struct Entry {
    uint64_t seq;
    uint32_t slot;  // kDead once the row left the list
};

struct WalkList {
    std::vector<Entry> e;
    uint32_t head = 0;  // entries before it are all dead: walks start here
    uint32_t live = 0;
    uint64_t epoch = 0;  // changes whenever positions change (compaction, new list)
    uint64_t birth = 0;  // 0: free bucket
    uint8_t key[kMaxKeyLen] = {};
};

struct RowMeta {
    uint32_t pos[1 + kMaxIndexes] = {};  // position in the table list, then per index
    uint32_t bucket[kMaxIndexes] = {};
};

struct Index {
    FlatIndex map;  // key bytes -> bucket
    std::vector<WalkList> buckets;
    std::vector<uint32_t> freeBuckets;
};

struct Table {
    const TableDesc *d = nullptr;
    unsigned id = 0;
    mutable std::shared_mutex mu;
    std::vector<uint8_t> pool;
    std::vector<RowMeta> meta;
    std::vector<std::vector<uint8_t>> lists;
    std::vector<uint32_t> freeSlots;  // capacity kept >= meta.size(): pushing never allocates
    FlatIndex primary;
    WalkList all;
    Index idx[kMaxIndexes];
    uint64_t seq = 0;
    uint64_t epochs = 1;
    uint64_t rows = 0;
    std::atomic<uint64_t> examined{0};

    // Each row is preceded by an 8-byte header holding its generation and
    // liveness, so a read that finds the row by key touches no other array.
    uint32_t stride = 0;
    uint8_t *row(uint32_t slot) { return pool.data() + static_cast<size_t>(slot) * stride + 8; }
    const uint8_t *row(uint32_t slot) const { return pool.data() + static_cast<size_t>(slot) * stride + 8; }
    uint32_t state(uint32_t slot) const {
        uint32_t v;
        std::memcpy(&v, row(slot) - 8, 4);
        return v;
    }
    void set_state(uint32_t slot, uint32_t v) { std::memcpy(row(slot) - 8, &v, 4); }
    // state: generation << 1 | live
    bool live(uint32_t slot) const { return (state(slot) & 1u) != 0; }
    uint32_t gen(uint32_t slot) const { return state(slot) >> 1; }
    void count(uint64_t n) const {
        if (hooks().counting.load(std::memory_order_relaxed))
            const_cast<std::atomic<uint64_t> &>(examined).fetch_add(n, std::memory_order_relaxed);
    }
};

Table *tables() {
    static Table *t = [] {
        Table *all = new Table[kTableCount];
        for (unsigned i = 0; i < kTableCount; ++i) {
            all[i].d = &kTables[i];
            all[i].id = i;
            all[i].stride = kTables[i].rowLen + 8u;
            all[i].all.birth = 1;
        }
        return all;
    }();
    return t;
}

void extract_key(const uint8_t *row, const KeyDesc &k, uint8_t *out) {
    for (unsigned i = 0; i < k.ncomps; ++i) {
        const KeyComp &c = k.comps[i];
        if (c.offset < 0) {
            *out++ = c.constant;
        } else {
            std::memcpy(out, row + c.offset, c.len);
            out += c.len;
        }
    }
}

bool row_key_equals(const uint8_t *row, const KeyDesc &k, const uint8_t *key) {
    for (unsigned i = 0; i < k.ncomps; ++i) {
        const KeyComp &c = k.comps[i];
        if (c.offset < 0) {
            if (*key != c.constant) return false;
        } else if (std::memcmp(row + c.offset, key, c.len) != 0) {
            return false;
        }
        key += c.len;
    }
    return true;
}

uint32_t find_row(const Table &t, const uint8_t *key) {
    uint64_t probes = 0;
    const uint32_t slot = t.primary.find(
        hash_bytes(key, t.d->primary.length),
        [&](uint32_t s) { return row_key_equals(t.row(s), t.d->primary, key); }, probes);
    t.count(probes);
    return slot;
}

uint32_t find_bucket(const Table &t, unsigned ix, const uint8_t *key) {
    const uint16_t len = t.d->indexes[ix].length;
    const Index &index = t.idx[ix];
    uint64_t probes = 0;
    const uint32_t b = index.map.find(
        hash_bytes(key, len), [&](uint32_t id) { return std::memcmp(index.buckets[id].key, key, len) == 0; },
        probes);
    t.count(probes);
    return b;
}

// Position k of a row: 0 is the table list, 1 + i index i.
void list_remove(Table &t, WalkList &l, uint32_t pos, unsigned k) {
    l.e[pos].slot = kDead;
    --l.live;
    // Oldest-first removal is the common case: keep walks from stepping
    // over the dead prefix.
    if (pos == l.head)
        while (l.head < l.e.size() && l.e[l.head].slot == kDead) ++l.head;
    const size_t n = l.e.size();
    if (n >= 32 && (n - l.live) * 2 > n) {
        size_t w = 0;
        for (size_t r = 0; r < n; ++r) {
            if (l.e[r].slot == kDead) continue;
            l.e[w] = l.e[r];
            t.meta[l.e[w].slot].pos[k] = static_cast<uint32_t>(w);
            ++w;
        }
        l.e.resize(w);
        l.head = 0;
        l.epoch = ++t.epochs;
    }
}

void list_append(Table &t, WalkList &l, uint32_t slot, unsigned k) noexcept {
    t.meta[slot].pos[k] = static_cast<uint32_t>(l.e.size());
    l.e.push_back(Entry{++t.seq, slot});  // capacity reserved beforehand
    ++l.live;
}

// Bucket for the index key, created if needed. Throws before changing anything.
uint32_t prepare_bucket(Table &t, unsigned ix, const uint8_t *key) {
    Index &index = t.idx[ix];
    uint32_t b = find_bucket(t, ix, key);
    if (b == FlatIndex::kEmpty) {
        alloc_point();
        if (index.freeBuckets.empty()) {
            index.freeBuckets.reserve(index.buckets.size() + 1);
            index.buckets.emplace_back();
            index.freeBuckets.push_back(static_cast<uint32_t>(index.buckets.size() - 1));
        }
        b = index.freeBuckets.back();
        index.map.reserve_for(b);
        WalkList &l = index.buckets[b];
        l.e.reserve(4);
        index.freeBuckets.pop_back();
        std::memcpy(l.key, key, t.d->indexes[ix].length);
        l.birth = l.epoch = ++t.epochs;
        l.live = 0;
        index.map.insert(b, hash_bytes(key, t.d->indexes[ix].length));
    }
    WalkList &l = index.buckets[b];
    l.e.reserve(l.e.size() + 1 > l.e.capacity() ? l.e.capacity() * 2 : l.e.capacity());
    return b;
}

void drop_bucket_if_empty(Table &t, unsigned ix, uint32_t b) {
    Index &index = t.idx[ix];
    WalkList &l = index.buckets[b];
    if (l.live != 0) return;
    index.map.erase(b);
    std::vector<Entry>().swap(l.e);
    l.head = 0;
    l.birth = 0;
    index.freeBuckets.push_back(b);  // capacity reserved when the bucket was made
}

// A prepared row change: every allocation is done, committing cannot fail.
struct Prepared {
    uint8_t keys[kMaxIndexes][kMaxKeyLen];
    uint32_t bucket[kMaxIndexes];
    bool move[kMaxIndexes];
};

void remove_row(Table &t, uint32_t slot) noexcept {
    RowMeta &m = t.meta[slot];
    t.primary.erase(slot);
    list_remove(t, t.all, m.pos[0], 0);
    for (unsigned i = 0; i < t.d->nindexes; ++i) {
        const uint32_t b = m.bucket[i];
        list_remove(t, t.idx[i].buckets[b], m.pos[1 + i], 1 + i);
        drop_bucket_if_empty(t, i, b);
    }
    t.set_state(slot, (t.gen(slot) + 1) << 1);
    if (t.d->list) std::vector<uint8_t>().swap(t.lists[slot]);
    t.freeSlots.push_back(slot);
    --t.rows;
}

// Insert a new row, or replace the row at `slot` (same primary key). A null
// list leaves the child list of a replaced row as it is.
void put_row(Table &t, uint32_t slot, const uint8_t *image, const std::vector<uint8_t> *list) {
    const TableDesc &d = *t.d;
    const bool fresh = slot == FlatIndex::kEmpty;
    alloc_point();
    if (fresh && t.freeSlots.empty()) {
        const size_t n = t.meta.size();
        t.freeSlots.reserve(n + 1 > t.freeSlots.capacity() ? std::max<size_t>(16, (n + 1) * 2) : t.freeSlots.capacity());
        t.pool.resize((n + 1) * t.stride);
        t.meta.emplace_back();
        if (d.list) t.lists.emplace_back();
        t.freeSlots.push_back(static_cast<uint32_t>(n));
    }
    const uint32_t target = fresh ? t.freeSlots.back() : slot;
    if (fresh) {
        t.primary.reserve_for(target);
        if (t.all.e.size() == t.all.e.capacity()) t.all.e.reserve(std::max<size_t>(16, t.all.e.capacity() * 2));
    }
    Prepared p;
    std::fill_n(p.bucket, kMaxIndexes, kDead);
    std::vector<uint8_t> newList;
    try {
        for (unsigned i = 0; i < d.nindexes; ++i) {
            extract_key(image, d.indexes[i], p.keys[i]);
            p.move[i] = fresh || !row_key_equals(t.row(target), d.indexes[i], p.keys[i]);
            if (p.move[i]) p.bucket[i] = prepare_bucket(t, i, p.keys[i]);
        }
        if (d.list && list) newList = *list;
    } catch (...) {
        // Buckets made for this row alone would stay empty in the index.
        for (unsigned i = 0; i < d.nindexes; ++i)
            if (p.bucket[i] != kDead) drop_bucket_if_empty(t, i, p.bucket[i]);
        throw;
    }

    // Commit: nothing below allocates.
    if (fresh) t.freeSlots.pop_back();
    RowMeta &m = t.meta[target];
    for (unsigned i = 0; i < d.nindexes; ++i) {
        if (!p.move[i]) continue;
        if (!fresh) {
            const uint32_t old = m.bucket[i];
            list_remove(t, t.idx[i].buckets[old], m.pos[1 + i], 1 + i);
            drop_bucket_if_empty(t, i, old);
        }
        m.bucket[i] = p.bucket[i];
        list_append(t, t.idx[i].buckets[p.bucket[i]], target, 1 + i);
    }
    std::memcpy(t.row(target), image, d.rowLen);
    if (d.list && list) t.lists[target].swap(newList);  // an update keeps the row's child list
    if (fresh) {
        uint8_t key[kMaxKeyLen];
        extract_key(image, d.primary, key);
        t.primary.insert(target, hash_bytes(key, d.primary.length));
        list_append(t, t.all, target, 0);
        t.set_state(target, t.state(target) | 1u);
        ++t.rows;
    }
}

// ---------------------------------------------------------------- objects

enum class Kind : uint32_t { Object = 1, Child = 2, Iter = 3 };

struct Walk {
    enum Mode : uint8_t { Whole, Primary, Index } mode = Whole;
    uint8_t ix = 0;
    bool ended = false;
    bool primaryDone = false;
    uint8_t key[kMaxKeyLen] = {};
    uint64_t lastSeq = 0;
    uint64_t epoch = 0;  // epoch of the list when pos was taken
    uint64_t birth = 0;  // identity of the bucket
    uint32_t bucket = kDead;
    uint32_t pos = 0;
};

struct Object {
    uint32_t slot = 0xFFFFFFFFu;  // handle registry slot, kept while cached
    unsigned table;
    uint32_t mode;
    uint32_t handle = 0;
    std::vector<uint8_t> pend;      // write/update: the row being built
    std::vector<uint8_t> mask;      // update: bytes set
    std::vector<uint8_t> pendList;  // write: the child list being built
    bool childOpen = false;
    int64_t childCur = -1;
    std::vector<uint8_t> entry;     // copy of the current child entry
    bool holds = false;
    uint32_t curSlot = 0, curGen = 0;
    bool snapValid = false;
    std::vector<uint8_t> snapRow, snapList;
    bool iterOpen = false;
    Walk walk;
};

// Handles: kind (2 bits) | generation (12 bits) | slot (18 bits). A freed
// slot goes to the back of a queue and is reused only once 1024 slots
// exist, so one slot's generation wraps only after millions of objects.
constexpr unsigned kSlotBits = 18, kGenBits = 12;
constexpr uint32_t kSlotMask = (1u << kSlotBits) - 1, kGenMask = (1u << kGenBits) - 1;
constexpr uint32_t kLiveBit = 0x80000000u;
constexpr unsigned kChunk = 4096, kChunks = (1u << kSlotBits) / kChunk;

struct HandleEntry {
    std::atomic<uint32_t> gen{0};
    std::atomic<Object *> obj{nullptr};
};

class Registry {
public:
    static constexpr uint32_t kNoSlot = 0xFFFFFFFFu;

    // A new handle for o. An object from the per-thread cache keeps the slot
    // it had, under a new generation, and needs no lock.
    uint32_t add(Object *o) {
        if (o->slot == kNoSlot) o->slot = take_slot();
        HandleEntry &e = entry(o->slot);
        const uint32_t gen = ((e.gen.load(std::memory_order_relaxed) & kGenMask) + 1) & kGenMask;
        e.obj.store(o, std::memory_order_relaxed);
        e.gen.store(gen | kLiveBit, std::memory_order_release);
        return (static_cast<uint32_t>(Kind::Object) << 30) | (gen << kSlotBits) | o->slot;
    }

    // Ends the handle of o; its slot stays with o until give_back().
    void retire(const Object *o) {
        HandleEntry &e = entry(o->slot);
        e.obj.store(nullptr, std::memory_order_relaxed);
        e.gen.store(e.gen.load(std::memory_order_relaxed) & kGenMask, std::memory_order_release);
    }

    uint32_t generation(uint32_t slot) { return entry(slot).gen.load(std::memory_order_relaxed) & kGenMask; }

    void give_back(uint32_t slot) {
        std::lock_guard<std::mutex> lock(mu_);
        free_.push_back(slot);
    }

    // Objects with a live handle (a test hook: it scans the slots).
    uint64_t live() {
        std::lock_guard<std::mutex> lock(mu_);
        uint64_t n = 0;
        for (uint32_t slot = 0; slot < used_; ++slot)
            if (entry(slot).gen.load(std::memory_order_acquire) & kLiveBit) ++n;
        return n;
    }

    Object *find(DB_HANDLE h, Kind kind) const {
        if (h == 0 || h > 0xFFFFFFFFu) return nullptr;
        const uint32_t v = static_cast<uint32_t>(h);
        if ((v >> 30) != static_cast<uint32_t>(kind)) return nullptr;
        const uint32_t slot = v & kSlotMask;
        HandleEntry *c = chunks_[slot / kChunk].load(std::memory_order_acquire);
        if (c == nullptr) return nullptr;
        const HandleEntry &e = c[slot % kChunk];
        if (e.gen.load(std::memory_order_acquire) != (((v >> kSlotBits) & kGenMask) | kLiveBit)) return nullptr;
        return e.obj.load(std::memory_order_relaxed);
    }

private:
    // A free slot goes to the back of a queue and is taken again only once
    // 1024 slots exist, so that its generation moves on slowly.
    uint32_t take_slot() {
        std::lock_guard<std::mutex> lock(mu_);
        if (!free_.empty() && (used_ >= 1024 || used_ == (1u << kSlotBits))) {
            const uint32_t slot = free_.front();
            free_.pop_front();
            return slot;
        }
        if (used_ == (1u << kSlotBits)) throw std::bad_alloc();
        const uint32_t slot = used_;
        if (chunks_[slot / kChunk].load(std::memory_order_relaxed) == nullptr) {
            alloc_point();
            chunks_[slot / kChunk].store(new HandleEntry[kChunk], std::memory_order_release);
        }
        ++used_;
        return slot;
    }

    HandleEntry &entry(uint32_t slot) { return chunks_[slot / kChunk].load(std::memory_order_acquire)[slot % kChunk]; }

    std::mutex mu_;
    std::atomic<HandleEntry *> chunks_[kChunks] = {};
    uint32_t used_ = 0;
    std::deque<uint32_t> free_;
};

Registry &registry() {
    static Registry r;
    return r;
}

// Released objects wait in a small per-thread cache, so that a call's object
// costs neither an allocation nor the vectors' regrowth: one object of each
// mode in turn is the common pattern.
void drop_object(Object *o) noexcept;

struct ObjectCache {
    std::vector<Object *> objects;
    ~ObjectCache() {
        for (Object *o : objects) drop_object(o);
    }
};
// Initial-exec: the library is loaded with its host, and the general
// dynamic model would cost a call per access.
thread_local ObjectCache t_objects __attribute__((tls_model("initial-exec")));
constexpr size_t kCachedObjects = 8;

Object *take_object() {
    std::vector<Object *> &c = t_objects.objects;
    if (c.empty()) return new Object{};
    Object *o = c.back();
    c.pop_back();
    return o;
}

void give_object(Object *o) noexcept {
    std::vector<Object *> &c = t_objects.objects;
    if (c.capacity() == 0) {
        try {
            c.reserve(kCachedObjects);
        } catch (...) {  // no cache then: the object is freed
        }
    }
    if (c.size() >= kCachedObjects || c.size() == c.capacity()) {
        drop_object(o);
        return;
    }
    // A cached object reuses its slot under a new generation; every 64th
    // time the slot goes back to the registry's queue instead, so that one
    // slot's generations still take millions of calls to come round.
    if (o->slot != Registry::kNoSlot && (registry().generation(o->slot) & 63u) == 63u) {
        try {
            registry().give_back(o->slot);
            o->slot = Registry::kNoSlot;
        } catch (...) {  // keep the slot: its generation still moves on
        }
    }
    // Back to the state of a new object; the vectors keep their capacity.
    o->pend.clear();
    o->mask.clear();
    o->pendList.clear();
    o->entry.clear();
    o->snapRow.clear();
    o->snapList.clear();
    o->childOpen = false;
    o->childCur = -1;
    o->holds = false;
    o->snapValid = false;
    o->iterOpen = false;
    o->walk = Walk{};
    c.push_back(o);
}

void drop_object(Object *o) noexcept {
    if (o->slot != Registry::kNoSlot) {
        try {
            registry().give_back(o->slot);
        } catch (...) {  // the slot stays unused; nothing else is lost
        }
    }
    delete o;
}

DB_HANDLE handle_of(const Object &o, Kind kind) {
    return ((o.handle & ~(3u << 30)) | (static_cast<uint32_t>(kind) << 30));
}

template <class F>
uint32_t guarded(F &&f) noexcept {
    try {
        return f();
    } catch (...) {  // std::bad_alloc: the only exception the store raises
        return DB_RET_NO_MEMORY;
    }
}

unsigned table_of(const Object *o) { return o ? o->table : kNoTable; }

// Checks a key descriptor; answers 0 and sets which (-1 primary, else index).
uint32_t check_key(const TableDesc &d, const uint32_t *desc, int &which) {
    const uint32_t w = *desc, len = w & 0xFFFFu, high = w >> 16;
    if (high == 1) {
        if (len != d.primary.length) return DB_RET_BAD_KEY;
        which = -1;
        return 0;
    }
    if ((high & 0xFFu) != 0x09u) return DB_RET_BAD_KEY;
    const unsigned num = high >> 8;
    for (unsigned i = 0; i < d.nindexes; ++i) {
        if (d.indexes[i].number == num) {
            if (len != d.indexes[i].length) return DB_RET_BAD_KEY;
            which = static_cast<int>(i);
            return 0;
        }
    }
    return DB_RET_BAD_KEY;
}

void hold(Object &o, const Table &t, uint32_t slot) {
    o.holds = true;
    o.curSlot = slot;
    o.curGen = t.gen(slot);
    o.snapValid = false;
    o.childCur = -1;
}

// The held row, copied into the object for getters and child reads.
uint32_t ensure_snapshot(Object &o) {
    if (!o.holds) return DB_RET_NO_ROW;
    if (o.snapValid) return 0;
    const Table &t = tables()[o.table];
    std::shared_lock<std::shared_mutex> lock(t.mu);
    if (!t.live(o.curSlot) || t.gen(o.curSlot) != o.curGen) return DB_RET_NO_RECORD;
    o.snapRow.assign(t.row(o.curSlot), t.row(o.curSlot) + t.d->rowLen);
    if (t.d->list) o.snapList = t.lists[o.curSlot];
    o.snapValid = true;
    return 0;
}

// First live row of the index bucket in walk order.
uint32_t first_in_bucket(const Table &t, unsigned ix, const uint8_t *key) {
    const uint32_t b = find_bucket(t, ix, key);
    if (b == FlatIndex::kEmpty) return kDead;
    const WalkList &l = t.idx[ix].buckets[b];
    uint64_t seen = 0;
    for (size_t i = l.head; i < l.e.size(); ++i) {
        ++seen;
        if (l.e[i].slot != kDead) {
            t.count(seen);
            return l.e[i].slot;
        }
    }
    t.count(seen);
    return kDead;
}

uint32_t find_by_desc(const Table &t, int which, const uint8_t *key) {
    if (which < 0) {
        const uint32_t s = find_row(t, key);
        return s == FlatIndex::kEmpty ? kDead : s;
    }
    return first_in_bucket(t, static_cast<unsigned>(which), key);
}

void store_le(uint8_t *p, uint64_t v, unsigned n) {
    for (unsigned i = 0; i < n; ++i) p[i] = static_cast<uint8_t>(v >> (8 * i));
}
uint64_t load_le(const uint8_t *p, unsigned n) {
    uint64_t v = 0;
    for (unsigned i = 0; i < n; ++i) v |= static_cast<uint64_t>(p[i]) << (8 * i);
    return v;
}

uint32_t step_list(Table &t, Object &o, const WalkList &l) {
    Walk &w = o.walk;
    if (w.epoch != l.epoch) {
        if (w.lastSeq == 0) {
            w.pos = l.head;  // a new walk
        } else {
            const auto it = std::upper_bound(l.e.begin(), l.e.end(), w.lastSeq,
                                             [](uint64_t s, const Entry &e) { return s < e.seq; });
            w.pos = static_cast<uint32_t>(it - l.e.begin());
        }
        w.epoch = l.epoch;
    }
    if (w.pos < l.head) w.pos = l.head;
    uint64_t seen = 0;
    while (w.pos < l.e.size()) {
        const Entry &e = l.e[w.pos++];
        ++seen;
        if (e.slot == kDead) continue;
        w.lastSeq = e.seq;
        t.count(seen);
        hold(o, t, e.slot);
        return 0;
    }
    t.count(seen);
    return DB_RET_ITER_END;
}

uint32_t step(Object &o) {
    Table &t = tables()[o.table];
    Walk &w = o.walk;
    std::shared_lock<std::shared_mutex> lock(t.mu);
    uint32_t s = DB_RET_ITER_END;
    if (w.mode == Walk::Whole) {
        s = step_list(t, o, t.all);
    } else if (w.mode == Walk::Primary) {
        if (!w.primaryDone) {
            w.primaryDone = true;
            const uint32_t slot = find_row(t, w.key);
            if (slot != FlatIndex::kEmpty) {
                hold(o, t, slot);
                s = 0;
            }
        }
    } else {
        const Index &index = t.idx[w.ix];
        if (w.bucket == kDead || w.bucket >= index.buckets.size() || index.buckets[w.bucket].birth != w.birth) {
            w.bucket = find_bucket(t, w.ix, w.key);
            if (w.bucket != FlatIndex::kEmpty) {
                w.birth = index.buckets[w.bucket].birth;
                w.epoch = 0;  // find the place again by sequence
            } else {
                w.bucket = kDead;
            }
        }
        if (w.bucket != kDead) s = step_list(t, o, index.buckets[w.bucket]);
    }
    if (s != 0) {
        w.ended = true;
        o.holds = false;
    }
    return s;
}

const FieldDesc *field_desc(const TableDesc &d, unsigned field, bool item) {
    if (item) return d.list && field < d.list->nitems ? &d.list->items[field] : nullptr;
    return field < d.nfields ? &d.fields[field] : nullptr;
}

int field_code(unsigned field, bool item) { return static_cast<int>(field) + (item ? kItemBase : 0); }

// Where a setter writes: the pending row, or the current pending entry.
uint32_t set_target(unsigned table, unsigned field, bool item, DB_HANDLE h, uint8_t **dst, const FieldDesc **fd,
                    Object **obj) {
    Object *o = registry().find(h, item ? Kind::Child : Kind::Object);
    if (o == nullptr || o->table != table || (item && !o->childOpen)) return DB_RET_BAD_HANDLE;
    const TableDesc &d = *tables()[table].d;
    *fd = field_desc(d, field, item);
    if (item) {
        if (o->mode != DB_OPEN_WRITE) return DB_RET_WRONG_MODE;
        if (o->childCur < 0) return DB_RET_INDEX_RANGE;
        *dst = o->pendList.data() + static_cast<size_t>(o->childCur) * d.list->entrySize + (*fd)->offset;
    } else {
        if (o->mode != DB_OPEN_WRITE && o->mode != DB_OPEN_UPDATE) return DB_RET_WRONG_MODE;
        *dst = o->pend.data() + (*fd)->offset;
        if (o->mode == DB_OPEN_UPDATE) std::fill_n(o->mask.begin() + (*fd)->offset, (*fd)->size, uint8_t{1});
    }
    *obj = o;
    return 0;
}

// Where a getter reads: the held row, or the current entry of its list.
uint32_t get_source(unsigned table, unsigned field, bool item, DB_HANDLE h, const uint8_t **src,
                    const FieldDesc **fd) {
    Object *o = registry().find(h, item ? Kind::Child : Kind::Object);
    if (o == nullptr || o->table != table || (item && !o->childOpen)) return DB_RET_BAD_HANDLE;
    if (o->mode != DB_OPEN_READ && o->mode != DB_OPEN_SCAN) return DB_RET_WRONG_MODE;
    *fd = field_desc(*tables()[table].d, field, item);
    if (item) {
        if (o->childCur < 0) return DB_RET_INDEX_RANGE;
        *src = o->entry.data() + (*fd)->offset;
        return 0;
    }
    const uint32_t s = ensure_snapshot(*o);
    if (s != 0) return s;
    *src = o->snapRow.data() + (*fd)->offset;
    return 0;
}

Object *object_for(DB_HANDLE h, Kind kind) { return registry().find(h, kind); }

}  // namespace

// ---------------------------------------------------------------- accessors

uint32_t api_create(unsigned table, uint32_t mode, uint32_t reserved, DB_HANDLE *obj) {
    return guarded([&]() -> uint32_t {
        if (const uint32_t inj = hook(DB_OP_CREATE_OBJ, table)) return inj;
        if (obj == nullptr || reserved != 0) return DB_RET_BAD_ARG;
        switch (mode) {
            case DB_OPEN_WRITE: case DB_OPEN_UPDATE: case DB_OPEN_READ:
            case DB_OPEN_REMOVE: case DB_OPEN_SCAN: case DB_OPEN_COUNT: break;
            default: return DB_RET_WRONG_MODE;
        }
        alloc_point();
        const TableDesc &d = *tables()[table].d;
        Object *o = take_object();
        o->table = table;
        o->mode = mode;
        try {
            if (mode == DB_OPEN_WRITE || mode == DB_OPEN_UPDATE) o->pend.assign(d.rowLen, 0);
            if (mode == DB_OPEN_UPDATE) o->mask.assign(d.rowLen, 0);
            if (d.list) o->entry.assign(d.list->entrySize, 0);
            o->handle = registry().add(o);
        } catch (...) {
            give_object(o);
            throw;
        }
        *obj = o->handle;
        return 0;
    });
}

uint32_t api_release(unsigned table, DB_HANDLE h) {
    return guarded([&]() -> uint32_t {
        Object *o = object_for(h, Kind::Object);
        const uint32_t inj = hook(DB_OP_RELEASE_OBJ, o ? o->table : kNoTable);
        if (o == nullptr || o->table != table) return inj ? inj : DB_RET_BAD_HANDLE;
        registry().retire(o);
        give_object(o);
        return inj;
    });
}

uint32_t api_set_all(unsigned table, DB_HANDLE h, const void *image, uint32_t len) {
    return guarded([&]() -> uint32_t {
        Object *o = object_for(h, Kind::Object);
        if (const uint32_t inj = hook(DB_OP_SET_ALL_FIELDS, table_of(o))) return inj;
        if (o == nullptr || o->table != table) return DB_RET_BAD_HANDLE;
        if (o->mode != DB_OPEN_WRITE && o->mode != DB_OPEN_UPDATE) return DB_RET_WRONG_MODE;
        if (image == nullptr) return DB_RET_BAD_ARG;
        if (len != o->pend.size()) return DB_RET_BAD_LENGTH;
        std::memcpy(o->pend.data(), image, len);
        if (o->mode == DB_OPEN_UPDATE) std::fill(o->mask.begin(), o->mask.end(), uint8_t{1});
        return 0;
    });
}

uint32_t api_set_field(unsigned table, unsigned field, bool item, DB_HANDLE h, uint64_t value) {
    return guarded([&]() -> uint32_t {
        Object *o = object_for(h, item ? Kind::Child : Kind::Object);
        if (const uint32_t inj = hook(DB_OP_SET_FIELD, table_of(o), field_code(field, item))) return inj;
        uint8_t *dst;
        const FieldDesc *fd;
        if (const uint32_t s = set_target(table, field, item, h, &dst, &fd, &o)) return s;
        if (fd->type == FieldType::U8W && value > 0xFFu) return DB_RET_BAD_ARG;
        store_le(dst, value, fd->size);
        return 0;
    });
}

uint32_t api_get_field(unsigned table, unsigned field, bool item, DB_HANDLE h, bool outOk, uint64_t *value) {
    return guarded([&]() -> uint32_t {
        Object *o = object_for(h, item ? Kind::Child : Kind::Object);
        if (const uint32_t inj = hook(DB_OP_GET_FIELD, table_of(o), field_code(field, item))) return inj;
        const uint8_t *src;
        const FieldDesc *fd;
        if (const uint32_t s = get_source(table, field, item, h, &src, &fd)) return s;
        if (!outOk) return DB_RET_BAD_ARG;
        *value = load_le(src, fd->size);
        return 0;
    });
}

uint32_t api_set_bytes(unsigned table, unsigned field, bool item, DB_HANDLE h, const uint8_t *value, uint32_t len) {
    return guarded([&]() -> uint32_t {
        Object *o = object_for(h, item ? Kind::Child : Kind::Object);
        if (const uint32_t inj = hook(DB_OP_SET_FIELD, table_of(o), field_code(field, item))) return inj;
        uint8_t *dst;
        const FieldDesc *fd;
        if (const uint32_t s = set_target(table, field, item, h, &dst, &fd, &o)) return s;
        if (value == nullptr) return DB_RET_BAD_ARG;
        if (len != fd->size) return DB_RET_BAD_LENGTH;
        std::memcpy(dst, value, len);
        return 0;
    });
}

uint32_t api_get_bytes(unsigned table, unsigned field, bool item, DB_HANDLE h, uint8_t **value, uint32_t *len) {
    return guarded([&]() -> uint32_t {
        Object *o = object_for(h, item ? Kind::Child : Kind::Object);
        if (const uint32_t inj = hook(DB_OP_GET_FIELD, table_of(o), field_code(field, item))) return inj;
        const uint8_t *src;
        const FieldDesc *fd;
        if (const uint32_t s = get_source(table, field, item, h, &src, &fd)) return s;
        if (value == nullptr || len == nullptr) return DB_RET_BAD_ARG;
        *value = const_cast<uint8_t *>(src);
        *len = fd->size;
        return 0;
    });
}

}  // namespace odb

using odb::Kind;
using odb::Object;

namespace {

// Resolves an object handle for a generic operation and counts the call.
struct Call {
    Object *o;
    uint32_t status;  // nonzero: answer this without performing the call
};

Call begin(DB_HANDLE h, DB_TEST_OP op, Kind kind, uint32_t mode) {
    Object *o = odb::object_for(h, kind);
    if (const uint32_t inj = odb::hook(op, odb::table_of(o))) return {nullptr, inj};
    if (o == nullptr || (kind == Kind::Child && !o->childOpen)) return {nullptr, DB_RET_BAD_HANDLE};
    if (kind == Kind::Iter && !o->iterOpen) return {nullptr, DB_RET_BAD_HANDLE};
    if (mode != 0xFFFFFFFFu && o->mode != mode) return {nullptr, DB_RET_WRONG_MODE};
    return {o, 0};
}
constexpr uint32_t kAnyMode = 0xFFFFFFFFu;

odb::Table &table_for(const Object *o) { return odb::tables()[o->table]; }

// Both descriptor and key present, and the descriptor valid for the table.
uint32_t keyed(const Object *o, const uint32_t *desc, const void *key, int &which) {
    if (desc == nullptr || key == nullptr) return DB_RET_BAD_ARG;
    return odb::check_key(*table_for(o).d, desc, which);
}

}  // namespace

extern "C" {

DB_NIMBET_API uint32_t db_write_obj(DB_HANDLE obj) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(obj, DB_OP_WRITE, Kind::Object, DB_OPEN_WRITE);
        if (c.status) return c.status;
        odb::Table &t = table_for(c.o);
        uint8_t key[odb::kMaxKeyLen];
        odb::extract_key(c.o->pend.data(), t.d->primary, key);
        std::unique_lock<std::shared_mutex> lock(t.mu);
        odb::put_row(t, odb::find_row(t, key), c.o->pend.data(), &c.o->pendList);
        return 0;
    });
}

DB_NIMBET_API uint32_t db_update_obj(DB_HANDLE obj, const uint32_t *keyDesc, const void *key) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(obj, DB_OP_UPDATE, Kind::Object, DB_OPEN_UPDATE);
        if (c.status) return c.status;
        int which;
        if (const uint32_t s = keyed(c.o, keyDesc, key, which)) return s;
        if (which >= 0) return DB_RET_BAD_KEY;  // rows are updated by primary key only
        odb::Table &t = table_for(c.o);
        const auto *k = static_cast<const uint8_t *>(key);
        std::unique_lock<std::shared_mutex> lock(t.mu);
        const uint32_t slot = odb::find_row(t, k);
        if (slot == odb::FlatIndex::kEmpty) return DB_RET_NO_RECORD;
        std::vector<uint8_t> image(t.row(slot), t.row(slot) + t.d->rowLen);
        for (size_t i = 0; i < image.size(); ++i)
            if (c.o->mask[i]) image[i] = c.o->pend[i];
        uint8_t newKey[odb::kMaxKeyLen];
        odb::extract_key(image.data(), t.d->primary, newKey);
        if (std::memcmp(newKey, k, t.d->primary.length) == 0) {
            odb::put_row(t, slot, image.data(), nullptr);
            return 0;
        }
        // The update moves the row to another key: it must not land on a row.
        if (odb::find_row(t, newKey) != odb::FlatIndex::kEmpty) return DB_RET_KEY_EXISTS;
        std::vector<uint8_t> list = t.d->list ? t.lists[slot] : std::vector<uint8_t>();
        odb::put_row(t, odb::FlatIndex::kEmpty, image.data(), &list);
        odb::remove_row(t, slot);
        return 0;
    });
}

DB_NIMBET_API uint32_t db_read_obj(DB_HANDLE obj, const uint32_t *keyDesc, const void *key) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(obj, DB_OP_READ, Kind::Object, DB_OPEN_READ);
        if (c.status) return c.status;
        int which;
        if (const uint32_t s = keyed(c.o, keyDesc, key, which)) return s;
        odb::Table &t = table_for(c.o);
        std::shared_lock<std::shared_mutex> lock(t.mu);
        const uint32_t slot = odb::find_by_desc(t, which, static_cast<const uint8_t *>(key));
        if (slot == odb::kDead) {
            c.o->holds = false;
            return DB_RET_NO_RECORD;
        }
        // Load the row now, so the getters see it as it was read.
        c.o->snapRow.assign(t.row(slot), t.row(slot) + t.d->rowLen);
        if (t.d->list) c.o->snapList = t.lists[slot];
        odb::hold(*c.o, t, slot);
        c.o->snapValid = true;
        return 0;
    });
}

DB_NIMBET_API uint32_t db_read_obj_with_buf(DB_HANDLE obj, const uint32_t *keyDesc, const void *key, void *buf,
                                            uint32_t len) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(obj, DB_OP_READ_WITH_BUF, Kind::Object, kAnyMode);
        if (c.status) return c.status;
        odb::Table &t = table_for(c.o);
        if (buf == nullptr) return DB_RET_BAD_ARG;
        if (len != t.d->rowLen) return DB_RET_BAD_LENGTH;
        if (keyDesc == nullptr && key == nullptr) {
            // The row the object stands on, as it is now.
            if (c.o->mode != DB_OPEN_READ && c.o->mode != DB_OPEN_SCAN) return DB_RET_WRONG_MODE;
            if (!c.o->holds) return DB_RET_NO_ROW;
            std::shared_lock<std::shared_mutex> lock(t.mu);
            if (!t.live(c.o->curSlot) || t.gen(c.o->curSlot) != c.o->curGen) return DB_RET_NO_RECORD;
            std::memcpy(buf, t.row(c.o->curSlot), len);
            return 0;
        }
        if (c.o->mode != DB_OPEN_READ) return DB_RET_WRONG_MODE;
        int which;
        if (const uint32_t s = keyed(c.o, keyDesc, key, which)) return s;
        std::shared_lock<std::shared_mutex> lock(t.mu);
        const uint32_t slot = odb::find_by_desc(t, which, static_cast<const uint8_t *>(key));
        if (slot == odb::kDead) {
            c.o->holds = false;
            return DB_RET_NO_RECORD;
        }
        std::memcpy(buf, t.row(slot), len);
        odb::hold(*c.o, t, slot);
        return 0;
    });
}

DB_NIMBET_API uint32_t db_remove_obj(DB_HANDLE obj, const uint32_t *keyDesc, const void *key) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(obj, DB_OP_REMOVE, Kind::Object, DB_OPEN_REMOVE);
        if (c.status) return c.status;
        int which;
        if (const uint32_t s = keyed(c.o, keyDesc, key, which)) return s;
        if (which >= 0) return DB_RET_BAD_KEY;  // rows are removed by primary key only
        odb::Table &t = table_for(c.o);
        std::unique_lock<std::shared_mutex> lock(t.mu);
        const uint32_t slot = odb::find_row(t, static_cast<const uint8_t *>(key));
        if (slot == odb::FlatIndex::kEmpty) return DB_RET_TOLERATED;
        odb::remove_row(t, slot);
        return 0;
    });
}

DB_NIMBET_API uint32_t db_create_root_iter(DB_HANDLE obj, const uint32_t *keyDesc, const void *key,
                                           DB_HANDLE *iter) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(obj, DB_OP_CREATE_ROOT_ITER, Kind::Object, DB_OPEN_SCAN);
        if (c.status) return c.status;
        if (iter == nullptr) return DB_RET_BAD_ARG;
        odb::Walk w;
        if (keyDesc != nullptr || key != nullptr) {
            int which;
            if (const uint32_t s = keyed(c.o, keyDesc, key, which)) return s;
            const odb::TableDesc &d = *table_for(c.o).d;
            if (which < 0) {
                w.mode = odb::Walk::Primary;
                std::memcpy(w.key, key, d.primary.length);
            } else {
                w.mode = odb::Walk::Index;
                w.ix = static_cast<uint8_t>(which);
                std::memcpy(w.key, key, d.indexes[which].length);
            }
        }
        c.o->walk = w;
        c.o->iterOpen = true;
        c.o->holds = false;
        *iter = odb::handle_of(*c.o, Kind::Iter);
        return 0;
    });
}

DB_NIMBET_API uint32_t db_root_iterator_next(DB_HANDLE iter) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(iter, DB_OP_ITER_NEXT, Kind::Iter, kAnyMode);
        if (c.status) return c.status;
        if (c.o->walk.ended) return DB_RET_ITER_END;
        return odb::step(*c.o);
    });
}

DB_NIMBET_API uint32_t db_create_child_node(DB_HANDLE obj, uint32_t r1, const char *listName, uint32_t r2,
                                            uint32_t r3, DB_HANDLE *child) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(obj, DB_OP_CREATE_CHILD, Kind::Object, kAnyMode);
        if (c.status) return c.status;
        if (listName == nullptr || child == nullptr || r1 != 0 || r2 != 0 || r3 != 0) return DB_RET_BAD_ARG;
        const odb::TableDesc &d = *table_for(c.o).d;
        if (d.list == nullptr || std::strcmp(listName, d.list->name) != 0) return DB_RET_UNKNOWN;
        if (c.o->mode == DB_OPEN_READ || c.o->mode == DB_OPEN_SCAN) {
            if (const uint32_t s = odb::ensure_snapshot(*c.o)) return s;
        } else if (c.o->mode != DB_OPEN_WRITE) {
            return DB_RET_WRONG_MODE;
        }
        c.o->childOpen = true;
        c.o->childCur = -1;
        *child = odb::handle_of(*c.o, Kind::Child);
        return 0;
    });
}

namespace {
const std::vector<uint8_t> *child_list(Object &o, uint32_t &status) {
    if (o.mode == DB_OPEN_WRITE) return &o.pendList;
    status = odb::ensure_snapshot(o);
    return status ? nullptr : &o.snapList;
}
}  // namespace

DB_NIMBET_API uint32_t db_child_count(DB_HANDLE child, uint32_t *count) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(child, DB_OP_CHILD_COUNT, Kind::Child, kAnyMode);
        if (c.status) return c.status;
        if (count == nullptr) return DB_RET_BAD_ARG;
        uint32_t s = 0;
        const std::vector<uint8_t> *l = child_list(*c.o, s);
        if (l == nullptr) return s;
        *count = static_cast<uint32_t>(l->size() / table_for(c.o).d->list->entrySize);
        return 0;
    });
}

DB_NIMBET_API uint32_t db_child_get(DB_HANDLE child, uint32_t index) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(child, DB_OP_CHILD_GET, Kind::Child, kAnyMode);
        if (c.status) return c.status;
        uint32_t s = 0;
        const std::vector<uint8_t> *l = child_list(*c.o, s);
        if (l == nullptr) return s;
        const size_t es = table_for(c.o).d->list->entrySize;
        if (index >= l->size() / es) return DB_RET_INDEX_RANGE;
        std::memcpy(c.o->entry.data(), l->data() + index * es, es);
        c.o->childCur = index;
        return 0;
    });
}

DB_NIMBET_API uint32_t db_child_push_back(DB_HANDLE child) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(child, DB_OP_CHILD_PUSH_BACK, Kind::Child, DB_OPEN_WRITE);
        if (c.status) return c.status;
        odb::alloc_point();
        const size_t es = table_for(c.o).d->list->entrySize;
        c.o->pendList.resize(c.o->pendList.size() + es, 0);
        c.o->childCur = static_cast<int64_t>(c.o->pendList.size() / es - 1);
        return 0;
    });
}

DB_NIMBET_API uint32_t db_get_table_record_count(DB_HANDLE obj, uint64_t *count) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(obj, DB_OP_COUNT, Kind::Object, DB_OPEN_COUNT);
        if (c.status) return c.status;
        if (count == nullptr) return DB_RET_BAD_ARG;
        const odb::Table &t = table_for(c.o);
        std::shared_lock<std::shared_mutex> lock(t.mu);
        *count = t.rows;
        return 0;
    });
}

DB_NIMBET_API uint32_t db_get_table_record_count_by_key(DB_HANDLE obj, const uint32_t *keyDesc, const void *key,
                                                        uint64_t *count) {
    return odb::guarded([&]() -> uint32_t {
        const Call c = begin(obj, DB_OP_COUNT_BY_KEY, Kind::Object, DB_OPEN_COUNT);
        if (c.status) return c.status;
        if (count == nullptr) return DB_RET_BAD_ARG;
        int which;
        if (const uint32_t s = keyed(c.o, keyDesc, key, which)) return s;
        const odb::Table &t = table_for(c.o);
        const auto *k = static_cast<const uint8_t *>(key);
        std::shared_lock<std::shared_mutex> lock(t.mu);
        if (which < 0) {
            *count = odb::find_row(t, k) == odb::FlatIndex::kEmpty ? 0 : 1;
        } else {
            const uint32_t b = odb::find_bucket(t, static_cast<unsigned>(which), k);
            *count = b == odb::FlatIndex::kEmpty ? 0 : t.idx[which].buckets[b].live;
        }
        return 0;
    });
}

// ---------------------------------------------------------------- test hooks

namespace {
int table_index(const char *name) {
    if (name == nullptr) return -1;
    for (unsigned i = 0; i < odb::kTableCount; ++i)
        if (std::strcmp(odb::kTables[i].name, name) == 0) return static_cast<int>(i);
    return -2;
}
}  // namespace

DB_NIMBET_API uint32_t db_test_inject(DB_TEST_OP op, const char *table, const char *field, uint32_t nth,
                                      uint32_t times, uint32_t status) {
    odb::hooks().counting.store(true, std::memory_order_relaxed);
    if (op < 0 || op >= DB_OP_NUM || nth == 0 || times == 0) return DB_RET_BAD_ARG;
    const int ti = table_index(table);
    if (ti == -2) return DB_RET_UNKNOWN;
    int fi = -1;
    if (field != nullptr) {
        if (ti < 0) return DB_RET_UNKNOWN;
        const odb::TableDesc &d = odb::kTables[ti];
        for (unsigned i = 0; i < d.nfields && fi < 0; ++i)
            if (std::strcmp(d.fields[i].name, field) == 0) fi = static_cast<int>(i);
        for (unsigned i = 0; d.list && i < d.list->nitems && fi < 0; ++i)
            if (std::strcmp(d.list->items[i].name, field) == 0) fi = odb::kItemBase + static_cast<int>(i);
        if (fi < 0) return DB_RET_UNKNOWN;
    }
    return odb::guarded([&]() -> uint32_t {
        odb::Hooks &h = odb::hooks();
        std::lock_guard<std::mutex> lock(h.mu);
        h.rules.push_back(odb::Rule{op, ti, fi, nth, times, status, 0});
        h.any.store(true, std::memory_order_release);
        return 0;
    });
}

DB_NIMBET_API void db_test_clear_injections(void) {
    odb::Hooks &h = odb::hooks();
    std::lock_guard<std::mutex> lock(h.mu);
    h.rules.clear();
    h.any.store(false, std::memory_order_release);
}

DB_NIMBET_API uint64_t db_test_call_count(DB_TEST_OP op, const char *table) {
    if (op < 0 || op >= DB_OP_NUM) return 0;
    const int ti = table_index(table);
    if (ti == -2) return 0;
    odb::Hooks &h = odb::hooks();
    if (ti >= 0) return h.calls[op][ti].load(std::memory_order_relaxed);
    uint64_t sum = 0;
    for (auto &c : h.calls[op]) sum += c.load(std::memory_order_relaxed);
    return sum;
}

DB_NIMBET_API uint64_t db_test_rows_examined(const char *table) {
    const int ti = table_index(table);
    if (ti == -2) return 0;
    uint64_t sum = 0;
    for (unsigned i = 0; i < odb::kTableCount; ++i)
        if (ti < 0 || static_cast<unsigned>(ti) == i) sum += odb::tables()[i].examined.load(std::memory_order_relaxed);
    return sum;
}

DB_NIMBET_API uint64_t db_test_live_objects(void) {
    odb::hooks().counting.store(true, std::memory_order_relaxed);
    return odb::registry().live();
}

DB_NIMBET_API void db_test_fail_nth_alloc(uint32_t nth) {
    odb::hooks().allocCountdown.store(nth, std::memory_order_relaxed);
}

DB_NIMBET_API void db_test_counting(int on) {
    odb::hooks().counting.store(on != 0, std::memory_order_relaxed);
}

DB_NIMBET_API void db_test_reset_counts(void) {
    odb::Hooks &h = odb::hooks();
    h.counting.store(true, std::memory_order_relaxed);
    for (auto &row : h.calls)
        for (auto &c : row) c.store(0, std::memory_order_relaxed);
    for (unsigned i = 0; i < odb::kTableCount; ++i) odb::tables()[i].examined.store(0, std::memory_order_relaxed);
}

DB_NIMBET_API void db_test_reset(void) {
    db_test_clear_injections();
    db_test_fail_nth_alloc(0);
    for (unsigned i = 0; i < odb::kTableCount; ++i) {
        odb::Table &t = odb::tables()[i];
        std::unique_lock<std::shared_mutex> lock(t.mu);
        for (uint32_t s = 0; s < t.meta.size(); ++s)
            if (t.live(s)) odb::remove_row(t, s);
    }
    db_test_reset_counts();
}

DB_NIMBET_API uint64_t db_test_row_count(const char *table) {
    const int ti = table_index(table);
    if (ti < 0) return 0;
    const odb::Table &t = odb::tables()[ti];
    std::shared_lock<std::shared_mutex> lock(t.mu);
    return t.rows;
}

}  // extern "C"
