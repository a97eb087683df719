// ifm_ipv6_address: the IPv6 twin of ifm_ipv4_address. Where the two
// differ, this table passes database statuses through, goes on after a
// failed list count and logs more of its failures (see the traits).
#include <cstring>

#include "addr_table.h"

namespace nimbet::ifaddr {
namespace {

struct Ipv6 {
    using Entry = NIMBET_DB_IPV6_ADDR_ENTRY;
    using Item = NIMBET_DB_IPV6_ADDR_ITEM;
    NIMBET_ADDR_HEADER_ACCESSORS(ifm_ipv6_address)

    static uint32_t get_item(DB_HANDLE child, Item &a) {
        uint8_t *addr = nullptr;
        uint32_t len = 0;
        uint32_t s = db_get_ifm_ipv6_address_ipv6_address_list_address(child, &addr, &len);
        if (s == 0) std::memcpy(a.address, addr, sizeof a.address);
        s |= db_get_ifm_ipv6_address_ipv6_address_list_prefixlen(child, &a.prefixlen);
        s |= db_get_ifm_ipv6_address_ipv6_address_list_type(child, &a.type);
        return s;
    }
    static uint32_t set_item(DB_HANDLE child, const Item &a) {
        uint32_t s = db_set_ifm_ipv6_address_ipv6_address_list_address(child, a.address, sizeof a.address);
        s |= db_set_ifm_ipv6_address_ipv6_address_list_prefixlen(child, a.prefixlen);
        s |= db_set_ifm_ipv6_address_ipv6_address_list_type(child, a.type);
        return s;
    }

    static constexpr const char *listName = "ipv6_address_list";
    static constexpr uint32_t maxAddresses = NIMBET_DB_IPV6_ADDR_MAX_NUM;
    static constexpr uint32_t stat = DB_STAT_IFM_IPV6_ADDRESS;
    static constexpr bool passStatus = true;
    static constexpr bool countFailGoesOn = true;
    static constexpr const char *msgGetHeader = "get ifm ipv6 address fail.";
    static constexpr const char *msgCount = "GetIpv6AddrItem get child count fail, ret = %u.";
    static constexpr const char *msgGetItem = "get ifm ipv6 address fail.";
    static constexpr const char *msgSetHeader = "set ifm ipv6 address vrfindex fail";
    static constexpr const char *msgChildNode = "create child node fail, ret: %d";
    static constexpr const char *msgPushBack = "child push back fail, ret: %d";
    static constexpr const char *msgSetItem = "set ifm ipv6 address fail.";
    static constexpr const char *msgOpen = "Get create ifm ipv6 address obj fail, ret = %u.";
    static constexpr const char *msgRead = "Get ifm ipv6 address db fail, ret = %u.";
    static constexpr const char *msgCountRead = "Get ifm ipv6 address db fail, ret = %u.";
    static constexpr const char *msgStore = "db set ipv6 address item fail, ret = %u.";
    static constexpr const char *msgWrite = "Write ifm ipv6 address db fail, ret = %u.";
    static constexpr const char *msgIterCreate = "nimbet create ipv6 address interator failed.";
    static constexpr const char *msgNext = nullptr;  // a failed step is counted only
};

}  // namespace
}  // namespace nimbet::ifaddr

using Table = nimbet::ifaddr::AddrTable<nimbet::ifaddr::Ipv6>;

extern "C" {

NIMBET_ADDR_ENTRIES(Table, NIMBET_DB_IPV6_ADDR_ENTRY,
    NIMBET_DB_GetIpv6AddrItem,
    NIMBET_DB_SetIpv6AddrItem,
    NIMBET_DB_ReadIpv6Entry,
    NIMBET_DB_WriteIpv6Entry,
    NIMBET_DB_RemoveIpv6Entry,
    NIMBET_DB_CountIpv6AddrListItem,
    NIMBET_DB_GetIFIpv6AddrCount,
    NIMBET_DB_CreateIpv6AddrIterator,
    NIMBET_DB_GetNextIpv6Addr,
    NIMBET_DB_ReleaseIpv6AddrIterator)

// Rows of ifm_ipv6_address; there is no IPv4 counterpart. Silent on every path.
NIMBET_DB_API uint32_t NIMBET_DB_GetIpV6IfCount(uint32_t *count) {
    if (count == nullptr) return NIMBET_DB_ERR;
    DB_HANDLE h = 0;
    uint32_t s = db_create_ifm_ipv6_address_obj(DB_OPEN_COUNT, 0, &h);
    if (s != 0) return s;
    uint64_t rows = 0;
    s = db_get_table_record_count(h, &rows);
    if (s == 0) *count = static_cast<uint32_t>(rows);
    db_release_ifm_ipv6_address_object(h);
    return s;
}

}  // extern "C"
