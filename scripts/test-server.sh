#!/usr/bin/env bash
# Private MariaDB server for tests and the demo.
#   test-server.sh start DIR    create (first time) and start a server in DIR on a free loopback port,
#                               with root / 582914 and the reference schema in database "firewall"
#   test-server.sh stop DIR     stop it (the data stays)
#   test-server.sh restart DIR  stop, then start again on the same port
#   test-server.sh env DIR      print the shell lines that point a client at it
#   test-server.sh status DIR   say whether it runs, and where
#   test-server.sh reset DIR    load the reference schema again (all data is lost)
# The port, socket and pid file live in DIR/server.env. UTIL_DB_SERVER_ARGS adds
# options to the server's command line (scripts/ha.sh starts replicating pairs).
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(dirname "$here")
cmd=${1:?usage: test-server.sh start|stop|restart|env DIR}
dir=${2:?usage: test-server.sh start|stop|restart|env DIR}
mkdir -p "$dir"
dir=$(cd "$dir" && pwd)
data="$dir/data"
sock="$dir/mysqld.sock"
pidf="$dir/mysqld.pid"
envf="$dir/server.env"

find_bin() { for b in "$@"; do command -v "$b" >/dev/null 2>&1 && { command -v "$b"; return; }; [ -x "/usr/sbin/$b" ] && { echo "/usr/sbin/$b"; return; }; done; echo "missing: $*" >&2; exit 1; }
MYSQLD=$(find_bin mariadbd mysqld)
INSTALL_DB=$(find_bin mariadb-install-db mysql_install_db)
CLIENT=$(find_bin mariadb mysql)
ADMIN=$(find_bin mariadb-admin mysqladmin)

. "$here/ports.sh"

running() { [ -f "$pidf" ] && kill -0 "$(cat "$pidf")" 2>/dev/null; }

do_start() {
  local port fresh=0
  if running; then return 0; fi
  if [ ! -d "$data/mysql" ]; then
    fresh=1
    rm -rf "$data"; mkdir -p "$data"
    "$INSTALL_DB" --no-defaults --user=root --datadir="$data" --auth-root-authentication-method=normal \
      --skip-test-db >"$dir/install.log" 2>&1 || { cat "$dir/install.log" >&2; exit 1; }
  fi
  if [ -f "$envf" ]; then port=$(sed -n 's/^MYSQL_TCP_PORT=//p' "$envf"); else port=$(pick_port); fi
  local tries=0
  while :; do
    "$MYSQLD" --no-defaults --user=root --datadir="$data" --socket="$sock" --port="$port" \
      --bind-address=127.0.0.1 --pid-file="$pidf" --log-error="$dir/error.log" \
      --skip-name-resolve=0 --innodb-buffer-pool-size=64M --innodb-log-file-size=16M \
      --max-connections=500 --general-log=1 --general-log-file="$dir/general.log" ${UTIL_DB_SERVER_ARGS:-} >/dev/null 2>&1 &
    local i
    for i in $(seq 1 300); do
      "$ADMIN" --no-defaults --socket="$sock" -uroot ${fresh:+} ping >/dev/null 2>&1 && break
      "$ADMIN" --no-defaults --socket="$sock" -uroot -p582914 ping >/dev/null 2>&1 && break
      sleep 0.1
    done
    if "$ADMIN" --no-defaults --socket="$sock" -uroot -p582914 ping >/dev/null 2>&1 \
       || "$ADMIN" --no-defaults --socket="$sock" -uroot ping >/dev/null 2>&1; then break; fi
    tries=$((tries + 1))
    [ "$tries" -lt 3 ] || { tail -n 30 "$dir/error.log" >&2; exit 1; }
    [ -f "$envf" ] || port=$(pick_port)
  done
  printf 'MYSQL_TCP_PORT=%s\nUTIL_DB_TEST_SOCKET=%s\nUTIL_DB_SERVER_DIR=%s\n' "$port" "$sock" "$dir" >"$envf"
  if [ "$fresh" = 1 ]; then
    "$CLIENT" --no-defaults --socket="$sock" -uroot <<SQL
ALTER USER 'root'@'localhost' IDENTIFIED BY '582914';
CREATE USER IF NOT EXISTS 'root'@'127.0.0.1' IDENTIFIED BY '582914';
GRANT ALL PRIVILEGES ON *.* TO 'root'@'127.0.0.1' WITH GRANT OPTION;
FLUSH PRIVILEGES;
SQL
    load_schema
  fi
}

load_schema() {
  "$CLIENT" --no-defaults --socket="$sock" -uroot -p582914 <"$root/schema/firewall.sql"
}

do_stop() {
  running || return 0
  local pid; pid=$(cat "$pidf")
  "$ADMIN" --no-defaults --socket="$sock" -uroot -p582914 shutdown >/dev/null 2>&1 || kill "$pid" 2>/dev/null || true
  local i; for i in $(seq 1 300); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
  kill -9 "$pid" 2>/dev/null || true
}

case "$cmd" in
  start) do_start; sed 's/^/export /' "$envf" ;;
  stop) do_stop ;;
  restart) do_stop; do_start ;;
  env) sed 's/^/export /' "$envf" ;;
  status)
    if running; then echo "running (pid $(cat "$pidf")), $(grep MYSQL_TCP_PORT "$envf")"; else echo "stopped"; exit 1; fi ;;
  reset) running || { echo "not running" >&2; exit 1; }; load_schema ;;
  *) echo "unknown command $cmd" >&2; exit 2 ;;
esac
