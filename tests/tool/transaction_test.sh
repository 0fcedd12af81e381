#!/usr/bin/env bash
# Writes that come out as one, or not at all, and never over somebody else's change:
# transaction_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh disable=SC2016
. "$(dirname "$0")/support.sh"

edge=tarn/network/switches/edge

"$tarnctl" init >/dev/null
"$tarnctl" schema install "$types" >/dev/null
mkdir "$work/types" "$work/tmp"
echo '{"component":"test","group":"tool","key":"vault","version":"1.0","schema":{"type":"object","properties":{
  "user":{"type":"string"},"password":{"type":"string","secret":true,"maxLength":20},
  "master":{"type":"string","vital":true},
  "rules":{"type":"array","items":{"type":"object","generatedInstanceId":true,"properties":{
    "allow":{"type":"string"},"hits":{"type":"integer","cached":true}}}}}}}' >"$work/types/vault.json"
"$tarnctl" schema install "$work/types" >/dev/null
script=$work/script
cd "$work" || exit 1

# a transaction: comments, quotes, lines that are carried on, files; each line sees those before it
echo 'servers: [10.0.0.1]' >resolver.yaml
cat >"$script" <<END
# the switch
set $edge mtu=9000 portGroups='[{"name":"Storage","vlan":20},
  {"name":"Backup"}]'  --if-revision 0

update $edge --if-revision 1 \\
  "mtu"=1500
unset $edge portGroups/Backup
set $edge --auto ports=64
set tarn/network/resolver resolver.yaml
set test/tool/vault password=geheim user='it'\''s "a" \$x'
delete tarn/network/resolver
END
expect 0 "=$script:2:set$edge$script:5:update$edge$script:7:unset$edge$script:8:set$edge$script:9:settarn/network/resolver$script:10:settest/tool/vault$script:11:deletetarn/network/resolver" \
  '' transaction "$script"
expect 0 '={"name":"edge","ports":64,"mtu":1500,"portGroups":[{"name":"Storage","vlan":20}]}' '' get $edge
expect 0 "=it's \"a\" \$x" '' get test/tool/vault user
refused 3 'no object tarn/network/resolver is stored' get tarn/network/resolver
expect 0 '=[{"line":1,"verb":"update","object":"'$edge'","revision":5}]' '' transaction - --json <<<"update $edge mtu=1501"

# all that is wrong is told, each with its line; nothing is written, not even what would fit
cat >"$script" <<END
update $edge mtu=1502
update $edge mtu=90000 ports=-1
set $edge mtu=\$MTU
set $edge -
set $edge --all-instances resolver.yaml
set test/tool/vault password=geheim-und-viel-zu-lang
unset $edge mtuu
delete tarn/network/switches/lab
update $edge mtu=1503 --if-revision 4
frob $edge
update $edge mtu="1504
END
refused 4 "nothing was written: 10 lines are refused
  $script:2: /mtu: 9216 is the largest value allowed, found 90000
  $script:2: /ports: 8 is the smallest value allowed, found -1
  $script:3: \"\$\" means something to a shell: put it in single quotes
  $script:4: a line cannot take its data from standard input
  $script:5: there is no option \"--all-instances\" (see --help)
  $script:6: /password: expected a text of at most 20 characters, found ***
  $script:7: /mtuu: is not set; did you mean \"mtu\"?
  $script:8: no object tarn/network/switches/lab is stored
  $script:9: nothing was written: $edge has revision 6, not 4
  $script:10: there is no verb \"frob\" (see --help)
  $script:11: the quote of line 11 has no end" transaction "$script"
refused 5 'has revision 5, not 9' transaction - <<<"update $edge mtu=1502 --if-revision 9"
refused 4 'has no line that says what to write' transaction - <<<'# nothing'
printf 'update %s mtu=1\0' $edge >"$script"
refused 2 ':1: there is a NUL' transaction "$script"
printf 'update %s mtu=1501\r\n\r\n' $edge >"$script"
expect 0 '?' '' transaction "$script"
refused 1 'cannot read nowhere' transaction nowhere

# one revision of an object
for call in "set $edge mtu=1600" "update $edge mtu=1600" "unset $edge mtu" "reset $edge --to default" "delete $edge"; do
  # shellcheck disable=SC2086
  refused 5 'nothing was written: tarn/network/switches/edge has revision 6, not 4' $call --if-revision 4
done
refused 5 'is not stored' set tarn/network/resolver resolver.yaml --if-revision 1
expect 0 '' '' unset $edge mtu --if-revision 6
expect 0 '' '' reset $edge --to default --if-revision 7
expect 0 '' '' update $edge mtu=1600 --if-revision 8

# somebody else has the store, changes the object, and lets go
mkfifo release
sqlite3 "$store" <release &
exec 3>release
echo "BEGIN IMMEDIATE; UPDATE Config SET VitalValue = '{\"name\":\"edge\"}' WHERE Identifier = 'edge';" >&3
until [ -e taken ]; do echo '.shell touch taken' >&3 && sleep 0.05; done
"$tarnctl" --log 4 transaction - <<<"update $edge mtu=1700" >out 2>err &
waiting=$!
until grep -q GetState err; do sleep 0.05; done
sleep 0.3 # it has read the object, and waits
echo 'COMMIT;' >&3
exec 3>&-
wait $waiting
verify "a transaction over somebody else's change" $? 5 '' "nothing was written: somebody else was faster $edge: was changed meanwhile"
expect 0 1600 '' get $edge mtu
sqlite3 "$store" "UPDATE Config SET VitalValue = NULL WHERE Identifier = 'edge'"

