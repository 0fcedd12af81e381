#!/usr/bin/env bash
# What verbs say that they would write, end to end in a temporary root: dry_run_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

drivers=test/tool/drivers
vault=test/tool/vault
switch=tarn/network/switches/edge
options=tarn/tkernel/options
nothing="nothing was written: this was a dry run"
mkdir "$work/tmp" "$work/daemon"
export TMPDIR=$work/tmp

"$tarnctl" init >/dev/null
"$tarnctl" schema install "$types" "$here/types" >/dev/null
allowlist=$TARN_HOST_ROOT/usr/lib/kestrel/configmanager/notify-list/allowlist.json
mkdir -p "${allowlist%/*}"
echo '["tarn.network.*","test.tool.*"]' >"$allowlist"
"$tarnctl" set $switch mtu=9000 portGroups='[{"name":"Storage","vlan":20},{"name":"Backup","vlan":21}]'
"$tarnctl" set $switch --auto mtu=1400
"$tarnctl" set $vault - <<<'{"password":"old","pin":1}'
"$tarnctl" set $drivers/a depth=8 serial=s
"$tarnctl" next-boot update $drivers/a depth=16
"$tarnctl" kernel-options set maximumCpus=16
"$tarnctl" kv set NOTIFY_KEELD true
"$tarnctl" backup "$work/backup" >/dev/null
cp "$types/network-resolver.json" "$work/resolver.json"
sed -i 's/"version": "1.0"/"version": "1.1"/' "$work/resolver.json"
"$tarnctl" export -o "$work/host.json"
sed -i 's/"vlan": 20/"vlan": 30/' "$work/host.json"
cd "$work/daemon" || exit 1
"$tarnctl" watch >"$work/heard" 2>/dev/null &
watcher=$!
# A daemon listens, and others write both stores, all the while.
mkfifo "$work/locks"
{
  { echo "BEGIN IMMEDIATE; SELECT 'locked';" && cat "$work/locks"; } | sqlite3 "$store" >"$work/locked" &
  { echo "BEGIN IMMEDIATE; SELECT 'locked';" && cat "$work/locks"; } | sqlite3 "$stores/schema-store-1" >"$work/locked2" &
}
exec 5>"$work/locks"
for _ in $(seq 100); do
  [ -s "$work/locked" ] && [ -s "$work/locked2" ] && [ -S "$work/daemon/kslLocalSocketKeeldNotifyWisp" ] && break
  sleep 0.05
done

state() { sha256sum "$store" "$store-wal" "$stores/schema-store-1" && find "$TARN_HOST_ROOT" "$work/tmp"; }
# dry CODE OUT ERR ARGUMENTS...: a dry run, which leaves everything as it is and nothing behind
dry() {
  local before
  before=$(state)
  expect "$@" --dry-run
  [ "$(state)" = "$before" ] || fail "tarnctl ${*:4} --dry-run left something"
  if grep -q "$work/tmp" "$work/out" "$work/err"; then fail "tarnctl ${*:4} --dry-run names its copy"; fi
}

# --- what is current, member by member
dry 0 "=$switch: changed ~ /mtu: 9000 -> 1500 (user)" "=tarnctl: $nothing" update $switch mtu=1500
dry 0 "=$switch: changed - /portGroups/Backup: {\"name\":\"Backup\",\"vlan\":21} (user) - /mtu: 9000 (user)" \
  "dry run: mtu is still set in another part: automatic" unset $switch mtu portGroups/Backup
dry 0 "=$switch: deleted - /mtu: 9000 (user)
  - /portGroups: [{\"name\":\"Storage\",\"vlan\":20},{\"name\":\"Backup\",\"vlan\":21}] (user) - /mtu: 1400 (automatic)" \
  "?" delete $switch
dry 0 "$switch: deleted" "dry run: 1 instance of" delete tarn/network/switches --all-instances
dry 0 "$switch: changed ~ /portGroups/Storage/vlan: 20 -> 30 (user)" "dry run: changed: 1" apply "$work/host.json"
dry 0 '={"objects":[{"object":"tarn/network/switches/lab","change":"created","members":[{"pointer":"/mtu","expected":1300,
  "part":"user"}]}],"waits":[],"waitsNoLonger":[],"types":[],"entries":[],"written":false,"output":null}' "" \
  --json set tarn/network/switches/lab mtu=1300

# --- what waits
dry 0 "=waits for the next boot: $drivers/a: SET ~ /depth: 8 -> 32 (user) = boot apply replaces what is current" \
  "$nothing" next-boot set $drivers/a depth=32 serial=s
