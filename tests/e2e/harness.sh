# End-to-end harness: a private desktop per test, and helpers to drive glimpso
# as a person would. Sourced by every case in cases/; later cases reuse it.
#
#   e2e_setup [--size WxH] [--monitors "WxH+X+Y WxH+X+Y ..."]
#       An X server on a free display: Xvfb with one screen of --size, or with
#       --monitors the Xorg dummy driver with one RandR output per monitor
#       (real outputs and CRTCs, as several displays on a desk); a private session
#       bus, openbox, dunst, and a temporary HOME with its XDG folders.
#   e2e_start_glimpso [args]      start the built glimpso, wait until it answers
#   e2e_glimpso ARGS...           run the glimpso command line in this session
#   wait_for "what" SECONDS CMD…  poll CMD until it succeeds, or fail with "what"
#   wait_for_window NAME SECONDS  a visible window whose title matches NAME
#   wait_for_file PATH SECONDS    a file that exists and is not empty
#   send_keys KEY…                xdotool key, e.g. send_keys ctrl+shift+2
#   drag X1 Y1 X2 Y2              press, move and release the left button
#   clipboard [TYPE]              what the clipboard holds (xclip), default text
#   last_line TEXT                the last line of TEXT
#   e2e_fail MESSAGE              print the message and glimpso's log, exit 1
#
# Everything runs under a temporary folder that is removed at exit; on failure
# glimpso's log and the other daemons' logs are printed first.

set -euo pipefail

GLIMPSO_BIN=${GLIMPSO_BIN:?GLIMPSO_BIN must name the built glimpso}
E2E_DIR=$(mktemp -d "${TMPDIR:-/tmp}/glimpso-e2e.XXXXXX")
E2E_PIDS=()
E2E_CLEANUPS=()
GLIMPSO_PID=""
GLIMPSO_LOG=$E2E_DIR/glimpso.log
E2E_HARNESS_DIR=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

e2e_log() { printf '[e2e %s] %s\n' "$(date +%T)" "$*" >&2; }

