/*
 * A host of libnimbet_db on this repository's embedded database, along the
 * road a routing process takes: it installs its logging callbacks, stores
 * the IPv4 and IPv6 addresses of a few interfaces, reads and walks them,
 * sets IP options, registers socket sessions of every kind, reads one back,
 * walks the IPv4 sessions and deletes one, then prints the error matrix.
 */
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "nimbet_db.h"

static void info_log(const char *format, ...) {
    va_list ap;
    va_start(ap, format);
    printf("  [info] ");
    vprintf(format, ap);
    printf("\n");
    va_end(ap);
}

static void err_log(const char *format, ...) {
    va_list ap;
    va_start(ap, format);
    printf("  [error] ");
    vprintf(format, ap);
    printf("\n");
    va_end(ap);
}

static void print_ipv4(const NIMBET_DB_IPV4_ADDR_ENTRY *e) {
    printf("  ifIndex %u vrf %u: %u address(es)", e->ifIndex, e->vrfIndex, e->addressCount);
    for (uint32_t i = 0; i < e->addressCount; ++i) {
        const uint32_t a = e->addresses[i].address;
        printf(" %u.%u.%u.%u/%u", a >> 24, (a >> 16) & 0xFFu, (a >> 8) & 0xFFu, a & 0xFFu,
               e->addresses[i].masklen);
    }
    printf("\n");
}

static void print_error_matrix(void) {
    int any = 0;
    printf("error matrix (table, kind) = count:\n");
    for (uint32_t i = 0; i < NIMBET_DB_ERR_STAT_NUM; ++i) {
        if (g_nimbetDbErrStat[i] == 0) continue;
        printf("  (%u, %u) = %u\n", i / NIMBET_DB_ERR_KIND_NUM, i % NIMBET_DB_ERR_KIND_NUM, g_nimbetDbErrStat[i]);
        any = 1;
    }
    if (!any) printf("  all zero\n");
}

static NIMBET_DB_IPV4_ADDR_ENTRY interfaces[3];
static NIMBET_DB_IPV6_ADDR_ENTRY ipv6_row;

static void ipv6_and_walks(void) {
    memset(&ipv6_row, 0, sizeof ipv6_row);
    ipv6_row.ifIndex = 100;
    ipv6_row.addressCount = 2;
    const uint8_t global[16] = {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x01};
    const uint8_t link[16] = {0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x01};
    memcpy(ipv6_row.addresses[0].address, global, 16);
    ipv6_row.addresses[0].prefixlen = 64;
    memcpy(ipv6_row.addresses[1].address, link, 16);
    ipv6_row.addresses[1].prefixlen = 10;
    printf("write IPv6 addresses of ifIndex 100: result %u\n", NIMBET_DB_WriteIpv6Entry(&ipv6_row));
    uint32_t n = 0;
    NIMBET_DB_GetIFIpv6AddrCount(100, &n);
    uint32_t rows = 0;
    NIMBET_DB_GetIpV6IfCount(&rows);
    printf("ifIndex 100 has %u IPv6 address(es); %u interface(s) have IPv6 rows\n", n, rows);

    printf("walk of the IPv4 address table:\n");
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreateIpv4AddrIterator();
    static NIMBET_DB_IPV4_ADDR_ENTRY e;
    while (it != NULL && NIMBET_DB_GetNextIpv4Addr(it, &e) == NIMBET_DB_OK) print_ipv4(&e);
    NIMBET_DB_ReleaseIpv4AddrIterator(it);
}

