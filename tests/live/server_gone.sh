#!/usr/bin/env bash
# server_gone.sh TAVREL: the X server ends under the program, at rest and during a capture. It ends too, with a message
# and not by a signal.
set -u
tavrel=$(realpath "$1")
. "$(dirname "$0")/common.sh"
expected_warnings=("X11 connection broke" "The X11 connection" 与\ X\ 服务器的连接已断开)
for state in rest capture; do
    rm -f "$home/display"
    mkfifo "$home/display"
    Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$home/display" >/dev/null 2>&1 &
    server=$!
    started+=($server)
    read -r -t 30 number <"$home/display"
    DISPLAY=:$number start_program
    program=${started[-1]}
    if [ "$state" = capture ]; then
        DISPLAY=:$number "$tavrel" --capture
        until_true 20 log_has 覆盖层首次绘制完成 || fail "no overlay"
    fi
    kill -9 "$server"
    until_true 30 eval "! kill -0 $program 2>/dev/null" || fail "$state: the program goes on without a server"
    wait "$program"
    code=$?
    [ "$code" -gt 0 ] && [ "$code" -lt 126 ] || fail "$state: it ended with $code"
    log_has "X11 connection broke" || log_has "与 X 服务器的连接已断开" || fail "$state: the log says nothing"
    close_log
done
exit "$failures"
