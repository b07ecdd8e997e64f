#!/usr/bin/env bash
# `glimpso window --under-pointer --save` over an xterm: the file holds the
# xterm's own pixels, decorations included, on the white background with the
# padding all round and a shadow below; `--id` names the same window, and a
# point with no window under it is refused with its reason.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1024x768
plain_root '#3c6e8c'

xterm -title glimpso-e2e-xterm -geometry 50x12+200+150 -bg '#1d1f21' -fg '#e0e0e0' \
  -e bash -c 'printf "window capture\nsecond line\n"; exec sleep 600' >>"$E2E_DIR/xterm.log" 2>&1 &
E2E_PIDS+=($!)
wait_for_window glimpso-e2e-xterm 20
client=$(xdotool search --onlyvisible --name glimpso-e2e-xterm | head -n1)
# The window manager's frame, decorations included: the client's parent.
frame_geometry() {
  local frame
  frame=$(xwininfo -id "$client" -tree | awk '/Parent window id/ {print $4}')
  xwininfo -id "$frame" | awk '/Absolute upper-left X/ {x=$NF} /Absolute upper-left Y/ {y=$NF}
    /^  Width/ {w=$NF} /^  Height/ {h=$NF} END {print w "x" h "+" x "+" y}'
}
wait_for "openbox to frame the xterm" 20 bash -c "xprop -id $client _NET_FRAME_EXTENTS | grep -q '='"
geometry=$(frame_geometry)
read -r width height x y < <(tr 'x+' '  ' <<<"$geometry")
e2e_log "xterm frame $geometry"

e2e_start_glimpso
xdotool mousemove --sync $((x + width / 2)) $((y + height / 2))
e2e_glimpso window --under-pointer --save
expect_eq "$E2E_STATUS" 0 "exit code of window --under-pointer --save ($E2E_ERR)"
saved=$(last_line "$E2E_OUT")
case $saved in "$HOME/Pictures/Screenshots"/glimpso-*.png) ;; *) e2e_fail "unexpected saved path '$saved'" ;; esac

# Padding of 48 points on every side (the default) at scale 1.
expect_eq "$(identify -format '%wx%h' "$saved")" "$((width + 96))x$((height + 96))" "size of the saved window"
# The window's own pixels equal a grab of it.
import -window root -crop "$geometry" +repage -depth 8 "PNG24:$E2E_DIR/grab.png"
convert "$saved" -crop "${width}x${height}+48+48" +repage -alpha off -depth 8 "PNG24:$E2E_DIR/window.png"
differing=$(compare -metric AE "$E2E_DIR/grab.png" "$E2E_DIR/window.png" null: 2>&1) || true
expect_eq "$differing" 0 "pixels of the window that differ from a grab"
# The white background in the corners, the shadow darker below the window than above it.
expect_eq "$(pixel "$saved" 2 2)" "255 255 255" "the background in the corner"
below=$(pixel "$saved" $((48 + width / 2)) $((48 + height + 24)) | cut -d' ' -f1)
above=$(pixel "$saved" $((48 + width / 2)) 24 | cut -d' ' -f1)
[ "$below" -lt 235 ] || e2e_fail "no shadow below the window ($below)"
[ "$below" -lt "$above" ] || e2e_fail "the shadow is not cast downwards (below $below, above $above)"

# The same window by its id, to the clipboard.
e2e_glimpso window --id "$client" --copy
expect_eq "$E2E_STATUS" 0 "exit code of window --id --copy ($E2E_ERR)"
clipboard image/png >"$E2E_DIR/clip.png"
expect_eq "$(identify -format '%wx%h' "$E2E_DIR/clip.png")" "$((width + 96))x$((height + 96))" "size of the copied window"

# Nothing under the pointer; a window that doesn't exist.
xdotool mousemove --sync 5 760
e2e_glimpso window --under-pointer --save
expect_eq "$E2E_STATUS" 1 "exit code with no window under the pointer"
expect_contains "$E2E_ERR" "no window under the pointer" "stderr with no window under the pointer"
e2e_glimpso window --id 0x7ffffff --save
expect_eq "$E2E_STATUS" 1 "exit code for a window that doesn't exist"
expect_contains "$E2E_ERR" "That window closed before it could be captured." "stderr for a missing window"
glimpso_alive || e2e_fail "glimpso ended after a failed window capture"
echo "passed"
