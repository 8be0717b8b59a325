#!/bin/bash
# A virtual X11 desktop of its own: server, monitors, window manager, compositor, panel, D-Bus session, an empty
# system bus and home folder. Nothing of the caller's session is seen or changed.
#
#   desktop.sh [options] -- command [arguments]   runs a command inside; its exit status is passed on
#   desktop.sh [options] -s shot.png              brings it up, takes a screenshot, takes it down
#
#   -d :N        display number; the first free one otherwise
#   -x SERVER    xvfb (one output) | xorg (with the dummy driver: an output for each monitor, which can be unplugged)
#   -g 1920x1080 size of xvfb's framebuffer
#   -m 1|2|3     monitors; 2 = 1280x1024+0+0 (primary) and 640x800+1280+100, gaps above and below
#                3 = 1280x1024+0+0 (primary), 640x800+1400+100 and 800x600+2200+300, which do not touch
#                Names: LEFT, RIGHT, FAR; with xorg DUMMY0, DUMMY1, DUMMY2
#   -w WM        openbox | xfwm4 (with its compositor) | xfwm4-nocomp | none
#   -c COMP      picom | none
#   -p PANEL     xfce | mate | trayer | tint2 | none
#   -b '#rrggbb' background of the desktop
#   -l FOLDER    where the logs of server, window manager, ... go; otherwise they are thrown away
#   -t SECONDS   longest time for the command, then it is ended and the status is 124
#   -s FILE      screenshot at the end
#
# Inside, XSERVER_PID is the server's process, PANEL_PID the panel's, PANEL_COMMAND how the panel was started, and
# DESKTOP_FOLDER the private folder that goes away at the end.
# Status 125: the desktop did not come up; the reason is on standard error.
set -u
display='' server=xvfb geometry='' monitors=1 manager=openbox compositor=none panel=none
background='#3a6ea5' logs='' limit=600 shot=''
while getopts d:x:g:m:w:c:p:b:l:t:s: option; do
    case $option in
    d) display=$OPTARG ;; x) server=$OPTARG ;; g) geometry=$OPTARG ;; m) monitors=$OPTARG ;; w) manager=$OPTARG ;;
    c) compositor=$OPTARG ;; p) panel=$OPTARG ;; b) background=$OPTARG ;; l) logs=$OPTARG ;;
    t) limit=$OPTARG ;; s) shot=$OPTARG ;; *) exit 125 ;;
    esac
done
shift $((OPTIND - 1))
[ "${1:-}" = -- ] && shift

folder=$(mktemp -d "${TMPDIR:-/tmp}/clipwren-desktop.XXXXXX") || exit 125
logs=${logs:-$folder/log}
mkdir -p "$logs" "$folder/run" "$folder/home/Pictures" "$folder/home/.config" "$folder/home/.cache"
chmod 700 "$folder/run"

