#!/usr/bin/env bash
# Line and branch coverage of the library code (the core and db_tables/, not
# the tests or the tool) under the whole test suite, on a private server.
#   scripts/coverage.sh [ctest arguments...]
# Needs gcovr (Debian package gcovr). The build lives in build-coverage/
# (UTIL_DB_COVERAGE_BUILD); the HTML report goes to build-coverage/coverage/.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${UTIL_DB_COVERAGE_BUILD:-$root/build-coverage}
command -v gcovr >/dev/null || { echo "gcovr is needed (apt-get install gcovr)" >&2; exit 1; }
"$root/scripts/setup.sh"
cmake -S "$root" -B "$build" -G Ninja -DUTIL_DB_TESTING=ON -DCMAKE_BUILD_TYPE=Debug \
  "-DCMAKE_C_FLAGS=--coverage -fprofile-update=atomic" "-DCMAKE_CXX_FLAGS=--coverage -fprofile-update=atomic" \
  -DCMAKE_EXE_LINKER_FLAGS=--coverage -DCMAKE_SHARED_LINKER_FLAGS=--coverage ${UTIL_DB_CMAKE_ARGS:-} >/dev/null
cmake --build "$build" -j 2
find "$build" -name '*.gcda' -delete
# Failing tests still count for coverage; their failures are reported by ctest.
# The export check is left out: the instrumented library exports the gcov runtime.
# (Counters are updated atomically: the load test runs threads.)
"$root/scripts/with-server.sh" ctest --test-dir "$build" -E exported_symbols "$@" \
  || echo "coverage: some tests failed (see above)"
mkdir -p "$build/coverage"
filters=(--filter "$root/util-[^/]*\\.cpp" --filter "$root/util-[^/]*\\.h" --filter "$root/db_tables/")
gcovr -r "$root" "$build" "${filters[@]}" --exclude-unreachable-branches --exclude-throw-branches \
  --html-details "$build/coverage/index.html" --txt "$build/coverage/summary.txt" --print-summary \
  | tail -3
cat "$build/coverage/summary.txt" | sed -n '/^File/,$p'
