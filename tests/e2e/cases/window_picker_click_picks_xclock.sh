#!/usr/bin/env bash
# `glimpso window` puts the picker up; a click on an xclock picks it, and the
# clock's picture (on the background, with padding) lands on the clipboard.
# Escape leaves a second pick without a capture.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1024x768
plain_root '#506070'

xclock -geometry 220x220+400+200 -bg '#f0f0f0' >>"$E2E_DIR/xclock.log" 2>&1 &
E2E_PIDS+=($!)
wait_for_window xclock 20
client=$(xdotool search --onlyvisible --name xclock | head -n1)
wait_for "openbox to frame the clock" 20 bash -c "xprop -id $client _NET_FRAME_EXTENTS | grep -q '='"
# The window manager's frame, decorations included: the client's parent.
frame=$(xwininfo -id "$client" -tree | awk '/Parent window id/ {print $4}')
read -r width height < <(xwininfo -id "$frame" | awk '/^  Width/ {w=$NF} /^  Height/ {h=$NF} END {print w, h}')

e2e_start_glimpso
xdotool mousemove --sync 20 20
e2e_glimpso window
expect_eq "$E2E_STATUS" 0 "exit code of glimpso window ($E2E_ERR)"
wait_for_log "pick: picker up" 10
xdotool mousemove --sync 510 310
wait_for_log "pick: 1 window(s) to choose from" 1
xdotool click 1
wait_for_log "pick: chose 0x$(printf '%x' "$client") (XClock)" 10
wait_for "the clock's picture on the clipboard" 20 bash -c "xclip -selection clipboard -t TARGETS -o | grep -q image/png"
clipboard image/png >"$E2E_DIR/clock.png"
expect_eq "$(identify -format '%wx%h' "$E2E_DIR/clock.png")" "$((width + 96))x$((height + 96))" "size of the picked window"
# The picker is gone.
wait_for "the picker to go" 10 bash -c "! xdotool search --onlyvisible --name 'glimpso window picker' >/dev/null"

# A second pick, left with Escape: nothing more is captured.
e2e_glimpso window
expect_eq "$E2E_STATUS" 0 "exit code of the second glimpso window ($E2E_ERR)"
wait_for "the second picker" 10 bash -c "[ \$(grep -c 'pick: picker up' '$GLIMPSO_LOG') -ge 2 ]"
send_keys Escape
wait_for_log "pick: left" 10
wait_for "the picker to go" 10 bash -c "! xdotool search --onlyvisible --name 'glimpso window picker' >/dev/null"
expect_eq "$(log_count 'window 0x')" 1 "window captures"
echo "passed"
