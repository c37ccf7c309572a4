#!/usr/bin/env bash
# long_capture.sh TAVREL OUT PAGE: scrolls a real program through the hole of a long capture, down, a little up and
# down again, and compares the copied picture row by row with the page rendered in one piece.
set -u
tavrel=$(realpath "$1")
mkdir -p "$2"
out=$(realpath "$2")
page=$(realpath "$3")
. "$(dirname "$0")/common.sh"
read -r width height < <(xdpyinfo | sed -n 's/.*dimensions: *\([0-9]*\)x\([0-9]*\).*/\1 \2/p')

write_settings '{"configSchemaVersion":9,"language":"en","theme":"light","showToolbarText":false,"toolGuideShown":true,"autoDetectWindow":false,"longCaptureHotkey":{"enabled":true,"combo":"ctrl+51"}}'
dress_desktop "$width" "$height"
# Its pixels are those of the screen at every scale of ours.
QT_SCALE_FACTOR=1 start "$page" "$out/page.png"
until_true 20 xdotool search --name '^scroll page$' || fail "the page did not come up"
window=$(xdotool search --name '^scroll page$' | tail -1)
read -r X Y < <(xwininfo -id "$window" | awk '/Absolute upper-left X/ { x = $4 } /Absolute upper-left Y/ { print x, $4 }')
start_program
xdotool key ctrl+3
until_true 30 log_has 覆盖层首次绘制完成 || fail "the overlay did not come up"
left=$((X + 10)) top=$((Y + 20)) right=$((X + 810)) bottom=$((Y + 620))
drag $left $top $right $bottom
xdotool mousemove $((X + 400)) $((Y + 300))
hole_is_open() { xdotool search --name '^(长截图|Long screenshot)$'; }
until_true 20 hole_is_open || fail "the long capture did not begin"
settle "$home/begun.ppm"
wheel() { # BUTTON TIMES: each notch gets the time that a frame takes
    local i
    for ((i = 0; i < $2; i++)); do
        xdotool click "$1"
        sleep 0.1
    done
}
wheel 5 24
wheel 4 3
wheel 5 14
settle "$home/running.ppm"
keep "$home/running.ppm" "$out/running.png"
xdotool key Return
until_true 20 log_has 长截图完成 || fail "the long capture did not end"
settle "$home/finished.ppm"
keep "$home/finished.ppm" "$out/finished.png"
xdotool key ctrl+c
until_true 20 log_has 截图会话结束 || fail "the session did not end"
copied "$out/copied.png"

# 35 notches of 57 rows below the first view of 600.
expected=$((600 + 35 * 57))
read -r got_width got_height < <(identify -format '%w %h\n' "$out/copied.png")
[ "$got_width" = 800 ] && [ "$got_height" = "$expected" ] ||
    fail "the page is $got_width x $got_height, not 800 x $expected"
convert "$out/page.png" -crop "800x$expected+10+20" +repage "$out/expected.png"
wrong=$(compare -metric AE "$out/expected.png" "$out/copied.png" "$out/difference.png" 2>&1)
echo "long capture: $got_height rows, $wrong differing pixels"
[ "$wrong" = 0 ] || fail "$wrong pixels differ"
[ "$failures" -eq 0 ]
