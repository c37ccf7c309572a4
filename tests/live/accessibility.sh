#!/usr/bin/env bash
# accessibility.sh TAVREL OUT TREE: reads overlay, toolbar, attribute bar, colour board and a menu of the running
# program over the accessibility bus, as a screen reader does. Fails when a control has no name, or a slider no value.
set -u
if [ -z "${TAVREL_LIVE_BUS:-}" ]; then
    exec dbus-run-session -- env TAVREL_LIVE_BUS=own "$0" "$@"
fi
TAVREL_LIVE_BUS=$DBUS_SESSION_BUS_ADDRESS
tavrel=$(realpath "$1")
mkdir -p "$2"
out=$(realpath "$2")
tree=$(realpath "$3")
. "$(dirname "$0")/common.sh"
read -r width height < <(xdpyinfo | sed -n 's/.*dimensions: *\([0-9]*\)x\([0-9]*\).*/\1 \2/p')

write_settings '{"configSchemaVersion":9,"language":"en","theme":"light","showToolbarText":false,"toolGuideShown":true,"autoDetectWindow":false}'
dress_desktop "$width" "$height"
QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 start_program
xdotool key ctrl+1
until_true 30 log_has 覆盖层首次绘制完成 || fail "the overlay did not come up"
drag 60 60 1100 420

# look NAME PATTERN: takes the tree down once it has a line like this, and looks for controls without a name or value.
look() {
    seen() { "$tree" Tavrel >"$out/$1.txt" && grep -qE "$2" "$out/$1.txt"; }
    until_true 20 seen "$1" "$2" || { fail "$1: nothing like '$2' was there"; cat "$out/$1.txt"; }
    local nameless
    nameless=$(awk -F'\t' '$2 ~ /button|slider|spin|entry|text$|check|combo|menu item|radio|page tab|dialog/ && $3 == ""' \
        "$out/$1.txt")
    [ -z "$nameless" ] || fail "$1: without a name: $nameless"
    nameless=$(awk -F'\t' '$2 ~ /slider|spin/ && $4 == "-"' "$out/$1.txt")
    [ -z "$nameless" ] || fail "$1: without a value: $nameless"
}

look toolbar $'\tCopy\t'
# The tools in the order of the toolbar, each 30 wide, counted from the last of them.
tool() { xdotool mousemove $((1100 - 23 - 189 - 30 * (8 - $1))) $((420 + 34)) click 1; }
tool 0
look rectangle $'spin box\tWidth\t3'
tool 5
look mosaic $'slider\tMosaic block size\t15'
tool 7
look number $'\tNumber\t'
tool 6
look text $'slider\tFont size\t28'
# The keyboard alone: from the overlay to the slider, one step up, and back.
xdotool key Tab Right
look stepped $'slider\tFont size\t29'
xdotool key Escape
tool 0
look colours $'\tMore colors\t'
xdotool mousemove $(awk -F'\t' '$3 == "More colors" { print $5; exit }' "$out/colours.txt") click 1
look board $'\tColor\t|\tSaturation'
xdotool key Escape
xdotool key Escape
until_true 20 log_has 截图会话结束 || fail "the session did not end"
"$tavrel"
look dialog $'push button\tOK'
xdotool key Return
[ "$failures" -eq 0 ]
