#!/usr/bin/env bash
# Runs the ha_pair program on a pair of its own in a temporary folder and
# removes the pair afterwards, whatever the program's fate.
#   ha-pair.sh HA_PAIR_PROGRAM HA_SH
set -euo pipefail
dir=$(mktemp -d "${TMPDIR:-/tmp}/util-db-ha.XXXXXX")
trap '"$2" stop "$dir"; rm -rf "$dir"' EXIT
"$1" "$2" "$dir"
