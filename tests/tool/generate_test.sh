#!/usr/bin/env bash
# Drives `tarnctl schema generate-cpp`: generate_test.sh TARNCTL TYPES. What the headers are good for, and that the
# odd ones compile, is shown by the project of tests/consumer.
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

# A text that a header has to hold, exactly, somewhere in it; or, after "not", nowhere.
holds() {
  checks=$((checks + 1))
  if [ "$1" = not ]; then
    ! grep -qF -- "$2" "$work/header.h" || fail "the header holds: $2"
  else
    grep -qF -- "$1" "$work/header.h" || fail "the header does not hold: $1"
  fi
}

switches=$types/network-switches.json
without_a_host=(schema generate-cpp --from)

# --- from a file, where there is no store
expect 0 "namespaceTarnTypes::Tarn::Network{" "" "${without_a_host[@]}" "$switches"
expect 0 "namespaceA::B2{" "" "${without_a_host[@]}" "$switches" --namespace A::B2
for name in A::2 A: ::A A::::B "A B" "a;"; do
  expect 2 "" "is no name of a namespace" "${without_a_host[@]}" "$switches" --namespace "$name"
done
expect 2 "" "either a TYPE or --from FILE" schema generate-cpp
expect 1 "" "tarnctl init" schema generate-cpp tarn/network/switches
echo '{"component":"a","group":"b","key":"c","version":"1","schema":{"type":"wrong"}}' >"$work/bad.json"
expect 4 "" "/schema/type" "${without_a_host[@]}" "$work/bad.json"

# --- to a file, as a whole or not at all, for all to read
(umask 022 && expect 0 "" "" "${without_a_host[@]}" "$switches" --output "$work/header.h")
[ "$(stat -c %a "$work/header.h")" = 644 ] || fail "the header is not for all to read"
cp "$work/header.h" "$work/before.h"
expect 4 "" "is no type file" "${without_a_host[@]}" "$work/bad.json" --output "$work/header.h"
cmp -s "$work/header.h" "$work/before.h" || fail "a header was changed by a failure"
expect 1 "" "cannot write" "${without_a_host[@]}" "$switches" --output "$work/none/header.h"

# --- the same from the installed type
expect 0 "?" "" init
expect 0 "?" "?" schema install "$types" "$here/types/odd_names.json" "$here/types/shapes.json"
expect 0 "" "" schema generate-cpp tarn/network/switches --output "$work/header.h"
cmp -s "$work/header.h" "$work/before.h" || fail "the installed type has another header than its file"
expect 3 "" "Did you mean tarn/network/switches?" schema generate-cpp tarn/network/switchs

# --- the types of members, and what has no accessor
holds 'optional<::std::uint16_t> GetMtu()'
holds 'vector<::std::string>> GetUplinks()'
holds '/// How the switch tells its neighbours who it is.'
holds '/// Limits: minimum 1280, maximum 9216'
holds not 'SetName'
expect 0 "" "" schema generate-cpp std/2-class/type --output "$work/header.h"
holds 'optional<::std::uint8_t> Getxsnmp_2dport()'
holds 'optional<::std::uint32_t> Get4th()'
holds '/// Closes */ the comment, and \\.'
holds '/// - "either": integer or string'
holds '/// - members whose names match "^x*/"'
holds not '/// Default: "4.1"' # of a secret
expect 0 "" "" schema generate-cpp test/tool/shapes --output "$work/header.h"
holds '/// - "x": declared in a branch'
holds 'class Shapes_Extended'
holds 'optional<::std::int64_t> GetA()' # what "allOf" adds
finish
