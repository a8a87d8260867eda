#!/usr/bin/env bash
# An active/standby pair of private MariaDB servers on loopback, as two
# appliances would run it: the primary holds the configuration, the replica
# follows it by GTID replication, semi-synchronously, and refuses writes; the
# pair's service address (a loopback forwarder, as a virtual IP would be)
# leads to the primary.
#   ha.sh start [DIR]     create (first time) and start the pair; prints PRIMARY_PORT=N,
#                         REPLICA_PORT=M and SERVICE_PORT=S on lines of their own
#   ha.sh status [DIR]    each node's role, port, read_only, GTID position, replication threads and lag
#   ha.sh failover [DIR]  end the primary as a crash would (kill -9), let the replica apply all it
#                         received, promote it, move the service address to it; prints PRIMARY_PORT=M
#   ha.sh stop [DIR]      stop both servers and the forwarder by their pids and remove DIR
# DIR defaults to build/ha. DIR/pair.env names the nodes' roles (PRIMARY, REPLICA, FENCED) and the
# service port; the nodes live in DIR/a and DIR/b (scripts/test-server.sh folders). Only the node
# named PRIMARY ever starts writable: a failover names the old primary FENCED before it promotes the
# replica, and a fenced node starts read-only and replicates from nobody.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(dirname "$here")
. "$here/ports.sh"
usage="usage: ha.sh start|status|failover|stop [DIR]"
cmd=${1:?$usage}
dir=${2:-$root/build/ha}
state="$dir/pair.env"
semi_timeout_ms=5000   # a commit waits this long for the replica, then the primary goes on alone

die() { echo "ha.sh: $*" >&2; exit 1; }
admin=ha_admin        # this script's own account: root may not write past read_only, see join_pair
client() { mariadb --no-defaults --socket="$dir/$1/mysqld.sock" -u"$admin" -p582914 "${@:2}"; }
sql() { client "$1" -N -B -e "$2"; }
as_root() { admin=root sql "$@"; }
port() { sed -n 's/^MYSQL_TCP_PORT=//p' "$dir/$1/server.env"; }
pid() { cat "$dir/$1/mysqld.pid" 2>/dev/null || true; }
# A killed server stays a zombie until its parent (init) reaps it; it holds no socket then.
running() { kill -0 "$1" 2>/dev/null && ! grep -qs '^State:[[:space:]]*Z' "/proc/$1/status"; }
alive() { local p; p=$(pid "$1"); [ -n "$p" ] && running "$p"; }
slave_field() { client "$1" -e 'SHOW SLAVE STATUS\G' | sed -n "s/^ *$2: //p"; }
load_state() { [ -f "$state" ] || die "no pair in $dir"; . "$state"; }
save_state() {
  printf 'PRIMARY=%s\nREPLICA=%s\nFENCED=%s\nSERVICE_PORT=%s\n' "$PRIMARY" "$REPLICA" "$FENCED" "$SERVICE_PORT" >"$state"
}
now_ms() { date +%s%3N; }

# Starts node $1 (server id $2) unless it runs; only the primary starts writable.
# A new pair's primary waits for its replica only once the replica follows it.
start_node() {
  local args="--server-id=$2 --log-bin=mysql-bin --log-slave-updates --binlog-format=ROW --sync-binlog=1
    --gtid-strict-mode=1 --rpl-semi-sync-slave-enabled=1 --rpl-semi-sync-master-timeout=$semi_timeout_ms
    --rpl-semi-sync-master-wait-point=AFTER_SYNC --slave-parallel-threads=4 --slave-parallel-mode=optimistic"
  if [ "$1" = "$PRIMARY" ]; then
    [ -n "$REPLICA" ] && [ "$fresh" = 0 ] && args="$args --rpl-semi-sync-master-enabled=1"
  else
    args="$args --read-only=1"
    [ "$1" = "$FENCED" ] && args="$args --skip-slave-start"
  fi
  alive "$1" || rm -f "$dir/$1/mysqld.pid"   # a crashed server's, or a zombie's
  mkdir -p "$dir/$1/tmp"
  TMPDIR="$dir/$1/tmp" UTIL_DB_SERVER_ARGS=$args "$here/test-server.sh" start "$dir/$1" >/dev/null
}

