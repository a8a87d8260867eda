#!/usr/bin/env bash
# The util-db tool against the private server, as a user drives it.
#   tests/cli-test.sh PATH_TO_UTIL_DB
set -uo pipefail
tool=$1
fails=0
check() {  # check NAME EXPECTED_EXIT EXPECTED_TEXT -- ARGS...
  local name=$1 want_rc=$2 want=$3; shift 4
  local out rc
  out=$("$tool" "$@" 2>&1); rc=$?
  if [ "$rc" != "$want_rc" ] || ! grep -qF -- "$want" <<<"$out"; then
    echo "FAIL $name: exit $rc (want $want_rc), output:"; echo "$out" | sed 's/^/    /'
    fails=$((fails + 1))
  else
    echo "ok   $name"
  fi
}
"$tool" call deleteSecurityAreas clitrust >/dev/null 2>&1
check "insert a zone" 0 "result: 0" -- call insertSecurityAreas clitrust
check "duplicate zone refused" 0 "result: -1" -- call insertSecurityAreas clitrust
check "zone without members: no address list" 0 "result: NULL" -- call selectIpaddressInfoByNameSA clitrust - 256
check "add a member interface" 0 "result: 0" -- call insertMainFrame clitrust eth9
check "zone address list into a caller buffer" 0 'ret_str: "any"' -- call selectIpaddressInfoByNameSA clitrust - 256
check "json output" 0 '{"function":"selectIpaddressInfoByNameSA","result":"any","outputs":{"ret_str":"any"}}' -- \
  --json call selectIpaddressInfoByNameSA clitrust - 256
check "trace shows the statements" 0 "SQL: select securityAreaId from SecurityAreas where name= 'clitrust';" -- \
  --trace call insertSecurityAreas clitrust
check "log records on stderr" 0 "LOG 3: mysql_num_rows():data is exist,please check the para that you input!" -- \
  --log 3 call insertSecurityAreas clitrust
check "a list result" 0 'pname: "HTTP"' -- call db_get_srv_info_by_name HTTP
check "a record argument" 0 "type: 1" -- call db_if_delete name=eth7 type=1
check "bad integer" 2 "not an integer: 'x'" -- call updateSecurityAreas clitrust x
check "missing argument" 2 "missing argument 'enable'" -- call updateSecurityAreas clitrust
check "unknown function" 2 "no function 'nosuch'" -- call nosuch
check "unknown field" 2 "unknown field 'colour'" -- call db_if_insert colour=red
check "dump a table" 0 "clitrust" -- dump SecurityAreas
check "list" 0 "int insertSecurityAreas(" -- list
"$tool" call deleteSecurityAreas clitrust >/dev/null 2>&1
echo "$((16 - fails)) passed, $fails failed"
[ "$fails" = 0 ]
