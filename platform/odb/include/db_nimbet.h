/*
 * db_nimbet.h - the embedded object database of the IP services module.
 *
 * Plain C interface, usable from C11 and C++ hosts. Every status is a
 * uint32_t: 0 is success; the other values are listed below. The per-table
 * accessors (db_create_<t>_obj, db_set_<t>_<f>, ...) are generated from the
 * schema file and declared in db_nimbet_tables.h, included at the end.
 */
#ifndef DB_NIMBET_H
#define DB_NIMBET_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(DB_NIMBET_BUILD)
#define DB_NIMBET_API __attribute__((visibility("default")))
#else
#define DB_NIMBET_API
#endif

/* Opaque handle of an object, a child list or a root iterator; 0 is none.
 * Values stay below 2^32 (slot and generation), also on 64-bit hosts. */
typedef uintptr_t DB_HANDLE;

typedef uint32_t (*DB_CREATE_OBJ_FUNC)(uint32_t mode, uint32_t reserved, DB_HANDLE *obj);
typedef uint32_t (*DB_RELEASE_OBJ_FUNC)(DB_HANDLE obj);

/* Open modes: an object is created in one mode for its whole life. */
#define DB_OPEN_WRITE  0u
#define DB_OPEN_UPDATE 1u
#define DB_OPEN_READ   3u
#define DB_OPEN_REMOVE 4u
#define DB_OPEN_SCAN   5u
#define DB_OPEN_COUNT  9u

/* Statuses the callers interpret. */
#define DB_RET_TOLERATED 13044u  /* write/update/remove: accepted, e.g. remove of a missing key */
#define DB_RET_NO_RECORD 15005u  /* no row with that key, or the current row is gone */
#define DB_RET_ITER_END  110012u /* the walk has no further row */

/* The database's own error statuses. None equals 0, 1, 60, 13044, 15005 or
 * 110012, so a caller that passes a status through cannot be mistaken. */
#define DB_RET_BAD_HANDLE  190001u /* null, released, stale or foreign handle */
#define DB_RET_WRONG_MODE  190002u /* operation not allowed in the object's open mode */
#define DB_RET_BAD_LENGTH  190003u /* row image, address or buffer length does not match */
#define DB_RET_BAD_KEY     190004u /* key descriptor: wrong length, or no such key/index */
#define DB_RET_UNKNOWN     190005u /* unknown child list name, or unknown table */
#define DB_RET_INDEX_RANGE 190006u /* child index out of range, or no current entry */
#define DB_RET_NO_MEMORY   190007u /* allocation failed; nothing was changed */
#define DB_RET_NO_ROW      190008u /* getter or child read on an object that holds no row */
#define DB_RET_BAD_ARG     190009u /* null out pointer or key; bad reserved argument */
#define DB_RET_KEY_EXISTS  190010u /* update would move a row onto another row's key */

/* Key-descriptor word: length in the low 16 bits; 0x0001 above it for the
 * primary key, or 0x09 in bits 16-23 and the index number in the top byte. */
#define DB_KEY_PRIMARY(len)        (0x00010000u | (uint32_t)(len))
#define DB_KEY_INDEX(num, len)     (((uint32_t)(num) << 24) | 0x00090000u | (uint32_t)(len))

DB_NIMBET_API uint32_t db_write_obj(DB_HANDLE obj);
DB_NIMBET_API uint32_t db_update_obj(DB_HANDLE obj, const uint32_t *keyDesc, const void *key);
DB_NIMBET_API uint32_t db_read_obj(DB_HANDLE obj, const uint32_t *keyDesc, const void *key);
DB_NIMBET_API uint32_t db_read_obj_with_buf(DB_HANDLE obj, const uint32_t *keyDesc, const void *key,
                                            void *buf, uint32_t len);
DB_NIMBET_API uint32_t db_remove_obj(DB_HANDLE obj, const uint32_t *keyDesc, const void *key);
DB_NIMBET_API uint32_t db_create_root_iter(DB_HANDLE obj, const uint32_t *keyDesc, const void *key,
                                           DB_HANDLE *iter);
DB_NIMBET_API uint32_t db_root_iterator_next(DB_HANDLE iter);
DB_NIMBET_API uint32_t db_create_child_node(DB_HANDLE obj, uint32_t r1, const char *listName, uint32_t r2,
                                            uint32_t r3, DB_HANDLE *child);
DB_NIMBET_API uint32_t db_child_count(DB_HANDLE child, uint32_t *count);
DB_NIMBET_API uint32_t db_child_get(DB_HANDLE child, uint32_t index);
DB_NIMBET_API uint32_t db_child_push_back(DB_HANDLE child);
DB_NIMBET_API uint32_t db_get_table_record_count(DB_HANDLE obj, uint64_t *count);
DB_NIMBET_API uint32_t db_get_table_record_count_by_key(DB_HANDLE obj, const uint32_t *keyDesc,
                                                        const void *key, uint64_t *count);

#ifdef __cplusplus
}
#endif

#include "db_nimbet_tables.h"

#endif /* DB_NIMBET_H */
