#!/usr/bin/env bash
# Keys an older version left in the desktop's keyring (GNOME's, locked) are
# moved at the first upload that needs them: the keyring asks for its
# password; refused, the upload ends with the keyring's notice and nothing
# moves; allowed on the next try, both keys land in the credential file (0600)
# and leave the keyring, and the upload goes through with them.
source "$(dirname "$0")/../harness.sh"
source "$(dirname "$0")/../upload-harness.sh"
e2e_setup
start_swift
point_glimpso_at_swift
start_keyring
keyring_store cloud.accessKeyID "$S3_ACCESS_KEY_ID"
keyring_store cloud.secretAccessKey "$S3_SECRET_ACCESS_KEY"
expect_eq "$(keyring_lookup cloud.secretAccessKey)" "$S3_SECRET_ACCESS_KEY" "the old secret in the keyring"
keyring_lock
watch_notifications
e2e_start_glimpso
credentials=$XDG_DATA_HOME/glimpso/cloud-credentials.json
printf 'a file\n' >"$E2E_DIR/note.txt"
prompt_up() { xdotool search --onlyvisible --name 'Unlock Login Keyring' >/dev/null 2>&1; }
prompt_gone() { ! prompt_up; }
upload_in_background() {
  rm -f "$E2E_DIR/up.status"
  ( set +e; timeout 90 "$GLIMPSO_BIN" upload "$E2E_DIR/note.txt" >"$E2E_DIR/up.out" 2>"$E2E_DIR/up.err"
    echo $? >"$E2E_DIR/up.status" ) &
  E2E_PIDS+=($!)
}

# 1. Refused: the keyring's own prompt is cancelled.
upload_in_background
wait_for "the keyring to ask for its password" 30 prompt_up
xdotool search --onlyvisible --name 'Unlock Login Keyring' windowactivate --sync 2>/dev/null || true
xdotool key --clearmodifiers Escape
wait_for "glimpso upload to end" 30 test -s "$E2E_DIR/up.status"
expect_eq "$(cat "$E2E_DIR/up.status")" 1 "exit code after a refused keyring"
expect_eq "$(cat "$E2E_DIR/up.err")" "glimpso: Keyring access was denied, so the saved upload credentials couldn't be migrated. Try again and click “Allow” once, or re-enter the keys in Settings → Cloud." "the error"
wait_for "the notice" 10 grep -q 'string "Upload didn.t work"' "$E2E_NOTIFY_LOG"
[ -e "$credentials" ] && e2e_fail "credentials were written after a refusal"
keyring_has cloud.accessKeyID && keyring_has cloud.secretAccessKey || e2e_fail "the keyring lost items after a refusal"
wait_for "the prompt to go" 10 prompt_gone

# 2. Allowed: the password is typed into the same prompt.
keyring_lock
upload_in_background
wait_for "the keyring to ask again" 30 prompt_up
xdotool search --onlyvisible --name 'Unlock Login Keyring' windowactivate --sync 2>/dev/null || true
xdotool type --delay 20 keyring-password
xdotool key Return
wait_for "glimpso upload to end" 60 test -s "$E2E_DIR/up.status"
expect_eq "$(cat "$E2E_DIR/up.status")" 0 "exit code once the keyring opened ($(cat "$E2E_DIR/up.err"))"
link=$(cat "$E2E_DIR/up.out")
fetch "$link" "$E2E_DIR/back.txt"
cmp -s "$E2E_DIR/note.txt" "$E2E_DIR/back.txt" || e2e_fail "the file came back different"
expect_eq "$(file_mode "$credentials")" 600 "mode of the credential file"
expect_eq "$(cat "$credentials")" "{\"accessKeyID\":\"$S3_ACCESS_KEY_ID\",\"secretAccessKey\":\"$S3_SECRET_ACCESS_KEY\"}" "the credential file"
keyring_has cloud.accessKeyID && e2e_fail "the access key is still in the keyring"
keyring_has cloud.secretAccessKey && e2e_fail "the secret is still in the keyring"
wait_for_log "moved the cloud credentials from the keyring into $credentials" 5

# 3. From now on the file serves; the keyring is not asked again.
keyring_lock
glimpso_upload "$E2E_DIR/note.txt"
expect_eq "$E2E_STATUS" 0 "exit code of a later upload ($E2E_ERR)"
prompt_up && e2e_fail "the keyring asked again"
grep -qF "$S3_SECRET_ACCESS_KEY" "$GLIMPSO_LOG" && e2e_fail "a log line holds the secret"
echo "passed"
