#!/usr/bin/env bash
# explain, describe, unset, reset and get --effective, end to end in a temporary root: explain_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

edge=tarn/network/switches/edge
resolver=tarn/network/resolver
vault=test/tool/vault

# --- a type is described without a host
expect 0 "uplinks/* (string, each element) matches ^[a-z][a-z0-9]{0,14}$" "" describe tarn/network/switches --from "$types/network-switches.json"
expect 0 "=tarn/network/switches,version3.1 Virtual switch Has instances. Changes take effect at once. mtu (integer) 1280 to 9216; default 1500" \
  "" describe tarn/network/switches mtu --from "$types/network-switches.json"
expect 3 "" "describes the type tarn/network/resolver, not tarn/network/switches" describe tarn/network/switches --from "$types/network-resolver.json"
expect 4 "" "The type file is not valid." describe $resolver --from "$0"
[ ! -e "$stores" ] || fail "describing made a store"

"$tarnctl" init >/dev/null
"$tarnctl" schema install "$types" "$here/types" >/dev/null
expect 0 "Changes are staged, and take effect at the next boot." "" describe tarn/tkernel/options
expect 3 "" "the type $resolver has no member \"timeuot\"; did you mean \"timeout\"?" describe $resolver timeuot
described='"pointer":"/coded/^code[0-9]$","token":"pattern","type":"string"'
expect 0 "$described" "" --json describe test/tool/branches coded

# --- what is not stored is said to be so
expect 3 "" "no object $resolver is stored; the defaults of its type are shown by --effective" get $resolver
expect 3 "" "=tarnctl: no object $vault is stored" get --effective $vault
expect 0 '={"timeout":5}' "no object $resolver is stored: these are the defaults" get --effective $resolver
expect 0 "Not stored: what is read are the defaults of its type." "" explain $resolver
expect 0 "" "" set $resolver 'servers=["10.0.0.1"]'
expect 0 '={"servers":["10.0.0.1"],"timeout":5}' "" get --effective $resolver

# --- who set what
expect 0 "" "" set $edge mtu=9000 'portGroups=[{"name":"Backup","vlan":5},{"name":"Main"}]' 'uplinks=["nic0"]'
expect 0 "" "" set --auto $edge mtu=1400 ports=64
expect 0 "" "" set --cached $edge 'portGroups=[{"name":"Backup","activePorts":3}]'
expect 0 "mtu = 9000 (user) integer 1280 to 9216; default 1500 hides 1400 (automatic)" "" explain $edge mtu
expect 0 "portGroups/Backup/activePorts = 3 (cached)" "" explain $edge portGroups.Backup
expect 0 '"role":"hidden","value":1400' "" --json explain $edge /mtu
expect 3 "" "the object $edge has no member \"mtuu\"; did you mean \"mtu\"?" explain $edge mtuu
expect 0 "" "?" set $vault password=deep
expect 0 'password = "***" (user)' "" explain $vault
expect 0 'password = "deep" (user)' "" explain $vault --reveal

# --- taking back: nothing is written unless all of it is
refused 3 "=tarnctl: nothing was written: not all of it is set of $edge /none: is not set" unset $edge mtu none
refused 3 "/ports: is set in another part: automatic" unset $edge ports
refused 4 "/: nothing would be left of the object; delete it instead" unset $resolver servers
expect 0 "" "" update $resolver timeout=9
refused 4 "/name: an instance id names its object" unset $edge name
refused 4 "tarnctl next-boot unset tarn/tkernel/options MEMBER" unset tarn/tkernel/options secureBoot
refused 2 "is no part" unset $edge mtu --part desired
refused 2 "is no JSON Pointer" unset $edge /a~b
expect 0 "" "mtu is still set in another part: automatic" unset $edge mtu portGroups/Backup
expect 0 '"portGroups":[{"name":"Main"}]' "" get $edge
expect 0 "" "" unset $edge --part automatic mtu ports

# --- resetting
refused 2 "neither default nor shipped" reset $edge --to factory
refused 3 "no object $edge is shipped" reset $edge --to shipped
expect 0 "" "the user part is that already" reset $edge mtu --to default
expect 0 "" "" reset $edge uplinks --to default
expect 0 '={"name":"edge","portGroups":[{"name":"Main"}]}' "" get $edge
expect 0 "" "" reset $edge --to default
shipped=tarn/network/switches/switch0
expect 0 "" "" reset $shipped --to shipped
expect 0 "" "" update $shipped mtu=2000 'portGroups=[{"name":"Guests","vlan":7}]'
expect 0 "" "" reset $shipped portGroups/Guests --to shipped
expect 0 "" "" reset $shipped mtu --to shipped
expect 0 "" "" diff $shipped --with shipped
expect 0 "" "the user part is that already" reset $shipped --to shipped

finish
