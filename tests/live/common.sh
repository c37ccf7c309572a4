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
failures=0

# Runs in the background and is ended with the script.
start() {
    "$@" &
    started+=($!)
}

finish() {
    local i
    for ((i = ${#started[@]} - 1; i >= 0; i--)); do
        kill "${started[i]}" 2>/dev/null
        wait "${started[i]}" 2>/dev/null
    done
    rm -rf "$home"
}
trap finish EXIT

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

# A desktop with something to look at, in a root pixmap as desktops keep it, which compositors paint.
dress_desktop() {
    # Made small and enlarged: the noise itself is slow to draw.
    convert -seed 7 -size "$(($1 / 4))x$(($2 / 4))" -depth 8 plasma:steelblue-wheat -blur 0x1 -filter Triangle \
        -resize "$1x$2!" "$home/desktop.png"
    feh --no-fehbg --bg-fill "$home/desktop.png"
    painted() {
        import -window root "$home/painted.png"
        [ "$(compare -metric AE "$home/painted.png" "$home/desktop.png" null: 2>&1)" = 0 ]
    }
    until_true 20 painted || fail "the desktop was not painted"
}

# drag X1 Y1 X2 Y2 with the left button, in steps as a hand would
drag() {
    xdotool mousemove "$1" "$2" mousedown 1
    local i
    for i in 1 2 3 4 5 6 7 8; do
        xdotool mousemove $(($1 + ($3 - $1) * i / 8)) $(($2 + ($4 - $2) * i / 8))
    done
    xdotool mouseup 1
}
