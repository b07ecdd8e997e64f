#!/usr/bin/env bash
# `glimpso quit` ends the running copy and frees its name; a second quit says nothing runs.
source "$(dirname "$0")/../harness.sh"
e2e_setup

e2e_start_glimpso
e2e_glimpso quit
expect_eq "$E2E_STATUS" 0 "exit code of quit"
wait_for "glimpso to end" 10 glimpso_gone
wait_for "the bus name to be released" 10 bash -c '! dbus-send --session --print-reply --dest=org.freedesktop.DBus /org/freedesktop/DBus org.freedesktop.DBus.NameHasOwner string:com.tovarine.glimpso | grep -q "boolean true"'
e2e_glimpso quit
expect_eq "$E2E_STATUS" 0 "exit code of quit with nothing running"
expect_eq "$E2E_ERR" "glimpso is not running" "quit with nothing running"
echo "passed"
