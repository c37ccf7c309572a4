#!/usr/bin/env bash
# chrome_probe.sh TAVREL OUT: the window chrome as the program itself reports it, on a desktop of 1280 x 800.
set -u
tavrel=$1
. "$(dirname "$0")/common.sh"

report=$("$tavrel" --window-chrome-probe 2>/dev/null) || fail "the probe ended with $?"
has() { grep -qE -- "$1" <<<"$report" || fail "no line \"$1\" in:
$report"; }
# No frame but its own; the buttons at the right end of the title bar; no hairline while it fills the screen.
has '^普通：几何 ([^ ]+ 640×420)，外框 \1，边距 0,0,0,0，描边 显示，按钮 502,10 138×32$'
has '^最大化：几何 0,0 1280×800，外框 0,0 1280×800，边距 0,0,0,0，描边 隐藏，按钮 1142,10 138×32$'
has '^还原：几何 ([^ ]+ 640×420)，外框 \1，边距 0,0,0,0，描边 显示，按钮 502,10 138×32$'
[ "$(sed -n 's/^普通：几何 \([^ ]*\) .*/\1/p' <<<"$report")" = "$(sed -n 's/^还原：几何 \([^ ]*\) .*/\1/p' <<<"$report")" ] ||
    fail "restored to another place"
"$tavrel" --window-chrome-probe nonsense >/dev/null 2>&1
[ $? -eq 2 ] || fail "a wrong argument was taken"
exit $((failures > 0))
