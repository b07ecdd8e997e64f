#!/usr/bin/env bash
# A config folder that cannot be written does not stop glimpso from starting.
source "$(dirname "$0")/../harness.sh"
e2e_setup

folder=$XDG_CONFIG_HOME/glimpso
mkdir -p "$folder"
printf '[General]\nsettings.cloud.apiKey=forces-a-write\n' >"$folder/glimpso.conf"
if [ "$(id -u)" -eq 0 ]; then
  # Permissions do not stop root; an immutable folder does.
  chattr +i "$folder/glimpso.conf" "$folder" || e2e_fail "cannot make the folder immutable here"
  E2E_CLEANUPS+=("chattr -i '$folder' '$folder/glimpso.conf'")
else
  chmod 0555 "$folder"; chmod 0444 "$folder/glimpso.conf"
  E2E_CLEANUPS+=("chmod 0755 '$folder'; chmod 0644 '$folder/glimpso.conf'")
fi

e2e_start_glimpso
e2e_glimpso settings-path
expect_eq "$E2E_STATUS" 0 "glimpso answers"
glimpso_alive || e2e_fail "glimpso ended"
wait_for "the write failure to be logged" 10 grep -q "cannot write the settings file" "$GLIMPSO_LOG"
echo "passed"
