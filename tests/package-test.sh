#!/usr/bin/env bash
# Builds the Debian packages of a normal build, unpacks them into a temporary
# root and builds and runs a small C program against the installed headers and
# library, found through pkg-config.
#   tests/package-test.sh BUILD_DIR
set -euo pipefail
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$build" && cpack -G DEB -B "$work/debs" >/dev/null 2>&1) || { echo "cpack failed"; exit 1; }
debs=("$work"/debs/*.deb)
[ ${#debs[@]} -eq 2 ] || { echo "expected 2 packages, got: ${debs[*]}"; exit 1; }
for d in "${debs[@]}"; do
  dpkg-deb -f "$d" Package Depends | sed 's/^/  /'
  dpkg-deb -x "$d" "$work/root"
done
dpkg-deb -c "$work"/debs/libutil-database1_*.deb | grep 'usr/bin/util-db$' >/dev/null || { echo "the tool is not packaged"; exit 1; }
pc=$(find "$work/root" -name libutil-database.pc)
cat >"$work/probe.c" <<'C'
#include <util-database.h>
#include <stdio.h>
#include <string.h>
int main(void) {
    db_handle_t h;
    memset(&h, 0, sizeof h);
    struct db_route_info route;
    memset(&route, 0, sizeof route);
    if (util_db_init(&h) != &h) return 1;
    printf("initialised a handle; route record of %zu bytes\n", sizeof route);
    return util_db_deinit(&h);
}
C
export PKG_CONFIG_PATH=$(dirname "$pc")
flags=$(pkg-config --cflags --libs libutil-database)
cc -Wall -Wextra -Werror -o "$work/probe" "$work/probe.c" $flags
LD_LIBRARY_PATH=$(dirname "$(find "$work/root" -name 'libutil-database.so.1' | head -1)") "$work/probe"
echo "package test: ok"
