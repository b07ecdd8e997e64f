#!/usr/bin/env bash
# A second launch hands off to the running copy and exits at once; the first stays.
source "$(dirname "$0")/../harness.sh"
e2e_setup

e2e_start_glimpso
e2e_glimpso
expect_eq "$E2E_STATUS" 0 "exit code of the second copy"
expect_eq "$(last_line "$E2E_ERR")" "glimpso is already running" "second copy's answer"
wait_for "the hand-off to reach the first copy" 10 grep -q "another launch handed off" "$GLIMPSO_LOG"
glimpso_alive || e2e_fail "the first copy ended"
e2e_glimpso settings-path
expect_eq "$E2E_STATUS" 0 "the first copy still answers"
echo "passed"
