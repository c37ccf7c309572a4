#!/usr/bin/env bash
# readme_pictures.sh TAVREL OUT: the pictures of the README, taken of the real program on a display of 1120x700.
set -u
tavrel=$(realpath "$1")
mkdir -p "$2"
out=$(realpath "$2")
. "$(dirname "$0")/common.sh"

# Something to capture: a page with a headline, lines of text and a chart.
convert -size 1120x700 xc:'#7d9bbf' \
    -fill '#00000030' -draw 'roundrectangle 126,66 1002,610 14,14' \
    -fill white -draw 'roundrectangle 120,58 996,602 12,12' \
    -font DejaVu-Sans-Bold -pointsize 26 -fill '#222' -annotate +160+116 'Visitors of the week' \
    -font DejaVu-Sans -pointsize 14 -fill '#555' \
    -annotate +160+150 'Counted at both doors, Monday to Sunday.' \
    -annotate +160+172 'Contact: ada@example.org, extension 4711' \
    -fill '#8fb3dd' -draw 'rectangle 180,380 240,540 rectangle 270,330 330,540 rectangle 360,400 420,540' \
    -draw 'rectangle 450,300 510,540 rectangle 540,350 600,540' \
    -fill '#5585bf' -draw 'rectangle 630,230 690,540 rectangle 720,270 780,540' \
    -fill '#444' -draw 'rectangle 160,540 820,541' \
    "$home/page.png"
feh --no-fehbg --bg-fill "$home/page.png"

small() { convert "$1" -strip -define png:compression-level=9 -define png:compression-filter=5 "PNG24:$2"; }
take() { # NAME
    settle "$home/$1.ppm"
    small "$home/$1.ppm" "$out/$1.png"
}
stroke() { # X Y X Y ...: held from the first point to the last
    xdotool mousemove "$1" "$2" mousedown 1
    while [ $# -gt 0 ]; do
        xdotool mousemove "$1" "$2"
        shift 2
    done
    xdotool mouseup 1
}
overlay() { # OTHER SETTINGS
    write_settings "{\"configSchemaVersion\":9,\"language\":\"en\",\"theme\":\"light\",\"toolGuideShown\":true,\"autoDetectWindow\":false$1}"
    start_program
    xdotool mousemove 300 640 key ctrl+1
    until_true 30 log_has 覆盖层首次绘制完成 || fail "the overlay did not come up"
}

overlay ',"showToolbarText":false,"showMagnifier":false,"showColorPicker":false'
drag 140 80 980 570
bar=$((570 + 15 + 19))
tool() { xdotool mousemove $((980 - 8 - 15 - 162 - 30 * (9 - $1))) $bar click 1; } # counted from the arrow behind the tools
tool 0 # a frame around the best day
stroke 612 214 640 260 798 558
tool 1 # and an arrow to it
stroke 560 190 580 200 650 222
tool 5 # the address, covered
stroke 222 156 300 170 470 180
tool 7 # days, numbered
xdotool mousemove 480 270 click 1
xdotool mousemove 570 320 click 1
tool 3 # the headline, marked in yellow
xdotool mousemove 834 657 click 1
xdotool mousemove 300 300 click --repeat 12 --delay 10 4
stroke 156 108 300 108 452 108
tool 1
xdotool mousemove 900 300
take overlay
xdotool key Escape Escape
end_program

overlay ''
xdotool mousemove 690 268
xdotool mousemove 688 266
take magnifier
xdotool key Escape Escape
end_program

QT_QPA_PLATFORM=offscreen "$tavrel" --render-color-board-preview "$home/board" --lang en >/dev/null 2>&1
small "$home/board/boards-light.png" "$out/colors.png"
exit "$failures"
