#!/usr/bin/env bash
# glimpso killed with SIGKILL 12 s into a recording: the next start brings the
# recording back into the save folder, all but its last second, a file that
# ffmpeg reads without a word, and a notice says so.
source "$(dirname "$0")/../harness.sh"
source "$(dirname "$0")/../tools/video-helpers.sh"
e2e_setup --size 1024x768
start_private_sound
watch_notifications

xclock -update 1 -geometry 300x300+100+100 -title clock &
E2E_PIDS+=($!)
wait_for_window clock 20

e2e_start_glimpso
play_tone 440 60
e2e_glimpso video --rect 640x480+0+0 --seconds 60 --fps 30 --codec h264 --system-audio --save
expect_eq "$E2E_STATUS" 0 "video: $E2E_ERR"
wait_for_log "recording started" 10
progress=$XDG_DATA_HOME/glimpso/Recordings
# Fragments reach the disk every second: the file grows as the recording runs.
recorded() {
  local file
  file=$(ls "$progress"/glimpso-recording-*.mp4 2>/dev/null | head -n1)
  [ -n "$file" ] || return 1
  python3 - "$file" <<'PY'
import struct, sys
# Seconds of video in the whole fragments so far: count moof boxes (one a second).
data = open(sys.argv[1], "rb").read()
offset, fragments = 0, 0
while offset + 8 <= len(data):
    size, kind = struct.unpack(">I4s", data[offset:offset + 8])
    if size < 8 or offset + size > len(data):
        break
    fragments += kind == b"moof"
    offset += size
sys.exit(0 if fragments >= 12 else 1)
PY
}
wait_for "12 s of recording on disk" 30 recorded
kill -KILL "$GLIMPSO_PID"
wait "$GLIMPSO_PID" 2>/dev/null || true
GLIMPSO_PID=""
[ -z "$(ls "$HOME/Pictures/Screenshots" 2>/dev/null)" ] || e2e_fail "a file was saved before the restart"

e2e_start_glimpso
wait_for_log "recovered " 30
file=$(ls "$HOME"/Pictures/Screenshots/glimpso-*.mp4 | head -n1)
test -s "$file" || e2e_fail "nothing recovered"
duration=$(ffprobe -v error -show_entries format=duration -of default=nw=1:nk=1 "$file")
python3 -c "import sys; sys.exit(0 if $duration >= 10.5 else 1)" || e2e_fail "recovered only $duration s"
errors=$(ffmpeg -nostdin -v error -i "$file" -f null - 2>&1)
expect_eq "$errors" "" "ffmpeg's errors reading the recovered file"
expect_eq "$(probe_field "$file" a:0 codec_name)" aac "the recovered sound"
wait_for "the notice" 10 grep -q "Recovered a recording" "$E2E_NOTIFY_LOG"
grep -q "It didn't finish last time; it's in your save folder." "$E2E_NOTIFY_LOG" || e2e_fail "the notice's body"
# The leftover is gone: the next start finds nothing to recover.
[ -z "$(ls "$progress"/*.mp4 2>/dev/null)" ] || e2e_fail "leftover still there: $(ls "$progress")"
echo "passed"
