#!/usr/bin/env bash
# A capture saved by the running copy is the newest item of the history listing.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1024x768

e2e_start_glimpso
e2e_glimpso all --save
expect_eq "$E2E_STATUS" 0 "exit code of all --save"
saved=$(last_line "$E2E_OUT")
wait_for_file "$saved" 10
case $(basename "$saved") in glimpso-*.png) ;; *) e2e_fail "unexpected file name: $saved" ;; esac

e2e_glimpso history --list
expect_eq "$E2E_STATUS" 0 "exit code of history --list"
newest=$(head -n1 <<<"$E2E_OUT")
expect_contains "$newest" "$saved" "the newest history line"
expect_contains "$newest" "1024" "the newest history line"

e2e_glimpso history --list --json
expect_eq "$E2E_STATUS" 0 "exit code of history --list --json"
expect_contains "$E2E_OUT" "$(basename "$saved")" "the JSON listing"
echo "passed"
