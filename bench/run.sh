#!/usr/bin/env bash
# Prints the tables of the benchmarks, pinned to one CPU where the system allows it (XML, which has two threads, is not).
#   bench/run.sh [SUBJECT...]      Container, File, XML, Property, Surface, DataSet, Measurement, Start, Growth; all of them when none is named
# In the environment: build (build/release) is where they were built, cpu the number of the CPU, options go to each
# program (--benchmark_filter=...), TIVOR_BENCH_DIRECTORY takes the files of File and Measurement.
set -euo pipefail
cd "$(dirname "$0")/.."
cpu=${cpu:-$(($(nproc) - 1))}
pinned=(taskset -c "$cpu")
if ! "${pinned[@]}" true 2>/dev/null; then
    echo "Not pinned to a CPU" >&2
    pinned=(env)
fi
[[ $# -gt 0 ]] || set -- Container File XML Property Surface DataSet Measurement Start Growth
for subject; do
    run=("${pinned[@]}")
    [[ $subject != XML ]] || run=(env)
    # shellcheck disable=SC2086
    "${run[@]}" "${build:-build/release}/bin/${subject}Bench" ${options:-}
done
