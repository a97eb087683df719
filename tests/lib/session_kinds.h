// The six session kinds seen through one adapter type, so one test body
// can run over all of them.
#pragma once

#include <cstring>
#include <ostream>
#include <string>

#include "nimbet_db.h"

namespace nimbet_test {

struct SessionKind {
    const char *name;
    const char *table;
    uint32_t stat;
    uint32_t rowLen, keyLen;
    size_t recSize;
    DB_CREATE_OBJ_FUNC db_create;
    DB_RELEASE_OBJ_FUNC db_release;
    void (*make)(void *rec, uint32_t seed);  // every field from seed; keys differ by seed
    void (*mutate_key)(void *rec);            // change one key field
    void (*mutate_attrs)(void *rec);          // change fields outside the key
    uint32_t (*write)(const void *);
    uint32_t (*read)(void *);
    uint32_t (*remove)(const void *);
    void (*fill)(const void *, uint8_t *);
    void (*get)(const uint8_t *, void *);
    void (*copy_key)(void *, const void *);
    void (*by_object)(uint32_t, void *);
    NIMBET_DB_ITER_INFO *(*create)();  // null: no walk
    uint32_t (*next)(NIMBET_DB_ITER_INFO *, void *);
    void (*release)(NIMBET_DB_ITER_INFO *);
    unsigned slotCreate, slotRelease;
    // Messages; null: the path is silent.
    const char *msgReadNull, *msgDeleteNull;
    const char *msgWriteOpen, *msgWriteFail, *msgReadOpen, *msgReadFail, *msgDeleteOpen, *msgRemoveFail;
    const char *msgReadMemcpy, *msgDeleteMemcpy, *msgShortRead, *msgNext;
};

extern const SessionKind kSessionKinds[6];

inline void PrintTo(const SessionKind &k, std::ostream *os) { *os << k.name; }

}  // namespace nimbet_test
