#!/usr/bin/env bash
# With two displays side by side, of different sizes, glimpso sees both where they are.
source "$(dirname "$0")/../harness.sh"
e2e_setup --monitors "1280x800+0+0 1024x768+1280+0"

e2e_start_glimpso
wait_for "the display line in the log" 10 grep -q "displays:" "$GLIMPSO_LOG"
line=$(grep "displays:" "$GLIMPSO_LOG")
expect_contains "$line" "2 displays: " "the display line"
expect_contains "$line" "DUMMY0 1280x800+0+0@1" "the display line"
expect_contains "$line" "DUMMY1 1024x768+1280+0@1" "the display line"
[ -z "$(visible_windows_of "$GLIMPSO_PID")" ] || e2e_fail "glimpso showed a window at launch"
echo "passed"
