// The common steps of every row-image table: write a record as one row
// image, read a row by key into a record, remove by key. A table supplies a
// traits type; where it departs from the common steps (a status passed
// through, 60 for a missing row, a counter array, a message) the departure
// is a member of its traits.
#pragma once

#include <cstdint>

#include "internal.h"
#include "nimbet_host.h"
#include "rowbytes.h"

namespace nimbet {

// Paths on which a table may log; the table's log() maps each to its text
// and the values it shows.
enum class Path { WriteOpen, WriteFail, ReadMemcpy, ReadOpen, ReadFail, DeleteMemcpy, DeleteOpen, RemoveFail };

// What most tables do; a table's traits derive from this and override.
struct ImageTableDefaults {
    static constexpr uint32_t *counters = nullptr;  // slots 0-5: read, write, remove open/release
    static constexpr uint32_t missingRow = NIMBET_DB_ERR;  // result of a key read without a row
    static constexpr bool openFailPassesStatus = false;    // a failed open answers its status
    static constexpr const char *msgWriteNull = nullptr;
    static constexpr const char *msgReadNull = nullptr;
    static constexpr const char *msgDeleteNull = nullptr;
};

// Traits members besides the defaults:
//   Entry, rowLen, keyLen, keyDesc, stat
//   create, release, set_all            the table's database functions
//   fill(rec, image), get(image, rec)    record <-> row image
//   build_key(src, key) -> uint32_t     key bytes from a record or key
//                                       type; nonzero: a bounds-checked
//                                       copy failed (the sum of results)
//   log(path, status, src)              the message of a path, or nothing
template <class T>
struct ImageTable {
    using Entry = typename T::Entry;

    static uint32_t write(const Entry *rec) { return write(rec, T::fill); }

    // A write whose row image is filled by `fill` (a table whose fill takes
    // more than the record).
    template <class Fill>
    static uint32_t write(const Entry *rec, Fill fill) {
        uint8_t image[T::rowLen] = {};
        if (rec == nullptr) return null_arg(T::msgWriteNull);
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_WRITE, 0, &h);
        if (s != 0) return open_failed(Path::WriteOpen, s, *rec);
        count(kWriteOpen);
        fill(rec, image);
        s = T::set_all(h, image, T::rowLen);
        if (s != 0) {
            T::release(h);
            count(kWriteRelease);
            return s;
        }
        s = db_write_obj(h);
        T::release(h);
        count(kWriteRelease);
        if (tolerated_ok(s, T::stat)) return NIMBET_DB_OK;
        T::log(Path::WriteFail, s, *rec);
        NIMBET_DB_RecordErrStat(T::stat, DB_ERR_WRITE);
        return NIMBET_DB_ERR;
    }

