// The steps every table walk shares: create through
// NIMBET_DB_CreatObjectIteratorInfo, step the root iterator, fetch the row,
// release. A table describes itself with a Walk; its exported functions are
// thin entries over walk_create / walk_next_* / walk_release.
#pragma once

#include <cstdint>

#include "internal.h"
#include "nimbet_host.h"

namespace nimbet {

struct Walk {
    DB_CREATE_OBJ_FUNC create;
    DB_RELEASE_OBJ_FUNC release;
    uint32_t stat;                // statistics row of step and read failures
    const char *msgCreateFail;    // logged when the create yields null; null: none
    const char *msgNext;          // logged with the status of a failed step; null: none
    const char *msgRead;          // logged with the status of a failed row read; null: none
    uint32_t *counters;           // iterator counter pair, or null
    unsigned slotCreate, slotRelease;
    // Departures of some tables from the common steps:
    bool stepFailPassesStatus = false;          // a failed step answers the database status, not 1
    uint32_t rowGone = NIMBET_DB_ERR;           // result when the current row vanished before its read
    void *(*alloc)(uint32_t) = NIMBET_AllocMem;  // handle of a keyed walk
    void (*freeFailed)(void *) = NIMBET_FreeMem;  // gives it back when a keyed create fails
    void (*freeReleased)(void *) = NIMBET_FreeMem;  // gives any handle back on release
    const char *msgKeyedOpen = nullptr;         // logged when a keyed create cannot open the table
};

NIMBET_DB_ITER_INFO *walk_create(const Walk &w);

// A walk over the rows of one secondary key: the handle from w.alloc, the
// table opened for scanning (create slot counted), the root iterator on
// the key (on failure the object is released, the release slot counted).
NIMBET_DB_ITER_INFO *walk_create_keyed(const Walk &w, uint32_t keyDesc, const uint8_t *key);
void walk_release(const Walk &w, NIMBET_DB_ITER_INFO *it);

// Moves the walk one row on. 0: the database handle stands on the next
// row; otherwise the result the next operation returns (1 or 60).
uint32_t walk_step(const Walk &w, NIMBET_DB_ITER_INFO *it, const void *rec);

// Next operation of a field-fill table: the fill's own result is not the
// walk's.
template <class Rec, class Fill>
uint32_t walk_next_fill(const Walk &w, NIMBET_DB_ITER_INFO *it, Rec *rec, Fill fill) {
    if (const uint32_t r = walk_step(w, it, rec)) return r;
    (void)fill(it->dbHandle, rec);
    return NIMBET_DB_OK;
}

// Next operation of a row-image table: read the current row into a zeroed
// image of the table's length and convert it into the record.
template <uint32_t Len, class Rec, class Conv>
uint32_t walk_next_image(const Walk &w, NIMBET_DB_ITER_INFO *it, Rec *rec, Conv conv) {
    uint8_t image[Len] = {};
    if (const uint32_t r = walk_step(w, it, rec)) return r;
    const uint32_t s = db_read_obj_with_buf(it->dbHandle, nullptr, nullptr, image, Len);
    if (s == 0) {
        conv(image, rec);
        return NIMBET_DB_OK;
    }
    if (s == DB_RET_NO_RECORD) return w.rowGone;
    if (w.msgRead != nullptr) log_err(w.msgRead, s);
    NIMBET_DB_RecordErrStat(w.stat, DB_ERR_READ);
    return NIMBET_DB_ERR;
}

}  // namespace nimbet
