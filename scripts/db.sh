#!/usr/bin/env bash
# The local configuration database for development: a private MariaDB server in
# build/db (or $UTIL_DB_DIR), bound to 127.0.0.1 on a free port, with root /
# 582914 and database "firewall" holding the reference schema. It never touches
# a server already listening on 3306; stop ends exactly the server it started.
#   scripts/db.sh start    start it (created on first use); prints the line to export
#   scripts/db.sh stop     stop it
#   scripts/db.sh status   say whether it runs and on which port
#   scripts/db.sh reset    drop the data and load the reference schema again
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
dir=${UTIL_DB_DIR:-$root/build/db}
case "${1:-}" in
  start) "$root/scripts/test-server.sh" start "$dir" | grep MYSQL_TCP_PORT ;;
  stop) "$root/scripts/test-server.sh" stop "$dir" ;;
  status) "$root/scripts/test-server.sh" status "$dir" ;;
  reset) "$root/scripts/test-server.sh" reset "$dir" ;;
  *) echo "usage: scripts/db.sh start|stop|status|reset" >&2; exit 2 ;;
esac
