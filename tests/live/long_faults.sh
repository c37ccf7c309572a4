#!/usr/bin/env bash
# long_faults.sh TAVREL OUT PAGE: long captures of pages that do not make it easy: bars that stay, a leap beyond the
# view, a video, one colour, a display that is taken apart, a keyboard that went to the page, an end from outside. The
# picture never has a row that the page has not, and what cannot be followed is told.
set -u
tavrel=$(realpath "$1")
mkdir -p "$2"
out=$(realpath "$2")
page=$(realpath "$3")
. "$(dirname "$0")/common.sh"
read -r width height < <(xdpyinfo | sed -n 's/.*dimensions: *\([0-9]*\)x\([0-9]*\).*/\1 \2/p')
name=''
expected_warnings=(抓取屏幕失败：) # of the display that is taken apart

write_settings '{"configSchemaVersion":9,"language":"en","theme":"dark","showToolbarText":true,"toolGuideShown":true,"autoDetectWindow":false,"longCaptureHotkey":{"enabled":true,"combo":"ctrl+51"}}'
dress_desktop "$width" "$height"
start_program
program=${started[-1]}

toolbar() { xdotool search --onlyvisible --name '^(长截图|Long screenshot)$'; }
no_toolbar() { ! toolbar; }

begin() { # NAME TRAITS...: a page and a long capture of 800 x 600 of it
    name=$1
    shift
    QT_SCALE_FACTOR=1 start "$page" "$out/$name-page.png" "$@"
    shown=${started[-1]}
    until_true 20 xdotool search --name '^scroll page$' || fail "$name: the page did not come up"
    window=$(xdotool search --name '^scroll page$' | tail -1)
    read -r X Y < <(xwininfo -id "$window" | awk '/Absolute upper-left X/ { x = $4 } /Absolute upper-left Y/ { print x, $4 }')
    [ "$name" = video ] || settle "$home/page.ppm"
    shoot -crop "800x600+$((X + 10))+$((Y + 20))" +repage "$home/$name-first.ppm"
    local before
    before=$(grep -cF 覆盖层首次绘制完成 "$log")
    xdotool key ctrl+3
    until_true 30 log_count 覆盖层首次绘制完成 $((before + 1)) || fail "$name: the overlay did not come up"
    drag $((X + 10)) $((Y + 20)) $((X + 810)) $((Y + 620))
    xdotool mousemove $((X + 400)) $((Y + 300))
    until_true 20 toolbar || fail "$name: the long capture did not begin"
    rest
}

wheel() { # BUTTON TIMES
    local i
    for ((i = 0; i < $2; i++)); do
        xdotool click "$1"
        sleep 0.1
    done
}

# What moves by itself never rests: a page with a video gets the time of some frames.
rest() { if [ "$name" = video ]; then sleep 0.5; else settle "$home/look.ppm"; fi; }
look() {
    rest
    shoot "$home/look.ppm"
    keep "$home/look.ppm" "$out/$name-${1:-running}.png"
}

told() { # LINE: it is said, and shown
    until_true 20 log_has "$1" || fail "$name: nothing was said"
    look told
}

end() { # ends the session with a copy in $out/NAME.png
    local before
    before=$(grep -cF 截图会话结束 "$log")
    xdotool key Return
    until_true 20 no_toolbar || fail "$name: the long capture did not end"
    look finished
    xdotool key ctrl+c
    until_true 20 log_count 截图会话结束 $((before + 1)) || fail "$name: the session did not end"
    copied "$out/$name.png"
    close_page
}

close_page() {
    kill "$shown"
    wait "$shown" 2>/dev/null
}

# expect ROWS [DRAW]: the picture is the page's, with what DRAW paints left out on both
expect() {
    local size wrong
    convert "$out/$name-page.png" -crop "800x$1+10+20" +repage "$out/$name-expected.png"
    [ -z "${header:-}" ] || convert "$out/$name-expected.png" \
        \( "$home/$name-first.ppm" -crop "800x$header+0+0" +repage \) -composite "$out/$name-expected.png"
    size=$(identify -format '%wx%h' "$out/$name.png")
    [ "$size" = "800x$1" ] || fail "$name: the picture is $size, not 800x$1"
    [ -z "${2:-}" ] || mogrify -fill black -draw "$2" "$out/$name.png" "$out/$name-expected.png"
    wrong=$(compare -metric AE "$out/$name-expected.png" "$out/$name.png" "$out/$name-difference.png" 2>&1)
    echo "$name: $size, $wrong differing pixels"
    [ "$wrong" = 0 ] || fail "$name: $wrong pixels differ"
}

begin header header
wheel 5 20
wheel 4 2
wheel 5 6
look
end
header=28 expect $((600 + 24 * 57))

# The footer covers the view's last 28 rows and goes.
begin footer footer
wheel 5 20
look
end
expect $((600 - 28 + 20 * 57))

begin leap
wheel 5 4
wheel 7 1
told 帧接不上
wheel 6 1
wheel 5 4
rest
end
expect $((600 + 8 * 57))

begin video video
wheel 5 24
look
end
expect $((600 + 24 * 57)) 'rectangle 410,880 709,1059'

begin plain plain
wheel 5 10
look
end
expect 600

begin keyboard
wheel 5 3
xdotool click 1 # into the page, which takes the keyboard
rest
read -r left top < <(xwininfo -id "$(toolbar | tail -1)" | awk '/Absolute upper-left X/ { x = $4 } /Absolute upper-left Y/ { print x, $4 }')
before=$(grep -cF 截图会话结束 "$log")
xdotool mousemove $((left + 4)) $((top + 24)) click 1 key Escape
until_true 10 log_count 截图会话结束 $((before + 1)) || fail "$name: Escape on the toolbar did not end it"
close_page

begin display
wheel 5 4
xrandr --setmonitor left "640/254x$height/286+0+0" screen
xrandr --setmonitor right "$((width - 640))/254x$height/286+640+0" none
told 没有画面或尺寸不同
xrandr --delmonitor right
xrandr --delmonitor left
wheel 5 4
look
end
expect $((600 + 8 * 57))

begin outside
wheel 5 4
stop_watching
kill "$program"
wait "$program"
code=$?
[ "$code" = 0 ] || fail "$name: ended with $code"
close_page
[ "$failures" -eq 0 ]
