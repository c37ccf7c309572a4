#!/usr/bin/env bash
# drawing.sh TAVREL OUT [THEME]: draws on the overlay with the tools of the toolbar, mouse, wheel and keys, on the
# display at hand. Leaves OUT/tools.png and OUT/drawing.png as the screen looked, and fails unless the copied picture
# shows what stood on the screen.
set -u
tavrel=$(realpath "$1")
mkdir -p "$2"
out=$(realpath "$2")
theme=${3:-light}
. "$(dirname "$0")/common.sh"
read -r width height < <(xdpyinfo | sed -n 's/.*dimensions: *\([0-9]*\)x\([0-9]*\).*/\1 \2/p')
scale=${QT_SCALE_FACTOR:-1}
px() { awk -v v="$1" -v f="$scale" 'BEGIN { printf "%d", v * f + 0.5 }'; }
at() { xdotool mousemove "$(px "$1")" "$(px "$2")"; }
click() { at "$1" "$2"; xdotool click 1; }
wheel() { xdotool click --repeat "$2" --delay 10 "$([ "$1" = up ] && echo 4 || echo 5)"; }
stroke() { # X Y X Y ...: held from the first point to the last
    at "$1" "$2"
    xdotool mousedown 1
    while [ $# -gt 0 ]; do
        at "$1" "$2"
        shift 2
    done
    xdotool mouseup 1
}

# Without labels every button of the toolbar is a square of 30, and the pictures can be compared without magnifier.
write_settings "{\"configSchemaVersion\":9,\"language\":\"en\",\"theme\":\"$theme\",\"showToolbarText\":false,\"showMagnifier\":false,\"showColorPicker\":false,\"toolGuideShown\":true,\"autoDetectWindow\":false}"
dress_desktop "$width" "$height"
start_program
xdotool key ctrl+1
until_true 30 log_has 覆盖层首次绘制完成 || fail "the overlay did not come up"

left=160 top=100 right=1100 bottom=620
drag "$(px $left)" "$(px $top)" "$(px $right)" "$(px $bottom)"
bar=$((bottom + 15 + 19)) # middle of the toolbar's buttons
results=$((right - 8 - 15))
tool() { click $((results - 189 - 30 * (8 - $1))) $bar; } # counted from the last of the tools
look() { # NAME
    settle "$home/$1.ppm"
    keep "$home/$1.ppm" "$out/$1.png"
}

tool 0 # rectangle
stroke 240 160 300 200 420 260
wheel up 3
stroke 480 160 500 200 640 260
tool 1 # arrow
stroke 720 180 800 200 960 260
stroke 840 220 840 160 # its middle handle: a curve
tool 2                 # pen
stroke 240 340 280 300 320 380 360 320 400 360 440 300 480 360
tool 3 # highlighter
at 600 330
wheel up 15
stroke 560 330 700 335 900 330
at 900 450
look tools

# A click takes the first rectangle; it is moved, then a third one is drawn, taken back and brought again.
tool 0
click 240 230
stroke 240 230 260 300 280 430
look picked
click 700 560
stroke 560 420 600 440 900 520
xdotool key ctrl+z
xdotool key ctrl+shift+z
click 560 470
xdotool key Delete
xdotool key ctrl+z
tool 0 # put away
at 1180 60
look drawing

xdotool key Return
copied "$out/copied.png"
# Inside the marks of the selection.
inset=$(px 30)
inner="$(($(px $right) - $(px $left) - 2 * inset))x$(($(px $bottom) - $(px $top) - 2 * inset))"
cut "$home/drawing.ppm" "$inner+$(($(px $left) + inset))+$(($(px $top) + inset))" "$home/seen.ppm"
cut "$out/copied.png" "$inner+$inset+$inset" "$home/cut.ppm"
wrong=$(differing "$home/seen.ppm" "$home/cut.ppm")
[ "$wrong" = 0 ] || fail "$wrong pixels of the copied picture differ from the screen"
cut "$home/desktop.ppm" "$inner+$(($(px $left) + inset))+$(($(px $top) + inset))" "$home/bare.ppm"
drawn=$(differing "$home/bare.ppm" "$home/cut.ppm")
awk -v d="$drawn" -v s="$scale" 'BEGIN { exit !(d > 15000 * s * s) }' || fail "hardly anything was drawn: $drawn pixels"

[ "$failures" -eq 0 ] && echo "drawing at scale $scale, $theme: the copied picture shows what the screen showed, $drawn pixels drawn"
exit "$failures"
