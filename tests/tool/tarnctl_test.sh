#!/usr/bin/env bash
# Drives tarnctl end to end in a temporary root: tarnctl_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

tree() { (cd "$TARN_HOST_ROOT" && find . | sort); }
resolver=tarn/network/resolver
switches=tarn/network/switches
switch=$switches/edge/0
values=test/tool/values

# --- the command line itself
expect 0 "=tarnctl1.0.0" "" --version
for verb in "" init get set update delete validate list revision export import apply diff kv "kv get" "kv set" schema \
  "schema install" "schema check" "schema list" "schema show" "schema remove" watch next-boot "next-boot get" "next-boot set" \
  "next-boot delete" "next-boot reset" "next-boot list" boot "boot status" "boot info" "boot apply" "boot accept" "boot reject" \
  kernel-options "kernel-options get" "kernel-options set"; do
  # shellcheck disable=SC2086
  expect 0 "Usage: tarnctl $verb" "" $verb --help
done
for usage in "" "get" "nonsense" "get a/" "get a//c" "get a/b/c/" "get a/b/c d..e" "list /" "schema" "kv get" \
  "schema show a/b/c/d" "schema install" "set a/b/c" "revision" "--log 9 list" "list --nonsense" "update a/b/c" "delete a/b" "validate a/b/c" \
  "next-boot" "next-boot get a/b" "next-boot get a/b/c d..e" "next-boot get a/b/c/d --all-instances" "next-boot set a/b/c" "next-boot delete" \
  "next-boot reset a/b" "next-boot list /" "boot" "boot apply it" "boot accept" "boot reject a/b" "boot accept --all a/b/c" "kernel-options" \
  "kernel-options get d..e" "kernel-options set"; do
  # shellcheck disable=SC2086
  expect 2 "" "?" $usage
done
expect 2 "" "--root takes" --root "" list
# what was meant
expect 2 "" '=tarnctl: there is no verb "next-boot sett"; did you mean "set"? (see --help)' --root=/ next-boot sett x
expect 2 "" '=tarnctl: there is no option "--jsn"; did you mean "--json"? (see --help)' get --jsn=1 x
expect 2 "" "tarnctl help VERB" # the start of a session
expect 1 "" "/nowhere/etc/kestrel/configstore/current-store-1: there is no such" --root /nowhere list
expect 2 "" '={"code":2000,"message":"\"a/b\" is not of the form COMPONENT/GROUP/KEY[/INSTANCE]","details":[]}' --json revision a/b

