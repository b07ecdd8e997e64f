#!/usr/bin/env bash
# Sound and pictures in step: a window flashes white at the instant a beep is
# heard, once a second; in the recording, each flash's first frame and its
# beep's onset lie at most 45 ms apart.
source "$(dirname "$0")/../harness.sh"
source "$(dirname "$0")/../tools/video-helpers.sh"
e2e_setup --size 1024x768
start_private_sound
flash_beep=$(dirname "$GLIMPSO_BIN")/../../tests/platform/pulse/glimpso_flash_beep
[ -x "$flash_beep" ] || e2e_fail "no $flash_beep"

xsetroot -solid '#000000'
e2e_start_glimpso
"$flash_beep" 200x200+60+20 9 >"$E2E_DIR/beeps.txt" 2>&1 &
E2E_PIDS+=($!)
wait_for "the first beep to be played" 10 grep -q beep "$E2E_DIR/beeps.txt"
e2e_glimpso video --rect 320x240+0+0 --seconds 5 --fps 30 --codec h264 --system-audio --save --wait
expect_eq "$E2E_STATUS" 0 "video --wait: $E2E_ERR"
file=$(last_line "$E2E_OUT")
test -s "$file" || e2e_fail "no file at $file"

# Each frame's mean brightness in the window, with its time; and the sound.
ffmpeg -nostdin -v info -i "$file" -map 0:v:0 -vf "crop=160:160:80:40,showinfo" -f null - 2>"$E2E_DIR/frames.txt"
ffmpeg -nostdin -v error -i "$file" -map 0:a:0 -ac 1 -ar 48000 -f s16le "$E2E_DIR/sound.raw"
python3 - "$E2E_DIR/frames.txt" "$E2E_DIR/sound.raw" "$E2E_DIR/beeps.txt" <<'PY' || e2e_fail "out of step: $(cat "$E2E_DIR/sync.txt" 2>/dev/null)"
import re, struct, sys
# The flashes: the first frame of each white spell (one already under way at
# the first frame is no flash of the recording's).
flashes, bright_before = [], True
for line in open(sys.argv[1]):
    m = re.search(r"pts_time:([0-9.]+).*?mean:\[(\d+)", line)
    if not m:
        continue
    bright = int(m.group(2)) > 128
    if bright and not bright_before:
        flashes.append(float(m.group(1)))
    bright_before = bright
# The beeps: the first loud sample after half a second of quiet.
data = open(sys.argv[2], "rb").read()
samples = struct.unpack("<%dh" % (len(data) // 2), data)
beeps, quiet_since = [], -48000
for i, s in enumerate(samples):
    if abs(s) > 8000:
        if i - quiet_since > 48000 // 2:
            beeps.append(i / 48000)
        quiet_since = i
# How late the helper showed each flash after its beep (on the media clock),
# counted out: the test is of glimpso's timing, not of the helper's wake-ups.
shown = [(float(m.group(1)), float(m.group(2))) for m in
         re.finditer(r"flash ([0-9.]+) late ([0-9.]+)", open(sys.argv[3]).read())]
# The recording's start on the media clock: where the helper's beeps and the
# recorded ones agree.
candidates = [t - b for t, _ in shown for b in beeps]
start = max(candidates, key=lambda c: sum(abs((t - b) - c) < 0.05 for t, _ in shown for b in beeps)) if candidates else 0
offsets = []
for f in flashes:
    b = min(beeps, key=lambda b: abs(b - f)) if beeps else None
    if b is None or abs(f - b) > 0.3:
        continue
    late = [l for t, l in shown if abs(t - start - b) < 0.1]
    offsets.append(round(f - b - (late[0] if late else 0), 4))
report = "flashes %s\nbeeps %s\noffsets, less the helper's lateness %s\n" % (flashes, beeps, offsets)
open(sys.argv[1].replace("frames.txt", "sync.txt"), "w").write(report)
print(report)
sys.exit(0 if len(offsets) >= 3 and max(abs(o) for o in offsets) <= 0.045 else 1)
PY
cat "$E2E_DIR/sync.txt"
echo "passed"
