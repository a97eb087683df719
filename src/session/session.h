// The six session tables: the row-image steps of ImageTable plus the read of
// a positioned object and the walk. A kind supplies a traits type (table
// functions, lengths, key descriptor, statistics id, iterator slots,
// conversions, key builder and messages); its exported functions are thin
// entries over Session<K>.
#pragma once

#include <cstdint>

#include "../foundation/image_table.h"
#include "../foundation/walk.h"

namespace nimbet::session {

// Traits members beyond those of ImageTable (write, read and remove are
// the common row-image steps; sessions count in g_nimbetSessionCnt):
//   copy_key(dst, src)                  the key fields of the record
//   msgShortRead, msgNext               read-of-object and step failures
//   slotCreate, slotRelease             iterator slots of g_nimbetSessionCnt
template <class K>
struct Session : ImageTable<K> {
    using Entry = typename K::Entry;

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
};

// The exported entries of a kind: thin named calls into Session<K>.
#define NIMBET_SESSION_ENTRIES(S, Entry, SetEntryKey, SetItemLite, WriteEntry, GetSess, GetByObject, ReadEntry,     \
                               DeleteEntry)                                                                         \
    NIMBET_DB_API void SetEntryKey(Entry *dst, const Entry *src) { S::copy_key(dst, src); }                          \
    NIMBET_DB_API void SetItemLite(const Entry *entry, uint8_t *rowImage) { S::fill(entry, rowImage); }              \
    NIMBET_DB_API uint32_t WriteEntry(const Entry *entry) { return S::write(entry); }                                \
    NIMBET_DB_API void GetSess(const uint8_t *rowImage, Entry *entry) { S::get(rowImage, entry); }                   \
    NIMBET_DB_API void GetByObject(uint32_t dbObject, Entry *entry) { S::by_object(dbObject, entry); }              \
    NIMBET_DB_API uint32_t ReadEntry(Entry *entry) { return S::read(entry); }                                         \
    NIMBET_DB_API uint32_t DeleteEntry(const Entry *entry) { return S::remove(entry); }

#define NIMBET_SESSION_WALK_ENTRIES(S, Entry, CreateIterator, GetNext, ReleaseIterator)                             \
    NIMBET_DB_API NIMBET_DB_ITER_INFO *CreateIterator(void) { return S::create_walk(); }                              \
    NIMBET_DB_API uint32_t GetNext(NIMBET_DB_ITER_INFO *iter, Entry *entry) { return S::next(iter, entry); }         \
    NIMBET_DB_API void ReleaseIterator(NIMBET_DB_ITER_INFO *iter) { S::release_walk(iter); }

// What every session kind shares.
struct SessionDefaults : ImageTableDefaults {
    static constexpr uint32_t *counters = g_nimbetSessionCnt;
};

// The last 8 bytes of every session row: the time the image was filled.
inline void stamp(uint8_t *image, uint32_t rowLen) { put_le64(image + rowLen - 8, NIMBET_DB_GetSysTime()); }

}  // namespace nimbet::session
