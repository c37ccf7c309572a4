#!/usr/bin/env bash
# install.sh BUILD: installs into a folder of its own. Every file is there, valid as far as the tools at hand go, and
# the man page and both completions offer exactly the options that the program tells.
set -u
shopt -s lastpipe # a failure found at the end of a pipe counts
build=$(realpath "$1")
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
export HOME=$root/home XDG_DATA_HOME=$root/home XDG_CONFIG_HOME=$root/home XDG_RUNTIME_DIR=$root/run
mkdir -p "$HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
failures=0
fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}
# have TOOL: says what is not looked at for want of it.
have() { command -v "$1" >/dev/null || { echo "not checked, $1 is not installed"; return 1; }; }
# quietly_valid TOOL ARGUMENTS...: it has nothing to object to and nothing to say.
quietly_valid() {
    have "$1" || return
    "$@" >"$root/report" 2>&1 && [ ! -s "$root/report" ] || { cat "$root/report"; fail "$*"; }
}

DESTDIR=$root cmake --install "$build" --prefix /usr >"$root/install.log" || { cat "$root/install.log"; exit 1; }
share=$root/usr/share
icons=$share/icons/hicolor
expected="bin/tavrel share/applications/tavrel.desktop share/metainfo/org.corvane.tavrel.metainfo.xml
    share/mime/packages/tavrel.xml share/man/man1/tavrel.1.gz share/bash-completion/completions/tavrel
    share/zsh/vendor-completions/_tavrel share/doc/tavrel/copyright share/doc/tavrel/changelog.gz"
for size in 16 22 24 32 48 64 128 256 512; do
    expected+=" share/icons/hicolor/${size}x$size/apps/tavrel.png"
    expected+=" share/icons/hicolor/${size}x$size/mimetypes/application-x-tavrel.png"
done
diff <(tr -s ' \n' '\n' <<<"$expected" | sort) <(cd "$root/usr" && find . -type f -size +0 -printf '%P\n' | sort) ||
    fail "not what should be installed (<), not what was (>)"

if have identify; then
    for icon in "$icons"/*/*/*.png; do
        size=$(basename "$(dirname "$(dirname "$icon")")")
        read -r found colours < <(identify -format '%wx%h %k\n' "$icon")
        [ "$found" = "$size" ] && [ "$colours" -gt 40 ] || fail "$icon: $found with $colours colours"
    done
fi
if have readelf; then
    ! readelf -d "$root/usr/bin/tavrel" | grep -E 'RPATH|RUNPATH' || fail "the program looks for libraries in odd places"
fi
quietly_valid desktop-file-validate "$share/applications/tavrel.desktop"
quietly_valid xmllint --noout "$share/mime/packages/tavrel.xml"
quietly_valid bash -n "$share/bash-completion/completions/tavrel"
quietly_valid zsh -n "$share/zsh/vendor-completions/_tavrel"
if have appstreamcli; then
    appstreamcli validate --pedantic --no-net "$share/metainfo/org.corvane.tavrel.metainfo.xml" >"$root/report" 2>&1 ||
        { cat "$root/report"; fail "the metadata"; }
fi
if have man; then
    man --warnings -E UTF-8 -l -Tutf8 "$share/man/man1/tavrel.1.gz" 2>&1 >"$root/page" | tee "$root/report"
    [ ! -s "$root/report" ] || fail "the man page"
fi
if have update-mime-database; then
    update-mime-database "$share/mime" >/dev/null 2>&1
    grep -qx 'application/x-tavrel:\*.tavrel' "$share/mime/globs" || fail "the type of .tavrel is not known"
    grep -qx 'application/x-tavrel application/zip' "$share/mime/subclasses" || fail "an archiver cannot open a .tavrel"
    grep -qx 'application/x-tavrel:application-x-tavrel' "$share/mime/icons" || fail "a .tavrel has no icon"
fi

# The options in a text, one a line. Those that run alone are not in the program's own list.
told() { grep -oE -- '--[a-z]+(-[a-z]+)*' | sort -u; }
help=$(QT_QPA_PLATFORM=offscreen "$root/usr/bin/tavrel" --help 2>/dev/null)
alone=$'--autostart-probe\n--capture-probe\n--elements-probe\n--hotkey-probe\n--hw-probe\n--permissions-probe'
options=$({ told <<<"$help"; echo "$alone"; } | sort -u)
[ "$(wc -l <<<"$options")" -gt 15 ] || fail "the program told no options: $help"
same() { diff <(echo "$options") - || fail "the options (<) are not those of $1 (>)"; }
gunzip -c "$share/man/man1/tavrel.1.gz" | sed 's/\\-/-/g' | told | same "the man page"
told <"$share/zsh/vendor-completions/_tavrel" | same "the completion of zsh"

# What bash offers for the last of these words, the others standing before it.
offered() {
    bash -c '
        . "$0"
        cd "$1"
        shift
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
        _tavrel
        printf "%s\n" "${COMPREPLY[@]}"' "$share/bash-completion/completions/tavrel" "$root/files" tavrel "$@" | sort -u
}
mkdir -p "$root/files/more"
touch "$root/files/a.tavrel" "$root/files/B.TAVREL" "$root/files/c.mp4"
offered -- | same "the completion of bash"
check_offer() { # expected, words...
    local wanted=$1 got
    shift
    got=$(offered "$@" | LC_ALL=C sort | tr '\n' ' ')
    [ "$got" = "$wanted " ] || fail "bash offers '$got' after '$*'"
}
check_offer 'B.TAVREL a.tavrel more' ''
check_offer 'a.tavrel' --lang zh a
check_offer 'en' --lang e
check_offer 'en' --lang = e
check_offer 'en system zh' --lang =
check_offer 'more' --capture-probe ''
check_offer '--capture-probe' --capture-
check_offer 'off on' --autostart-probe o

actions=$(sed -n 's/^Exec=tavrel \(--[a-z-]*\).*/\1/p' "$share/applications/tavrel.desktop")
[ "$(wc -l <<<"$actions")" -ge 4 ] || fail "the desktop entry has no actions"
for action in $actions; do
    grep -qxF -- "$action" <<<"$options" || fail "an action calls $action"
done
exit $((failures > 0))
