#!/usr/bin/env bash
# try_in_fresh_root.sh DEB FOLDER [NEWER_DEB]
#
# Installs the package in a fresh Debian 12 below FOLDER, starts it on a virtual display there, captures with the
# hotkey, upgrades it, removes it, and looks for what was left behind. Needs root, the network and debootstrap. Leaves
# the pictures overlay.png and desktop.png in FOLDER.
set -eu
deb=$(realpath "$1")
mkdir -p "$2"
folder=$(realpath "$2")
newer=${3:+$(realpath "$3")}
root=$folder/root
mirror=$(apt-get indextargets --format '$(REPO_URI)' 2>/dev/null | head -n 1)
[ -d "$root/usr" ] || debootstrap --variant=minbase bookworm "$root" "${mirror:-https://deb.debian.org/debian}"
cp /etc/apt/apt.conf.d/*proxy* "$root/etc/apt/apt.conf.d/" 2>/dev/null || true
cp /etc/resolv.conf "$root/etc/" 2>/dev/null || true
in_root() { chroot "$root" /usr/bin/env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
mountpoint -q "$root/proc" || mount -t proc proc "$root/proc"
mountpoint -q "$root/dev" || mount --bind /dev "$root/dev"
trap 'umount "$root/dev" "$root/proc"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

in_root apt-get update -qq
in_root apt-get install -y -qq --no-install-recommends xvfb openbox xdotool imagemagick x11-utils fonts-dejavu-core >/dev/null
files() { (cd "$root" && find etc usr opt var -xdev \( -type f -o -type l \) ! -path 'var/cache/*' ! -path 'var/lib/apt/*' \
    ! -path 'var/lib/dpkg/*' ! -path 'var/log/*' | sort); }
cp "$deb" "$root/tmp/tavrel.deb"
# What the package pulls in stays; only its own traces are looked for.
in_root apt-get install -y -qq --no-install-recommends /tmp/tavrel.deb >/dev/null
in_root dpkg -P tavrel >/dev/null
files >"$folder/before"
in_root apt-get install -y -qq --no-install-recommends /tmp/tavrel.deb >/dev/null
in_root env QT_QPA_PLATFORM=offscreen tavrel --version

cat >"$root/tmp/capture.sh" <<'SH'
set -u
export XDG_RUNTIME_DIR=/tmp/run QT_QPA_PLATFORM=xcb DISPLAY=:9
mkdir -p /tmp/run; chmod 700 /tmp/run
Xvfb :9 -screen 0 1280x800x24 -nolisten tcp >/dev/null 2>&1 &
server=$!
sleep 2
openbox >/dev/null 2>&1 &
manager=$!
sleep 1
tavrel --hotkey-probe || echo "FAIL: hotkeys"
tavrel >/dev/null 2>&1 &
program=$!
sleep 2
import -window root /tmp/desktop.png
xdotool mousemove 600 400 key ctrl+1
sleep 2
import -window root /tmp/overlay.png
xdotool key Escape
sleep 1
tavrel --quit 2>/dev/null
sleep 1
kill -0 $program 2>/dev/null && echo "FAIL: --quit ended nothing"
kill $manager $server
wait
SH
in_root bash /tmp/capture.sh | tee "$folder/capture.txt"
cp "$root/tmp/overlay.png" "$root/tmp/desktop.png" "$folder"
grep -q FAIL "$folder/capture.txt" && fail "the capture"
cmp -s "$folder/overlay.png" "$folder/desktop.png" && fail "no overlay was seen"

if [ -n "$newer" ]; then
    cp "$newer" "$root/tmp/newer.deb"
    in_root apt-get install -y -qq --no-install-recommends /tmp/newer.deb >/dev/null
    in_root dpkg-query -W -f '${Package} ${Version} ${Status}\n' tavrel
fi
in_root dpkg -P tavrel >/dev/null
rm -rf "$root/root/.local" "$root/root/.config" "$root/root/.cache"
files >"$folder/after"
diff "$folder/before" "$folder/after" || fail "the package left something behind"
echo "installed, used, ${newer:+upgraded, }removed: nothing left behind"
