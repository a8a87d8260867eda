#!/usr/bin/env bash
# Compares the dynamic symbol table of the shared library with the export lists.
set -euo pipefail
lib=$1; shift
want=$(cat "$@" | sed 's/#.*//; s/[[:space:]]//g' | grep -v '^$' | sort -u)
# __odr_asan.* are the address sanitizer's own markers in the test build.
have=$(nm -D --defined-only "$lib" | awk '{print $3}' | grep -v -E '^(_init|_fini|_edata|_end|__bss_start)$|^__odr_asan\.' | sort -u)
soname=$(objdump -p "$lib" | awk '/SONAME/ {print $2}')
status=0
if [ "$soname" != "libutil-database.so.1" ]; then echo "SONAME is '$soname'"; status=1; fi
extra=$(comm -13 <(echo "$want") <(echo "$have"))
missing=$(comm -23 <(echo "$want") <(echo "$have"))
[ -z "$extra" ] || { echo "exported but not listed:"; echo "$extra"; status=1; }
[ -z "$missing" ] || { echo "listed but not exported:"; echo "$missing"; status=1; }
[ "$status" = 0 ] && echo "$(echo "$want" | wc -l) exported names match"
exit $status
