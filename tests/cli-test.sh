#!/usr/bin/env bash
# util-db against the private server (scripts/with-server.sh), as an operator
# drives it: calls, exit statuses, whole-configuration export / import / diff /
# check, batches. The demo program beside the tool provides the configuration.
#   tests/cli-test.sh PATH_TO_UTIL_DB
set -uo pipefail
tool=$1
demo=$(dirname "$tool")/util-db-demo
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
fails=0 passed=0

result() {  # result NAME OK DETAIL
  if [ "$2" = 1 ]; then passed=$((passed + 1)); echo "ok   $1"; else
    fails=$((fails + 1)); echo "FAIL $1"; echo "$3" | sed 's/^/    /'; fi
}
check() {  # check NAME EXIT TEXT ARGS...: the exit status, and TEXT in stdout + stderr
  local name=$1 want_rc=$2 want=$3 out rc; shift 3
  out=$("$tool" "$@" 2>&1); rc=$?
  [ "$rc" = "$want_rc" ] && grep -qF -- "$want" <<<"$out"
  result "$name" "$([ $? = 0 ] && echo 1)" "exit $rc (want $want_rc), output:"$'\n'"$out"
}
unchanged() {  # unchanged NAME: the configuration is still the saved one
  "$tool" export -o "$tmp/now.json"
  result "$1" "$(cmp -s "$tmp/saved.json" "$tmp/now.json" && echo 1)" "$(diff "$tmp/saved.json" "$tmp/now.json" | head)"
}

# The demo's configuration on a fresh schema, saved.
"$root/scripts/test-server.sh" reset "$UTIL_DB_SERVER_DIR" >/dev/null
ASAN_OPTIONS=detect_leaks=0 "$demo" >"$tmp/demo.log" 2>&1 || { echo "FAIL the demo:"; tail "$tmp/demo.log"; exit 1; }
"$tool" export -o "$tmp/saved.json"

# Round trip: export -> emptied database -> import -> export, byte for byte.
echo '{"version": 1, "tables": {}}' >"$tmp/empty.json"
check "import of an empty document empties every table" 0 "0 rows" import "$tmp/empty.json"
check "an emptied database holds nothing" 0 '"NetInterfaces": []' export
check "an empty configuration has no dangling references" 0 "" check
check "import of the saved configuration" 0 "22 tables" import "$tmp/saved.json"
unchanged "export, import, export: byte-identical"
check "diff with the running configuration: equal" 0 "" diff "$tmp/saved.json"
check "check names the demo's asset in a missing zone" 1 "Assets assetId=1: securityAreaName 'lan' not in SecurityAreas.name" check

# A bad document changes nothing and says why.
echo '{"version": 1, "tables": {"Nowhere": []}}' >"$tmp/unknown-table.json"
echo '{"version": 1, "tables": {' >"$tmp/not-json.json"
sed 's/"name": "untrust"/"name": "untrust", "colour": "red"/' "$tmp/saved.json" >"$tmp/unknown-column.json"
sed 's/"securityAreaId": 2,/"securityAreaId": 1,/' "$tmp/saved.json" >"$tmp/refused-row.json"
while read -r file want; do
  check "import refuses $file" 1 "$want" import "$tmp/$file.json"
  unchanged "import of $file changes nothing"
done <<'EOF'
unknown-table unknown table Nowhere
not-json not valid JSON
unknown-column unknown column colour
refused-row table SecurityAreas, row 2 (securityAreaId=1): Duplicate entry
EOF

# An atomic batch with a failing line leaves nothing; a plain one stops there.
printf 'call insertSecurityAreas batchzone\n# a comment\n\ncall insertMainFrame batchzone eth7\ncall insertSecurityAreas batchzone\ncall insertSecurityAreas never\n' >"$tmp/batch.txt"
check "atomic batch stops at the failing line" 1 "batch stopped at line 5 (exit 1): call insertSecurityAreas batchzone" \
  batch --atomic "$tmp/batch.txt"
unchanged "atomic batch with a failing line leaves nothing"
check "plain batch keeps the lines before the failing one" 1 "batch stopped at line 5" batch "$tmp/batch.txt"
check "  so the zone stays" 0 "batchzone" dump SecurityAreas

# Calls: exit statuses, reasons, arguments, buffers.
while IFS='|' read -r name rc want args; do
  # shellcheck disable=SC2086
  check "$name" "$rc" "$want" $args
