// vrf_class_state (one state machine per table id and producer PID) and
// vrf_class_data (per VRF of them), both written and read field by field
// and counted in g_nimbetSmoothCnt.
#include "../foundation/image_table.h"
#include "../foundation/walk.h"

namespace nimbet::smooth {
namespace {

// Slots of g_nimbetSmoothCnt.
constexpr unsigned kStateReadOpen = 0, kStateReadRelease = 1, kWriteOpen = 2, kStateWriteRelease = 3,
                   kDataOpen = 4, kDataRelease = 5, kDataIterCreate = 12, kDataIterRelease = 13;

constexpr uint32_t kStateKeyDesc = 0x00010008u, kDataKeyDesc = 0x00010010u, kDataWalkKeyDesc = 0x01090008u;

// The two class tables are written and read field by field with the same
// steps; a table supplies its accessors, key, messages and counter slots.
template <class T>
struct ClassTable {
    using Entry = typename T::Entry;

    static uint32_t read(Entry *rec) {
        if (rec == nullptr) return NIMBET_DB_ERR;
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_READ, 0, &h);
        if (s != 0) {
            T::log_read_open(s, *rec);
            return NIMBET_DB_ERR;
        }
        bump(g_nimbetSmoothCnt, T::slotReadOpen);
        uint8_t key[T::keyLen];
        T::put_key(*rec, key);
        s = db_read_obj(h, &T::keyDesc, key);
        uint32_t result = NIMBET_DB_ERR;
        if (s == 0) {
            T::get(h, rec);  // a failed field shows in its message only: the row was found
            result = NIMBET_DB_OK;
        } else if (s != DB_RET_NO_RECORD) {
            log_err(T::msgRead, s);
            NIMBET_DB_RecordErrStat(T::stat, DB_ERR_READ);
        }
        T::release(h);
        bump(g_nimbetSmoothCnt, T::slotReadRelease);
        return result;
    }

    static uint32_t write(const Entry *rec) {
        if (rec == nullptr) return NIMBET_DB_ERR;
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_WRITE, 0, &h);
        if (s != 0) {
            log_err(T::msgOpen, s);
            return NIMBET_DB_ERR;
        }
        bump(g_nimbetSmoothCnt, kWriteOpen);
        s = T::set(h, *rec);
        if (s != 0) {
            T::release(h);  // not counted: nothing was written
            log_err(T::msgSet, s);
            return NIMBET_DB_ERR;
        }
        s = db_write_obj(h);
        T::release(h);
        bump(g_nimbetSmoothCnt, T::slotWriteRelease);
        if (tolerated_ok(s, T::stat)) return NIMBET_DB_OK;
        log_err(T::msgWrite, s);
        NIMBET_DB_RecordErrStat(T::stat, DB_ERR_WRITE);
        return NIMBET_DB_ERR;
    }
};

struct State {
    using Entry = NIMBET_DB_VRF_CLASS_STATE_ENTRY;
    static constexpr auto create = db_create_vrf_class_state_obj;
    static constexpr auto release = db_release_vrf_class_state_object;
    static constexpr uint32_t keyLen = 8, keyDesc = kStateKeyDesc, stat = DB_STAT_VRF_CLASS_STATE;
    static constexpr unsigned slotReadOpen = kStateReadOpen, slotReadRelease = kStateReadRelease,
                              slotWriteRelease = kStateWriteRelease;

    static void put_key(const Entry &r, uint8_t *k) {
        put_le32(k, r.tableId);
        put_le32(k + 4, r.producerPid);
    }
    static uint32_t set(DB_HANDLE h, const Entry &r) {
        uint32_t s = db_set_vrf_class_state_producer_pid(h, r.producerPid);
        s |= db_set_vrf_class_state_table_id(h, r.tableId);
        s |= db_set_vrf_class_state_vrf_state_machine(h, r.vrfStateMachine);
        s |= db_set_vrf_class_state_vrf_state_version(h, r.vrfStateVersion);
        return s;
    }
    static void get(DB_HANDLE h, Entry *r) {
        uint32_t s = db_get_vrf_class_state_producer_pid(h, &r->producerPid);
        s |= db_get_vrf_class_state_table_id(h, &r->tableId);
        s |= db_get_vrf_class_state_vrf_state_machine(h, &r->vrfStateMachine);
        s |= db_get_vrf_class_state_vrf_state_version(h, &r->vrfStateVersion);
        if (s != 0)
            log_err("DB get vrf class state failed, ret = %d, tableId = %u, state = %u.", s, r->tableId,
                    uint32_t{r->vrfStateMachine});
    }
    static void log_read_open(uint32_t s, const Entry &r) {
        log_err("Get create vrf class state obj failed. ret = %d, tableId = %u, state = %u.", s, r.tableId,
                uint32_t{r.vrfStateMachine});
    }
    static constexpr const char *msgOpen = "Get create vrf class state obj fail. ret = %d";
    static constexpr const char *msgSet = "DB set vrf class state fail, ret = %d.";
    static constexpr const char *msgRead = "Get vrf class state db fail. ret = %d";
    static constexpr const char *msgWrite = "Write vrf class state db fail. ret = %d";
};