e2e_dump_logs() {
  local f
  [ -n "${E2E_WITNESS_FILE:-}" ] && printf -- '----- the key witness received -----\n%s\n' "$(cat -A "$E2E_WITNESS_FILE")" >&2
  for f in "$E2E_DIR"/*.log; do
    [ -s "$f" ] || continue
    printf -- '----- %s -----\n' "$(basename "$f")" >&2
    tail -n 80 "$f" >&2
  done
}

e2e_fail() {
  printf 'FAILED: %s\n' "$*" >&2
  e2e_dump_logs
  exit 1
}

e2e_teardown() {
  local status=$?
  [ $status -ne 0 ] && [ -z "${E2E_DUMPED:-}" ] && { E2E_DUMPED=1; e2e_dump_logs; }
  local cleanup pid
  for cleanup in "${E2E_CLEANUPS[@]}"; do eval "$cleanup" || true; done
  [ -n "$GLIMPSO_PID" ] && kill "$GLIMPSO_PID" 2>/dev/null || true
  for pid in "${E2E_PIDS[@]}"; do kill "$pid" 2>/dev/null || true; done
  for pid in "${E2E_PIDS[@]}"; do wait "$pid" 2>/dev/null || true; done
  rm -rf "$E2E_DIR"
  exit $status
}
trap e2e_teardown EXIT

# wait_for "what" SECONDS CMD...: polls every 0.1 s.
wait_for() {
  local what=$1 seconds=$2
  shift 2
  local deadline=$((SECONDS + seconds))
  until "$@" >/dev/null 2>&1; do
    [ $SECONDS -ge $deadline ] && e2e_fail "timed out after ${seconds}s waiting for $what"
    sleep 0.1
  done
}

bus_name_has_owner() {
  dbus-send --session --print-reply --dest=org.freedesktop.DBus /org/freedesktop/DBus \
    org.freedesktop.DBus.NameHasOwner "string:$1" 2>/dev/null | grep -q 'boolean true'
}

e2e_setup() {
  local size=1280x800 monitors=""
  while [ $# -gt 0 ]; do
    case $1 in
      --size) size=$2; shift 2 ;;
      --monitors) monitors=$2; shift 2 ;;
      *) e2e_fail "e2e_setup: unknown option $1" ;;
    esac
  done

  export HOME=$E2E_DIR/home
  export XDG_CONFIG_HOME=$HOME/.config XDG_DATA_HOME=$HOME/.local/share
  export XDG_CACHE_HOME=$HOME/.cache XDG_STATE_HOME=$HOME/.local/state
  export XDG_RUNTIME_DIR=$E2E_DIR/runtime
  mkdir -p "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$XDG_STATE_HOME" "$HOME/Pictures"
  mkdir -m 700 -p "$XDG_RUNTIME_DIR"
  unset WAYLAND_DISPLAY QT_QPA_PLATFORM SESSION_MANAGER
  export LANG=C.UTF-8

  if [ -n "$monitors" ]; then
    start_xorg_with_monitors "$monitors"
    size=$(xdpyinfo | awk '/dimensions:/ {print $2}')
  else
    start_xvfb "$size"
  fi

  dbus-daemon --session --nofork --address="unix:path=$XDG_RUNTIME_DIR/bus" >"$E2E_DIR/dbus.log" 2>&1 &
  E2E_PIDS+=($!)
  export DBUS_SESSION_BUS_ADDRESS="unix:path=$XDG_RUNTIME_DIR/bus"
  wait_for "the session bus" 20 dbus-send --session --print-reply --dest=org.freedesktop.DBus \
    /org/freedesktop/DBus org.freedesktop.DBus.GetId

  start_window_manager
  wait_for "the window manager" 20 window_manager_ready

  write_dunst_config
  dunst -config "$E2E_DIR/dunstrc" >"$E2E_DIR/dunst.log" 2>&1 &
  E2E_PIDS+=($!)
  wait_for "the notification server" 20 bus_name_has_owner org.freedesktop.Notifications
  e2e_log "desktop ready on $DISPLAY ($size${monitors:+, monitors $monitors})"
}

# dunst puts its notifications beyond the edge of the screen, so that they
# never stand in the pixels a case captures and compares; they are there all
# the same (dunstctl count displayed). $E2E_DUNST_DMENU, when set, is the
# program dunst's context menu (dunstctl context) asks for a choice.
write_dunst_config() {
  {
    printf '[global]\n    origin = top-left\n    offset = 8000x8000\n'
    if [ -n "${E2E_DUNST_DMENU:-}" ]; then printf '    dmenu = %s\n' "$E2E_DUNST_DMENU"; fi
  } >"$E2E_DIR/dunstrc"
}

# The server picks a free display itself (-displayfd) and writes its number;
# only a whole line counts, a number read half-written would point at another
# test's server.
wait_for_display_number() {
  wait_for "the X server to choose a display" 20 bash -c "[ \$(wc -l <'$E2E_DIR/display') -ge 1 ]"
  export DISPLAY=":$(head -n1 "$E2E_DIR/display")"
  wait_for "the X server at $DISPLAY" 20 xdpyinfo
}

start_xvfb() {
  Xvfb -displayfd 3 -screen 0 "${1}x24" -nolisten tcp +extension RANDR +extension MIT-SHM \
    3>"$E2E_DIR/display" >"$E2E_DIR/xvfb.log" 2>&1 &
  E2E_PIDS+=($!)
  wait_for_display_number
}

# start_xorg_with_monitors "WxH+X+Y ...": output DUMMY<i> shows monitor i, the
# first one primary.
start_xorg_with_monitors() {
  local geometry w h x y right=0 bottom=0
  for geometry in $1; do
    IFS='x+' read -r w h x y <<<"$geometry"
    right=$(( x + w > right ? x + w : right ))
    bottom=$(( y + h > bottom ? y + h : bottom ))
  done
  sed "s/@VIRTUAL@/$right $bottom/" "$E2E_HARNESS_DIR/xorg-dummy.conf" >"$E2E_DIR/xorg.conf"
  Xorg -displayfd 3 -config "$E2E_DIR/xorg.conf" -logfile "$E2E_DIR/xorg-server.log" \
    -nolisten tcp -noreset +extension MIT-SHM 3>"$E2E_DIR/display" >"$E2E_DIR/xorg.log" 2>&1 &
  E2E_PIDS+=($!)
  wait_for_display_number

  local i=0 mode layout=()
  for geometry in $1; do
    IFS='x+' read -r w h x y <<<"$geometry"
    mode="${w}x${h}_glimpso"
    if ! xrandr | grep -q "^ *$mode "; then
      # shellcheck disable=SC2046
      xrandr --newmode "$mode" $(gtf "$w" "$h" 60 | awk '/Modeline/ {for (i = 3; i <= NF; i++) printf "%s ", $i}') 2>/dev/null || true
    fi
    xrandr --addmode "DUMMY$i" "$mode"
    layout+=(--output "DUMMY$i" --mode "$mode" --pos "${x}x${y}")
    [ $i -eq 0 ] && layout+=(--primary)
    i=$((i + 1))
  done
  xrandr --fb "${right}x${bottom}" "${layout[@]}"
  wait_for "$i RandR monitors" 10 bash -c "[ \"\$(xrandr --listmonitors | head -n1 | awk '{print \$2}')\" = $i ]"
}

# openbox, started again if it gave up at once: on a loaded machine its first
# connection has been seen to fail while the server already answered.
start_window_manager() {
  openbox --sm-disable >>"$E2E_DIR/openbox.log" 2>&1 &
  E2E_WM_PID=$!
  E2E_PIDS+=($E2E_WM_PID)
}

window_manager_ready() {
  xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q "window id" && return 0
  if ! kill -0 "$E2E_WM_PID" 2>/dev/null; then
    e2e_log "openbox ended ($(xdpyinfo >/dev/null 2>&1 && echo "the X server answers" || echo "the X server is gone")); starting it again" 2>>"$E2E_DIR/openbox.log"
    start_window_manager
  fi
  return 1
}

e2e_start_glimpso() {
  "$GLIMPSO_BIN" "$@" >>"$GLIMPSO_LOG" 2>&1 &
  GLIMPSO_PID=$!
  wait_for "glimpso to answer on the session bus" 20 glimpso_running_and_listed
  e2e_log "glimpso runs as process $GLIMPSO_PID"
}

glimpso_running_and_listed() {
  kill -0 "$GLIMPSO_PID" 2>/dev/null || e2e_fail "glimpso exited during start-up"
  if [ "${GLIMPSO_INSTANCE_CHANNEL:-}" = local ]; then
    grep -q "answering on" "$GLIMPSO_LOG"
  else
    bus_name_has_owner com.tovarine.glimpso
  fi
}

glimpso_alive() { [ -n "$GLIMPSO_PID" ] && kill -0 "$GLIMPSO_PID" 2>/dev/null; }
glimpso_gone() { ! glimpso_alive; }

# e2e_glimpso ARGS...: the command line; sets E2E_OUT, E2E_ERR, E2E_STATUS.
e2e_glimpso() {
  set +e
  timeout 10 "$GLIMPSO_BIN" "$@" >"$E2E_DIR/out" 2>"$E2E_DIR/err"
  E2E_STATUS=$?
  set -e
  E2E_OUT=$(cat "$E2E_DIR/out")
  E2E_ERR=$(cat "$E2E_DIR/err")
}

last_line() { tail -n1 <<<"$1"; }
expect_eq() { [ "$1" = "$2" ] || e2e_fail "${3:-value}: expected '$2', got '$1'"; }
expect_contains() { grep -qF -- "$2" <<<"$1" || e2e_fail "${3:-text} does not contain '$2': $1"; }

visible_windows_of() { xdotool search --onlyvisible --pid "$1" 2>/dev/null || true; }

wait_for_window() { wait_for "a window named '$1'" "$2" xdotool search --onlyvisible --name "$1"; }
wait_for_file() { wait_for "the file $1" "$2" test -s "$1"; }
send_keys() { xdotool key --clearmodifiers "$@"; }
drag() {
  xdotool mousemove --sync "$1" "$2" mousedown 1
  xdotool mousemove --sync "$(( ($1 + $3) / 2 ))" "$(( ($2 + $4) / 2 ))"
  xdotool mousemove --sync "$3" "$4" mouseup 1
}
clipboard() { xclip -o -selection clipboard -t "${1:-UTF8_STRING}"; }

# start_key_witness FILE: an xterm, focused, that writes every key it receives
# to FILE as `cat -v` shows it (Escape is ^[, Ctrl+Shift+2 is ^@), so a case can
# tell which presses reached another program and which were taken by glimpso.
# A later plain key that arrives proves the earlier presses had their turn.
start_key_witness() {
  local file=$1
  E2E_WITNESS_FILE=$file
  : >"$file"
  xterm -title glimpso-key-witness -geometry 60x10+40+40 \
    -e bash -c "stty raw -echo; exec cat -v >'$file'" >>"$E2E_DIR/xterm.log" 2>&1 &
  E2E_PIDS+=($!)
  wait_for_window glimpso-key-witness 20
  E2E_WITNESS_WINDOW=$(xdotool search --onlyvisible --name glimpso-key-witness | head -n1)
  xdotool windowactivate --sync "$E2E_WITNESS_WINDOW" 2>/dev/null || xdotool windowfocus --sync "$E2E_WITNESS_WINDOW"
  # The terminal is ready when a key typed into it comes out.
  wait_for "the key witness to take keys" 20 witness_echoes "$file"
}
witness_echoes() { xdotool key period; grep -q '\.' "$1"; }
# witness_mark FILE WORD: types WORD into the focused window and waits until the
# witness has it; every key pressed before is then in FILE, or never will be.
# two_monitors_with_known_content: on a 1280x480 screen, two RandR monitors
# side by side, and on the root window a colour per monitor, a few marks and a
# gradient strip so that any shift by a pixel shows. The picture is left in
# $KNOWN_SCREEN for comparisons.
two_monitors_with_known_content() {
  xrandr --setmonitor glimpso-left 640/169x480/127+0+0 screen >/dev/null
  xrandr --setmonitor glimpso-right 640/169x480/127+640+0 none >/dev/null
  expect_contains "$(xrandr --listmonitors | head -n1)" "Monitors: 2" "xrandr --listmonitors"
  KNOWN_SCREEN=$E2E_DIR/screen.png
  convert -size 640x480 xc:'#c81e28' -size 640x480 xc:'#0a78fa' +append \
    -fill '#00ff00' -draw 'rectangle 100,100 119,119' \
    -fill '#ffff00' -draw 'rectangle 900,300 929,319' \
    \( -size 1280x16 gradient:black-white \) -geometry +0+200 -composite \
    -depth 8 "PNG24:$KNOWN_SCREEN"
  # display sets the root window's background and answers 1 even when it did.
  display -window root "$KNOWN_SCREEN" || true
  xsetroot -cursor_name left_ptr
}

# plain_root COLOUR: the whole root window in one colour, the usual pointer.
plain_root() {
  local size
  size=$(xdpyinfo | awk '/dimensions:/ && !seen {print $2; seen = 1}')
  convert -size "$size" "xc:$1" -depth 8 "PNG24:$E2E_DIR/root.png"
  # display sets the root window's background and answers 1 even when it did.
  display -window root "$E2E_DIR/root.png" || true
  xsetroot -cursor_name left_ptr
}
# open_region_overlay X Y: `glimpso region` with the pointer at X,Y, waiting
# until the overlay is painted.
open_region_overlay() {
  local before
  before=$(grep -c "present: overlay painted" "$GLIMPSO_LOG" || true)
  xdotool mousemove --sync "$1" "$2"
  e2e_glimpso region
  expect_eq "$E2E_STATUS" 0 "exit code of glimpso region ($E2E_ERR)"
  wait_for "the overlay to be painted" 10 bash -c "[ \$(grep -c 'present: overlay painted' '$GLIMPSO_LOG') -gt $before ]"
}

# pixel FILE X Y: "r g b" of one pixel of a picture.
pixel() { convert "$1" -format "%[fx:int(255*p{$2,$3}.r)] %[fx:int(255*p{$2,$3}.g)] %[fx:int(255*p{$2,$3}.b)]" info:; }
# count_colour FILE COLOUR X Y W H: how many pixels of the box are COLOUR
# (within a tolerance).
count_colour() {
  convert "$1" -crop "$5x$6+$3+$4" +repage -fuzz 12% -fill white -opaque "$2" -fill black +opaque white \
    -format "%[fx:int(mean*w*h)]" info:
}

# is_red FILE X Y WHAT: fails unless the pixel is the red of a default stroke.
is_red() {
  local rgb r g b
  rgb=$(pixel "$1" "$2" "$3")
  read -r r g b <<<"$rgb"
  [ "$r" -ge 200 ] && [ "$g" -le 120 ] && [ "$b" -le 120 ] || e2e_fail "$4: expected the red of a stroke at $2,$3, got $rgb"
}

# copy_with_return FILE: Return on the armed overlay, then the copied picture
# from the clipboard into FILE.
copy_with_return() {
  local before
  before=$(grep -c "finish: didFinish=0" "$GLIMPSO_LOG" || true)
  send_keys Return
  wait_for "the overlay to finish" 10 bash -c "[ \$(grep -c 'finish: didFinish=0' '$GLIMPSO_LOG') -gt $before ]"
  wait_for "an image on the clipboard" 10 bash -c "xclip -selection clipboard -t TARGETS -o | grep -q image/png"
  xclip -selection clipboard -t image/png -o >"$1"
}

# save_a_capture: a region capture finished with Return, which copies and
# (saveCopies on) saves; sets SAVE_DIR, SAVED (the file) and SAVED_NAME.
save_a_capture() {
  open_region_overlay 500 300
  drag 100 100 300 250
  send_keys Return
  SAVE_DIR=$HOME/Pictures/Screenshots
  wait_for "a file in the save folder" 10 bash -c "ls '$SAVE_DIR'/glimpso-*.png"
  SAVED=$(ls "$SAVE_DIR"/glimpso-*.png | head -n1)
  SAVED_NAME=$(basename "$SAVED")
}

# The overlay's toolbar and its colour panel write where their chips are to
# the debug log; start glimpso with this in the environment to click them.
TOOLBAR_LOGGING="glimpso.EditorToolbar.debug=true;glimpso.ColorPalette.debug=true"
# click_chip NAME: clicks the newest logged place of a chip ("chip arrow",
# "chip save", "swatch #007AFF").
click_chip() {
  local place
  place=$(grep -F "$1 at " "$GLIMPSO_LOG" | tail -n1 | sed 's/.* at \([0-9]*\),\([0-9]*\)$/\1 \2/')
  [ -n "$place" ] || e2e_fail "no place logged for $1"
  # shellcheck disable=SC2086
  click_at $place
}
# click_at X Y: moves the pointer there (unless it is there already: a synced
# move to where the pointer is waits for a motion that never comes) and clicks.
click_at() {
  local here
  here=$(xdotool getmouselocation | sed 's/x:\([0-9]*\) y:\([0-9]*\).*/\1 \2/')
  [ "$here" = "$1 $2" ] || xdotool mousemove --sync "$1" "$2"
  xdotool click 1
}
# arm_with_toolbar X1 Y1 X2 Y2: drags the selection on an open overlay and
# waits for the toolbar to be placed next to it.
arm_with_toolbar() {
  local before
  before=$(log_count "chip arrow at")
  drag "$@"
  wait_for "the toolbar to be placed" 10 bash -c "[ \$(grep -cF 'chip arrow at' '$GLIMPSO_LOG') -gt $before ]"
}

