#!/usr/bin/env bash
# The JSON Schema of whole documents: schema_export_test.sh TARNCTL TYPES
# shellcheck source-path=SCRIPTDIR source=support.sh
. "$(dirname "$0")/support.sh"

expect 1 "" "tarnctl init" schema export
"$tarnctl" init >/dev/null
expect 0 '"config":{"type":"object","properties":{},"additionalProperties":false}' "" schema export
"$tarnctl" schema install "$types" "$here/types" >/dev/null
expect 0 '"title":"Configuration of a host"' "" schema export
expect 0 '"description":"Beside a reference"' "" schema export
python3 "$here/schema_export_check.py" "$tarnctl" || fail "the exported schema is not what it should be"

finish
