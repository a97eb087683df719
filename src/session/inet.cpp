// inet_sess: IPv4 socket sessions. The ports are stored twice: in the key's
// port word (dstPort low, srcPort high) and as fields at 56 and 58.
#include "session.h"

namespace nimbet::session {
namespace {

struct Inet : SessionDefaults {
    using Entry = NIMBET_DB_INET_SESS_ENTRY;
    static constexpr uint32_t rowLen = 104, keyLen = 29, keyDesc = 0x0001001Du, stat = DB_STAT_INET_SESS;
    static constexpr auto create = db_create_inet_sess_obj;
    static constexpr auto release = db_release_inet_sess_object;
    static constexpr auto set_all = db_set_inet_sess_all_fields;
    static constexpr unsigned slotCreate = 12, slotRelease = 13;

    static void put_key(const Entry &r, uint8_t *k) {
        put_le32(k + 0, r.sockId);
        put_le32(k + 4, r.hPid);
        put_le32(k + 8, r.vrId);
        put_le32(k + 12, r.vrfId);
        put_le32(k + 16, r.srcIp);
        put_le32(k + 20, r.dstIp);
        put_le32(k + 24, static_cast<uint32_t>(r.srcPort) << 16 | r.dstPort);
        k[28] = r.protocol;
    }
    static uint32_t build_key(const Entry &r, uint8_t *k) {
        put_key(r, k);
        return 0;
    }
    static void fill(const Entry *r, uint8_t *img) {
        put_key(*r, img);
        put_le16(img + 56, r->srcPort);
        put_le16(img + 58, r->dstPort);
        put_le32(img + 68, r->attr1);
        put_le32(img + 72, r->attr2);
        put_le32(img + 76, r->attr3);
        put_le32(img + 80, r->attr4);
        stamp(img, rowLen);
    }
    static void get(const uint8_t *img, Entry *r) {
        r->sockId = get_le32(img + 0);
        r->hPid = get_le32(img + 4);
        r->vrId = get_le32(img + 8);
        r->vrfId = get_le32(img + 12);
        r->srcIp = get_le32(img + 16);
        r->dstIp = get_le32(img + 20);
        r->protocol = img[28];
        r->srcPort = get_le16(img + 56);
        r->dstPort = get_le16(img + 58);
        r->attr1 = get_le32(img + 68);
        r->attr2 = get_le32(img + 72);
        r->attr3 = get_le32(img + 76);
        r->attr4 = get_le32(img + 80);
    }
    static void copy_key(Entry *d, const Entry *s) {
        d->sockId = s->sockId;
        d->hPid = s->hPid;
        d->vrId = s->vrId;
        d->vrfId = s->vrfId;
        d->srcIp = s->srcIp;
        d->dstIp = s->dstIp;
        d->srcPort = s->srcPort;
        d->dstPort = s->dstPort;
        d->protocol = s->protocol;
    }

    static void log(Path p, uint32_t s, const Entry &r) {
        static constexpr const char *msg[] = {
            "Write inet create obj failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
            "Write inet sess db failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
            nullptr,  // the inet key holds no byte arrays: no memcpy path
            "Read inet create obj failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
            "Get inet sess db failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
            nullptr,
            "Delete inet create obj failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
            "Remove inet sess db failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
        };
        log_err(msg[static_cast<int>(p)], s, r.sockId, r.hPid, r.vrId, r.vrfId, uint32_t{r.protocol}, r.srcIp, r.dstIp);
    }
    static constexpr const char *msgReadNull = "nimbet db readentryinet entry is QEX_NULL. para is NULL";
    static constexpr const char *msgDeleteNull = "nimbet db deleteentryinet entry is QEX_NULL, para is NULL";
    static constexpr const char *msgShortRead = "Get inet sess db fail. ret = %d";
    static constexpr const char *msgNext = "Get next inet session db fail. ret = %d";
};

using S = Session<Inet>;

}  // namespace
}  // namespace nimbet::session

using nimbet::session::S;

extern "C" {

NIMBET_SESSION_ENTRIES(S, NIMBET_DB_INET_SESS_ENTRY,
    NIMBET_DB_SetEntryKeyInet,
    SESSION_SetInetItemLite,
    NIMBET_DB_WriteEntryInet,
    NIMBET_DB_GetInetSess,
    NIMBET_DB_GetInetSessByObject,
    NIMBET_DB_ReadEntryInet,
    NIMBET_DB_DeleteEntryInet)
NIMBET_SESSION_WALK_ENTRIES(S, NIMBET_DB_INET_SESS_ENTRY,
    NIMBET_DB_CreatInetSessIterator,
    NIMBET_DB_GetNextInetSess,
    NIMBET_DB_ReleaseInetSessIterator)

}  // extern "C"
