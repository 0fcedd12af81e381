#!/usr/bin/env bash
# Updates, layers, instances and deletes, end to end in a temporary root: instances_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

nics=tarn/network/interfaces
switches=tarn/network/switches
resolver=tarn/network/resolver

# row INSTANCE WANTED: the instance's row of network interfaces, rendered as one line
row() {
  sqlite3 "$store" "SELECT 'u=' || ifnull(UserValue, '-') || ' a=' || ifnull(AutoConfValue, '-') || ' v=' ||
    ifnull(VitalValue, '-') || ' c=' || ifnull(CachedValue, '-') || ' rev=' || Revision
    FROM Config WHERE Name = 'interfaces' AND Identifier = '$1'" >"$work/out" 2>"$work/err"
  verify "the row of $1" $? 0 "=$2" ""
}

"$tarnctl" init >/dev/null
"$tarnctl" schema install "$types" "$here/types" >/dev/null

# --- update changes what is given: each part in its own layer, in either context
mac=02:00:00:00:00:01
a='{"id":"a","family":"ipv4","address":"10.0.0.1","prefixLength":24}'
b='{"id":"b","family":"ipv4","address":"10.0.0.2","prefixLength":24}'
expect 0 "" "" set $nics/nic0 enabled=true macAddress=$mac "addresses=[$a]" link.driver=e link.speedMbps=1000
row nic0 "u={\"device\":\"nic0\",\"enabled\":true,\"addresses\":[$a]}
  a=- v={\"device\":\"nic0\",\"macAddress\":\"$mac\"} c={\"device\":\"nic0\",\"link\":{\"driver\":\"e\",\"speedMbps\":1000}} rev=1"
expect 0 "" "" update $nics/nic0 mtu=9000 link.speedMbps=10000
expect 0 "" "" update $nics/nic0 --auto gateway=10.0.0.254 mtu=1400
expect 0 "" "" update $nics/nic0 - <<<"{\"addresses\":[$b,{\"id\":\"a\",\"prefixLength\":16}],\"device\":\"nic0\"}"
rest="v={\"device\":\"nic0\",\"macAddress\":\"$mac\"} c={\"device\":\"nic0\",\"link\":{\"driver\":\"e\",\"speedMbps\":10000}}"
user="{\"device\":\"nic0\",\"enabled\":true,\"addresses\":[${a/24/16},$b],\"mtu\":9000}"
automatic='{"device":"nic0","gateway":"10.0.0.254","mtu":1400}'
row nic0 "u=$user a=$automatic $rest rev=4"

refused 4 '{"code":1090,' --json update $nics/nic0 mtu=9 enabled=false
expect 0 "" "" update $nics/nic0 'addresses=[]'
row nic0 "u={\"device\":\"nic0\",\"enabled\":true,\"mtu\":9000} a=$automatic $rest rev=5"
refused 4 "holds nothing but its instance id" update $nics/nic0 - <<<'{"device":"nic0"}'
refused 4 "without its empty members" update $nics/nic0 'addresses=[{}]'
expect 0 "" "tarnctl: /addresses/1 names nothing, and was left out" update $nics/nic0 "addresses=[$a,{}]" link.driver=null enabled=null
row nic0 "u={\"device\":\"nic0\",\"mtu\":9000,\"addresses\":[$a]} a=$automatic ${rest/\"driver\":\"e\",} rev=6"
refused 4 "/gateway: cannot be taken away: automatic" update $nics/nic0 - <<<'{"gateway":null}'
expect 0 "" "" update $resolver 'servers=["10.0.0.1"]' timeout=9

# --- set with a layer replaces that layer alone
expect 0 "" "" set $nics/nic0 --user mtu=1500
row nic0 "u={\"device\":\"nic0\",\"mtu\":1500} a=$automatic ${rest/\"driver\":\"e\",} rev=7"
expect 0 "" "" set $nics/nic0 --auto - <<<'{"device":"nic0","enabled":false}'
expect 0 "" "" set $nics/nic0 macAddress=${mac/01/02} --vital
expect 0 "" "" set --cached $nics/nic0 link.duplex=full
row nic0 "u={\"device\":\"nic0\",\"mtu\":1500} a={\"device\":\"nic0\",\"enabled\":false}
  v={\"device\":\"nic0\",\"macAddress\":\"${mac/01/02}\"} c={\"device\":\"nic0\",\"link\":{\"duplex\":\"full\"}} rev=10"
expect 0 '"values":["user","automatic","vital","cached"]' "" list $nics
refused 4 '{"code":1087,' --json set $nics/nic0 --user macAddress=$mac
refused 4 "nothing was written" set test/tool/values --auto - <<<'{}'
refused 2 "at most 1" set $nics/nic0 --vital --cached mtu=1500
refused 2 "--user" update $nics/nic0 --user mtu=1500

# --- what types came with
expect 0 '={"servers":["10.0.0.1"]}' "" get $resolver --default
expect 3 "" "no object $switches/a is shipped" get $switches/a --default
expect 0 '=[{"name":"management","direction":"inbound","ports":[443,"5900-5964"]},
  {"name":"names","direction":"outbound","protocol":"udp","ports":[53]}]' "" get tarn/network/firewallRules --all-instances --default
expect 0 '[{"name":"names"' "" get tarn/network/firewallRules --default --where protocol=udp

# --- instances, chosen by typed values
expect 0 "=[]" "" get $switches --all-instances
expect 0 "" "" set $switches/b mtu=1500 'uplinks=["nic0","nic1"]' security.promiscuous=false
expect 0 "" "" set $switches/a/1 mtu=9000 'uplinks=["nic1"]' security.promiscuous=false security.macChanges=true
expect 0 "" "" set $switches/2 discovery=off 'portGroups=[{"name":"Guests","vlan":7}]'
expect 0 "" "" set $switches/B mtu=1500
# chosen NAMES ARGUMENTS...: the switches that are printed, in their order
chosen() {
  local names=$1
  shift
  expect 0 "?" "" get $switches "$@"
  [ "$(sed -n 's/^    "name": "\(.*\)",\{0,1\}$/\1/p' "$work/out" | paste -sd ' ')" = "$names" ] || fail "tarnctl get $switches $* does not print $names"
}
chosen "2 B a/1 b" --all-instances
chosen "B b" --where mtu=1500
chosen "b" --where mtu=1500 --where security.promiscuous=false
chosen "a/1" --where 'security={"promiscuous":false,"macChanges":true}'
expect 0 '=[{"name":"2","discovery":"off","portGroups":[{"name":"Guests","vlan":7}]}]' "" get $switches --where discovery=off
expect 0 "[{\"object\":\"$switches/a/1\",\"version\":\"3.1\",\"revision\":1," "" list $switches/a/1 --json

for verb in get delete; do
  refused 4 '"details":[{"field":"/security/inner","error":"no such member"},{"field":"/speed","error":' \
    --json $verb $switches --where security.inner=true --where speed=1
  refused 4 '"mtu" takes integer, not "big"' $verb $switches --where mtu=big
  refused 2 "MEMBER=VALUE" $verb $switches --where mtu
  refused 2 "given twice" $verb $switches --where mtu=1 --where mtu=2
  for which in "--where mtu=1500" --all-instances; do
    # shellcheck disable=SC2086
    refused 2 "COMPONENT/GROUP/KEY" $verb $switches/b $which
  done
  refused 4 "singleton" $verb $resolver --where timeout=9
  refused 3 "tarn" $verb tarn/no/type --where a=1
done
refused 2 "excludes" get $switches --where mtu=1500 mtu

# a type that lists its members in branches, or takes any
expect 0 "=[]" "" get test/tool/branches --where either.left=1 --where either.right=1 --where open.any=x --where coded.code1=x --where either.flag=true
refused 4 "/either/middle: no such member" get test/tool/branches --where either.middle=1 --where open.any=x

# --- delete
refused 3 "no object $switches/absent is stored" delete $switches/absent
refused 4 "?" delete $switches
refused 3 "no instance of $switches meets these conditions" delete $switches --where mtu=1500 --where discovery=off
expect 0 "" "" delete $switches/a/1
refused 3 '"message":"no object tarn/network/switches/a/1 is stored"' --json delete $switches/a/1
expect 0 "" "=tarnctl:1 instance of $switches deleted" delete $switches --where mtu=1500 --where security.promiscuous=false
chosen "2 B" --all-instances
expect 0 "" "=tarnctl:2 instances of $switches deleted" delete $switches --all-instances
refused 3 "no instance of $switches is stored" delete $switches --all-instances
expect 0 "" "" delete $resolver
expect 3 "" "no object $resolver is stored" get $resolver

# --- a member that a new version moves to another part is read, written and staged as before
moved=$work/resolver.json
expect 0 "" "" set $resolver 'servers=["10.0.0.1"]' timeout=9
"$tarnctl" schema show $resolver | sed 's/"version": "1.0"/"version": "1.1"/; s/"timeout": {/"timeout": { "vital": true,/' >"$moved"
expect 0 "\"divided\":[{\"object\":\"$resolver\",\"version\":\"1.0\",\"outcome\":\"divided\"" "" schema install "$moved"
expect 0 "=9" "" get $resolver timeout
expect 0 "=[]" "" schema upgrade-rows
sqlite3 "$store" "UPDATE Config SET Version = '0.9' WHERE Name = 'resolver'"
expect 0 '"version":"0.9"' "" list --outdated $resolver
expect 0 '"outcome":"renewed"' "" schema upgrade-rows --check $resolver
expect 0 '"outcome":"renewed"' "" schema upgrade-rows
expect 0 "=[]" "" list --outdated

finish
