#!/usr/bin/env bash
# Updates, layers, instances and deletes, end to end in a temporary root: instances_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

nics=tarn/network/interfaces
switches=tarn/network/switches
resolver=tarn/network/resolver

"$tarnctl" init >/dev/null
"$tarnctl" schema install "$types" "$here/types" >/dev/null

# --- update changes what is given; set with a layer replaces that layer alone
mac=02:00:00:00:00:01
expect 0 "" "" set $nics/nic0 enabled=true macAddress=$mac link.driver=e
expect 0 "" "" update $nics/nic0 mtu=9000 link.driver=null
expect 0 "" "" set $nics/nic0 --auto - <<<'{"device":"nic0","gateway":"10.0.0.254"}'
expect 0 "" "" set --vital $nics/nic0 macAddress=${mac/01/02}
expect 0 '={"device":"nic0","gateway":"10.0.0.254","link":{},"macAddress":"02:00:00:00:00:02","enabled":true,"mtu":9000}' "" get $nics/nic0
refused 4 '{"code":1090,' --json update $nics/nic0 mtu=9 enabled=false
refused 4 '{"code":1087,' --json set $nics/nic0 --user macAddress=$mac
refused 4 "/gateway: cannot be taken away: automatic" update $nics/nic0 - <<<'{"gateway":null}'
refused 2 "at most 1" set $nics/nic0 --vital --cached mtu=1500
expect 0 "" "" update $resolver 'servers=["10.0.0.1"]' timeout=9
expect 0 '=[{"name":"names","direction":"outbound","protocol":"udp","ports":[53]}]' "" get tarn/network/firewallRules --default --where protocol=udp

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
refused 3 "no instance of $switches meets these conditions" delete $switches --where mtu=1500 --where discovery=off
expect 0 "" "" delete $switches/a/1
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
