#!/usr/bin/env bash
# faults.sh TAVREL: folders that are missing, cannot be made, or have no room left. The failure is shown, the picture
# goes to another place instead, nothing half-written stays behind and the next capture works.
set -u
tavrel=$(realpath "$1")
. "$(dirname "$0")/common.sh"
dress_desktop 1280 800
left=201 top=151 right=901 bottom=651
cut "$home/desktop.ppm" "$((right - left))x$((bottom - top))+$left+$top" "$home/truth.ppm"
is_true() { same "$1" "$home/truth.ppm"; }
expected_warnings=(保存失败：)
window() { xdotool search --onlyvisible --name "$1"; }
no_window() { ! window "$1"; }
has_focus() { [ "$(xdotool getwindowfocus)" = "$(window "$1" | tail -n 1)" ]; }

capture() { # KEY that ends it
    local before
    before=$(grep -cF 覆盖层首次绘制完成 "$log")
    xdotool mousemove 60 60 key ctrl+1
    until_true 30 log_count 覆盖层首次绘制完成 $((before + 1)) || fail "$name: no overlay"
    drag $left $top $right $bottom
    xdotool key "$1"
}

begin() { # NAME FOLDER [COMMAND that starts the program]
    name=$1
    local folder=$2
    shift 2
    write_settings "{\"configSchemaVersion\":9,\"language\":\"en\",\"saveToSpecifiedPath\":true,\"savePath\":\"$folder\",\"filenameFormat\":\"shot_{{index}}\"}"
    start_program "$@"
    pid=${started[-1]}
}

next_capture_works() {
    printf 'nothing yet' | xclip -selection clipboard -i
    capture Return
    copied "$home/copied.png"
    is_true "$home/copied.png" || fail "$name: the next capture was not copied"
}

# The message offers another place; what is written there is the picture.
rescue() {
    until_true 20 log_has 保存失败： || fail "$name: the failure was not noticed"
    until_true 20 has_focus '^Save failed' || fail "$name: the failure was not shown"
    xdotool key Return
    until_true 20 has_focus '^Save as' || fail "$name: no other place was offered"
    xdotool key ctrl+a type "$home/rescued-$name.png"
    xdotool key Return
    until_true 20 is_true "$home/rescued-$name.png" || fail "$name: the picture was lost"
    until_true 20 no_window '^Save as' || fail "$name: the dialog stayed"
}

begin missing "$home/not/yet/there"
capture ctrl+s
until_true 20 is_true "$home/not/yet/there/shot_1.png" || fail "a missing folder was not made"
next_capture_works
end_program

touch "$home/file"
begin below-a-file "$home/file/shots"
capture ctrl+s
rescue
next_capture_works
end_program

full=$home/full
mkdir "$full"
if mount -t tmpfs -o size=64k tmpfs "$full" 2>/dev/null; then
    unmount() { umount "$full"; finish; }
    trap unmount EXIT
    limited=()
else
    # No file may grow beyond 64 kB; the pictures that are to work are written without that limit.
    limited=(prlimit --fsize=65536: env --ignore-signal=XFSZ)
fi
begin full "$full" "${limited[@]}"
capture ctrl+s
if [ ${#limited[@]} -eq 0 ]; then
    rescue
else
    until_true 20 has_focus '^Save failed' || fail "$name: the failure was not shown"
    prlimit --pid "$pid" --fsize=unlimited:
    rescue
fi
[ -z "$(ls -A "$full")" ] || fail "half a picture stayed: $(ls -A "$full")"
next_capture_works
end_program

[ "$failures" -eq 0 ] && echo "faults: every picture was kept"
exit "$failures"
