#!/usr/bin/env bash
# A QR code shown with `display`: dragging over it after `glimpso text` puts its
# payload on the clipboard, and the notice says a link was copied. The same
# picture read by `glimpso ocr --json`, with no display and no bus, gives the
# code too.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1024x768
plain_root '#e8e8e8'

payload='https://example.org/e2e/read?code=QR-7&lang=en'
qrencode -s 4 -m 4 -o "$E2E_DIR/qr.png" "$payload"
display -title glimpso-e2e-qr -geometry +300+200 "$E2E_DIR/qr.png" >>"$E2E_DIR/display.log" 2>&1 &
E2E_PIDS+=($!)
wait_for_window glimpso-e2e-qr 20
client=$(xdotool search --onlyvisible --name glimpso-e2e-qr | head -n1)
read -r x y width height < <(xwininfo -id "$client" | awk '/Absolute upper-left X/ {x=$NF}
  /Absolute upper-left Y/ {y=$NF} /^  Width/ {w=$NF} /^  Height/ {h=$NF} END {print x, y, w, h}')

e2e_start_glimpso
watch_notifications
xdotool mousemove --sync $((x - 20)) $((y - 20))
e2e_glimpso text
expect_eq "$E2E_STATUS" 0 "exit code of glimpso text ($E2E_ERR)"
wait_for_log "present: overlay painted" 10
drag $((x - 20)) $((y - 20)) $((x + width + 20)) $((y + height + 20))
wait_for "the payload on the clipboard" 30 bash -c "[ \"\$(xclip -o -selection clipboard -t UTF8_STRING 2>/dev/null)\" = '$payload' ]"
wait_for "the link notice" 10 grep -q "Copied link" "$E2E_NOTIFY_LOG"

# Headless: no display, no session bus, no running copy needed.
out=$(env -u DISPLAY -u DBUS_SESSION_BUS_ADDRESS -u WAYLAND_DISPLAY "$GLIMPSO_BIN" ocr "$E2E_DIR/qr.png" --json)
expect_eq "$out" "{\"code\":\"$payload\",\"text\":null}" "glimpso ocr --json of the code"
echo "passed"
