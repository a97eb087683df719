// vrf_class_state (one state machine per table id and producer PID) and
// vrf_class_data (per VRF of them), both written and read field by field
// and counted in g_nimbetSmoothCnt.
#include "../foundation/internal.h"
#include "../foundation/rowbytes.h"
#include "../foundation/walk.h"

namespace nimbet::smooth {
namespace {

// Slots of g_nimbetSmoothCnt.
constexpr unsigned kStateReadOpen = 0, kStateReadRelease = 1, kWriteOpen = 2, kStateWriteRelease = 3,
                   kDataOpen = 4, kDataRelease = 5, kDataIterCreate = 12, kDataIterRelease = 13;

constexpr uint32_t kStateKeyDesc = 0x00010008u, kDataKeyDesc = 0x00010010u, kDataWalkKeyDesc = 0x01090008u;

uint32_t get_state(DB_HANDLE h, NIMBET_DB_VRF_CLASS_STATE_ENTRY *r) {
    uint32_t s = db_get_vrf_class_state_producer_pid(h, &r->producerPid);
    s |= db_get_vrf_class_state_table_id(h, &r->tableId);
    s |= db_get_vrf_class_state_vrf_state_machine(h, &r->vrfStateMachine);
    s |= db_get_vrf_class_state_vrf_state_version(h, &r->vrfStateVersion);
    return s;
}

uint32_t set_state(DB_HANDLE h, const NIMBET_DB_VRF_CLASS_STATE_ENTRY *r) {
    uint32_t s = db_set_vrf_class_state_producer_pid(h, r->producerPid);
    s |= db_set_vrf_class_state_table_id(h, r->tableId);
    s |= db_set_vrf_class_state_vrf_state_machine(h, r->vrfStateMachine);
    s |= db_set_vrf_class_state_vrf_state_version(h, r->vrfStateVersion);
    return s;
}

// The ten fields of vrf_class_data, in record order.
#define NIMBET_VRF_CLASS_DATA_FIELDS(X)                                                                             \
    X(table_id, tableId) X(producer_pid, producerPid) X(vr_id, vrId) X(vrf_index, vrfIndex)                       \
    X(topology_id, topologyId) X(vrf_state, vrfState) X(vrf_data_machine, vrfDataMachine)                         \
    X(vrf_state_version, vrfStateVersion) X(vrf_data_version, vrfDataVersion) X(smooth_flag, smoothFlag)

uint32_t set_data(DB_HANDLE h, const NIMBET_DB_VRF_CLASS_DATA_ENTRY *r) {
    uint32_t s = 0;
#define SET(db, rec) s |= db_set_vrf_class_data_##db(h, r->rec);
    NIMBET_VRF_CLASS_DATA_FIELDS(SET)
#undef SET
    return s;
}

// The walk over one (table id, producer PID): its step failures count
// under the state table's id.
constexpr nimbet::Walk kDataWalk = {.create = db_create_vrf_class_data_obj,
                                    .release = db_release_vrf_class_data_object,
                                    .stat = DB_STAT_VRF_CLASS_STATE,
                                    .msgCreateFail = nullptr,
                                    .msgNext = "Get next vrf class state db fail. ret = %d",
                                    .msgRead = nullptr,
                                    .counters = g_nimbetSmoothCnt,
                                    .slotCreate = kDataIterCreate,
                                    .slotRelease = kDataIterRelease,
                                    .msgKeyedOpen = "Get create vrf class data obj fail. ret = %d"};

void data_key(const NIMBET_DB_VRF_CLASS_DATA_ENTRY *r, uint8_t *k) {
    put_le32(k + 0, r->tableId);
    put_le32(k + 4, r->producerPid);
    put_le32(k + 8, r->vrId);
    put_le32(k + 12, r->vrfIndex);
}

}  // namespace
}  // namespace nimbet::smooth

using namespace nimbet::smooth;
using nimbet::bump;
using nimbet::log_err;

