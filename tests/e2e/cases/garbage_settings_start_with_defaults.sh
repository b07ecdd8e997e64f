#!/usr/bin/env bash
# A settings file full of garbage starts with defaults, crashes nothing, and
# loses none of the keys that do read.
source "$(dirname "$0")/../harness.sh"
e2e_setup

conf=$XDG_CONFIG_HOME/glimpso/glimpso.conf
mkdir -p "$(dirname "$conf")"
{
  printf '\x00\x01\xff garbage [[[\n'
  printf '[General]\n'
  printf 'settings.gif.fps=24\n'
  printf 'settings.capture.editMode=sideways\n'
  printf 'settings.hotkey.region={{{{\n'
  printf 'settings.editor.strokeWidth=\xfe\xfe\n'
  printf 'settings.cloud.apiKey=old-secret\n'
  head -c 2000 /dev/urandom | tr -d '\n' | head -c 500; printf '\n'
} >"$conf"

e2e_start_glimpso
e2e_glimpso settings-path
expect_eq "$E2E_STATUS" 0 "glimpso answers"
glimpso_alive || e2e_fail "glimpso did not survive its settings"
# The old secret is removed at start; the readable key is still there.
wait_for "the old secret to be removed" 10 bash -c "! grep -q apiKey '$conf'"
grep -q '^settings.gif.fps=24$' "$conf" || e2e_fail "a readable key was lost: $(cat -v "$conf")"
echo "passed"
