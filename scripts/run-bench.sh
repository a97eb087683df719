#!/usr/bin/env bash
# Builds and runs the object database benchmarks against bare hash maps.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/deps.sh
nimbet_need libbenchmark-dev libabsl-dev
cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DNIMBET_BUILD_BENCH=ON -DNIMBET_BUILD_TESTS=OFF \
  -DNIMBET_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build-bench -j"$(nproc)" --target odb_bench
build-bench/bench/odb_bench --benchmark_min_time=0.2 "$@"
