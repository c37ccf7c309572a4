#!/usr/bin/env bash
# every_button.sh TAVREL OUT TREE toolbar|keys|menu: presses every button of the toolbar and of each tool's bar, every
# key that is told to the user, or every entry of the menu in the notification area. Whatever can be pressed ends in
# something: the screen looks different, or the session ends with something on the clipboard, or a window comes up.
set -u
if [ -z "${TAVREL_LIVE_BUS:-}" ]; then
    exec dbus-run-session -- env TAVREL_LIVE_BUS=own "$0" "$@"
fi
TAVREL_LIVE_BUS=$DBUS_SESSION_BUS_ADDRESS
tavrel=$(realpath "$1")
mkdir -p "$2"
out=$(realpath "$2")
tree=$(realpath "$3")
part=$4
. "$(dirname "$0")/common.sh"

begin() { # MAGNIFIER: true or false; it follows the pointer
    write_settings "{\"configSchemaVersion\":9,\"language\":\"en\",\"theme\":\"light\",\"showToolbarText\":false,\"toolGuideShown\":true,\"autoDetectWindow\":false,\"showOperationTips\":false,\"showMagnifier\":$1,\"showColorPicker\":$1}"
    QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 start_program
    sessions=0
}
dress_desktop 1280 800
left=100 top=60 right=1100 bottom=460

count() { grep -cF -- "$1" "$log"; }
in_session() { [ "$(count 截图会话结束)" -lt "$sessions" ]; }
aside() { xdotool mousemove 30 780; }
# What is on the bus of the program now, and of that what can be pressed outside and inside the toolbar.
look() { until_true 20 listed || fail "the program is not on the accessibility bus"; }
listed() { "$tree" Tavrel >"$home/tree.txt"; }
pressable() { awk -F'\t' '$2 ~ /button|check box|radio|toggle/ && $6 != "off" { print $3 "\t" $5 "\t" $6 }'; }
of_toolbar() { awk -F'\t' '$2 == "tool bar" { d = $1; inside = 1; next } inside && $1 <= d { inside = 0 } inside' "$home/tree.txt"; }
beside_toolbar() { awk -F'\t' '$2 == "tool bar" { d = $1; inside = 1; next } inside && $1 <= d { inside = 0 } !inside' "$home/tree.txt"; }
place_of() { awk -F'\t' -v n="$1" '$1 == n { print $2; exit }'; }

session() { # a new one, with a selection and the pointer out of the way
    sessions=$((sessions + 1))
    xdotool mousemove 30 780 key ctrl+1
    until_true 20 log_count 覆盖层首次绘制完成 "$sessions" || fail "no overlay"
    drag $left $top $right $bottom
    aside
    settle "$home/before.ppm"
}
leave() { # ends a session and whatever it has brought up
    local i
    for i in 1 2 3 4 5 6; do
        in_session || [ -n "$(windows)" ] || return
        xdotool key Escape
        until_true 2 eval '! in_session && [ -z "$(windows)" ]' && return
    done
    fail "$what: something stays on the screen"
}
windows() { # of its own that a window manager has: not the icon, which is small, nor menus
    local window
    for window in $(xdotool search --onlyvisible --class tavrel 2>/dev/null); do
        xwininfo -id "$window" 2>/dev/null | grep -q 'Override Redirect State: no' &&
            xdotool getwindowgeometry --shell "$window" 2>/dev/null | grep -qE 'WIDTH=([0-9]{3,}|[5-9][0-9])' && echo "$window"
    done
}
has_result() { # beside the end of the session
    [ -n "$(windows)" ] && return
    xclip -selection clipboard -t TARGETS -o 2>/dev/null | grep -qE 'image/png|UTF8_STRING' &&
        [ "$(xclip -selection clipboard -t UTF8_STRING -o 2>/dev/null)" != 'nothing yet' ]
}
forget_clipboard() {
    printf 'nothing yet' | xclip -selection clipboard -i >/dev/null 2>&1
}

# does_something WHAT COMMAND...: presses, and fails when nothing came of it.
does_something() {
    what=$1
    shift
    forget_clipboard
    settle "$home/before.ppm"
    "$@"
    aside
    changed() {
        if in_session; then
            settle "$home/after.ppm" # without what the pointer lights up on its way
            ! cmp -s "$home/before.ppm" "$home/after.ppm"
        else
            has_result
        fi
    }
    until_true 5 changed || fail "$what: nothing comes of it"
    pressed=$((pressed + 1))
    echo "$what" >>"$out/pressed.txt"
}
press() { xdotool mousemove $1 click 1; } # "X Y"
pressed=0
rm -f "$out/pressed.txt"