# Both nodes hold the reference schema from their own start; the binary logs
# begin empty, so the replica follows from the first GTID on.
join_pair() {
  local n
  for n in a b; do as_root "$n" "RESET MASTER; SET GLOBAL gtid_slave_pos='';"; done
  # root (the library's account) may not write past read_only: its writes to a
  # replica must fail. Switching read_only needs this script's own account.
  as_root "$PRIMARY" "CREATE USER '$admin'@'localhost' IDENTIFIED BY '582914';
    GRANT ALL PRIVILEGES ON *.* TO '$admin'@'localhost' WITH GRANT OPTION;
    CREATE USER 'repl'@'127.0.0.1' IDENTIFIED BY '582914';
    GRANT REPLICATION SLAVE ON *.* TO 'repl'@'127.0.0.1';
    REVOKE READ_ONLY ADMIN ON *.* FROM 'root'@'localhost', 'root'@'127.0.0.1';"
  as_root "$REPLICA" "CHANGE MASTER TO MASTER_HOST='127.0.0.1', MASTER_PORT=$(port "$PRIMARY"), MASTER_USER='repl',
    MASTER_PASSWORD='582914', MASTER_USE_GTID=slave_pos, MASTER_CONNECT_RETRY=1; START SLAVE;"
  sql "$PRIMARY" "SET GLOBAL rpl_semi_sync_master_enabled=ON"
}

# The service address: a forwarder from SERVICE_PORT to the primary.
start_service() {
  local p i
  p=$(cat "$dir/service.pid" 2>/dev/null || true)
  [ -n "$p" ] && running "$p" && return 0
  socat "TCP-LISTEN:$SERVICE_PORT,bind=127.0.0.1,reuseaddr,fork" "TCP:127.0.0.1:$(port "$PRIMARY")" \
    </dev/null >/dev/null 2>&1 &
  p=$!
  echo "$p" >"$dir/service.pid"
  for i in $(seq 1 100); do running "$p" || break; port_free "$SERVICE_PORT" || return 0; sleep 0.05; done
  die "the service address 127.0.0.1:$SERVICE_PORT did not open"
}

stop_service() {
  local p
  p=$(cat "$dir/service.pid" 2>/dev/null || true)
  [ -n "$p" ] || return 0
  kill "$p" 2>/dev/null || true
  while running "$p"; do sleep 0.01; done
  rm -f "$dir/service.pid"
}

do_start() {
  local n
  fresh=0
  if [ ! -f "$state" ]; then
    mkdir -p "$dir"; fresh=1
    PRIMARY=a REPLICA=b FENCED= SERVICE_PORT=
    save_state
  fi
  load_state
  start_node a 1 & local ja=$!
  start_node b 2 & local jb=$!
  wait "$ja" || die "node a did not start (see $dir/a/error.log)"
  wait "$jb" || die "node b did not start (see $dir/b/error.log)"
  if [ "$fresh" = 1 ]; then
    join_pair
    SERVICE_PORT=$(pick_port)   # picked once the nodes hold theirs
    save_state
  fi
  if [ -n "$REPLICA" ]; then
    for n in $(seq 1 100); do
      [ "$(sql "$PRIMARY" "SHOW STATUS LIKE 'Rpl_semi_sync_master_clients'" | cut -f2)" = 1 ] && break
      sleep 0.1
    done
    [ "$n" -lt 100 ] || die "the replica did not join (see $dir/$REPLICA/error.log)"
    # The replica holds all the primary has (root's read_only right among it)
    # before anyone writes to either.
    local pos; pos=$(sql "$PRIMARY" "SELECT @@gtid_binlog_pos")
    [ "$(sql "$REPLICA" "SELECT MASTER_GTID_WAIT('$pos', 30)")" = 0 ] \
      || die "the replica did not apply $pos within 30 s (see $dir/$REPLICA/error.log)"
  fi
  start_service
  echo "PRIMARY_PORT=$(port "$PRIMARY")"
  [ -z "$REPLICA" ] || echo "REPLICA_PORT=$(port "$REPLICA")"
  echo "SERVICE_PORT=$SERVICE_PORT"
}

