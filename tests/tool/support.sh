# What the scripts that drive tarnctl share: a temporary host root, and checks of calls. Sourced with the
# arguments TARNCTL TYPES.
# shellcheck shell=bash disable=SC2034
set -uo pipefail

tarnctl=$1
types=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"
[ -x "$tarnctl" ] || exit 1
export TARN_HOST_ROOT=$work/root
stores=$TARN_HOST_ROOT/etc/kestrel/configstore
store=$stores/current-store-1
mkdir "$TARN_HOST_ROOT"
checks=0
failures=0

fail() {
  failures=$((failures + 1))
  echo "FAILED: $1" >&2
  sed 's/^/  stdout: /' "$work/out" >&2
  sed 's/^/  stderr: /' "$work/err" >&2
}

# matches FILE WANTED: nothing for "", anything for "?", exactly the rest for "=...", else somewhere in it.
# Blanks and line ends don't count. No process is started for it: there are more checks than calls of the tool.
matches() {
  local text wanted=${2//[$' \n']/}
  [ "$wanted" = '?' ] && return
  IFS= read -r -d '' text <"$1"
  text=${text//[$' \n']/}
  case $wanted in
    '') [ -z "$text" ] ;;
    =*) [ "$text" = "${wanted#=}" ] ;;
    *) [[ $text == *"$wanted"* ]] ;;
  esac
}

# verify NAME EXIT-CODE WANTED-CODE OUT ERR
verify() {
  checks=$((checks + 1))
  if [ "$2" -ne "$3" ]; then
    fail "$1: exit code $2, not $3"
  elif ! matches "$work/out" "$4"; then
    fail "$1: standard output is not $4"
  elif ! matches "$work/err" "$5"; then
    fail "$1: standard error is not $5"
  fi
}

# expect CODE OUT ERR ARGUMENTS...: standard input comes from where this is called
expect() {
  local wanted=$1 out=$2 err=$3
  shift 3
  "$tarnctl" "$@" >"$work/out" 2>"$work/err"
  verify "tarnctl $*" $? "$wanted" "$out" "$err"
}

# refused CODE ERR ARGUMENTS...: a call that must leave the store as it is, byte for byte
refused() {
  local code=$1 err=$2 before
  shift 2
  before=$(sqlite3 "$store" .dump)
  expect "$code" "" "$err" "$@"
  [ "$(sqlite3 "$store" .dump)" = "$before" ] || fail "tarnctl $* changed the store"
}

finish() {
  echo "$checks checks, $failures failures"
  exit $((failures > 0))
}
