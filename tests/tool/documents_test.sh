#!/usr/bin/env bash
# Whole documents, end to end in a temporary root: documents_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

nics=tarn/network/interfaces
resolver=tarn/network/resolver
options=tarn/tkernel/options
guarded=test/tool/guarded
doc=$work/doc.json
yaml=$work/doc.yaml

cat >"$work/guarded.json" <<'T'
{"component": "test", "group": "tool", "key": "guarded", "version": "1.0", "schema": {"type": "object", "properties": {
  "password": {"type": "string", "secret": true}, "serial": {"type": "string", "readOnly": true}, "size": {"type": "integer"}}}}
T
new_host() {
  mkdir -p "$TARN_HOST_ROOT"
  "$tarnctl" init >/dev/null 2>&1
  "$tarnctl" schema install "$types" "$here/types" "$work/guarded.json" >/dev/null
}
network() { echo "{\"format\":1,\"config\":{\"tarn\":{\"network\":{$1}}}}"; }
rows() {
  sqlite3 "$1" "SELECT Component, ConfigGroup, Name, Identifier, Version, UserValue, DesiredValue, AutoConfValue, VitalValue,
    CachedValue, Success, CreationTime, Revision FROM Config ORDER BY 1, 2, 3, 4; SELECT * FROM DesiredUserConfig ORDER BY 1, 2, 3, 4"
}
dump() { sqlite3 "$store" .dump; }
# unchanged NAME: the store is what "$before" says
unchanged() { [ "$(dump)" = "$before" ] || fail "$1 changed the store"; }

for verb in export "import $doc" "apply -" "diff --with shipped"; do
  # shellcheck disable=SC2086
  expect 1 "" "tarnctl init" $verb
done
new_host
for usage in "export /" "export -o" "export --output=" "import" "apply" "import a --replace --replace-all" "import --limit 0 a" "diff" \
  "diff --with root:" "diff / --with a" "apply a --dry-run --check=x"; do
  # shellcheck disable=SC2086
  expect 2 "" "?" $usage
done

# --- a host, by all its parts, becomes another one like it
"$tarnctl" set $nics/b mtu=1500 'addresses=[{"id":"p","family":"ipv4","address":"10.0.0.20","prefixLength":24}]'
"$tarnctl" set $nics/a mtu=9000 macAddress=02:00:00:00:00:01 && "$tarnctl" set $nics/a --auto mtu=1400
"$tarnctl" set $resolver 'servers=["10.0.0.1"]' lease.server=10.0.0.7
"$tarnctl" set $guarded size=5 --secret password <<<hush
"$tarnctl" set test/tool/values 'text=012' 'anything={"no":["NO",1.5,null,{}]}'
"$tarnctl" set $options maximumCpus=64 && "$tarnctl" next-boot set $options maximumCpus=32
"$tarnctl" kernel-options set maximumCpus=16
"$tarnctl" set test/tool/branches/NO - <<<'{"open":{"NO":"1.0","a: b":"~","":"\u2028"},"coded":{"code1":""},"either":{"left":1,"flag":true}}'
"$tarnctl" set test/tool/shapes/~1 - <<<'{"serial":"S","seen":{"at":"2001-01-01"},"tuple":[{"t":[1e300]},2],"patterns":{"n1":7,"x":{"z":[[]]}},
  "rules":[{"allow":"vital"}],"parts":[{"name":"1","n":[["on"]]},{"name":"2"}],"tree":{"label":"yes","below":[{"label":"-"}]}}'
"$tarnctl" next-boot set test/tool/drivers/d - <<<'{"serial":"0x1","link":{"speed":1},"depth":8,"ports":[{"id":"1","speed":5,"mac":"m","peer":"p"}]}'
# One of each of the other sample types.
others='boot/device diskId=naa.600508b1001c partition=5
network/firewallRules/web direction=inbound ports=[443] hits=3
network/switches/s uplinks=["nic0"] portGroups=[{"name":"M"},{"name":"G","vlan":7}]
power/policy profile=balanced
security/accountPolicy administrators=["root"]
services/remoteShell enabled=true port=22
services/syslog localSeverity=info
services/time enabled=true maximumStep=10
storage/adapters/hba0 queueDepth=64 worldWideName=0123456789abcdef
storage/mounts/m hosts=["10.0.0.5"] share=/x
system/identity uuid=00000000-0000-4000-8000-000000000001 hostName=h
system/sensors/cpu reading=41.5 unit=celsius'
while read -r name members; do
  # shellcheck disable=SC2086
  "$tarnctl" set "tarn/$name" $members || fail "$name is not set"
