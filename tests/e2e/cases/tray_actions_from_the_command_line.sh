#!/usr/bin/env bash
# Without a system tray glimpso says so once and every menu item stays a
# command: `delay N` keeps N and puts the overlay up N seconds later,
# `open-folder` hands the save folder to the desktop's opener, `edit-mode`
# reads and stores, and items whose windows are not built yet answer so.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1024x600
plain_root '#3060a0'
use_test_opener
watch_notifications

e2e_start_glimpso
wait_for_log "no system tray on this desktop" 10
wait_for "the no-tray notice" 10 grep -qF 'string "glimpso has no tray icon here"' "$E2E_NOTIFY_LOG"
e2e_glimpso settings-path
conf=$(last_line "$E2E_OUT")

e2e_glimpso delay 2
expect_eq "$E2E_STATUS" 0 "exit code of delay 2 ($E2E_ERR)"
wait_for_log "delayed capture queued; firing in 2s" 5
wait_for_log "present: overlay painted" 10
xdotool key Escape
wait_for "the overlay to go" 10 overlay_gone
grep -q '^settings.capture.delaySeconds=2$' "$conf" || e2e_fail "the delay was not kept: $(cat "$conf")"

e2e_glimpso delay 0
expect_eq "$E2E_STATUS" 2 "exit code of delay 0"
expect_contains "$E2E_ERR" "glimpso: usage: glimpso delay N" "stderr of delay 0"

e2e_glimpso open-folder
expect_eq "$E2E_STATUS" 0 "exit code of open-folder ($E2E_ERR)"
expect_eq "$E2E_OUT" "$HOME/Pictures/Screenshots" "the folder open-folder names"
wait_for "the opener to get the save folder" 10 grep -qE "^(file://)?$HOME/Pictures/Screenshots/?\$" "$E2E_OPENED"

e2e_glimpso edit-mode afterCapture
expect_eq "$E2E_STATUS" 0 "exit code of edit-mode afterCapture"
e2e_glimpso edit-mode
expect_eq "$E2E_OUT" "afterCapture" "edit-mode"

e2e_glimpso settings
expect_eq "$E2E_STATUS" 1 "exit code of settings"
expect_eq "$E2E_ERR" "glimpso: the settings window is not available yet" "stderr of settings"
wait_for "the notice that says so" 10 grep -qF 'string "The settings window is not in this version of glimpso yet."' "$E2E_NOTIFY_LOG"

e2e_glimpso report
expect_eq "$E2E_STATUS" 1 "exit code of report"
expect_eq "$E2E_ERR" "glimpso: reporting a problem is not available yet" "stderr of report"
echo "passed"
