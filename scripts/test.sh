#!/usr/bin/env bash
# The test command: installs what is missing, builds the normal configuration
# (build/) and the test configuration (build-test/: ASan, UBSan, warnings as
# errors, the fault-injection seam), starts a private MariaDB server, runs every
# test and stops the server. CTest's summary comes last; any failure exits
# non-zero.
#   scripts/test.sh [ctest arguments...]
# UTIL_DB_TEST_BUILD picks the test build folder; UTIL_DB_CMAKE_ARGS adds
# configure options (e.g. "-DUTIL_DB_MODULES=Apps -DUTIL_DB_TEST_FILTER=applications").
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$root/scripts/setup.sh"
build=${UTIL_DB_TEST_BUILD:-$root/build-test}
jobs=$(nproc)
if [ -z "${UTIL_DB_CMAKE_ARGS:-}" ]; then
  # The normal configuration must build, and export exactly the listed names.
  cmake -S "$root" -B "$root/build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
  cmake --build "$root/build" -j "$jobs"
  "$root/tests/check-exports.sh" "$root/build/libutil-database.so" "$root/exports/core.txt" \
    $(for f in "$root"/db_tables/util-db-*.cpp; do echo "$root/exports/$(basename "${f%.cpp}").txt"; done)
  # The Debian packages install and a C program builds against them.
  "$root/tests/package-test.sh" "$root/build"
fi
cmake -S "$root" -B "$build" -G Ninja -DUTIL_DB_TESTING=ON -DCMAKE_BUILD_TYPE=Debug -DUTIL_DB_MODULES= "-DUTIL_DB_TEST_FILTER=.*" ${UTIL_DB_CMAKE_ARGS:-} >/dev/null
cmake --build "$build" -j "$jobs"
"$root/scripts/with-server.sh" ctest --test-dir "$build" --output-on-failure "$@"
