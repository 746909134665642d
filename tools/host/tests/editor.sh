#!/usr/bin/env bash
# Checks of the Windows plug-in's editor through vrnhost's editor mode, under wine on a private
# X display (xvfb-run); run by CTest with one case name. Paths come from the environment set by
# tools/host/tests/CMakeLists.txt: VRNHOST, OUT_DIR, WINEPREFIX and WIN_BUILD_DIR. Without wine or
# xvfb-run a case says so and exits 77, which CTest reports as skipped.
set -euo pipefail

fail() { echo "FAIL: $*" >&2; exit 1; }

for tool in wine xvfb-run; do
  command -v "$tool" >/dev/null || { echo "SKIP: $tool is not installed"; exit 77; }
done
for built in VrnZIV.dll vrnhost.exe editor_win_tests.exe; do
  [[ -f "$WIN_BUILD_DIR/$built" ]] || fail "no $built in $WIN_BUILD_DIR; build the Windows plug-in first"
done
mkdir -p "$OUT_DIR"
# Each case ends the prefix's wine server, so the next one starts its desktop on its own display.
trap 'wineserver -k >/dev/null 2>&1 || true' EXIT

# Plays a script (given on stdin) and keeps the report in $OUT_DIR/NAME.txt.
play() {  # name [vrnhost options...]
  local name=$1
  shift
  cat >"$OUT_DIR/$name.script"
  xvfb-run -a "$VRNHOST" --win-host "$WIN_BUILD_DIR" --editor "$OUT_DIR/$name.script" "$@" \
    "$WIN_BUILD_DIR/VrnZIV.dll" >"$OUT_DIR/$name.txt" || fail "$name: vrnhost failed: $(cat "$OUT_DIR/$name.txt")"
}

expect_lines() {  # name pattern count
  local got
  got=$(grep -c -x -- "$2" "$OUT_DIR/$1.txt" || true)
  [[ "$got" -eq "$3" ]] || fail "$1: expected $3 lines '$2', got $got:"$'\n'"$(cat "$OUT_DIR/$1.txt")"
}

# The value printed for parameter $2 by the $3-th "params" step of report $1.
param_value() {  # name index listing
  awk -v index_="$2" -v n="$3" '$1 == "param" && $2 == index_ && ++seen == n { print $3 }' "$OUT_DIR/$1.txt"
}

expect_value() {  # name index listing expected tolerance
  local got
  got=$(param_value "$1" "$2" "$3")
  awk -v g="${got:-nan}" -v e="$4" -v t="$5" 'BEGIN { d = g - e; exit !(g != "nan" && d <= t && -d <= t) }' \
    || fail "$1: parameter $2 in listing $3 is '${got}', expected $4"
}

# Digest of a rectangle of a screenshot.
region() {  # file x y width height
  "$PNG_CHECK" "$1" region "$2" "$3" "$4" "$5" || fail "png_check $*"
}

# Width and height from a PNG file's header.
png_size() {
  od -An -tu1 -j16 -N8 "$1" | awk '{ print $1 * 16777216 + $2 * 65536 + $3 * 256 + $4, $5 * 16777216 + $6 * 65536 + $7 * 256 + $8 }'
}

# The plug-in's data folder inside the prefix (the ProgramData known folder).
data_folder() {
  echo "$WINEPREFIX/drive_c/ProgramData/quorvantis"
}

case "$1" in
  prefix)
    bash "$(dirname "$0")/../../wine-prefix.sh"
    ;;
  lifecycle)
    # getRect before and after opening, open/close/reopen, two editors at once, an instance
    # destroyed while its editor is open, and a second instance closed normally afterwards.
    play lifecycle <<'SCRIPT'
rect
open
rect
wait 2
close
rect
open
close
open
close
open
wait 1
instance 1
open
wait 2
instance 0
destroy
instance 1
wait 2
close
open
wait 1
destroy
instance 2
open
SCRIPT
    expect_lines lifecycle 'rect 0 0 472 1040' 3
    expect_lines lifecycle 'open 1040 472' 7
    expect_lines lifecycle 'destroy [01]' 2
    grep -Eq '^frames [1-9][0-9]* ' "$OUT_DIR/lifecycle.txt" || fail "lifecycle: the editors' timers never ran"
    ;;
  gestures)
    # The window procedure takes the mouse capture on a press and gives it back on the release;
    # a double-click takes none; the wheel and a host program change reach the editor harmlessly.
    play gestures <<'SCRIPT'
