#!/usr/bin/env bash
# first_road.sh TAVREL OUT [short]: on the display at hand, captures a selection by hotkey and copies it, saves another.
# Leaves OUT/overlay.png (the overlay as it looks) and OUT/selection.png (what the clipboard held), and fails unless
# both pictures equal the same crop of an independent screenshot, pixel for pixel. The short road only copies.
set -u
tavrel=$(realpath "$1")
mkdir -p "$2"
out=$(realpath "$2")
road=${3:-full}
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
start_program

# Device pixels that are whole logical units at no scale but 1.
left=$((offset + 241)) top=183 right=$((offset + (offset ? 861 : 961))) bottom=725
crop="$((right - left))x$((bottom - top))+$left+$top"

shoot "$home/before.ppm"
cut "$home/before.ppm" "$crop" "$home/truth.ppm"
xdotool mousemove $((offset + 60)) 60 key ctrl+1
until_true 30 log_has 覆盖层首次绘制完成 || fail "the overlay did not come up"
drag $left $top $right $bottom
xdotool mousemove $((left + 300)) $((top + 200))
settle "$home/now.ppm"
keep "$home/now.ppm" "$out/overlay.png"
if [ "$offset" -gt 0 ]; then
    # The other monitor stays as it is.
    half="${offset}x${height}+0+0"
    cut "$home/now.ppm" "$half" "$home/other.ppm"
    cut "$home/before.ppm" "$half" "$home/other_before.ppm"
    same "$home/other.ppm" "$home/other_before.ppm" || fail "the overlay reaches over to the other monitor"
fi

xdotool key Return
copied "$out/selection.png"
same "$out/selection.png" "$home/truth.ppm" || fail "the copied picture differs from the screen"

until_true 20 log_has 截图会话结束 || fail "the session did not end"
# A compositor takes a moment to paint the desktop without the overlay.
screen_is_back() {
    shoot "$home/now.ppm"
    same "$home/now.ppm" "$home/before.ppm"
}
until_true 20 screen_is_back || fail "the overlay left traces on the screen"
if [ "$road" = full ]; then
    xdotool mousemove $((offset + 60)) 60 key ctrl+1
    until_true 20 log_count 覆盖层首次绘制完成 2 || fail "the second capture did not come up"
    drag $left $top $right $bottom
    xdotool key ctrl+s
    until_true 20 test -s "$home/shots/shot_1.png" || fail "no saved file"
    same "$home/shots/shot_1.png" "$home/truth.ppm" || fail "the saved picture differs from the screen"
fi

grep -F 截图就绪 "$log" | tail -n 1
[ "$failures" -eq 0 ] && echo "first road at scale $scale: the pictures equal the screen (${crop}), see $out"
exit "$failures"
