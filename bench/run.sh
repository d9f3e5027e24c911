#!/usr/bin/env bash
# Prints the table of all benchmarks, pinned to one CPU where the system allows it.
#   bench/run.sh [BUILD_DIRECTORY] [OPTION...]    build/release; options go to each program: --benchmark_filter=...
# In the environment: TIVOR_BENCH_DIRECTORY takes the files, cpu is the number of the CPU.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
shift || true
cpu=${cpu:-$(($(nproc) - 1))}
pinned=()
if taskset -c "$cpu" true 2>/dev/null; then
    pinned=(taskset -c "$cpu")
else
    echo "Not pinned to a CPU" >&2
fi
for program in Container File Start Growth; do
    "${pinned[@]}" "$build/bin/${program}Bench" "$@"
done
