#!/usr/bin/env bash
# With the mouse alone: a region capture, an arrow drawn with the arrow chip,
# the colour changed through the colour chip and a second arrow drawn, then
# Save writes both arrows in their colours; Copy on a new capture fills the
# clipboard; Close on a third writes nothing.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x720

plain_root '#808080'
QT_LOGGING_RULES=$TOOLBAR_LOGGING e2e_start_glimpso
wait_for "glimpso to see the display" 10 grep -qE " displays?:" "$GLIMPSO_LOG"
saves=$HOME/Pictures/Screenshots

new_capture() {
  open_region_overlay 640 300
  arm_with_toolbar 200 100 1000 450
}
finishes() { # count before
  wait_for "the overlay to finish" 10 bash -c "[ \$(grep -c 'finish: didFinish=0' '$GLIMPSO_LOG') -gt $1 ]"
}

# 1. Arrow, colour, arrow, Save.
new_capture
click_chip "chip arrow"
drag 300 150 500 250                      # the first arrow, in the default red
# A new arrow stays selected, and a colour picked now would recolour it: put
# the tool down and up again (a second click on a chip deselects its tool).
click_chip "chip arrow"
wait_for "the tool to be put down" 10 glimpso_logged "selectTool(none)"
click_chip "chip arrow"
click_chip "chip colour"
wait_for "the colour panel" 10 glimpso_logged "swatch #007AFF at"
click_chip "swatch #007AFF"
drag 600 300 850 400                      # the second arrow, in blue
before=$(grep -c "finish: didFinish=0" "$GLIMPSO_LOG" || true)
click_chip "chip save"
finishes "$before"
wait_for "a saved capture" 10 bash -c "ls '$saves'/glimpso-*.png >/dev/null 2>&1"
saved=$(ls "$saves"/glimpso-*.png | head -n1)
wait_for_file "$saved" 10
expect_eq "$(identify -format '%wx%h' "$saved")" 800x350 "size of the saved selection"
# Selection-relative: the first arrow runs (100,50)-(300,150), the second (400,200)-(650,300).
red=$(count_colour "$saved" '#FF3B30' 100 50 200 100)
blue_in_first=$(count_colour "$saved" '#007AFF' 100 50 200 100)
blue=$(count_colour "$saved" '#007AFF' 400 200 250 100)
red_in_second=$(count_colour "$saved" '#FF3B30' 400 200 250 100)
[ "$red" -gt 300 ] || e2e_fail "the first arrow is not red in the saved file ($red red pixels)"
[ "$blue" -gt 300 ] || e2e_fail "the second arrow is not blue in the saved file ($blue blue pixels)"
[ "$blue_in_first" -lt 20 ] || e2e_fail "blue where only the red arrow is ($blue_in_first pixels)"
[ "$red_in_second" -lt 20 ] || e2e_fail "red where only the blue arrow is ($red_in_second pixels)"
expect_eq "$(pixel "$saved" 20 330)" "128 128 128" "the plain screen away from the arrows"

# 2. Copy on a new capture.
printf 'before' | xclip -selection clipboard
new_capture
before=$(grep -c "finish: didFinish=0" "$GLIMPSO_LOG" || true)
click_chip "chip copy"
finishes "$before"
wait_for "an image on the clipboard" 10 bash -c "xclip -selection clipboard -t TARGETS -o | grep -q image/png"
xclip -selection clipboard -t image/png -o >"$E2E_DIR/clip.png"
expect_eq "$(identify -format '%wx%h' "$E2E_DIR/clip.png")" 800x350 "size of the copied selection"

# 3. Close writes nothing: no new file, the clipboard keeps the copy.
files_before=$(ls "$saves" | wc -l)
new_capture
before=$(grep -c "finish: didFinish=0" "$GLIMPSO_LOG" || true)
click_chip "chip close"
finishes "$before"
wait_for "the overlay to go" 10 overlay_gone
expect_eq "$(ls "$saves" | wc -l)" "$files_before" "files in the save folder after Close"
xclip -selection clipboard -t image/png -o >"$E2E_DIR/clip-after.png"
cmp -s "$E2E_DIR/clip.png" "$E2E_DIR/clip-after.png" || e2e_fail "Close changed the clipboard"
echo "passed"
