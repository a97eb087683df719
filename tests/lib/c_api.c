/* The exported header and the library, used from plain C11. */
#include <string.h>

#include "nimbet_db.h"

int c_api_roundtrip(void) {
    NIMBET_DB_IPV4_ADDR_ENTRY in, out;
    memset(&in, 0, sizeof in);
    memset(&out, 0, sizeof out);
    in.ifIndex = 4001;
    in.vrfIndex = 2;
    in.addressCount = 1;
    in.addresses[0].address = 0x0A0A0A0Au;
    in.addresses[0].masklen = 24;
    if (NIMBET_DB_WriteIpv4Entry(&in) != NIMBET_DB_OK) return 1;
    out.ifIndex = in.ifIndex;
    if (NIMBET_DB_ReadIpv4Entry(&out) != NIMBET_DB_OK) return 2;
    if (out.addressCount != 1 || out.addresses[0].address != in.addresses[0].address) return 3;
    if (NIMBET_DB_RemoveIpv4Entry(&in.ifIndex) != NIMBET_DB_OK) return 4;
    return NIMBET_DB_ContextInit(NULL) == NIMBET_DB_ERR ? 0 : 5;
}