# dismiss_overlay: waits for the overlay a shortcut opened, closes it with
# Escape, and gives the key witness the keyboard again.
overlay_gone() { ! xdotool search --onlyvisible --name 'glimpso overlay' >/dev/null 2>&1; }
dismiss_overlay() {
  wait_for_window "glimpso overlay" 10
  xdotool key Escape
  wait_for "the overlay to go" 10 overlay_gone
  if [ -n "${E2E_WITNESS_WINDOW:-}" ]; then
    xdotool windowactivate --sync "$E2E_WITNESS_WINDOW" 2>/dev/null || xdotool windowfocus --sync "$E2E_WITNESS_WINDOW"
  fi
}
witness_mark() { xdotool type --delay 20 "$2"; wait_for "'$2' at the key witness" 20 grep -q "$2" "$1"; }

# glimpso_logged TEXT: glimpso's log has a line with TEXT.
glimpso_logged() { grep -qF -- "$1" "$GLIMPSO_LOG"; }
# wait_for_log TEXT SECONDS
wait_for_log() { wait_for "'$1' in glimpso's log" "$2" glimpso_logged "$1"; }
# log_count TEXT: how many lines of glimpso's log have TEXT.
log_count() { grep -cF -- "$1" "$GLIMPSO_LOG" || true; }

