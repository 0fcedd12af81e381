#!/usr/bin/env bash
# YAML files and YAML output, end to end in a temporary root: yaml_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

values=test/tool/values
resolver=tarn/network/resolver
nic=tarn/network/interfaces/nic0
file=$work/data.yaml
yaml() { cat >"$file"; }

"$tarnctl" init >/dev/null
"$tarnctl" schema install "$types" "$here/types" >/dev/null

# --- a scalar is what its member takes, whichever verb reads the file
yaml <<'T'
text: NO       # no boolean
whole: 0x10
either: 1.0
level: 1
list: [1, 2]
T
expect 0 "" "" set $values "$file"
expect 0 '={"text":"NO","whole":16,"either":"1.0","level":"1","list":[1,2]}' "" get $values
expect 4 "" "line 1, column 2: Invalid value" set $values - <"$file"
yaml <<<$'text: ~\nwhole: 17\nlist:'
expect 0 "" "" update $values "$file"
expect 0 '={"whole":17,"either":"1.0","level":"1"}' "" get $values

# --- what is wrong is told with its line
yaml <<'T'
text: x

whole: 101
map:
  inner: on
  on: yes
T
expect 4 "" "/map/on: line 6: " set $values "$file"
expect 4 "/whole: line 3: " "=tarnctl: 2 findings" validate $values "$file"
expect 4 '{"field":"/whole","error":"line3:' "" --json set --check $values "$file"
expect 4 '-field:"/whole"error:"line3:' "" --yaml validate $values "$file"
yaml <<<$'enabled: true\naddresses:\n- {id: a, family: ipv4, address: 10.0.0.1, prefixLength: 24}\n- {}\n'
expect 0 "" "line 4: /addresses/1 names nothing" set $nic "$file"
yaml <<<$'text: x\ntext: y'
refused 4 "/: line 2, column 1: member \"text\" is named twice" set $values "$file"
yaml <<<$'hyperthreading: false\nmaximumCpus: many'
refused 4 "/maximumCpus: line 2: " next-boot set tarn/tkernel/options "$file"
truncate -s 257M "$file"
refused 4 "is larger than 268435456 bytes" set $values "$file"

# --- output
expect 0 "" "" set $resolver 'servers=["10.0.0.1"]' timeout=9 lease.server=10.0.0.7
"$tarnctl" --yaml get $resolver >"$file"
diff "$file" - <<'T' || fail "get does not print YAML"
lease:
  server: "10.0.0.7"
servers:
- "10.0.0.1"
timeout: 9
T
expect 0 "" "" set $values text=on
expect 0 '=on' "" get $values text
expect 0 "-object:tarn/network/interfaces/nic0" "" --yaml list tarn/network/interfaces
expect 2 "" "excludes" --json --yaml list

finish
