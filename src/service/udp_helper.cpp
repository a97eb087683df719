// udp_helper_port and udp_helper_server: twin tables sharing the counter
// array g_nimbetUdpHelperCnt (slots 0-5 for either, a walk pair each).
#include "../foundation/image_table.h"
#include "../foundation/walk.h"

namespace nimbet::service {
namespace {

struct UdpDefaults {
    static constexpr uint32_t *counters = g_nimbetUdpHelperCnt;
};

struct Port : StatusMessages<Port>, UdpDefaults {
    using Entry = NIMBET_DB_UDP_HELPER_PORT_ENTRY;
    using UdpDefaults::counters;
    static constexpr uint32_t rowLen = 16, keyLen = 6, keyDesc = 0x00010006u, stat = DB_STAT_UDP_HELPER_PORT;
    static constexpr auto create = db_create_udp_helper_port_obj;
    static constexpr auto release = db_release_udp_helper_port_object;
    static constexpr auto set_all = db_set_udp_helper_port_all_fields;
    static constexpr unsigned slotCreate = UDP_HELPER_CNT_PORT_ITER_CREATE, slotRelease = UDP_HELPER_CNT_PORT_ITER_RELEASE;

    static void fill(const Entry *r, uint8_t *img) {
        put_le32(img + 0, r->key1);
        put_le16(img + 4, r->key2);
        put_le16(img + 6, r->value1);
        put_le32(img + 8, r->value2);
    }
    static void get(const uint8_t *img, Entry *r) {
        r->key1 = get_le32(img + 0);
        r->key2 = get_le16(img + 4);
        r->value1 = get_le16(img + 6);
        r->value2 = get_le32(img + 8);
    }
    static uint32_t build_key(const Entry &r, uint8_t *k) {
        put_le32(k, r.key1);
        put_le16(k + 4, r.key2);
        return 0;
    }
    static void put_count_key(const Entry &r, uint8_t *k) { put_le16(k + 4, r.key2); }
    static void copy_key(Entry *d, const Entry *s) {
        d->key1 = s->key1;
        d->key2 = s->key2;
    }
    static constexpr const char *msgDeleteNull = "NIMBET_DB_DeleteUdpHelperPort, the parameter entry is null";
    static constexpr const char *msgOpen = "Get create udp helper port obj fail. ret = %d";
    static constexpr const char *msgWrite = "Write udp helper port db fail. ret = %d";
    static constexpr const char *msgRead = "Get udp helper port db fail. ret = %d";
    static constexpr const char *msgRemove = "Remove udp helper port db fail. ret = %d";
    static constexpr const char *msgNext = "Get next udp helper port db fail. ret = %d";
};

struct Server : StatusMessages<Server>, UdpDefaults {
    using Entry = NIMBET_DB_UDP_HELPER_SERVER_ENTRY;
    using UdpDefaults::counters;
    static constexpr uint32_t rowLen = 20, keyLen = 12, keyDesc = 0x0001000Cu, stat = DB_STAT_UDP_HELPER_SERVER;
    static constexpr auto create = db_create_udp_helper_server_obj;
    static constexpr auto release = db_release_udp_helper_server_object;
    static constexpr auto set_all = db_set_udp_helper_server_all_fields;
    static constexpr unsigned slotCreate = UDP_HELPER_CNT_SERVER_ITER_CREATE,
                              slotRelease = UDP_HELPER_CNT_SERVER_ITER_RELEASE;

    static void fill(const Entry *r, uint8_t *img) {
        put_le32(img + 0, r->key1);
        put_le32(img + 4, r->key2);
        put_le32(img + 8, r->key3);
        put_le32(img + 12, r->value1);
    }
    static void get(const uint8_t *img, Entry *r) {
        r->key1 = get_le32(img + 0);
        r->key2 = get_le32(img + 4);
        r->key3 = get_le32(img + 8);
        r->value1 = get_le32(img + 12);
    }
    static uint32_t build_key(const Entry &r, uint8_t *k) {
        put_le32(k, r.key1);
        put_le32(k + 4, r.key2);
        put_le32(k + 8, r.key3);
        return 0;
    }
    static void put_count_key(const Entry &r, uint8_t *k) { put_le32(k + 4, r.key2); }
    // key3 of the target is left as it is.
    static void copy_key(Entry *d, const Entry *s) {
        d->key1 = s->key1;
        d->key2 = s->key2;
    }
    static constexpr const char *msgDeleteNull = "NIMBET_DB_DeleteUdpHelperServer,the parameter entry is QEX_NULL";
    static constexpr const char *msgOpen = "Get create udp helper server obj fail. ret = %d";
    static constexpr const char *msgWrite = "Write udp helper server db fail. ret = %d";
    static constexpr const char *msgRead = "Get udp helper server db fail. ret = %d";
    static constexpr const char *msgRemove = "Remove udp helper server db fail. ret = %d";
    static constexpr const char *msgNext = "Get next udp helper server db fail. ret = %d";
};

template <class T>
struct Udp : ImageTable<T> {
    using Entry = typename T::Entry;

    static constexpr Walk walk = {T::create, T::release, T::stat, nullptr, T::msgNext, T::msgRead,
                                  g_nimbetUdpHelperCnt, T::slotCreate, T::slotRelease};