# use_test_opener: the desktop's opener (xdg-open) hands pictures and folders
# to tools/desktop-opener.sh, which writes what it got to $E2E_OPENED. Call it
# after e2e_setup and before glimpso starts.
use_test_opener() {
  export E2E_OPENED=$E2E_DIR/opened
  : >"$E2E_OPENED"
  mkdir -p "$XDG_DATA_HOME/applications"
  cat >"$XDG_DATA_HOME/applications/glimpso-test-opener.desktop" <<DESKTOP
[Desktop Entry]
Type=Application
Name=glimpso test opener
Exec=$E2E_HARNESS_DIR/tools/desktop-opener.sh %f
MimeType=image/png;image/jpeg;inode/directory;
NoDisplay=true
DESKTOP
  printf '[Default Applications]\nimage/png=glimpso-test-opener.desktop\nimage/jpeg=glimpso-test-opener.desktop\ninode/directory=glimpso-test-opener.desktop\n' \
    >"$XDG_CONFIG_HOME/mimeapps.list"
}

# watch_notifications: every Notify call on the session bus from now on goes
# to $E2E_NOTIFY_LOG as dbus-monitor prints it.
watch_notifications() {
  E2E_NOTIFY_LOG=$E2E_DIR/notify.log
  dbus-monitor --session "type='method_call',interface='org.freedesktop.Notifications',member='Notify'" \
    >"$E2E_NOTIFY_LOG" 2>&1 &
  E2E_PIDS+=($!)
  wait_for "dbus-monitor to listen" 10 grep -q "member=NameAcquired\|NameLost\|signal" "$E2E_NOTIFY_LOG"
}

# stop_notification_server: dunst ends, and the bus cannot start another
# notification server on demand (a service file of the user's own, which
# outranks the system's, starts a program that fails).
stop_notification_server() {
  local pid
  mkdir -p "$XDG_DATA_HOME/dbus-1/services"
  printf '[D-BUS Service]\nName=org.freedesktop.Notifications\nExec=/bin/false\n' \
    >"$XDG_DATA_HOME/dbus-1/services/org.freedesktop.Notifications.service"
  dbus-send --session --type=method_call --dest=org.freedesktop.DBus /org/freedesktop/DBus \
    org.freedesktop.DBus.ReloadConfig
  pid=$(dbus-send --session --print-reply --dest=org.freedesktop.DBus /org/freedesktop/DBus \
    org.freedesktop.DBus.GetConnectionUnixProcessID string:org.freedesktop.Notifications | awk '/uint32/ {print $2}')
  [ -n "$pid" ] && kill "$pid"
  wait_for "the notification server to go" 10 notification_server_gone
}
notification_server_gone() { ! bus_name_has_owner org.freedesktop.Notifications; }
