#!/usr/bin/env bash
# Builds the libFuzzer targets (fuzz/, clang with ASan and UBSan, no server)
# and runs each for a bounded time.
#   scripts/fuzz.sh [seconds per target, default 60] [target...]
# Targets: interfaces zones services inspection device core (default: all).
# The corpus grows in $UTIL_DB_FUZZ_BUILD/corpus/<target> (default build-fuzz/);
# a crash, leak or sanitizer report leaves its input in
# $UTIL_DB_FUZZ_BUILD/artifacts/ and makes the script exit non-zero. Replay one
# with: build-fuzz/fuzz_<target> <file>.
# A longer campaign: scripts/fuzz.sh 1800 (half an hour per target).
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
seconds=${1:-60}
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(interfaces zones services inspection device core)
build=${UTIL_DB_FUZZ_BUILD:-$root/build-fuzz}

cmake -S "$root/fuzz" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER="${CXX_FUZZ:-clang++}" ${UTIL_DB_FUZZ_CMAKE_ARGS:-} >/dev/null
cmake --build "$build" -j 2 >/dev/null

export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
mkdir -p "$build/artifacts"
status=0
for t in "${targets[@]}"; do
  mkdir -p "$build/corpus/$t"
  log="$build/fuzz_$t.log"
  if "$build/fuzz_$t" -max_total_time="$seconds" -max_len=16384 -timeout=10 \
       -artifact_prefix="$build/artifacts/$t-" "$build/corpus/$t" >"$log" 2>&1; then
    echo "fuzz_$t: ${seconds}s, $(grep -Eo '#[0-9]+' "$log" | tail -1 | tr -d '#') inputs, $(grep -Eo 'cov: [0-9]+' "$log" | tail -1), no finding"
  else
    status=1
    echo "fuzz_$t: FINDING (log $log)"
    grep -E "ERROR|SUMMARY|runtime error|Test unit written" "$log" | head -5
  fi
done
exit $status
