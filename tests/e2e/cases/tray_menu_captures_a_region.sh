#!/usr/bin/env bash
# With a system tray on the desktop (trayer, an XEmbed tray), glimpso's icon
# sits in it; a click on the icon opens the menu, and "Screenshot › Capture
# Region" chosen with the keyboard puts up the overlay. "Open Screenshots
# Folder" hands the folder to the desktop's opener.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1024x600
plain_root '#3060a0'
use_test_opener

start_tray() {
  trayer --edge top --align right --widthtype request --height 32 --SetDockType true >>"$E2E_DIR/trayer.log" 2>&1 &
  TRAY_PID=$!
  E2E_PIDS+=($TRAY_PID)
  wait_for "the tray" 10 tray_owned
}
tray_owned() { xdotool search --class trayer >/dev/null; }
tray_gone() { ! xdotool search --class trayer >/dev/null 2>&1; }
icon_in_tray() { local tree; tree=$(xwininfo -root -tree); grep -qF '"glimpso": ("glimpso" "glimpso")' <<<"$tree"; }
start_tray

e2e_start_glimpso
wait_for_log "status item created visible=1" 10
wait_for "the icon in the tray" 10 icon_in_tray
line=$(xwininfo -root -tree | grep '"glimpso": ("glimpso" "glimpso")' | head -n1)
read -r w h x y <<<"$(sed -E 's/.* ([0-9]+)x([0-9]+)\+-?[0-9]+\+-?[0-9]+ +\+(-?[0-9]+)\+(-?[0-9]+).*/\1 \2 \3 \4/' <<<"$line")"
[ "$y" -lt 32 ] || e2e_fail "the icon is not in the tray at the top: $line"

# The icon is drawn: some of its pixels differ from the tray's background.
import -window root -crop "${w}x${h}+${x}+${y}" +repage "$E2E_DIR/icon.png"
colours=$(convert "$E2E_DIR/icon.png" -format '%k' info:)
[ "$colours" -gt 1 ] || e2e_fail "the tray icon is blank"

# Click, menu, Screenshot › Capture Region.
xdotool mousemove --sync $((x + w / 2)) $((y + h / 2)) click 1
wait_for_log "menu: opened" 10
send_keys Down Right Return
wait_for_log "menu: captureRegion clicked, statusItem.isVisible=1" 10
wait_for_window "glimpso overlay" 10
wait_for_log "present: overlay painted" 10
xdotool key Escape
wait_for "the overlay to go" 10 overlay_gone

# Open Screenshots Folder, the eighth entry of the menu.
opened_before=$(log_count "menu: opened")
# Away first: a move with --sync to where the pointer already is waits long.
xdotool mousemove --sync 500 300
xdotool mousemove --sync $((x + w / 2)) $((y + h / 2)) click 1
wait_for "the menu to open again" 10 bash -c "[ \$(grep -c 'menu: opened' '$GLIMPSO_LOG') -gt $opened_before ]"
send_keys Down Down Down Down Down Down Down Return
wait_for "the opener to get the save folder" 10 grep -qE "^(file://)?$HOME/Pictures/Screenshots/?\$" "$E2E_OPENED"
test -d "$HOME/Pictures/Screenshots" || e2e_fail "the save folder was not made"

# A tray that comes after glimpso (a panel started later at login) gets the
# icon, and nothing is said about a missing tray.
e2e_glimpso quit
wait_for "glimpso to quit" 10 glimpso_gone
kill "$TRAY_PID"
wait_for "the tray to go" 10 tray_gone
e2e_start_glimpso
wait_for_log "no system tray yet" 10
start_tray
wait_for "the icon in the later tray" 10 icon_in_tray
wait_for "the late tray to be seen" 10 bash -c "[ \$(grep -c 'status item created visible=1' '$GLIMPSO_LOG') -ge 2 ]"
glimpso_logged "no system tray on this desktop" && e2e_fail "a missing tray was told although one came"
echo "passed"
