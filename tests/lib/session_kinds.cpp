#include "session_kinds.h"

namespace nimbet_test {
namespace {

template <class E>
E &as(void *p) {
    return *static_cast<E *>(p);
}

void fill_bytes(uint8_t *b, size_t n, uint32_t seed) {
    for (size_t i = 0; i < n; ++i) b[i] = static_cast<uint8_t>(seed * 31 + i * 7 + 1);
}

void make_inet(void *p, uint32_t s) {
    auto &r = as<NIMBET_DB_INET_SESS_ENTRY>(p);
    std::memset(&r, 0, sizeof r);
    // Field by field: assigning a braced record would copy indeterminate padding.
    r.sockId = s;
    r.hPid = 100 + s;
    r.vrId = 2;
    r.vrfId = 3;
    r.srcIp = 0x0A000001u + s;
    r.dstIp = 0x0B000001u;
    r.srcPort = static_cast<uint16_t>(1000 + s);
    r.dstPort = 179;
    r.protocol = 6;
    r.attr1 = 0x11111111u;
    r.attr2 = 0x22222222u;
    r.attr3 = 0x33333333u;
    r.attr4 = 0x44444444u + s;
}
void make_inet6(void *p, uint32_t s) {
    auto &r = as<NIMBET_DB_INET6_SESS_ENTRY>(p);
    std::memset(&r, 0, sizeof r);
    r.sockId = s;
    r.hPid = 100 + s;
    r.vrId = 2;
    r.vrfId = 3;
    fill_bytes(r.srcIp, 16, s);
    fill_bytes(r.dstIp, 16, s + 1);
    r.srcPort = static_cast<uint16_t>(1000 + s);
    r.dstPort = 179;
    r.protocol = 6;
    r.attr1 = 0xA1;
    r.attr2 = 0xA2;
    r.attr3 = 0xA3;
    r.attr4 = 0xA4 + s;
}
void make_ping(void *p, uint32_t s) {
    auto &r = as<NIMBET_DB_PING_SESS_ENTRY>(p);
    std::memset(&r, 0, sizeof r);
    r.sockId = s;
    r.vrId = 1;
    r.vrfId = 2;
    r.srcIp = 0x01020304u;
    r.dstIp = 0x05060708u + s;
    r.protocol = 1;
    r.testId = static_cast<uint16_t>(0x4142 + s);
    r.attr1 = 0x10101010u;
    r.attr2 = 0x20202020u;
    r.attr3 = 3;
    r.attr4 = 4;
    r.attr5 = 5;
    r.attr6 = 0x0606;
    r.attr7 = 7;
    r.attr8 = 8;
    r.attr9 = 9;
    r.attr10 = 10;
    r.attr11 = 11;
    r.attr12 = 12;
    r.attr13 = 13;
    r.attr14 = 0x1122334455667788ull + s;
    r.attr15 = 15;
}
void make_group(void *p, uint32_t s) {
    auto &r = as<NIMBET_DB_GROUP_SESS_ENTRY>(p);
    std::memset(&r, 0, sizeof r);
    r.sockId = s;
    r.groupIp = 0xE0;
    r.protocol = 17;
    r.srcPort = static_cast<uint16_t>(520 + s);
    r.ifIndex = 40 + s;
    r.attr1 = 0xABCD;
    r.srcAddr = 0xC0A80001u;
    r.attr2 = 2;
    r.attr3 = 3;
    r.attr4 = 4;
    r.attr5 = 5 + s;
}
void make_group6(void *p, uint32_t s) {
    auto &r = as<NIMBET_DB_GROUP6_SESS_ENTRY>(p);
    std::memset(&r, 0, sizeof r);
    r.sockId = s;
    fill_bytes(r.groupIp, 16, s + 5);
    r.protocol = 17;
    r.attr1 = 0x5A;
    r.srcPort = static_cast<uint16_t>(521 + s);
    r.attr2 = 0x7788;
    r.ifIndex = 60 + s;
    fill_bytes(r.srcAddr, 16, s + 9);
    r.attr3 = 3;
    r.attr4 = 4;
    r.attr5 = 5;
    r.attr6 = 6 + s;
}
void make_isis(void *p, uint32_t s) {
    auto &r = as<NIMBET_DB_ISIS_SESS_ENTRY>(p);
    std::memset(&r, 0, sizeof r);
    r.sockId = s;
    r.ifIndex = 70 + s;
    fill_bytes(r.macAddr, 6, s);
    fill_bytes(r.srcMacAddr, 6, s + 2);
    r.attr1 = 0xA0A0A0A0u;
    r.isisId = static_cast<uint16_t>(0x1234 + s);
    r.attr2 = 2;
    r.attr3 = 3 + s;
}

#define ADAPT(Entry, Write, Read, Delete, Fill, Get, CopyKey, ByObject)                                           \
    [](const void *r) { return Write(static_cast<const Entry *>(r)); },                                          \
        [](void *r) { return Read(static_cast<Entry *>(r)); },                                                   \
        [](const void *r) { return Delete(static_cast<const Entry *>(r)); },                                     \
        [](const void *r, uint8_t *img) { Fill(static_cast<const Entry *>(r), img); },                           \
        [](const uint8_t *img, void *r) { Get(img, static_cast<Entry *>(r)); },                                  \
        [](void *d, const void *s) { CopyKey(static_cast<Entry *>(d), static_cast<const Entry *>(s)); },         \
        [](uint32_t o, void *r) { ByObject(o, static_cast<Entry *>(r)); }

#define WALK(Entry, Create, Next, Release) \
    Create, [](NIMBET_DB_ITER_INFO *it, void *r) { return Next(it, static_cast<Entry *>(r)); }, Release

}  // namespace

const SessionKind kSessionKinds[6] = {
    {"Inet", "inet_sess", DB_STAT_INET_SESS, 104, 29, sizeof(NIMBET_DB_INET_SESS_ENTRY), db_create_inet_sess_obj, db_release_inet_sess_object, make_inet,
     [](void *r) { ++as<NIMBET_DB_INET_SESS_ENTRY>(r).hPid; },
     [](void *r) { as<NIMBET_DB_INET_SESS_ENTRY>(r).attr4 ^= 0xFFFF; },
     ADAPT(NIMBET_DB_INET_SESS_ENTRY, NIMBET_DB_WriteEntryInet, NIMBET_DB_ReadEntryInet, NIMBET_DB_DeleteEntryInet,
           SESSION_SetInetItemLite, NIMBET_DB_GetInetSess, NIMBET_DB_SetEntryKeyInet, NIMBET_DB_GetInetSessByObject),
     WALK(NIMBET_DB_INET_SESS_ENTRY, NIMBET_DB_CreatInetSessIterator, NIMBET_DB_GetNextInetSess,
          NIMBET_DB_ReleaseInetSessIterator),
     12, 13, "nimbet db readentryinet entry is QEX_NULL. para is NULL",
     "nimbet db deleteentryinet entry is QEX_NULL, para is NULL",
     "Write inet create obj failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
     "Write inet sess db failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
     "Read inet create obj failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
     "Get inet sess db failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
     "Delete inet create obj failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
     "Remove inet sess db failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %u, dstIp = %u.",
     nullptr, nullptr, "Get inet sess db fail. ret = %d", "Get next inet session db fail. ret = %d"},
    {"Inet6", "inet6_sess", DB_STAT_INET6_SESS, 132, 53, sizeof(NIMBET_DB_INET6_SESS_ENTRY), db_create_inet6_sess_obj, db_release_inet6_sess_object, make_inet6,
     [](void *r) { ++as<NIMBET_DB_INET6_SESS_ENTRY>(r).dstIp[15]; },
     [](void *r) { as<NIMBET_DB_INET6_SESS_ENTRY>(r).attr1 ^= 0xFFFF; },
     ADAPT(NIMBET_DB_INET6_SESS_ENTRY, NIMBET_DB_WriteEntryInet6, NIMBET_DB_ReadEntryInet6, NIMBET_DB_DeleteEntryInet6,
           SESSION_SetInet6ItemLite, NIMBET_DB_GetInet6Sess, NIMBET_DB_SetEntryKeyInet6, NIMBET_DB_GetInet6ByObject),
     WALK(NIMBET_DB_INET6_SESS_ENTRY, NIMBET_DB_CreatInet6SessIterator, NIMBET_DB_GetNextInet6Sess,
          NIMBET_DB_ReleaseInet6SessIterator),
     18, 19, nullptr, nullptr,
     "Write inet create obj failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %s, dstIp = %s.",
     "Write inet6 sess db failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %s, dstIp = %s.",
     "Read inet6 create obj failed. ret = %u, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %s, dstIp = %s.",
     "Get inet6 sess db failed. ret=%u, sockId=%u, hPid=%u, vrfId=%u, srcIp=%s, dstIp=%s.",
     "Delete inet6 create obj failed. ret = %d, sockId = %u, hPid = %u, vrId = %u, vrfId = %u, protocol = %u, srcIp = %s, dstIp = %s.",
     "Remove inet6 sess db failed. ret=%d, sockId=%u, hPid=%u, vrfId=%u, srcIp=%s, dstIp=%s.",
     "Read inet6 memcpy failed. ret=%u, sockId=%u, hPid=%u, vrId=%u, vrfId=%u, protocol=%u.",
     "Delete inet6 memcpy failed. ret=%d, sockId=%u, hPid=%u, vrId=%u, vrfId=%u, protocol=%u.",
     "Get inet6 sess db fail. ret = %d", "Get next inet6 session db fail. ret = %d"},
    {"Ping", "ping_sess", DB_STAT_PING_SESS, 84, 23, sizeof(NIMBET_DB_PING_SESS_ENTRY), db_create_ping_sess_obj, db_release_ping_sess_object, make_ping,
     [](void *r) { ++as<NIMBET_DB_PING_SESS_ENTRY>(r).testId; },
     [](void *r) { as<NIMBET_DB_PING_SESS_ENTRY>(r).attr14 ^= 0xFF00000000000000ull; },
     ADAPT(NIMBET_DB_PING_SESS_ENTRY, NIMBET_DB_WriteEntryPing, NIMBET_DB_ReadEntryPing, NIMBET_DB_DeleteEntryPing,
           SESSION_SetPingItemLite, NIMBET_DB_GetPingSess, NIMBET_DB_SetEntryKeyPing, NIMBET_DB_GetPingSessByObject),
     nullptr, nullptr, nullptr, 0, 0, nullptr, "nimbet db delete entry ping entry is QEX_NULL. para is NULL",
     "nimbet write ping create obj failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
     "Write ping sess db failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
     "Read ping create obj failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
     "Get ping sess db failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
     "Delete ping create obj failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
     "Remove ping sess db failed. ret = %d, sockId = %u, vrId = %u, vrfId = %u, srcIp = %u, dstIp = %u, protocol = %u, testId = %u.",
     nullptr, nullptr, "Get ping sess db fail. ret = %d", nullptr},
    {"Group", "group_sess", DB_STAT_GROUP_SESS, 84, 16, sizeof(NIMBET_DB_GROUP_SESS_ENTRY), db_create_group_sess_obj, db_release_group_sess_object, make_group,
     [](void *r) { ++as<NIMBET_DB_GROUP_SESS_ENTRY>(r).srcAddr; },
     [](void *r) { as<NIMBET_DB_GROUP_SESS_ENTRY>(r).attr1 ^= 0xFFFF; },
     ADAPT(NIMBET_DB_GROUP_SESS_ENTRY, NIMBET_DB_WriteEntryGroup, NIMBET_DB_ReadEntryGroup, NIMBET_DB_DeleteEntryGroup,
           SESSION_SetGroupItemLite, NIMBET_DB_GetGroupSess, NIMBET_DB_SetEntryKeyGroup, NIMBET_DB_GetGroupByObject),
     WALK(NIMBET_DB_GROUP_SESS_ENTRY, NIMBET_DB_CreatGroupSessIterator, NIMBET_DB_GetNextGroupSess,
          NIMBET_DB_ReleaseGroupSessIterator),
     14, 15, nullptr, "nimbet db deleteentrygroup entry is QEX_NULL, para is NULL",
     "Write group create obj failed. ret = %u, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
     "Write group sess db failed. ret = %u, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
     "Read group create obj failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
     "Get group sess db failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
     "Delete group create obj failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
     "Remove group sess db failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %u, srcAddr = %u.",
     nullptr, nullptr, "Get group sess db fail. ret = %d", "Get next group sess db fail. ret = %d"},
    {"Group6", "group6_sess", DB_STAT_GROUP6_SESS, 108, 43, sizeof(NIMBET_DB_GROUP6_SESS_ENTRY), db_create_group6_sess_obj, db_release_group6_sess_object, make_group6,
     [](void *r) { ++as<NIMBET_DB_GROUP6_SESS_ENTRY>(r).srcAddr[0]; },
     [](void *r) { as<NIMBET_DB_GROUP6_SESS_ENTRY>(r).attr1 ^= 0xFF; },
     ADAPT(NIMBET_DB_GROUP6_SESS_ENTRY, NIMBET_DB_WriteEntryGroup6, NIMBET_DB_ReadEntryGroup6,
           NIMBET_DB_DeleteEntryGroup6, SESSION_SetGroup6ItemLite, NIMBET_DB_GetGroup6Sess, NIMBET_DB_SetEntryKeyGroup6,
           NIMBET_DB_GetGroup6SessByObject),
     WALK(NIMBET_DB_GROUP6_SESS_ENTRY, NIMBET_DB_CreatGroup6SessIterator, NIMBET_DB_GetNextGroup6Sess,
          NIMBET_DB_ReleaseGroup6SessIterator),
     20, 21, nullptr, nullptr,
     "Write group6 create obj failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
     "Write group6 sess db failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
     "Read group6 create obj failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
     "Get group6 sess db failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
     "Delete group6 create obj failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
     "Remove group6 sess db failed. ret = %d, sockId = %u, srcPort = %u, ifIndex = %u, protocol = %u, groupIp = %s, srcAddr = %s.",
     "Read group6 memcpy failed. ret = %d, sockId = %u, srcPort = %u, protocol = %u, ifIndex = %u.",
     "Delete group6 memcpy failed. ret = %d, sockId = %u, srcPort = %u, protocol = %u, ifIndex = %u.",
     "Get group6 sess db fail. ret = %d", "Get next group6 session db fail. ret = %d"},
    {"Isis", "isis_sess", DB_STAT_ISIS_SESS, 84, 22, sizeof(NIMBET_DB_ISIS_SESS_ENTRY), db_create_isis_sess_obj, db_release_isis_sess_object, make_isis,
     [](void *r) { ++as<NIMBET_DB_ISIS_SESS_ENTRY>(r).srcMacAddr[5]; },
     [](void *r) { as<NIMBET_DB_ISIS_SESS_ENTRY>(r).attr1 ^= 0xFFFF; },
     ADAPT(NIMBET_DB_ISIS_SESS_ENTRY, NIMBET_DB_WriteEntryIsis, NIMBET_DB_ReadEntryIsis, NIMBET_DB_DeleteEntryIsis,
           SESSION_SetIsisItemLite, NIMBET_DB_GetIsisSess, NIMBET_DB_SetEntryKeyIsis, NIMBET_DB_GetIsisByObject),
     WALK(NIMBET_DB_ISIS_SESS_ENTRY, NIMBET_DB_CreatIsisSessIterator, NIMBET_DB_GetNextIsisSess,
          NIMBET_DB_ReleaseIsisSessIterator),
     16, 17, nullptr, nullptr,
     "Write isis create obj failed. ret = %d, sockId = %u, ifIndex = %u, isisId= %u, macAddr = %s, srcMacAddr = %s.",
     "Write isis db failed. ret = %d, sockId = %u, ifIndex = %u, isisId= %u, macAddr = %s, srcMacAddr = %s.",
     "Read isis create obj failed. ret = %d, sockId = %u, ifIndex = %u, isisId= %u, macAddr = %s, srcMacAddr = %s.",
     "Get isis sess db failed. ret = %d, sockId = %u, ifIndex = %u, isisId= %u, macAddr = %s, srcMacAddr = %s.",
     "Delete issi create obj failed. ret = %d, sockId = %u, ifIndex = %u, isisId = %u, macAddr = %s, srcMacAddr = %s.",
     "Remove isis sess db failed. ret = %d, sockId = %u, ifIndex = %u, isisId = %u, macAddr = %s, srcMacAddr = %s.",
     "nimbet read entry isis memcpy failed. ret = %d, sockId = %u, ifIndex = %u, isisId= %u.",
     "nimbet delete isis memcpy failed. ret = %d, sockId = %u, ifIndex = %u, isisId = %u.",
     "Get isis sess db fail. ret = %d", "Get next isis session db fail. ret = %d"},
};

}  // namespace nimbet_test
