#!/usr/bin/env bash
# install.sh BUILD: installs into a folder of its own. Every file is there, valid as far as the validators at hand go,
# and every option of the program is in the man page and in both completions.
set -u
build=$(realpath "$1")
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
export HOME=$root/home XDG_DATA_HOME=$root/home XDG_CONFIG_HOME=$root/home XDG_RUNTIME_DIR=$root/run LC_ALL=C.UTF-8
mkdir -p "$HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
failures=0
fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}
# valid TOOL ARGUMENTS...: passes when the tool is not there.
valid() {
    if ! command -v "$1" >/dev/null; then
        echo "not checked, no $1"
        return
    fi
    "$@" >"$root/report" 2>&1 || { cat "$root/report"; fail "$*"; }
}

DESTDIR=$root cmake --install "$build" --prefix /usr >"$root/install.log" || { cat "$root/install.log"; exit 1; }
share=$root/usr/share
expected="bin/tavrel share/applications/tavrel.desktop share/metainfo/org.corvane.tavrel.metainfo.xml
    share/mime/packages/tavrel.xml share/man/man1/tavrel.1.gz share/bash-completion/completions/tavrel
    share/zsh/vendor-completions/_tavrel share/doc/tavrel/copyright share/doc/tavrel/changelog.gz"
for size in 16 22 24 32 48 64 128 256 512; do
    expected+=" share/icons/hicolor/${size}x${size}/apps/tavrel.png"
    found=$(identify -format '%wx%h' "$share/icons/hicolor/${size}x${size}/apps/tavrel.png")
    [ "$found" = "${size}x$size" ] || fail "the icon of $size is $found"
done
for file in $expected; do [ -s "$root/usr/$file" ] || fail "missing: $file"; done
installed=$(find "$root/usr" -type f | wc -l)
[ "$installed" -eq "$(wc -w <<<"$expected")" ] || fail "$installed files were installed"
[ "$(readelf -d "$root/usr/bin/tavrel" | grep -cE 'RPATH|RUNPATH')" -eq 0 ] || fail "the program looks for libraries in odd places"

valid desktop-file-validate "$share/applications/tavrel.desktop"
valid appstreamcli validate --no-net "$share/metainfo/org.corvane.tavrel.metainfo.xml"
valid xmllint --noout "$share/mime/packages/tavrel.xml"
valid bash -n "$share/bash-completion/completions/tavrel"
valid zsh -n "$share/zsh/vendor-completions/_tavrel"
if command -v update-mime-database >/dev/null; then
    update-mime-database "$share/mime" >/dev/null 2>&1
    grep -qx 'application/x-tavrel:\*.tavrel' "$share/mime/globs" || fail "the type of .tavrel is not known"
fi

page=$(gunzip -c "$share/man/man1/tavrel.1.gz" | sed 's/\\-/-/g')
options=$(QT_QPA_PLATFORM=offscreen "$root/usr/bin/tavrel" --help 2>/dev/null | grep -oE -- '--[a-z-]+' | sort -u)
[ "$(wc -l <<<"$options")" -gt 10 ] || fail "the program told no options"
for option in $options; do
    grep -qF -- "$option" <<<"$page" || fail "not in the man page: $option"
    grep -qF -- "$option" "$share/bash-completion/completions/tavrel" || fail "not completed by bash: $option"
    grep -qF -- "$option" "$share/zsh/vendor-completions/_tavrel" || fail "not completed by zsh: $option"
done
for action in $(sed -n 's/^Exec=tavrel \(--[a-z]*\).*/\1/p' "$share/applications/tavrel.desktop"); do
    grep -qxF -- "$action" <<<"$options" || fail "an action calls $action"
done
exit "$failures"
