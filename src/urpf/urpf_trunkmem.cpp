// urpf_trunkmem: one row per member interface of a trunk. The row holds
// memberIfIndex before trunkIfIndex (the record has them the other way);
// walks and the member listing take handles from the URPF memory service.
#include "../foundation/image_table.h"
#include "../foundation/walk.h"

namespace nimbet::urpf {
namespace {

struct TrunkMem : StatusMessages<TrunkMem> {
    using Entry = NIMBET_DB_URPF_TRUNKMEM_ENTRY;
    static constexpr uint32_t rowLen = 20, keyLen = 4, keyDesc = 0x00010004u, stat = DB_STAT_URPF_TRUNKMEM;
    static constexpr uint32_t missingRow = NIMBET_DB_ITER_END;
    static constexpr bool openFailPassesStatus = true;  // add and look-up; the remove still answers 1
    static constexpr auto create = db_create_urpf_trunkmem_obj;
    static constexpr auto release = db_release_urpf_trunkmem_object;
    static constexpr auto set_all = db_set_urpf_trunkmem_all_fields;

    static void fill(const Entry *r, uint8_t *img) {
        put_le32(img + 0, r->memberIfIndex);
        put_le32(img + 4, r->trunkIfIndex);
        put_le32(img + 8, r->flag);
        put_le64(img + 12, NIMBET_DB_GetSysTime());
    }
    static void get(const uint8_t *img, Entry *r) {
        r->memberIfIndex = get_le32(img + 0);
        r->trunkIfIndex = get_le32(img + 4);
        r->flag = get_le32(img + 8);
    }
    static uint32_t build_key(const Entry &r, uint8_t *k) { return build_key(r.memberIfIndex, k); }
    static uint32_t build_key(uint32_t member, uint8_t *k) {
        put_le32(k, member);
        return 0;
    }
    static constexpr const char *msgOpen = "Create urpf trunkmem db obj fail. ret = %d";
    static constexpr const char *msgWrite = "Write urpf trunkmem db fail. ret = %d";
    static constexpr const char *msgRead = "Get urpf trunkmem db fail. ret = %d";
    static constexpr const char *msgRemove = "Remove urpf trunkmem db fail. ret = %d";
};

using Table = ImageTable<TrunkMem>;

// A row gone between the step and its read ends the walk (60), as the
// read-status mapping says.
constexpr Walk kWalk = {.create = TrunkMem::create,
                        .release = TrunkMem::release,
                        .stat = TrunkMem::stat,
                        .msgCreateFail = nullptr,
                        .msgNext = "Get next urpf trunkmem db failed. ret = %d",
                        .msgRead = TrunkMem::msgRead,
                        .counters = nullptr,
                        .slotCreate = 0,
                        .slotRelease = 0,
                        .stepFailPassesStatus = true,
                        .rowGone = NIMBET_DB_ITER_END,
                        .alloc = NIMBET_URPF_AllocMem,
                        .freeFailed = NIMBET_URPF_FreeMem,
                        .freeReleased = NIMBET_URPF_FreeMem};

}  // namespace
}  // namespace nimbet::urpf

using namespace nimbet::urpf;

extern "C" {

NIMBET_DB_API uint32_t NIMBET_DB_ProcUrpfTrunkMemDBReadRet(uint32_t ret) {
    if (ret == 0) return NIMBET_DB_OK;
    if (ret == DB_RET_NO_RECORD) return NIMBET_DB_ITER_END;
    nimbet::log_err(TrunkMem::msgRead, ret);
    NIMBET_DB_RecordErrStat(TrunkMem::stat, DB_ERR_READ);
    return NIMBET_DB_ERR;
}

NIMBET_DB_API uint32_t NIMBET_DB_AddTrunkMember(const NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry) {
    return Table::write(entry);
}

NIMBET_DB_API uint32_t NIMBET_DB_DelTrunkMember(uint32_t memberIfIndex) { return Table::remove(&memberIfIndex); }

NIMBET_DB_API uint32_t NIMBET_DB_GetRecordByMember(uint32_t memberIfIndex, NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry) {
    return Table::read(&memberIfIndex, entry);
}

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateUrpfTrunkIfIndexIterator(uint32_t trunkIfIndex) {
    uint8_t key[4];
    nimbet::put_le32(key, trunkIfIndex);
    return nimbet::walk_create_keyed(kWalk, 0x01090004u, key);
}

NIMBET_DB_API void NIMBET_DB_ReleaseUrpfTrunkIterator(NIMBET_DB_ITER_INFO *iter) { nimbet::walk_release(kWalk, iter); }

NIMBET_DB_API uint32_t NIMBET_DB_GetNextUrpfTrunk(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry) {
    return nimbet::walk_next_image<TrunkMem::rowLen>(kWalk, iter, entry, TrunkMem::get);
}

NIMBET_DB_API uint32_t NIMBET_DB_GetTrunkMemByIfIndex(uint32_t trunkIfIndex, uint32_t maxNum, uint32_t *members,
                                                      uint32_t *count) {
    if (members == nullptr || count == nullptr) return NIMBET_DB_ERR;
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreateUrpfTrunkIfIndexIterator(trunkIfIndex);
    if (it == nullptr) {
        NIMBET_DIAG_Record(1, 0, 2, 1, "nimbet urpf trunkmem get db failed, handle is NULL, trunkIfIndex = %u",
                           trunkIfIndex);
        return NIMBET_DB_ERR;
    }
    // Failures inside the walk are logged and counted by the step; the
    // caller gets the members found so far.
    uint32_t n = 0;
    while (n < maxNum) {
        NIMBET_DB_URPF_TRUNKMEM_ENTRY rec = {};
        if (NIMBET_DB_GetNextUrpfTrunk(it, &rec) != NIMBET_DB_OK) break;
        members[n++] = rec.memberIfIndex;
    }
    NIMBET_DB_ReleaseUrpfTrunkIterator(it);
    *count = n;
    return NIMBET_DB_OK;
}

NIMBET_DB_API uint32_t NIMBET_DB_UpdateUrpfTrunkMemValid(const NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry) {
    return Table::update(
        entry,
        [](DB_HANDLE h, const NIMBET_DB_URPF_TRUNKMEM_ENTRY &r) {
            uint32_t s = db_set_urpf_trunkmem_flag(h, r.flag);
            s |= db_set_urpf_trunkmem_time_stamp_create(h, NIMBET_DB_GetSysTime());
            return s;
        },
        "Create urpf trunkmem db obj failed, ret = %d.", "Set urpf trunkmem db flag failed, ret = %d",
        "Update urpf trunkmem db fail. ret = %d");
}

NIMBET_DB_API void NIMBET_DB_SetTrunkMemInfo(const NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry, uint8_t *rowImage) {
    Table::fill(entry, rowImage);
}
NIMBET_DB_API void NIMBET_DB_GetTrunkMemnfo(const uint8_t *rowImage, NIMBET_DB_URPF_TRUNKMEM_ENTRY *entry) {
    Table::get(rowImage, entry);
}

}  // extern "C"
