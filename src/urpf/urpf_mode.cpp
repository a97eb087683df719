// urpf_mode: URPF mode rows stamped with their write time. Departures from
// the common steps: a key read without a row answers 60, a failed walk step
// answers the database status, and the by-group walk takes its handle from
// the URPF memory service while the release gives it back to the general
// one (the host services accept each other's blocks).
#include "../foundation/image_table.h"
#include "../foundation/walk.h"

namespace nimbet::urpf {
namespace {

struct Mode : StatusMessages<Mode> {
    using Entry = NIMBET_DB_URPF_MODE_ENTRY;
    static constexpr uint32_t rowLen = 36, keyLen = 9, keyDesc = 0x00010009u, stat = DB_STAT_URPF_MODE;
    static constexpr uint32_t missingRow = NIMBET_DB_ITER_END;
    static constexpr auto create = db_create_urpf_mode_obj;
    static constexpr auto release = db_release_urpf_mode_object;
    static constexpr auto set_all = db_set_urpf_mode_all_fields;

    static void fill(const Entry *r, uint8_t *img) {
        put_le32(img + 0, r->key1);
        put_le32(img + 4, r->key2);
        img[8] = r->key3;
        img[9] = r->svcStatus;
        img[12] = r->value1;
        img[13] = r->value2;
        put_le16(img + 14, r->value3);
        put_le32(img + 16, r->value4);
        put_le32(img + 20, r->flags);
        put_le32(img + 24, r->tableSmoothId);
        put_le64(img + 28, NIMBET_DB_GetSysTime());
    }
    static void get(const uint8_t *img, Entry *r) {
        r->key1 = get_le32(img + 0);
        r->key2 = get_le32(img + 4);
        r->key3 = img[8];
        r->svcStatus = img[9];
        r->value1 = img[12];
        r->value2 = img[13];
        r->value3 = get_le16(img + 14);
        r->value4 = get_le32(img + 16);
        r->flags = get_le32(img + 20);
        r->tableSmoothId = get_le32(img + 24);
    }
    static uint32_t build_key(const Entry &r, uint8_t *k) {
        put_le32(k, r.key1);
        put_le32(k + 4, r.key2);
        k[8] = r.key3;
        return 0;
    }
    static constexpr const char *msgOpen = "Get create urpf mode obj fail. ret = %d";
    static constexpr const char *msgWrite = "Write urpf mode db fail. ret = %d";
    static constexpr const char *msgRead = "Get urpf mode db fail. ret = %d";
    static constexpr const char *msgRemove = "Remove urpf mode db fail. ret = %d";
};

using Table = ImageTable<Mode>;

constexpr Walk kWalk = {.create = Mode::create,
                        .release = Mode::release,
                        .stat = Mode::stat,
                        .msgCreateFail = nullptr,
                        .msgNext = "Get next urpf mode db fail. ret = %d",
                        .msgRead = Mode::msgRead,
                        .counters = nullptr,
                        .slotCreate = 0,
                        .slotRelease = 0,
                        .stepFailPassesStatus = true,
                        .alloc = NIMBET_URPF_AllocMem,
                        .freeFailed = NIMBET_URPF_FreeMem,
                        .freeReleased = NIMBET_FreeMem};

}  // namespace
}  // namespace nimbet::urpf

using namespace nimbet::urpf;

extern "C" {

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateUrpfModeIterator(void) { return nimbet::walk_create(kWalk); }

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreateUrpfModeIteratorByGroupId(uint32_t groupId) {
    uint8_t key[4];
    nimbet::put_le32(key, groupId);
    return nimbet::walk_create_keyed(kWalk, 0x01090004u, key);
}

NIMBET_DB_API void NIMBET_DB_ReleaseUrpfModeIterator(NIMBET_DB_ITER_INFO *iter) { nimbet::walk_release(kWalk, iter); }

NIMBET_DB_API uint32_t NIMBET_DB_GetNextUrpfMode(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_URPF_MODE_ENTRY *entry) {
    return nimbet::walk_next_image<Mode::rowLen>(kWalk, iter, entry, Mode::get);
}

NIMBET_DB_API uint32_t NIMBET_DB_ReadUrpfMode(NIMBET_DB_URPF_MODE_ENTRY *entry) { return Table::read(entry); }
NIMBET_DB_API uint32_t NIMBET_DB_WriteUrpfMode(const NIMBET_DB_URPF_MODE_ENTRY *entry) { return Table::write(entry); }
NIMBET_DB_API uint32_t NIMBET_DB_DeleteUrpfMode(const NIMBET_DB_URPF_MODE_ENTRY *entry) { return Table::remove(entry); }

// All four setters are called whatever the earlier ones answer.
NIMBET_DB_API uint32_t NIMBET_DB_UpdateUrpfValid(const NIMBET_DB_URPF_MODE_ENTRY *entry) {
    return Table::update(
        entry,
        [](DB_HANDLE h, const NIMBET_DB_URPF_MODE_ENTRY &r) {
            uint32_t s = db_set_urpf_mode_flags(h, r.flags);
            s |= db_set_urpf_mode_svcStatus(h, r.svcStatus);
            s |= db_set_urpf_mode_time_stamp_create(h, NIMBET_DB_GetSysTime());
            s |= db_set_urpf_mode_tableSmoothId(h, r.tableSmoothId);
            return s;
        },
        Mode::msgOpen, "DB set urpf mode flags fail, ret = %d.", "Update urpf mode db fail. ret = %d");
}

NIMBET_DB_API void NIMBET_SetUrpfModeCfgItemLite(const NIMBET_DB_URPF_MODE_ENTRY *entry, uint8_t *rowImage) {
    Table::fill(entry, rowImage);
}
NIMBET_DB_API void NIMBET_DB_GetUrpfInfo(const uint8_t *rowImage, NIMBET_DB_URPF_MODE_ENTRY *entry) {
    Table::get(rowImage, entry);
}

}  // extern "C"
