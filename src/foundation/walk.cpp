// Iterator handles and the walk steps shared by every table.
#include "walk.h"

namespace nimbet {

NIMBET_DB_ITER_INFO *walk_create(const Walk &w) {
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreatObjectIteratorInfo(w.create, w.release);
    if (it == nullptr) {
        if (w.msgCreateFail != nullptr) log_err(w.msgCreateFail);
    } else if (w.counters != nullptr) {
        bump(w.counters, w.slotCreate);
    }
    return it;
}

NIMBET_DB_ITER_INFO *walk_create_keyed(const Walk &w, uint32_t keyDesc, const uint8_t *key) {
    auto *it = static_cast<NIMBET_DB_ITER_INFO *>(w.alloc(sizeof(NIMBET_DB_ITER_INFO)));
    if (it == nullptr) return nullptr;
    DB_HANDLE obj = 0, root = 0;
    uint32_t s = w.create(DB_OPEN_SCAN, 0, &obj);
    if (s != 0) {
        w.freeFailed(it);
        if (w.msgKeyedOpen != nullptr) log_err(w.msgKeyedOpen, s);
        return nullptr;
    }
    if (w.counters != nullptr) bump(w.counters, w.slotCreate);
    s = db_create_root_iter(obj, &keyDesc, key, &root);
    if (s != 0) {
        w.release(obj);
        if (w.counters != nullptr) bump(w.counters, w.slotRelease);
        w.freeFailed(it);
        return nullptr;
    }
    it->dbHandle = obj;
    it->rootIter = root;
    return it;
}

void walk_release(const Walk &w, NIMBET_DB_ITER_INFO *it) {
    if (it == nullptr) return;
    if (it->dbHandle != 0) {
        w.release(it->dbHandle);
        if (w.counters != nullptr) bump(w.counters, w.slotRelease);
    }
    w.freeReleased(it);
}

uint32_t walk_step(const Walk &w, NIMBET_DB_ITER_INFO *it, const void *rec) {
    if (it == nullptr || rec == nullptr) return NIMBET_DB_ERR;
    const uint32_t s = db_root_iterator_next(it->rootIter);
    if (s == 0) return NIMBET_DB_OK;
    if (s == DB_RET_ITER_END) return NIMBET_DB_ITER_END;
    if (w.msgNext != nullptr) log_err(w.msgNext, s);
    NIMBET_DB_RecordErrStat(w.stat, DB_ERR_NEXT);
    return w.stepFailPassesStatus ? s : NIMBET_DB_ERR;
}

}  // namespace nimbet

extern "C" NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatObjectIteratorInfo(DB_CREATE_OBJ_FUNC createFunc,
                                                                               DB_RELEASE_OBJ_FUNC releaseFunc) {
    if (createFunc == nullptr || releaseFunc == nullptr) return nullptr;
    auto *it = static_cast<NIMBET_DB_ITER_INFO *>(NIMBET_AllocMem(sizeof(NIMBET_DB_ITER_INFO)));
    if (it == nullptr) {
        NIMBET_DIAG_Record(1, 0, 2, 1, "nimbet db create object iterator malloc failed.");
        return nullptr;
    }
    DB_HANDLE obj = 0;
    uint32_t s = createFunc(DB_OPEN_SCAN, 0, &obj);
    if (s != 0) {
        NIMBET_DIAG_Record(1, 0, 2, 1, "nimbet db create object failed, ret = %d", s);
        NIMBET_FreeMem(it);
        return nullptr;
    }
    DB_HANDLE root = 0;
    s = db_create_root_iter(obj, nullptr, nullptr, &root);
    if (s != 0) {
        NIMBET_DIAG_Record(1, 0, 2, 1, "nimbet db create root iterator failed. ret = %d", s);
        releaseFunc(obj);
        NIMBET_FreeMem(it);
        return nullptr;
    }
    it->dbHandle = obj;
    it->rootIter = root;
    return it;
}
