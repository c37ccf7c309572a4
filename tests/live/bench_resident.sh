#!/usr/bin/env bash
# bench_resident.sh TAVREL SCREEN OUT: from the start of the process to hotkeys grabbed and tray up, over 10 starts, and
# wake-ups a second of the whole program while nothing happens.
set -u
tavrel=$(realpath "$1")
screen=$2
out=$(realpath "$3")
. "$(dirname "$0")/common.sh"
xsetroot -solid steelblue
cat >"$home/tint2rc" <<'RC'
panel_items = TS
panel_size = 100% 32
RC
start tint2 -c "$home/tint2rc" >/dev/null 2>&1
until_true 20 eval 'xwininfo -root -children | grep -q tint2'

took=()
for i in 1 2 3 4 5 6 7 8 9 10; do
    rm -f "$log"
    begun=$(date +%s%N)
    start "$tavrel" 2>/dev/null
    until_true 30 log_has 就绪，等待快捷键 || { echo "the program did not start" >&2; exit 1; }
    ready=$(date -d "$(grep -F 就绪 "$log" | command cut -d' ' -f1,2)" +%s%N)
    took+=($(((ready - begun) / 1000000)))
    [ "$i" = 10 ] || { kill "${started[-1]}"; wait "${started[-1]}" 2>/dev/null; }
done
sorted=$(printf '%s\n' "${took[@]}" | sort -n)
echo "start to ready, $screen: median $(sed -n 5p <<<"$sorted") ms, worst $(tail -n 1 <<<"$sorted") ms of ${#took[@]} starts" |
    tee "$out/start_$screen.txt"

# Of each thread that is there; one that has ended has no more wake-ups.
switches() { awk '/ctxt_switches/ { n[FILENAME] += $2 } END { for (f in n) print f, n[f] }' /proc/"${started[-1]}"/task/*/status | sort; }
sleep 12 # what a start leaves to do is done by then
switches >"$home/before"
sleep 20
switches >"$home/after"
join "$home/before" "$home/after" |
    awk '{ n += $3 - $2 } END { printf "idle wake-ups of all threads: %.1f a second\n", n / 20 }' |
    tee "$out/wakeups_$screen.txt"