open
move 500 200
press
move 500 100
release
press right
release right
shift down
drag 200 300 200 166 6
shift up
double 300 300
click 10 10 right
params
wheel -120
wheel 240
wait 2
params
program 3
wait 2
SCRIPT
    expect_lines gestures 'mouse press 500 200 capture 1' 1
    expect_lines gestures 'mouse move 500 100 capture 1' 1
    expect_lines gestures 'mouse press 500 100 capture 1' 1
    expect_lines gestures 'mouse release 500 100 capture 0' 2
    expect_lines gestures 'mouse drag 200 166 capture 0' 1
    expect_lines gestures 'mouse double 300 300 capture 0' 1
    expect_lines gestures 'callback updateDisplay' 1
    # The wheel changes nothing: the two parameter listings around it agree.
    [[ $(grep -c '^param ' "$OUT_DIR/gestures.txt") -eq 216 ]] || fail "gestures: expected two listings of 108"
    diff <(grep '^param ' "$OUT_DIR/gestures.txt" | head -108) <(grep '^param ' "$OUT_DIR/gestures.txt" | tail -108) \
      || fail "gestures: the wheel changed parameters"
    ;;
  knob)
    # "VOICE: Unison Detune" (index 48), the large knob whose sprite lies at (92, 404, 48 x 48):
    # dragged 134 pixels up from 0 it reads 1, with Shift 0.134; a double-click resets it to its
    # default (3 of 0..100) in one gesture; the wheel over it changes nothing.
    play knob <<'SCRIPT'
open
set 48=0
wait 1
drag 116 440 116 306 8
params
set 48=0
wait 1
shift down
drag 116 440 116 306 8
shift up
params
double 116 440
params
move 116 430
wheel -120
wheel 240
wait 2
params
SCRIPT
    expect_value knob 48 1 1.0 1e-6
    expect_value knob 48 2 0.134 1e-4
    expect_value knob 48 3 0.03 1e-6
    expect_value knob 48 4 0.03 1e-6
    # Between the double-click and the next listing: exactly one begin, one automation, one end.
    gesture=$(awk '/^mouse double/ { on = 1 } on && /^param / { exit } on && /^callback/ { print $2, $3 }' \
      "$OUT_DIR/knob.txt" | tr '\n' ' ')
    [[ "$gesture" == "beginEdit 48 automate 48 endEdit 48 " ]] || fail "knob: the reset's callbacks were '$gesture'"
    diff <(grep '^param ' "$OUT_DIR/knob.txt" | sed -n 217,324p) <(grep '^param ' "$OUT_DIR/knob.txt" | sed -n 325,432p) \
      || fail "knob: the wheel changed parameters"
    ;;
  help)
    # The help line (8, 457, 1026 x 12) shows the text of the panel under the pointer: OSC 1's
    # differs from AMP ENV's, and the same pointer gives the same pixels.
    play help <<SCRIPT
open
move 100 40
wait 2
screenshot $OUT_DIR/help_osc1.png
move 300 100
wait 2
screenshot $OUT_DIR/help_amp.png
wait 2
screenshot $OUT_DIR/help_amp_again.png
SCRIPT
    osc1=$(region "$OUT_DIR/help_osc1.png" 8 457 1026 12)
    amp=$(region "$OUT_DIR/help_amp.png" 8 457 1026 12)
    [[ "$osc1" != "$amp" ]] || fail "help: the help line did not change between OSC 1 and AMP ENV"
    again=$(region "$OUT_DIR/help_amp_again.png" 8 457 1026 12)
    [[ "$amp" == "$again" ]] || fail "help: the help line changed while the pointer stood still"
    ;;
  host)
    # Host automation and a host program change move the controls on the next frames: the OSC 1
    # gain knob (160, 28, 48 x 48) and the program box's name (896, 92, 114 x 24).
    play host <<SCRIPT