done <<<"$others"
sqlite3 "$store" "UPDATE Config SET Success = 0, CreationTime = '2020-01-02 03:04:05' WHERE Identifier = 'b'"
expect 0 "" "" export --all-parts --reveal -o "$doc"
expect 0 "" "" export --all-parts --reveal -o "$yaml"
expect 0 "=$(cat "$doc")" "" export --all-parts --reveal
"$tarnctl" --yaml export --all-parts --reveal | cmp -s - "$yaml" || fail "YAML on standard output is not the YAML of a file"
"$tarnctl" --json export --all-parts --reveal -o "$work/json.yaml"
cmp -s "$doc" "$work/json.yaml" || fail "--json does not count where the file's name says YAML"
[ "$(stat -c %a "$doc" "$yaml" | sort -u)" = 600 ] || fail "a document can be read by others"
for file in "$doc" "$yaml"; do
  TARN_HOST_ROOT=$work/other new_host
  other=$work/other/etc/kestrel/configstore/current-store-1
  expect 0 "created $nics/a" "=tarnctl: changed: 22, unchanged: 0" --root "$work/other" import --replace-all "$file"
  diff <(rows "$store") <(rows "$other") >&2 || fail "the rows of $file are not those of the host"
  "$tarnctl" --root "$work/other" export --all-parts --reveal | cmp -s - "$doc" || fail "$file does not come back as it was"
  expect 0 "" "=tarnctl: changed: 0, unchanged: 22" --root "$work/other" import --replace-all "$file"
  rm -r "$work/other"
done
while read -r name members; do
  "$tarnctl" delete "tarn/$name"
done <<<"$others"
sqlite3 "$store" "UPDATE Config SET Success = 1"
"$tarnctl" next-boot reset $options 2>/dev/null
"$tarnctl" next-boot reset test/tool/drivers 2>/dev/null

# --- what a document leaves out is told, and a mask is never stored
expect 0 '"password":"***"' "" export test
"$tarnctl" export test >"$doc"
expect 0 "" "=tarnctl: changed: 0, unchanged: 4" import - <"$doc"
expect 0 "=hush" "" get --reveal $guarded password
"$tarnctl" delete $guarded
refused 4 "/config/test/tool/guarded/password: " import "$doc"
sqlite3 "$store" "UPDATE Config SET Success = 0 WHERE Identifier = 'b'"
expect 0 "?" "=tarnctl: left out of the document: 1 object $nics/b: no boot has confirmed what the user set of it" export $nics
"$tarnctl" schema remove --force $resolver
expect 3 "?" "resolver. (--skip-unknown leaves such objects out)" export -o "$doc"
expect 0 "?" "\"details\":[{\"field\":\"$resolver\",\"error\":\"its type is not installed\"},{\"field\":\"$nics/b\"" --json export --skip-unknown
expect 1 "?" "not everything was compared $resolver: its type is not installed" diff $resolver --with staged
"$tarnctl" schema install "$types" >/dev/null
sqlite3 "$store" "UPDATE Config SET Success = 1"

# --- a file is written as a whole, or stays as it was
old() { echo old >"$doc"; }
is_old() { [ "$(cat "$doc" "$work"/.tarnctl* 2>/dev/null)" = old ] || fail "$1 leaves something else than the old file"; }
old
chmod 644 "$doc"
ln -sf doc.json "$work/link"
expect 0 "" "" export -o "$work/link"
[ "$(stat -c %F "$work/link") $(stat -c %a "$doc")" = "symbolic link 600" ] || fail "a link does not stay one"
grep -q format "$doc" || fail "a link is not followed"
ln -sf absent "$work/loose"
for target in /dev/null "$work" "$work/loose" "$work/absent/x" "$doc/x"; do
  expect 1 "" "cannot write $target: " export -o "$target"
done
[ -c /dev/null ] || fail "/dev/null was replaced"
python3 - >"$work/many.json" <<'T'
import json
print(json.dumps({"format": 1, "config": {"tarn": {"network": {"interfaces": [{"device": "n%05d" % i, "mtu": 1500} for i in range(20000)]}}}}))
T
expect 0 "?" "=tarnctl: changed: 20000, unchanged: 0" import "$work/many.json"
old
(failures=0 && ulimit -f 50 && expect 1 "" "=tarnctl: cannot write $doc: File too large" export -o "$doc" && exit "$failures") || fail "a full disk"
is_old "a full disk"
# interrupted as soon as the new file is there, which takes several attempts where the export is done before
set -m # background jobs with SIGINT as usual
for signal in TERM:143 INT:130; do
  for ((attempt = 0, code = 0; attempt < 50 && code == 0; ++attempt)); do
    old
    "$tarnctl" --yaml export -o "$doc" 2>/dev/null &
    until compgen -G "$work/.tarnctl-*" >/dev/null || ! kill -0 $! 2>/dev/null; do :; done
    kill -s "${signal%:*}" $! 2>/dev/null
    wait $! 2>/dev/null
    code=$?
  done
  [ "$code" = "${signal#*:}" ] || fail "SIG${signal%:*} ends an export with $code"
  is_old "SIG${signal%:*}"
