// group_sess: IPv4 group sockets. In the row srcAddr (12) comes before
// attr1 (16), the other way round from the record.
#include "session.h"

namespace nimbet::session {
namespace {

struct Group : SessionDefaults {
    using Entry = NIMBET_DB_GROUP_SESS_ENTRY;
    static constexpr uint32_t rowLen = 84, keyLen = 16, keyDesc = 0x00010010u, stat = DB_STAT_GROUP_SESS;
    static constexpr auto create = db_create_group_sess_obj;
    static constexpr auto release = db_release_group_sess_object;
    static constexpr auto set_all = db_set_group_sess_all_fields;
    static constexpr unsigned slotCreate = 14, slotRelease = 15;

    static void put_key(const Entry &r, uint8_t *k) {
        put_le32(k + 0, r.sockId);
        k[4] = r.groupIp;
        k[5] = r.protocol;
        put_le16(k + 6, r.srcPort);
        put_le32(k + 8, r.ifIndex);
        put_le32(k + 12, r.srcAddr);
    }
    static uint32_t build_key(const Entry &r, uint8_t *k) {
        put_key(r, k);
        return 0;
    }
    static void fill(const Entry *r, uint8_t *img) {
        put_key(*r, img);
        put_le16(img + 16, r->attr1);
        put_le32(img + 36, r->attr2);
        put_le32(img + 40, r->attr3);
        put_le32(img + 56, r->attr4);
        put_le32(img + 60, r->attr5);
        stamp(img, rowLen);
    }
    static void get(const uint8_t *img, Entry *r) {
        r->sockId = get_le32(img + 0);
        r->groupIp = img[4];
        r->protocol = img[5];
        r->srcPort = get_le16(img + 6);
        r->ifIndex = get_le32(img + 8);
        r->srcAddr = get_le32(img + 12);
        r->attr1 = get_le16(img + 16);
        r->attr2 = get_le32(img + 36);
        r->attr3 = get_le32(img + 40);
        r->attr4 = get_le32(img + 56);
        r->attr5 = get_le32(img + 60);
    }
    static void copy_key(Entry *d, const Entry *s) {
        d->sockId = s->sockId;
        d->groupIp = s->groupIp;
        d->protocol = s->protocol;
        d->srcPort = s->srcPort;
        d->ifIndex = s->ifIndex;
        d->srcAddr = s->srcAddr;
    }

    static void log(Path p, uint32_t s, const Entry &r) {
        static constexpr const char *msg[] = {
            "Write group create obj failed. ret = %u, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
            "Write group sess db failed. ret = %u, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
            nullptr,  // no byte arrays in the group key
            "Read group create obj failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
            "Get group sess db failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
            nullptr,
            "Delete group create obj failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
            "Remove group sess db failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
        };
        log_err(msg[static_cast<int>(p)], s, r.sockId, uint32_t{r.srcPort}, r.ifIndex, uint32_t{r.protocol},
                uint32_t{r.groupIp}, r.srcAddr);
    }
    static constexpr const char *msgDeleteNull = "nimbet db deleteentrygroup entry is QEX_NULL, para is NULL";
    static constexpr const char *msgShortRead = "Get group sess db fail. ret = %d";
    static constexpr const char *msgNext = "Get next group sess db fail. ret = %d";
};

using S = Session<Group>;

}  // namespace
}  // namespace nimbet::session

using nimbet::session::S;

extern "C" {

NIMBET_SESSION_ENTRIES(S, NIMBET_DB_GROUP_SESS_ENTRY,
    NIMBET_DB_SetEntryKeyGroup,
    SESSION_SetGroupItemLite,
    NIMBET_DB_WriteEntryGroup,
    NIMBET_DB_GetGroupSess,
    NIMBET_DB_GetGroupByObject,
    NIMBET_DB_ReadEntryGroup,
    NIMBET_DB_DeleteEntryGroup)
NIMBET_SESSION_WALK_ENTRIES(S, NIMBET_DB_GROUP_SESS_ENTRY,
    NIMBET_DB_CreatGroupSessIterator,
    NIMBET_DB_GetNextGroupSess,
    NIMBET_DB_ReleaseGroupSessIterator)

}  // extern "C"
