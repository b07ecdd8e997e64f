#!/usr/bin/env bash
# The command line's captures on two RandR monitors with known content: a
# region saved and copied comes out with the screen's pixels, a rectangle across
# both monitors comes out whole, JPEG and HEIC settings give readable files, and
# a save folder that cannot be written is refused with the folder's name.
source "$(dirname "$0")/../harness.sh"
e2e_setup --size 1280x480

two_monitors_with_known_content
screen=$KNOWN_SCREEN

e2e_start_glimpso
wait_for "glimpso to see both monitors" 10 grep -q "2 displays" "$GLIMPSO_LOG"

same_pixels() { # expected actual what
  local differing plain=$E2E_DIR/plain.png
  # Pixels only: alpha that is opaque everywhere and colour-space chunks are
  # not what is being compared.
  convert "$2" -alpha off -strip -depth 8 "PNG24:$plain"
  differing=$(compare -metric AE "$1" "$plain" null: 2>&1) || true
  [ "$differing" = 0 ] || e2e_fail "$3: $differing pixels differ from the screen"
}
crop_of_screen() { # geometry file
  convert "$screen" -crop "$1" +repage -depth 8 "PNG24:$2"
}
save_dir=$HOME/Pictures/Screenshots

# A region on the left monitor, to a file.
e2e_glimpso region --rect 200x100+50+60 --save
expect_eq "$E2E_STATUS" 0 "exit code of region --save ($E2E_ERR)"
saved=$(last_line "$E2E_OUT")
case $saved in "$save_dir"/glimpso-*.png) ;; *) e2e_fail "unexpected saved path '$saved'" ;; esac
test -s "$saved" || e2e_fail "no file at $saved"
crop_of_screen 200x100+50+60 "$E2E_DIR/expected-left.png"
same_pixels "$E2E_DIR/expected-left.png" "$saved" "saved region"
# Saving leaves the picture on the clipboard too.
xclip -selection clipboard -t image/png -o >"$E2E_DIR/after-save.png"
same_pixels "$E2E_DIR/expected-left.png" "$E2E_DIR/after-save.png" "clipboard after a save"

# A region on the right monitor, to the clipboard.
e2e_glimpso region --rect 300x150+850+250 --copy
expect_eq "$E2E_STATUS" 0 "exit code of region --copy ($E2E_ERR)"
xclip -selection clipboard -t image/png -o >"$E2E_DIR/clip.png"
crop_of_screen 300x150+850+250 "$E2E_DIR/expected-right.png"
same_pixels "$E2E_DIR/expected-right.png" "$E2E_DIR/clip.png" "copied region"
targets=$(xclip -selection clipboard -t TARGETS -o)
expect_contains "$targets" "image/png" "clipboard targets"

# Across both monitors: whole, with the seam in its place.
e2e_glimpso region --rect 400x300+440+100 --save
expect_eq "$E2E_STATUS" 0 "exit code of a region across monitors ($E2E_ERR)"
crop_of_screen 400x300+440+100 "$E2E_DIR/expected-across.png"
same_pixels "$E2E_DIR/expected-across.png" "$(last_line "$E2E_OUT")" "region across monitors"

# Everything at once.
e2e_glimpso all --save
expect_eq "$E2E_STATUS" 0 "exit code of all --save ($E2E_ERR)"
same_pixels "$screen" "$(last_line "$E2E_OUT")" "all displays"

e2e_glimpso quit
wait_for "glimpso to quit" 10 glimpso_gone

conf=$XDG_CONFIG_HOME/glimpso/glimpso.conf
set_setting() { # key value
  grep -v "^$1=" "$conf" >"$conf.new" || true
  mv "$conf.new" "$conf"
  grep -q '^\[General\]' "$conf" || { printf '[General]\n'; cat "$conf"; } >"$conf.new"
  [ -f "$conf.new" ] && mv "$conf.new" "$conf"
  sed -i "/^\[General\]/a $1=$2" "$conf"
}
mkdir -p "$(dirname "$conf")"
touch "$conf"

# JPEG, with its own extension.
set_setting settings.saveFormat jpeg
e2e_start_glimpso
e2e_glimpso region --rect 64x48+10+10 --save
expect_eq "$E2E_STATUS" 0 "exit code of a JPEG save ($E2E_ERR)"
jpeg=$(last_line "$E2E_OUT")
case $jpeg in *.jpeg) ;; *) e2e_fail "a JPEG save ended in '$jpeg'" ;; esac
expect_eq "$(identify -format '%m %wx%h' "$jpeg")" "JPEG 64x48" "identify of the JPEG"
e2e_glimpso quit
wait_for "glimpso to quit" 10 glimpso_gone

# HEIC.
set_setting settings.saveFormat heic
e2e_start_glimpso
e2e_glimpso region --rect 64x48+10+10 --save
expect_eq "$E2E_STATUS" 0 "exit code of a HEIC save ($E2E_ERR)"
heic=$(last_line "$E2E_OUT")
case $heic in *.heic) ;; *) e2e_fail "a HEIC save ended in '$heic'" ;; esac
expect_contains "$(heif-info "$heic")" "64x48" "heif-info of the HEIC"
e2e_glimpso quit
wait_for "glimpso to quit" 10 glimpso_gone

# A save folder that cannot be made: a plain file stands where its parent should be.
touch "$HOME/Gone"
set_setting settings.saveFormat png
set_setting settings.saveDirectory "$HOME/Gone/Captures"
e2e_start_glimpso
e2e_glimpso region --rect 64x48+10+10 --save
expect_eq "$E2E_STATUS" 1 "exit code of a save into a missing folder"
expect_contains "$E2E_ERR" "glimpso can't save to “Captures”" "stderr of a failed save"
glimpso_alive || e2e_fail "glimpso ended after a failed save"
# The picture is not lost: it is on the clipboard.
xclip -selection clipboard -t image/png -o >"$E2E_DIR/kept.png"
crop_of_screen 64x48+10+10 "$E2E_DIR/expected-kept.png"
same_pixels "$E2E_DIR/expected-kept.png" "$E2E_DIR/kept.png" "picture kept after a failed save"
echo "passed"
