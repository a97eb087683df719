// ospf_nvo3: per virtual router, the OSPF/OSPFv3 overlay state words and
// the time stamps of the events that changed them.
#include "../foundation/image_table.h"
#include "../foundation/walk.h"

namespace nimbet::ospfnvo3 {
namespace {

constexpr uint32_t kRowLen = 112;
constexpr uint32_t kKeyDesc = 0x00010004u;
constexpr uint32_t kStat = DB_STAT_OSPF_NVO3;

// The sixteen state words, in record and row order from offset 4.
#define NIMBET_OSPF_NVO3_STATE_WORDS(X)                                                                            \
    X(ospf_disable) X(ospf_disable_status) X(ospf_disable_ret) X(ospfv3_disable) X(ospfv3_disable_status)         \
    X(ospfv3_disable_ret) X(ospf_discard) X(ospf_discard_status) X(ospf_discard_ret) X(ospfv3_discard)            \
    X(ospfv3_discard_status) X(ospfv3_discard_ret) X(ospf_bypass_status) X(ospf_bypass_ret)                       \
    X(ospfv3_bypass_status) X(ospfv3_bypass_ret)

// The fields after the state words with their row offsets.
#define NIMBET_OSPF_NVO3_EVENT_FIELDS(X)                                                                           \
    X(time_stamp_create, 68) X(if_update, 76) X(if_update_time, 80) X(peerlink_update, 88)                        \
    X(peerlink_update_time, 92) X(peerlink_del, 100) X(peerlink_del_time, 104)

void put_field(uint8_t *p, uint32_t v) { put_le32(p, v); }
void put_field(uint8_t *p, int64_t v) { put_le64(p, v); }

void set_all(uint32_t flags, uint8_t *img, const NIMBET_DB_OSPF_NVO3_ENTRY *r) {
    const int64_t t = NIMBET_DB_GetSysTime();  // one time for every stamp of the call
    put_le32(img, r->vrId);
    uint8_t *p = img + 4;
#define PUT_STATE(f)   \
    put_le32(p, r->f); \
    p += 4;
    NIMBET_OSPF_NVO3_STATE_WORDS(PUT_STATE)
#undef PUT_STATE
    NIMBET_DB_OSPF_NVO3_ENTRY stamped = *r;
    if (flags & OSPF_NVO3_STAMP_CREATE) stamped.time_stamp_create = t;
    if (flags & OSPF_NVO3_STAMP_IF_UPDATE) stamped.if_update_time = t;
    if (flags & OSPF_NVO3_STAMP_PEERLINK_UPDATE) stamped.peerlink_update_time = t;
    if (flags & OSPF_NVO3_STAMP_PEERLINK_DEL) stamped.peerlink_del_time = t;
#define PUT_EVENT(f, off) put_field(img + (off), stamped.f);
    NIMBET_OSPF_NVO3_EVENT_FIELDS(PUT_EVENT)
#undef PUT_EVENT
}

uint32_t read_fields(NIMBET_DB_OSPF_NVO3_ENTRY *r, DB_HANDLE h) {
    if (r == nullptr) return NIMBET_DB_ERR;
    uint32_t s = 0;
#define GET(f) s |= db_get_ospf_nvo3_##f(h, &r->f);
    NIMBET_OSPF_NVO3_STATE_WORDS(GET)
#define GET_EVENT(f, off) GET(f)
    NIMBET_OSPF_NVO3_EVENT_FIELDS(GET_EVENT)
#undef GET_EVENT
#undef GET
    return s;
}

void to_item(const uint8_t *img, NIMBET_DB_OSPF_NVO3_WALK_ITEM *item) {
    item->vrId = get_le32(img);
    item->itemType = NIMBET_DB_OSPF_NVO3_ITEM_TYPE;
    item->ospf_disable = get_le32(img + 4);
    item->ospfv3_disable = get_le32(img + 16);
    item->ospf_discard = get_le32(img + 28);
    item->ospfv3_discard = get_le32(img + 40);
}

struct Ospf : ImageTableDefaults {
    using Entry = NIMBET_DB_OSPF_NVO3_ENTRY;
    static constexpr uint32_t rowLen = kRowLen, keyLen = 4, keyDesc = kKeyDesc, stat = kStat;
    static constexpr auto create = db_create_ospf_nvo3_obj;
    static constexpr auto release = db_release_ospf_nvo3_object;
    static constexpr auto set_all = db_set_ospf_nvo3_all_fields;

