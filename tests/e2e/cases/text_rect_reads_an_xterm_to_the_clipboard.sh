#!/usr/bin/env bash
# `glimpso text --rect` over an xterm showing known text prints that text and
# puts it on the clipboard; the history keeps it.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1024x768
plain_root '#202020'

xterm -title glimpso-e2e-text -geometry 60x6+100+100 -fa 'DejaVu Sans Mono' -fs 11 -bg black -fg '#d0d0d0' \
  -e bash -c 'printf "Deploy finished in 42 seconds\nAll 118 checks passed\n"; exec sleep 600' \
  >>"$E2E_DIR/xterm.log" 2>&1 &
E2E_PIDS+=($!)
wait_for_window glimpso-e2e-text 20
client=$(xdotool search --onlyvisible --name glimpso-e2e-text | head -n1)
read -r x y width < <(xwininfo -id "$client" | awk '/Absolute upper-left X/ {x=$NF} /Absolute upper-left Y/ {y=$NF}
  /^  Width/ {w=$NF} END {print x, y, w}')

e2e_start_glimpso
rect="${width}x60+${x}+${y}"
read_terminal() {
  "$GLIMPSO_BIN" text --rect "$rect" >"$E2E_DIR/read.txt" 2>>"$E2E_DIR/read.err" &&
    grep -q "All 118 checks passed" "$E2E_DIR/read.txt"
}
# The terminal draws its text when it is ready; read until it is there.
wait_for "the terminal's text read" 60 read_terminal
expect_eq "$(cat "$E2E_DIR/read.txt")" "Deploy finished in 42 seconds
All 118 checks passed" "text read from the terminal"
expect_eq "$(clipboard)" "Deploy finished in 42 seconds
All 118 checks passed" "clipboard after reading"
wait_for "the text in the history" 10 grep -q "All 118 checks passed" "$XDG_DATA_HOME/glimpso/text.json"
echo "passed"
