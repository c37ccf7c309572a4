#!/usr/bin/env bash
# hw_probe.sh TAVREL OUT: the program injects input and reports what its own monitor saw of it.
set -u
tavrel=$1
. "$(dirname "$0")/common.sh"

report=$("$tavrel" --hw-probe 2>/dev/null) || fail "the probe ended with $?"
seen=$(awk -F'\t' '/ ms\t/ {
    code = $5; sub(/^键码 /, "", code)
    line = line (line ? "," : "") $2 ":" $4 ":" $6 (code == "0" ? "" : ":code")
} END { print line }' <<<"$report")
expected='移动:按钮 0:键名 ,移动:按钮 0:键名 ,按下:按钮 1:键名 ,松开:按钮 1:键名 ,滚轮:按钮 0:键名 ,键按下:按钮 0:键名 F13:code,键松开:按钮 0:键名 F13:code'
[ "$seen" = "$expected" ] || fail "seen: $seen"
grep -q '^全部看到：记录 7 个事件，其中 4 个即时送达$' <<<"$report" || fail "no verdict in: $report"

QT_QPA_PLATFORM=offscreen "$tavrel" --hw-probe >/dev/null 2>&1
[ $? -eq 1 ] || fail "without a monitor it should end with 1"
"$tavrel" --hw-probe nonsense >/dev/null 2>&1
[ $? -eq 2 ] || fail "a wrong argument was taken"
exit $((failures > 0))
