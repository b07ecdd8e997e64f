#!/usr/bin/env bash
# With an xterm focused, the global shortcuts reach glimpso and start their
# captures, and the xterm never sees those presses.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x800

e2e_start_glimpso
wait_for_log "registered 2 → Ctrl+Shift+2" 10
wait_for_log "registered 3 → Ctrl+Shift+1" 10
typed=$E2E_DIR/typed
start_key_witness "$typed"

# All displays: the action starts at once.
send_keys ctrl+shift+1
wait_for_log "hot key fired: 3" 10
wait_for_log "coordinator.captureRegion entry; allDisplays=1" 10
dismiss_overlay

# Region, from the terminal again.
send_keys ctrl+shift+2
wait_for_log "hot key fired: 2" 10
wait_for_log "coordinator.captureRegion entry; allDisplays=0" 10
dismiss_overlay

# The terminal has had its turn at every key pressed so far: it saw only the
# dots it was tested with and the mark, none of the shortcuts (Ctrl+Shift+2
# would show as ^@, Ctrl+Shift+1 as 1 or !).
witness_mark "$typed" mark
[[ $(cat "$typed") =~ ^\.+mark$ ]] || e2e_fail "the terminal received shortcut keys: '$(cat -A "$typed")'"
glimpso_alive || e2e_fail "glimpso ended"
echo "passed"
