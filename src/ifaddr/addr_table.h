// The interface address tables (IPv4 and IPv6): one row per interface,
// keyed by the 4-byte ifIndex, with a child list of addresses. Both run the
// same steps; a table supplies its accessors, list entry conversion and
// messages through a traits type, and every departure of one table from the
// other is a named field of that type.
#pragma once

#include <algorithm>
#include <cstdint>

#include "../foundation/image_table.h"
#include "../foundation/walk.h"

namespace nimbet::ifaddr {

constexpr uint32_t kIfIndexKeyDesc = 0x00010004u;

// The five header fields of both tables, through table-named accessors.
#define NIMBET_ADDR_HEADER_ACCESSORS(table)                                          \
    static uint32_t get_header(DB_HANDLE h, Entry *r) {                              \
        uint32_t s = db_get_##table##_ifIndex(h, &r->ifIndex);                       \
        s |= db_get_##table##_vrfIndex(h, &r->vrfIndex);                             \
        s |= db_get_##table##_app_serial_id(h, &r->app_serial_id);                   \
        s |= db_get_##table##_status_normal_prio(h, &r->status_normal_prio);         \
        s |= db_get_##table##_errcode_normal_prio(h, &r->errcode_normal_prio);       \
        return s;                                                                    \
    }                                                                                \
    static uint32_t set_header(DB_HANDLE h, const Entry *r) {                        \
        uint32_t s = db_set_##table##_ifIndex(h, r->ifIndex);                        \
        s |= db_set_##table##_vrfIndex(h, r->vrfIndex);                              \
        s |= db_set_##table##_app_serial_id(h, r->app_serial_id);                    \
        s |= db_set_##table##_status_normal_prio(h, r->status_normal_prio);          \
        s |= db_set_##table##_errcode_normal_prio(h, r->errcode_normal_prio);        \
        return s;                                                                    \
    }                                                                                \
    static constexpr auto create = db_create_##table##_obj;                          \
    static constexpr auto release = db_release_##table##_object;                     \
    static constexpr auto set_stamp = db_set_##table##_time_stamp_create;

// Traits members beyond the header accessors:
//   Entry, Item, listName, maxAddresses, stat
//   get_item(child, Item&) / set_item(child, const Item&): all list fields,
//       each call made whatever the others answer; statuses ORed
//   passStatus        the fill answers database statuses instead of 1
//   countFailGoesOn   a failed list count is logged and the fill goes on
//   msgGetHeader, msgCount, msgGetItem          fill messages
//   msgSetHeader, msgChildNode, msgPushBack, msgSetItem   store messages
//                     (msgChildNode/msgPushBack null: answer 1 silently)
//   msgOpen, msgRead, msgStore, msgWrite, msgCountRead   row operations
//                     (msgWrite null: a failed write is counted only)
//   msgNext, msgIterCreate   walk messages (msgNext null: counted only)
template <class T>
struct AddrTable {
    using Entry = typename T::Entry;

    static uint32_t fill(DB_HANDLE h, Entry *rec) {
        if (rec == nullptr) return NIMBET_DB_ERR;
        uint32_t s = T::get_header(h, rec);
        if (s != 0) {
            log_err(T::msgGetHeader);
            return fail(s);
        }
        DB_HANDLE child = 0;
        s = db_create_child_node(h, 0, T::listName, 0, 0, &child);
        if (s != 0) return fail(s);
        uint32_t n = 0;
        const uint32_t countStatus = db_child_count(child, &n);
        if (countStatus != 0) {
            log_err(T::msgCount, countStatus);
            if (!T::countFailGoesOn) return countStatus;
        }
        // A longer list can only come from another writer: keep what fits.
        rec->addressCount = n = std::min<uint32_t>(n, T::maxAddresses);
        if (n == 0) return countStatus;
        for (uint32_t i = 0; i < n; ++i) {
            s = db_child_get(child, i);
            if (s != 0) return fail(s);
            s = T::get_item(child, rec->addresses[i]);
            if (s != 0) {
                log_err(T::msgGetItem);
                return fail(s);
            }
        }
        return NIMBET_DB_OK;
    }

    static uint32_t store(DB_HANDLE h, const Entry *rec) {
        if (rec == nullptr || rec->addressCount > T::maxAddresses) return NIMBET_DB_ERR;
        uint32_t s = T::set_header(h, rec);
        if (s != 0) {
            log_err(T::msgSetHeader);
            return s;
        }
        DB_HANDLE child = 0;
        s = db_create_child_node(h, 0, T::listName, 0, 0, &child);
        if (s != 0) return store_fail(T::msgChildNode, s);
        for (uint32_t i = 0; i < rec->addressCount; ++i) {
            s = db_child_push_back(child);
            if (s != 0) return store_fail(T::msgPushBack, s);
            if (T::set_item(child, rec->addresses[i]) != 0) {
                log_err(T::msgSetItem);
                return NIMBET_DB_ERR;
            }
        }
        return T::set_stamp(h, NIMBET_DB_GetSysTime());
    }

    static uint32_t read(Entry *rec) {
        if (rec == nullptr) return NIMBET_DB_ERR;
        return read_row(rec->ifIndex, [rec](DB_HANDLE h) {
            // A fill failure shows only through the fill's own message.
            (void)fill(h, rec);
            return NIMBET_DB_OK;
        }, T::msgRead);
    }

