#!/usr/bin/env bash
# The first launch's welcome names the two capture shortcuts. A capture taken on the overlay is announced by the desktop's notification
# server (dunst) with its title and file name, and the notification's "Open"
# button opens the file with the desktop's opener.
source "$(dirname "$0")/../harness.sh"

# dunst's context menu asks a dmenu-like program for a choice: this one picks "Open".
cat >"$E2E_DIR/pick-open.sh" <<'PICK'
#!/usr/bin/env bash
grep -m1 ',open-file\]'
PICK
chmod +x "$E2E_DIR/pick-open.sh"
export E2E_DUNST_DMENU=$E2E_DIR/pick-open.sh

e2e_setup --size 1024x600
plain_root '#3060a0'
use_test_opener
watch_notifications
e2e_start_glimpso
wait_for_log "notifications go to dunst" 10
wait_for "the welcome notice on the bus" 10 grep -qF 'string "glimpso is ready"' "$E2E_NOTIFY_LOG"
expect_contains "$(cat "$E2E_NOTIFY_LOG")" \
  'string "Ctrl+Shift+2 to capture · Ctrl+Shift+1 for all displays · change in Settings"' "the welcome notice"

save_a_capture
save_dir=$SAVE_DIR saved=$SAVED name=$SAVED_NAME

# The notification as the server received it: title, file name, buttons.
wait_for "the notification to reach the bus" 10 grep -qF "string \"$name\"" "$E2E_NOTIFY_LOG"
expect_contains "$(cat "$E2E_NOTIFY_LOG")" 'string "Copied to clipboard"' "the Notify call"
expect_contains "$(cat "$E2E_NOTIFY_LOG")" 'string "open-file"' "the Notify call's actions"
expect_contains "$(cat "$E2E_NOTIFY_LOG")" 'string "Show in Folder"' "the Notify call's actions"
wait_for "dunst to show one notification" 10 bash -c '[ "$(dunstctl count displayed)" -ge 1 ]'

# "Open" from dunst's menu: the opener gets the file.
dunstctl context
wait_for "the opener to get the file" 10 grep -qxF "$saved" "$E2E_OPENED"
wait_for_log "clicked: open-file" 5
echo "passed"
