#!/usr/bin/env bash
# What waits for the next boot and what is changed meanwhile, end to end in a temporary root: pending_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

drivers=test/tool/drivers
vault=test/tool/vault

"$tarnctl" init >/dev/null
sed 's/"schema": {/"schema": { "rebootRequired": true,/' "$here/types/vault.json" >"$work/vault.json"
"$tarnctl" schema install "$here/types/drivers.json" "$work/vault.json" >/dev/null
ports='ports=[{"id":"p","speed":1},{"id":"q","speed":2}]'
for name in a b c; do
  "$tarnctl" set $drivers/$name depth=8 "$ports"
done
expect 0 "" "" pending
refused 3 "there is nothing under no/such" pending no/such

# --- members are staged one by one, onto what is staged already
expect 0 "" "" next-boot update $drivers/a depth=16
expect 0 "" "" next-boot update $drivers/a 'ports=[{"id":"p","speed":5}]' serial=A
expect 0 '={"name":"a","serial":"A","depth":16,"ports":[{"id":"p","speed":5},{"id":"q","speed":2}]}' "" \
  next-boot get $drivers/a
expect 0 "" "" next-boot unset $drivers/a serial
refused 3 "$drivers/a is to have no such member" next-boot unset $drivers/a serial link.speed
refused 2 "\"depth=8\" is no MEMBER" next-boot unset $drivers/a depth=8
refused 4 "nothing would be left" next-boot unset $drivers/c depth ports
expect 0 "" "nothing was staged: $drivers/a is to be so already" next-boot update $drivers/a depth=16
"$tarnctl" next-boot delete $drivers/b
refused 4 "staged to be deleted" next-boot update $drivers/b depth=1

# --- what waits, with what was changed meanwhile
"$tarnctl" update $drivers/a link.speed=9 'ports=[{"id":"q","speed":7}]'
expect 0 "=$drivers/a: SET
  ~ /depth: 8 -> 16 (user)
  ~ /ports/p/speed: 1 -> 5 (user)
  ~ /ports/q/speed: 7 -> 2 (user)
  - /link: {\"speed\":9} (cached)
  ! /ports/q/speed was changed meanwhile (user): 2 when staged, 7 now, 2 staged
  ! /link was changed meanwhile (cached): nothing when staged, {\"speed\":9} now, nothing staged
  = boot apply replaces what is current; with --merge what was changed meanwhile stays" "" pending $drivers/a
expect 0 '"meanwhile":[{"pointer":"/ports/q/speed","base":2,"staged":2,"current":7,"part":"user","conflicts":false},
  {"pointer":"/link","current":{"speed":9},"part":"cached","conflicts":false}],"findings":[],"mergedFindings":[]}]' "" \
  --json pending $drivers/a
"$tarnctl" update $drivers/b depth=9
expect 0 "with --merge it stays staged until --staged or --current decides" "" pending $drivers/b

# --- merged: what was changed meanwhile stays, a conflict stays staged until it is decided
refused 2 "decide the conflicts of --merge" boot apply --staged
both='"base":{"name":"b","depth":8,"ports":[{"id":"p","speed":1},{"id":"q","speed":2}]},
  "current":{"name":"b","depth":9,"ports":[{"id":"p","speed":1},{"id":"q","speed":2}]}'
told="\"object\":\"$drivers/b\",\"action\":\"DELETE_INSTANCE\""
expect 5 "\"staged\":[{\"object\":\"$drivers/a\",\"action\":\"SET\",\"findings\":[],\"conflicts\":[]},
  {$told,\"findings\":[],\"conflicts\":[{\"pointer\":\"\",$both}]}]}" \
  "=tarnctl: 1 of 2 staged changes conflict with what was written since they were staged: --staged or --current decides;
  nothing was applied: --rest applies the others" boot apply --merge
expect 5 "={\"applied\":[{\"object\":\"$drivers/a\",\"action\":\"SET\",\"merged\":true,\"decided\":[],\"takenBack\":false}],
  \"staged\":[{$told,\"findings\":[],\"conflicts\":[{\"pointer\":\"\",$both}]}]}" "" --json boot apply --merge --rest
expect 0 '={"name":"a","link":{"speed":9},"depth":16,"ports":[{"id":"p","speed":5},{"id":"q","speed":7}]}' "" get $drivers/a
expect 0 "={\"applied\":[{$told,\"merged\":true,\"decided\":[{\"pointer\":\"\",$both}],\"takenBack\":true}],\"staged\":[]}" "" \
  boot apply --merge --current
"$tarnctl" next-boot set $drivers/b depth=1
"$tarnctl" update $drivers/b depth=2 serial=B
expect 0 "?" "" boot apply --merge --staged
expect 0 '={"name":"b","serial":"B","depth":1}' "" get $drivers/b
"$tarnctl" next-boot set $drivers/b depth=64
"$tarnctl" update $drivers/b serial=C
sqlite3 "$store" 'DELETE FROM StagedBase'
expect 0 "nothing can be merged" "" pending
expect 0 '"merged":false' "$drivers/b was applied as it was staged: there is no telling" boot apply --merge

# --- secrets
"$tarnctl" set $vault - <<<'{"password":"old","pin":1}'
"$tarnctl" next-boot update $vault - <<<'{"password":"new"}'
"$tarnctl" update $vault - <<<'{"password":"other"}'
expect 0 "=$vault: SET ~ /password: \"***\" -> \"***\" (user)
  ! /password was changed meanwhile (user): \"***\" when staged, \"***\" now, \"***\" staged: a conflict
  = boot apply replaces what is current; with --merge it stays staged until --staged or --current decides" "" pending $vault
expect 0 '"base":"old","staged":"new","current":"other"' "" --json pending --reveal
expect 5 '"base":"***","staged":"***","current":"***"' "" --json boot apply --merge

finish
