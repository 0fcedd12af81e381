#!/usr/bin/env bash
# What is shown of secrets, and what is not taken back, end to end in a temporary root:
# secrets_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

vault=test/tool/vault
vaults=test/tool/vaults
staged=test/tool/staged
options=tarn/tkernel/options
data=$work/data.json
yaml=$work/data.yaml
mark=8675309 # part of every secret
seen='stood among the arguments, which every user may see'

# secrets as texts, numbers, objects and lists, by reference, in lists, with defaults, in each part of an object
# shellcheck disable=SC2016
properties='"properties":{
  "user":{"type":"string"},
  "password":{"type":"string","secret":true,"maxLength":20},
  "pin":{"$ref":"#/definitions/pin"},
  "keys":{"type":"array","items":{"type":"string","secret":true}},
  "accounts":{"type":"array","items":{"type":"object","properties":{
    "id":{"type":"string","instanceId":true},"key":{"type":"string","secret":true}}}},
  "token":{"type":"object","secret":true,"additionalProperties":true,"properties":{
    "list":{"type":"array","items":{"type":"object","properties":{"id":{"type":"string","instanceId":true}}}}}},
  "code":{"type":"string","secret":true,"default":"8675309-code"},
  "box":{"type":"object","default":{"inner":"8675309-box","open":1},"properties":{
    "inner":{"type":"string","secret":true},"open":{"type":"integer"}}},
  "master":{"type":"string","vital":true,"secret":true},
  "session":{"type":"string","cached":true,"secret":true}'
definitions='"definitions":{"pin":{"type":"integer","secret":true,"maximum":9000000}}'
type_file() { # COMPONENT GROUP KEY MORE-OF-THE-SCHEMA MORE-PROPERTIES DEFAULT
  echo "{\"component\":\"$1\",\"group\":\"$2\",\"key\":\"$3\",\"version\":\"9.0\",\"schema\":{\"type\":\"object\",$4$properties$5},$definitions},\"defaults\":[$6]}" \
    >"$work/types/$3.json"
}
mkdir "$work/types"
type_file test tool vault '"rebootRequired":true,' '' '{"instance":"","value":{"user":"shipped","password":"8675309-shipped"}}'
type_file test tool vaults '' ',"name":{"type":"string","instanceId":true}' '{"instance":"z","value":{"name":"z","pin":8675309}}'
type_file test tool staged '"rebootRequired":true,' ',"name":{"type":"string","instanceId":true}' ''
type_file tarn tkernel options '"rebootRequired":true,' '' ''
"$tarnctl" init >/dev/null
"$tarnctl" schema install "$work/types" >/dev/null

open='"user":"root","password":"8675309","pin":8675309,"keys":["8675309-a","8675309-b"],
  "accounts":[{"id":"x","key":"8675309"},{"id":"y"}],"token":{"8675309":[1]},"box":{"inner":"8675309","open":2}'
shown='"user":"root","password":"***","pin":"***","keys":["***","***"],
  "accounts":[{"id":"x","key":"***"},{"id":"y"}],"token":"***","box":{"inner":"***","open":2}'
echo "{$open}" >"$data"

# masked OUT REVEALED-OUT ARGUMENTS...: a call that shows no secret without --reveal, and them with it
masked() {
  local out=$1 revealed=$2 said=
  shift 2
  [[ $* == *--where* ]] && said=$seen
  expect 0 "$out" "$said" "$@"
  grep -q $mark "$work/out" && fail "tarnctl $* shows a secret"
  expect 0 "$revealed" "$said" "$@" --reveal
  grep -q $mark "$work/out" || fail "tarnctl $* --reveal shows no secret"
}