open
set 1=0
wait 2
screenshot $OUT_DIR/host_0.png
set 1=1
wait 2
screenshot $OUT_DIR/host_1.png
program 5
wait 2
screenshot $OUT_DIR/host_2.png
SCRIPT
    knob_before=$(region "$OUT_DIR/host_0.png" 160 28 48 48)
    knob_after=$(region "$OUT_DIR/host_1.png" 160 28 48 48)
    [[ "$knob_before" != "$knob_after" ]] || fail "host: the gain knob did not follow the host's automation"
    name_before=$(region "$OUT_DIR/host_1.png" 896 92 114 24)
    name_after=$(region "$OUT_DIR/host_2.png" 896 92 114 24)
    [[ "$name_before" != "$name_after" ]] || fail "host: the program box did not follow the host's program change"
    ;;
  window)
    # The GDI canvas, the window class's lifetime and the text field, checked from inside wine.
    xvfb-run -a wine "$WIN_BUILD_DIR/editor_win_tests.exe" | tee "$OUT_DIR/window.txt"
    grep -q '^0 of [1-9][0-9]* editor window checks failed' "$OUT_DIR/window.txt" || fail "window layer checks failed"
    ;;
  screenshot)
    shot="$OUT_DIR/editor.png"
    rm -f "$shot"
    xvfb-run -a "$VRNHOST" --win-host "$WIN_BUILD_DIR" --screenshot "$shot" "$WIN_BUILD_DIR/VrnZIV.dll" \
      >"$OUT_DIR/screenshot.txt" || fail "screenshot: vrnhost failed"
    [[ -f "$shot" ]] || fail "screenshot: no $shot"
    [[ $(png_size "$shot") == "1040 472" ]] || fail "screenshot: $shot is $(png_size "$shot"), not 1040 472"
    # The panels' frames lie where the layout puts the panels: the frame's line runs two pixels
    # inside the panel's left and top edges, clearly brighter than the ground just outside it.
    for panel in "8 12 216 112" "8 308 216 152" "224 180 160 280" "544 12 160 80" "712 12 160 128" \
      "872 12 160 168" "872 348 160 112"; do
      read -r x y w h <<<"$panel"
      for probe in "$((x + 1)) $((y + h / 2)) $((x + 2)) $((y + h / 2))" \
        "$((x + w - 12)) $((y + 1)) $((x + w - 12)) $((y + 2))"; do
        read -r ox oy ex ey <<<"$probe"
        outside=$("$PNG_CHECK" "$shot" pixel "$ox" "$oy" | cut -d' ' -f2)
        edge=$("$PNG_CHECK" "$shot" pixel "$ex" "$ey" | cut -d' ' -f2)
        ((edge >= outside + 16)) || fail "screenshot: no frame at $ex,$ey of the panel at $panel"
      done
    done
    cat "$OUT_DIR/screenshot.txt"
    ;;
  learn)
    # Right-click the SHAPER drive knob, choose "MIDI learn" (the knob is outlined while it
    # waits), move controller 74: the menu shows the mapping and the settings file (128 slots and a stamp) appears in the data folder.
    settings="$(data_folder)/Vrn ZIV.cfg"
    rm -f "$settings"
    play learn <<SCRIPT
open
wait 2
click 632 65 right
wait 1
click 650 99
wait 2
screenshot $OUT_DIR/learn-waiting.png
cc 74 100
wait 2
screenshot $OUT_DIR/learn-menu.png
click 5 5
wait 1
close
SCRIPT
    [[ -f "$settings" ]] || fail "learn: no settings file at $settings"
    [[ $(stat -c %s "$settings") -eq 516 ]] || fail "learn: the settings file has $(stat -c %s "$settings") bytes"
    ;;
  menus)
    # The program/bank menu with the factory bank offered, then renaming through the text field,
    # saving, initialising and loading the bank through the real file choosers (answered by
    # xdotool on the same display), and a broken bank file, which shows the "Error" box.
    factory="$(data_folder)/presets/Vrn1/Factory Presets"
    mkdir -p "$factory"
    cp "$WIN_BUILD_DIR/Factory.fxb" "$factory/"
    rm -f "$OUT_DIR/saved.fxb" "$OUT_DIR/dialogs.txt"
    echo "not a bank" >"$OUT_DIR/broken.fxb"
    # Menu rows below the name button (896, 92, 114 x 24): 20 pixels each from y 120.
    cat >"$OUT_DIR/menus.script" <<SCRIPT
open
wait 2
click 953 104
wait 2
screenshot $OUT_DIR/program-menu.png
click 930 270
wait 2
type Typed Name
screenshot $OUT_DIR/rename-field.png
key enter
wait 2
name
click 953 104
wait 1
click 930 170
wait 2
click 953 104
wait 1
click 930 190
wait 2
name
click 953 104
wait 1
click 930 150
wait 2
name
click 953 104
wait 1
click 930 150
wait 2
name
close
SCRIPT
    export VRNHOST WIN_BUILD_DIR OUT_DIR
    export ANSWER="$(dirname "$0")/answer_dialogs.sh"
    xvfb-run -a bash -c '
      "$VRNHOST" --win-host "$WIN_BUILD_DIR" --editor "$OUT_DIR/menus.script" "$WIN_BUILD_DIR/VrnZIV.dll" \
        >"$OUT_DIR/menus.txt" &
      host=$!
      bash "$ANSWER" >"$OUT_DIR/dialogs.txt" 2>&1 || kill $host
      wait $host' || fail "menus: vrnhost failed: $(cat "$OUT_DIR/menus.txt" "$OUT_DIR/dialogs.txt")"
    expect_lines menus 'name 0 Typed Name' 3
    expect_lines menus 'name 0 Init Patch' 1
    [[ -f "$OUT_DIR/saved.fxb" ]] || fail "menus: Save Bank wrote no file"
    grep -q '^answered Error$' "$OUT_DIR/dialogs.txt" || fail "menus: no Error box: $(cat "$OUT_DIR/dialogs.txt")"
    ;;
  *)
    fail "unknown case '$1'"
    ;;
esac
echo "ok  $1"
