#!/usr/bin/env bash
# NumLock and CapsLock on do not break the global shortcuts.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x800

e2e_start_glimpso
wait_for_log "registered 3 → Ctrl+Shift+1" 10
typed=$E2E_DIR/typed
start_key_witness "$typed"
# Plain xdotool: send_keys would clear the locks for the press.
press() { xdotool key "$@"; }

xdotool key Num_Lock
wait_for "NumLock to be on" 10 bash -c "xset q | grep -q 'Num Lock: *on'"
press ctrl+shift+1
wait_for_log "hot key fired: 3" 10
dismiss_overlay

xdotool key Caps_Lock
wait_for "CapsLock to be on" 10 bash -c "xset q | grep -q 'Caps Lock: *on'"
fired=$(log_count "hot key fired: 3")
press ctrl+shift+1
wait_for "a second press with both locks on" 10 bash -c "[ \$(grep -cF 'hot key fired: 3' '$GLIMPSO_LOG') -gt $fired ]"
dismiss_overlay

xdotool key Num_Lock
wait_for "NumLock to be off" 10 bash -c "xset q | grep -q 'Num Lock: *off'"
fired=$(log_count "hot key fired: 3")
press ctrl+shift+1
wait_for "a third press with CapsLock alone" 10 bash -c "[ \$(grep -cF 'hot key fired: 3' '$GLIMPSO_LOG') -gt $fired ]"
dismiss_overlay
xdotool key Caps_Lock
wait_for "CapsLock to be off" 10 bash -c "xset q | grep -q 'Caps Lock: *off'"

witness_mark "$typed" mark
[[ $(cat "$typed") =~ ^\.+mark$ ]] || e2e_fail "the terminal received shortcut keys: '$(cat -A "$typed")'"
echo "passed"
