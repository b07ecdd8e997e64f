#!/usr/bin/env bash
# The frozen-screen overlay on two monitors with known content: a drag and
# Return put exactly the dragged pixels on the clipboard, a drag across both
# monitors comes out whole, Escape mid-drag and a plain click cancel and leave
# no window, the monitor under the pointer takes the keyboard, and a text
# capture or "edit after capture" ends at the release of the drag.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x480

two_monitors_with_known_content
screen=$KNOWN_SCREEN

e2e_start_glimpso
e2e_glimpso settings-path
conf=$(last_line "$E2E_OUT")
wait_for "glimpso to see both monitors" 10 grep -q "2 displays" "$GLIMPSO_LOG"

same_pixels() { # expected actual what
  local differing plain=$E2E_DIR/plain.png
  convert "$2" -alpha off -strip -depth 8 "PNG24:$plain"
  differing=$(compare -metric AE "$1" "$plain" null: 2>&1) || true
  [ "$differing" = 0 ] || e2e_fail "$3: $differing pixels differ from the screen"
}
crop_of_screen() { convert "$screen" -crop "$1" +repage -depth 8 "PNG24:$2"; }
painted_count() { grep -c "present: overlay painted" "$GLIMPSO_LOG" || true; }
finished_count() { grep -c "finish: didFinish=0" "$GLIMPSO_LOG" || true; }
no_overlay() { [ -z "$(xdotool search --onlyvisible --name 'glimpso overlay' 2>/dev/null)" ]; }
clipboard_has_png() { xclip -selection clipboard -t TARGETS -o 2>/dev/null | grep -q image/png; }

# Starts an overlay with the given verb and waits until it is painted.
open_overlay() {
  local before
  before=$(painted_count)
  e2e_glimpso "$@"
  expect_eq "$E2E_STATUS" 0 "exit code of glimpso $* ($E2E_ERR)"
  wait_for "the overlay to be painted" 10 bash -c "[ \$(grep -c 'present: overlay painted' '$GLIMPSO_LOG') -gt $before ]"
}
wait_for_result() { # count-before what
  wait_for "the overlay to finish ($2)" 10 bash -c "[ \$(grep -c 'finish: didFinish=0' '$GLIMPSO_LOG') -gt $1 ]"
  wait_for "every overlay window to go" 10 no_overlay
}
last_result() { grep "finish: didFinish=0" "$GLIMPSO_LOG" | tail -n1; }
focused_x() { xdotool getwindowfocus getwindowgeometry 2>/dev/null | sed -n 's/.*Position: \([0-9-]*\),.*/\1/p'; }

# 1. A drag on the left monitor and Return: exactly those pixels.
xdotool mousemove --sync 300 300
open_overlay region
windows=$(xdotool search --onlyvisible --name 'glimpso overlay' | wc -l)
expect_eq "$windows" 1 "overlay windows of a region capture"
wait_for "the left overlay to take the keyboard" 10 bash -c "[ \"\$(xdotool getwindowfocus getwindowname)\" = 'glimpso overlay' ]"
expect_eq "$(focused_x)" 0 "x of the key overlay"
before=$(finished_count)
drag 50 60 250 160
send_keys Return
wait_for_result "$before" "Return"
expect_contains "$(last_result)" "selected" "the result of Return"
wait_for "an image on the clipboard" 10 clipboard_has_png
xclip -selection clipboard -t image/png -o >"$E2E_DIR/left.png"
crop_of_screen 200x100+50+60 "$E2E_DIR/expected-left.png"
same_pixels "$E2E_DIR/expected-left.png" "$E2E_DIR/left.png" "dragged region"

# 2. Escape in the middle of a drag cancels and leaves no window.
xdotool mousemove --sync 400 300
open_overlay region
before=$(finished_count)
xdotool mousemove --sync 100 100 mousedown 1
xdotool mousemove --sync 200 200
send_keys Escape
wait_for_result "$before" "Escape mid-drag"
xdotool mouseup 1
expect_contains "$(last_result)" "cancelled" "the result of Escape"

# 3. A click without a drag cancels.
open_overlay region
before=$(finished_count)
xdotool mousemove --sync 150 150 click 1
wait_for_result "$before" "a plain click"
expect_contains "$(last_result)" "cancelled" "the result of a click"

# 4. All displays, pointer on the right monitor: that overlay is key, and a
# drag across both monitors comes out whole.
xdotool mousemove --sync 1000 300
open_overlay all
windows=$(xdotool search --onlyvisible --name 'glimpso overlay' | wc -l)
expect_eq "$windows" 2 "overlay windows of an all-displays capture"
wait_for "the right overlay to take the keyboard" 10 bash -c "[ \"\$(xdotool getwindowfocus getwindowgeometry | sed -n 's/.*Position: \\([0-9-]*\\),.*/\\1/p')\" = 640 ]"
before=$(finished_count)
drag 500 100 800 300
send_keys Return
wait_for_result "$before" "Return across monitors"
xclip -selection clipboard -t image/png -o >"$E2E_DIR/across.png"
crop_of_screen 300x200+500+100 "$E2E_DIR/expected-across.png"
same_pixels "$E2E_DIR/expected-across.png" "$E2E_DIR/across.png" "region across both monitors"

# 5. A text capture ends at the release, with no toolbar step.
xdotool mousemove --sync 300 300
open_overlay text
before=$(finished_count)
drag 60 60 300 220
wait_for_result "$before" "release in a text capture"
expect_contains "$(last_result)" "area" "the result of a text capture"

# 6. With editing after the capture, the release ends the overlay too.
e2e_glimpso quit
wait_for "glimpso to quit" 10 glimpso_gone
mkdir -p "$(dirname "$conf")"
if [ -s "$conf" ]; then
  sed -i '/^settings.capture.editMode=/d; s/^\[General\]$/[General]\nsettings.capture.editMode=afterCapture/' "$conf"
else
  printf '[General]\nsettings.capture.editMode=afterCapture\n' >"$conf"
fi
grep -q '^settings.capture.editMode=afterCapture$' "$conf" || e2e_fail "the setting did not go in: $(cat "$conf")"
e2e_start_glimpso
open_overlay region
before=$(finished_count)
drag 60 60 300 220
wait_for_result "$before" "release with editing after the capture"
expect_contains "$(last_result)" "area" "the result with editing after the capture"
echo "passed"