# --- an object, a member, a place, a group, instances, what boot sees, what is shipped
expect 0 "" "" set $vault "$data"
masked "={$shown}" "={$open}" get $vault
masked "={\"vault\":{$shown}}" "={\"vault\":{$open}}" get test/tool
masked '={"user":"shipped","password":"***"}' '={"user":"shipped","password":"8675309-shipped"}' get $vault --default
masked '="***"' "=8675309" --json get $vault pin
masked '=["***","***"]' '=["8675309-a","8675309-b"]' get $vault keys
masked "=***" '={"8675309":[1]}' get $vault token
masked "=***" "=8675309-b" get $vault --pointer /keys/1
masked "{$shown}" "{$open}" get $vault --pointer ''
masked 'accounts: - id: x key: "***"' 'key: "8675309"' --yaml get $vault
# what a default holds, and what lies in a secret, if anything does
masked "=***" "=8675309-code" get $vault code
for place in "token.$mark" token.nothing "--pointer /token/$mark/0" "--pointer /token/nothing"; do
  # shellcheck disable=SC2086
  expect 0 "=***" "" get $vault $place
done
expect 0 "" "" update $vault box=null token=null
masked '={"inner":"***","open":1}' '={"inner":"8675309-box","open":1}' get $vault box
masked "=***" "=8675309-box" get $vault --pointer /box/inner

for name in a b; do
  expect 0 "" "$seen" set $vaults/$name user=$name password=$mark-$name
done
a='={"name":"a","user":"a","password":"'
masked "[{\"name\":\"a\",\"user\":\"a\",\"password\":\"***\"}," "$mark-b" get $vaults --all-instances
masked "=[${a#=}***\"}]" "=[${a#=}$mark-a\"}]" get $vaults --where password=$mark-a

# --- what is staged, the kernel's options, and what waits to be accepted
expect 0 "" "" next-boot set $vault "$data"
masked "={$shown}" "={$open}" next-boot get $vault
expect 0 '"values":["user"]' "" next-boot list
grep -q $mark "$work/out" && fail "next-boot list shows a secret"
expect 0 "" "" kernel-options set "$data"
masked "={$shown}" "={$open}" kernel-options get
masked "={$shown}" "={$open}" boot desired $options
expect 0 "" "1 pending" boot reject $options

# --- what get showed is not taken for what it hides
"$tarnctl" get $vault >"$data"
"$tarnctl" --yaml get $vault >"$yaml"
"$tarnctl" get $vaults --all-instances >"$work/list.json"
said='"***" is what a secret is shown as: give the secret itself (get --reveal prints what is stored)'
for verb in set "set --user" update "next-boot set"; do
  # shellcheck disable=SC2086
  refused 4 "/password:$said/pin:$said/keys/0:$said/keys/1:$said/accounts/0/key:$said" $verb $vault "$data"
  # shellcheck disable=SC2086
  refused 4 "/password: line 2: $said" $verb $vault "$yaml"
  # shellcheck disable=SC2086
  refused 4 "/password:$said" $verb $vault password='***'
done
expect 4 "/password:$said" "5 findings" set $vault --check "$data"
expect 4 "=/0/password:$said/1/password:$said" "2 findings" set $vaults --all-instances --check "$work/list.json"
refused 4 "/1/password:$said" set $vaults --all-instances "$work/list.json"
expect 0 "" "$seen" set $vault user='***' 'box={"inner":"**"}'
"$tarnctl" get $vaults --all-instances --reveal >"$work/list.json"
expect 0 "" "2 instances" set $vaults --all-instances "$work/list.json"

# --- what is refused is not told
# untold CODE OUT ERR ARGUMENTS...
untold() {
  expect "$@"
  cat "$work/out" "$work/err" | grep -q $mark && fail "tarnctl ${*:4} tells a secret"
}
long=$mark-and-more-than-it-takes
echo "{\"password\":\"$long\",\"pin\":\"$mark\",\"token\":[\"$mark\"],\"keys\":[$mark]}" >"$data"
sed 's/[{}]//g; s/,"/\n"/g; s/":/": /g' "$data" >"$yaml"
findings='/password: expected a text of at most 20 characters, found *** /pin: expected an integer, found ***
  /token: expected an object, found *** /keys/0: expected a text, found ***'
