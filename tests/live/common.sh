# Helpers for scripts that drive the real program from outside. Source it; the caller sets `set -u`.

home=$(mktemp -d)
export HOME=$home XDG_CONFIG_HOME=$home/.config XDG_DATA_HOME=$home/.local/share XDG_CACHE_HOME=$home/.cache
export XDG_RUNTIME_DIR=$home/run
mkdir -p "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
unset SESSION_MANAGER
export DBUS_SESSION_BUS_ADDRESS=${TAVREL_LIVE_BUS:-unix:path=/nonexistent}
log=$XDG_DATA_HOME/corvane/Tavrel/logs/tavrel.log
started=()
watchers=() # heartbeats, which must not see a program end
failures=0
# Warnings of the program that belong to what a script does to it: extended regular expressions.
expected_warnings=()

# Runs in the background and is ended with the script.
start() {
    "$@" &
    started+=($!)
}

# start_program [COMMAND...]: the program under test, ready for its hotkeys and watched from then on.
start_program() {
    start "$@" "$tavrel"
    until_true 30 log_has 就绪，等待快捷键 || fail "the program did not start"
    watch "${started[-1]}"
}

watch() { # PID
    watched=$1
    [ -n "${TAVREL_HEARTBEAT:-}" ] || return
    "$TAVREL_HEARTBEAT" "$1" "${TAVREL_STALL_MS:-200}" >>"$home/stalls" &
    watchers+=($!)
}

stop_watching() {
    local watcher
    for watcher in "${watchers[@]}"; do
        kill "$watcher" 2>/dev/null
        wait "$watcher" 2>/dev/null
    done
    watchers=()
}

# Looks at the log of a program that has done its part, and puts it away.
close_log() {
    local line pattern
    [ -f "$log" ] || return
    grep -E '\[(WARN |ERROR|FATAL)\]' "$log" >"$home/warnings"
    while IFS= read -r line; do
        for pattern in "${expected_warnings[@]}"; do
            [[ $line =~ $pattern ]] && continue 2
        done
        fail "unexpected in the log: $line"
    done <"$home/warnings"
    rm -f "$log"
}

# end_program: ends the one that was started last.
end_program() {
    stop_watching
    kill "${started[-1]}" 2>/dev/null
    wait "${started[-1]}" 2>/dev/null
    unset 'started[-1]'
    close_log
}

# However the script ends: all that it started is ended, and what its programs complained of is told.
finish() {
    local code=$? i
    stop_watching
    for ((i = ${#started[@]} - 1; i >= 0; i--)); do
        kill "${started[i]}" 2>/dev/null
        wait "${started[i]}" 2>/dev/null
    done
    close_log
    while IFS= read -r line; do
        fail "the program stood still: $line"
    done < <(cat "$home/stalls" 2>/dev/null)
    rm -rf "$home"
    [ "$code" -ne 0 ] || code=$((failures > 0))
    exit "$code"
}
trap finish EXIT
trap 'exit 143' TERM INT

fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}

# until_true SECONDS COMMAND...: polls until the command succeeds.
until_true() {
    local deadline=$((SECONDS + $1))
    shift
    until "$@" >/dev/null 2>&1; do
        [ "$SECONDS" -lt "$deadline" ] || return 1
        sleep 0.02
    done
}

log_has() { grep -qF -- "$1" "$log"; }
log_count() { [ "$(grep -cF -- "$1" "$log")" -ge "$2" ]; }

write_settings() { # the settings document as JSON
    mkdir -p "$XDG_CONFIG_HOME/corvane"
    local escaped=${1//\"/\\\"}
    printf '[General]\nsettings_config="%s"\n' "$escaped" >"$XDG_CONFIG_HOME/corvane/Tavrel.conf"
}

# Pictures of the screen are kept as PPM: packing one of a whole desktop into a PNG takes seconds, writing it does not.
shoot() { import -window root -depth 8 "$@"; } # [-crop GEOMETRY +repage] FILE.ppm
keep() { convert "$1" -quality 10 "$2"; }      # for somebody to look at
differing() { compare -metric AE "$1" "$2" null: 2>&1; }
same() { cmp -s "$1" "$2" || [ "$(differing "$1" "$2")" = 0 ]; }
# The part WxH+X+Y of a picture.
cut() { convert "$1" -crop "$2" +repage "$3"; }

# settle FILE.ppm: waits until the screen has come to rest, three looks in a row the same, and keeps the last.
settle() {
    local equal=0 deadline=$((SECONDS + 20))
    shoot "$1"
    while [ "$equal" -lt 2 ] && [ "$SECONDS" -lt "$deadline" ]; do
        sleep 0.05
        shoot "$home/next.ppm"
        if cmp -s "$1" "$home/next.ppm"; then equal=$((equal + 1)); else equal=0; fi
        mv "$home/next.ppm" "$1"
    done
    [ "$equal" -ge 2 ] || fail "the screen does not come to rest"
}

# copied FILE: waits for a picture on the clipboard. Whoever asks while it is still being packed makes the program wait,
# for the toolkit has to answer on the spot; that is not watched.
copied() {
    stop_watching
    got_picture() { xclip -selection clipboard -t image/png -o >"$1" 2>/dev/null && [ -s "$1" ]; }
    until_true 20 got_picture "$1" || fail "no picture on the clipboard"
    watch "$watched"
}

# A desktop with something to look at, in a root pixmap as desktops keep it, which compositors paint.
dress_desktop() {
    # Made small and enlarged: the noise itself is slow to draw.
    convert -seed 7 -size "$(($1 / 8))x$(($2 / 8))" -depth 8 plasma:steelblue-wheat -blur 0x1 -filter Triangle \
        -resize "$1x$2!" "$home/desktop.ppm"
    feh --no-fehbg --bg-fill "$home/desktop.ppm"
    painted() {
        shoot "$home/painted.ppm"
        cmp -s "$home/painted.ppm" "$home/desktop.ppm"
    }
    until_true 20 painted || fail "the desktop was not painted"
}

# drag X1 Y1 X2 Y2 with the left button, in steps as a hand would
drag() {
    local i steps=()
    for i in 1 2 3 4 5 6 7 8; do
        steps+=(mousemove $(($1 + ($3 - $1) * i / 8)) $(($2 + ($4 - $2) * i / 8)))
    done
    xdotool mousemove "$1" "$2" mousedown 1 "${steps[@]}" mouseup 1
}
