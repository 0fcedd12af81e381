#!/usr/bin/env bash
# What get reads beside one whole object, and lists of instances written, end to end in a temporary root:
# reads_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

nics=tarn/network/interfaces
switches=tarn/network/switches
resolver=tarn/network/resolver
values=test/tool/values
list=$work/list.json

"$tarnctl" init >/dev/null
"$tarnctl" schema install "$types" "$here/types" >/dev/null

# --- all of a component or group, nested as in whole documents
expect 3 "" "nothing is stored under tarn" get tarn
expect 0 "" "" set $nics/b mtu=1500
expect 0 "" "" set $nics/a mtu=9000
expect 0 "" "" set $resolver 'servers=["10.0.0.1"]'
expect 0 "" "" set tarn/power/policy profile=custom custom.loadThreshold=0.25
network='{"interfaces":[{"device":"a","mtu":9000},{"device":"b","mtu":1500}],"resolver":{"servers":["10.0.0.1"]}}'
power='{"policy":{"profile":"custom","custom":{"loadThreshold":0.25}}}'
expect 0 "=$network" "" get tarn/network
expect 0 "={\"network\":$network,\"power\":$power}" "" get tarn
# what is not shown is told, and what cannot be read fails the call
"$tarnctl" schema remove --force $resolver
sqlite3 "$store" "UPDATE Config SET Success = 0 WHERE Name = 'policy'"
expect 1 "=${network%,\"resolver\"*}}" "=tarnctl: not all stored objects could be read $resolver: its type is not installed" get tarn/network
expect 1 "?" "tarn/power/policy is stored, but nothing of it is confirmed tarnctl: not all" get tarn
"$tarnctl" schema install "$types" >/dev/null

# --- an instance, or another verb, was meant
expect 4 "" "interfaces has instances: a, b; name one, or use --all-instances" delete $nics
expect 4 "" "of which none is stored; name one as $switches/NAME" get $switches
expect 4 "" "take effect at once: \`tarnctl set\`" next-boot set $resolver timeout=7

# --- a place in an object
expect 0 "" "" set $values 'anything={"a":[{"b/c":"x"},null]}' 'list=[7]'
expect 0 "=x" "" get $values --pointer /anything/a/0/b~1c
expect 0 '="x"' "" --json get $values --pointer /anything/a/0/b~1c
expect 3 "" "has nothing at /list/1" get $values --pointer /list/1
expect 0 "=Guests" "" get $switches/switch0 --default --pointer /portGroups/1/name

# --- while the host boots
expect 0 "" "" set $nics/a --auto mtu=1400
expect 0 "=9000" "" get $nics/a --during-boot mtu
expect 0 '={"device":"a","mtu":1400}' "" get $nics/a --during-boot --auto

# --- instances beside those that the type came with
ids() { "$tarnctl" get $switches --all-instances "$@" | grep -o '^    "name": "[^"]*"' | cut -d'"' -f4 | paste -sd ' '; }
expect 0 "" "" set $switches/zz ports=8
[ "$(ids) $(ids --with-shipped)" = "zz zz switch0" ] || fail "shipped instances are not added"
"$tarnctl" get $switches/switch0 --default | "$tarnctl" set $switches/switch0 -
[ "$(ids --with-shipped) $(ids --changed-only)" = "switch0 zz zz" ] || fail "instances as shipped are shown as changed"
for usage in "$switches/zz --with-shipped" "$switches --where ports=8 --with-shipped" "$switches --changed-only" \
  "$switches --all-instances --default --changed-only"; do
  # shellcheck disable=SC2086
  expect 2 "" "?" get $usage
done

# --- all instances of a type at once
expect 0 "" "$nics set" set $nics --all-instances - <<<'[{"device":"b","mtu":1600},{"device":"c"  ,"macAddress":"02:00:00:00:00:01"}]'
expect 0 '=[{"device":"b","mtu":1600},{"device":"c","macAddress":"02:00:00:00:00:01"}]' "" get $nics --all-instances
expect 0 "=2" "" revision $nics/b
cat >"$work/list.yaml" <<'T'
- {device: b, macAddress: "02:00:00:00:00:02"}
T
expect 0 "" "1 instance of $nics set" set $nics --all-instances --vital "$work/list.yaml"
expect 0 "" "2 instances of $nics set" set $nics --all-instances --auto - <<<'[{"device":"b","mtu":1300},{"device":"d","mtu":1300}]'
expect 0 "" "1 instance of $nics set" set $nics --all-instances --cached - <<<'[{"device":"b","link":{"duplex":"full"}}]'
expect 0 "" "1 instance of $nics set" set $nics --all-instances --user - <<<'[{"device":"d","mtu":1700}]'
expect 0 '=[{"device":"b","mtu":1300,"link":{"duplex":"full"},"macAddress":"02:00:00:00:00:02"},{"device":"d","mtu":1700}]' "" \
  get $nics --all-instances

# every fault of every element is told, and nothing is written
cat >"$work/list.yaml" <<'T'
- device: b
  mtu: 1
- mtu: 1500
- 5
- device: b
- device: e
T
told="/1: line 3: the member \"device\" is to name the instance, as a text /2: line 4: no object /3/device: line 5: the instance is listed before, at /0"
refused 4 "=tarnctl: nothing was written: not all instances fit their type $told" set $nics --all-instances "$work/list.yaml"
expect 4 "=$told" "=tarnctl: 3 findings" validate $nics --all-instances "$work/list.yaml"
printf '[{"device":"b","mtu":1},{"device":"c","mtu":"x"},{"device":"d"}]' >"$list"
refused 4 "/0/mtu: 1280 is the smallest value allowed, found 1 /1/mtu: " set $nics --all-instances "$list"
expect 4 "/2: " "=tarnctl: 3 findings" set --check $nics --all-instances "$list"
refused 4 "the list is empty" set $nics --all-instances - <<<'[]'
refused 2 "takes one file" set $nics --all-instances mtu=1
refused 3 "Did you mean $nics?" set tarn/network/interface --all-instances "$list"

finish
