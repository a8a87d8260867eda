#!/usr/bin/env bash
# Installs the Debian packages the build, the tool, the tests (with the
# fuzzing smoke run and the package checks), the demo, coverage and benchmarks need, when any is missing (as root,
# or through sudo).
set -euo pipefail
packages=(build-essential g++ cmake ninja-build pkg-config binutils file dpkg-dev
          libgtest-dev mariadb-server mariadb-client libmariadb-dev libmariadb-dev-compat
          clang libclang-rt-14-dev gcovr valgrind
          nlohmann-json3-dev libcli11-dev lintian socat)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update
$sudo apt-get install -y --no-install-recommends "${missing[@]}"
