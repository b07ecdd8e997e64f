# Helpers of the video cases, sourced after harness.sh.
#
# start_private_sound: a PulseAudio server of the case's own (null sinks
#   "speakers" and "microphone", see tests/support/private-pulse.sh); exports
#   PULSE_SERVER for glimpso and the players started after it.
# play_tone HERTZ SECONDS [SINK]: a sine into the sink, in the background.
# probe_field FILE STREAM FIELD: one field of ffprobe's answer ("v:0", "a:0").
# dominant_frequency FILE: the strongest frequency of the first sound track, in Hz.

start_private_sound() {
  local dir=$E2E_DIR/pulse
  mkdir -p "$dir"
  bash "$(dirname "${BASH_SOURCE[0]}")/../../support/private-pulse.sh" "$dir" 2>"$E2E_DIR/pulse.log" &
  E2E_PIDS+=($!)
  wait_for "the private sound server" 20 test -S "$dir/native"
  export PULSE_SERVER=unix:$dir/native
}

play_tone() {
  local hertz=$1 seconds=$2 sink=${3:-speakers}
  ffmpeg -nostdin -v error -f lavfi -i "sine=frequency=$hertz:duration=$seconds:sample_rate=48000" \
    -f f32le -ac 2 -ar 48000 - | pacat --raw --format=float32le --rate=48000 --channels=2 -d "$sink" &
  E2E_PIDS+=($!)
}

probe_field() {
  ffprobe -v error -select_streams "$2" -show_entries "stream=$3" -of default=nw=1:nk=1 "$1" | head -n1
}

dominant_frequency() {
  ffmpeg -nostdin -v error -i "$1" -map 0:a:0 -ss 1 -t 0.5 -ac 1 -ar 8000 -f s16le - | python3 -c '
import sys, math, struct
data = sys.stdin.buffer.read()
samples = struct.unpack("<%dh" % (len(data) // 2), data)
best, power = 0, -1
for hz in range(100, 2001, 5):
    k = 2 * math.cos(2 * math.pi * hz / 8000)
    s1 = s2 = 0.0
    for x in samples:
        s1, s2 = x + k * s1 - s2, s1
    p = s1 * s1 + s2 * s2 - k * s1 * s2
    if p > power:
        best, power = hz, p
print(best)'
}
