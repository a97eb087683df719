/*
 * nimbet_host.h - host services of the IP services module: memory for walk
 * handles, the diagnostic record, and memcpy_s where the C library lacks it.
 *
 * Plain C interface, usable from C11 and C++ hosts. A device links its own
 * provider of these symbols; libnimbet_host.so is the default one, used by
 * this repository's tests, benchmarks and examples.
 */
#ifndef NIMBET_HOST_H
#define NIMBET_HOST_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(NIMBET_HOST_BUILD)
#define NIMBET_HOST_API __attribute__((visibility("default")))
#else
#define NIMBET_HOST_API
#endif

#if defined(__GNUC__)
#define NIMBET_HOST_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define NIMBET_HOST_PRINTF(fmt, args)
#endif

/* General memory. Returns null when no memory is left. A block from either
 * allocator may be given to either free function; freeing null does nothing.
 * Blocks are aligned for any object type. Safe from any thread. */
NIMBET_HOST_API void *NIMBET_AllocMem(uint32_t size);
NIMBET_HOST_API void NIMBET_FreeMem(void *block);

/* Memory of the URPF walks; same contract as the general pair. */
NIMBET_HOST_API void *NIMBET_URPF_AllocMem(uint32_t size);
NIMBET_HOST_API void NIMBET_URPF_FreeMem(void *block);

/* Records one diagnostic line: four words whose meaning is the caller's, and
 * a printf-style text. Lines are kept in memory, the newest
 * NIMBET_HOST_DIAG_CAPACITY of them; nothing is printed unless echo is on or
 * the host dumps them. Texts longer than NIMBET_HOST_DIAG_TEXT_MAX - 1 bytes
 * are cut. Returns 0; a null format records the words with an empty text and
 * returns 1. */
NIMBET_HOST_API uint32_t NIMBET_DIAG_Record(uint32_t w1, uint32_t w2, uint32_t w3, uint32_t w4,
                                            const char *format, ...) NIMBET_HOST_PRINTF(5, 6);

#define NIMBET_HOST_DIAG_CAPACITY 256u
#define NIMBET_HOST_DIAG_TEXT_MAX 256u

/* Writes the kept lines, oldest first, one per line as
 * "w1 w2 w3 w4 text\n". Returns the number of lines written; a null stream
 * writes nothing. */
NIMBET_HOST_API uint32_t NIMBET_HOST_DiagDump(FILE *out);

/* Nonzero: every line recorded from now on is also written to stderr, in the
 * format of NIMBET_HOST_DiagDump. Off by default. */
NIMBET_HOST_API void NIMBET_HOST_DiagEcho(int on);

/* Bounds-checked copy with the semantics of C11 Annex K: returns 0 after
 * copying count bytes; returns nonzero, and copies nothing, on a null
 * pointer, destMax or count above RSIZE_MAX, count > destMax, or overlapping
 * ranges. On such a failure, when dest is not null and destMax is not above
 * RSIZE_MAX, the first destMax bytes of dest are set to zero. Declared only
 * where the C library does not provide it. */
#if !defined(__STDC_LIB_EXT1__) || defined(NIMBET_HOST_PROVIDES_MEMCPY_S)
NIMBET_HOST_API int memcpy_s(void *dest, size_t destMax, const void *src, size_t count);
#endif

#ifdef __cplusplus
}
#endif

#endif /* NIMBET_HOST_H */
