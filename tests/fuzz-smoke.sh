#!/usr/bin/env bash
# A short bounded fuzzing run for the test command: a few seconds per target.
# Skips (exit 0, with a message) where clang or its libFuzzer runtime is absent.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
if ! command -v clang++ >/dev/null 2>&1; then
  echo "fuzz smoke: skipped (clang++ not installed)"
  exit 0
fi
if ! echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }' |
     clang++ -x c++ -fsanitize=fuzzer,address,undefined -o /dev/null - >/dev/null 2>&1; then
  echo "fuzz smoke: skipped (clang++ has no libFuzzer runtime)"
  exit 0
fi
exec "$root/scripts/fuzz.sh" "${UTIL_DB_FUZZ_SMOKE_SECONDS:-3}"
