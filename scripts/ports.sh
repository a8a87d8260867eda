# Loopback ports for the private servers (sourced by test-server.sh and ha.sh).

port_free() { ! (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }

pick_port() {
  local p i
  for i in $(seq 1 200); do
    p=$(( 20000 + (RANDOM * 32768 + RANDOM) % 40000 ))
    port_free "$p" && { echo "$p"; return; }
  done
  echo "no free port" >&2; exit 1
}