if [ "$part" = toolbar ]; then # the toolbar and what each tool brings with it
begin false
session
look
of_toolbar | pressable >"$home/first.txt"
press "$(place_of 'Show collapsed tools' <"$home/first.txt")"
more_tools() { look; grep -q 'Configure toolbar' "$home/tree.txt" && [ "$(of_toolbar | pressable | wc -l)" -ge 16 ]; }
until_true 10 more_tools || fail "the arrow shows no more tools: $(of_toolbar | pressable | wc -l) buttons"
of_toolbar | pressable >"$home/buttons.txt"
keep "$home/before.ppm" "$out/toolbar.png"
cp "$home/tree.txt" "$out/tree.txt"
what='the first look'
leave
choose() { # TOOL: a new session with its button in reach, at $at
    session
    look
    if ! of_toolbar | pressable | grep -qF "$1"$'\t'; then
        press "$(of_toolbar | pressable | place_of 'Show collapsed tools')"
        aside
        wanted=$1
        until_true 5 eval 'look; of_toolbar | pressable | grep -qF "$wanted"' || fail "$1: not there"
    fi
    at=$(of_toolbar | pressable | place_of "$1")
}
while IFS=$'\t' read -r name _ _ <&4; do
    choose "$name"
    if [ "$name" = Cancel ]; then # the end of the session is all that it is for
        press "$at"
        until_true 5 eval '! in_session' || fail "Cancel: the session goes on"
        continue
    fi
    does_something "$name" press "$at"
    if in_session; then
        settle "$home/tool.ppm"
        look
        beside_toolbar | pressable >"$home/bar.txt"
        colours=0
        while IFS=$'\t' read -r control _ state <&5; do
            [ "$state" = checked ] && continue                            # pressing what is chosen chooses nothing else
            [[ $control == \#* ]] && [ $((colours++)) -gt 0 ] && continue # one stands for all of the palette
            look
            if ! in_session || ! beside_toolbar | pressable | grep -qF "$control"$'\t'; then
                # Another button has taken this one away: a new session, set as it was at first.
                leave
                choose "$name"
                press "$at"
                while IFS=$'\t' read -r first _ <&6; do
                    look
                    press "$(beside_toolbar | pressable | place_of "$first")"
                done 6< <(grep 'checked$' "$home/bar.txt" | grep -v '^#')
                aside
                settle "$home/tool.ppm"
                look
            fi
            [ "$control" != Cancel ] || { leave; continue; } # as that of the toolbar
            does_something "$name, $control" press "$(beside_toolbar | pressable | place_of "$control")"
            in_session || continue
            look
            ! grep -qE $'\t(menu item|list item|popup menu)\t|\tSaturation' "$home/tree.txt" || xdotool key Escape
        done 5<"$home/bar.txt"
    fi
    leave
done 4<"$home/buttons.txt"
echo "toolbar: $pressed buttons"
fi

if [ "$part" = keys ]; then # the keys, with the pointer where it is
begin true
key() { xdotool key "$1"; }
for keys in ctrl+a c shift; do # without a selection
    sessions=$((sessions + 1))
    xdotool mousemove 30 780 key ctrl+1
    until_true 20 log_count 覆盖层首次绘制完成 "$sessions" || fail "no overlay"
    does_something "$keys" key "$keys"
    leave
done
for keys in Return KP_Enter ctrl+c ctrl+s ctrl+p; do
    session
    does_something "$keys" key "$keys"
    leave
done
session
look
press "$(of_toolbar | pressable | place_of Shape)"
drag 300 150 600 300
aside
for keys in ctrl+z ctrl+shift+z ctrl+z ctrl+y; do does_something "$keys with a shape" key "$keys"; done
xdotool mousemove 300 200 click 1 # its edge: selected
for keys in Delete ctrl+z; do does_something "$keys with a selected shape" key "$keys"; done
what='right click'
leave
session
does_something 'right click' xdotool click 3
xdotool click 3
until_true 5 eval '! in_session' || fail "a second right click does not leave"
echo "keyboard: $pressed keys"
fi

if [ "$part" = menu ]; then # the menu in the notification area
begin true
cat >"$home/tint2rc" <<'RC'
panel_items = TS
panel_size = 100% 32
panel_position = bottom center horizontal
RC
start tint2 -c "$home/tint2rc" >"$out/tint2.log" 2>&1
# Of the windows without a frame: the icon is a small square, a menu is more than 100 wide.
bare_windows() { xwininfo -root -tree | sed -nE 's/.*"[Tt]avrel".* ([0-9]+)x([0-9]+)\+.* \+([0-9]+)\+([0-9]+)$/\1 \2 \3 \4/p'; }
icon() { bare_windows | awk '$1 > 10 && $1 <= 40 && $1 == $2 { print $3 + $1 / 2, $4 + $2 / 2 }'; }
menus() { bare_windows | awk '$1 > 100 && $1 < 600 && $2 < 700' | wc -l; }
until_true 30 eval '[ -n "$(icon)" ]' || fail "no icon in the tray"
drawn() { grep -cF 覆盖层首次绘制完成 "$log"; }
for ((row = 1; row < 30; row++)); do
    what="menu, row $row"
    before=$(drawn)
    for try in 1 2 3 4; do # a panel that is busy loses a click
        xdotool mousemove $(icon) click 3
        until_true 5 eval '[ "$(menus)" -eq 1 ]' && break
        xdotool key Escape
    done
    [ "$(menus)" -eq 1 ] || fail "no menu"
    for ((i = 0; i < row; i++)); do xdotool key Down; done
    xdotool key Return
    happened() { [ "$(drawn)" -gt "$before" ] || ! kill -0 "$watched" 2>/dev/null || [ -n "$(windows)" ]; }
    if until_true 1 happened; then
        pressed=$((pressed + 1))
        kill -0 "$watched" 2>/dev/null || break
        sessions=$(drawn)
        leave
        continue
    fi
    # What is off leaves the menu as it is, and so does what opens another one.
    [ "$(menus)" -ge 1 ] || fail "$what: nothing comes of it"
    while [ "$(menus)" -gt 0 ]; do
        xdotool key Escape
        sleep 0.1
    done
done
kill -0 "$watched" 2>/dev/null && fail "the menu has no end"
echo "menu: $pressed entries that are on"
fi

exit "$failures"
