#!/usr/bin/env bash
# bench_capture.sh TAVREL SCREEN OUT: hotkey to painted overlay over 30 presses, idle memory, and memory after 50
# sessions, of the whole program on the display at hand.
set -u
tavrel=$(realpath "$1")
screen=$2
out=$(realpath "$3")
tools=$(dirname "$tavrel")/../../bench
. "$(dirname "$0")/common.sh"
dress_desktop "${screen%x*}" "${screen#*x}"
start "$tavrel"
pid=${started[-1]}
until_true 30 log_has 就绪，等待快捷键 || { echo "the program did not start" >&2; exit 1; }
sleep 2
resident() { awk '/VmRSS/ {printf "%.1f", $2 / 1024}' "/proc/$pid/status"; }

idle=$(resident)
"$tools/press_to_paint" 30 >"$out/press_to_paint_$screen.json" || exit 1
echo "hotkey to painted overlay, $screen: $(cat "$out/press_to_paint_$screen.json")"
warm=$(resident)
sleep 13
rested=$(resident)
"$tools/press_to_paint" 50 >/dev/null || exit 1
sleep 13 # memory is given back after ten idle seconds
after=$(resident)
echo "resident memory, $screen: idle $idle MB, after 30 sessions $warm MB and rested $rested MB, after 50 more and rested $after MB" |
    tee "$out/memory_$screen.txt"
