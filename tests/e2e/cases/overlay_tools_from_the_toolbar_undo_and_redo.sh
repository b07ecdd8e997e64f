#!/usr/bin/env bash
# On the overlay, a rectangle, an arrow and a pencil stroke drawn with the
# tools picked on the toolbar; Ctrl+Z twice takes the stroke and the arrow
# back, Ctrl+Shift+Z brings the arrow again, and Return copies the selection:
# the rectangle and the arrow are in the picture where they were drawn, the
# undone stroke is not.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x720

plain_root '#808080'
QT_LOGGING_RULES=$TOOLBAR_LOGGING e2e_start_glimpso
wait_for "glimpso to see the display" 10 grep -qE " displays?:" "$GLIMPSO_LOG"

open_region_overlay 640 300
# The selection: 800×350 from (200, 100). The rectangle tool is the first tool.
arm_with_toolbar 200 100 1000 450
drag 260 150 460 300                      # the rectangle
click_chip "chip arrow"
drag 520 150 720 300                      # the arrow
click_chip "chip pencil"
xdotool mousemove --sync 780 200 mousedown 1
for x in 800 820 840 860 880 900 920; do xdotool mousemove --sync "$x" 200; done
xdotool mouseup 1                         # the pencil stroke, flat along y 200

send_keys ctrl+z                          # the stroke goes
send_keys ctrl+z                          # the arrow goes
send_keys ctrl+shift+z                    # the arrow comes back
clip=$E2E_DIR/clip.png
copy_with_return "$clip"
expect_eq "$(identify -format '%wx%h' "$clip")" 800x350 "size of the copied selection"

# Selection-relative: the rectangle spans (60,50)-(260,200).
is_red "$clip" 160 50 "the rectangle's top edge"
is_red "$clip" 60 125 "the rectangle's left edge"
is_red "$clip" 260 125 "the rectangle's right edge"
expect_eq "$(pixel "$clip" 160 125)" "128 128 128" "inside the rectangle"
# The arrow runs from (320,50) to (520,200): red along its shaft.
for t in 2 4 6; do
  is_red "$clip" $((320 + 200 * t / 10)) $((50 + 150 * t / 10)) "the arrow's shaft at $t/10"
done
[ "$(count_colour "$clip" '#FF3B30' 480 150 50 60)" -gt 40 ] || e2e_fail "no arrow head near the arrow's end"
# The undone stroke ran along y 100 from x 580 to 720: nothing red there.
expect_eq "$(count_colour "$clip" '#FF3B30' 580 90 140 20)" 0 "red pixels where the undone stroke was"
echo "passed"
