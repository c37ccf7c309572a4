#!/usr/bin/env bash
# with_display.sh [--wm openbox|bare|picom] [--screen WxH] COMMAND...
#
# Runs COMMAND on a virtual X server of its own and ends everything it started. The server picks its display number
# itself, so any number of these run side by side.
#   openbox   with a window manager     bare   without one     picom   window manager and compositor
set -u
wm=openbox
screen=1920x1080
while [ $# -gt 0 ]; do
    case "$1" in
        --wm) wm=$2; shift 2 ;;
        --screen) screen=$2; shift 2 ;;
        *) break ;;
    esac
done
[ $# -gt 0 ] || { echo "usage: with_display.sh [--wm openbox|bare|picom] [--screen WxH] COMMAND..." >&2; exit 2; }

scratch=$(mktemp -d) || exit 1
pids=()
# What of the command's is still there, by what it inherited.
left_behind() { grep -lsz "^TAVREL_TEST_DISPLAY=$scratch$" /proc/[0-9]*/environ | sed 's|/proc/\([0-9]*\)/.*|\1|'; }
finish() {
    local code=$? i left
    for ((i = ${#pids[@]} - 1; i >= 0; i--)); do
        kill "${pids[i]}" 2>/dev/null && wait "${pids[i]}" 2>/dev/null
    done
    # Clients of the server and of a bus end with it, which takes them a moment.
    for ((i = 0; i < 100; i++)); do
        left=$(left_behind)
        [ -n "$left" ] || break
        sleep 0.05
    done
    if [ -n "$left" ]; then
        echo "left behind: $(for i in $left; do tr '\0' ' ' <"/proc/$i/cmdline"; echo "($i)"; done 2>/dev/null)" >&2
        kill -9 $left 2>/dev/null
        [ "$code" -ne 0 ] || code=1
    fi
    rm -rf "$scratch"
    exit "$code"
}
trap finish EXIT
trap 'exit 143' TERM INT

mkfifo "$scratch/display"
Xvfb -displayfd 3 -screen 0 "${screen}x24" -nolisten tcp -noreset +extension Composite +extension XTEST \
    3>"$scratch/display" >"$scratch/xvfb.log" 2>&1 &
pids+=($!)
read -r -t 30 number <"$scratch/display" || { cat "$scratch/xvfb.log" >&2; exit 1; }
export DISPLAY=:$number TAVREL_TEST_WM=$wm
unset WAYLAND_DISPLAY XAUTHORITY

# The window manager runs this command when it is about to wait for events. Its mark on the root comes earlier, and a
# window that is opened in between is never managed.
wait_for_wm() {
    local i
    for ((i = 0; i < 600; i++)); do
        [ -e "$scratch/wm-ready" ] && return 0
        sleep 0.05
    done
    echo "the window manager did not come up" >&2
    return 1
}
case "$wm" in
    bare) ;;
    openbox | picom)
        HOME="$scratch" XDG_CONFIG_HOME="$scratch" XDG_CACHE_HOME="$scratch" openbox \
            --startup "touch $scratch/wm-ready" >"$scratch/openbox.log" 2>&1 &
        pids+=($!)
        wait_for_wm || exit 1
        ;;
    *) echo "unknown window manager: $wm" >&2; exit 2 ;;
esac
if [ "$wm" = picom ]; then
    HOME="$scratch" XDG_CONFIG_HOME="$scratch" picom --backend xrender --config /dev/null >"$scratch/picom.log" 2>&1 &
    pids+=($!)
    # It is at work when it has its window, with which it claims the screen.
    for ((i = 0; i < 200; i++)); do
        xwininfo -root -children 2>/dev/null | grep -q '"picom"' && break
        sleep 0.05
    done
fi

TAVREL_TEST_DISPLAY=$scratch "$@"
