#!/usr/bin/env bash
# Builds the libraries and the example host program, then runs it.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DNIMBET_BUILD_TESTS=OFF >/dev/null
cmake --build build -j"$(nproc)" --target nimbet_example
./build/examples/nimbet_example
