#!/usr/bin/env bash
# The doctor, end to end in a temporary root: doctor_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

resolver=tarn/network/resolver
types_store=$stores/schema-store-1

# kept: the directory that the last repair made
kept() { find "$stores" -maxdepth 1 -name 'doctor-*' | sort | tail -n 1; }

expect 0 "Usage: tarnctl doctor" "" doctor --help
expect 2 "" "--repair" doctor --types "$types"
expect 8 "damage directory-missing: $TARN_HOST_ROOT/etc/kestrel/configstore" "see above" doctor
expect 1 "" "cannot be read" doctor --repair --types "$work/none"
"$tarnctl" init >/dev/null
"$tarnctl" schema install "$types" >/dev/null
"$tarnctl" set $resolver 'servers=["10.0.0.1"]'
for name in edge core; do
  "$tarnctl" set tarn/network/switches/$name "name=$name" mtu=9000
done
expect 0 "note allowlist-missing" "" doctor
expect 0 '"healthy":true' "" --json doctor
expect 0 "note allowlist-missing" "" doctor --repair
[ -z "$(kept)" ] || fail "a directory for nothing"

# --- a row that nobody can read keeps its type from being listed
sqlite3 "$store" "UPDATE Config SET UserValue = '{\"name\":\"edge\",' WHERE Identifier = 'edge'"
expect 4 "fault row-not-json: $TARN_HOST_ROOT/etc/kestrel/configstore/current-store-1 Config tarn/network/switches/edge UserValue" "?" doctor
expect 0 "done row-not-json" "" doctor --repair
grep -qF '{\"name\":\"edge\",' "$(kept)/put-aside.json" || fail "the text was not put aside"
expect 0 '"mtu":9000' "" get tarn/network/switches --all-instances
expect 0 '"objects":3' "" restore --force "$(kept)/backup"
rm -r "$stores"/doctor-*
"$tarnctl" set tarn/network/switches/edge name=edge mtu=1500

# --- a store that SQLite cannot read
sqlite3 "$store" "PRAGMA wal_checkpoint(TRUNCATE)" >/dev/null
head -c 3000 /dev/zero | tr '\0' x | dd of="$store" conv=notrunc status=none
expect 8 "" "tarnctl restore" get $resolver
expect 8 "damage unreadable" "?" doctor
expect 4 "done recovered" "?" doctor --repair
expect 0 '=["10.0.0.1"]' "" get $resolver servers
expect 0 "=1500" "" get tarn/network/switches/edge mtu
expect 0 "kept" "" doctor
[ "$(stat -c %a "$(kept)")" = 700 ] || fail "the directory's mode"
rm -r "$stores"/doctor-*

# --- a lost schema store
rm "$types_store"
expect 8 "damage missing" "?" doctor
expect 8 "damage missing" "?" doctor --repair
expect 0 "done type-installed" "" doctor --repair --types "$types"
expect 0 '=["10.0.0.1"]' "" get $resolver servers
finish