    static uint32_t build_key(uint32_t vrId, uint8_t *key) {
        put_le32(key, vrId);
        return 0;
    }
    static void log(Path p, uint32_t s, const Entry &r) { log(p, s, r.vrId); }
    static void log(Path p, uint32_t s, uint32_t vrId) {
        switch (p) {
            case Path::WriteOpen: return log_err("Write ospfnvo3 create obj failed. ret = %u, vrId = %u.", s, vrId);
            case Path::WriteFail: return log_err("Write ospf nvo3 db failed. ret = %u, vrId = %u.", s, vrId);
            case Path::DeleteOpen: return log_err("Delete ospf nvo3 create obj failed. ret = %d, vrId = %u.", s, vrId);
            case Path::RemoveFail: return log_err("Remove ospf nvo3 db failed. ret = %d, vrId = %u.", s, vrId);
            default: return;  // the read goes field by field, below
        }
    }
};
using Table = ImageTable<Ospf>;

constexpr Walk kWalk = {db_create_ospf_nvo3_obj,        db_release_ospf_nvo3_object,
                        kStat,                          nullptr,
                        "Get next ospf nvo3 db fail. ret = %d", "Get ospf nvo3 db fail. ret = %d",
                        nullptr,                        0,
                        0};

}  // namespace
}  // namespace nimbet::ospfnvo3

using namespace nimbet::ospfnvo3;
using nimbet::log_err;

extern "C" {

NIMBET_DB_API void NIMBET_DB_WriteEntryOspfNvo3SetAllFiled(uint32_t stampFlags, uint8_t *rowImage,
                                                           const NIMBET_DB_OSPF_NVO3_ENTRY *entry) {
    if (rowImage != nullptr && entry != nullptr) set_all(stampFlags, rowImage, entry);
}

NIMBET_DB_API uint32_t NIMBET_DB_WriteEntryOspfNvo3(uint32_t stampFlags, const NIMBET_DB_OSPF_NVO3_ENTRY *entry) {
    return Table::write(entry, [stampFlags](const NIMBET_DB_OSPF_NVO3_ENTRY *r, uint8_t *img) {
        set_all(stampFlags, img, r);
    });
}

NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryOspfNvo3Fileds(NIMBET_DB_OSPF_NVO3_ENTRY *entry, DB_HANDLE dbHandle) {
    return read_fields(entry, dbHandle);
}

NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryOspfNvo3(NIMBET_DB_OSPF_NVO3_ENTRY *entry) {
    if (entry == nullptr) return NIMBET_DB_ERR;
    DB_HANDLE h = 0;
    uint32_t s = db_create_ospf_nvo3_obj(DB_OPEN_READ, 0, &h);
    if (s != 0) {
        log_err("Read ospf nvo3 disable create obj failed. ret = %d, vrId = %u.", s, entry->vrId);
        return NIMBET_DB_ERR;
    }
    uint8_t key[4];
    nimbet::put_le32(key, entry->vrId);
    s = db_read_obj(h, &kKeyDesc, key);
    uint32_t result = NIMBET_DB_ERR;
    if (s == 0) {
        result = read_fields(entry, h);
    } else if (s != DB_RET_NO_RECORD) {
        log_err("Get ospf nvo3 disable db failed. ret = %d, vrId = %u.", s, entry->vrId);
        NIMBET_DB_RecordErrStat(kStat, DB_ERR_READ);
    }
    db_release_ospf_nvo3_object(h);
    return result;
}

NIMBET_DB_API uint32_t NIMBET_DB_DeleteOspfNvo3(uint32_t vrId) { return Table::remove(&vrId); }

NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatOspfNvo3Iterator(void) { return nimbet::walk_create(kWalk); }

NIMBET_DB_API uint32_t NIMBET_DB_GetNextOspfNvo3(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_OSPF_NVO3_WALK_ITEM *item) {
    return nimbet::walk_next_image<kRowLen>(kWalk, iter, item, to_item);
}

NIMBET_DB_API void NIMBET_DB_ReleaseOspfNvo3Iterator(NIMBET_DB_ITER_INFO *iter) { nimbet::walk_release(kWalk, iter); }

}  // extern "C"
