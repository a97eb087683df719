// ifm_ipv4_address: one row per interface with its list of IPv4 addresses.
#include "addr_table.h"

namespace nimbet::ifaddr {
namespace {

struct Ipv4 {
    using Entry = NIMBET_DB_IPV4_ADDR_ENTRY;
    using Item = NIMBET_DB_IPV4_ADDR_ITEM;
    NIMBET_ADDR_HEADER_ACCESSORS(ifm_ipv4_address)

    static uint32_t get_item(DB_HANDLE child, Item &a) {
        uint32_t s = db_get_ifm_ipv4_address_ipv4_address_list_address(child, &a.address);
        s |= db_get_ifm_ipv4_address_ipv4_address_list_masklen(child, &a.masklen);
        s |= db_get_ifm_ipv4_address_ipv4_address_list_type(child, &a.type);
        return s;
    }
    static uint32_t set_item(DB_HANDLE child, const Item &a) {
        uint32_t s = db_set_ifm_ipv4_address_ipv4_address_list_address(child, a.address);
        s |= db_set_ifm_ipv4_address_ipv4_address_list_masklen(child, a.masklen);
        s |= db_set_ifm_ipv4_address_ipv4_address_list_type(child, a.type);
        return s;
    }

    static constexpr const char *listName = "ipv4_address_list";
    static constexpr uint32_t maxAddresses = NIMBET_DB_IPV4_ADDR_MAX_NUM;
    static constexpr uint32_t stat = DB_STAT_IFM_IPV4_ADDRESS;
    static constexpr bool passStatus = false;
    static constexpr bool countFailGoesOn = false;
    static constexpr const char *msgGetHeader = "get ifm ipv4 address vrfIndex fail.";
    static constexpr const char *msgCount = "get child count fail, ret = %u.";
    static constexpr const char *msgGetItem = "get ifm ipv4 address fail.";
    static constexpr const char *msgSetHeader = "set ifm ipv4 address fail, ret.";
    static constexpr const char *msgChildNode = nullptr;
    static constexpr const char *msgPushBack = nullptr;
    static constexpr const char *msgSetItem = "set ifm ipv4 address fail, ret.";
    static constexpr const char *msgOpen = "Get create ifm ipv4 address obj fail, ret = %u.";
    static constexpr const char *msgRead = "Get ifm ipv4 address db fail, ret = %u.";
    static constexpr const char *msgCountRead = "Get ifm ipv4 address db failm, ret = %u.";
    static constexpr const char *msgStore = "set ipv4 address item fail, ret = %u.";
    static constexpr const char *msgWrite = nullptr;
    static constexpr const char *msgIterCreate = "nimbet create ipv4 address interator failed.";
    static constexpr const char *msgNext = "Get next ifm ipv4 address db fail, ret = %u.";
};

}  // namespace
}  // namespace nimbet::ifaddr

using Table = nimbet::ifaddr::AddrTable<nimbet::ifaddr::Ipv4>;

extern "C" {

NIMBET_ADDR_ENTRIES(Table, NIMBET_DB_IPV4_ADDR_ENTRY,
    NIMBET_DB_GetIpv4AddrItem,
    NIMBET_DB_SetIpv4AddrItem,
    NIMBET_DB_ReadIpv4Entry,
    NIMBET_DB_WriteIpv4Entry,
    NIMBET_DB_RemoveIpv4Entry,
    NIMBET_DB_CountIpv4AddrListItem,
    NIMBET_DB_GetIFIpv4AddrCount,
    NIMBET_DB_CreateIpv4AddrIterator,
    NIMBET_DB_GetNextIpv4Addr,
    NIMBET_DB_ReleaseIpv4AddrIterator)

}  // extern "C"