do_status() {
  load_state
  local n role
  echo "service port=$SERVICE_PORT -> $PRIMARY"
  for n in a b; do
    role=replica; [ "$n" = "$PRIMARY" ] && role=primary; [ "$n" = "$FENCED" ] && role=fenced
    if ! alive "$n"; then echo "$n $role port=$(port "$n") down"; continue; fi
    printf '%s %s port=%s pid=%s read_only=%s gtid=%s' "$n" "$role" "$(port "$n")" "$(pid "$n")" \
      "$(sql "$n" 'SELECT @@read_only')" "$(sql "$n" 'SELECT @@gtid_current_pos')"
    if [ "$role" = primary ]; then
      printf ' semi_sync=%s replicas=%s' "$(sql "$n" "SHOW STATUS LIKE 'Rpl_semi_sync_master_status'" | cut -f2)" \
        "$(sql "$n" "SHOW STATUS LIKE 'Rpl_semi_sync_master_clients'" | cut -f2)"
    elif [ -n "$(sql "$n" 'SHOW SLAVE STATUS')" ]; then
      printf ' io=%s sql=%s lag=%ss received=%s' "$(slave_field "$n" Slave_IO_Running)" \
        "$(slave_field "$n" Slave_SQL_Running)" "$(slave_field "$n" Seconds_Behind_Master)" \
        "$(slave_field "$n" Gtid_IO_Pos)"
    fi
    echo
  done
}

do_failover() {
  load_state
  [ -n "$REPLICA" ] || die "no replica to promote"
  alive "$REPLICA" || die "the replica $REPLICA is down"
  local old=$PRIMARY new=$REPLICA t0 t1 t2 received waited p
  t0=$(now_ms)
  p=$(pid "$old")
  if [ -n "$p" ]; then kill -9 "$p" 2>/dev/null || true; while running "$p"; do sleep 0.01; done; fi
  # From here on the old primary can only come back fenced.
  PRIMARY=$new REPLICA= FENCED=$old
  save_state
  t1=$(now_ms)
  sql "$new" 'STOP SLAVE IO_THREAD'
  received=$(slave_field "$new" Gtid_IO_Pos)
  waited=$(sql "$new" "SELECT MASTER_GTID_WAIT('$received', 30)")
  [ "$waited" = 0 ] || die "$new did not apply $received within 30 s; not promoted"
  t2=$(now_ms)
  sql "$new" "STOP SLAVE; RESET SLAVE ALL; SET GLOBAL rpl_semi_sync_master_enabled=OFF; SET GLOBAL read_only=OFF;"
  stop_service
  start_service
  echo "ha.sh: $new promoted in $(( $(now_ms) - t0 )) ms (old primary gone after $(( t1 - t0 )) ms," \
    "all received applied after $(( t2 - t0 )) ms: ${received:-nothing})" >&2
  echo "PRIMARY_PORT=$(port "$new")"
}

do_stop() {
  [ -f "$state" ] || return 0
  local n p i
  stop_service
  for n in a b; do
    p=$(pid "$n")
    [ -n "$p" ] && running "$p" || continue
    kill "$p" 2>/dev/null || true
    for i in $(seq 1 300); do running "$p" || break; sleep 0.1; done
    kill -9 "$p" 2>/dev/null || true
  done
  rm -rf "$dir"
}

case "$cmd" in
  start) do_start ;;
  status) do_status ;;
  failover) do_failover ;;
  stop) do_stop ;;
  *) die "$usage" ;;
esac
