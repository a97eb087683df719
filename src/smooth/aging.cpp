// The producer-PID walk over the six session tables: an aging table id
// names the table, the map gives its create and release functions, and a
// per-table key setter opens the walk on the table's producer-PID index.
#include "../foundation/internal.h"
#include "../foundation/rowbytes.h"
#include "nimbet_host.h"

// Filled with the database's own entry points when the library is loaded.
NIMBET_DB_API NIMBET_DB_SMOOTH_OBJECT_MAP g_nimbetSmoothDbObjectMapTable[NIMBET_DB_AGE_TABLE_NUM] = {
    {NIMBET_DB_AGE_TABLE_PING_SESS, db_create_ping_sess_obj, db_release_ping_sess_object},
    {NIMBET_DB_AGE_TABLE_INET_SESS, db_create_inet_sess_obj, db_release_inet_sess_object},
    {NIMBET_DB_AGE_TABLE_GROUP_SESS, db_create_group_sess_obj, db_release_group_sess_object},
    {NIMBET_DB_AGE_TABLE_ISIS_SESS, db_create_isis_sess_obj, db_release_isis_sess_object},
    {NIMBET_DB_AGE_TABLE_INET6_SESS, db_create_inet6_sess_obj, db_release_inet6_sess_object},
    {NIMBET_DB_AGE_TABLE_GROUP6_SESS, db_create_group6_sess_obj, db_release_group6_sess_object},
};

namespace nimbet::smooth {
namespace {

constexpr unsigned kAgeObjectSlot = 11;  // both sides of an aging object's life

const NIMBET_DB_SMOOTH_OBJECT_MAP *find_row(uint32_t tableId) {
    for (const NIMBET_DB_SMOOTH_OBJECT_MAP &row : g_nimbetSmoothDbObjectMapTable)
        if (row.tableId == tableId) return &row;
    return nullptr;
}

// The step every key setter takes; `fail` logs the setter's own message.
template <class Fail>
void set_pid_key(DB_HANDLE obj, uint32_t tableId, uint8_t *keyBuf, uint32_t pid, DB_HANDLE *iter, uint32_t keyDesc,
                 Fail fail) {
    // The rows hold the PID little-endian, as the target host does.
    put_le32(keyBuf, pid);
    const uint32_t s = db_create_root_iter(obj, &keyDesc, keyBuf, iter);
    NIMBET_DIAG_Record(5, 0, 4, 3, "nimbet db Creat iterator, ret = %d.", s);
    if (s != 0) {
        fail(s);
        NIMBET_DB_ReleaseAgeObject(tableId, obj);
    }
}

}  // namespace
}  // namespace nimbet::smooth

using namespace nimbet::smooth;
using nimbet::log_err;

extern "C" {

NIMBET_DB_API uint32_t NIMBET_DB_CreatPidObject(uint32_t tableId, DB_HANDLE *dbHandle) {
    if (dbHandle == nullptr) return NIMBET_DB_ERR;
    const NIMBET_DB_SMOOTH_OBJECT_MAP *row = find_row(tableId);
    if (row == nullptr) return NIMBET_DB_ERR;
    const uint32_t s = row->createFunc(DB_OPEN_SCAN, 0, dbHandle);
    nimbet::bump(g_nimbetSmoothCnt, kAgeObjectSlot);
    return s == 0 ? NIMBET_DB_OK : NIMBET_DB_ERR;
}

NIMBET_DB_API void NIMBET_DB_ReleaseAgeObject(uint32_t tableId, DB_HANDLE dbHandle) {
    if (dbHandle == 0) return;
    const NIMBET_DB_SMOOTH_OBJECT_MAP *row = find_row(tableId);
    if (row == nullptr) return;
    row->releaseFunc(dbHandle);
    nimbet::bump(g_nimbetSmoothCnt, kAgeObjectSlot);
}

NIMBET_DB_API void NIMBET_DB_SetPingSessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                               DB_HANDLE *rootIter) {
    set_pid_key(dbHandle, tableId, keyBuf, pid, rootIter, 0x01090004u,
                [](uint32_t s) { log_err("SetPingSessPidKey ret not QEX_OK, ret: %u", s); });
}

