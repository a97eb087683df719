/*
 * A host of libnimbet_db on this repository's embedded database: it installs
 * its logging callbacks, stores the IPv4 addresses of a few interfaces, reads
 * them back, removes one, and prints what happened and the error matrix.
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
    /* An out-of-range statistic is refused and reported through the error log. */
    NIMBET_DB_RecordErrStat(20, 0);

    print_error_matrix();
    return 0;
}