done <<'EOF'
a call that succeeds|0|result: 0|call insertSecurityAreas clitrust
a failing call: exit 1, its reason|1|insertSecurityAreas failed (-1): mysql_num_rows():data is exist,please check the para that you input!|call insertSecurityAreas clitrust
trace shows the statements|1|SQL: select securityAreaId from SecurityAreas where name= 'clitrust';|--trace call insertSecurityAreas clitrust
log records on stderr|1|LOG 3: mysql_num_rows():data is exist|--log 3 call insertSecurityAreas clitrust
a NULL result is a failure|1|result: NULL|call selectIpaddressInfoByNameSA clitrust - 256
a member for the zone|0|result: 0|call insertMainFrame clitrust cliport
a 3-byte buffer never overflows|0|ret_str: "clitrust"|call select_name_by_interfacename_SA cliport 3
a bound above its buffer is refused|2|ret_len: 100 is more than the buffer's 8 bytes|call selectIpaddressInfoByNameSA clitrust 8 100
json output|0|{"function":"selectIpaddressInfoByNameSA","result":"any","outputs":{"ret_str":"any"}}|--json call selectIpaddressInfoByNameSA clitrust - 256
010 is ten|0|result: 0|call updateSecurityAreas clitrust 010
0x10 is refused|2|enable: not a decimal integer in range: '0x10'|call updateSecurityAreas clitrust 0x10
12abc is refused|2|not a decimal integer in range: '12abc'|call updateSecurityAreas clitrust 12abc
2147483648 is refused|2|not a decimal integer in range: '2147483648'|call updateSecurityAreas clitrust 2147483648
an over-long record field is refused|2|field name: 21 characters, the field holds 20|call db_if_insert name=eth456789012345678901
a record argument|0|type: 1|call db_if_delete name=eth7 type=1
a T** output is given as -|0|macAddress: "00:11:22:33:44:55"|call get_ipmac_asset_info 1 -
a caller array is given as -|0|threshold: 250|call get_defend_attack_rules 90 -
a list result|0|pname: "HTTP"|call db_get_srv_info_by_name HTTP
missing argument|2|missing argument 'enable'|call updateSecurityAreas clitrust
unknown function|2|no function 'nosuch'|call nosuch
unknown field|2|unknown field 'colour'|call db_if_insert colour=red
unknown command|2|unknown command 'nosuch'|nosuch
extra words are refused|2|unexpected argument 'x'|check x
list WORD with descriptions|0|    creates a zone|list insertSecurityAreas
list shows T** outputs as given|0|asset_info_t** asset_information (out)|list get_ipmac_asset_info
list as JSON|0|"description": "creates a zone"|--json list insertSecurityAreas
help per command|0|--atomic|batch --help
version|0|util-db 1.|--version
a connect error names host, port and the hint|3|127.0.0.1 port 1 (user root, database firewall)|--port 1 status
  and the way to another port|3|MYSQL_TCP_PORT or --port N|--port 1 status
a port in decimal only|2|--port takes a decimal port number|--port 0x10 status
status of a plain server|0|role: primary|status
status as JSON|0|"read_only": "OFF"|--json status
dump as JSON|0|"name": "clitrust"|--json dump SecurityAreas
EOF
check "010 was stored as ten" 0 '"enable": 10' --json dump SecurityAreas

# diff and check find what changed and what dangles.
"$tool" call updateSecurityAreas untrust 0 >/dev/null
"$tool" call insertRouteDatasgateInfo 10.9.0.0/16 - nosuchport 1 1 >/dev/null
"$tool" call deleteServersByName intranet-web >/dev/null
diff_out=$("$tool" diff "$tmp/saved.json"); diff_rc=$?
for want in "changed SecurityAreas securityAreaId=2: enable" "added SecurityAreas securityAreaId=" \
            "removed Servers serverId=1" "added RouteDatas routeId="; do
  result "diff: $want" "$([ $diff_rc = 1 ] && grep -qF -- "$want" <<<"$diff_out" && echo 1)" "exit $diff_rc: $diff_out"
done
check "check names the route out of a missing interface" 1 "outInterfaceName 'nosuchport' not in NetInterfaces.interfaceName" check
check "diff of a bad document is trouble" 2 "unknown table Nowhere" diff "$tmp/unknown-table.json"

"$root/scripts/test-server.sh" reset "$UTIL_DB_SERVER_DIR" >/dev/null
echo "$passed passed, $fails failed"
[ "$fails" = 0 ]
