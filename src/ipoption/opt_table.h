// The IP option tables (per interface and global): row-image tables with
// the same read, write, delete and walk steps and the same counter slots of
// g_nimbetIpOptionCnt. A table supplies its image layout, key and messages
// through a traits type.
#pragma once

#include <cstdint>

#include "../foundation/internal.h"
#include "../foundation/rowbytes.h"
#include "../foundation/walk.h"

namespace nimbet::ipoption {

// Traits members:
//   Entry, Key, rowLen, keyLen, keyDesc, stat
//   create, release, set_all           database functions
//   set_image(rec, image), get_image(image, rec)   the table's copies
//   key_of(rec) -> Key; put_key(key, bytes)
//   log_key(format, status, key)        a message with the key fields
//   msgReadNull, msgReadOpen, msgReadFail, msgDeleteOpen, msgRemove, msgNext
template <class T>
struct OptTable {
    using Entry = typename T::Entry;
    using Key = typename T::Key;

    static uint32_t write(const Entry *rec) {
        uint8_t image[T::rowLen] = {};
        if (rec == nullptr) return NIMBET_DB_ERR;
        DB_HANDLE h = 0;
        if (T::create(DB_OPEN_WRITE, 0, &h) != 0) return NIMBET_DB_ERR;
        bump(g_nimbetIpOptionCnt, IP_OPTION_CNT_WRITE_OPEN);
        T::set_image(rec, image);
        uint32_t s = T::set_all(h, image, T::rowLen);
        if (s != 0) {
            T::release(h);
            bump(g_nimbetIpOptionCnt, IP_OPTION_CNT_WRITE_RELEASE);
            return s;
        }
        s = db_write_obj(h);
        T::release(h);
        bump(g_nimbetIpOptionCnt, IP_OPTION_CNT_WRITE_RELEASE);
        if (tolerated_ok(s, T::stat)) return NIMBET_DB_OK;
        NIMBET_DB_RecordErrStat(T::stat, DB_ERR_WRITE);
        return NIMBET_DB_ERR;
    }

    static uint32_t read(Entry *rec) {
        uint8_t image[T::rowLen] = {};
        if (rec == nullptr) {
            log_err(T::msgReadNull);
            return NIMBET_DB_ERR;
        }
        const Key k = T::key_of(*rec);
        uint8_t key[T::keyLen];
        T::put_key(k, key);
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_READ, 0, &h);
        if (s != 0) {
            T::log_key(T::msgReadOpen, s, k);
            return NIMBET_DB_ERR;
        }
        bump(g_nimbetIpOptionCnt, IP_OPTION_CNT_READ_OPEN);
        s = db_read_obj_with_buf(h, &T::keyDesc, key, image, T::rowLen);
        uint32_t result = NIMBET_DB_ERR;
        if (s == 0) {
            T::get_image(image, rec);
            result = NIMBET_DB_OK;
        } else if (s != DB_RET_NO_RECORD) {
            T::log_key(T::msgReadFail, s, k);
            NIMBET_DB_RecordErrStat(T::stat, DB_ERR_READ);
        }
        T::release(h);
        bump(g_nimbetIpOptionCnt, IP_OPTION_CNT_READ_RELEASE);
        return result;
    }

    static uint32_t remove(const Key *keyIn) {
        if (keyIn == nullptr) {
            log_err("[ip opt]nimbet db deleteentryoption entry is QEX_NULL, para is NULL");
            return NIMBET_DB_ERR;
        }
        const Key k = *keyIn;
        uint8_t key[T::keyLen];
        T::put_key(k, key);
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_REMOVE, 0, &h);
        if (s != 0) {
            T::log_key(T::msgDeleteOpen, s, k);
            return NIMBET_DB_ERR;
        }
        bump(g_nimbetIpOptionCnt, IP_OPTION_CNT_REMOVE_OPEN);
        s = db_remove_obj(h, &T::keyDesc, key);
        T::release(h);
        bump(g_nimbetIpOptionCnt, IP_OPTION_CNT_REMOVE_RELEASE);
        if (tolerated_ok(s, T::stat)) return NIMBET_DB_OK;
        T::log_key(T::msgRemove, s, k);
        NIMBET_DB_RecordErrStat(T::stat, DB_ERR_REMOVE);
        return NIMBET_DB_ERR;
    }

    // One message serves a failed step and a failed row read.
    static constexpr Walk walk = {T::create, T::release, T::stat, nullptr, T::msgNext, T::msgNext,
                                  g_nimbetIpOptionCnt, IP_OPTION_CNT_ITER_CREATE, IP_OPTION_CNT_ITER_RELEASE};

    static uint32_t next(NIMBET_DB_ITER_INFO *it, Entry *rec) {
        return walk_next_image<T::rowLen>(walk, it, rec, T::get_image);
    }
};

}  // namespace nimbet::ipoption