extern "C" {

// ---------------------------------------------------------------- vrf_class_state

NIMBET_DB_API uint32_t NIMBET_DB_ReadClassItem(NIMBET_DB_VRF_CLASS_STATE_ENTRY *entry) {
    if (entry == nullptr) return NIMBET_DB_ERR;
    DB_HANDLE h = 0;
    uint32_t s = db_create_vrf_class_state_obj(DB_OPEN_READ, 0, &h);
    if (s != 0) {
        log_err("Get create vrf class state obj failed. ret = %d, tableId = %u, state = %u.", s, entry->tableId,
                uint32_t{entry->vrfStateMachine});
        return NIMBET_DB_ERR;
    }
    bump(g_nimbetSmoothCnt, kStateReadOpen);
    uint8_t key[8];
    nimbet::put_le32(key, entry->tableId);
    nimbet::put_le32(key + 4, entry->producerPid);
    s = db_read_obj(h, &kStateKeyDesc, key);
    uint32_t result = NIMBET_DB_ERR;
    if (s == 0) {
        // A failed field shows in its message only: the row was found.
        const uint32_t g = get_state(h, entry);
        if (g != 0)
            log_err("DB get vrf class state failed, ret = %d, tableId = %u, state = %u.", g, entry->tableId,
                    uint32_t{entry->vrfStateMachine});
        result = NIMBET_DB_OK;
    } else if (s != DB_RET_NO_RECORD) {
        log_err("Get vrf class state db fail. ret = %d", s);
        NIMBET_DB_RecordErrStat(DB_STAT_VRF_CLASS_STATE, DB_ERR_READ);
    }
    db_release_vrf_class_state_object(h);
    bump(g_nimbetSmoothCnt, kStateReadRelease);
    return result;
}

NIMBET_DB_API uint32_t NIMBET_DB_WriteClassItem(const NIMBET_DB_VRF_CLASS_STATE_ENTRY *entry) {
    if (entry == nullptr) return NIMBET_DB_ERR;
    DB_HANDLE h = 0;
    uint32_t s = db_create_vrf_class_state_obj(DB_OPEN_WRITE, 0, &h);
    if (s != 0) {
        log_err("Get create vrf class state obj fail. ret = %d", s);
        return NIMBET_DB_ERR;
    }
    bump(g_nimbetSmoothCnt, kWriteOpen);
    s = set_state(h, entry);
    if (s != 0) {
        db_release_vrf_class_state_object(h);  // not counted: nothing was written
        log_err("DB set vrf class state fail, ret = %d.", s);
        return NIMBET_DB_ERR;
    }
    s = db_write_obj(h);
    db_release_vrf_class_state_object(h);
    bump(g_nimbetSmoothCnt, kStateWriteRelease);
    if (nimbet::tolerated_ok(s, DB_STAT_VRF_CLASS_STATE)) return NIMBET_DB_OK;
    log_err("Write vrf class state db fail. ret = %d", s);
    NIMBET_DB_RecordErrStat(DB_STAT_VRF_CLASS_STATE, DB_ERR_WRITE);
    return NIMBET_DB_ERR;
}

// ---------------------------------------------------------------- vrf_class_data

NIMBET_DB_API void NIMBET_DB_SetVrfClassStateKey(uint32_t tableId, uint32_t producerPid, uint32_t vrId,
                                                 uint32_t vrfIndex, NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry) {
    if (entry == nullptr) return;
    entry->tableId = tableId;
    entry->producerPid = producerPid;
    entry->vrId = vrId;
    entry->vrfIndex = vrfIndex;
}

NIMBET_DB_API void NIMBET_DB_GetVrfClassStateItem(DB_HANDLE dbHandle, NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry) {
    if (entry == nullptr) return;
    uint32_t s = 0;
#define GET(db, rec) s |= db_get_vrf_class_data_##db(dbHandle, &entry->rec);
    NIMBET_VRF_CLASS_DATA_FIELDS(GET)
#undef GET
    if (s != 0) log_err("DB get vrf class data fail, ret = %d.", s);
}

NIMBET_DB_API uint32_t NIMBET_DB_WriteVrfClassState(const NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry) {
    if (entry == nullptr) return NIMBET_DB_ERR;
    DB_HANDLE h = 0;
    uint32_t s = db_create_vrf_class_data_obj(DB_OPEN_WRITE, 0, &h);
    if (s != 0) {
        log_err("Get create vrf class data obj fail. ret = %d", s);
        return NIMBET_DB_ERR;
    }
    bump(g_nimbetSmoothCnt, kWriteOpen);
    s = set_data(h, entry);
    if (s != 0) {
        db_release_vrf_class_data_object(h);  // not counted: nothing was written
        log_err("DB set vrf class data fail, ret = %d.", s);
        return NIMBET_DB_ERR;
    }
    s = db_write_obj(h);
    db_release_vrf_class_data_object(h);
    bump(g_nimbetSmoothCnt, kDataRelease);  // slot 5, not the state table's 3
    if (nimbet::tolerated_ok(s, DB_STAT_VRF_CLASS_DATA)) return NIMBET_DB_OK;
    log_err("Write vrf class data db fail. ret = %d", s);
    NIMBET_DB_RecordErrStat(DB_STAT_VRF_CLASS_DATA, DB_ERR_WRITE);
    return NIMBET_DB_ERR;
}

NIMBET_DB_API uint32_t NIMBET_DB_ReadVrfClassState(NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry) {
    if (entry == nullptr) return NIMBET_DB_ERR;
    DB_HANDLE h = 0;
    uint32_t s = db_create_vrf_class_data_obj(DB_OPEN_READ, 0, &h);
    if (s != 0) {
        log_err("Get create vrf class data obj fail. ret = %d", s);
        return NIMBET_DB_ERR;
    }
    bump(g_nimbetSmoothCnt, kDataOpen);
    uint8_t key[16];
    data_key(entry, key);
    s = db_read_obj(h, &kDataKeyDesc, key);
    uint32_t result = NIMBET_DB_ERR;
    if (s == 0) {
        NIMBET_DB_GetVrfClassStateItem(h, entry);
        result = NIMBET_DB_OK;
    } else if (s != DB_RET_NO_RECORD) {
        log_err("Get vrf class data db fail. ret = %d", s);
        NIMBET_DB_RecordErrStat(DB_STAT_VRF_CLASS_DATA, DB_ERR_READ);
    }
    db_release_vrf_class_data_object(h);
    bump(g_nimbetSmoothCnt, kDataRelease);
    return result;
}

NIMBET_DB_API uint32_t NIMBET_DB_DeleteVrfClassState(const NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry) {
    if (entry == nullptr) return NIMBET_DB_ERR;
    DB_HANDLE h = 0;
    uint32_t s = db_create_vrf_class_data_obj(DB_OPEN_REMOVE, 0, &h);
    if (s != 0) {
        log_err("Get create vrf class data obj fail. ret = %d", s);
        return NIMBET_DB_ERR;
    }
    bump(g_nimbetSmoothCnt, kDataOpen);
    uint8_t key[16];
    data_key(entry, key);
    s = db_remove_obj(h, &kDataKeyDesc, key);
    db_release_vrf_class_data_object(h);
    bump(g_nimbetSmoothCnt, kDataRelease);
    if (nimbet::tolerated_ok(s, DB_STAT_VRF_CLASS_DATA)) return NIMBET_DB_OK;
    log_err("Remove vrf class data db fail. ret = %d", s);
    NIMBET_DB_RecordErrStat(DB_STAT_VRF_CLASS_DATA, DB_ERR_REMOVE);
    return NIMBET_DB_ERR;
}

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatVrfClassStateIterator(uint32_t tableId, uint32_t producerPid) {
    uint8_t key[8];
    nimbet::put_le32(key, tableId);
    nimbet::put_le32(key + 4, producerPid);
    return nimbet::walk_create_keyed(kDataWalk, kDataWalkKeyDesc, key);
}

NIMBET_DB_API uint32_t NIMBET_DB_GetNextVrfClassState(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry) {
    if (iter == nullptr || entry == nullptr) {
        log_err("getnextvrfclassstate dbRes or entry is QEX_NULL. para is NULL");
        return NIMBET_DB_ERR;
    }
    return nimbet::walk_next_fill(kDataWalk, iter, entry, NIMBET_DB_GetVrfClassStateItem);
}

NIMBET_DB_API void NIMBET_DB_ReleaseVrfClassStateIterator(NIMBET_DB_ITER_INFO *iter) {
    nimbet::walk_release(kDataWalk, iter);
}

}  // extern "C"
