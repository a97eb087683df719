// The IP option tables (per interface and global): row-image tables with
// the common steps of ImageTable, counted in g_nimbetIpOptionCnt, and a walk
// with the same counter slots. A table supplies its image layout, key and
// messages through a traits type.
#pragma once

#include <cstdint>
#include <type_traits>

#include "../foundation/image_table.h"
#include "../foundation/walk.h"

namespace nimbet::ipoption {

// Traits members beyond those of ImageTable:
//   Key                                  the table's key record
//   key_of(rec) -> Key; put_key(key, bytes)
//   log_key(format, status, key)        a message with the key fields
//   msgReadOpen, msgReadFail, msgDeleteOpen, msgRemove, msgNext
template <class T>
struct OptTraits : ImageTableDefaults {
    static constexpr uint32_t *counters = g_nimbetIpOptionCnt;
    static constexpr const char *msgDeleteNull = "[ip opt]nimbet db deleteentryoption entry is QEX_NULL, para is NULL";

    template <class Rec>
    static uint32_t build_key(const Rec &r, uint8_t *key) {
        T::put_key(key_from(r), key);
        return 0;
    }
    // A write logs nothing; read and delete show the key fields.
    template <class Rec>
    static void log(Path p, uint32_t s, const Rec &r) {
        const char *msg = p == Path::ReadOpen     ? T::msgReadOpen
                          : p == Path::ReadFail   ? T::msgReadFail
                          : p == Path::DeleteOpen ? T::msgDeleteOpen
                          : p == Path::RemoveFail ? T::msgRemove
                                                  : nullptr;
        if (msg != nullptr) T::log_key(msg, s, key_from(r));
    }

private:
    // Read and write pass the record, delete the key.
    template <class Rec>
    static auto key_from(const Rec &r) {
        if constexpr (std::is_same_v<Rec, typename T::Key>) {
            return r;
        } else {
            return T::key_of(r);
        }
    }
};

template <class T>
struct OptTable : ImageTable<T> {
    using Entry = typename T::Entry;

    // One message serves a failed step and a failed row read.
    static constexpr Walk walk = {T::create, T::release, T::stat, nullptr, T::msgNext, T::msgNext,
                                  g_nimbetIpOptionCnt, IP_OPTION_CNT_ITER_CREATE, IP_OPTION_CNT_ITER_RELEASE};

    static uint32_t next(NIMBET_DB_ITER_INFO *it, Entry *rec) {
        return walk_next_image<T::rowLen>(walk, it, rec, T::get);
    }

    static void copy_key(typename T::Key *dst, const typename T::Key *src) {
        if (dst != nullptr && src != nullptr) *dst = *src;
    }
};

}  // namespace nimbet::ipoption

// The exported entries of an IP option table: thin named calls into OptTable.
#define NIMBET_OPT_ENTRIES(T, Entry, Key, SetEntryKey, SetImage, GetImage, WriteEntry, ReadEntry, DeleteEntry,      \
                           CreateIterator, GetNext, ReleaseIterator)                                                \
    NIMBET_DB_API void SetEntryKey(Key *dst, const Key *src) { T::copy_key(dst, src); }                              \
    NIMBET_DB_API void SetImage(const Entry *entry, uint8_t *rowImage) { T::fill(entry, rowImage); }                 \
    NIMBET_DB_API void GetImage(const uint8_t *rowImage, Entry *entry) { T::get(rowImage, entry); }                  \
    NIMBET_DB_API uint32_t WriteEntry(const Entry *entry) { return T::write(entry); }                                \
    NIMBET_DB_API uint32_t ReadEntry(Entry *entry) { return T::read(entry); }                                        \
    NIMBET_DB_API uint32_t DeleteEntry(const Key *key) { return T::remove(key); }                                    \
    NIMBET_DB_API NIMBET_DB_ITER_INFO *CreateIterator(void) { return nimbet::walk_create(T::walk); }                 \
    NIMBET_DB_API uint32_t GetNext(NIMBET_DB_ITER_INFO *iter, Entry *entry) { return T::next(iter, entry); }         \
    NIMBET_DB_API void ReleaseIterator(NIMBET_DB_ITER_INFO *iter) { nimbet::walk_release(T::walk, iter); }