NIMBET_DB_API void NIMBET_DB_SetInetSessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                               DB_HANDLE *rootIter) {
    set_pid_key(dbHandle, tableId, keyBuf, pid, rootIter, 0x03090004u,
                [](uint32_t s) { log_err("SetInetSessPidKey ret not QEX_OK, ret: %u", s); });
}

NIMBET_DB_API void NIMBET_DB_SetGroupSessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                                DB_HANDLE *rootIter) {
    set_pid_key(dbHandle, tableId, keyBuf, pid, rootIter, 0x05090004u,
                [](uint32_t) { log_err("SetGroupSessPidKey ret not QEX_OK"); });
}

NIMBET_DB_API void NIMBET_DB_SetIsisSessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                               DB_HANDLE *rootIter) {
    set_pid_key(dbHandle, tableId, keyBuf, pid, rootIter, 0x03090004u,
                [](uint32_t s) { log_err("SetIsisSessPidKey ret not QEX_OK. ret = %u.", s); });
}

NIMBET_DB_API void NIMBET_DB_SetInet6SessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                                DB_HANDLE *rootIter) {
    set_pid_key(dbHandle, tableId, keyBuf, pid, rootIter, 0x03090004u,
                [](uint32_t s) { log_err("SetInet6SessPidKey ret not QEX_OK, ret: %u", s); });
}

NIMBET_DB_API void NIMBET_DB_SetGroup6SessPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint8_t *keyBuf, uint32_t pid,
                                                 DB_HANDLE *rootIter) {
    set_pid_key(dbHandle, tableId, keyBuf, pid, rootIter, 0x04090004u,
                [](uint32_t s) { log_err("SetGroup6SessPidKey ret not QEX_OK, ret: %u", s); });
}

NIMBET_DB_API void NIMBET_DB_SetPidKey(DB_HANDLE dbHandle, uint32_t tableId, uint32_t pid, DB_HANDLE *rootIter) {
    uint8_t keyBuf[4];
    for (const NIMBET_DB_SMOOTH_OBJECT_MAP &row : g_nimbetSmoothDbObjectMapTable) {
        if (row.tableId != tableId) continue;
        switch (tableId) {
            case NIMBET_DB_AGE_TABLE_PING_SESS: NIMBET_DB_SetPingSessPidKey(dbHandle, tableId, keyBuf, pid, rootIter); break;
            case NIMBET_DB_AGE_TABLE_INET_SESS: NIMBET_DB_SetInetSessPidKey(dbHandle, tableId, keyBuf, pid, rootIter); break;
            case NIMBET_DB_AGE_TABLE_GROUP_SESS: NIMBET_DB_SetGroupSessPidKey(dbHandle, tableId, keyBuf, pid, rootIter); break;
            case NIMBET_DB_AGE_TABLE_ISIS_SESS: NIMBET_DB_SetIsisSessPidKey(dbHandle, tableId, keyBuf, pid, rootIter); break;
            case NIMBET_DB_AGE_TABLE_INET6_SESS: NIMBET_DB_SetInet6SessPidKey(dbHandle, tableId, keyBuf, pid, rootIter); break;
            case NIMBET_DB_AGE_TABLE_GROUP6_SESS: NIMBET_DB_SetGroup6SessPidKey(dbHandle, tableId, keyBuf, pid, rootIter); break;
            default: break;
        }
    }
}

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatePidIterator(uint32_t tableId, uint32_t pid) {
    DB_HANDLE obj = 0, iter = 0;
    auto *it = static_cast<NIMBET_DB_ITER_INFO *>(NIMBET_AllocMem(sizeof(NIMBET_DB_ITER_INFO)));
    if (it == nullptr) return nullptr;
    const uint32_t r = NIMBET_DB_CreatPidObject(tableId, &obj);
    NIMBET_DIAG_Record(5, 0, 4, 3, "nimbet db CreatPidObject, ret = %d.", r);
    if (r != 0) {
        NIMBET_FreeMem(it);
        return nullptr;
    }
    NIMBET_DB_SetPidKey(obj, tableId, pid, &iter);
    // A failed key setting writes no iterator and has released the object
    // already: hand out no handle that would reach it again.
    if (iter == 0) {
        NIMBET_FreeMem(it);
        return nullptr;
    }
    it->dbHandle = obj;
    it->rootIter = iter;
    return it;
}

