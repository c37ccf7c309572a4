#!/usr/bin/env bash
# second_start.sh TAVREL: a later start hands its request over; broken settings, a killed instance and a log that
# cannot be written stop nothing.
set -u
tavrel=$(realpath "$1")
. "$(dirname "$0")/common.sh"
xsetroot -solid steelblue

# A settings value cut off in the middle, and a folder in the place of the log file.
write_settings '{"configSchemaVersion":9,"theme":"da'
mkdir -p "$(dirname "$log")"
expected_warnings=(设置无法读取)
start_program
first=${started[-1]}
log_has 设置无法读取 || fail "the broken settings were not reported"
grep -q settings_config_broken "$XDG_CONFIG_HOME/corvane/Tavrel.conf" || fail "the broken settings were not kept"

timeout 20 "$tavrel" --capture
[ $? -eq 0 ] || fail "the second start did not end with 0"
until_true 20 log_has 覆盖层首次绘制完成 || fail "the request was not carried out"
[ "$(grep -c 就绪，等待快捷键 "$log")" -eq 1 ] || fail "the second start became a second instance"
xdotool key Escape
until_true 20 log_has 截图会话结束 || fail "Esc did not end the session"

# Starts that ask for nothing are told how to use the one that runs, in one message that leaves the hotkey alone.
windows_named() { [ "$(xdotool search --onlyvisible --name "$1" | wc -l)" -eq "$2" ]; }
for i in 1 2 3; do
    timeout 20 "$tavrel" || fail "a bare start did not end with 0"
done
message='^(Tavrel is running|Tavrel 正在运行)$'
until_true 20 windows_named "$message" 1 || fail "no message, or more than one"
xdotool mousemove 60 60 key ctrl+1
until_true 20 log_count 覆盖层首次绘制完成 2 || fail "the message holds the hotkey back"
xdotool key Escape
until_true 20 log_count 截图会话结束 2 || fail "Esc did not end the second session"
windows_named "$message" 1 || fail "the message went away with the capture"

stop_watching
kill -9 "$first"
wait "$first" 2>/dev/null
close_log
mkdir "$log"
start "$tavrel"
second=${started[-1]}
# Until it holds the lock, the next start could become the instance itself.
holds_lock() { head -n 1 "$XDG_RUNTIME_DIR/org.corvane.tavrel.single.lock" | grep -qx "$second"; }
until_true 30 holds_lock || fail "no start after a kill"
shown() { xdotool search --name '^Tavrel' >/dev/null; }
timeout 20 "$tavrel" --capture
[ $? -eq 0 ] || fail "no answer from an instance without a log"
until_true 20 shown || fail "no overlay after a kill"
xdotool key Escape

kill -TERM "$second"
until_true 10 eval '! kill -0 $second 2>/dev/null' || fail "the program did not end on SIGTERM"
exit "$failures"
