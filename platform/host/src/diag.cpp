// Diagnostic record: a fixed ring of the newest lines, kept in memory so that
// a busy walk never blocks on I/O; the host prints them only when it asks.

#include "host_internal.h"
#include "nimbet_host.h"
#include "nimbet_host_test.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <mutex>

namespace nimbet::host {
namespace {

struct Ring {
    std::mutex mu;
    NIMBET_HOST_DIAG_LINE lines[NIMBET_HOST_DIAG_CAPACITY]{};
    uint64_t total = 0;  // lines recorded since the last clear; the next slot is total % capacity
    std::atomic<bool> echo{false};
};

constinit Ring g_ring;

uint32_t keptLocked() noexcept {
    return static_cast<uint32_t>(std::min<uint64_t>(g_ring.total, NIMBET_HOST_DIAG_CAPACITY));
}

const NIMBET_HOST_DIAG_LINE &keptLineLocked(uint32_t index) noexcept {
    uint64_t first = g_ring.total - keptLocked();
    return g_ring.lines[(first + index) % NIMBET_HOST_DIAG_CAPACITY];
}

void printLine(std::FILE *out, const NIMBET_HOST_DIAG_LINE &line) noexcept {
    std::fprintf(out, "%u %u %u %u %s\n", static_cast<unsigned>(line.words[0]),
                 static_cast<unsigned>(line.words[1]), static_cast<unsigned>(line.words[2]),
                 static_cast<unsigned>(line.words[3]), line.text);
}

uint32_t record(uint32_t w1, uint32_t w2, uint32_t w3, uint32_t w4, const char *format,
                std::va_list args) noexcept {
    // Formatted outside the lock: callers' arguments may be slow to render.
    NIMBET_HOST_DIAG_LINE line{};
    line.words[0] = w1;
    line.words[1] = w2;
    line.words[2] = w3;
    line.words[3] = w4;
    if (format != nullptr) {
        int n = std::vsnprintf(line.text, sizeof line.text, format, args);
        line.length = n > 0 ? static_cast<uint32_t>(n) : 0;
    }
    {
        std::lock_guard<std::mutex> lock(g_ring.mu);
        g_ring.lines[g_ring.total % NIMBET_HOST_DIAG_CAPACITY] = line;
        ++g_ring.total;
    }
    if (g_ring.echo.load(std::memory_order_relaxed)) {
        printLine(stderr, line);
    }
    return format != nullptr ? 0 : 1;
}

}  // namespace

void resetDiag() noexcept {
    {
        std::lock_guard<std::mutex> lock(g_ring.mu);
        g_ring.total = 0;
    }
    g_ring.echo.store(false, std::memory_order_relaxed);
}

}  // namespace nimbet::host

using namespace nimbet::host;

extern "C" {

uint32_t NIMBET_DIAG_Record(uint32_t w1, uint32_t w2, uint32_t w3, uint32_t w4, const char *format, ...) {
    std::va_list args;
    va_start(args, format);
    uint32_t rc = record(w1, w2, w3, w4, format, args);
    va_end(args);
    return rc;
}

uint32_t NIMBET_HOST_DiagDump(FILE *out) {
    if (out == nullptr) {
        return 0;
    }
    // Held while printing so the dump is one consistent snapshot; recorders wait.
    std::lock_guard<std::mutex> lock(g_ring.mu);
    uint32_t kept = keptLocked();
    for (uint32_t i = 0; i < kept; ++i) {
        printLine(out, keptLineLocked(i));
    }
    return kept;
}

void NIMBET_HOST_DiagEcho(int on) { g_ring.echo.store(on != 0, std::memory_order_relaxed); }

uint32_t NIMBET_HostTest_DiagCount(void) {
    std::lock_guard<std::mutex> lock(g_ring.mu);
    return keptLocked();
}

uint64_t NIMBET_HostTest_DiagTotal(void) {
    std::lock_guard<std::mutex> lock(g_ring.mu);
    return g_ring.total;
}

int NIMBET_HostTest_DiagGet(uint32_t index, NIMBET_HOST_DIAG_LINE *line) {
    if (line == nullptr) {
        return 1;
    }
    std::lock_guard<std::mutex> lock(g_ring.mu);
    if (index >= keptLocked()) {
        return 1;
    }
    *line = keptLineLocked(index);
    return 0;
}

void NIMBET_HostTest_DiagClear(void) {
    std::lock_guard<std::mutex> lock(g_ring.mu);
    g_ring.total = 0;
}

}  // extern "C"