    static uint32_t count(uint32_t ifIndex, uint32_t *out) {
        if (out == nullptr) return NIMBET_DB_ERR;
        return read_row(ifIndex, [out](DB_HANDLE h) { return count_list(h, out); }, T::msgCountRead);
    }

    static uint32_t count_list(DB_HANDLE h, uint32_t *out) {
        if (out == nullptr) return NIMBET_DB_ERR;
        DB_HANDLE child = 0;
        uint32_t s = db_create_child_node(h, 0, T::listName, 0, 0, &child);
        if (s != 0) return s;
        uint32_t n = 0;
        s = db_child_count(child, &n);
        if (s == 0) *out = n;
        return s;
    }

    static uint32_t write(const Entry *rec) {
        if (rec == nullptr || rec->addressCount > T::maxAddresses) return NIMBET_DB_ERR;
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_WRITE, 0, &h);
        if (s != 0) {
            log_err(T::msgOpen, s);
            return NIMBET_DB_ERR;
        }
        s = store(h, rec);
        if (s != 0) {
            log_err(T::msgStore, s);
            T::release(h);
            return s;
        }
        s = db_write_obj(h);
        T::release(h);
        if (tolerated_ok(s, T::stat)) return NIMBET_DB_OK;
        if (T::msgWrite != nullptr) log_err(T::msgWrite, s);
        NIMBET_DB_RecordErrStat(T::stat, DB_ERR_WRITE);
        return NIMBET_DB_ERR;
    }

    // The remove is the common row remove, keyed by the ifIndex alone.
    static uint32_t remove(const uint32_t *ifIndex) { return ImageTable<ByIfIndex>::remove(ifIndex); }

    static constexpr Walk walk = {T::create, T::release, T::stat, T::msgIterCreate, T::msgNext, nullptr,
                                  nullptr, 0, 0};

    static uint32_t next(NIMBET_DB_ITER_INFO *it, Entry *rec) { return walk_next_fill(walk, it, rec, fill); }

private:
    struct ByIfIndex : ImageTableDefaults {
        using Entry = typename T::Entry;
        static constexpr auto create = T::create;
        static constexpr auto release = T::release;
        static constexpr uint32_t keyLen = 4, keyDesc = kIfIndexKeyDesc, stat = T::stat;
        static uint32_t build_key(uint32_t ifIndex, uint8_t *key) {
            put_le32(key, ifIndex);
            return 0;
        }
        static void log(Path p, uint32_t s, uint32_t) {
            if (p == Path::DeleteOpen) log_err(T::msgOpen, s);
            if (p == Path::RemoveFail) log_err("Remove l3if db fail, ret = %u.", s);
        }
    };

    static uint32_t fail(uint32_t s) { return T::passStatus ? s : NIMBET_DB_ERR; }

    static uint32_t store_fail(const char *msg, uint32_t s) {
        if (msg == nullptr) return NIMBET_DB_ERR;
        log_err(msg, s);
        return s;
    }

    // Opens the table for reading, reads the row of ifIndex and hands the
    // object to `found`; a missing row answers 1 silently.
    template <class Found>
    static uint32_t read_row(uint32_t ifIndex, Found found, const char *msgRead) {
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_READ, 0, &h);
        if (s != 0) {
            log_err(T::msgOpen, s);
            return NIMBET_DB_ERR;
        }
        uint8_t key[4];
        put_le32(key, ifIndex);
        s = db_read_obj(h, &kIfIndexKeyDesc, key);
        uint32_t result = NIMBET_DB_ERR;
        if (s == 0) {
            result = found(h);
        } else if (s != DB_RET_NO_RECORD) {
            log_err(msgRead, s);
            NIMBET_DB_RecordErrStat(T::stat, DB_ERR_READ);
        }
        T::release(h);
        return result;
    }
};

}  // namespace nimbet::ifaddr

// The exported entries of an address table: thin named calls into AddrTable.
#define NIMBET_ADDR_ENTRIES(T, Entry, GetItem, SetItem, ReadEntry, WriteEntry, RemoveEntry, CountList, GetIFCount,  \
                            CreateIterator, GetNext, ReleaseIterator)                                               \
    NIMBET_DB_API uint32_t GetItem(DB_HANDLE dbHandle, Entry *entry) { return T::fill(dbHandle, entry); }           \
    NIMBET_DB_API uint32_t SetItem(DB_HANDLE dbHandle, const Entry *entry) { return T::store(dbHandle, entry); }    \
    NIMBET_DB_API uint32_t ReadEntry(Entry *entry) { return T::read(entry); }                                        \
    NIMBET_DB_API uint32_t WriteEntry(const Entry *entry) { return T::write(entry); }                                \
    NIMBET_DB_API uint32_t RemoveEntry(const uint32_t *ifIndex) { return T::remove(ifIndex); }                       \
    NIMBET_DB_API uint32_t CountList(DB_HANDLE dbHandle, uint32_t *count) { return T::count_list(dbHandle, count); } \
    NIMBET_DB_API uint32_t GetIFCount(uint32_t ifIndex, uint32_t *count) { return T::count(ifIndex, count); }        \
    NIMBET_DB_API NIMBET_DB_ITER_INFO *CreateIterator(void) { return nimbet::walk_create(T::walk); }                 \
    NIMBET_DB_API uint32_t GetNext(NIMBET_DB_ITER_INFO *iter, Entry *entry) { return T::next(iter, entry); }         \
    NIMBET_DB_API void ReleaseIterator(NIMBET_DB_ITER_INFO *iter) { nimbet::walk_release(T::walk, iter); }
