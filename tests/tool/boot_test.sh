#!/usr/bin/env bash
# Staging for the next boot, the boot itself and kernel options, end to end in a temporary root: boot_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

drivers=test/tool/drivers
options=tarn/tkernel/options
upgrade=$TARN_HOST_ROOT/run/kestrel/upgrade-context

boots() { "$tarnctl" kv set IS_BOOT "$1"; }
upgrades() { mkdir -p "${upgrade%/*}" && echo "$1" >"$upgrade"; }

"$tarnctl" init >/dev/null
"$tarnctl" schema install "$types" "$here/types" >/dev/null
for name in a b; do
  "$tarnctl" set $drivers/$name depth=8 serial=$name
done

# --- staging records a change beside the current configuration, which stays
expect 0 "=[]" "" next-boot list
expect 0 "" "" next-boot set $drivers/a depth=16 serial=A link.speed=10
expect 0 "=16" "" next-boot get $drivers/a depth
expect 0 "" "" next-boot set $drivers/c serial=C
expect 0 "=4" "" next-boot get $drivers/c depth
expect 0 "" "" next-boot set $drivers/b - <<<'{"depth":16}'
expect 0 '=[{"name":"b","depth":16}]' "" next-boot get $drivers --where name=b --where depth=16
expect 0 "" "" next-boot delete $drivers/b
expect 3 "" "$drivers/b is staged to be deleted" next-boot get $drivers/b
expect 0 '=[{"object":"test/tool/drivers/a","action":"SET","version":"1.0","values":["user","vital","cached"]},
  {"object":"test/tool/drivers/b","action":"DELETE_INSTANCE","version":"1.0","values":[]},
  {"object":"test/tool/drivers/c","action":"SET","version":"1.0","values":["vital"]}]' "" next-boot list $drivers
expect 0 "" "=tarnctl:2 instances of $drivers staged to be deleted" next-boot delete $drivers --where depth=8
expect 0 "" "" next-boot delete $drivers/c
# ... and taking back is for all that is staged of the type
expect 0 "" "" next-boot set $options hyperthreading=false
expect 0 "" "=tarnctl:DELETE_INSTANCE of $drivers/a taken back tarnctl:DELETE_INSTANCE of $drivers/b taken back
  tarnctl:DELETE_INSTANCE of $drivers/c taken back" next-boot reset $drivers/a
refused 3 "nothing is staged for $drivers" next-boot reset $drivers

# --- what is refused leaves no trace
refused 4 '{"code":1089,' --json next-boot set $drivers/a depth=65
refused 4 '/name: expected "a"' next-boot set $drivers/a name=b
refused 3 "no object $drivers/z is stored or staged" next-boot delete $drivers/z
refused 3 "no instance of $drivers meets these conditions" next-boot delete $drivers --where depth=1
# closed CODE ERR STATUS: nothing can be staged now, and the status says why
closed() {
  refused "$1" "$2" next-boot set $drivers/a depth=1
  expect 0 "$3" "" boot status
}
"$tarnctl" kv set BOOT_MODE 1
closed 1 "Tarn host is being remediated by ORC, cannot set next-boot configuration." '"bootMode":"1","upgradeContext":0,"canStage":false,"obstacle":"the host is being remediated"'
refused 1 "Tarn host is being remediated" boot apply
expect 0 '={"hyperthreading":false}' "" kernel-options get
"$tarnctl" kv set BOOT_MODE 4
upgrades 1
closed 4 "not supported during the upgrade or boot phase" '"booting":false,"bootInfo":null,"bootMode":"4","upgradeContext":1,"canStage":false,"obstacle":"NextBootStore is not'
upgrades 0

# --- the boot makes what is staged current, all of it or nothing, and once
"$tarnctl" set $options hyperthreading=true
"$tarnctl" next-boot delete $options
"$tarnctl" next-boot set $drivers/a depth=32 link.speed=1
"$tarnctl" next-boot delete $drivers/b
"$tarnctl" next-boot set $drivers/c depth=64
expect 0 '"canStage":true,"obstacle":null,"staged":[{"object":"tarn/tkernel/options","action":"DELETE","version":"1.0","values":[]},
  {"object":"test/tool/drivers/a","action":"SET","version":"1.0","values":["user","cached"]}' "" boot status
