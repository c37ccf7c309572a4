#!/usr/bin/env bash
# try_in_fresh_root.sh DEB FOLDER [NEWER_DEB]
#
# Installs the package in a fresh Debian 12 below FOLDER, as a user there starts it on a virtual display, captures with
# the hotkey and copies a selection, upgrades the package under the running program, removes it, and looks for what was
# left behind. Needs root, the network and debootstrap. Leaves overlay.png, upgraded.png and selection.png in FOLDER; the
# fresh system is kept in FOLDER/root for the next time.
set -eu
[ $# -ge 2 ] || { sed -n '2s/^# //p' "$0" >&2; exit 2; }
deb=$(realpath "$1")
mkdir -p "$2"
folder=$(realpath "$2")
newer=${3:+$(realpath "$3")}
root=$folder/root
fail() { echo "FAIL: $*" >&2; exit 1; }

pids=()
finish() {
    local pid entry
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    wait
    # What these have started ends with them. Nothing that is left of them may hold on to the mounts.
    for entry in /proc/[0-9]*; do
        if [ "$(readlink "$entry/root" 2>/dev/null)" = "$root" ]; then kill "${entry#/proc/}" 2>/dev/null || true; fi
    done
    for entry in dev proc; do
        if mountpoint -q "$root/$entry"; then umount "$root/$entry" || umount -l "$root/$entry"; fi
    done
}

if [ ! -e "$folder/complete" ]; then
    if mountpoint -q "$root/dev" || mountpoint -q "$root/proc"; then fail "$root is in use"; fi
    rm -rf "$root"
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' 'Codename: bookworm' | head -n 1)
    # Without a mirror of this system's own, debootstrap knows one.
    debootstrap --variant=minbase bookworm "$root" ${mirror:+"$mirror"} >"$folder/debootstrap.log" ||
        { tail "$folder/debootstrap.log"; exit 1; }
    touch "$folder/complete"
fi
cp /etc/apt/apt.conf.d/*proxy* "$root/etc/apt/apt.conf.d/" 2>/dev/null || true
cp /etc/resolv.conf "$root/etc/" 2>/dev/null || true
trap finish EXIT
trap 'exit 143' TERM INT
mountpoint -q "$root/proc" || mount -t proc proc "$root/proc"
mountpoint -q "$root/dev" || mount --bind /dev "$root/dev"

in_root() {
    chroot "$root" /usr/bin/env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}
get() { in_root apt-get install -y -qq "$@" >"$folder/apt.log" 2>&1 || { cat "$folder/apt.log"; fail "apt-get install $*"; }; }

cp "$deb" "$root/tmp/tavrel.deb"
in_root apt-get update -qq
if in_root dpkg -s tavrel >/dev/null 2>&1; then in_root dpkg -P tavrel; fi
get --no-install-recommends xvfb openbox xdotool xclip imagemagick x11-utils x11-xserver-utils fonts-dejavu-core \
    desktop-file-utils shared-mime-info dbus
# Everything that the package asks for, so that what comes and goes below is the package alone.
mapfile -t asked < <(in_root apt-get install -s /tmp/tavrel.deb | sed -n 's/^Inst \([^ ]*\) .*/\1/p' | grep -vx tavrel)
[ ${#asked[@]} -eq 0 ] || get "${asked[@]}"
in_root id capturer >/dev/null 2>&1 || in_root useradd -m capturer
rm -rf "$root/home/capturer" "$root/tmp/session"
mkdir -p "$root/home/capturer" "$root/tmp/session" "$root/tmp/.X11-unix"
chmod 1777 "$root/tmp/.X11-unix"
chmod 700 "$root/tmp/session"
in_root chown capturer: /home/capturer /tmp/session
user=(chroot "--userspec=$(in_root id -u capturer):$(in_root id -g capturer)" "$root" /usr/bin/env -i -C /tmp/session
    HOME=/home/capturer PATH=/usr/bin:/bin LANG=C.UTF-8 XDG_RUNTIME_DIR=/tmp/session)

# Every file with its sum, but for what the package manager itself writes.
files() {
    (cd "$root" && find etc usr opt var \( -type f -o -type l \) ! -path 'var/cache/*' ! -path 'var/lib/apt/*' \
        ! -path 'var/lib/dpkg/*' ! -path 'var/log/*' -exec sh -c 'for f; do if [ -L "$f" ]; then
            printf "%s -> %s\n" "$f" "$(readlink "$f")"; else md5sum "$f"; fi; done' sh {} + | sort -k 2)
}
# The icon cache is the toolkit's, made when an icon comes or goes for the first time.
in_root dpkg-trigger --by-package=hicolor-icon-theme /usr/share/icons/hicolor 2>/dev/null || true
in_root dpkg --triggers-only -a
files >"$folder/before"

get /tmp/tavrel.deb
echo "installed: $("${user[@]}" QT_QPA_PLATFORM=offscreen tavrel --version 2>/dev/null)"
in_root dpkg -V tavrel || fail "the installed files are not those of the package"
grep -q '^application/x-tavrel=tavrel.desktop' "$root/usr/share/applications/mimeinfo.cache" || fail "no program for .tavrel"
grep -q '^application/x-tavrel:\*.tavrel' "$root/usr/share/mime/globs" || fail "the type of .tavrel is not known"
"${user[@]}" QT_QPA_PLATFORM=offscreen tavrel --language-probe 2>/dev/null | tee "$folder/languages.txt"
grep -q 'setting=zh .*app: 设置… | qt: 取消 ' "$folder/languages.txt" || fail "Chinese, or that of Qt, is missing"
grep -q 'setting=en .*app: Settings' "$folder/languages.txt" || fail "English is missing"

: >"$folder/display"
"${user[@]}" Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp -noreset 3>"$folder/display" >"$folder/xvfb.log" 2>&1 &
pids+=($!)
until_true() { # seconds command...
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        [ $SECONDS -lt $end ] || return 1
        sleep 0.1
    done
}
until_true 30 test -s "$folder/display" || fail "no display"
user+=("DISPLAY=:$(cat "$folder/display")")
"${user[@]}" xsetroot -mod 32 32 -fg '#5b7fa6' -bg '#d8dfe8'
"${user[@]}" openbox >/dev/null 2>&1 &
pids+=($!)
managed() { "${user[@]}" xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; }
until_true 30 managed || fail "no window manager"

overlay_is_up() {
    local id
    for id in $("${user[@]}" xdotool search --onlyvisible --classname '^tavrel$' 2>/dev/null); do
        if "${user[@]}" xdotool getwindowgeometry "$id" 2>/dev/null | grep -q 'Geometry: 1280x800'; then return 0; fi
    done
    return 1
}
overlay_is_down() { ! overlay_is_up; }
# captures COMMAND...: the command brings the overlay up; Escape takes it down.
captures() {
    "${user[@]}" "$@"
    until_true 20 overlay_is_up || fail "no overlay after: $*"
}
leave() {
    "${user[@]}" xdotool key Escape
    until_true 20 overlay_is_down || fail "the overlay stays"
}
start() {
    "${user[@]}" dbus-run-session -- tavrel >"$folder/tavrel.log" 2>&1 &
    program=$!
    pids+=("$program")
    until_true 30 test -S "$root/tmp/session/org.corvane.tavrel.single" || fail "the program did not come up"
}
quit() {
    "${user[@]}" tavrel --quit 2>/dev/null || fail "--quit"
    wait "$program" || fail "the program ended with $?"
}
ctrl_1=(xdotool mousemove 600 400 key ctrl+1)
picture() { "${user[@]}" import -window root "$1" && cp "$root/tmp/session/$1" "$folder"; }

"${user[@]}" tavrel --hotkey-probe 2>/dev/null || fail "the hotkeys"
start
captures "${ctrl_1[@]}"
picture overlay.png
"${user[@]}" xdotool mousemove 300 200 mousedown 1 mousemove 500 350 mousemove 700 500 mouseup 1 key Return
until_true 20 overlay_is_down || fail "the overlay stays"
copied() { "${user[@]}" timeout 5 xclip -selection clipboard -t image/png -o >"$folder/selection.png" 2>/dev/null; }
until_true 20 copied || fail "nothing was copied"
echo "captured by Ctrl+1, copied: $(chroot "$root" identify -format '%wx%h' png:- <"$folder/selection.png")"

if [ -n "$newer" ]; then
    cp "$newer" "$root/tmp/newer.deb"
    get /tmp/newer.deb
    echo "upgraded: $("${user[@]}" QT_QPA_PLATFORM=offscreen tavrel --version 2>/dev/null)"
    kill -0 "$program" || fail "the running program did not outlive the upgrade"
    captures "${ctrl_1[@]}"
    leave
    captures tavrel --capture
    leave
    quit
    start
    captures "${ctrl_1[@]}"
    picture upgraded.png
    leave
    echo "the program that ran and the new one capture"
fi
quit

in_root apt-get remove -y -qq tavrel >"$folder/apt.log" 2>&1 || { cat "$folder/apt.log"; fail "apt-get remove"; }
! in_root dpkg-query -W tavrel 2>/dev/null || fail "the package manager still knows it"
files >"$folder/after"
diff "$folder/before" "$folder/after" || fail "the package left something behind"
echo "removed: $(wc -l <"$folder/before") files as they were before"