# Everything that runs here is ended in the reverse order: first the command, last the server.
pids=()
# Waits for a process that was told to end, at most 3 s, then ends it for good.
end() {
    kill "$1" 2>/dev/null || return 0
    for _ in $(seq 60); do
        kill -0 "$1" 2>/dev/null || break
        sleep 0.05
    done
    kill -9 "$1" 2>/dev/null
    wait "$1" 2>/dev/null
}
cleanup() {
    trap - EXIT
    for ((i = ${#pids[@]} - 1; i >= 0; i--)); do end "${pids[i]}"; done
    rm -rf "$folder" 2>/dev/null || { sleep 0.5; rm -rf "$folder"; }
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP
fail() {
    echo "desktop.sh: $1" >&2
    [ -s "$logs/${2:-}" ] && tail -n 20 "$logs/$2" >&2
    exit 125
}
background() {
    local name=$1
    shift
    "$@" </dev/null >"$logs/$name" 2>&1 &
    pids+=($!)
}
# await SECONDS COMMAND...: polls until the command succeeds.
await() {
    local rounds=$(($1 * 20))
    shift
    for _ in $(seq "$rounds"); do
        "$@" >/dev/null 2>&1 && return 0
        sleep 0.05
    done
    return 1
}
# The owner of a selection tells that a compositor or a tray runs; no shell tool shows it.
awaitSelection() {
    /usr/bin/python3 - "$1" <<'PYTHON'
import sys, time
from Xlib import display
d = display.Display()
for _ in range(200):
    if d.get_selection_owner(d.intern_atom(sys.argv[1])):
        sys.exit(0)
    time.sleep(0.05)
sys.exit(1)
PYTHON
}

# -noreset is vital: without it the server resets, and forgets its monitors, when the last client leaves.
common=(-noreset -nolisten tcp +extension Composite)
places=(1280x1024+0+0 640x800+1280+100)
[ "$monitors" != 3 ] || places=(1280x1024+0+0 640x800+1400+100 800x600+2200+300)
case $server in
xvfb)
    [ "$monitors" != 3 ] || geometry=${geometry:-3000x1080}
    program=(Xvfb -screen 0 "${geometry:-1920x1080}x24" "${common[@]}")
    ;;
xorg)
    # Xorg itself: the wrapper of that name would ask for a console.
    program=(/usr/lib/xorg/Xorg -config "$folder/xorg.conf" -logfile "$logs/xorg" -novtswitch -keeptty "${common[@]}")
    cat >"$folder/xorg.conf" <<'CONFIGURATION'
Section "ServerFlags"
    Option "AutoAddDevices" "false"
EndSection
Section "Device"
    Identifier "card"
    Driver "dummy"
    VideoRam 131072
EndSection
Section "Monitor"
    Identifier "monitor"
    HorizSync 1-1000
    VertRefresh 1-1000
    Modeline "1280x1024" 100 1280 1290 1300 1310 1024 1030 1040 1050
    Modeline "640x800" 50 640 650 660 670 800 810 820 830
EndSection
Section "Screen"
    Identifier "screen"
    Device "card"
    Monitor "monitor"
    DefaultDepth 24
    SubSection "Display"
        Depth 24
        Virtual 4096 2160
        Modes "1280x1024"
    EndSubSection
EndSection
CONFIGURATION
    ;;
*) fail "no such server: $server" ;;
esac
if [ -n "$display" ]; then
    background xserver "${program[@]}" "$display"
    export DISPLAY=$display
    # A foreign server on that display would answer as well.
    await 10 xdpyinfo && kill -0 "${pids[0]}" 2>/dev/null || fail "no X server on $display" xserver
else
    mkfifo "$folder/number"
    exec 9<>"$folder/number"
    background xserver "${program[@]}" -displayfd 9
    read -r -t 10 number <&9 || fail 'the X server did not start' xserver
    exec 9>&-
    export DISPLAY=:$number
fi
export XSERVER_PID=${pids[0]} DESKTOP_FOLDER=$folder

# What the caller's session and toolkits were told must not leak in.
unset WAYLAND_DISPLAY SESSION_MANAGER XAUTHORITY DBUS_SESSION_BUS_ADDRESS LC_ALL
for variable in $(compgen -e | grep -E '^(QT|GTK|GDK|XDG|LC)_'); do unset "$variable"; done
export HOME=$folder/home XDG_RUNTIME_DIR=$folder/run XDG_CONFIG_HOME=$folder/home/.config \
    XDG_CACHE_HOME=$folder/home/.cache XDG_DATA_HOME=$folder/home/.local/share XDG_CONFIG_DIRS=/etc/xdg \
    XDG_SESSION_TYPE=x11 XDG_CURRENT_DESKTOP=XFCE NO_AT_BRIDGE=1 LANG=C.UTF-8

mkfifo "$folder/bus"
exec 8<>"$folder/bus"
background dbus dbus-daemon --session --nofork --nopidfile --print-address=8
read -r -t 10 DBUS_SESSION_BUS_ADDRESS <&8 || fail 'no D-Bus session' dbus
exec 8>&-
export DBUS_SESSION_BUS_ADDRESS

# The computer's own system bus would let a test put its user's screen to sleep.
cat >"$folder/system-bus.conf" <<CONFIGURATION
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:path=$folder/system-bus</listen>
  <policy context="default">
    <allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/><allow user="*"/>
  </policy>
</busconfig>
CONFIGURATION
background system-bus dbus-daemon --config-file="$folder/system-bus.conf" --nofork --nopidfile
await 10 test -S "$folder/system-bus" || fail 'no system bus' system-bus
export DBUS_SYSTEM_BUS_ADDRESS=unix:path=$folder/system-bus

# The monitors of the chosen number; with xorg all at once, so that nobody sees a layout in between.
layOut() {
    local names=('*LEFT' RIGHT FAR) outputs=(screen none none) size width height i
    for i in "${!places[@]}"; do
        size=${places[i]%%+*} width=${size%x*} height=${size#*x}
        if [ "$server" = xvfb ]; then
            # 96 dots per inch.
            xrandr --setmonitor "${names[i]}" "$width/$((width * 34 / 128))x$height/$((height * 34 / 128))+${places[i]#*+}" \
                "${outputs[i]}" || return
            continue
        fi
        # Every output knows the modes of the first one, once they have been added to it.
        for mode in 1280x1024 1024x768 800x600 640x800; do
            [ "$i" = 0 ] || xrandr --addmode "DUMMY$i" "$mode" || return
        done
        set -- "$@" --output "DUMMY$i" --mode "$size" --pos "$(tr + x <<<"${places[i]#*+}")"
    done
    [ "$server" = xvfb ] && return
    # Asking once more makes the server see that the outputs are connected now.
    xrandr "$@" && xrandr
}
if [ "$monitors" != 1 ]; then
    layOut >"$logs/xrandr" 2>&1 || fail 'the monitors could not be laid out' xrandr
fi
# A background as desktops set it, which compositors paint too.
/usr/bin/python3 - "$background" <<'PYTHON' || fail 'no background'
import sys
from Xlib import X, Xatom, display
d = display.Display()
screen = d.screen()
width, height = screen.width_in_pixels, screen.height_in_pixels
picture = screen.root.create_pixmap(width, height, screen.root_depth)
picture.fill_rectangle(picture.create_gc(foreground=int(sys.argv[1].lstrip("#"), 16)), 0, 0, width, height)
for name in ("_XROOTPMAP_ID", "ESETROOT_PMAP_ID"):
    screen.root.change_property(d.intern_atom(name), Xatom.PIXMAP, 32, [picture.id])
screen.root.change_attributes(background_pixmap=picture)
screen.root.clear_area()
d.set_close_down_mode(X.RetainPermanent)
d.sync()
PYTHON

channels=$XDG_CONFIG_HOME/xfce4/xfconf/xfce-perchannel-xml
mkdir -p "$channels"
composited=true
[ "$manager" = xfwm4-nocomp ] && composited=false
cat >"$channels/xfwm4.xml" <<XML
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfwm4" version="1.0"><property name="general" type="empty">
  <property name="use_compositing" type="bool" value="$composited"/>
  <property name="vblank_mode" type="string" value="off"/>
</property></channel>
XML
cat >"$channels/xfce4-panel.xml" <<'XML'
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"><value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="28"/>
      <property name="output-name" type="string" value="Primary"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/><value type="int" value="2"/><value type="int" value="3"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="tasklist"/>
    <property name="plugin-2" type="string" value="separator">
      <property name="expand" type="bool" value="true"/><property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-3" type="string" value="systray"/>
  </property>
</channel>
XML

managerRuns() { xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 0x; }
case $manager in
openbox) background manager openbox --sm-disable ;;
xfwm4 | xfwm4-nocomp) background manager xfwm4 --replace --sm-client-disable ;;
none) ;;
*) fail "no such window manager: $manager" ;;
esac
[ "$manager" = none ] || await 10 managerRuns || fail "$manager did not start" manager
case $compositor in
picom) background compositor picom --config /dev/null --backend "${PICOM_BACKEND:-xrender}" --no-vsync ;;
none) ;;
*) fail "no such compositor: $compositor" ;;
esac
[ "$compositor" = picom ] || [ "$manager" = xfwm4 ] && { awaitSelection _NET_WM_CM_S0 || fail 'no compositor' compositor; }
panelCommand=()
case $panel in
xfce) panelCommand=(xfce4-panel --disable-wm-check) ;;
mate) panelCommand=(mate-panel --replace) ;;
trayer) panelCommand=(trayer --edge top --align right --widthtype request --height 26) ;;
tint2)
    printf '%s\n' 'panel_items = TSC' 'panel_size = 100% 30' 'panel_position = top center horizontal' >"$folder/tint2rc"
    panelCommand=(tint2 -c "$folder/tint2rc")
    ;;
none) ;;
*) fail "no such panel: $panel" ;;
esac
if [ "$panel" != none ]; then
    background panel "${panelCommand[@]}"
    export PANEL_PID=${pids[-1]} PANEL_COMMAND="${panelCommand[*]}"
    awaitSelection _NET_SYSTEM_TRAY_S0 || fail 'the panel did not start' panel
fi

status=0
if [ $# -gt 0 ]; then
    # In the background, so that a signal to this script ends the command at once.
    timeout -k 5 "$limit" "$@" &
    pids+=($!)
    wait $!
    status=$?
    unset "pids[-1]"
fi
[ -z "$shot" ] || /usr/bin/python3 -c 'import sys; from PIL import ImageGrab
ImageGrab.grab(xdisplay="").save(sys.argv[1])' "$shot" || status=$?
exit $status