dry 0 "=waits no longer: $drivers/a ~ /depth: 8 -> 16 (user)" "dry run: SET of $drivers/a taken back" next-boot reset $drivers
dry 0 "$drivers/a: changed ~ /depth: 8 -> 16 (user) waits no longer: $drivers/a ~ /depth: 8 -> 16 (user) entry BOOT_MODE:
  \"4\" -> \"0\"" "?" boot apply
dry 0 "$options: changed + /maximumCpus: 16 (user) waits no longer: $options" "dry run: 1 object accepted" boot accept $options
dry 0 "=waits no longer: $options + /maximumCpus: 16 (user) - /maximumCpus: 16 (pending)" "?" boot reject --all
dry 0 "waits for the next boot: $options: a pending value" "?" kernel-options set maximumCpus=8

# --- all else
dry 0 "=entry x: nothing -> \"1\"" "?" kv set x 1
dry 0 "type tarn/network/resolver: 1.0 -> 1.1" "?" schema install "$work/resolver.json"
dry 0 "=type tarn/network/resolver: removed, 1.0" "?" schema remove tarn/network/resolver
dry 0 "\"store\": \"$store\"" "$nothing" restore --force "$work/backup"
dry 0 "\"unchanged\": [\"$store\",\"$stores/schema-store-1\"]" "dry run: $store exists and is left as it is" init
dry 0 "?" "$nothing" doctor --repair

# --- what the write would be refused for is told as the write tells it; secrets are masked
dry 4 "" "=tarnctl: The update does not fit its type. /mtu: 1280 is the smallest value allowed, found 1" update $switch mtu=1
dry 3 "" "no object tarn/network/switches/none is stored" delete tarn/network/switches/none
dry 1 "" "$store: exists; restoring over it has to be forced" restore "$work/backup"
dry 1 "" "Removing their type has to be forced" schema remove tarn/network/switches
dry 2 "" "--check" apply --check "$work/host.json"
dry 0 "=$vault: changed ~ /password: \"***\" -> \"***\" (user)" "?" update $vault - <<<'{"password":"new"}'
sed 's/"secret": true, //; s/"1.0"/"1.1"/; s/"password": {/"password": { "vital": true,/' "$here/types/vault.json" >"$work/vault.json"
dry 0 "- /password: \"***\" (user) + /password: \"***\" (vital) type $vault: 1.0 -> 1.1" "?" schema install "$work/vault.json"

# --- a daemon hears of what is written, and of nothing else; the copy is gone even if the tool is killed
exec 5>&-
wait %2 %3
[ -s "$work/heard" ] && fail "a dry run was announced"
"$tarnctl" update $switch mtu=1600
for _ in $(seq 100); do
  [ -s "$work/heard" ] && break
  sleep 0.05
done
kill -TERM $watcher
wait $watcher
[ "$(grep -c object "$work/heard")" -eq 1 ] || fail "the daemon did not hear"
mkfifo "$work/input"
for signal in TERM KILL; do
  "$tarnctl" set $switch - --dry-run <"$work/input" 2>"$work/err" &
  exec 6>"$work/input"
  for _ in $(seq 100); do
    [ -n "$(find "$work/tmp" -name current-store-1)" ] && break
    sleep 0.05
  done
  [ -n "$(find "$work/tmp" -name current-store-1)" ] || fail "there is no copy to be removed"
  kill -$signal $!
  wait $!
  exec 6>&-
  for _ in $(seq 100); do
    [ -z "$(ls "$work/tmp")" ] && break
    sleep 0.05
  done
  [ -z "$(ls "$work/tmp")" ] || fail "a copy is left after $signal"
done

# --- what this user may not do, and a store that cannot be copied
if [ "$(id -u)" -eq 0 ] && setpriv --reuid=65534 --regid=65534 --clear-groups test -x "$tarnctl"; then
  chmod 777 "$work/tmp"
  chmod 444 "$stores"/*
  setpriv --reuid=65534 --regid=65534 --clear-groups "$tarnctl" update $switch mtu=1500 --dry-run >"$work/out" 2>"$work/err"
  verify "a dry run of another user" $? 6 "" "$store: user 65534 lacks the right to write it"
fi
TMPDIR=$work/none expect 1 "" "set TMPDIR" kv set x 1 --dry-run
head -c 8192 /dev/zero >"$store"
expect 8 "" "no dry run is possible: $store" kv set x 1 --dry-run
finish
