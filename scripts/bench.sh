#!/usr/bin/env bash
# Benchmarks the library against hand-written raw-client equivalents sending
# the identical SQL, on a private server (not part of the test command; a few
# minutes). Writes the raw numbers to bench/raw/ and the table to
# bench/RESULTS.md (bench/report.py recomputes it from bench/raw/).
# The safe profile runs the same shapes beside the default one.
#   scripts/bench.sh [calls per shape and side, default 2000]
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
n=${1:-2000}
build=${UTIL_DB_BENCH_BUILD:-$root/build-bench}
raw="$root/bench/raw"
"$root/scripts/setup.sh"
command -v valgrind >/dev/null || { echo "valgrind is needed" >&2; exit 1; }

# The library as shipped (optimised, no sanitizers), and the bench program, in
# each profile: the default one in $build (numbers in bench/raw/), the safe one
# in $build-safe (bench/raw-safe/: latency, allocations, instructions).
make_bench() {  # folder, UTIL_DB_SAFE
  cmake -S "$root" -B "$1" -G Ninja -DCMAKE_BUILD_TYPE=Release -DUTIL_DB_TESTING=OFF "-DUTIL_DB_SAFE=$2" >/dev/null
  cmake --build "$1" -j 2 --target util-database >/dev/null
  g++ -std=c++17 -O2 -g -DUTIL_DB_INTERNAL=1 -I"$root" -I"$root/db_tables" -I"$1/include" \
    $(pkg-config --cflags libmariadb) "$root/bench/bench.cpp" -o "$1/bench" \
    -L"$1" -lutil-database -Wl,-rpath,"$1" $(pkg-config --libs libmariadb) -ldl -pthread -rdynamic
}
make_bench "$build" OFF
make_bench "$build-safe" ON

mkdir -p "$raw" "$raw-safe"
rm -f "$raw"/callgrind.out.* "$raw-safe"/callgrind.out.*
profile() {  # bench folder, raw folder
  "$1/bench" latency "$n" "$2/latency.tsv"
  "$1/bench" allocs 500 "$2/allocs.tsv"
  ( cd "$2" && valgrind --tool=callgrind --callgrind-out-file="$2/callgrind.out.%p" \
      "$1/bench" callgrind 200 >/dev/null 2>"$2/callgrind.log" )
}
run() {
  profile "$build" "$raw"
  profile "$build-safe" "$raw-safe"
  "$build/bench" threads 1500 "$raw/threads.tsv"
}
export -f run profile
export build raw n
"$root/scripts/with-server.sh" bash -c run
( cd "$raw" && valgrind --tool=callgrind --callgrind-out-file="$raw/logsite.out.%p" \
    "$build/bench" logsite 100000 >"$raw/logsite.txt" 2>"$raw/logsite.log" )
# Instructions per dump, as totals of each part file.
for dir in "$raw" "$raw-safe"; do
  for f in "$dir"/callgrind.out.* "$dir"/logsite.out.*; do
    [ -f "$f" ] || continue
    desc=$(sed -n 's/^desc: Trigger: Client Request: //p' "$f")
    total=$(sed -n 's/^totals: //p' "$f" | head -1)
    [ -n "$desc" ] && printf '%s\t%s\n' "$desc" "$total"
  done | sort >"$dir/instructions.tsv"
  rm -f "$dir"/callgrind.out.* "$dir"/logsite.out.*
done
{ echo "machine: $(nproc) cores, $(sed -n 's/^model name\s*: //p' /proc/cpuinfo | head -1), $(free -g | awk '/Mem:/{print $2}') GiB"
  echo "date: $(date -u +%Y-%m-%dT%H:%MZ)"
  echo "server: $( (mariadbd --version || /usr/sbin/mariadbd --version) 2>/dev/null | head -1)"
  echo "calls: $n per shape and side (latency), 200 (callgrind), 500 (allocations)"; } >"$raw/machine.txt"
python3 "$root/bench/report.py" "$raw" "$raw-safe" >"$root/bench/RESULTS.md"
cat "$root/bench/RESULTS.md"
