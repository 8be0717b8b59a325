#!/bin/bash
# Installs the Debian package in a bare Debian root of its own, as apt would for a user, and runs the program
# there on a virtual X server. By hand and as root: it needs debootstrap and package downloads.
#
#   bare_root.sh PACKAGE.deb [BARE]     BARE: a folder with a bare root to copy; otherwise one is made
#
# The roots are made and removed below TMPDIR.
set -eu
package=$(realpath "$1")
bare=${2:-}
root=$(mktemp -d "${TMPDIR:-/tmp}/clipwren-root.XXXXXX")
mounted=()
cleanup() {
    for point in "${mounted[@]}"; do umount "$point" || true; done
    # Nothing may be removed through a mount that is still there.
    grep -q " $root/" /proc/mounts || rm -rf "$root"
}
trap cleanup EXIT
fail() {
    echo "bare_root.sh: $1" >&2
    exit 1
}

if [ -n "$bare" ]; then
    cp -a "$bare/." "$root"
else
    debootstrap --variant=minbase bookworm "$root" >&2
fi
mount -t proc proc "$root/proc" && mounted+=("$root/proc")
cp /etc/resolv.conf "$root/etc/resolv.conf"
cp "$package" "$root/tmp/clipwren.deb"
inside() { env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive chroot "$root" "$@"; }

inside apt-get update -q >&2
# Only what the package says that it needs: whatever it forgets is missed below.
inside apt-get install -q -y --no-install-recommends /tmp/clipwren.deb >&2
unresolved=$(inside ldd /usr/bin/clipwren | grep 'not found' || true)
[ -z "$unresolved" ] || fail "libraries are missing: $unresolved"

# The tools of this check come after the program has everything of its own.
inside apt-get install -q -y --no-install-recommends xvfb x11-utils dbus >&2
inside useradd --create-home user
cat >"$root/tmp/run.sh" <<'RUN'
set -eu
export HOME=/home/user XDG_RUNTIME_DIR=/tmp/run QT_LOGGING_RULES=
mkdir -m 700 "$XDG_RUNTIME_DIR"
mkfifo /tmp/number
Xvfb -displayfd 3 -screen 0 1280x800x24 -noreset -nolisten tcp 3>/tmp/number 2>/tmp/xvfb.log &
server=$!
trap 'kill $server' EXIT
read -r number </tmp/number
export DISPLAY=:$number
dbus-run-session -- sh -eu -c '
    clipwren 2>/tmp/clipwren.log &
    program=$!
    sleep 3
    kill -0 $program
    # A second start shows the settings of the first; they are a window with a title.
    timeout 20 clipwren
    for i in 1 2 3 4 5 6 7 8 9 10; do
        xwininfo -root -tree | grep "\"Settings\"" && break
        sleep 0.5
    done
    xwininfo -root -tree | grep -q "\"Settings\""
    timeout 20 clipwren --quit
    wait $program
'
RUN
inside su user -c 'sh /tmp/run.sh' || fail "the program does not run there: $(cat "$root/tmp/clipwren.log")"
[ ! -s "$root/tmp/clipwren.log" ] || cat "$root/tmp/clipwren.log" >&2

inside apt-get purge -q -y clipwren >&2
left=$(find "$root/usr" -name '*clipwren*' | head)
[ -z "$left" ] || fail "the package leaves behind: $left"
echo 'bare_root.sh: installed, ran and went without a trace'