# --- no store, whether it never was or was lost: every verb says so, and none makes one
# $1: the exit code of `schema check`, which needs no host; a host that has lost its store says so all the same.
without_store() {
  local before
  before=$(tree)
  for verb in "get $resolver" "get tarn" "get $resolver --during-boot" "get $switches --all-instances" "set $resolver servers=[]" "update $resolver timeout=9" \
    "delete $resolver" "delete $switches --where ports=8" "validate $resolver -" "list" "revision $resolver" "kv get K" "kv set K V" \
    "schema list" "schema show $resolver" "schema install $types" "schema remove $resolver" "next-boot get $resolver" \
    "next-boot set $resolver timeout=9" "next-boot delete $switches --all-instances" "next-boot reset $resolver" "next-boot list" "boot status" \
    "boot info" "boot apply" "boot accept --all" "boot reject $resolver" "kernel-options get" "kernel-options set maximumCpus=9"; do
    # shellcheck disable=SC2086
    expect 1 "" "tarnctl init" $verb
  done
  expect "$1" "$([ "$1" = 0 ] && echo valid)" "$([ "$1" = 0 ] || echo tarnctl init)" schema check "$types"
  if [ "$(tree)" != "$before" ]; then
    fail "files came back after the store was lost"
  fi
}
without_store 0
expect 0 "\"store\":\"$stores/current-store-1\"" "" init
made=$(stat -c '%n %a %i' "$stores"/*-store-1)
expect 0 '"created":[]' "current-store-1 exists and is left as it is" init
[ "$made" = "$(stat -c '%n %a %i' "$stores"/*-store-1)" ] || fail "init changed an existing store"
expect 0 "=[]" "" list
expect 0 "=[]" "" schema list

# --- types
expect 0 '"type":"tarn/network/resolver","version":"1.0","outcome":"valid"' "" schema install --check "$types"
expect 0 '"outcome":"installed"' "" schema install "$types" "$here/types/values.json"
expect 0 '"outcome":"unchanged"' "" schema install "$types"
expect 0 '{"type":"tarn/network/switches","version":"3.1","instances":true,"flags":["bootAccessible"]}' "" schema list
expect 0 '{"component":"tarn","group":"network","key":"resolver","version":"1.0"' "" schema show $resolver
sed 's/"integer"/"integral"/' "$types/network-resolver.json" >"$work/bad.json"
bad=$work/bad.json#/schema/properties/timeout
expect 4 "$bad" "=tarnctl: 1 finding" schema check "$work/bad.json" "$types/power-policy.json"
expect 4 "[{\"field\":\"$bad" "" --json schema check "$work/bad.json"
expect 4 "" "1 of 2 type files cannot be taken; nothing was installed" schema install "$work/bad.json" "$types/power-policy.json"
expect 4 "" "\"details\":[{\"field\":\"$bad" --json schema install "$work/bad.json"
expect 1 "" "absent.json" schema install "$work/absent.json"
sed 's/"1.0"/"0.9"/; s/"maximum": 60/"maximum": 60, "maxLength": 3/' "$types/network-resolver.json" >"$work/odd.json"
odd="=tarnctl: 1 warning $work/odd.json#/schema/properties/timeout/maxLength: changes nothing: it is about a text, and the type is an integer"
expect 0 '"outcome":"valid"' "$odd" schema check "$work/odd.json"
expect 0 '"outcome":"downgraded"' "$odd" schema install --force "$work/odd.json"
expect 0 '"outcome":"upgraded"' "" schema install "$types"

# --- objects
for verb in get revision; do
  expect 3 "" "no object $resolver is stored" $verb $resolver
  expect 3 "" "tarn" $verb tarn/no/type
  expect 3 "" "key reslover. Did you mean $resolver?" $verb tarn/netwrok/reslover
done
expect 0 "" "" set $resolver 'servers=["10.0.0.1"]' timeout=9 lease.server=10.0.0.7
expect 0 '={"lease":{"server":"10.0.0.7"},"servers":["10.0.0.1"],"timeout":9}' "" get $resolver
expect 0 "=10.0.0.7" "" get $resolver lease.server
expect 0 '="10.0.0.7"' "" get $resolver lease.server --json
expect 0 '=["10.0.0.1"]' "" get $resolver servers
first=$("$tarnctl" revision $resolver)
printf '{"servers": ["10.0.0.2"]}' >"$work/data"
expect 0 "" "" set $resolver "$work/data"
expect 0 "=$((first + 1))" "" revision $resolver
expect 0 '={"servers":["10.0.0.2"]}' "" get $resolver
expect 0 "" "" set $resolver - <"$work/data"
[ "$("$tarnctl" get $resolver servers)" = $'[\n  "10.0.0.2"\n]' ] || fail "JSON is not indented by two blanks"

# refused data, and data that cannot be read, change nothing
expect 4 "" "/timeout:" set $resolver 'servers=["10.0.0.3"]' timeout=99
expect 4 "" '{"code":1089,"message":' --json set $resolver 'servers=["nowhere"]'
expect 4 "" "nothing was written" set $values 'list=[]'
while IFS='|' read -r data reason; do
  # shellcheck disable=SC2059
  printf "$data" >"$work/refused"
  expect 4 "" "$reason" set $resolver - <"$work/refused"
done <<'T'
{"servers": [}|line 1, column 14
["10.0.0.1"]|is no JSON object
{"servers":["10.0.0.1"]}\0|NUL
T
expect 1 "" "cannot read $work/absent: No such file" set $resolver "$work/absent"
expect 1 "" '"code":1081' --json set $resolver "$work"
expect 1 "" "standard input" set $resolver - <&-
expect 0 "=$((first + 2))" "" revision $resolver

# --- everything that is wrong, without writing
expect 0 "" "" set $values flag=true
before=$(sqlite3 "$stores/current-store-1" .dump)
while IFS='|' read -r object data places; do
  count=$(wc -w <<<"$places")
  code=4 told="=tarnctl: $count finding$([ "$count" = 1 ] || echo s)"
  [ "$count" -gt 0 ] || code=0 told=
  expect $code "?" "$told" validate "$object" - <<<"$data"
  [ "$(cut -d: -f1 "$work/out" | sort | paste -sd ' ')" = "$places" ] || fail "the findings on $data are not at $places"
  [ "$code" = 0 ] || [ "$places" = / ] || diff <("$tarnctl" set "$object" - <<<"$data" 2>&1 | grep '^  /') <(sed 's/^/  /' "$work/out") ||
    fail "set says something else of $data"
  expect $code "=$(cat "$work/out")" "$told" set --check "$object" - <<<"$data"
done <<T
$values|{"text":"x","word":"never"}|
$values|{"text":5,"whole":101,"list":[1,"x"],"map":{"on":1},"level":"3"}|/level /list/1 /map/on /text /whole
$resolver|{"servers":["10.0.0.1"],|/
$resolver|{"timeout":5}|/
$values|{"list":[]}|/
$switch|{"name":"other","ports":1}|/name /ports
tarn/network/switches|{"ports":32}|/
T
[ "$(sqlite3 "$stores/current-store-1" .dump)" = "$before" ] || fail "refused data or validation changed the store"
expect 4 '=[{"field":"/timeout","error":"60 is the largest value allowed, found 99"}]' "" --json validate $resolver - <<<'{"servers":["10.0.0.1"],"timeout":99}'

# a narrower type names the stored objects that it no longer allows, and takes their place only by force
sed 's/"1.0"/"1.1"/; s/"maximum": 60/"maximum": 6/' "$types/network-resolver.json" >"$work/narrow.json"
expect 0 "" "" set $resolver 'servers=["10.0.0.2"]' timeout=9
expect 4 "" "stored objects no longer fit: --force installs all the same$resolver#/timeout:" schema install --check "$work/narrow.json"
expect 0 '"outcome":"upgraded"' "$resolver#/timeout:" schema install --force "$work/narrow.json"
expect 0 '"outcome":"downgraded"' "" schema install --force "$types/network-resolver.json"

# instances
expect 0 "" "" set $switch ports=64 'portGroups=[{"name":"Guests","vlan":7}]'
expect 0 '={"name":"edge/0","ports":64,"portGroups":[{"name":"Guests","vlan":7}]}' "" get $switch

# --- a value takes the type that the schema gives its member
while IFS='|' read -r argument wanted; do
  expect 0 "" "" set $values "$argument"
  expect 0 "=$wanted" "" get $values
done <<'T'
text=5|{"text":"5"}
text=a=b|{"text":"a=b"}
whole=-9223372036854775808|{"whole":-9223372036854775808}
fraction=0e999|{"fraction":0.0}
list=[1, 2]|{"list":[1,2]}
map.on=true|{"map":{"on":true}}
either=12|{"either":12}
anything=plain words|{"anything":"plain words"}
level=1|{"level":"1"}
deep.leaf=4|{"deep":{"leaf":4}}
T
while IFS='|' read -r argument wanted; do
  expect 4 "" "$wanted" set $values "$argument"
done <<'T'
whole=1.5|"whole" takes integer, not "1.5"
whole=99999999999999999999|an integer of more than 64 bits
either=4e308|line 1, column 1: a number that is too large
anything=[{"a":1,"a":2}]|line 1, column 12: member "a" is named twice
list.0=1|objects only
whole=101|/whole:
T
expect 4 "" '{"code":1030,"message":"the member \"whole\" takes integer, not \"x\"","details":[{"field":"/whole","error":"expected integer"}]}' \
  --json set $values whole=x
expect 2 "" "given twice" set $values whole=1 whole=2
expect 2 "" "given as a whole" set $values anything=1 anything.a=2
expect 4 "" "is not UTF-8" set $values text=$'\xff'
expect 2 "" "MEMBER=VALUE" set $values whole=1 "$work/data"
expect 0 "" "" set $values text=x
expect 0 "=3" "" get $values deep.leaf
expect 3 "" 'no member "whole"' get $values whole
expect 3 "" 'no member "deep.laef"; did you mean "leaf"?' get $values deep.laef

# what would move a terminal's cursor is never shown as it is
for shown in "set $values te\033xt=1" "set $values level=\033[2J" "get $values a\033" "get tarn/\033/type" "--log 4 get $switches/\033"; do
  # shellcheck disable=SC2059,SC2086
  "$tarnctl" $(printf -- "$shown") >"$work/out" 2>"$work/err"
  checks=$((checks + 1))
  [ -s "$work/err" ] && ! grep -q $'\033' "$work/err" || fail "$shown shows an escape"
done

# --- looking around
expect 0 "?" "" list
objects=$(grep -o '"object": "[^"]*"' "$work/out")
[ "$objects" = $'"object": "tarn/network/resolver"\n"object": "tarn/network/switches/edge/0"\n"object": "test/tool/values"' ] ||
  fail "list is not the sorted stored objects"
expect 0 "" "" kv set list "-5 init"
expect 0 "=-5init" "" kv get list
for entry in "IS_BOOT TRUE" "NOTIFY_KEELD 1" "BOOT_MODE -1" "BOOT_INFO []" 'BOOT_INFO {"type":"x"}'; do
  # shellcheck disable=SC2086
  expect 4 "" "means nothing: expected" kv set $entry
done
expect 0 "" "" kv set --force BOOT_MODE x
expect 0 '={"BOOT_INFO":"","BOOT_MODE":"x","IS_BOOT":"","NOTIFY_KEELD":""}' "" kv list
expect 0 "" "" kv delete BOOT_MODE
expect 0 "=" "" kv get BOOT_MODE
expect 0 "=x" "<4>" --log 4 get $values text
expect 1 "" "values: 1." schema remove $values
expect 0 "" "" schema remove --force $values
expect 0 "" "" set tarn/tkernel/options secureBoot=true

# --- a value that the shell took the quotes from, and others that are no JSON either
hint="single ones around the value: servers='...'"
for value in '[10.0.0.1]' '[a b,fe80::1, [{x:y}]]' '{a:[b]}'; do
  refused 4 "$hint" set $resolver "servers=$value"
done
for value in '[1,' '["a"b]' '[1 "a"]' 'a' '[a]]' '{a}' '[,a]' "$(printf '[%.0s' {1..300})"; do
  refused 4 "/servers: expected array" set $resolver "servers=$value"
  grep -q "single ones" "$work/err" && fail "$value never had quotes"
done
refused 2 "takes single quotes around it" set $resolver servers=[10.0.0.1, 10.0.0.2]

# --- type files, all of them, and all that is wrong
printf '{"component":1,"extra":2}' >"$work/two.json"
echo '{' >"$work/broken.json"
expect 4 "?" "=tarnctl: 8 findings" schema check "$work/none.json" "$work/two.json" "$work/broken.json"

# --- output that goes nowhere
"$tarnctl" list 2>"$work/err" >&-
verify "list with standard output closed" $? 1 "?" "Bad file descriptor"
mkfifo "$work/pipe"
exec 3<>"$work/pipe" 4>"$work/pipe" 3<&-
"$tarnctl" list >&4 2>"$work/err"
verify "list into a closed pipe" $? 141 "?" ""
(trap "" PIPE && exec "$tarnctl" list) >&4 2>"$work/err"
verify "list into a closed pipe whose signal is ignored" $? 1 "?" "Broken pipe"
exec 4>&-

# --- busy, permission, corrupt, lost
mkfifo "$work/statements"
exec 5<>"$work/statements"
sqlite3 "$stores/current-store-1" <"$work/statements" 5>&- &
printf 'BEGIN IMMEDIATE;\n.shell touch %s\n' "$work/locked" >&5
for _ in {1..200}; do
  [ -e "$work/locked" ] && break
  sleep 0.05
done
for verb in "set $resolver servers=[\"10.0.0.9\"]" "delete $resolver"; do
  # shellcheck disable=SC2086
  expect 7 "" "tarnctl: $resolver: " $verb
  [[ $(<"$work/err") =~ "process "[0-9]+" (sqlite3) has it locked for writing: wait" ]] || fail "nobody is told who writes"
  grep -E "INSERT|DELETE|UPDATE" "$work/err" && fail "people are told SQL"
done
expect 7 "" "current-store-1" boot apply
expect 0 '"canStage":true' "" boot status
expect 0 "=[\"10.0.0.2\"]" "" get $resolver servers
exec 5>&-
wait
if [ "$(id -u)" -eq 0 ]; then
  other() { setpriv --reuid=65534 --regid=65534 --clear-groups "$@"; }
else
  chmod 000 "$stores/current-store-1"
  other() { "$@"; }
fi
if other test -x "$tarnctl" -a -r "$types/power-policy.json"; then
  other "$tarnctl" get $resolver >"$work/out" 2>"$work/err"
  verify "get of a store of another user" $? 6 "" "current-store-1"
  chmod 640 "$stores"/*
  "$tarnctl" list >/dev/null
  chmod 444 "$stores"/*
  for verb in "set tarn/power/policy profile=custom" "next-boot set tarn/tkernel/options maximumCpus=9" "boot apply" \
    "boot accept tarn/tkernel/options" "kernel-options set maximumCpus=9"; do
    # shellcheck disable=SC2086
    other "$tarnctl" $verb >"$work/out" 2>"$work/err"
    verify "$verb in a store of another user" $? 6 "" "current-store-1"
  done
  other "$tarnctl" boot status >"$work/out" 2>"$work/err"
  verify "boot status of a store that can only be read" $? 0 '"canStage":true' ""
fi
chmod 640 "$stores"/*
rm -f "$stores"/current-store-1-*
head -c 8192 /dev/zero | tr '\0' x >"$stores/current-store-1"
expect 8 "" "current-store-1" get $resolver
expect 8 "" "current-store-1" set $resolver 'servers=["10.0.0.9"]'
rm -f "$stores"/current-store-1*
without_store 1

finish