NIMBET_DB_API void NIMBET_DB_ReleaseAgeIterator(uint32_t tableId, NIMBET_DB_ITER_INFO *iter) {
    if (iter == nullptr) return;
    NIMBET_DB_ReleaseAgeObject(tableId, iter->dbHandle);
    NIMBET_FreeMem(iter);
}

NIMBET_DB_API void NIMBET_DB_GetTableItem(uint32_t tableId, DB_HANDLE dbHandle, void *entry) {
    // The session converters take the handle as 32 bits; handles stay below 2^32.
    const auto obj = static_cast<uint32_t>(dbHandle);
    switch (tableId) {
        case NIMBET_DB_AGE_TABLE_PING_SESS:
            return NIMBET_DB_GetPingSessByObject(obj, static_cast<NIMBET_DB_PING_SESS_ENTRY *>(entry));
        case NIMBET_DB_AGE_TABLE_INET_SESS:
            return NIMBET_DB_GetInetSessByObject(obj, static_cast<NIMBET_DB_INET_SESS_ENTRY *>(entry));
        case NIMBET_DB_AGE_TABLE_GROUP_SESS:
            return NIMBET_DB_GetGroupByObject(obj, static_cast<NIMBET_DB_GROUP_SESS_ENTRY *>(entry));
        case NIMBET_DB_AGE_TABLE_ISIS_SESS:
            return NIMBET_DB_GetIsisByObject(obj, static_cast<NIMBET_DB_ISIS_SESS_ENTRY *>(entry));
        case NIMBET_DB_AGE_TABLE_INET6_SESS:
            return NIMBET_DB_GetInet6ByObject(obj, static_cast<NIMBET_DB_INET6_SESS_ENTRY *>(entry));
        case NIMBET_DB_AGE_TABLE_GROUP6_SESS:
            return NIMBET_DB_GetGroup6SessByObject(obj, static_cast<NIMBET_DB_GROUP6_SESS_ENTRY *>(entry));
        default: return;
    }
}

NIMBET_DB_API uint32_t NIMBET_DB_GetNextTableByAgeIterator(uint32_t tableId, NIMBET_DB_ITER_INFO *iter, void *entry) {
    if (iter == nullptr || iter->dbHandle == 0 || entry == nullptr) return NIMBET_DB_ERR;
    const uint32_t s = db_root_iterator_next(iter->rootIter);
    if (s == 0) {
        NIMBET_DB_GetTableItem(tableId, iter->dbHandle, entry);
        return NIMBET_DB_OK;
    }
    if (s == DB_RET_ITER_END) return NIMBET_DB_ITER_END;
    log_err("Get next table by age iterator fail. tableId %d, ret = %d", tableId, s);
    return NIMBET_DB_ERR;
}

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatLrAgeIterator(uint32_t tableId, uint32_t pid) {
    return NIMBET_DB_CreatePidIterator(tableId, pid);
}

NIMBET_DB_API void NIMBET_DB_ReleaseLrAgeIterator(uint32_t tableId, NIMBET_DB_ITER_INFO *iter) {
    NIMBET_DB_ReleaseAgeIterator(tableId, iter);
}

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatVrfTableAgeIterator(void) { return nullptr; }

}  // extern "C"