    // Reads the row of src's key into rec (src is rec itself unless a
    // table reads by a separate key).
    template <class Src>
    static uint32_t read(const Src *src, Entry *rec) {
        uint8_t image[T::rowLen] = {};
        if (src == nullptr || rec == nullptr) return null_arg(T::msgReadNull);
        uint8_t key[T::keyLen] = {};
        if (const uint32_t sum = T::build_key(*src, key)) {
            T::log(Path::ReadMemcpy, sum, *src);
            return NIMBET_DB_ERR;
        }
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_READ, 0, &h);
        if (s != 0) return open_failed(Path::ReadOpen, s, *src);
        count(kReadOpen);
        s = db_read_obj_with_buf(h, &T::keyDesc, key, image, T::rowLen);
        uint32_t result = NIMBET_DB_ERR;
        if (s == 0) {
            T::get(image, rec);
            result = NIMBET_DB_OK;
        } else if (s == DB_RET_NO_RECORD) {
            result = T::missingRow;
        } else {
            T::log(Path::ReadFail, s, *src);
            NIMBET_DB_RecordErrStat(T::stat, DB_ERR_READ);
        }
        T::release(h);
        count(kReadRelease);
        return result;
    }
    static uint32_t read(Entry *rec) { return read(rec, rec); }

    template <class Src>
    static uint32_t remove(const Src *src) {
        if (src == nullptr) return null_arg(T::msgDeleteNull);
        uint8_t key[T::keyLen] = {};
        if (const uint32_t sum = T::build_key(*src, key)) {
            T::log(Path::DeleteMemcpy, sum, *src);
            return NIMBET_DB_ERR;
        }
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_REMOVE, 0, &h);
        if (s != 0) {
            T::log(Path::DeleteOpen, s, *src);
            return NIMBET_DB_ERR;  // a remove answers 1 whatever the open said
        }
        count(kRemoveOpen);
        s = db_remove_obj(h, &T::keyDesc, key);
        T::release(h);
        count(kRemoveRelease);
        if (tolerated_ok(s, T::stat)) return NIMBET_DB_OK;
        T::log(Path::RemoveFail, s, *src);
        NIMBET_DB_RecordErrStat(T::stat, DB_ERR_REMOVE);
        return NIMBET_DB_ERR;
    }

    // Re-validation: `set` sets some fields on an object opened for update
    // (every setter called, statuses ORed), then the row of src's key is
    // updated in place.
    template <class Src, class Set>
    static uint32_t update(const Src *src, Set set, const char *msgOpen, const char *msgSet, const char *msgUpdate) {
        if (src == nullptr) return NIMBET_DB_ERR;
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_UPDATE, 0, &h);
        if (s != 0) {
            log_err(msgOpen, s);
            return NIMBET_DB_ERR;
        }
        uint8_t key[T::keyLen] = {};
        (void)T::build_key(*src, key);
        s = set(h, *src);
        if (s != 0) {
            T::release(h);
            log_err(msgSet, s);
            return NIMBET_DB_ERR;
        }
        s = db_update_obj(h, &T::keyDesc, key);
        T::release(h);
        if (tolerated_ok(s, T::stat)) return NIMBET_DB_OK;
        log_err(msgUpdate, s);
        NIMBET_DB_RecordErrStat(T::stat, DB_ERR_UPDATE);
        return NIMBET_DB_ERR;
    }

    // The copies exported by the table, safe on null pointers.
    static void fill(const Entry *rec, uint8_t *image) {
        if (rec != nullptr && image != nullptr) T::fill(rec, image);
    }
    static void get(const uint8_t *image, Entry *rec) {
        if (rec != nullptr && image != nullptr) T::get(image, rec);
    }

private:
    static constexpr unsigned kReadOpen = 0, kReadRelease = 1, kWriteOpen = 2, kWriteRelease = 3, kRemoveOpen = 4,
                              kRemoveRelease = 5;

    static void count(unsigned slot) {
        if (T::counters != nullptr) bump(T::counters, slot);
    }
    static uint32_t null_arg(const char *msg) {
        if (msg != nullptr) log_err(msg);
        return NIMBET_DB_ERR;
    }
    template <class Src>
    static uint32_t open_failed(Path p, uint32_t s, const Src &src) {
        T::log(p, s, src);
        return T::openFailPassesStatus ? s : NIMBET_DB_ERR;
    }
};

// Tables whose messages show the status alone: one text for a failed open
// (any operation) and one per failed database operation.
template <class T>
struct StatusMessages : ImageTableDefaults {
    template <class Src>
    static void log(Path p, uint32_t s, const Src &) {
        const char *msg = nullptr;
        switch (p) {
            case Path::WriteOpen: case Path::ReadOpen: case Path::DeleteOpen: msg = T::msgOpen; break;
            case Path::WriteFail: msg = T::msgWrite; break;
            case Path::ReadFail: msg = T::msgRead; break;
            case Path::RemoveFail: msg = T::msgRemove; break;
            default: break;
        }
        if (msg != nullptr) log_err(msg, s);
    }
};

// Copies a byte array into key bytes with the bounds-checked copy.
template <size_t N>
inline uint32_t copy_checked(uint8_t *dst, const uint8_t (&src)[N]) {
    return static_cast<uint32_t>(memcpy_s(dst, N, src, N));
}

}  // namespace nimbet
