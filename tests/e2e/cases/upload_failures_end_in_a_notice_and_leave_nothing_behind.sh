#!/usr/bin/env bash
# A wrong secret ends the overlay's upload in a failure notice with S3's
# message; the capture is saved and no link reaches the clipboard. Swift
# stopped in the middle of a multipart upload ends it in a failure notice
# without a hang, and once Swift is back, the parts it kept are released
# after the next upload: no unfinished multipart upload is left.
source "$(dirname "$0")/../harness.sh"
source "$(dirname "$0")/../upload-harness.sh"
e2e_setup --size 1280x720
plain_root '#704080'
start_swift
point_glimpso_at_swift
watch_notifications
QT_LOGGING_RULES=$TOOLBAR_LOGGING e2e_start_glimpso
wait_for "glimpso to see the display" 10 grep -qE " displays?:" "$GLIMPSO_LOG"

# 1. A wrong secret, given while glimpso runs.
store_credentials "$S3_ACCESS_KEY_ID" "not-the-secret"
expect_eq "$E2E_STATUS" 0 "exit code of glimpso cloud-credentials ($E2E_ERR)"
wait_for_log "took the cloud credentials from" 10
printf 'before' | xclip -selection clipboard
open_region_overlay 640 300
arm_with_toolbar 200 100 600 400
click_chip "chip upload"
wait_for "the failure notice" 30 grep -q 'string "Upload didn.t work"' "$E2E_NOTIFY_LOG"
grep -qF 'string "Upload failed: HTTP 403: The request signature we calculated does not match' "$E2E_NOTIFY_LOG" \
  || e2e_fail "the notice does not carry S3's message: $(grep -A3 'Upload didn' "$E2E_NOTIFY_LOG")"
wait_for "the saved capture" 10 bash -c "ls '$HOME'/Pictures/Screenshots/glimpso-*.png >/dev/null 2>&1"
clipboard | grep -q '^http' && e2e_fail "a link on the clipboard after a failed upload: $(clipboard)"
wait_for "the picture on the clipboard" 10 bash -c "xclip -selection clipboard -t TARGETS -o | grep -q image/png"
wait_for_log "snapshot crop failed: Upload failed: HTTP 403" 5

# 2. The right secret, and Swift's endpoint gone in the middle of 120 MiB.
store_credentials "$S3_ACCESS_KEY_ID" "$S3_SECRET_ACCESS_KEY"
expect_eq "$E2E_STATUS" 0 "exit code of glimpso cloud-credentials ($E2E_ERR)"
big=$E2E_DIR/big.mp4
head -c $((120 * 1024 * 1024)) /dev/urandom >"$big"
failures_before=$(grep -c 'string "Upload didn.t work"' "$E2E_NOTIFY_LOG" || true)
( set +e; timeout 120 "$GLIMPSO_BIN" upload "$big" >"$E2E_DIR/big.out" 2>"$E2E_DIR/big.err"; echo $? >"$E2E_DIR/big.status" ) &
E2E_PIDS+=($!)
wait_for_log "multipart upload of 125829120 bytes started" 30
stop_swift_proxy
wait_for "glimpso upload to end" 90 test -s "$E2E_DIR/big.status"
expect_eq "$(cat "$E2E_DIR/big.status")" 1 "exit code of glimpso upload with Swift gone"
expect_contains "$(cat "$E2E_DIR/big.err")" "glimpso: Upload failed: " "what glimpso upload said"
wait_for "the second failure notice" 10 bash -c \
  "[ \$(grep -c 'string \"Upload didn.t work\"' '$E2E_NOTIFY_LOG') -gt $failures_before ]"
glimpso_alive || e2e_fail "glimpso did not survive"
wait_for "the unfinished upload to be remembered" 10 test -s "$XDG_DATA_HOME/glimpso/abandoned-uploads.json"

# 3. Swift is back: the next upload works, and the parts left are released.
start_swift_proxy
[ -n "$(s3 open-uploads "$BUCKET")" ] || e2e_fail "Swift kept no unfinished upload; the case proves nothing"
printf 'small\n' >"$E2E_DIR/small.txt"
glimpso_upload "$E2E_DIR/small.txt"
expect_eq "$E2E_STATUS" 0 "exit code of the next upload ($E2E_ERR)"
read -r _ type _ <<<"$(s3 head "$BUCKET" "${E2E_OUT##*/}")"
expect_eq "$type" text/plain "the content type of a text file"
wait_for "no unfinished multipart upload" 30 bash -c "[ -z \"\$(/usr/bin/python3 '$E2E_HARNESS_DIR/tools/s3.py' open-uploads '$BUCKET')\" ]"
wait_for "the list of unfinished uploads to empty" 10 test ! -e "$XDG_DATA_HOME/glimpso/abandoned-uploads.json"
wait_for_log "released the parts of an unfinished upload" 5
echo "passed"
