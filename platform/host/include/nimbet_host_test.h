/*
 * nimbet_host_test.h - test hooks of libnimbet_host.so: allocation failures,
 * block accounting, capture of diagnostic lines and memcpy_s failures.
 *
 * Plain C interface, usable from C11 and C++ tests. The hooks are process
 * wide. Arming and reading them is thread safe; NIMBET_HostTest_Reset should
 * run while no other thread uses the host services.
 */
#ifndef NIMBET_HOST_TEST_H
#define NIMBET_HOST_TEST_H

#include "nimbet_host.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Selects an allocator in the accounting hooks. */
#define NIMBET_HOST_ALLOC_GENERAL 0u /* NIMBET_AllocMem / NIMBET_FreeMem */
#define NIMBET_HOST_ALLOC_URPF    1u /* NIMBET_URPF_AllocMem / NIMBET_URPF_FreeMem */

/* Makes the nth allocation from now fail, counting calls of both allocators
 * (1 is the next call), and the times - 1 calls after it as well (0 is taken
 * as 1). A failing call returns null and allocates nothing. nth 0 disarms.
 * Arming again replaces the previous setting. */
NIMBET_HOST_API void NIMBET_HostTest_FailAlloc(uint32_t nth, uint32_t times);

/* Allocation calls that were made to fail by NIMBET_HostTest_FailAlloc. */
NIMBET_HOST_API uint64_t NIMBET_HostTest_FailedAllocs(void);

/* Successful allocations made by one allocator (NIMBET_HOST_ALLOC_*); 0 for
 * any other value. */
NIMBET_HOST_API uint64_t NIMBET_HostTest_AllocCount(uint32_t allocator);

/* Non-null blocks given to one allocator's free function, whichever
 * allocator made them. Shows which free function a caller used. */
NIMBET_HOST_API uint64_t NIMBET_HostTest_FreeCount(uint32_t allocator);

/* Blocks made by one allocator and not freed yet, by either free function.
 * Blocks made before the last NIMBET_HostTest_Reset are not counted, also
 * when they are freed later. */
NIMBET_HOST_API uint64_t NIMBET_HostTest_Outstanding(uint32_t allocator);

/* Outstanding blocks of both allocators. */
NIMBET_HOST_API uint64_t NIMBET_HostTest_OutstandingTotal(void);

/* Size asked of the most recent allocation call, failed or not; 0 before
 * the first call after a reset. */
NIMBET_HOST_API uint32_t NIMBET_HostTest_LastAllocSize(void);

/* One captured diagnostic line. length is the length of the whole formatted
 * text; text holds at most NIMBET_HOST_DIAG_TEXT_MAX - 1 bytes of it and a
 * terminating null. */
typedef struct {
    uint32_t words[4];
    uint32_t length;
    char text[NIMBET_HOST_DIAG_TEXT_MAX];
} NIMBET_HOST_DIAG_LINE;

/* Lines kept now (at most NIMBET_HOST_DIAG_CAPACITY). */
NIMBET_HOST_API uint32_t NIMBET_HostTest_DiagCount(void);

/* Lines recorded since the last clear, including those the ring dropped. */
NIMBET_HOST_API uint64_t NIMBET_HostTest_DiagTotal(void);

/* Copies kept line index (0 is the oldest kept) into *line and returns 0;
 * returns 1 and leaves *line alone when index >= the count or line is null. */
NIMBET_HOST_API int NIMBET_HostTest_DiagGet(uint32_t index, NIMBET_HOST_DIAG_LINE *line);

/* Drops every kept line and sets the total to 0. */
NIMBET_HOST_API void NIMBET_HostTest_DiagClear(void);

/* Makes the next times calls of memcpy_s return status without reading src
 * or writing dest (a status of 0 is taken as EINVAL). times 0 disarms.
 * Returns 0, or 1 when this build uses the C library's memcpy_s, which the
 * hook cannot reach. */
NIMBET_HOST_API int NIMBET_HostTest_FailMemcpy(uint32_t times, int status);

/* Calls of this library's memcpy_s, the failed and hooked ones included. */
NIMBET_HOST_API uint64_t NIMBET_HostTest_MemcpyCalls(void);

/* Disarms every hook, sets every count to 0, clears the diagnostic lines and
 * turns echo off. Blocks alive now drop out of the accounting. */
NIMBET_HOST_API void NIMBET_HostTest_Reset(void);

#ifdef __cplusplus
}
#endif

#endif /* NIMBET_HOST_TEST_H */
