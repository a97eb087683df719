// ifm_ipv4_address: one row per interface with its list of IPv4 addresses.
#include "addr_table.h"

namespace nimbet::ifaddr {
namespace {

constexpr const char *kListName = "ipv4_address_list";

uint32_t fill(DB_HANDLE h, NIMBET_DB_IPV4_ADDR_ENTRY *rec) {
    if (rec == nullptr) return NIMBET_DB_ERR;
    // All five getters run whatever the others answer.
    uint32_t s = db_get_ifm_ipv4_address_ifIndex(h, &rec->ifIndex);
    s |= db_get_ifm_ipv4_address_vrfIndex(h, &rec->vrfIndex);
    s |= db_get_ifm_ipv4_address_app_serial_id(h, &rec->app_serial_id);
    s |= db_get_ifm_ipv4_address_status_normal_prio(h, &rec->status_normal_prio);
    s |= db_get_ifm_ipv4_address_errcode_normal_prio(h, &rec->errcode_normal_prio);
    if (s != 0) {
        log_err("get ifm ipv4 address vrfIndex fail.");
        return NIMBET_DB_ERR;
    }
    DB_HANDLE child = 0;
    if (db_create_child_node(h, 0, kListName, 0, 0, &child) != 0) return NIMBET_DB_ERR;
    uint32_t n = 0;
    s = db_child_count(child, &n);
    if (s != 0) {
        log_err("get child count fail, ret = %u.", s);
        return s;
    }
    // A longer list can only come from another writer: keep what fits.
    if (n > NIMBET_DB_IPV4_ADDR_MAX_NUM) n = NIMBET_DB_IPV4_ADDR_MAX_NUM;
    rec->addressCount = n;
    for (uint32_t i = 0; i < n; ++i) {
        if (db_child_get(child, i) != 0) return NIMBET_DB_ERR;
        NIMBET_DB_IPV4_ADDR_ITEM &a = rec->addresses[i];
        s = db_get_ifm_ipv4_address_ipv4_address_list_address(child, &a.address);
        s |= db_get_ifm_ipv4_address_ipv4_address_list_masklen(child, &a.masklen);
        s |= db_get_ifm_ipv4_address_ipv4_address_list_type(child, &a.type);
        if (s != 0) {
            log_err("get ifm ipv4 address fail.");
            return NIMBET_DB_ERR;
        }
    }
    return NIMBET_DB_OK;
}

uint32_t store(DB_HANDLE h, const NIMBET_DB_IPV4_ADDR_ENTRY *rec) {
    if (rec == nullptr || rec->addressCount > NIMBET_DB_IPV4_ADDR_MAX_NUM) return NIMBET_DB_ERR;
    uint32_t s = db_set_ifm_ipv4_address_ifIndex(h, rec->ifIndex);
    s |= db_set_ifm_ipv4_address_vrfIndex(h, rec->vrfIndex);
    s |= db_set_ifm_ipv4_address_app_serial_id(h, rec->app_serial_id);
    s |= db_set_ifm_ipv4_address_status_normal_prio(h, rec->status_normal_prio);
    s |= db_set_ifm_ipv4_address_errcode_normal_prio(h, rec->errcode_normal_prio);
    if (s != 0) {
        log_err("set ifm ipv4 address fail, ret.");
        return s;
    }
    DB_HANDLE child = 0;
    if (db_create_child_node(h, 0, kListName, 0, 0, &child) != 0) return NIMBET_DB_ERR;
    for (uint32_t i = 0; i < rec->addressCount; ++i) {
        if (db_child_push_back(child) != 0) return NIMBET_DB_ERR;
        const NIMBET_DB_IPV4_ADDR_ITEM &a = rec->addresses[i];
        s = db_set_ifm_ipv4_address_ipv4_address_list_address(child, a.address);
        s |= db_set_ifm_ipv4_address_ipv4_address_list_masklen(child, a.masklen);
        s |= db_set_ifm_ipv4_address_ipv4_address_list_type(child, a.type);
        if (s != 0) {
            log_err("set ifm ipv4 address fail, ret.");
            return NIMBET_DB_ERR;
        }
    }
    return db_set_ifm_ipv4_address_time_stamp_create(h, NIMBET_DB_GetSysTime());
}

struct Ipv4 {
    using Entry = NIMBET_DB_IPV4_ADDR_ENTRY;
    static constexpr auto create = db_create_ifm_ipv4_address_obj;
    static constexpr auto release = db_release_ifm_ipv4_address_object;
    static constexpr auto fill = ifaddr::fill;
    static constexpr auto store = ifaddr::store;
    static constexpr uint32_t stat = DB_STAT_IFM_IPV4_ADDRESS;
    static constexpr uint32_t maxAddresses = NIMBET_DB_IPV4_ADDR_MAX_NUM;
    static constexpr const char *msgOpen = "Get create ifm ipv4 address obj fail, ret = %u.";
    static constexpr const char *msgRead = "Get ifm ipv4 address db fail, ret = %u.";
    static constexpr const char *msgStore = "set ipv4 address item fail, ret = %u.";
    static constexpr const char *msgWrite = nullptr;  // a failed write is counted, not logged
};

}  // namespace
}  // namespace nimbet::ifaddr

using Ipv4Table = nimbet::ifaddr::AddrTable<nimbet::ifaddr::Ipv4>;

extern "C" {

NIMBET_DB_API uint32_t NIMBET_DB_GetIpv4AddrItem(DB_HANDLE dbHandle, NIMBET_DB_IPV4_ADDR_ENTRY *entry) {
    return nimbet::ifaddr::fill(dbHandle, entry);
}

NIMBET_DB_API uint32_t NIMBET_DB_SetIpv4AddrItem(DB_HANDLE dbHandle, const NIMBET_DB_IPV4_ADDR_ENTRY *entry) {
    return nimbet::ifaddr::store(dbHandle, entry);
}

NIMBET_DB_API uint32_t NIMBET_DB_ReadIpv4Entry(NIMBET_DB_IPV4_ADDR_ENTRY *entry) { return Ipv4Table::read(entry); }

NIMBET_DB_API uint32_t NIMBET_DB_WriteIpv4Entry(const NIMBET_DB_IPV4_ADDR_ENTRY *entry) {
    return Ipv4Table::write(entry);
}

NIMBET_DB_API uint32_t NIMBET_DB_RemoveIpv4Entry(const uint32_t *ifIndex) { return Ipv4Table::remove(ifIndex); }

}  // extern "C"
