#!/usr/bin/env bash
# Runs a command against a fresh private MariaDB server, then removes the server.
#   with-server.sh COMMAND [ARG...]
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
dir=$(mktemp -d "${TMPDIR:-/tmp}/util-db-server.XXXXXX")
cleanup() { "$here/test-server.sh" stop "$dir" || true; rm -rf "$dir"; }
trap cleanup EXIT INT TERM
eval "$("$here/test-server.sh" start "$dir")"
"$@"
