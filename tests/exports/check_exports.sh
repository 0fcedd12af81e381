#!/usr/bin/env bash
# The shared library exports what its public headers declare, and nothing of the libraries inside it.
# Usage: check_exports.sh LIBRARY INCLUDE_DIR
set -euo pipefail
library=$1
headers=$2

exported=$(nm -DC --defined-only "$library" | cut -c20- | sed 's/@@TARNCONFIGSTORE_1$//' | grep -v '^TARNCONFIGSTORE_1$')
[ "$(wc -l <<<"$exported")" -gt 50 ] || { echo "too few names exported"; exit 1; }

foreign=$(grep -Ev '^((typeinfo|typeinfo name|vtable) for )?(TarnConfigStore|HostCtl::Lib)::' <<<"$exported" || true)
[ -z "$foreign" ] || { printf 'foreign names exported:\n%s\n' "$foreign"; exit 1; }

# Every class or function that is exported is declared, by that very name, in a public header.
names=$(sed -E 's/^(typeinfo name|typeinfo|vtable) for //; s/\(.*//; s/\[abi:[^]]*\]//g' <<<"$exported" |
  sed -E 's/^(TarnConfigStore|HostCtl::Lib):://; s/::.*//' | sort -u)
for name in $names; do
  grep -qrwE "$name" "$headers"/tarnconfigstore/*.h || { echo "exported but not declared: $name"; exit 1; }
done

# What callers catch has to be one type on both sides of the border.
for exception in ConfigStoreException ValidationException InvalidArgumentException InvalidTypeException; do
  grep -qx "typeinfo for TarnConfigStore::$exception" <<<"$exported" || { echo "no type information: $exception"; exit 1; }
done
echo "$(wc -l <<<"$exported") names exported, all declared"
