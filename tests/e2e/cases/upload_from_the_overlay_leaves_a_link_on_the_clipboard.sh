#!/usr/bin/env bash
# Keys given to `glimpso cloud-credentials` on standard input land in a file
# only their owner can read; the overlay's upload button then sends the
# capture to a real S3 server (Swift) and leaves a link on the clipboard that
# anyone fetches back byte for byte, with a notice; `glimpso upload FILE`
# prints the link of a file it uploads. No log line ever holds the secret.
source "$(dirname "$0")/../harness.sh"
source "$(dirname "$0")/../upload-harness.sh"
e2e_setup --size 1280x720
plain_root '#2a6f4e'
start_swift
point_glimpso_at_swift

# The keys, before any copy of glimpso runs.
store_credentials "$S3_ACCESS_KEY_ID" "$S3_SECRET_ACCESS_KEY"
expect_eq "$E2E_STATUS" 0 "exit code of glimpso cloud-credentials ($E2E_ERR)"
credentials=$XDG_DATA_HOME/glimpso/cloud-credentials.json
expect_contains "$E2E_OUT" "$credentials" "what glimpso cloud-credentials says"
expect_eq "$(file_mode "$credentials")" 600 "mode of the credential file"
expect_eq "$(file_mode "$(dirname "$credentials")")" 700 "mode of its folder"
grep -qF "$S3_SECRET_ACCESS_KEY" "$XDG_CONFIG_HOME/glimpso/glimpso.conf" && e2e_fail "the secret is in the settings file"

watch_notifications
QT_LOGGING_RULES=$TOOLBAR_LOGGING e2e_start_glimpso
wait_for "glimpso to see the display" 10 grep -qE " displays?:" "$GLIMPSO_LOG"

# The overlay's upload button.
printf 'before' | xclip -selection clipboard
open_region_overlay 640 300
arm_with_toolbar 200 100 900 500
click_chip "chip upload"
wait_for "a link on the clipboard" 30 bash -c "xclip -o -selection clipboard -t UTF8_STRING | grep -q '^$PUBLIC_BASE/'"
link=$(clipboard)
[[ "$link" =~ ^$PUBLIC_BASE/[A-Za-z0-9]{10}\.png$ ]] || e2e_fail "not a link to a random name: $link"
fetch "$link" "$E2E_DIR/fetched.png"
saves=$HOME/Pictures/Screenshots
wait_for "the local file" 10 bash -c "ls '$saves'/glimpso-*.png >/dev/null 2>&1"
saved=$(ls "$saves"/glimpso-*.png | head -n1)
expect_eq "$(identify -format '%wx%h' "$E2E_DIR/fetched.png")" 700x400 "size of the uploaded capture"
expect_eq "$(compare -metric AE "$saved" "$E2E_DIR/fetched.png" null: 2>&1 || true)" 0 "pixels that differ between the saved and the uploaded capture"
expect_eq "$(pixel "$E2E_DIR/fetched.png" 10 10)" "42 111 78" "a pixel of the uploaded capture"
read -r _ type _ <<<"$(s3 head "$BUCKET" "${link##*/}")"
expect_eq "$type" image/png "the object's content type"
wait_for "the notice of the upload" 10 grep -q 'string "Uploaded — link copied"' "$E2E_NOTIFY_LOG"
grep -qF "string \"$link\"" "$E2E_NOTIFY_LOG" || e2e_fail "the notice does not show the link"
wait_for_log "uploaded → $link" 5

# The command line: a file, its link printed and on the clipboard.
cp "$saved" "$E2E_DIR/shot copy.png"
# A path relative to the command's folder, which is not the running copy's.
cd "$E2E_DIR"
glimpso_upload "shot copy.png"
cd - >/dev/null
expect_eq "$E2E_STATUS" 0 "exit code of glimpso upload ($E2E_ERR)"
[[ "$E2E_OUT" =~ ^$PUBLIC_BASE/[A-Za-z0-9]{10}\.png$ ]] || e2e_fail "glimpso upload printed: $E2E_OUT"
expect_eq "$(clipboard)" "$E2E_OUT" "the clipboard after glimpso upload"
fetch "$E2E_OUT" "$E2E_DIR/fetched2.png"
cmp -s "$saved" "$E2E_DIR/fetched2.png" || e2e_fail "the uploaded file differs from the local one"
wait_for_log "uploaded file → $E2E_OUT" 5

# A file that is not there.
glimpso_upload "$E2E_DIR/nothing-here.png"
expect_eq "$E2E_STATUS" 1 "exit code for a missing file"
expect_contains "$E2E_ERR" "no such file" "the error for a missing file"

grep -qF "$S3_SECRET_ACCESS_KEY" "$GLIMPSO_LOG" && e2e_fail "a log line holds the secret"
glimpso_alive || e2e_fail "glimpso is gone"
echo "passed"