static void ip_options(void) {
    const NIMBET_DB_IF_IPOPTION_ENTRY ifOpt = {1, 100, 7, 1, 0, 0, 0};
    const NIMBET_DB_GLOBAL_IPOPTION_ENTRY globalOpt = {1, 7, 0, 0, 0, 0};
    const uint32_t w1 = NIMBET_DB_OptWriteIfEntry(&ifOpt);
    const uint32_t w2 = NIMBET_DB_OptWriteGlobalEntry(&globalOpt);
    printf("IP options: interface write %u, global write %u\n", w1, w2);
    NIMBET_DB_IF_IPOPTION_ENTRY got = {1, 100, 7, 0, 0, 0, 0};
    const uint32_t r = NIMBET_DB_OptReadIfEntry(&got);
    printf("  read back: result %u, value1 %u\n", r, got.value1);
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreateOptIfIterator();
    uint32_t rows = 0;
    while (it != NULL && NIMBET_DB_OptGetNextIf(it, &got) == NIMBET_DB_OK) ++rows;
    NIMBET_DB_ReleaseOptIfIterator(it);
    printf("  walk: %u interface option row(s); iterators created %u, released %u\n", rows,
           g_nimbetIpOptionCnt[IP_OPTION_CNT_ITER_CREATE], g_nimbetIpOptionCnt[IP_OPTION_CNT_ITER_RELEASE]);
}

static void sessions(void) {
    NIMBET_DB_INET_SESS_ENTRY bgp = {10, 4242, 0, 0, 0x0A000001u, 0x0A000002u, 50000, 179, 6, 1, 0, 0, 0};
    NIMBET_DB_INET_SESS_ENTRY bgp2 = {11, 4242, 0, 0, 0x0A000001u, 0x0A000003u, 50001, 179, 6, 1, 0, 0, 0};
    NIMBET_DB_INET6_SESS_ENTRY bgp6;
    NIMBET_DB_PING_SESS_ENTRY ping;
    NIMBET_DB_GROUP_SESS_ENTRY rip;
    NIMBET_DB_GROUP6_SESS_ENTRY ripng;
    NIMBET_DB_ISIS_SESS_ENTRY isis;
    memset(&bgp6, 0, sizeof bgp6);
    memset(&ping, 0, sizeof ping);
    memset(&rip, 0, sizeof rip);
    memset(&ripng, 0, sizeof ripng);
    memset(&isis, 0, sizeof isis);
    bgp6.sockId = 12;
    bgp6.hPid = 4243;
    bgp6.srcIp[15] = 1;
    bgp6.dstIp[15] = 2;
    bgp6.dstPort = 179;
    bgp6.protocol = 6;
    ping.sockId = 13;
    ping.testId = 1;
    rip.sockId = 14;
    rip.protocol = 17;
    rip.srcPort = 520;
    rip.ifIndex = 100;
    ripng.sockId = 15;
    ripng.protocol = 17;
    ripng.srcPort = 521;
    ripng.ifIndex = 100;
    isis.sockId = 16;
    isis.ifIndex = 100;
    isis.macAddr[0] = 0x01;
    isis.macAddr[1] = 0x80;
    isis.macAddr[2] = 0xc2;
    isis.macAddr[5] = 0x14;
    printf("register sessions:\n");
    printf("  inet %u: result %u\n", bgp.sockId, NIMBET_DB_WriteEntryInet(&bgp));
    printf("  inet %u: result %u\n", bgp2.sockId, NIMBET_DB_WriteEntryInet(&bgp2));
    printf("  inet6 %u: result %u\n", bgp6.sockId, NIMBET_DB_WriteEntryInet6(&bgp6));
    printf("  ping %u: result %u\n", ping.sockId, NIMBET_DB_WriteEntryPing(&ping));
    printf("  group %u: result %u\n", rip.sockId, NIMBET_DB_WriteEntryGroup(&rip));
    printf("  group6 %u: result %u\n", ripng.sockId, NIMBET_DB_WriteEntryGroup6(&ripng));
    printf("  isis %u: result %u\n", isis.sockId, NIMBET_DB_WriteEntryIsis(&isis));

    NIMBET_DB_INET_SESS_ENTRY got;
    memset(&got, 0, sizeof got);
    NIMBET_DB_SetEntryKeyInet(&got, &bgp);
    const uint32_t r = NIMBET_DB_ReadEntryInet(&got);
    printf("read inet session %u back: result %u, attr1 %u\n", bgp.sockId, r, got.attr1);

    printf("walk of the inet session table:\n");
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreatInetSessIterator();
    while (it != NULL && NIMBET_DB_GetNextInetSess(it, &got) == NIMBET_DB_OK)
        printf("  sockId %u hPid %u %u -> %u protocol %u\n", got.sockId, got.hPid, got.srcPort, got.dstPort, got.protocol);
    NIMBET_DB_ReleaseInetSessIterator(it);

    printf("delete inet session %u: result %u\n", bgp2.sockId, NIMBET_DB_DeleteEntryInet(&bgp2));
    printf("session counters: reads %u/%u, writes %u/%u, deletes %u/%u, inet walks %u/%u\n", g_nimbetSessionCnt[0],
           g_nimbetSessionCnt[1], g_nimbetSessionCnt[2], g_nimbetSessionCnt[3], g_nimbetSessionCnt[4],
           g_nimbetSessionCnt[5], g_nimbetSessionCnt[12], g_nimbetSessionCnt[13]);
}

