#!/usr/bin/env bash
# `glimpso history --list [--json]` reads the save folder itself: no copy runs and
# none is started, it answers without a display, lists newest first, and honours
# the retention setting.
source "$(dirname "$0")/../harness.sh"
e2e_setup

save=$HOME/Pictures/Screenshots
mkdir -p "$save"
ffmpeg -v error -y -f lavfi -i testsrc=size=64x32 -frames:v 1 "$save/glimpso-2026-01-01-100000.png"
ffmpeg -v error -y -f lavfi -i testsrc=size=40x30:rate=5 -frames:v 3 "$save/glimpso-2026-01-01-110000.gif"
ffmpeg -v error -y -f lavfi -i testsrc=size=64x48:rate=10 -t 2 -pix_fmt yuv420p \
  -movflags frag_keyframe+empty_moov+default_base_moof "$save/glimpso-2026-01-01-120000.mp4"
ffmpeg -v error -y -f lavfi -i testsrc=size=50x20 -frames:v 1 "$save/glimpso-2026-01-01-130000.JPG"
# Not captures: another prefix, the prefix in capitals, an unknown extension, a
# folder and a dangling link named like captures.
cp "$save/glimpso-2026-01-01-100000.png" "$save/Screenshot from 2026.png"
cp "$save/glimpso-2026-01-01-100000.png" "$save/GLIMPSO-2026-01-01-100000.png"
echo notes >"$save/glimpso-notes.txt"
mkdir "$save/glimpso-folder.png"
ln -s "$save/nowhere.png" "$save/glimpso-dangling.png"

touch -d '5 hours ago' "$save/glimpso-2026-01-01-100000.png"
touch -d '4 hours ago' "$save/glimpso-2026-01-01-110000.gif"
touch -d '2 hours ago' "$save/glimpso-2026-01-01-120000.mp4"
touch -d '10 days ago' "$save/glimpso-2026-01-01-130000.JPG"
# A text from Capture Text, three hours old, in the store's own file.
mkdir -p "$XDG_DATA_HOME/glimpso"
text_date=$(python3 -c 'import time; print(time.time() - 978307200 - 3 * 3600)')
printf '[{"id":"TEXT-1","date":%s,"kind":"text","text":"read\\tfrom the screen"}]' "$text_date" \
  >"$XDG_DATA_HOME/glimpso/text.json"

e2e_glimpso history --list
expect_eq "$E2E_STATUS" 0 "exit code of history --list"
expect_eq "$(wc -l <<<"$E2E_OUT")" 4 "number of lines (default reach: a week)"
expect_eq "$(cut -f2- <<<"$E2E_OUT")" "$(printf '%s\n' \
  "video	2.00s	$save/glimpso-2026-01-01-120000.mp4" \
  "text	-	read\\tfrom the screen" \
  "gif	40x30	$save/glimpso-2026-01-01-110000.gif" \
  "image	64x32	$save/glimpso-2026-01-01-100000.png")" "listing"
# The first field is a local date in ISO 8601.
cut -f1 <<<"$E2E_OUT" | grep -qvE '^[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}' && e2e_fail "dates: $E2E_OUT"

# Nothing was started to answer it.
bus_name_has_owner com.tovarine.glimpso && e2e_fail "a copy of glimpso was started"
[ -e "$XDG_STATE_HOME/glimpso/glimpso.log" ] && e2e_fail "a copy of glimpso was started (it left a log)"

e2e_glimpso history --list --json
expect_eq "$E2E_STATUS" 0 "exit code of history --list --json"
check_json='
import json, sys
save = sys.argv[1]
items = json.load(sys.stdin)
kinds = [i["kind"] for i in items]
assert kinds == ["video", "text", "gif", "image"], kinds
dates = [i["date"] for i in items]
assert dates == sorted(dates, reverse=True), dates
video, text, gif, image = items
assert set(video) == {"id", "date", "kind", "path", "pixelWidth", "pixelHeight", "seconds"}, video
assert video["path"] == video["id"] == save + "/glimpso-2026-01-01-120000.mp4", video
assert abs(video["seconds"] - 2.0) < 0.11, video
assert set(text) == {"id", "date", "kind", "pixelWidth", "pixelHeight", "text", "seconds"}, text
assert text["text"] == "read\tfrom the screen" and text["id"] == "TEXT-1", text
assert (gif["pixelWidth"], gif["pixelHeight"]) == (40, 30), gif
assert (image["pixelWidth"], image["pixelHeight"]) == (64, 32), image
'
python3 -c "$check_json" "$save" <<<"$E2E_OUT" || e2e_fail "JSON listing: $E2E_OUT"

# Without a display it answers all the same.
set +e
env -u DISPLAY -u WAYLAND_DISPLAY -u DBUS_SESSION_BUS_ADDRESS "$GLIMPSO_BIN" history --list >"$E2E_DIR/out" 2>"$E2E_DIR/err"
status=$?
set -e
expect_eq "$status" 0 "exit code without a display"
expect_eq "$(wc -l <"$E2E_DIR/out")" 4 "lines without a display"

# The reach follows the setting; what falls outside stays on disk.
mkdir -p "$XDG_CONFIG_HOME/glimpso"
printf '[General]\nsettings.history.retention=forever\n' >"$XDG_CONFIG_HOME/glimpso/glimpso.conf"
e2e_glimpso history --list
expect_eq "$(wc -l <<<"$E2E_OUT")" 5 "lines with the reach forever"
expect_eq "$(tail -n1 <<<"$E2E_OUT" | cut -f2-)" "image	50x20	$save/glimpso-2026-01-01-130000.JPG" "oldest line"
printf '[General]\nsettings.history.retention=day\n' >"$XDG_CONFIG_HOME/glimpso/glimpso.conf"
e2e_glimpso history --list
expect_eq "$(wc -l <<<"$E2E_OUT")" 4 "lines with the reach a day"
[ -f "$save/glimpso-2026-01-01-130000.JPG" ] || e2e_fail "the capture beyond the reach is gone from disk"

# A save folder chosen in the settings is the one listed.
mkdir -p "$HOME/elsewhere"
cp "$save/glimpso-2026-01-01-100000.png" "$HOME/elsewhere/glimpso-only.png"
printf '[General]\nsettings.saveDirectory=%s\n' "$HOME/elsewhere" >"$XDG_CONFIG_HOME/glimpso/glimpso.conf"
e2e_glimpso history --list
expect_eq "$(grep -c . <<<"$E2E_OUT")" 2 "lines of the chosen folder (its capture and the text)"
expect_contains "$E2E_OUT" "$HOME/elsewhere/glimpso-only.png" "listing of the chosen folder"

e2e_glimpso history --list --yaml
expect_eq "$E2E_STATUS" 2 "exit code of a wrong option"
expect_contains "$E2E_ERR" "glimpso: usage: glimpso history --list [--json]" "stderr"
echo "passed"
