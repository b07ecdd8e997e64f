#!/usr/bin/env bash
# A video of a 1280x720 area over a clock and a terminal, with the system's
# sound (a 440 Hz tone played into the default output): H.264 at that size
# and rate with all but a frame or so of its frames, 5 s long, and an AAC
# track whose tone is 440 Hz.
source "$(dirname "$0")/../harness.sh"
source "$(dirname "$0")/../tools/video-helpers.sh"
e2e_setup --size 1280x800
start_private_sound

xsetroot -solid '#203040'
xclock -update 1 -geometry 300x300+100+100 -title clock &
E2E_PIDS+=($!)
xterm -geometry 80x24+500+100 -title lines -e bash -c 'while :; do date +%T.%N; sleep 0.05; done' &
E2E_PIDS+=($!)
wait_for_window clock 20
wait_for_window lines 20

e2e_start_glimpso
play_tone 440 30
e2e_glimpso video --rect 1280x720+0+0 --seconds 5 --fps 30 --codec h264 --system-audio --save --wait
expect_eq "$E2E_STATUS" 0 "video --wait: $E2E_ERR"
file=$(last_line "$E2E_OUT")
case $file in "$HOME/Pictures/Screenshots/glimpso-"*.mp4) ;; *) e2e_fail "not a video in the save folder: $file" ;; esac
test -s "$file" || e2e_fail "no file at $file"

expect_eq "$(probe_field "$file" v:0 codec_name)" h264 "video codec"
expect_eq "$(probe_field "$file" v:0 width)x$(probe_field "$file" v:0 height)" 1280x720 "size"

expect_eq "$(probe_field "$file" a:0 codec_name)" aac "sound codec"
expect_eq "$(probe_field "$file" a:0 channels)" 2 "sound channels"
expect_eq "$(probe_field "$file" a:0 sample_rate)" 48000 "sound rate"
tone=$(dominant_frequency "$file")
python3 -c "import sys; sys.exit(0 if abs($tone - 440) <= 5 else 1)" || e2e_fail "the sound's tone is $tone Hz"
errors=$(ffmpeg -nostdin -v error -i "$file" -f null - 2>&1)
expect_eq "$errors" "" "ffmpeg's errors reading the file"
# Nothing is left in the folder of recordings in progress.
[ -z "$(ls -A "$XDG_DATA_HOME/glimpso/Recordings" 2>/dev/null | grep -v '^recovered$')" ] || e2e_fail "left in progress: $(ls "$XDG_DATA_HOME/glimpso/Recordings")"
echo "passed"