done
set +m
# an import that is killed has written all or nothing
for delay in 0.01 0.03 0.06 0.1 0.15 0.2; do
  sqlite3 "$store" "UPDATE Config SET UserValue = json_set(UserValue, '$.mtu', 1400) WHERE Name = 'interfaces'"
  timeout -s TERM $delay "$tarnctl" apply "$work/many.json" >/dev/null 2>&1
  [ "$(sqlite3 "$store" "SELECT count(DISTINCT json_extract(UserValue, '$.mtu')) FROM Config WHERE Identifier LIKE 'n0%'")" = 1 ] ||
    fail "an apply that was killed after $delay s has written a part"
done
"$tarnctl" delete $nics --all-instances 2>/dev/null

# --- import: all of it or nothing, every finding with its place, and a check says what would come of it
network '"interfaces":[{"device":"a","mtu":1500,"enabled":true},{"device":"b","mtu":1500}],"resolver":{"servers":["10.0.0.9"]}' >"$doc"
plan="created $nics/a created $nics/b replaced $resolver"
before=$(dump)
expect 0 "=$plan" "=tarnctl: nothing was written; to change: 3, unchanged: 0" import --check "$doc"
expect 0 "[{\"object\":\"$nics/a\",\"outcome\":\"created\"}," "" import --check --json "$doc"
unchanged "a check"
expect 0 "=$plan" "=tarnctl: changed: 3, unchanged: 0" import - <"$doc"
expect 0 "" "=tarnctl: changed: 0, unchanged: 3" import "$doc"
cat >"$yaml" <<'T'
format: 1
config:
  tarn:
    network:
      interfaces:
      - device: a
        mtu: ~
      resolver: {timeout: 7}
T
expect 0 "=replaced $nics/a replaced $resolver" "unchanged: 0" import "$yaml"
expect 0 '={"device":"a","enabled":true}' "" get $nics/a
expect 4 "/config/tarn/network/interfaces/0/mtu: line 7: " "=tarnctl: 2 findings" import --replace --check "$yaml"
expect 4 '"outcome":"refused","errors":[{"field":"/config/tarn/network/interfaces/0/mtu","error":"line7:' "" --json import --replace --check "$yaml"
told="/config/tarn/network/interfaces/0/mtu: line 7: expected an integer, found null /config/tarn/network/resolver: line 8: member \"servers\" is required"
refused 4 "=tarnctl: the document is refused $told" import --replace "$yaml"
network '"resolver":{"servers":["10.0.0.2"]}' >"$doc"
expect 0 "=replaced $resolver removed $nics/a removed $nics/b removed $options removed test/tool/branches/NO removed test/tool/shapes/~1 removed test/tool/values" "?" import --replace-all --check "$doc"
echo 'format: 1: 2' >"$yaml"
refused 4 "tarnctl: the file holds no document /: line 1, column 10: " import "$yaml"
truncate -s 300M "$work/large.json"
refused 4 "large.json is larger than 268435456 bytes" import "$work/large.json"
refused 4 "standard input is larger than 20 bytes" apply --limit 20 - <"$doc"
mkfifo "$work/pipe.json"
for file in "$work/pipe.json" /dev/zero /dev/tty "$work"; do
  refused 1 "cannot read $file: " apply "$file" </dev/null
done

# --- apply: what differs and nothing else
expect 0 "=replaced $resolver" "?" apply "$doc"
before=$(dump)
expect 0 "" "=tarnctl: changed: 0, unchanged: 1" apply "$doc"
unchanged "a second apply"
network '"interfaces":[{"device":"b","mtu":1600}]' >"$doc"
expect 0 "=replaced $nics/b removed $nics/a" "nothing was written" apply --prune --check "$doc"
unchanged "a dry run"
expect 0 "=replaced $nics/b removed $nics/a" "?" apply --prune "$doc"
expect 0 "10.0.0.2" "" get $resolver
echo '{"format":1,"config":{"tarn":{"tkernel":{"options":{"maximumCpus":8}}}}}' >"$work/kernel.json"
expect 0 "=staged $options" "?" apply --next-boot "$work/kernel.json"
expect 0 "=8" "" next-boot get $options maximumCpus

