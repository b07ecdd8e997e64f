#!/usr/bin/env bash
# On the overlay, rectangles drawn with drags show at once and land in the
# output where they were drawn; Ctrl+Z takes the last ones back, Ctrl+Shift+Z
# brings one again, and Return copies the selection with what remains.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x480

plain_root '#808080'

e2e_start_glimpso
wait_for "glimpso to see the display" 10 grep -qE " displays?:" "$GLIMPSO_LOG"

is_grey() { # file x y what
  local rgb
  rgb=$(pixel "$1" "$2" "$3")
  [ "$rgb" = "128 128 128" ] || e2e_fail "$4: expected the plain screen at $2,$3, got $rgb"
}

open_region_overlay 630 230

# The selection, 500×300 from (100, 100); the rectangle tool is the first tool.
drag 100 100 600 400
wait_for "the selection to arm" 10 grep -q "selection armed" "$GLIMPSO_LOG"
drag 150 150 300 250   # A
drag 350 150 500 300   # B
drag 200 300 550 380   # C

# Every rectangle shows on the overlay as it is drawn.
import -window root "$E2E_DIR/live.png"
is_red "$E2E_DIR/live.png" 225 150 "rectangle A on the overlay"
is_red "$E2E_DIR/live.png" 425 150 "rectangle B on the overlay"
is_red "$E2E_DIR/live.png" 375 380 "rectangle C on the overlay"

send_keys ctrl+z          # C goes
send_keys ctrl+z          # B goes
send_keys ctrl+shift+z    # B comes back
clip=$E2E_DIR/clip.png
copy_with_return "$clip"
expect_eq "$(identify -format '%wx%h' "$clip")" 500x300 "size of the copied selection"

# Selection-relative places: A spans (50,50)-(200,150), B (250,50)-(400,200),
# C (100,200)-(450,280).
is_red "$clip" 125 50 "top edge of A"
is_red "$clip" 50 100 "left edge of A"
is_red "$clip" 325 200 "bottom edge of B"
is_red "$clip" 400 120 "right edge of B"
is_grey "$clip" 125 100 "inside A"
is_grey "$clip" 275 280 "where the undone C's bottom edge was"
is_grey "$clip" 450 240 "where the undone C's right edge was"
echo "passed"
