#!/usr/bin/env bash
# The test command: installs what is missing, builds the normal configuration
# of both profiles (build/, build-safe/) and the test configuration of both
# (build-test/, build-test-safe/: ASan, UBSan, warnings as errors, the
# fault-injection seam), starts a private MariaDB server, runs every test in
# both, runs the safe profile's leak paths under valgrind (build-valgrind/: the
# test configuration without sanitizers) and stops the server. CTest's
# summaries come last; any failure exits non-zero.
#   scripts/test.sh [ctest arguments...]
# UTIL_DB_TEST_BUILD picks the default profile's test build folder (the safe
# one gets "-safe" appended); UTIL_DB_CMAKE_ARGS adds configure options (e.g.
# "-DUTIL_DB_MODULES=Apps -DUTIL_DB_TEST_FILTER=applications") and then only
# the default profile's tests run.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$root/scripts/setup.sh"
build=${UTIL_DB_TEST_BUILD:-$root/build-test}
jobs=$(nproc)
profiles=("$build:OFF")
if [ -z "${UTIL_DB_CMAKE_ARGS:-}" ]; then
  profiles+=("$build-safe:ON")
  # The normal configuration of each profile must build and export exactly
  # the listed names (the same ones).
  lists=("$root/exports/core.txt")
  for f in "$root"/db_tables/util-db-*.cpp; do lists+=("$root/exports/$(basename "${f%.cpp}").txt"); done
  for p in build:OFF build-safe:ON; do
    cmake -S "$root" -B "$root/${p%:*}" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "-DUTIL_DB_SAFE=${p#*:}" >/dev/null
    cmake --build "$root/${p%:*}" -j "$jobs"
    "$root/tests/check-exports.sh" "$root/${p%:*}/libutil-database.so" "${lists[@]}"
  done
  # The Debian packages install and a C program builds against them.
  "$root/tests/package-test.sh" "$root/build"
  # The leak paths, under valgrind without suppressions.
  cmake -S "$root" -B "$root/build-valgrind" -G Ninja -DUTIL_DB_TESTING=ON -DUTIL_DB_SANITIZE=OFF -DUTIL_DB_SAFE=ON \
    -DCMAKE_BUILD_TYPE=Debug -DUTIL_DB_MODULES= "-DUTIL_DB_TEST_FILTER=.*" >/dev/null
  cmake --build "$root/build-valgrind" -j "$jobs" --target test_safe
fi
for p in "${profiles[@]}"; do
  cmake -S "$root" -B "${p%:*}" -G Ninja -DUTIL_DB_TESTING=ON -DCMAKE_BUILD_TYPE=Debug -DUTIL_DB_MODULES= \
    "-DUTIL_DB_TEST_FILTER=.*" "-DUTIL_DB_SAFE=${p#*:}" ${UTIL_DB_CMAKE_ARGS:-} >/dev/null
  cmake --build "${p%:*}" -j "$jobs"
done

# Runs, against one server, the suites of each profile, then valgrind.
run_all() {
  local status=0 p
  for p in "${profiles[@]}"; do
    echo "== tests: $(basename "${p%:*}")"
    ctest --test-dir "${p%:*}" --output-on-failure "$@" || status=1
  done
  if [ -x "$root/build-valgrind/tests/test_safe" ]; then
    echo "== valgrind: safe profile leak paths"
    valgrind -q --leak-check=full --show-leak-kinds=definite,indirect,possible \
      --errors-for-leak-kinds=definite,indirect,possible --error-exitcode=1 \
      "$root/build-valgrind/tests/test_safe" --gtest_filter='SafeTest.LeakPaths*' || status=1
  fi
  return $status
}
export -f run_all
export root
profiles_list="${profiles[*]}"
"$root/scripts/with-server.sh" bash -c 'profiles=($0); run_all "$@"' "$profiles_list" "$@"
