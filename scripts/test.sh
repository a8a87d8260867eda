#!/usr/bin/env bash
# Builds the test configuration (ASan, UBSan, warnings as errors) and runs the
# whole suite against a private MariaDB server.
#   scripts/test.sh [ctest arguments...]
# UTIL_DB_TEST_BUILD picks the build folder; UTIL_DB_CMAKE_ARGS adds configure
# options (e.g. "-DUTIL_DB_MODULES=Apps -DUTIL_DB_TEST_FILTER=apps").
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${UTIL_DB_TEST_BUILD:-$root/build-test}
cmake -S "$root" -B "$build" -G Ninja -DUTIL_DB_TESTING=ON -DCMAKE_BUILD_TYPE=Debug ${UTIL_DB_CMAKE_ARGS:-} >/dev/null
cmake --build "$build" -j "$(nproc)"
"$root/scripts/with-server.sh" ctest --test-dir "$build" --output-on-failure "$@"
