// group6_sess: IPv6 group sockets. The row orders the key as sockId,
// groupIp, ifIndex, srcAddr, srcPort, protocol (the record has protocol and
// port first); the caller's 16-bit field after attr1 is never touched.
#include <cstring>

#include "../foundation/addrtext.h"
#include "session.h"

namespace nimbet::session {
namespace {

struct Group6 : SessionDefaults {
    using Entry = NIMBET_DB_GROUP6_SESS_ENTRY;
    static constexpr uint32_t rowLen = 108, keyLen = 43, keyDesc = 0x0001002Bu, stat = DB_STAT_GROUP6_SESS;
    static constexpr auto create = db_create_group6_sess_obj;
    static constexpr auto release = db_release_group6_sess_object;
    static constexpr auto set_all = db_set_group6_sess_all_fields;
    static constexpr unsigned slotCreate = 20, slotRelease = 21;

    static void put_key_numbers(const Entry &r, uint8_t *k) {
        put_le32(k + 0, r.sockId);
        put_le32(k + 20, r.ifIndex);
        put_le16(k + 40, r.srcPort);
        k[42] = r.protocol;
    }
    static uint32_t build_key(const Entry &r, uint8_t *k) {
        put_key_numbers(r, k);
        return copy_checked(k + 4, r.groupIp) + copy_checked(k + 24, r.srcAddr);
    }
    static void fill(const Entry *r, uint8_t *img) {
        put_key_numbers(*r, img);
        std::memcpy(img + 4, r->groupIp, 16);
        std::memcpy(img + 24, r->srcAddr, 16);
        img[43] = r->attr1;
        put_le16(img + 44, r->attr2);
        put_le32(img + 72, r->attr3);
        put_le32(img + 76, r->attr4);
        put_le32(img + 80, r->attr5);
        put_le32(img + 84, r->attr6);
        stamp(img, rowLen);
    }
    static void get(const uint8_t *img, Entry *r) {
        r->sockId = get_le32(img + 0);
        std::memcpy(r->groupIp, img + 4, 16);
        r->ifIndex = get_le32(img + 20);
        std::memcpy(r->srcAddr, img + 24, 16);
        r->srcPort = get_le16(img + 40);
        r->protocol = img[42];
        r->attr1 = img[43];
        r->attr2 = get_le16(img + 44);
        r->attr3 = get_le32(img + 72);
        r->attr4 = get_le32(img + 76);
        r->attr5 = get_le32(img + 80);
        r->attr6 = get_le32(img + 84);
    }
    static void copy_key(Entry *d, const Entry *s) {
        d->sockId = s->sockId;
        std::memcpy(d->groupIp, s->groupIp, 16);
        d->protocol = s->protocol;
        d->srcPort = s->srcPort;
        d->ifIndex = s->ifIndex;
        std::memcpy(d->srcAddr, s->srcAddr, 16);
    }

    static void log(Path p, uint32_t s, const Entry &r) {
        const uint32_t port = r.srcPort, proto = r.protocol;
        // The memcpy messages name protocol before ifIndex, the others after.
        if (p == Path::ReadMemcpy || p == Path::DeleteMemcpy) {
            return log_err(p == Path::ReadMemcpy
                               ? "Read group6 memcpy failed. ret = %d, sockId = %u, srcPort = %u, protocol = %u, ifIndex = %u."
                               : "Delete group6 memcpy failed. ret = %d, sockId = %u, srcPort = %u, protocol = %u, ifIndex = %u.",
                           s, r.sockId, port, proto, r.ifIndex);
        }
        static constexpr const char *msg[] = {
            "Write group6 create obj failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
            "Write group6 sess db failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
            nullptr,
            "Read group6 create obj failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
            "Get group6 sess db failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
            nullptr,
            "Delete group6 create obj failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
            "Remove group6 sess db failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
        };
        const Ipv6Text group(r.groupIp), src(r.srcAddr);
        log_err(msg[static_cast<int>(p)], s, r.sockId, port, r.ifIndex, proto, group.c_str(), src.c_str());
    }
    static constexpr const char *msgShortRead = "Get group6 sess db fail. ret = %d";
    static constexpr const char *msgNext = "Get next group6 session db fail. ret = %d";
};

using S = Session<Group6>;

}  // namespace
}  // namespace nimbet::session

using nimbet::session::S;

extern "C" {

NIMBET_SESSION_ENTRIES(S, NIMBET_DB_GROUP6_SESS_ENTRY,
    NIMBET_DB_SetEntryKeyGroup6,
    SESSION_SetGroup6ItemLite,
    NIMBET_DB_WriteEntryGroup6,
    NIMBET_DB_GetGroup6Sess,
    NIMBET_DB_GetGroup6SessByObject,
    NIMBET_DB_ReadEntryGroup6,
    NIMBET_DB_DeleteEntryGroup6)
NIMBET_SESSION_WALK_ENTRIES(S, NIMBET_DB_GROUP6_SESS_ENTRY,
    NIMBET_DB_CreatGroup6SessIterator,
    NIMBET_DB_GetNextGroup6Sess,
    NIMBET_DB_ReleaseGroup6SessIterator)

}  // extern "C"
