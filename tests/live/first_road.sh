#!/usr/bin/env bash
# first_road.sh TAVREL OUT: on the display at hand, captures a selection by hotkey and copies it, saves another.
# Leaves OUT/overlay.png (the overlay as it looks) and OUT/selection.png (what the clipboard held), and fails unless
# both pictures equal the same crop of an independent screenshot, pixel for pixel.
set -u
tavrel=$(realpath "$1")
mkdir -p "$2"
out=$(realpath "$2")
. "$(dirname "$0")/common.sh"
read -r width height < <(xdpyinfo | sed -n 's/.*dimensions: *\([0-9]*\)x\([0-9]*\).*/\1 \2/p')
scale=${QT_SCALE_FACTOR:-1}

mkdir -p "$home/shots"
write_settings "{\"configSchemaVersion\":9,\"language\":\"en\",\"saveToSpecifiedPath\":true,\"savePath\":\"$home/shots\",\"filenameFormat\":\"shot_{{index}}\"}"
dress_desktop "$width" "$height"
offset=0
if [ -n "${TAVREL_LIVE_SPLIT:-}" ]; then
    # Two monitors side by side; everything below happens on the right one.
    offset=$((width / 2))
    xrandr --setmonitor left "$offset/254x$height/286+0+0" screen
    xrandr --setmonitor right "$offset/254x$height/286+$offset+0" none
fi
start "$tavrel"
until_true 30 log_has 启动 || fail "the program did not start"
until_true 30 log_has 就绪，等待快捷键 || fail "the hotkeys were not registered"

# Device pixels that are whole logical units at no scale but 1.
left=$((offset + 241)) top=183 right=$((offset + (offset ? 861 : 961))) bottom=725
crop="$((right - left))x$((bottom - top))+$left+$top"

import -window root "$home/before.png"
xdotool mousemove $((offset + 60)) 60 key ctrl+1
until_true 30 log_has 覆盖层首次绘制完成 || fail "the overlay did not come up"
drag $left $top $right $bottom
xdotool mousemove $((left + 300)) $((top + 200))
sleep 0.3 # for the look of the picture only
import -window root "$out/overlay.png"
if [ "$offset" -gt 0 ]; then
    # The other monitor stays as it is.
    half="${offset}x${height}+0+0"
    convert "$out/overlay.png" -crop "$half" +repage "$home/other.png"
    convert "$home/before.png" -crop "$half" +repage "$home/other_before.png"
    [ "$(compare -metric AE "$home/other.png" "$home/other_before.png" null: 2>&1)" = 0 ] ||
        fail "the overlay reaches over to the other monitor"
fi

truth() { convert "$home/before.png" -crop "$crop" +repage "$home/truth.png"; }
same() { [ "$(compare -metric AE "$1" "$2" null: 2>&1)" = 0 ]; }
truth

xdotool key Return
got_picture() { xclip -selection clipboard -t image/png -o >"$home/copied.png" 2>/dev/null && [ -s "$home/copied.png" ]; }
until_true 20 got_picture || fail "no picture on the clipboard"
cp "$home/copied.png" "$out/selection.png" 2>/dev/null
same "$home/copied.png" "$home/truth.png" || fail "the copied picture differs from the screen"

until_true 20 log_has 截图会话结束 || fail "the session did not end"
# A compositor takes a moment to paint the desktop without the overlay.
screen_is_back() {
    import -window root "$home/now.png"
    same "$home/now.png" "$home/before.png"
}
until_true 20 screen_is_back || fail "the overlay left traces on the screen"
xdotool mousemove $((offset + 60)) 60 key ctrl+1
until_true 20 log_count 覆盖层首次绘制完成 2 || fail "the second capture did not come up"
drag $left $top $right $bottom
xdotool key ctrl+s
until_true 20 test -s "$home/shots/shot_1.png" || fail "no saved file"
until_true 20 same "$home/shots/shot_1.png" "$home/truth.png" || fail "the saved picture differs from the screen"

grep -F 截图就绪 "$log" | tail -n 1
[ "$failures" -eq 0 ] && echo "first road at scale $scale: copied and saved pictures equal the screen (${crop}), see $out"
exit "$failures"
