#!/usr/bin/env bash
# resident.sh TAVREL OUT ZOO: the resident of the desktop. Hotkeys under every lock and while another program's menu is
# open; a combination that is taken, named and taken back; menu and messages with a tray host and a message service,
# and the commands without either.
set -u
if [ -z "${TAVREL_LIVE_BUS:-}" ]; then
    exec dbus-run-session -- env TAVREL_LIVE_BUS=own "$0" "$@"
fi
TAVREL_LIVE_BUS=$DBUS_SESSION_BUS_ADDRESS
tavrel=$(realpath "$1")
mkdir -p "$2"
out=$(realpath "$2")
zoo=$(realpath "$3")
. "$(dirname "$0")/common.sh"
xsetroot -solid steelblue
expected_warnings=('\[WARN \] 注册热键失败：capture Ctrl\+1 ' 'failed to register hotkey：Capture')
write_settings '{"configSchemaVersion":9,"language":"en"}'

overlays=0
# comes WHAT: one more overlay than before; ends it again.
comes() {
    overlays=$((overlays + 1))
    until_true 20 log_count 覆盖层首次绘制完成 $overlays || { fail "$1: no overlay"; overlays=$((overlays - 1)); }
    xdotool key Escape
    until_true 20 log_count 截图会话结束 $overlays || fail "$1: the overlay stayed"
}
windows() { xwininfo -root -tree | sed -nE 's/.*"[Tt]avrel".* ([0-9]+)x([0-9]+)\+.* \+([0-9]+)\+([0-9]+)$/\1 \2 \3 \4/p'; }
# The entry with the icon, by its size; the menu is far higher.
icon_at() { windows | awk '$1 > 10 && $1 <= 40 && $1 == $2 { print $3 + $1 / 2, $4 + $2 / 2 }'; }
menu_at() { windows | awk '$2 > 300 && $1 < 600 { print $3, $4, $1, $2; exit }'; }
there() { [ -n "$("$1")" ]; }

# Without a tray host; the key belongs to another program when we start.
coproc ZOO { exec "$zoo"; }
tell_zoo() {
    echo "$1" >&"${ZOO[1]}"
    read -r -t 20 answer <&"${ZOO[0]}" && [ "$answer" = "$2" ]
}
key=$(xmodmap -pke | awk '$4 == "1" { print $2 }')
tell_zoo "grab $key 4" ok || fail "the key was not free"
start_program
log_has "another program (possibly" || fail "the taken key was not told"
log_has "window_zoo" || fail "the program that has the key was not named"
"$tavrel" --hotkey-probe >"$out/taken.txt" && fail "the probe found nothing wrong"
grep -q "window_zoo" "$out/taken.txt" || fail "the probe did not name the program"
"$tavrel" --capture
comes "by the command line"
tell_zoo "ungrab $key 4" ok
until_true 30 log_has 快捷键已全部注册 || fail "the key was not taken back"
tell_zoo "grab $key 4" taken || fail "the key is not ours"

xdotool key ctrl+1
comes "plain"
for lock in Num_Lock Caps_Lock; do
    xdotool key $lock key ctrl+1
    comes "under $lock"
done
xdotool key Num_Lock key Caps_Lock
xdotool mousemove 300 300 click 3 # the window manager's menu has keyboard and pointer now
until_true 20 eval 'xwininfo -root -children | grep -q "\"Openbox\|openbox"'
xdotool key ctrl+1
until_true 20 log_count 覆盖层首次绘制完成 $((overlays + 1))
xdotool key Escape # the first is the menu's, which still has the keyboard
comes "while another program's menu is open"

# A tray host and a message service that come later.
cat >"$home/tint2rc" <<'RC'
panel_items = TS
panel_size = 100% 32
panel_position = bottom center horizontal
RC
start tint2 -c "$home/tint2rc" >"$out/tint2.log" 2>&1
until_true 30 there icon_at || fail "no icon in the tray"
read -r x y < <(icon_at)
xdotool mousemove "$x" "$y" click 3
until_true 20 there menu_at || fail "no menu"
settle "$home/menu.ppm"
keep "$home/menu.ppm" "$out/menu.png"
read -r x y _ _ < <(menu_at)
xdotool mousemove $((x + 40)) $((y + 18)) click 1
comes "from the tray"

start dunst >"$out/dunst.log" 2>&1
until_true 20 dunstctl count || fail "no message service"
"$tavrel" --quit || fail "--quit did not end with 0"
until_true 20 eval '! kill -0 ${started[0]} 2>/dev/null' || fail "--quit ended nothing"
"$tavrel" --quit || fail "--quit without anybody to be quit"
xdotool keyup ctrl
tell_zoo "grab $key 4" ok || fail "the key was not given back"
start "$tavrel"
told() { dunstctl history | grep -q "failed to register" || dunstctl count | grep -q 'displayed: 1'; }
until_true 30 told || fail "the message service showed nothing"
settle "$home/message.ppm"
keep "$home/message.ppm" "$out/message.png"
exit "$failures"