boots true
sed 's/"1.0"/"1.1"/; s/64/32/' "$here/types/drivers.json" >"$work/narrow.json"
"$tarnctl" schema install --force "$work/narrow.json" >/dev/null
unfit='{"object":"test/tool/drivers/c","action":"SET","findings":[{"field":"/depth","error":"32 is the largest value allowed, found 64"}]}'
before=$(sqlite3 "$store" .dump)
expect 4 "={\"applied\":[],\"staged\":[{\"object\":\"tarn/tkernel/options\",\"action\":\"DELETE\",\"findings\":[]},
  {\"object\":\"test/tool/drivers/a\",\"action\":\"SET\",\"findings\":[]},
  {\"object\":\"test/tool/drivers/b\",\"action\":\"DELETE_INSTANCE\",\"findings\":[]},$unfit]}" \
  "=tarnctl:1 of 4 staged changes cannot be applied; nothing was applied: --rest applies the others" boot apply
[ "$(sqlite3 "$store" .dump)" = "$before" ] || fail "an apply that was refused changed the store"
expect 4 "={\"applied\":[{\"object\":\"tarn/tkernel/options\",\"action\":\"DELETE\"},{\"object\":\"test/tool/drivers/a\",\"action\":\"SET\"},
  {\"object\":\"test/tool/drivers/b\",\"action\":\"DELETE_INSTANCE\"}],\"staged\":[$unfit]}" \
  "=tarnctl:1 of 4 staged changes cannot be applied" boot apply --rest
expect 0 '=[{"name":"a","link":{"speed":1},"depth":32}]' "" get $drivers --all-instances
expect 4 "={\"applied\":[],\"staged\":[$unfit]}" "" --json boot apply
"$tarnctl" schema install --force "$here/types/drivers.json" >/dev/null
expect 0 '={"applied":[{"object":"test/tool/drivers/c","action":"SET"}],"staged":[]}' "" boot apply
expect 0 '={"applied":[],"staged":[]}' "" boot apply
expect 0 "=64" "" get $drivers/c depth
boots false

# --- kernel options wait in their row until a boot is accepted or rejected
refused 3 "no object $options is stored" kernel-options get
refused 4 "nothing was written" kernel-options set 'passthroughDevices=[]'
"$tarnctl" set $options maximumCpus=2
expect 0 "" "" kernel-options set maximumCpus=4 console.port=com1
expect 0 "=4" "" kernel-options get maximumCpus
expect 0 "=2" "" get $options maximumCpus
expect 0 '"waiting":[{"object":"tarn/tkernel/options","pending":true,"confirmed":true}]' "" boot status
expect 0 "" "=tarnctl:1 pending value dropped" boot reject $options
expect 0 "" "" kernel-options set - <<<'{"maximumCpus":8}'
expect 0 "" "=tarnctl:1 object accepted" boot accept --all
expect 0 "=8" "" get $options maximumCpus

# what an upgrade left to be confirmed waits for an acceptance, alone or with what else waits
upgrades 2
"$tarnctl" set $drivers/a --user depth=5
upgrades 0
"$tarnctl" kernel-options set maximumCpus=9
waiting() { expect 0 "\"waiting\":[$1],\"rebootTypes\"" "" boot status; }
pending='{"object":"tarn/tkernel/options","pending":true,"confirmed":true}'
a='{"object":"test/tool/drivers/a","pending":false,"confirmed":false}'
waiting "$pending,$a"
expect 0 "" "=tarnctl:1 pending value dropped" boot reject --all
waiting "$a"
"$tarnctl" kernel-options set maximumCpus=9
expect 0 "" "=tarnctl:2 objects accepted" boot accept --all
waiting ""

# --- a part of what waits, and of the types that a SmartNIC shares
"$tarnctl" kernel-options set maximumCpus=4 console.port=com1
expect 0 '={"maximumCpus":4}' "" boot desired $options
expect 0 '={"console":{"port":"com1"},"maximumCpus":4}' "" boot desired $options --all-parts
refused 1 "is not part of desired config" boot accept $options --part maximumCpus=5
refused 2 "--part is of one OBJECT" boot accept --all --part maximumCpus=4
expect 0 "" "" boot accept $options --part maximumCpus=4
expect 0 "=4" "" get $options maximumCpus
expect 0 '={"a":3,"c":1}' "" revision $drivers --all-instances
expect 4 "" "?" revision $options --all-instances
"$tarnctl" kernel-options set maximumCpus=5
expect 0 "" "" boot accept --shared
expect 0 '"waiting":[{' "" boot status

# --- the kind of the boot: nonsense is told, and the rest of the status with it
"$tarnctl" kv set --force BOOT_INFO '['
expect 1 "" "Failed to read BOOT_INFO database." boot info
expect 0 '"bootInfo":null,' "Failed to read BOOT_INFO database." --json boot status

finish
