#!/usr/bin/env bash
# Installs a Wagemill package in a fresh minimal Debian, starts it from its menu entry, looks whether the windows open,
# removes it, and compares what is left with what was there before. As root, with debootstrap and network:
# packaging/test_in_clean_root.sh PACKAGE.deb [PICTURES_FOLDER]
set -euo pipefail
[ $# -ge 1 ] && [ "$(id -u)" -eq 0 ] || { sed -n '2,4s/^# //p' "$0" >&2; exit 2; }
package=$(realpath "$1")
pictures=${2:+$(realpath "$2")}
command -v debootstrap >/dev/null || apt-get install -y -qq --no-install-recommends debootstrap >/dev/null

root=$(mktemp -d /var/tmp/wagemill-root-XXXXXX)
chmod 755 "$root"
trap 'rm -rf --one-file-system "$root"' EXIT
echo "Making a minimal Debian in $root ..."
debootstrap --variant=minbase "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$root" >"$root.log" ||
    { tail "$root.log" >&2; exit 1; }
rm "$root.log"
# What makes packages reachable from this machine, where anything is needed for that.
grep -lisE '^Acquire::' /etc/apt/apt.conf /etc/apt/apt.conf.d/* | xargs -r cp -t "$root/etc/apt/apt.conf.d" || true
cp "$package" "$root/wagemill.deb"

cat >"$root/test.sh" <<'INSIDE'
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
quietly() { "$@" >/tmp/log 2>&1 || { tail -20 /tmp/log; echo "FAILED: $*"; exit 1; }; }
# Files and folders with their permissions, but for what every installation of anything writes to.
listing() {
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /tmp -o -path /run -o -path /home \
        -o -path /var/log -o -path /var/cache -o -path /var/lib/apt -o -path /var/lib/dpkg \) -prune \
        -o -printf '%M %p\n' | sort
}
asUser() { runuser -u tester -- env HOME=/home/tester XDG_RUNTIME_DIR=/home/tester/run DISPLAY=:7 "$@"; }
# The windows with that title; none is not an error.
windows() { asUser xdotool search --onlyvisible --name '^Wagemill$' 2>/dev/null || true; }
waitFor() { # waitFor WHAT CONDITION...
    local what=$1 attempt
    shift
    for attempt in $(seq 100); do "$@" && { echo "ok: $what"; return; }; sleep 0.2; done
    echo "FAILED: $what"
    cat /tmp/program.log
    exit 1
}
isOpen() { [ -n "$(windows)" ]; }
hasEnded() { ! pgrep -x wagemill >/dev/null; }
picture() { [ ! -d /tmp/pictures ] || asUser import -window root "/tmp/pictures/$1.png"; }

apt-get update -qq
quietly apt-get install -y --no-install-recommends xvfb openbox xdotool libglib2.0-bin procps imagemagick
useradd -m tester
install -d -o tester -m 700 /home/tester/run
[ ! -d /tmp/pictures ] || chown tester /tmp/pictures

# Once in and out, so that what is compared below holds the libraries already: they stay until an autoremove.
quietly apt-get install -y --no-install-recommends /wagemill.deb
quietly apt-get purge -y wagemill
listing >/tmp/before
quietly apt-get install -y --no-install-recommends /wagemill.deb
echo "ok: installs with $(dpkg-query -W | wc -l) packages in the system"

Xvfb :7 -screen 0 1280x960x24 -nolisten tcp >/dev/null 2>&1 &
waitFor "a display" test -S /tmp/.X11-unix/X7
asUser openbox >/dev/null 2>&1 &
waitFor "a window manager" sh -c 'DISPLAY=:7 xdotool get_num_desktops >/dev/null 2>&1'

asUser gio launch /usr/share/applications/wagemill.desktop >/tmp/program.log 2>&1 &
waitFor "starts from the menu entry and opens its window" isOpen
sleep 1
picture menu-entry
[ "$(readlink "/proc/$(pgrep -x wagemill)/exe")" = /usr/lib/wagemill/wagemill ] && echo "ok: runs from its private folder"
asUser xdotool key alt+F4
waitFor "closes, and ends with its window" hasEnded

# The menu's action, as a desktop starts it.
action=$(sed -n '/^\[Desktop Action /,$s/^Exec=//p' /usr/share/applications/wagemill.desktop)
asUser $action >/tmp/program.log 2>&1 &
waitFor "starts by the menu's action: $action" isOpen
sleep 1
picture menu-action
asUser xdotool key alt+F4
waitFor "closes again" hasEnded
[ -z "$(ls -A /home/tester/run)" ] && echo "ok: leaves no temporary file" || { ls -lR /home/tester/run; exit 1; }

quietly apt-get purge -y wagemill
listing >/tmp/after
diff /tmp/before /tmp/after && echo "ok: removes itself, nothing is left" || { echo "FAILED: see what is left above"; exit 1; }
echo "The user's own settings stay: $(cd /home/tester && find .config -name '*.sqlite')"
INSIDE
[ -z "$pictures" ] || { mkdir -p "$pictures" "$root/tmp/pictures"; }
status=0
# In a process namespace of its own, so that everything started inside ends with it, and its mounts go.
unshare --mount --pid --fork --mount-proc="$root/proc" chroot "$root" /bin/bash /test.sh || status=$?
[ -z "$pictures" ] || cp "$root"/tmp/pictures/* "$pictures"/
exit $status