# edit SCRIPT: what is done to the file "$1"
export TMPDIR=$work/tmp
edit() {
  printf 'file=$1\ncp "$file" "%s"\n%s\n' "$work/seen" "$1" >editor
  shift
  EDITOR="sh '$work/editor'" "$tarnctl" edit "$@" >out 2>err </dev/null
}
expect 0 '' '' set $edge --user mtu=1600 portGroups='[{"name":"Storage"},{"name":"Backup"}]'
edit 'sed -i -e s/1600/1700/ -e /Backup/d "$file"' $edge
verify 'an edit' $? 0 '' ''
grep -q ports seen && fail "what automatic configuration set is offered as the user's"
expect 0 '={"name":"edge","ports":64,"mtu":1700,"portGroups":[{"name":"Storage"}]}' '' get $edge
before=$("$tarnctl" revision $edge)
edit true $edge
verify 'an edit that changes nothing' $? 0 '' 'nothing was written: the text is as it was'
edit 'printf "mtu: 1700\nname: edge\nportGroups: [{name: Storage}]\n" >"$file"' $edge
verify 'an edit to the same data' $? 0 '' 'is that already'
edit ': >"$file"' $edge
verify 'an edit to nothing' $? 0 '' 'the text is empty'
edit 'exit 3' $edge
verify 'an editor that fails' $? 1 '' 'ended with status 3'
[ -z "$(ls tmp)" ] || fail 'an edit leaves something behind'
edit 'sed -i s/1700/99/ "$file"; echo "serial: x" >>"$file"' $edge
verify 'an edit that is refused' $? 4 '' "the text is kept in $work/tmp/"
matches err '/mtu: line 2: 1280 is the smallest' || fail 'a refused edit does not name the line'
grep -q 'mtu: 99' tmp/*/switches.yaml || fail 'the refused text is not kept'
grep -q '#!' tmp/*/switches.yaml && fail 'the kept text has remarks'
[ "$(stat -c %a tmp/*)" = 700 ] || fail 'others may read the kept text'
edit "sed -i s/edge/lab/ \"\$file\"" $edge --json
verify 'an edit of the id' $? 4 '' 'has to stay'
[ "$("$tarnctl" revision $edge)" = "$before" ] || fail 'a refused edit wrote something'
rm -rf tmp/*
edit "sed -i s/1700/1701/ \"\$file\"; '$tarnctl' update $edge --auto ports=65" $edge
verify 'an edit over a change' $? 5 '' "$edge was changed meanwhile; the text is kept in"
grep -q 'mtu: 1701' tmp/*/switches.yaml || fail 'the text of a lost race is not kept'
expect 0 1700 '' get $edge mtu
rm -rf tmp/*

# masks and generated ids stay; what is another part's is refused
expect 0 '' '' update test/tool/vault rules='[{"allow":"a","hits":5},{"allow":"b","hits":6}]' master=m
edit 'sed -i s/it/That/ "$file"' test/tool/vault
verify 'an edit beside a secret' $? 0 '' ''
grep -q 'password: "\*\*\*"' seen || fail 'a secret is shown'
expect 0 geheim '' get test/tool/vault password --reveal
expect 0 '=[{"hits":5,"allow":"a"},{"hits":6,"allow":"b"}]' '' get test/tool/vault rules
edit 'echo "master: x" >>"$file"' test/tool/vault
verify 'an edit of a vital member' $? 4 '' '/master: line 6: belongs to the vital part'
rm -rf tmp/*
edit 'sed -i "s/password: .*/password: \"***\"/" "$file"' test/tool/vault --reveal
verify 'an edit that reveals, and masks' $? 4 '' '/password: line 1: "***" is what a secret is shown as'
grep -q 'password: geheim' seen || fail 'a revealed secret is not shown'
rm -rf tmp/*
options=tarn/tkernel/options
expect 0 '' '' set $options maximumCpus=8
expect 0 '' '' kernel-options set maximumCpus=16
edit 'sed -i s/8/9/ "$file"' $options
verify 'an edit over a pending value' $? 0 '' 'what was pending for the next boot went with it'
edit true tarn/network/switches/nope
verify 'an edit of nothing' $? 3 '' 'no object tarn/network/switches/nope is stored'

# at a terminal, what is refused stands in the text, and can be tried again
cat >editor <<'END'
if grep -q '^#! /mtu: 1280 is the smallest' "$1"; then
  grep -A1 '^#! /mtu' "$1" | grep -q '^mtu: 99' || exit 9
  sed -i s/99/1800/ "$1"
else
  sed -i s/1700/99/ "$1"
fi
END
EDITOR="sh '$work/editor'" python3 - "$tarnctl" edit $edge >out 2>err <<'END'
import os, pty, sys
pid, terminal = pty.fork()
if pid == 0:
    os.execv(sys.argv[1], sys.argv[1:])
said = b""
try:
    while not said.endswith(b"[Y/n] "):
        said += os.read(terminal, 4096)
    os.write(terminal, b"y\n")
    while os.read(terminal, 4096):
        pass
except OSError:
    pass
sys.exit(os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]))
END
verify 'an edit that is tried again' $? 0 '' ''
expect 0 1800 '' get $edge mtu
[ -z "$(ls tmp)" ] || fail 'an edit at a terminal leaves something behind'
finish
