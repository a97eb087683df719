#!/usr/bin/env bash
# Builds everything and runs all tests with CTest.
#   scripts/run-tests.sh            release build in build/
#   scripts/run-tests.sh asan       AddressSanitizer + UBSan build in build-asan/
#   scripts/run-tests.sh tsan       ThreadSanitizer build in build-tsan/, the concurrent tests
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/deps.sh
if [ "${1:-}" = "tsan" ]; then
  tsan=(-DCMAKE_BUILD_TYPE=Debug -DNIMBET_BUILD_EXAMPLES=OFF -DCMAKE_CXX_FLAGS="-fsanitize=thread -O1"
        -DCMAKE_C_FLAGS=-fsanitize=thread -DCMAKE_EXE_LINKER_FLAGS=-fsanitize=thread
        -DCMAKE_SHARED_LINKER_FLAGS=-fsanitize=thread)
  export TSAN_OPTIONS=halt_on_error=1
  cmake -S . -B build-tsan "${tsan[@]}" >/dev/null
  cmake --build build-tsan -j"$(nproc)" --target odb_tests host_tests
  ctest --test-dir build-tsan --output-on-failure -R 'Concurrent'
  exit 0
fi
if [ "${1:-}" = "asan" ]; then
  dir=build-asan
  flags=(-DCMAKE_BUILD_TYPE=Debug -DNIMBET_SANITIZE=ON)
  export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
else
  dir=build
  flags=(-DCMAKE_BUILD_TYPE=Release)
fi
cmake -S . -B "$dir" "${flags[@]}" >/dev/null
cmake --build "$dir" -j"$(nproc)"
ctest --test-dir "$dir" --output-on-failure -j"$(nproc)"
