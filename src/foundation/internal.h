// Helpers shared by every table of the library: logging, statistics,
// counters. Internal; not installed.
#pragma once

#include <atomic>
#include <cstdint>

#include "nimbet_db.h"

namespace nimbet {

// One message is one call of the error-log callback as installed at the
// moment of the message; without a callback the message is dropped.
template <class... Args>
inline void log_err(const char *format, Args... args) {
    if (NIMBET_DB_LOG_FUNC cb = NIMBET_DB_GetErrLogCallBack()) cb(format, args...);
}

// Counters are relaxed atomic increments: concurrent callers never lose a
// count or race in the C++ memory model, and a relaxed add costs no fence.
inline void bump(uint32_t *counters, unsigned slot) {
    std::atomic_ref<uint32_t>(counters[slot]).fetch_add(1, std::memory_order_relaxed);
}

// Map a write/update/remove status: 0 and DB_RET_TOLERATED are success,
// the latter counted under (stat, DB_ERR_TOLERATED).
inline bool tolerated_ok(uint32_t status, uint32_t stat) {
    if (status == 0) return true;
    if (status == DB_RET_TOLERATED) {
        NIMBET_DB_RecordErrStat(stat, DB_ERR_TOLERATED);
        return true;
    }
    return false;
}

}  // namespace nimbet