# --- what differs, for people and programs
expect 0 "" "" diff --with "$doc"
expect 0 "=[]" "" --json diff --with "$doc"
expect 5 "?" "" diff --complete --with "$doc"
"$tarnctl" update $nics/b mtu=9000 enabled=true
network '"interfaces":[{"device":"b","mtu":1600},{"device":"c","mtu":1300}]' >"$doc"
expect 5 "=$nics/b ~ /mtu: 9000 -> 1600 (user) - /enabled: true (user) $nics/c (missing) + /mtu: 1300 (user)" "" diff --with "$doc"
expect 5 "=$nics/c (missing) + /mtu: 1300 (user)" "" diff $nics/c --with "$doc"
expect 5 "~ /mtu: 9000 -> 1500 (user)" "" diff $nics/b --with defaults
expect 5 "=$nics/b (extra) - /mtu: 9000 (user) - /enabled: true (user)" "" diff $nics/b --with shipped
(failures=0 && cd "$work" && cp doc.json staged && expect 5 "$nics/c (missing)" "" diff $nics --with ./staged && exit "$failures") || fail "a file named as a state"
TARN_HOST_ROOT=$work/other new_host
"$tarnctl" --root "$work/other" set $guarded --secret password <<<other
"$tarnctl" set $guarded --secret password <<<own
expect 5 "=$guarded ~ /password: \"***\" -> \"***\" (user)" "" diff test/tool/guarded --with "root:$work/other"
expect 5 "~ /password: \"own\" -> \"other\" (user)" "" diff test --reveal --with "root:$work/other"
expect 1 "" "under $work/absent: " diff --with "root:$work/absent"

# elements are named by their ids, members by pointers, and nothing moves a terminal's cursor
shape=test/tool/shapes/~1
"$tarnctl" export $shape -o "$yaml"
expect 0 "" "" diff --with "$yaml"
"$tarnctl" update $shape - <<<'{"parts":[{"name":"2","n":"\u009b2J"}],"seen":{"at":"later"},"tuple":[{"t":2}]}'
expect 5 '/parts/2/n: "\xc2\x9b2J" (user)' "" diff --with "$yaml"
expect 5 '~ /tuple: [{"t":2}] -> [{"t":[1e+300]},2] (user)' "" diff --with "$yaml"
expect 5 "- object: \"$shape\" kind: changed" "" --yaml diff --with "$yaml"

# --- the example of docs/tool.md, whose remarks say what is printed
export R=$work/readme HOME=$work PATH=${tarnctl%/*}:$PATH
export GIT_AUTHOR_NAME=a GIT_AUTHOR_EMAIL=a@example GIT_COMMITTER_NAME=a GIT_COMMITTER_EMAIL=a@example
TARN_HOST_ROOT=$R new_host
"$tarnctl" --root "$R" set $resolver 'servers=["10.0.0.1"]' timeout=9
command -v git >/dev/null || alias git=: # no part of what is tested
shopt -s expand_aliases
remarks=0
# shellcheck disable=SC2016
while IFS='#' read -r line remark; do
  eval "$line" >"$work/out" 2>&1
  case $line in
    tarnctl*apply* | tarnctl*diff*)
      remarks=$((remarks + 1))
      matches "$work/out" "${remark:?}" || fail "docs/tool.md: $line does not print$remark"
      ;;
  esac
done < <(sed -n '/^## Keep a host/,/^## Changes/{/^```sh/,/^```$/{/^```/!p}}' "$here/../../docs/tool.md")
[ "$remarks" -ge 6 ] || fail "the page's example was not found"
cd "$here" || exit 1

# --- on a terminal
at_terminal() { TERM=xterm script -qec "$1" /dev/null 2>&1; }
[[ $(at_terminal "'$tarnctl' diff $nics/c --with '$doc'") == *$'\033[32m/mtu\033[0m'*$'\033[32m1300\033[0m'* ]] || fail "there are no colours"
[[ $(NO_COLOR=1 at_terminal "'$tarnctl' diff $nics/c --with '$doc'") != *$'\033'* ]] || fail "there are colours that nobody wants"
[[ $(at_terminal "(sleep 1.5; cat '$doc') | '$tarnctl' import --check -") == *"tarnctl: importing standard input, 1 s"$'\r\033[K'* ]] || fail "long work does not show"

finish
