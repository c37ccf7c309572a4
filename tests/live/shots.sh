#!/usr/bin/env bash
# shots.sh TAVREL OUT THEME SCALE: pictures of the overlay in its states and of the dialogs, on the display at hand.
set -u
tavrel=$(realpath "$1")
mkdir -p "$2"
out=$(realpath "$2")
theme=$3
scale=$4
. "$(dirname "$0")/common.sh"
read -r width height < <(xdpyinfo | sed -n 's/.*dimensions: *\([0-9]*\)x\([0-9]*\).*/\1 \2/p')
dress_desktop "$width" "$height"

shot() {
    sleep 0.4
    shoot "$home/shot.ppm"
    convert "$home/shot.ppm" -quality 90 "$out/$1-$language-$theme-$scale.png"
}

# The last one is no setting: English, lengthened, so that clipping shows.
for language in zh en check; do
    write_settings "{\"configSchemaVersion\":9,\"language\":\"$language\",\"theme\":\"$theme\"}"
    rm -f "$log"
    start "$tavrel" --lang "$language"
    pid=${started[-1]}
    until_true 30 log_has 就绪，等待快捷键 || { echo "the program did not start" >&2; exit 1; }

    xdotool mousemove 700 500 key ctrl+1
    until_true 30 log_has 覆盖层首次绘制完成
    shot overlay-idle
    xdotool mousemove 400 300 mousedown 1 mousemove 700 450 mousemove 1100 700
    shot overlay-selecting
    xdotool mouseup 1 mousemove 800 500
    shot overlay-selected
    xdotool key ctrl+p
    shot overlay-toast
    xdotool mousemove $((width - 5)) $((height - 5))
    shot overlay-corner
    xdotool mousemove 800 500 key ctrl+s
    until_true 20 log_has 截图会话结束
    sleep 1
    shot dialog-save
    xdotool key Escape
    sleep 0.5
    "$tavrel" --lang "$language"
    sleep 1
    shot dialog-status
    xdotool key Return
    kill "$pid"
    wait "$pid" 2>/dev/null
done
