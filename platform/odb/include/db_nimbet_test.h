/*
 * db_nimbet_test.h - test hooks of the object database: fault injection,
 * call counts, rows examined, live objects, allocation failure, reset.
 * Not for production hosts; the hooks are cheap when unused: calls and rows
 * examined are counted from the first call of db_test_reset,
 * db_test_reset_counts, db_test_inject or db_test_live_objects on.
 */
#ifndef DB_NIMBET_TEST_H
#define DB_NIMBET_TEST_H

#include "db_nimbet.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Operations that can be counted and injected. */
typedef enum {
    DB_OP_CREATE_OBJ = 0,  /* db_create_<t>_obj */
    DB_OP_RELEASE_OBJ,     /* db_release_<t>_object (always performed, see below) */
    DB_OP_SET_ALL_FIELDS,  /* db_set_<t>_all_fields */
    DB_OP_SET_FIELD,       /* db_set_<t>_<f>, db_set_<t>_<l>_<f> */
    DB_OP_GET_FIELD,       /* db_get_<t>_<f>, db_get_<t>_<l>_<f> */
    DB_OP_WRITE,           /* db_write_obj */
    DB_OP_UPDATE,          /* db_update_obj */
    DB_OP_READ,            /* db_read_obj */
    DB_OP_READ_WITH_BUF,   /* db_read_obj_with_buf */
    DB_OP_REMOVE,          /* db_remove_obj */
    DB_OP_CREATE_ROOT_ITER,/* db_create_root_iter */
    DB_OP_ITER_NEXT,       /* db_root_iterator_next */
    DB_OP_CREATE_CHILD,    /* db_create_child_node */
    DB_OP_CHILD_COUNT,     /* db_child_count */
    DB_OP_CHILD_GET,       /* db_child_get */
    DB_OP_CHILD_PUSH_BACK, /* db_child_push_back */
    DB_OP_COUNT,           /* db_get_table_record_count */
    DB_OP_COUNT_BY_KEY,    /* db_get_table_record_count_by_key */
    DB_OP_NUM
} DB_TEST_OP;

/*
 * Make calls of one operation answer `status` without being performed: the
 * calls numbered nth .. nth+times-1 among those that match, counted from now
 * (nth = 1: the next matching call). table: a table name ("inet_sess") or
 * NULL for any table; field: the accessor suffix ("vrfIndex",
 * "ipv4_address_list_masklen") or NULL for any field. A call on an invalid
 * handle matches only a rule with table NULL. Several rules may be active;
 * the first that matches wins. An injected call writes no out argument.
 * db_release_<t>_object is counted and answers the injected status, but the
 * object is released anyway, so that an injection never leaks.
 * Returns 0, or DB_RET_UNKNOWN for an unknown table or field name, or
 * DB_RET_BAD_ARG for an operation out of range or nth/times 0.
 */
DB_NIMBET_API uint32_t db_test_inject(DB_TEST_OP op, const char *table, const char *field, uint32_t nth,
                                      uint32_t times, uint32_t status);
DB_NIMBET_API void db_test_clear_injections(void);

/* Calls made of `op` on `table` (NULL: all tables, invalid handles included),
 * injected ones included, since the last reset. */
DB_NIMBET_API uint64_t db_test_call_count(DB_TEST_OP op, const char *table);

/* Rows and index entries the store examined for `table` (NULL: all tables):
 * walk entries visited (removed ones included), keys compared on lookup. */
DB_NIMBET_API uint64_t db_test_rows_examined(const char *table);

/* Objects created and not released, in all tables. */
DB_NIMBET_API uint64_t db_test_live_objects(void);

/* The nth internal allocation from now (1: the next) fails; the operation
 * then answers DB_RET_NO_MEMORY and changes nothing. 0 disarms. */
DB_NIMBET_API void db_test_fail_nth_alloc(uint32_t nth);

/* Turn the counting of calls and rows examined on (1) or off (0); the
 * hooks above turn it on. Injection works either way. */
DB_NIMBET_API void db_test_counting(int on);

/* Zero the call and rows-examined counts. */
DB_NIMBET_API void db_test_reset_counts(void);

/* Empty every table, clear injections, disarm the allocation failure and
 * zero the counts. Objects still open stay valid; walks on them see an
 * empty table. */
DB_NIMBET_API void db_test_reset(void);

/* Rows in a table, without opening an object (NULL or unknown: 0). */
DB_NIMBET_API uint64_t db_test_row_count(const char *table);

#ifdef __cplusplus
}
#endif

#endif /* DB_NIMBET_TEST_H */
