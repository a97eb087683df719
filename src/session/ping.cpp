// ping_sess: ping test sockets. Every byte of the 84-byte row belongs to a
// field, many at odd offsets. The kind has no walk of its own.
#include "session.h"

namespace nimbet::session {
namespace {

struct Ping : SessionDefaults {
    using Entry = NIMBET_DB_PING_SESS_ENTRY;
    static constexpr uint32_t rowLen = 84, keyLen = 23, keyDesc = 0x00010017u, stat = DB_STAT_PING_SESS;
    static constexpr auto create = db_create_ping_sess_obj;
    static constexpr auto release = db_release_ping_sess_object;
    static constexpr auto set_all = db_set_ping_sess_all_fields;
    static constexpr unsigned slotCreate = 0, slotRelease = 0;  // no walk

    static void put_key(const Entry &r, uint8_t *k) {
        put_le32(k + 0, r.sockId);
        put_le32(k + 4, r.vrId);
        put_le32(k + 8, r.vrfId);
        put_le32(k + 12, r.srcIp);
        put_le32(k + 16, r.dstIp);
        k[20] = r.protocol;
        put_le16(k + 21, r.testId);
    }
    static uint32_t build_key(const Entry &r, uint8_t *k) {
        put_key(r, k);
        return 0;
    }
    static void fill(const Entry *r, uint8_t *img) {
        put_key(*r, img);
        put_le32(img + 23, r->attr1);
        put_le32(img + 27, r->attr2);
        img[31] = r->attr3;
        img[32] = r->attr4;
        img[33] = r->attr5;
        put_le16(img + 34, r->attr6);
        put_le32(img + 36, r->attr7);
        put_le32(img + 40, r->attr8);
        put_le32(img + 44, r->attr9);
        put_le32(img + 48, r->attr10);
        put_le32(img + 52, r->attr11);
        put_le32(img + 56, r->attr12);
        put_le32(img + 60, r->attr13);
        put_le64(img + 64, static_cast<int64_t>(r->attr14));
        put_le32(img + 72, r->attr15);
        stamp(img, rowLen);
    }
    static void get(const uint8_t *img, Entry *r) {
        r->sockId = get_le32(img + 0);
        r->vrId = get_le32(img + 4);
        r->vrfId = get_le32(img + 8);
        r->srcIp = get_le32(img + 12);
        r->dstIp = get_le32(img + 16);
        r->protocol = img[20];
        r->testId = get_le16(img + 21);
        r->attr1 = get_le32(img + 23);
        r->attr2 = get_le32(img + 27);
        r->attr3 = img[31];
        r->attr4 = img[32];
        r->attr5 = img[33];
        r->attr6 = get_le16(img + 34);
        r->attr7 = get_le32(img + 36);
        r->attr8 = get_le32(img + 40);
        r->attr9 = get_le32(img + 44);
        r->attr10 = get_le32(img + 48);
        r->attr11 = get_le32(img + 52);
        r->attr12 = get_le32(img + 56);
        r->attr13 = get_le32(img + 60);
        r->attr14 = static_cast<uint64_t>(get_le64(img + 64));
        r->attr15 = get_le32(img + 72);
    }
    static void copy_key(Entry *d, const Entry *s) {
        d->sockId = s->sockId;
        d->vrId = s->vrId;
        d->vrfId = s->vrfId;
        d->srcIp = s->srcIp;
        d->dstIp = s->dstIp;
        d->protocol = s->protocol;
        d->testId = s->testId;
    }

    static void log(Path p, uint32_t s, const Entry &r) {
        static constexpr const char *msg[] = {
            "nimbet write ping create obj failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
            "Write ping sess db failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
            nullptr,  // no byte arrays in the ping key
            "Read ping create obj failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
            "Get ping sess db failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
            nullptr,
            "Delete ping create obj failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
            "Remove ping sess db failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
        };
        log_err(msg[static_cast<int>(p)], s, r.sockId, r.vrId, r.vrfId, r.srcIp, r.dstIp, uint32_t{r.protocol},
                uint32_t{r.testId});
    }
    static constexpr const char *msgDeleteNull = "nimbet db delete entry ping entry is QEX_NULL. para is NULL";
    static constexpr const char *msgShortRead = "Get ping sess db fail. ret = %d";
    static constexpr const char *msgNext = nullptr;
};

using S = Session<Ping>;

}  // namespace
}  // namespace nimbet::session

using nimbet::session::S;

extern "C" {

NIMBET_SESSION_ENTRIES(S, NIMBET_DB_PING_SESS_ENTRY,
    NIMBET_DB_SetEntryKeyPing,
    SESSION_SetPingItemLite,
    NIMBET_DB_WriteEntryPing,
    NIMBET_DB_GetPingSess,
    NIMBET_DB_GetPingSessByObject,
    NIMBET_DB_ReadEntryPing,
    NIMBET_DB_DeleteEntryPing)

}  // extern "C"
