// isis_sess: IS-IS sockets, keyed by interface and MAC addresses. isisId
// stands between the two MACs in the row; in the record it follows attr1.
#include <cstring>

#include "../foundation/addrtext.h"
#include "session.h"

namespace nimbet::session {
namespace {

struct Isis : SessionDefaults {
    using Entry = NIMBET_DB_ISIS_SESS_ENTRY;
    static constexpr uint32_t rowLen = 84, keyLen = 22, keyDesc = 0x00010016u, stat = DB_STAT_ISIS_SESS;
    static constexpr auto create = db_create_isis_sess_obj;
    static constexpr auto release = db_release_isis_sess_object;
    static constexpr auto set_all = db_set_isis_sess_all_fields;
    static constexpr unsigned slotCreate = 16, slotRelease = 17;

    static void put_key_numbers(const Entry &r, uint8_t *k) {
        put_le32(k + 0, r.sockId);
        put_le32(k + 4, r.ifIndex);
        put_le16(k + 14, r.isisId);
    }
    static uint32_t build_key(const Entry &r, uint8_t *k) {
        put_key_numbers(r, k);
        return copy_checked(k + 8, r.macAddr) + copy_checked(k + 16, r.srcMacAddr);
    }
    static void fill(const Entry *r, uint8_t *img) {
        put_key_numbers(*r, img);
        std::memcpy(img + 8, r->macAddr, 6);
        std::memcpy(img + 16, r->srcMacAddr, 6);
        put_le32(img + 24, r->attr1);
        put_le32(img + 56, r->attr2);
        put_le32(img + 60, r->attr3);
        stamp(img, rowLen);
    }
    static void get(const uint8_t *img, Entry *r) {
        r->sockId = get_le32(img + 0);
        r->ifIndex = get_le32(img + 4);
        std::memcpy(r->macAddr, img + 8, 6);
        r->isisId = get_le16(img + 14);
        std::memcpy(r->srcMacAddr, img + 16, 6);
        r->attr1 = get_le32(img + 24);
        r->attr2 = get_le32(img + 56);
        r->attr3 = get_le32(img + 60);
    }
    static void copy_key(Entry *d, const Entry *s) {
        d->sockId = s->sockId;
        d->ifIndex = s->ifIndex;
        std::memcpy(d->macAddr, s->macAddr, 6);
        std::memcpy(d->srcMacAddr, s->srcMacAddr, 6);
        d->isisId = s->isisId;
    }

    static void log(Path p, uint32_t s, const Entry &r) {
        const uint32_t id = r.isisId;
        if (p == Path::ReadMemcpy || p == Path::DeleteMemcpy) {
            return log_err(p == Path::ReadMemcpy
                               ? "nimbet read entry isis memcpy failed. ret = %d, sockId = %u, ifIndex = %u, isisId= %u."
                               : "nimbet delete isis memcpy failed. ret = %d, sockId = %u, ifIndex = %u, isisId = %u.",
                           s, r.sockId, r.ifIndex, id);
        }
        // Write and read messages write "isisId= %u", delete messages "isisId = %u".
        static constexpr const char *msg[] = {
            "Write isis create obj failed. ret = %d, sockId = %u, ifIndex = %u, isisId= %u, macAddr = %s, srcMacAddr = %s.",
            "Write isis db failed. ret = %d, sockId = %u, ifIndex = %u, isisId= %u, macAddr = %s, srcMacAddr = %s.",
            nullptr,
            "Read isis create obj failed. ret = %d, sockId = %u, ifIndex = %u, isisId= %u, macAddr = %s, srcMacAddr = %s.",
            "Get isis sess db failed. ret = %d, sockId = %u, ifIndex = %u, isisId= %u, macAddr = %s, srcMacAddr = %s.",
            nullptr,
            "Delete issi create obj failed. ret = %d, sockId = %u, ifIndex = %u, isisId = %u, macAddr = %s, srcMacAddr = %s.",
            "Remove isis sess db failed. ret = %d, sockId = %u, ifIndex = %u, isisId = %u, macAddr = %s, srcMacAddr = %s.",
        };
        const MacText mac(r.macAddr), srcMac(r.srcMacAddr);
        log_err(msg[static_cast<int>(p)], s, r.sockId, r.ifIndex, id, mac.c_str(), srcMac.c_str());
    }
    static constexpr const char *msgShortRead = "Get isis sess db fail. ret = %d";
    static constexpr const char *msgNext = "Get next isis session db fail. ret = %d";
};

using S = Session<Isis>;

}  // namespace
}  // namespace nimbet::session

using nimbet::session::S;

extern "C" {

NIMBET_SESSION_ENTRIES(S, NIMBET_DB_ISIS_SESS_ENTRY,
    NIMBET_DB_SetEntryKeyIsis,
    SESSION_SetIsisItemLite,
    NIMBET_DB_WriteEntryIsis,
    NIMBET_DB_GetIsisSess,
    NIMBET_DB_GetIsisByObject,
    NIMBET_DB_ReadEntryIsis,
    NIMBET_DB_DeleteEntryIsis)
NIMBET_SESSION_WALK_ENTRIES(S, NIMBET_DB_ISIS_SESS_ENTRY,
    NIMBET_DB_CreatIsisSessIterator,
    NIMBET_DB_GetNextIsisSess,
    NIMBET_DB_ReleaseIsisSessIterator)

}  // extern "C"
