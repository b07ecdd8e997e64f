#!/usr/bin/env bash
# The command line: unknown verbs, help, version, a verb that starts glimpso first,
# and a clear answer without a display.
source "$(dirname "$0")/../harness.sh"
e2e_setup

e2e_glimpso frobnicate
expect_eq "$E2E_STATUS" 2 "exit code of an unknown verb"
expect_contains "$E2E_ERR" "glimpso: unknown command 'frobnicate'" "stderr"
expect_contains "$E2E_ERR" "Usage: glimpso" "stderr"

e2e_glimpso --version
expect_eq "$E2E_STATUS" 0 "exit code of --version"
expect_contains "$E2E_OUT" "glimpso " "version"

e2e_glimpso --help
expect_contains "$E2E_OUT" "settings-path" "help"

# Nothing runs: the verb starts glimpso first and still answers.
e2e_glimpso settings-path
expect_eq "$E2E_STATUS" 0 "exit code of settings-path with nothing running"
expect_eq "$E2E_OUT" "$XDG_CONFIG_HOME/glimpso/glimpso.conf" "settings path"
wait_for "the started copy's log" 10 test -s "$XDG_STATE_HOME/glimpso/glimpso.log"
e2e_glimpso quit
expect_eq "$E2E_STATUS" 0 "quit of the started copy"

set +e
env -u DISPLAY -u WAYLAND_DISPLAY "$GLIMPSO_BIN" >"$E2E_DIR/out" 2>"$E2E_DIR/err"
status=$?
set -e
expect_eq "$status" 1 "exit code without a display"
expect_contains "$(cat "$E2E_DIR/err")" "no desktop session" "stderr without a display"
echo "passed"
