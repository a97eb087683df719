// Presence queries: is a session registered whose values on one secondary
// key of its table equal those of the caller's record? One keyed walk of
// one step; no row is read, nothing is counted.
#include "session.h"

namespace nimbet::session {
namespace {

struct Query {
    DB_CREATE_OBJ_FUNC create;
    DB_RELEASE_OBJ_FUNC release;
    const char *msgCreate, *msgIter, *msgNext;
};

uint32_t exists(const Query &q, uint32_t keyDesc, const uint8_t *key) {
    DB_HANDLE obj = 0, iter = 0;
    uint32_t s = q.create(DB_OPEN_SCAN, 0, &obj);
    if (s != 0) {
        log_err(q.msgCreate, s);
        return 0;
    }
    s = db_create_root_iter(obj, &keyDesc, key, &iter);
    if (s != 0) {
        log_err(q.msgIter, s);
        q.release(obj);
        return 0;
    }
    s = db_root_iterator_next(iter);
    q.release(obj);
    if (s == 0) return 1;
    if (s != DB_RET_ITER_END) log_err(q.msgNext, s);
    return 0;
}

// portSelector 1: source port under key 1; anything else: destination port under key 2.
constexpr uint32_t port_key(uint32_t portSelector) { return portSelector == 1 ? 0x01090007u : 0x02090007u; }

template <class Entry>
uint32_t bgp_exists(const Query &q, const Entry &r, uint32_t portSelector) {
    uint8_t key[7];
    key[0] = r.protocol;
    put_le16(key + 1, portSelector == 1 ? r.srcPort : r.dstPort);
    put_le32(key + 3, r.attr1);
    return exists(q, port_key(portSelector), key);
}

const Query kBgp = {db_create_inet_sess_obj, db_release_inet_sess_object, "Create bgp session obj fail. ret %d",
                    "Create bgp sess iter fail. ret %d", "Get bgp sess db fail. ret %d"};
const Query kBgp4Plus = {db_create_inet6_sess_obj, db_release_inet6_sess_object,
                         "Create bgp plus session obj fail. ret %d", "Create bgp plus sess iter fail. ret %d",
                         "Get bgp plus sess db fail. ret %d"};
const Query kRip = {db_create_group_sess_obj, db_release_group_sess_object,
                    "Create rip group session obj fail. ret = %d", "Create group sess iter fail. ret %d",
                    "Get group sess db fail. ret %d"};
const Query kOspf = {db_create_group_sess_obj, db_release_group_sess_object, "Create ospf session obj fail. ret = %d",
                     "Create ospf sess iter fail. ret = %d", "Get ospf sess db fail. ret = %d"};
const Query kRipng = {db_create_group6_sess_obj, db_release_group6_sess_object,
                      "Create ripng session obj fail. ret = %d", "Create ripng sess iter fail. ret = %d",
                      "Get ripng sess db fail. ret = %d"};
const Query kOspfv3 = {db_create_group6_sess_obj, db_release_group6_sess_object,
                       "Create ospfv3 session obj fail. ret = %d", "Create ospfv3 sess iter fail. ret = %d",
                       "Get ospfv3 sess db fail. ret = %d"};
const Query kIsis = {db_create_isis_sess_obj, db_release_isis_sess_object, "Create isis session obj fail. ret %d",
                     "Create isis sess iter fail. ret %d", "Get isis sess db fail. ret %d"};

}  // namespace
}  // namespace nimbet::session

using namespace nimbet::session;
using nimbet::put_le16;
using nimbet::put_le32;

extern "C" {

// The BGP, BGP4+, RIPng, OSPFv3 and IS-IS queries take a valid record from
// the caller; a null one answers 0 here rather than crash.
NIMBET_DB_API uint32_t NIMBET_DB_IsBgpSessExist(const NIMBET_DB_INET_SESS_ENTRY *entry, uint32_t portSelector) {
    return entry ? bgp_exists(kBgp, *entry, portSelector) : 0;
}

NIMBET_DB_API uint32_t NIMBET_DB_IsBgp4PlusExist(const NIMBET_DB_INET6_SESS_ENTRY *entry, uint32_t portSelector) {
    return entry ? bgp_exists(kBgp4Plus, *entry, portSelector) : 0;
}

// The two group-table queries answer 1 for a null record.
NIMBET_DB_API uint32_t NIMBET_DB_IsRipSessExist(const NIMBET_DB_GROUP_SESS_ENTRY *entry) {
    if (entry == nullptr) return 1;
    uint8_t key[9];
    key[0] = entry->protocol;
    put_le16(key + 1, entry->srcPort);
    put_le16(key + 3, entry->attr1);
    put_le32(key + 5, entry->attr2);
    return exists(kRip, 0x01090009u, key);
}

NIMBET_DB_API uint32_t NIMBET_DB_IsOspfSessExist(const NIMBET_DB_GROUP_SESS_ENTRY *entry) {
    if (entry == nullptr) return 1;
    uint8_t key[7];
    key[0] = entry->protocol;
    put_le16(key + 1, entry->attr1);
    put_le32(key + 3, entry->attr2);
    return exists(kOspf, 0x02090007u, key);
}

NIMBET_DB_API uint32_t NIMBET_DB_IsRipngSessExist(const NIMBET_DB_GROUP6_SESS_ENTRY *entry) {
    if (entry == nullptr) return 0;
    uint8_t key[9];
    key[0] = entry->protocol;
    put_le16(key + 1, entry->srcPort);
    put_le16(key + 3, entry->attr2);
    put_le32(key + 5, entry->attr3);
    return exists(kRipng, 0x01090009u, key);
}

// The OSPFv3 key has a zero byte after the protocol and no port.
NIMBET_DB_API uint32_t NIMBET_DB_IsOspfv3SessExist(const NIMBET_DB_GROUP6_SESS_ENTRY *entry) {
    if (entry == nullptr) return 0;
    uint8_t key[8];
    key[0] = entry->protocol;
    key[1] = 0;
    put_le16(key + 2, entry->attr2);
    put_le32(key + 4, entry->attr3);
    return exists(kOspfv3, 0x02090008u, key);
}

NIMBET_DB_API uint32_t NIMBET_DB_IsIsisSessExist(const NIMBET_DB_ISIS_SESS_ENTRY *entry) {
    if (entry == nullptr) return 0;
    uint8_t key[4];
    put_le32(key, entry->attr1);
    return exists(kIsis, 0x01090004u, key);
}

}  // extern "C"
