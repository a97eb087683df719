// Shared between the parts of libnimbet_host.so; not installed.
#ifndef NIMBET_HOST_INTERNAL_H
#define NIMBET_HOST_INTERNAL_H

namespace nimbet::host {

// Each part clears its own hooks and counts; NIMBET_HostTest_Reset calls all of them.
void resetMemory() noexcept;
void resetDiag() noexcept;
void resetMemcpy() noexcept;

}  // namespace nimbet::host

#endif