// The ten fields of vrf_class_data, in record order.
#define NIMBET_VRF_CLASS_DATA_FIELDS(X)                                                                             \
    X(table_id, tableId) X(producer_pid, producerPid) X(vr_id, vrId) X(vrf_index, vrfIndex)                       \
    X(topology_id, topologyId) X(vrf_state, vrfState) X(vrf_data_machine, vrfDataMachine)                         \
    X(vrf_state_version, vrfStateVersion) X(vrf_data_version, vrfDataVersion) X(smooth_flag, smoothFlag)

// The remove by key is the common one of ImageTable; its open and release
// count in slots 4 and 5, as read and remove share them here.
struct Data : StatusMessages<Data> {
    using Entry = NIMBET_DB_VRF_CLASS_DATA_ENTRY;
    static constexpr uint32_t *counters = g_nimbetSmoothCnt;
    static constexpr auto create = db_create_vrf_class_data_obj;
    static constexpr auto release = db_release_vrf_class_data_object;
    static constexpr uint32_t keyLen = 16, keyDesc = kDataKeyDesc, stat = DB_STAT_VRF_CLASS_DATA;
    // One pair of slots for read, remove and the write's release (5, not 3).
    static constexpr unsigned slotReadOpen = kDataOpen, slotReadRelease = kDataRelease, slotWriteRelease = kDataRelease;

    static void put_key(const Entry &r, uint8_t *k) {
        put_le32(k + 0, r.tableId);
        put_le32(k + 4, r.producerPid);
        put_le32(k + 8, r.vrId);
        put_le32(k + 12, r.vrfIndex);
    }
    static uint32_t build_key(const Entry &r, uint8_t *k) {
        put_key(r, k);
        return 0;
    }
    static uint32_t set(DB_HANDLE h, const Entry &r) {
        uint32_t s = 0;
#define SET(db, rec) s |= db_set_vrf_class_data_##db(h, r.rec);
        NIMBET_VRF_CLASS_DATA_FIELDS(SET)
#undef SET
        return s;
    }
    static void get(DB_HANDLE h, Entry *r) { NIMBET_DB_GetVrfClassStateItem(h, r); }
    static void log_read_open(uint32_t s, const Entry &) { log_err(msgOpen, s); }
    static constexpr const char *msgOpen = "Get create vrf class data obj fail. ret = %d";
    static constexpr const char *msgSet = "DB set vrf class data fail, ret = %d.";
    static constexpr const char *msgRead = "Get vrf class data db fail. ret = %d";
    static constexpr const char *msgWrite = "Write vrf class data db fail. ret = %d";
    static constexpr const char *msgRemove = "Remove vrf class data db fail. ret = %d";
};

// The walk over one (table id, producer PID): its step failures count
// under the state table's id.
constexpr Walk kDataWalk = {.create = db_create_vrf_class_data_obj,
                            .release = db_release_vrf_class_data_object,
                            .stat = DB_STAT_VRF_CLASS_STATE,
                            .msgCreateFail = nullptr,
                            .msgNext = "Get next vrf class state db fail. ret = %d",
                            .msgRead = nullptr,
                            .counters = g_nimbetSmoothCnt,
                            .slotCreate = kDataIterCreate,
                            .slotRelease = kDataIterRelease,
                            .msgKeyedOpen = Data::msgOpen};

}  // namespace
}  // namespace nimbet::smooth

using namespace nimbet::smooth;
using nimbet::bump;
using nimbet::log_err;

extern "C" {

// ---------------------------------------------------------------- vrf_class_state

NIMBET_DB_API uint32_t NIMBET_DB_ReadClassItem(NIMBET_DB_VRF_CLASS_STATE_ENTRY *entry) {
    return ClassTable<State>::read(entry);
}

NIMBET_DB_API uint32_t NIMBET_DB_WriteClassItem(const NIMBET_DB_VRF_CLASS_STATE_ENTRY *entry) {
    return ClassTable<State>::write(entry);
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
    return ClassTable<Data>::write(entry);
}

NIMBET_DB_API uint32_t NIMBET_DB_ReadVrfClassState(NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry) {
    return ClassTable<Data>::read(entry);
}

NIMBET_DB_API uint32_t NIMBET_DB_DeleteVrfClassState(const NIMBET_DB_VRF_CLASS_DATA_ENTRY *entry) {
    static_assert(kDataOpen == 4 && kDataRelease == 5, "the remove counts in the common slots");
    return nimbet::ImageTable<Data>::remove(entry);
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
