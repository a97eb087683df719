// Whole-row read, write and remove of the interface address tables. Both
// tables (IPv4 and IPv6) are keyed by the 4-byte ifIndex and run the same
// steps; a table supplies its accessors, fill/store and messages through a
// traits type, and its departures are fields of that type.
#pragma once

#include <cstdint>

#include "../foundation/internal.h"
#include "../foundation/rowbytes.h"

namespace nimbet::ifaddr {

constexpr uint32_t kIfIndexKeyDesc = 0x00010004u;

// Traits members:
//   Entry                              caller record type
//   create(mode, 0, &h), release(h)    the table's database functions
//   fill(h, rec), store(h, rec)        field-by-field conversion
//   stat                               statistics row
//   maxAddresses                       capacity of Entry::addresses
//   msgOpen, msgRead, msgStore         messages of the failure paths
//   msgWrite                           message of a failed db_write_obj, or null
template <class T>
struct AddrTable {
    using Entry = typename T::Entry;

    static uint32_t read(Entry *rec) {
        if (rec == nullptr) return NIMBET_DB_ERR;
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_READ, 0, &h);
        if (s != 0) {
            log_err(T::msgOpen, s);
            return NIMBET_DB_ERR;
        }
        uint8_t key[4];
        put_le32(key, rec->ifIndex);
        s = db_read_obj(h, &kIfIndexKeyDesc, key);
        uint32_t result = NIMBET_DB_ERR;
        if (s == 0) {
            // A fill failure shows only through the fill's own message.
            (void)T::fill(h, rec);
            result = NIMBET_DB_OK;
        } else if (s != DB_RET_NO_RECORD) {
            log_err(T::msgRead, s);
            NIMBET_DB_RecordErrStat(T::stat, DB_ERR_READ);
        }
        T::release(h);
        return result;
    }

    static uint32_t write(const Entry *rec) {
        if (rec == nullptr || rec->addressCount > T::maxAddresses) return NIMBET_DB_ERR;
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_WRITE, 0, &h);
        if (s != 0) {
            log_err(T::msgOpen, s);
            return NIMBET_DB_ERR;
        }
        s = T::store(h, rec);
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

    static uint32_t remove(const uint32_t *ifIndex) {
        if (ifIndex == nullptr) return NIMBET_DB_ERR;
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_REMOVE, 0, &h);
        if (s != 0) {
            log_err(T::msgOpen, s);
            return NIMBET_DB_ERR;
        }
        uint8_t key[4];
        put_le32(key, *ifIndex);
        s = db_remove_obj(h, &kIfIndexKeyDesc, key);
        T::release(h);
        if (tolerated_ok(s, T::stat)) return NIMBET_DB_OK;
        log_err("Remove l3if db fail, ret = %u.", s);
        NIMBET_DB_RecordErrStat(T::stat, DB_ERR_REMOVE);
        return NIMBET_DB_ERR;
    }
};

}  // namespace nimbet::ifaddr
