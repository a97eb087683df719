/* Built as C11: the host headers must stay usable from C hosts. */
#include "nimbet_host.h"
#include "nimbet_host_test.h"

#include <string.h>

/* Returns 0, or the number of the first step that went wrong. */
int nimbet_host_c_smoke(void)
{
    unsigned char src[4] = {1, 2, 3, 4};
    unsigned char dest[4] = {0};
    NIMBET_HOST_DIAG_LINE line;
    void *block;

    block = NIMBET_URPF_AllocMem(16);
    if (block == NULL) {
        return 1;
    }
    if (NIMBET_HostTest_Outstanding(NIMBET_HOST_ALLOC_URPF) != 1) {
        return 2;
    }
    NIMBET_FreeMem(block);
    if (NIMBET_HostTest_OutstandingTotal() != 0) {
        return 3;
    }

    NIMBET_HostTest_FailAlloc(1, 1);
    if (NIMBET_AllocMem(8) != NULL) {
        return 4;
    }

    NIMBET_HostTest_DiagClear();
    NIMBET_DIAG_Record(1, 0, 2, 1, "c host %u", 7u);
    if (NIMBET_HostTest_DiagGet(0, &line) != 0 || line.words[2] != 2 || strcmp(line.text, "c host 7") != 0) {
        return 5;
    }

    if (memcpy_s(dest, sizeof dest, src, sizeof src) != 0 || memcmp(dest, src, sizeof dest) != 0) {
        return 6;
    }
    return 0;
}
