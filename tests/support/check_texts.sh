#!/usr/bin/env bash
# check_texts.sh BUILD: fails when a visible text of the sources has no finished entry in the English catalogue.
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
lupdate=$(sed -n 's/^QT_LUPDATE_PATH:.*=//p' "$1/CMakeCache.txt")
[ -n "$lupdate" ] || lupdate=$(qmake6 -query QT_INSTALL_BINS)/lupdate
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp "$root/resources/i18n/tavrel_en.ts" "$scratch/tavrel_en.ts"
"$lupdate" -silent -no-obsolete -locations none -source-language zh_CN -target-language en_US \
    "$root/src" -ts "$scratch/tavrel_en.ts"
if grep -q 'type="unfinished"' "$scratch/tavrel_en.ts"; then
    echo "texts without an English entry (run ./dev texts and fill them in):" >&2
    grep -B 2 'type="unfinished"' "$scratch/tavrel_en.ts" | sed -n 's/ *<source>\(.*\)<\/source>/  \1/p' >&2
    exit 1
fi
echo "texts: $(grep -c '<source>' "$scratch/tavrel_en.ts"), each with an English entry"
