#!/usr/bin/env bash
# Builds everything and runs all tests with CTest.
#   scripts/run-tests.sh            release build in build/
#   scripts/run-tests.sh asan       AddressSanitizer + UBSan build in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/deps.sh
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
