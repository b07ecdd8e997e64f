#!/usr/bin/env bash
# The text tool on the overlay: T, a click and typing open a field at the
# click; Escape drops what was typed and keeps the capture; typed text and a
# click elsewhere commit it; Return copies the selection with the text where it
# was typed and nothing where the dropped text was.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x480

plain_root '#808080'

e2e_start_glimpso
wait_for "glimpso to see the display" 10 grep -qE " displays?:" "$GLIMPSO_LOG"

# The share of pixels in a box of a picture that are not the plain grey.
inked() { # file WxH+X+Y
  convert "$1" -crop "$2" +repage -fill white -opaque '#808080' -fill black +opaque white -format '%[fx:1-mean]' info:
}
overlay_up() { xdotool search --onlyvisible --name 'glimpso overlay' >/dev/null 2>&1; }

open_region_overlay 630 230
drag 100 100 700 400
wait_for "the selection to arm" 10 grep -q "selection armed" "$GLIMPSO_LOG"

# A first text, dropped with Escape: the overlay stays.
send_keys t
xdotool mousemove --sync 150 150 click 1
xdotool type --delay 15 "Hello, glimpso 123"
send_keys Escape
# A second text, committed by a click elsewhere.
xdotool mousemove --sync 200 300 click 1
xdotool type --delay 15 "Hello, glimpso 123"
xdotool mousemove --sync 600 380 click 1
overlay_up || e2e_fail "Escape in the text field ended the capture"
# The empty field at the last click commits nothing; then Return copies.
send_keys Return
clip=$E2E_DIR/clip.png
copy_with_return "$clip"
expect_eq "$(identify -format '%wx%h' "$clip")" 600x300 "size of the copied selection"

# Selection-relative: the committed text starts at (100, 200), the dropped one
# would have started at (50, 50).
committed=$(inked "$clip" 220x40+95+180)
dropped=$(inked "$clip" 220x40+45+30)
echo "inked: committed $committed, dropped $dropped"
awk -v v="$committed" 'BEGIN {exit !(v > 0.03)}' || e2e_fail "no text where it was typed and committed (inked share $committed)"
expect_eq "$dropped" 0 "inked share where the dropped text was"
# Nothing beyond the text's own line.
expect_eq "$(inked "$clip" 220x40+95+240)" 0 "inked share below the committed text"
echo "passed"
