// The two allocators of the host: malloc with a small header in front of each
// block. The header names the allocator that made the block, so either free
// function can take it and the accounting still charges the right allocator.

#include "host_internal.h"
#include "nimbet_host.h"
#include "nimbet_host_test.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>

namespace nimbet::host {
namespace {

constexpr uint32_t kLiveMagic = 0x4E48424Cu;   // marks a block handed out and not freed
constexpr uint32_t kFreedMagic = 0x4E484246u;  // written just before the block goes back
constexpr uint32_t kAllocators = 2;

// Padded to the strictest alignment, so the block behind it is aligned for any type.
struct alignas(alignof(std::max_align_t)) BlockHeader {
    uint32_t magic;
    uint32_t origin;  // NIMBET_HOST_ALLOC_*
    uint32_t epoch;   // accounting generation the block was counted in
    uint32_t size;
};

// Counters are relaxed atomics: they order nothing else, and a test reads them
// after joining its threads, which already makes every increment visible.
struct Accounting {
    std::atomic<uint64_t> allocs[kAllocators]{};
    std::atomic<uint64_t> frees[kAllocators]{};
    std::atomic<int64_t> outstanding[kAllocators]{};
    std::atomic<uint64_t> failed{0};
    std::atomic<uint32_t> lastSize{0};
    std::atomic<uint32_t> epoch{0};
};

// Failure injection needs "skip k calls, then fail m" decided as one step, so it
// sits behind a mutex; the armed flag keeps the lock off the path when disarmed.
struct FailPlan {
    std::atomic<bool> armed{false};
    std::mutex mu;
    uint32_t skip = 0;
    uint32_t remaining = 0;
};

constinit Accounting g_acct;
constinit FailPlan g_fail;

bool takeInjectedFailure() noexcept {
    if (!g_fail.armed.load(std::memory_order_acquire)) {
        return false;
    }
    std::lock_guard<std::mutex> lock(g_fail.mu);
    if (g_fail.remaining == 0) {
        return false;
    }
    if (g_fail.skip > 0) {
        --g_fail.skip;
        return false;
    }
    if (--g_fail.remaining == 0) {
        g_fail.armed.store(false, std::memory_order_release);
    }
    return true;
}

void *allocate(uint32_t origin, uint32_t size) noexcept {
    g_acct.lastSize.store(size, std::memory_order_relaxed);
    if (takeInjectedFailure()) {
        g_acct.failed.fetch_add(1, std::memory_order_relaxed);
        return nullptr;
    }
    if constexpr (sizeof(std::size_t) <= sizeof(uint32_t)) {
        if (size > SIZE_MAX - sizeof(BlockHeader)) {
            return nullptr;
        }
    }
    void *raw = std::malloc(sizeof(BlockHeader) + std::size_t{size});
    if (raw == nullptr) {
        return nullptr;
    }
    uint32_t epoch = g_acct.epoch.load(std::memory_order_relaxed);
    auto *header = new (raw) BlockHeader{kLiveMagic, origin, epoch, size};
    g_acct.allocs[origin].fetch_add(1, std::memory_order_relaxed);
    g_acct.outstanding[origin].fetch_add(1, std::memory_order_relaxed);
    return header + 1;
}

void release(uint32_t via, void *block) noexcept {
    if (block == nullptr) {
        return;
    }
    auto *header = static_cast<BlockHeader *>(block) - 1;
    if (header->magic != kLiveMagic || header->origin >= kAllocators) {
        // Not a block of this host, or freed before: passing it to free() would
        // corrupt the heap far from the faulty caller.
        std::abort();
    }
    header->magic = kFreedMagic;
    g_acct.frees[via].fetch_add(1, std::memory_order_relaxed);
    if (header->epoch == g_acct.epoch.load(std::memory_order_relaxed)) {
        g_acct.outstanding[header->origin].fetch_sub(1, std::memory_order_relaxed);
    }
    std::free(header);
}

uint64_t readCounter(const std::atomic<uint64_t> *counters, uint32_t allocator) noexcept {
    return allocator < kAllocators ? counters[allocator].load(std::memory_order_relaxed) : 0;
}

uint64_t outstandingOf(uint32_t allocator) noexcept {
    if (allocator >= kAllocators) {
        return 0;
    }
    int64_t n = g_acct.outstanding[allocator].load(std::memory_order_relaxed);
    return n > 0 ? static_cast<uint64_t>(n) : 0;
}

}  // namespace

void resetMemory() noexcept {
    {
        std::lock_guard<std::mutex> lock(g_fail.mu);
        g_fail.skip = 0;
        g_fail.remaining = 0;
        g_fail.armed.store(false, std::memory_order_release);
    }
    // A new epoch first, so blocks of the old one never reach the zeroed counts.
    g_acct.epoch.fetch_add(1, std::memory_order_relaxed);
    for (uint32_t i = 0; i < kAllocators; ++i) {
        g_acct.allocs[i].store(0, std::memory_order_relaxed);
        g_acct.frees[i].store(0, std::memory_order_relaxed);
        g_acct.outstanding[i].store(0, std::memory_order_relaxed);
    }
    g_acct.failed.store(0, std::memory_order_relaxed);
    g_acct.lastSize.store(0, std::memory_order_relaxed);
}

}  // namespace nimbet::host

using namespace nimbet::host;

extern "C" {

void *NIMBET_AllocMem(uint32_t size) { return allocate(NIMBET_HOST_ALLOC_GENERAL, size); }

void NIMBET_FreeMem(void *block) { release(NIMBET_HOST_ALLOC_GENERAL, block); }

void *NIMBET_URPF_AllocMem(uint32_t size) { return allocate(NIMBET_HOST_ALLOC_URPF, size); }

void NIMBET_URPF_FreeMem(void *block) { release(NIMBET_HOST_ALLOC_URPF, block); }

void NIMBET_HostTest_FailAlloc(uint32_t nth, uint32_t times) {
    std::lock_guard<std::mutex> lock(g_fail.mu);
    if (nth == 0) {
        g_fail.skip = 0;
        g_fail.remaining = 0;
        g_fail.armed.store(false, std::memory_order_release);
        return;
    }
    g_fail.skip = nth - 1;
    g_fail.remaining = times == 0 ? 1 : times;
    g_fail.armed.store(true, std::memory_order_release);
}

uint64_t NIMBET_HostTest_FailedAllocs(void) { return g_acct.failed.load(std::memory_order_relaxed); }

uint64_t NIMBET_HostTest_AllocCount(uint32_t allocator) { return readCounter(g_acct.allocs, allocator); }

uint64_t NIMBET_HostTest_FreeCount(uint32_t allocator) { return readCounter(g_acct.frees, allocator); }

uint64_t NIMBET_HostTest_Outstanding(uint32_t allocator) { return outstandingOf(allocator); }

uint64_t NIMBET_HostTest_OutstandingTotal(void) {
    return outstandingOf(NIMBET_HOST_ALLOC_GENERAL) + outstandingOf(NIMBET_HOST_ALLOC_URPF);
}

uint32_t NIMBET_HostTest_LastAllocSize(void) { return g_acct.lastSize.load(std::memory_order_relaxed); }

void NIMBET_HostTest_Reset(void) {
    resetMemory();
    resetDiag();
    resetMemcpy();
}

}  // extern "C"
