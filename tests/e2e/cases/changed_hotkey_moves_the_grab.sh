#!/usr/bin/env bash
# Changing the region and all-displays shortcuts in the settings file and
# sending SIGHUP moves the grabs: the new combinations fire, the old one goes
# back to the focused program.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x800

e2e_start_glimpso
wait_for_log "registered 2 → Ctrl+Shift+2" 10
typed=$E2E_DIR/typed
start_key_witness "$typed"

conf=$XDG_CONFIG_HOME/glimpso/glimpso.conf
mkdir -p "$(dirname "$conf")"
[ -f "$conf" ] || printf '[General]\n' >"$conf"
grep -q '^\[General\]' "$conf" || sed -i '1i [General]' "$conf"
sed -i '/^settings\.hotkey\.region=/d; /^settings\.hotkey\.allDisplays=/d' "$conf"
# Ctrl+Shift+3 and Ctrl+Shift+4, in the file's own quoting.
sed -i '/^\[General\]/a settings.hotkey.region="{\\"keyCode\\":20,\\"modifierFlagsRaw\\":1179648}"' "$conf"
sed -i '/^\[General\]/a settings.hotkey.allDisplays="{\\"keyCode\\":21,\\"modifierFlagsRaw\\":1179648}"' "$conf"
kill -HUP "$GLIMPSO_PID"

wait_for_log "hotkey settings changed; re-registering" 10
wait_for_log "registered 2 → Ctrl+Shift+3" 10
wait_for_log "registered 3 → Ctrl+Shift+4" 10

send_keys ctrl+shift+3
wait_for_log "hot key fired: 2" 10
dismiss_overlay
send_keys ctrl+shift+4
wait_for_log "hot key fired: 3" 10
dismiss_overlay

# The old region shortcut is free again: the terminal gets it (^@).
send_keys ctrl+shift+2
witness_mark "$typed" mark
grep -qF '^@' "$typed" || e2e_fail "the terminal did not receive the freed Ctrl+Shift+2: '$(cat -A "$typed")'"
expect_eq "$(log_count "hot key fired: 2")" 1 "region presses seen by glimpso"
glimpso_alive || e2e_fail "glimpso ended"
echo "passed"
