#!/usr/bin/env bash
# Builds the Debian packages of a normal build and checks them as Debian would:
# lintian without errors, the library in usr/lib/<triplet> and stripped, its
# debug symbols in the -dbg package beside it, the binaries' dependencies
# computed. Then unpacks them into a private root and builds and runs a small C
# program against the installed headers and library, found through pkg-config.
#   tests/package-test.sh BUILD_DIR
set -euo pipefail
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "package test: $*"; exit 1; }
(cd "$build" && cpack -G DEB -B "$work/debs" >/dev/null 2>&1) || fail "cpack failed"
cd "$work/debs"
ls libutil-database1_*.deb libutil-database-dev_*.deb libutil-database1-dbg_*.deb >/dev/null ||
  fail "expected the library, development and debug-symbol packages, got: $(ls)"
for d in *.deb; do
  dpkg-deb -f "$d" Package Section Depends | sed 's/^/  /'
  dpkg-deb -x "$d" "$work/root"
done
# lintian, as root if need be; its warnings are shown, its errors fail.
lintian --allow-root --tag-display-limit 0 *.deb >"$work/lintian.txt" 2>&1 || true
sed 's/^/  lintian: /' "$work/lintian.txt"
! grep -q '^E: ' "$work/lintian.txt" || fail "lintian reports errors"
cd "$work"
triplet=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
lib=root/usr/lib/$triplet/libutil-database.so.1
[ -e "$lib" ] || fail "the library is not in usr/lib/$triplet"
file -L "$lib" root/usr/bin/util-db | grep -v ', stripped' && fail "unstripped objects"
id=$(readelf -n "$lib" | sed -n 's/.*Build ID: //p')
[ -s "root/usr/lib/debug/.build-id/${id:0:2}/${id:2}.debug" ] || fail "no debug symbols for the library"
dpkg-deb -f debs/libutil-database1_*.deb Depends | grep -q 'libmariadb3' || fail "dependencies not computed"
cat >probe.c <<'C'
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
export PKG_CONFIG_PATH=$work/root/usr/lib/$triplet/pkgconfig
cflags=$(pkg-config --cflags libutil-database)
[[ "$cflags " == "-I/usr/include/util-database "* && "$cflags" != *..* ]] || fail "pkg-config gives $cflags"
# The flags as installed, pointed at the private root.
flags=$(pkg-config --cflags --libs libutil-database)
cc -Wall -Wextra -Werror -o probe probe.c ${flags//-I\/usr\/include\/util-database/-I$work/root/usr/include/util-database} \
  -L"$work/root/usr/lib/$triplet"
LD_LIBRARY_PATH=$work/root/usr/lib/$triplet ./probe
echo "package test: ok"