    static uint32_t next(NIMBET_DB_ITER_INFO *it, Entry *rec) { return walk_next_image<T::rowLen>(walk, it, rec, T::get); }

    // Rows whose key equals a key holding only key2, the other bytes zero.
    static uint32_t count(const Entry *rec, uint32_t *num) {
        if (rec == nullptr || num == nullptr) return NIMBET_DB_ERR;
        DB_HANDLE h = 0;
        uint32_t s = T::create(DB_OPEN_COUNT, 0, &h);
        if (s != 0) {
            log_err(T::msgOpen, s);
            return NIMBET_DB_ERR;
        }
        uint8_t key[T::keyLen] = {};
        T::put_count_key(*rec, key);
        uint64_t rows = 0;
        s = db_get_table_record_count_by_key(h, &T::keyDesc, key, &rows);
        if (s == 0) *num = static_cast<uint32_t>(rows);
        T::release(h);
        return s;
    }

    static void copy_key(Entry *dst, const Entry *src) {
        if (dst != nullptr && src != nullptr) T::copy_key(dst, src);
    }
};

using PortTable = Udp<Port>;
using ServerTable = Udp<Server>;

}  // namespace
}  // namespace nimbet::service

using namespace nimbet::service;

extern "C" {

NIMBET_DB_API uint32_t NIMBET_DB_WriteUdpHelperPort(const NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry) {
    return PortTable::write(entry);
}
NIMBET_DB_API uint32_t NIMBET_DB_ReadUdpHelperPort(NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry) { return PortTable::read(entry); }
NIMBET_DB_API uint32_t NIMBET_DB_DeleteUdpHelperPort(const NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry) {
    return PortTable::remove(entry);
}
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatUdpHelperPortIterator(void) {
    return nimbet::walk_create(PortTable::walk);
}
NIMBET_DB_API void NIMBET_DB_ReleaseUdpHelperPortIterator(NIMBET_DB_ITER_INFO *iter) {
    nimbet::walk_release(PortTable::walk, iter);
}
NIMBET_DB_API uint32_t NIMBET_DB_GetNextUdpHelperPort(NIMBET_DB_ITER_INFO *iter, NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry) {
    return PortTable::next(iter, entry);
}
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryGetUdpHelperPortNum(const NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry,
                                                              uint32_t *num) {
    return PortTable::count(entry, num);
}
NIMBET_DB_API void UDPHELPER_SetPortItemLite(const NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry, uint8_t *rowImage) {
    PortTable::fill(entry, rowImage);
}
NIMBET_DB_API void NIMBET_DB_GetUdpHelperPort(const uint8_t *rowImage, NIMBET_DB_UDP_HELPER_PORT_ENTRY *entry) {
    PortTable::get(rowImage, entry);
}
NIMBET_DB_API void NIMBET_DB_SetEntryKeyUdpHelperPort(NIMBET_DB_UDP_HELPER_PORT_ENTRY *dst,
                                                      const NIMBET_DB_UDP_HELPER_PORT_ENTRY *src) {
    PortTable::copy_key(dst, src);
}

NIMBET_DB_API uint32_t NIMBET_DB_WriteUdpHelperServer(const NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry) {
    return ServerTable::write(entry);
}
NIMBET_DB_API uint32_t NIMBET_DB_ReadUdpHelperServer(NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry) {
    return ServerTable::read(entry);
}
NIMBET_DB_API uint32_t NIMBET_DB_DeleteUdpHelperServer(const NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry) {
    return ServerTable::remove(entry);
}
NIMBET_DB_API NIMBET_DB_ITER_INFO *NIMBET_DB_CreatUdpHelperServerIterator(void) {
    return nimbet::walk_create(ServerTable::walk);
}
NIMBET_DB_API void NIMBET_DB_ReleaseUdpHelperServerIterator(NIMBET_DB_ITER_INFO *iter) {
    nimbet::walk_release(ServerTable::walk, iter);
}
NIMBET_DB_API uint32_t NIMBET_DB_GetNextUdpHelperServer(NIMBET_DB_ITER_INFO *iter,
                                                        NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry) {
    return ServerTable::next(iter, entry);
}
NIMBET_DB_API uint32_t NIMBET_DB_ReadEntryGetUdpHelperServerNum(const NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry,
                                                                uint32_t *num) {
    return ServerTable::count(entry, num);
}
NIMBET_DB_API void UDPHELPER_SetServerItemLite(const NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry, uint8_t *rowImage) {
    ServerTable::fill(entry, rowImage);
}
NIMBET_DB_API void NIMBET_DB_GetUdpHelperServer(const uint8_t *rowImage, NIMBET_DB_UDP_HELPER_SERVER_ENTRY *entry) {
    ServerTable::get(rowImage, entry);
}
NIMBET_DB_API void NIMBET_DB_SetEntryKeyUdpHelperServer(NIMBET_DB_UDP_HELPER_SERVER_ENTRY *dst,
                                                        const NIMBET_DB_UDP_HELPER_SERVER_ENTRY *src) {
    ServerTable::copy_key(dst, src);
}

}  // extern "C"
