#!/usr/bin/env bash
# The main job: builds the library, starts a private configuration database and
# configures a small appliance through the library from a C program.
#   scripts/demo.sh            the summary
#   UTIL_DB_DEMO_TRACE=1 scripts/demo.sh   also the library's statements (from the server's log)
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
"$root/scripts/setup.sh"
build=${UTIL_DB_BUILD:-$root/build}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$(nproc)" >/dev/null
run() {
  local before
  before=$(wc -l <"$UTIL_DB_SERVER_DIR/general.log")
  "$build/util-db-demo"
  if [ -n "${UTIL_DB_DEMO_TRACE:-}" ]; then
    echo "== SQL sent by the library (from the server's general log)"
    tail -n +"$((before + 1))" "$UTIL_DB_SERVER_DIR/general.log" | grep -E '\sQuery\s' | sed 's/^.*Query[[:space:]]*//'
  fi
}
export -f run; export build
"$root/scripts/with-server.sh" bash -c run
