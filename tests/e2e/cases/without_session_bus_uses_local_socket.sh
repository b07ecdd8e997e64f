#!/usr/bin/env bash
# With no session bus, copies find each other over a local socket: hand-off,
# verbs and quit all still work.
source "$(dirname "$0")/../harness.sh"
e2e_setup
export DBUS_SESSION_BUS_ADDRESS="unix:path=$E2E_DIR/no-bus-here"

"$GLIMPSO_BIN" >>"$GLIMPSO_LOG" 2>&1 &
GLIMPSO_PID=$!
wait_for "glimpso to listen on its socket" 20 grep -q "answering on .*glimpso-.*sock" "$GLIMPSO_LOG"

e2e_glimpso
expect_eq "$E2E_STATUS" 0 "second copy"
expect_eq "$(last_line "$E2E_ERR")" "glimpso is already running" "second copy's answer"
e2e_glimpso settings-path
expect_eq "$E2E_STATUS" 0 "settings-path over the socket"
expect_eq "$E2E_OUT" "$XDG_CONFIG_HOME/glimpso/glimpso.conf" "settings path"
e2e_glimpso quit
expect_eq "$E2E_STATUS" 0 "quit over the socket"
wait_for "glimpso to end" 10 glimpso_gone
echo "passed"
