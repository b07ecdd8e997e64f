#!/usr/bin/env bash
# A 120 MiB recording goes up in 16 MiB parts and comes back whole, as a video;
# while it goes, the tray icon's tooltip and a progress notice count up (when
# it takes longer than a second); the link is on the clipboard at the end.
source "$(dirname "$0")/../harness.sh"
source "$(dirname "$0")/../upload-harness.sh"
e2e_setup
start_swift
point_glimpso_at_swift
store_credentials "$S3_ACCESS_KEY_ID" "$S3_SECRET_ACCESS_KEY"
expect_eq "$E2E_STATUS" 0 "exit code of glimpso cloud-credentials ($E2E_ERR)"

recording=$HOME/Pictures/Screenshots/glimpso-2025-03-01-120000.mp4
mkdir -p "$(dirname "$recording")"
head -c $((120 * 1024 * 1024)) /dev/urandom >"$recording"

# Started by the command itself; told to quit at the end.
E2E_CLEANUPS+=("timeout 10 '$GLIMPSO_BIN' quit >/dev/null 2>&1")
started=$SECONDS
glimpso_upload "$recording" 120
took=$((SECONDS - started))
expect_eq "$E2E_STATUS" 0 "exit code of glimpso upload ($E2E_ERR)"
link=$E2E_OUT
[[ "$link" =~ ^$PUBLIC_BASE/[A-Za-z0-9]{10}\.mp4$ ]] || e2e_fail "glimpso upload printed: $link"
# The log of a copy a command started.
GLIMPSO_LOG=$XDG_STATE_HOME/glimpso/glimpso.log
glimpso_logged "multipart upload of 125829120 bytes started" || e2e_fail "the upload did not go in parts"
expect_eq "$(clipboard)" "$link" "the clipboard"

read -r etag type length <<<"$(s3 head "$BUCKET" "${link##*/}")"
expect_eq "$type" video/mp4 "the object's content type"
expect_eq "$length" 125829120 "the object's size"
[[ "$etag" == *-8\" ]] || e2e_fail "not an object of 8 parts: $etag"
fetch "$link" "$E2E_DIR/back.mp4"
cmp -s "$recording" "$E2E_DIR/back.mp4" || e2e_fail "the recording came back different"
expect_eq "$(s3 open-uploads "$BUCKET")" "" "unfinished multipart uploads"

# Progress for an upload of more than a second: the notice counted up in
# place, and both it and the tooltip are gone at the end.
if [ "$took" -ge 2 ]; then
  glimpso_logged "toast: Uploading… " || e2e_fail "no progress notice in $took s"
fi
wait_for "the progress notice to go" 10 bash -c "! xdotool search --onlyvisible --name 'glimpso notice: Uploading' >/dev/null 2>&1"
echo "passed"
