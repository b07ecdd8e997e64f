#!/usr/bin/env bash
# The live area picker comes up over moving content (a clock with seconds)
# that goes on changing under it; a drag chooses the area that is then
# recorded; Escape cancels and leaves no window behind.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x800

xsetroot -solid '#203040'
mkdir -p "$XDG_CONFIG_HOME/glimpso"
printf '[General]\nsettings.gif.countdown=false\n' >"$XDG_CONFIG_HOME/glimpso/glimpso.conf"
xclock -update 1 -geometry 200x200+300+200 -title clock &
E2E_PIDS+=($!)
wait_for_window clock 20

export GLIMPSO_TEST_FRAMES=$E2E_DIR/frames
e2e_start_glimpso
xdotool mousemove 640 400
e2e_glimpso gif area
expect_eq "$E2E_STATUS" 0 "gif area"
wait_for_window 'glimpso picker' 10
wait_for_log "picker up on display" 10

# The clock's hands move under the picker: two pictures of the screen a
# second and a half apart differ where the clock is.
import -window root -crop 200x200+300+200 "$E2E_DIR/one.png"
wait_for "the clock to tick under the picker" 5 bash -c \
  "import -window root -crop 200x200+300+200 '$E2E_DIR/two.png' && [ \"\$(compare -metric AE '$E2E_DIR/one.png' '$E2E_DIR/two.png' null: 2>&1)\" != 0 ]"

# A short drag starts over; a real one chooses.
drag 400 300 410 500
glimpso_logged "picker chose" && e2e_fail "a 10-point drag must not choose"
drag 250 150 650 450
wait_for_log "picker chose 400x300 at (250, 350)" 10
wait_for_log "recording started" 10
wait_for "the picker to go" 10 bash -c "! xdotool search --onlyvisible --name 'glimpso picker'"
e2e_glimpso stop
expect_eq "$E2E_STATUS" 0 "stop"
wait_for_log "recording ended: finished" 10
head -n1 "$E2E_DIR/frames/frames.txt" | grep -q ' 400x300 rects 0,0,400,300' || e2e_fail "the first frame is not the area: $(head -n1 "$E2E_DIR/frames/frames.txt")"

# Escape cancels, in the middle of a drag too, and leaves nothing.
e2e_glimpso gif
wait_for_window 'glimpso picker' 10
xdotool mousemove 300 300 mousedown 1 mousemove 400 400
xdotool key Escape
xdotool mouseup 1
wait_for_log "picker cancelled" 10
wait_for "the picker to go" 10 bash -c "! xdotool search --onlyvisible --name 'glimpso picker'"
expect_eq "$(log_count 'recording started')" 1 "recordings started"
echo "passed"
