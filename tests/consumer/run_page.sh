#!/usr/bin/env bash
# Runs what a page of docs/ shows, in the order in which it shows it: the lines of its sh blocks as one script, its cpp
# blocks as one program (those marked "file" before main, all others in it), and what stands after "file: NAME" as that
# file. What first the script and then the program prints is what the output blocks say; JSON, as reports are, is left out.
# usage: run_page.sh PAGE PREFIX COMPILER DIRECTORY
set -euo pipefail
page=$1 prefix=$2 compiler=$3 work=$4

mkdir -p "$work"
cd "$work"
awk '
  /^<!-- file: .* -->$/ { name = $3; next }
  /^```/ && inside { inside = 0; next }
  /^```/ {
    inside = 1
    kind = substr($1, 4)
    target = name != "" ? name : kind == "sh" ? "script.sh" : kind == "cpp" ? ($2 == "file" ? "before.inc" : "main.inc") \
           : kind == "output" ? "output" : ""
    name = ""
    if (target == "") { print FILENAME ":" FNR ": nobody runs a block of this kind: " kind > "/dev/stderr"; bad = 1 }
    next
  }
  inside { print > target; blocks[target] = 1 }
  END { if (bad || !("output" in blocks)) { print FILENAME ": nothing to compare" > "/dev/stderr"; exit 1 } }' "$page"

export PATH="$prefix/bin:$PATH" CMAKE_PREFIX_PATH="$prefix" CXX="$compiler" TYPES="$prefix/share/tarnconfigstore/types"
if [ -e script.sh ]; then
  sed -i '1i set -euo pipefail' script.sh
  echo 'echo "$R" >host' >>script.sh
  bash script.sh >printed 2>script.errors || { cat script.errors; exit 1; }
else
  : >printed
  mktemp -d >host
  tarnctl --root "$(cat host)" init 2>/dev/null >made
  tarnctl --root "$(cat host)" schema install "$TYPES" >made
  tarnctl --root "$(cat host)" set tarn/network/resolver servers='["10.0.0.1"]'
fi
{ grep -v -e '^ *[]"{}[]' printed || true; } >shown
if [ -e main.inc ]; then
  {
    [ ! -e before.inc ] || cat before.inc
    printf '#include <iostream>\n#include <tarnconfigstore/tarnconfigstore.h>\nusing namespace TarnConfigStore;\n'
    echo 'int main() {'
    cat main.inc
    echo '}'
  } >page.cpp
  LIBRARY=$(dirname "$(find "$prefix" -name libtarnconfigstore.so)")
  "$compiler" -std=c++17 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I"$prefix/include" -I. page.cpp -o page \
    -L"$LIBRARY" -ltarnconfigstore -Wl,-rpath,"$LIBRARY"
  TARN_HOST_ROOT=$(cat host) ./page >page.printed 2>page.log
  cat page.printed >>shown
fi
rm -rf "$(cat host)"
diff -u output shown
