# The video part of the recording benchmark, sourced by bench/recording/run
# after its scene helpers (start_scene, stop_scene, row, ticks_of, hz):
#   video_rows LABEL WIDTH HEIGHT SECONDS
# records the scene with `glimpso video --rect ... --codec h264` and beside it
# `ffmpeg -f x11grab -framerate 30 ... -c:v libx264 -preset veryfast` at the
# average bit rate of glimpso's file, and prints frames against those
# expected, the time from `glimpso stop` to the file saved, CPU per recorded
# second, peak memory, and the last frame against a grab of the screen taken
# after the stop (the scene holds still for its last 2 s): SSIM.

video_rows() {
  local label=$1 width=$2 height=$3 seconds=$4
  local saved=$HOME/Pictures/Screenshots
  rm -rf "$saved"
  start_scene "$width" "$height"
  e2e_start_glimpso
  local pid=$GLIMPSO_PID before after
  local starts saves
  starts=$(log_count "recording started") saves=$(log_count "video saved")
  before=$(ticks_of "$pid")
  "$GLIMPSO_BIN" video --rect "${width}x${height}+0+0" --seconds $((seconds + 30)) --fps 30 --codec h264 --save
  wait_for "the recording to start" 20 bash -c "[ \$(grep -c 'recording started' '$GLIMPSO_LOG') -gt $starts ]"
  # The scene runs, then holds still for the last 2 s.
  sleep $((seconds - 2))
  stop_scene
  sleep 2
  import -window root "$E2E_DIR/still.png"
  # Times of day, as glimpso's log writes them, in seconds.
  local stop_at
  stop_at=$(date +%H:%M:%S.%N | awk -F: '{print $1 * 3600 + $2 * 60 + $3}')
  "$GLIMPSO_BIN" stop
  wait_for "the video saved" 30 bash -c "[ \$(grep -c 'video saved' '$GLIMPSO_LOG') -gt $saves ]"
  local saved_at
  saved_at=$(grep 'video saved' "$GLIMPSO_LOG" | tail -n1 | awk '{split($1, t, ":"); print t[1] * 3600 + t[2] * 60 + t[3]}')
  after=$(ticks_of "$pid")
  local peak
  peak=$(awk '/VmHWM/ {print int($2 / 1024)}' "/proc/$pid/status")
  kill "$pid"; wait "$pid" 2>/dev/null || true; GLIMPSO_PID=""
  local file
  file=$(ls "$saved"/glimpso-*.mp4 | head -n1)
  local duration frames bits g_cpu
  duration=$(ffprobe -v error -show_entries format=duration -of default=nw=1:nk=1 "$file")
  frames=$(ffprobe -v error -count_packets -select_streams v:0 -show_entries stream=nb_read_packets -of default=nw=1:nk=1 "$file")
  bits=$(ffprobe -v error -select_streams v:0 -show_entries stream=bit_rate -of default=nw=1:nk=1 "$file")
  [ "$bits" -gt 0 ] 2>/dev/null || bits=$(awk -v s="$(stat -c %s "$file")" -v d="$duration" 'BEGIN {printf "%d", s * 8 / d}')
  g_cpu=$(awk -v t=$((after - before)) -v hz="$hz" 'BEGIN {print t / hz}')
  # The last frame against the screen after the stop.
  ffmpeg -nostdin -v error -sseof -0.5 -i "$file" -update 1 -frames:v 1 "$E2E_DIR/last.png" -y
  local ssim
  ssim=$(ffmpeg -nostdin -i "$E2E_DIR/last.png" -i "$E2E_DIR/still.png" -lavfi "[1]crop=${width}:${height}:0:0[b];[0][b]ssim" -f null - 2>&1 |
    sed -n 's/.*All:\([0-9.]*\).*/\1/p')

  # The peer at the same average bit rate, on the same scene.
  start_scene "$width" "$height"
  /usr/bin/time -f '%U %S %M' -o "$E2E_DIR/peer.time" ffmpeg -hide_banner -nostats -loglevel info \
    -f x11grab -framerate 30 -video_size "${width}x${height}" -i "$DISPLAY+0,0" -t "$seconds" \
    -c:v libx264 -preset veryfast -b:v "$bits" -pix_fmt yuv420p -y "$E2E_DIR/peer.mp4" 2>"$E2E_DIR/peer.log" ||
    { tail -5 "$E2E_DIR/peer.log" >&2; return 1; }
  stop_scene
  local p_cpu p_peak p_frames
  p_cpu=$(awk '{print $1 + $2}' "$E2E_DIR/peer.time")
  p_peak=$(awk '{print int($3 / 1024)}' "$E2E_DIR/peer.time")
  p_frames=$(ffprobe -v error -count_packets -select_streams v:0 -show_entries stream=nb_read_packets -of default=nw=1:nk=1 "$E2E_DIR/peer.mp4")
  local expected
  expected=$(awk -v d="$duration" 'BEGIN {printf "%d", d * 30 + 0.5}')

  row "$label" glimpso "ffmpeg libx264 veryfast"
  row "  frames (of $expected expected)" "$frames ($(awk -v f="$frames" -v e="$expected" 'BEGIN {printf "%.1f%%", 100 * f / e}'))" \
    "$p_frames ($(awk -v f="$p_frames" -v e=$((seconds * 30)) 'BEGIN {printf "%.1f%%", 100 * f / e}'))"
  row "  video bit rate (kbit/s)" "$((bits / 1000))" "same, asked for"
  row "  stop to file saved (ms)" "$(awk -v a="$stop_at" -v b="$saved_at" 'BEGIN {printf "%d", (b - a) * 1000}')" "-"
  row "  CPU per recorded second (core)" "$(awk -v c="$g_cpu" -v s="$duration" 'BEGIN {printf "%.3f", c / s}')" \
    "$(awk -v c="$p_cpu" -v s="$seconds" 'BEGIN {printf "%.3f", c / s}')"
  row "  peak memory (MiB)" "$peak" "$p_peak"
  row "  CPU, memory against ffmpeg's" \
    "$(awk -v g="$g_cpu" -v gd="$duration" -v f="$p_cpu" -v s="$seconds" 'BEGIN {printf "%.2fx", (g / gd) / (f / s)}'), $(awk -v g="$peak" -v f="$p_peak" 'BEGIN {printf "%.2fx", g / f}')" ""
  row "  last frame against the screen (SSIM)" "$ssim" "-"
}
