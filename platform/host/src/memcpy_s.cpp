// Bounds-checked copy for C libraries without Annex K (glibc among them). The
// build compiles the function only when the C library has none; the test hook
// exists either way and says whether it can act.

#include "host_internal.h"
#include "nimbet_host.h"
#include "nimbet_host_test.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nimbet::host {
namespace {

#if defined(NIMBET_HOST_PROVIDES_MEMCPY_S)
// The usual choice of Annex K implementations: a size above half the address
// space is a negative value converted to size_t, not a real size.
constexpr std::size_t kRsizeMax = SIZE_MAX >> 1;
#endif

std::atomic<uint32_t> g_failLeft{0};
std::atomic<int> g_failStatus{EINVAL};
std::atomic<uint64_t> g_calls{0};

#if defined(NIMBET_HOST_PROVIDES_MEMCPY_S)
// Consumes one armed failure, if any, as a single atomic step.
bool takeInjectedFailure() noexcept {
    uint32_t left = g_failLeft.load(std::memory_order_acquire);
    while (left > 0 && !g_failLeft.compare_exchange_weak(left, left - 1, std::memory_order_acq_rel)) {
    }
    return left > 0;
}

bool overlaps(const void *a, const void *b, std::size_t count) noexcept {
    auto pa = reinterpret_cast<std::uintptr_t>(a);
    auto pb = reinterpret_cast<std::uintptr_t>(b);
    // Distances instead of end pointers, which could wrap at the top of memory.
    return pa < pb ? pb - pa < count : pa - pb < count;
}
#endif

}  // namespace

void resetMemcpy() noexcept {
    g_failLeft.store(0, std::memory_order_release);
    g_failStatus.store(EINVAL, std::memory_order_relaxed);
    g_calls.store(0, std::memory_order_relaxed);
}

}  // namespace nimbet::host

using namespace nimbet::host;

extern "C" {

#if defined(NIMBET_HOST_PROVIDES_MEMCPY_S)
int memcpy_s(void *dest, size_t destMax, const void *src, size_t count) {
    g_calls.fetch_add(1, std::memory_order_relaxed);
    if (takeInjectedFailure()) {
        return g_failStatus.load(std::memory_order_relaxed);
    }
    if (dest == nullptr) {
        return EINVAL;
    }
    if (destMax > kRsizeMax) {
        return ERANGE;
    }
    // dest is usable for destMax bytes from here on: every failure clears it, so
    // a caller that ignores the result never reads a half-built value.
    int err = 0;
    if (src == nullptr) {
        err = EINVAL;
    } else if (count > destMax) {
        err = ERANGE;
    } else if (overlaps(dest, src, count)) {
        err = EINVAL;
    }
    if (err != 0) {
        std::memset(dest, 0, destMax);
        return err;
    }
    std::memcpy(dest, src, count);
    return 0;
}
#endif

int NIMBET_HostTest_FailMemcpy(uint32_t times, int status) {
#if defined(NIMBET_HOST_PROVIDES_MEMCPY_S)
    g_failStatus.store(status != 0 ? status : EINVAL, std::memory_order_relaxed);
    g_failLeft.store(times, std::memory_order_release);
    return 0;
#else
    (void)times;
    (void)status;
    return 1;
#endif
}

uint64_t NIMBET_HostTest_MemcpyCalls(void) { return g_calls.load(std::memory_order_relaxed); }

}  // extern "C"
