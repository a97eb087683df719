// The common steps of the six session tables. A kind supplies a traits
// type (its table functions, row image and key lengths, key descriptor,
// statistics id, iterator slots, conversions, key builder and messages);
// the exported functions of each kind are thin entries over Session<K>.
#pragma once

#include <cstdint>

#include "../foundation/internal.h"
#include "../foundation/rowbytes.h"
#include "../foundation/walk.h"

namespace nimbet::session {

// Paths on which a long message is logged; a kind maps each to its text
// and the record fields it shows.
enum class Path { WriteOpen, WriteFail, ReadMemcpy, ReadOpen, ReadFail, DeleteMemcpy, DeleteOpen, RemoveFail };

// Traits members:
//   Entry, rowLen, keyLen, keyDesc, stat
//   create, release, set_all            the table's database functions
//   fill(rec, image)                    SESSION_Set<Kind>ItemLite
//   get(image, rec)                     row image to record
//   build_key(rec, key) -> uint32_t     key bytes; the sum of the memcpy_s
//                                       results for kinds with byte arrays
//   log(path, status, rec)              the long message of a path
//   msgReadNull, msgDeleteNull          null-record messages, or null: silent
//   msgShortRead, msgNext               read-of-object and step failures
//   hasWalk, slotCreate, slotRelease    iterator slots of g_nimbetSessionCnt
template <class K>
struct Session {
    using Entry = typename K::Entry;

    static uint32_t write(const Entry *rec) {
        uint8_t image[K::rowLen] = {};
        if (rec == nullptr) return NIMBET_DB_ERR;
        DB_HANDLE h = 0;
        uint32_t s = K::create(DB_OPEN_WRITE, 0, &h);
        if (s != 0) {
            K::log(Path::WriteOpen, s, *rec);
            return NIMBET_DB_ERR;
        }
        bump(g_nimbetSessionCnt, kWriteOpen);
        K::fill(rec, image);
        s = K::set_all(h, image, K::rowLen);
        if (s != 0) {
            K::release(h);
            bump(g_nimbetSessionCnt, kWriteRelease);
            return s;
        }
        s = db_write_obj(h);
        K::release(h);
        bump(g_nimbetSessionCnt, kWriteRelease);
        if (tolerated_ok(s, K::stat)) return NIMBET_DB_OK;
        K::log(Path::WriteFail, s, *rec);
        NIMBET_DB_RecordErrStat(K::stat, DB_ERR_WRITE);
        return NIMBET_DB_ERR;
    }

    static uint32_t read(Entry *rec) {
        uint8_t image[K::rowLen] = {};
        if (rec == nullptr) {
            if (K::msgReadNull != nullptr) log_err(K::msgReadNull);
            return NIMBET_DB_ERR;
        }
        uint8_t key[K::keyLen] = {};
        if (const uint32_t sum = K::build_key(*rec, key)) {
            K::log(Path::ReadMemcpy, sum, *rec);
            return NIMBET_DB_ERR;
        }
        DB_HANDLE h = 0;
        uint32_t s = K::create(DB_OPEN_READ, 0, &h);
        if (s != 0) {
            K::log(Path::ReadOpen, s, *rec);
            return NIMBET_DB_ERR;
        }
        bump(g_nimbetSessionCnt, kReadOpen);
        s = db_read_obj_with_buf(h, &K::keyDesc, key, image, K::rowLen);
        uint32_t result = NIMBET_DB_ERR;
        if (s == 0) {
            K::get(image, rec);
            result = NIMBET_DB_OK;
        } else if (s != DB_RET_NO_RECORD) {
            K::log(Path::ReadFail, s, *rec);
            NIMBET_DB_RecordErrStat(K::stat, DB_ERR_READ);
        }
        K::release(h);
        bump(g_nimbetSessionCnt, kReadRelease);
        return result;
    }

    static uint32_t remove(const Entry *rec) {
        if (rec == nullptr) {
            if (K::msgDeleteNull != nullptr) log_err(K::msgDeleteNull);
            return NIMBET_DB_ERR;
        }
        uint8_t key[K::keyLen] = {};
        if (const uint32_t sum = K::build_key(*rec, key)) {
            K::log(Path::DeleteMemcpy, sum, *rec);
            return NIMBET_DB_ERR;
        }
        DB_HANDLE h = 0;
        uint32_t s = K::create(DB_OPEN_REMOVE, 0, &h);
        if (s != 0) {
            K::log(Path::DeleteOpen, s, *rec);
            return NIMBET_DB_ERR;
        }
        bump(g_nimbetSessionCnt, kRemoveOpen);
        s = db_remove_obj(h, &K::keyDesc, key);
        K::release(h);
        bump(g_nimbetSessionCnt, kRemoveRelease);
        if (tolerated_ok(s, K::stat)) return NIMBET_DB_OK;
        K::log(Path::RemoveFail, s, *rec);
        NIMBET_DB_RecordErrStat(K::stat, DB_ERR_REMOVE);
        return NIMBET_DB_ERR;
    }

    // The row an object the caller positioned stands on (the aging walk).
    // The object is neither created nor released here.
    static void by_object(uint32_t obj, Entry *rec) {
        uint8_t image[K::rowLen] = {};
        if (rec == nullptr) return;
        const uint32_t s = db_read_obj_with_buf(obj, nullptr, nullptr, image, K::rowLen);
        if (s == 0) {
            K::get(image, rec);
        } else if (s != DB_RET_NO_RECORD) {
            log_err(K::msgShortRead, s);
            NIMBET_DB_RecordErrStat(K::stat, DB_ERR_READ);
        }
    }

    static constexpr Walk walk = {K::create,  K::release,         K::stat,        nullptr, K::msgNext, K::msgShortRead,
                                  g_nimbetSessionCnt, K::slotCreate, K::slotRelease};

    static NIMBET_DB_ITER_INFO *create_walk() { return walk_create(walk); }
    static uint32_t next(NIMBET_DB_ITER_INFO *it, Entry *rec) {
        return walk_next_image<K::rowLen>(walk, it, rec, K::get);
    }
    static void release_walk(NIMBET_DB_ITER_INFO *it) { walk_release(walk, it); }

    static void copy_key(Entry *dst, const Entry *src) {
        if (dst != nullptr && src != nullptr) K::copy_key(dst, src);
    }
    static void fill(const Entry *rec, uint8_t *image) {
        if (rec != nullptr && image != nullptr) K::fill(rec, image);
    }
    static void get(const uint8_t *image, Entry *rec) {
        if (rec != nullptr && image != nullptr) K::get(image, rec);
    }

private:
    // Slots 0 to 5 of g_nimbetSessionCnt, shared by all kinds.
    static constexpr unsigned kReadOpen = 0, kReadRelease = 1, kWriteOpen = 2, kWriteRelease = 3, kRemoveOpen = 4,
                              kRemoveRelease = 5;
};

// The last 8 bytes of every session row: the time the image was filled.
inline void stamp(uint8_t *image, uint32_t rowLen) { put_le64(image + rowLen - 8, NIMBET_DB_GetSysTime()); }

// Copies a byte array into key bytes with the bounds-checked copy.
template <size_t N>
inline uint32_t copy_checked(uint8_t *dst, const uint8_t (&src)[N]) {
    return static_cast<uint32_t>(memcpy_s(dst, N, src, N));
}

}  // namespace nimbet::session
