#!/usr/bin/env bash
# glimpso starts into the tray with no window, and keeps running.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1600x900

e2e_start_glimpso
e2e_glimpso settings-path
expect_eq "$E2E_STATUS" 0 "exit code of settings-path"
expect_eq "$E2E_OUT" "$XDG_CONFIG_HOME/glimpso/glimpso.conf" "settings path"
glimpso_alive || e2e_fail "glimpso is not running after answering"
[ -z "$(visible_windows_of "$GLIMPSO_PID")" ] || e2e_fail "glimpso showed a window at launch"
grep -q "glimpso launched" "$GLIMPSO_LOG" || e2e_fail "no launch line in the log"
grep -qE "1 display: [^ ]+ 1600x900\+0\+0@1" "$GLIMPSO_LOG" || e2e_fail "glimpso did not log the display it runs on"
echo "passed"
