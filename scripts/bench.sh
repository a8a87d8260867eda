#!/usr/bin/env bash
# Benchmarks the library against hand-written raw-client equivalents sending
# the identical SQL, on a private server (not part of the test command; a few
# minutes). Writes the raw numbers to bench/raw/ and the table to
# bench/RESULTS.md (bench/report.py recomputes it from bench/raw/).
#   scripts/bench.sh [calls per shape and side, default 2000]
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
n=${1:-2000}
build=${UTIL_DB_BENCH_BUILD:-$root/build-bench}
raw="$root/bench/raw"
"$root/scripts/setup.sh"
command -v valgrind >/dev/null || { echo "valgrind is needed" >&2; exit 1; }

# The library as shipped (optimised, no sanitizers), and the bench program.
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DUTIL_DB_TESTING=OFF >/dev/null
cmake --build "$build" -j 2 --target util-database >/dev/null
g++ -std=c++17 -O2 -g -DUTIL_DB_INTERNAL=1 -I"$root" -I"$root/db_tables" -I"$build/include" \
  $(pkg-config --cflags libmariadb) "$root/bench/bench.cpp" -o "$build/bench" \
  -L"$build" -lutil-database -Wl,-rpath,"$build" $(pkg-config --libs libmariadb) -ldl -pthread -rdynamic

mkdir -p "$raw"
rm -f "$raw"/callgrind.out.*
run() {
  "$build/bench" latency "$n" "$raw/latency.tsv"
  "$build/bench" allocs 500 "$raw/allocs.tsv"
  "$build/bench" threads 1500 "$raw/threads.tsv"
  ( cd "$raw" && valgrind --tool=callgrind --callgrind-out-file="$raw/callgrind.out.%p" \
      "$build/bench" callgrind 200 >/dev/null 2>"$raw/callgrind.log" )
}
export -f run
export build raw n
"$root/scripts/with-server.sh" bash -c run
( cd "$raw" && valgrind --tool=callgrind --callgrind-out-file="$raw/logsite.out.%p" \
    "$build/bench" logsite 100000 >"$raw/logsite.txt" 2>"$raw/logsite.log" )
# Instructions per dump, as totals of each part file.
for f in "$raw"/callgrind.out.* "$raw"/logsite.out.*; do
  desc=$(sed -n 's/^desc: Trigger: Client Request: //p' "$f")
  total=$(sed -n 's/^totals: //p' "$f" | head -1)
  [ -n "$desc" ] && printf '%s\t%s\n' "$desc" "$total"
done | sort >"$raw/instructions.tsv"
rm -f "$raw"/callgrind.out.* "$raw"/logsite.out.*
{ echo "machine: $(nproc) cores, $(sed -n 's/^model name\s*: //p' /proc/cpuinfo | head -1), $(free -g | awk '/Mem:/{print $2}') GiB"
  echo "date: $(date -u +%Y-%m-%dT%H:%MZ)"
  echo "server: $( (mariadbd --version || /usr/sbin/mariadbd --version) 2>/dev/null | head -1)"
  echo "calls: $n per shape and side (latency), 200 (callgrind), 500 (allocations)"; } >"$raw/machine.txt"
python3 "$root/bench/report.py" "$raw" >"$root/bench/RESULTS.md"
cat "$root/bench/RESULTS.md"
