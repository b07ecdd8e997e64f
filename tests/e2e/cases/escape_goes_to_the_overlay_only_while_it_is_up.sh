#!/usr/bin/env bash
# With an xterm focused, Ctrl+Shift+2 opens the overlay; Escape pressed while
# the overlay is up cancels it and never reaches the xterm; once the overlay
# is gone, Escape reaches the xterm again.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x800

e2e_start_glimpso
wait_for_log "registered 2 → Ctrl+Shift+2" 10
typed=$E2E_DIR/typed
start_key_witness "$typed"

send_keys ctrl+shift+2
wait_for_log "hot key fired: 2" 10
wait_for_window "glimpso overlay" 10
wait_for_log "registered 4 → Esc" 10

# The terminal holds the focus again, as when the overlay did not take it.
xdotool windowfocus --sync "$E2E_WITNESS_WINDOW" 2>/dev/null || true
xdotool key Escape
wait_for_log "hot key fired: 4" 10
wait_for "the overlay to go" 10 bash -c "! xdotool search --onlyvisible --name 'glimpso overlay'"
wait_for_log "unregistered 4" 10

xdotool windowactivate --sync "$E2E_WITNESS_WINDOW" 2>/dev/null || true
witness_mark "$typed" mark
grep -qF '^[' "$typed" && e2e_fail "the terminal received the Escape meant for the overlay"

xdotool key Escape
witness_mark "$typed" again
grep -qF '^[' "$typed" || e2e_fail "Escape did not reach the terminal after the overlay was gone: '$(cat -A "$typed")'"
echo "passed"
