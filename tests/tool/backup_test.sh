#!/usr/bin/env bash
# Backups and restores, end to end in a temporary root: backup_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

backup=$work/backup
resolver=tarn/network/resolver

for verb in backup restore; do
  expect 0 "Usage: tarnctl $verb" "" $verb --help
  expect 2 "" "?" $verb
done
expect 1 "" "tarnctl init" backup "$backup"
[ ! -e "$backup" ] || fail "a backup of no store"

"$tarnctl" init >/dev/null
"$tarnctl" schema install "$types" >/dev/null
"$tarnctl" set $resolver 'servers=["10.0.0.1"]'
expect 0 "\"path\":\"$backup\"" "" backup "$backup"
expect 0 '"objects":1' "" backup "$backup" --replace
[ "$(stat -c %a "$backup")" = 600 ] || fail "the backup's mode"
refused 1 "exists" backup "$backup"

"$tarnctl" set $resolver 'servers=["10.0.0.2"]'
"$tarnctl" schema remove tarn/network/switches >/dev/null
refused 1 "has to be forced" restore "$backup"
refused 1 "No such file" restore "$work/none" --force
head -c 5000 "$backup" >"$work/short"
refused 1 "cut short" restore "$work/short" --force
expect 0 "\"replaced\":[\"$store\",\"$stores/schema-store-1\"]" "" restore "$backup" --force
expect 0 '=["10.0.0.1"]' "" get $resolver servers

# --- what the store says is mended by a backup
head -c 9000 /dev/zero | tr '\0' x >"$store"
expect 8 "" "tarnctl restore --force FILE" get $resolver
expect 0 "?" "" restore "$backup" --force
expect 0 '=["10.0.0.1"]' "" get $resolver servers
rm -r "$stores"
expect 0 "\"created\":[\"$stores\"" "" restore "$backup"
expect 0 '=["10.0.0.1"]' "" get $resolver servers

# --- tables of an older version, and what is no table
"$tarnctl" backup "$work/today" >/dev/null
sqlite3 "$store" "DROP TRIGGER ChangeStaged; DROP TRIGGER ChangeUnstaged; DROP TRIGGER ChangeMoved;
  DROP TABLE StagedBase; PRAGMA user_version=1"
expect 0 '"storeLayout":1' "" backup "$work/older"
expect 0 "\"upgraded\":[\"$store\"]" "has the tables of this version now" init
expect 0 "\"outdated\":[\"$store\"]" "\`init\` brings it over" restore "$work/older" --force
expect 0 '=["10.0.0.1"]' "" get $resolver servers
sqlite3 "$store" "PRAGMA legacy_alter_table=ON; ALTER TABLE Config RENAME TO C;
  CREATE VIEW Config AS SELECT * FROM C"
expect 8 "" "Config is a view, not a table" get $resolver
expect 8 "" "Config is a view, not a table" init
expect 0 '"storeLayout":2' "" restore "$work/today" --force
expect 0 '=["10.0.0.1"]' "" get $resolver servers

# --- who holds the store up, or may not write it
coproc sqlite3 "$store"
echo "BEGIN IMMEDIATE; SELECT 'locked';" >&"${COPROC[1]}"
read -r _ <&"${COPROC[0]}"
expect 7 "" "locked" restore "$backup" --force
eval "exec ${COPROC[1]}>&-"
wait
expect 0 '=["10.0.0.1"]' "" get $resolver servers
finish