for file in "$data" "$yaml"; do
  lined=$findings
  [ "$file" = "$yaml" ] && lined='/token: line 3: expected an object, found ***'
  untold 4 "$lined" "findings" set $vault --check "$file"
  for verb in "set $vault" "set $vault --user" "update $vault" "next-boot set $vault" "kernel-options set"; do
    # shellcheck disable=SC2086
    untold 4 "" "$lined" --log 4 $verb "$file"
  done
done
untold 4 "" 'the member "pin" takes integer, not ***' set $vault pin=x$mark
untold 4 "" "a member is named twice" set $vault "token={\"$mark\":1,\"$mark\":2}"
untold 0 "" "/token/list/0 names nothing, and was left out" set $vault 'token={"list":[{},{"id":"8675309"}]}'
expect 0 "" "$seen" set $vault --auto "token={\"$mark\":1}"
untold 4 "" "/token/***: cannot be taken away" update $vault "token={\"$mark\":null}"

# --- a secret stays out of the arguments
expect 0 "" "$seen; --secret password reads it" set $vault password=$mark
expect 0 "" "$seen; --secret password reads it" --log 4 update $vault password=$mark
grep -q "$mark" "$work/err" && fail "the warning tells the secret"
expect 0 "" "" update $vault user=x password=null
for verb in set "set --user" update "next-boot set" "kernel-options set"; do
  object=$vault
  [ "$verb" = "kernel-options set" ] && object=
  # shellcheck disable=SC2086
  expect 0 "" "" $verb $object --secret password user=root <<<"$mark-${verb:0:6}"
done
expect 0 "=$mark-update" "" get $vault password --reveal
expect 0 "=$mark-next-b" "" next-boot get $vault password --reveal
expect 0 "=$mark-kernel" "" kernel-options get password --reveal
# typed as any value is, null being a text; of several, a line each
expect 0 "" "" update $vault --secret pin --secret password user=a <<<$'8675309\nnull'
expect 0 '"password":"null","pin":8675309' "" get $vault --reveal
# a text of several lines
expect 0 "" "" update $vault --secret password < <(printf 'a\nb\n\n')
expect 0 "=$(printf 'a\nb\n')" "" get $vault password --reveal
untold 4 "" 'the member "pin" takes integer, not ***' update $vault --secret pin <<<"x$mark"
untold 4 "" 'the value of the member "password" is not UTF-8' update $vault --secret password < <(printf '8675309\xff')
expect 4 "/password:$said" "1 finding" set $vault --check --secret password <<<'***'
refused 2 "standard input gives 0 values for 1 members" set $vault --secret password </dev/null
refused 2 'the member "password" is given twice' set $vault password= --secret password <<<x
refused 2 "--secret goes with MEMBER=VALUE, not with a file" set $vault "$data" --secret password <<<x

# --- a terminal does not show it, and shows again what is typed, whatever happens
# typed TEXT COMMAND: what a terminal shows of a command that is given a text when it asks
typed() {
  local terminal asked
  coproc terminal { script -qefc "$2" /dev/null 2>&1; }
  IFS= read -r -d : -u "${terminal[0]}" asked
  printf '%b' "$1" >&"${terminal[1]}"
  printf '%s' "$asked:" && cat <&"${terminal[0]}"
}
shown=$(typed "$mark-typed\\n" "'$tarnctl' set $vault --secret password; stty -a")
[[ $shown == password:*' echo '* && $shown != *"$mark"* ]] || fail "a terminal shows a secret, or nothing any more: $shown"
expect 0 "=$mark-typed" "" get $vault password --reveal
shown=$(typed "$mark\\003" "trap : INT; '$tarnctl' set $vault --secret password; echo left \$?; stty -a")
[[ $shown == *'left 130'*' echo '* && $shown != *"$mark"* ]] || fail "a terminal stays blind after an interrupt: $shown"
expect 0 "=$mark-typed" "" get $vault password --reveal

finish