/* The road of a routing process: sessions of two producer processes are
 * registered, presence is asked, and the rows of one producer are walked by
 * PID and aged out. */
static void aging(void) {
    NIMBET_DB_INET_SESS_ENTRY s;
    memset(&s, 0, sizeof s);
    s.protocol = 6;
    s.dstPort = 179;
    for (uint32_t i = 0; i < 6; ++i) {
        s.sockId = 100 + i;
        s.hPid = i % 2 == 0 ? 5001 : 5002;
        NIMBET_DB_WriteEntryInet(&s);
    }
    s.attr1 = 0;
    printf("BGP session registered (destination port 179)? %u\n", NIMBET_DB_IsBgpSessExist(&s, 0));
    s.dstPort = 180;
    printf("BGP session registered (destination port 180)? %u\n", NIMBET_DB_IsBgpSessExist(&s, 0));

    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreatePidIterator(NIMBET_DB_AGE_TABLE_INET_SESS, 5002);
    uint32_t aged = 0;
    while (it != NULL && NIMBET_DB_GetNextTableByAgeIterator(NIMBET_DB_AGE_TABLE_INET_SESS, it, &s) == NIMBET_DB_OK) {
        printf("  aging out sockId %u of producer %u: result %u\n", s.sockId, s.hPid, NIMBET_DB_DeleteEntryInet(&s));
        ++aged;
    }
    NIMBET_DB_ReleaseAgeIterator(NIMBET_DB_AGE_TABLE_INET_SESS, it);
    printf("aged out %u session(s) of producer 5002; aging objects counted %u\n", aged,
           g_nimbetSmoothCnt[11]);
    s.dstPort = 179;
    printf("BGP session still registered? %u\n", NIMBET_DB_IsBgpSessExist(&s, 0));
}

/* Service configuration and URPF: a subnet broadcast row, UDP helper rows,
 * a URPF mode row re-validated in place, and the members of a trunk. */
