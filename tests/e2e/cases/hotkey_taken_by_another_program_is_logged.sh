#!/usr/bin/env bash
# A combination that another program holds is logged as refused, stays with
# that program, and the other shortcuts still work.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x800

/usr/bin/python3 -c "import Xlib" 2>/dev/null || e2e_fail "python3-xlib is missing (scripts/deps/test-hotkeys.txt)"
holder_out=$E2E_DIR/holder.out
/usr/bin/python3 "$E2E_HARNESS_DIR/tools/hold-key.py" 2 ctrl shift >"$holder_out" 2>>"$E2E_DIR/holder.log" &
E2E_PIDS+=($!)
wait_for "the other program to hold Ctrl+Shift+2" 10 grep -q holding "$holder_out"

e2e_start_glimpso
wait_for_log "RegisterEventHotKey failed for 2: status=10" 10
wait_for_log "registered 3 → Ctrl+Shift+1" 10
glimpso_logged "registered 2 →" && e2e_fail "glimpso claims Ctrl+Shift+2 although another program holds it"

typed=$E2E_DIR/typed
start_key_witness "$typed"
send_keys ctrl+shift+2
wait_for "the other program to receive Ctrl+Shift+2" 10 grep -q pressed "$holder_out"
send_keys ctrl+shift+1
wait_for_log "hot key fired: 3" 10
glimpso_logged "hot key fired: 2" && e2e_fail "glimpso fired a shortcut it does not hold"
glimpso_alive || e2e_fail "glimpso ended"
echo "passed"
