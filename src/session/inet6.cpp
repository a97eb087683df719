// inet6_sess: the IPv6 twin of inet_sess, with 16-byte addresses copied into
// the key with the bounds-checked copy and shown as text in messages.
#include <cstring>

#include "../foundation/addrtext.h"
#include "session.h"

namespace nimbet::session {
namespace {

struct Inet6 : SessionDefaults {
    using Entry = NIMBET_DB_INET6_SESS_ENTRY;
    static constexpr uint32_t rowLen = 132, keyLen = 53, keyDesc = 0x00010035u, stat = DB_STAT_INET6_SESS;
    static constexpr auto create = db_create_inet6_sess_obj;
    static constexpr auto release = db_release_inet6_sess_object;
    static constexpr auto set_all = db_set_inet6_sess_all_fields;
    static constexpr unsigned slotCreate = 18, slotRelease = 19;

    // Everything of the key but the two addresses.
    static void put_key_numbers(const Entry &r, uint8_t *k) {
        put_le32(k + 0, r.sockId);
        put_le32(k + 4, r.hPid);
        put_le32(k + 8, r.vrId);
        put_le32(k + 12, r.vrfId);
        put_le32(k + 48, static_cast<uint32_t>(r.srcPort) << 16 | r.dstPort);
        k[52] = r.protocol;
    }
    static uint32_t build_key(const Entry &r, uint8_t *k) {
        put_key_numbers(r, k);
        return copy_checked(k + 16, r.srcIp) + copy_checked(k + 32, r.dstIp);
    }
    static void fill(const Entry *r, uint8_t *img) {
        put_key_numbers(*r, img);
        std::memcpy(img + 16, r->srcIp, 16);
        std::memcpy(img + 32, r->dstIp, 16);
        put_le16(img + 92, r->srcPort);
        put_le16(img + 94, r->dstPort);
        put_le32(img + 96, r->attr1);
        put_le32(img + 100, r->attr2);
        put_le32(img + 104, r->attr3);
        put_le32(img + 108, r->attr4);
        stamp(img, rowLen);
    }
    static void get(const uint8_t *img, Entry *r) {
        r->sockId = get_le32(img + 0);
        r->hPid = get_le32(img + 4);
        r->vrId = get_le32(img + 8);
        r->vrfId = get_le32(img + 12);
        std::memcpy(r->srcIp, img + 16, 16);
        std::memcpy(r->dstIp, img + 32, 16);
        r->protocol = img[52];
        r->srcPort = get_le16(img + 92);
        r->dstPort = get_le16(img + 94);
        r->attr1 = get_le32(img + 96);
        r->attr2 = get_le32(img + 100);
        r->attr3 = get_le32(img + 104);
        r->attr4 = get_le32(img + 108);
    }
    static void copy_key(Entry *d, const Entry *s) {
        d->sockId = s->sockId;
        d->hPid = s->hPid;
        d->vrId = s->vrId;
        d->vrfId = s->vrfId;
        std::memcpy(d->srcIp, s->srcIp, 16);
        std::memcpy(d->dstIp, s->dstIp, 16);
        d->srcPort = s->srcPort;
        d->dstPort = s->dstPort;
        d->protocol = s->protocol;
    }

    static void log(Path p, uint32_t s, const Entry &r) {
        const uint32_t proto = r.protocol;
        switch (p) {
            case Path::ReadMemcpy:
                return log_err("Read inet6 memcpy failed. ret=%u, sockId=%u, hPid=%u, vrId=%u, vrfId=%u, protocol=%u.", s,
                               r.sockId, r.hPid, r.vrId, r.vrfId, proto);
            case Path::DeleteMemcpy:
                return log_err("Delete inet6 memcpy failed. ret=%d, sockId=%u, hPid=%u, vrId=%u, vrfId=%u, protocol=%u.",
                               s, r.sockId, r.hPid, r.vrId, r.vrfId, proto);
            default: break;
        }
        const Ipv6Text src(r.srcIp), dst(r.dstIp);
        switch (p) {
            case Path::ReadFail:
                return log_err("Get inet6 sess db failed. ret=%u, sockId=%u, hPid=%u, vrfId=%u, srcIp=%s, dstIp=%s.", s,
                               r.sockId, r.hPid, r.vrfId, src.c_str(), dst.c_str());
            case Path::RemoveFail:
                return log_err("Remove inet6 sess db failed. ret=%d, sockId=%u, hPid=%u, vrfId=%u, srcIp=%s, dstIp=%s.", s,
                               r.sockId, r.hPid, r.vrfId, src.c_str(), dst.c_str());
            default: break;
        }
        static constexpr const char *msg[] = {
            "Write inet create obj failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %s, dstIp = %s.",
            "Write inet6 sess db failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %s, dstIp = %s.",
            nullptr,
            "Read inet6 create obj failed. ret = %u, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %s, dstIp = %s.",
            nullptr,
            nullptr,
            "Delete inet6 create obj failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %s, dstIp = %s.",
            nullptr,
        };
        log_err(msg[static_cast<int>(p)], s, r.sockId, r.hPid, r.vrId, r.vrfId, proto, src.c_str(), dst.c_str());
    }
    static constexpr const char *msgShortRead = "Get inet6 sess db fail. ret = %d";
    static constexpr const char *msgNext = "Get next inet6 session db fail. ret = %d";
};

using S = Session<Inet6>;

}  // namespace
}  // namespace nimbet::session

using nimbet::session::S;

extern "C" {

NIMBET_SESSION_ENTRIES(S, NIMBET_DB_INET6_SESS_ENTRY,
    NIMBET_DB_SetEntryKeyInet6,
    SESSION_SetInet6ItemLite,
    NIMBET_DB_WriteEntryInet6,
    NIMBET_DB_GetInet6Sess,
    NIMBET_DB_GetInet6ByObject,
    NIMBET_DB_ReadEntryInet6,
    NIMBET_DB_DeleteEntryInet6)
NIMBET_SESSION_WALK_ENTRIES(S, NIMBET_DB_INET6_SESS_ENTRY,
    NIMBET_DB_CreatInet6SessIterator,
    NIMBET_DB_GetNextInet6Sess,
    NIMBET_DB_ReleaseInet6SessIterator)

}  // extern "C"