static void services_and_urpf(void) {
    NIMBET_DB_SUB_BC_ENTRY bc;
    memset(&bc, 0, sizeof bc);
    bc.key1 = 1; /* group id */
    bc.key2 = 100;
    bc.flag1 = 1;
    printf("subnet broadcast row: write %u", NIMBET_DB_WriteSubBc(&bc));
    NIMBET_DB_ITER_INFO *it = NIMBET_DB_CreateSubBcIteratorByGroupId(1);
    uint32_t rows = 0;
    while (it != NULL && NIMBET_DB_GetNextSubBc(it, &bc) == NIMBET_DB_OK) ++rows;
    NIMBET_DB_ReleaseSubBcIterator(it);
    printf(", %u row(s) in group 1\n", rows);

    const NIMBET_DB_UDP_HELPER_PORT_ENTRY port = {0, 67, 1, 0};
    const NIMBET_DB_UDP_HELPER_SERVER_ENTRY server = {0, 7, 0x0A000063u, 0};
    const uint32_t wp = NIMBET_DB_WriteUdpHelperPort(&port);
    const uint32_t ws = NIMBET_DB_WriteUdpHelperServer(&server);
    uint32_t ports = 0;
    NIMBET_DB_ReadEntryGetUdpHelperPortNum(&port, &ports);
    printf("UDP helper: port write %u, server write %u, rows for port 67: %u\n", wp, ws, ports);

    static NIMBET_DB_URPF_MODE_ENTRY urpf;
    memset(&urpf, 0, sizeof urpf);
    urpf.key1 = 1;
    urpf.key2 = 100;
    urpf.flags = 1;
    printf("URPF mode: write %u", NIMBET_DB_WriteUrpfMode(&urpf));
    urpf.flags = 3;
    urpf.svcStatus = 1;
    printf(", re-validate %u", NIMBET_DB_UpdateUrpfValid(&urpf));
    urpf.flags = 0;
    const uint32_t r = NIMBET_DB_ReadUrpfMode(&urpf);
    printf(", read %u: flags %u svcStatus %u\n", r, urpf.flags, urpf.svcStatus);

    for (uint32_t m = 201; m <= 203; ++m) {
        const NIMBET_DB_URPF_TRUNKMEM_ENTRY member = {200, m, 1};
        NIMBET_DB_AddTrunkMember(&member);
    }
    uint32_t members[8], count = 0;
    const uint32_t lr = NIMBET_DB_GetTrunkMemByIfIndex(200, 8, members, &count);
    printf("trunk 200: listing %u, %u member(s):", lr, count);
    for (uint32_t i = 0; i < count; ++i) printf(" %u", members[i]);
    printf("\n");
}

int main(void) {
    const NIMBET_DB_CONTEXT ctx = {info_log, err_log};
    if (NIMBET_DB_ContextInit(&ctx) != NIMBET_DB_OK) return 1;
    printf("callbacks installed\n");

    /* Three interfaces; the last one has no address yet. */
    for (uint32_t n = 0; n < 3; ++n) {
        NIMBET_DB_IPV4_ADDR_ENTRY *e = &interfaces[n];
        memset(e, 0, sizeof *e);
        e->ifIndex = 100 + n;
        e->vrfIndex = n == 0 ? 0 : 7;
        e->addressCount = 2 - n;
        for (uint32_t i = 0; i < e->addressCount; ++i) {
            e->addresses[i].address = 0xC0A80001u + (n << 8) + i; /* 192.168.n.(1+i) */
            e->addresses[i].masklen = 24;
        }
        printf("write ifIndex %u: result %u\n", e->ifIndex, NIMBET_DB_WriteIpv4Entry(e));
    }

    printf("read back:\n");
    for (uint32_t n = 0; n < 3; ++n) {
        NIMBET_DB_IPV4_ADDR_ENTRY got;
        memset(&got, 0, sizeof got);
        got.ifIndex = interfaces[n].ifIndex;
        const uint32_t r = NIMBET_DB_ReadIpv4Entry(&got);
        if (r == NIMBET_DB_OK) print_ipv4(&got);
        else printf("  ifIndex %u: result %u\n", got.ifIndex, r);
    }

    printf("remove ifIndex %u: result %u\n", interfaces[1].ifIndex, NIMBET_DB_RemoveIpv4Entry(&interfaces[1].ifIndex));
    NIMBET_DB_IPV4_ADDR_ENTRY gone;
    memset(&gone, 0, sizeof gone);
    gone.ifIndex = interfaces[1].ifIndex;
    printf("read ifIndex %u after remove: result %u (no row)\n", gone.ifIndex, NIMBET_DB_ReadIpv4Entry(&gone));
    /* The database tolerates removing a missing row; the library counts it. */
    printf("remove ifIndex %u again: result %u\n", interfaces[1].ifIndex,
           NIMBET_DB_RemoveIpv4Entry(&interfaces[1].ifIndex));
    ipv6_and_walks();
    ip_options();
    sessions();
    aging();
    services_and_urpf();

    /* An out-of-range statistic is refused and reported through the error log. */
    NIMBET_DB_RecordErrStat(20, 0);

    print_error_matrix();
    return 0;
}
