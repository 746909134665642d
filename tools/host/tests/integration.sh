#!/usr/bin/env bash
# Integration checks of the real plug-in through the headless host; run by CTest with one case
# name. Paths come from the environment set by tools/host/tests/CMakeLists.txt: VRNHOST, WAV_CHECK,
# PLUGIN_SO, OUT_DIR, PLATFORM_MAX_DIFF, WINEPREFIX and WIN_BUILD_DIR.
set -euo pipefail

# The demo phrase is 16 beats long; renders here use 120 BPM and a 1.5 s tail.
readonly TAIL=1.5
demo_frames() {  # rate [tempo]
  local rate=$1 tempo=${2:-120}
  awk -v r="$rate" -v t="$tempo" -v tail="$TAIL" \
    'function round(x) { return int(x + 0.5) } BEGIN { print round(16 * 60 / t * r) + round(tail * r) }'
}

fail() { echo "FAIL: $*" >&2; exit 1; }


# Checks a --list-params listing: 108 lines numbered 0..107, each with a name.
check_listing() {
  local listing=$1
  local count
  count=$(wc -l <"$listing")
  [[ "$count" -eq 108 ]] || fail "expected 108 parameters, got $count"
  awk '{ if ($1 != NR - 1) { print "line " NR ": index " $1; exit 1 } }' "$listing" || fail "indices not 0..107"
  if grep -Evq '^ *[0-9]+  [^ ]' "$listing"; then fail "a parameter has no name: $(grep -Ev '^ *[0-9]+  [^ ]' "$listing" | head -1)"; fi
  head -3 "$listing"
}

render_and_check() {  # output-file rate [tempo] -- vrnhost arguments...
  local out=$1 rate=$2 tempo=$3
  shift 3
  "$VRNHOST" --tail "$TAIL" --out "$out" "$@"
  "$WAV_CHECK" "$out" --frames "$(demo_frames "$rate" "$tempo")" --rate "$rate" --channels 2 --sound
}

# The plug-in's two builds of its audio code (baseline and AVX2/FMA) render the same samples; the
# AVX2 one is chosen wherever the processor has it, the baseline when VRNZIV_ISA says so.
check_code_paths() {  # prefix [vrnhost arguments...]
  local prefix=$1
  shift
  local args=(--length 6 --format float --program-name "LEAD - Sync Scream" "$@")
  VRNZIV_ISA=baseline "$VRNHOST" --out "$OUT_DIR/$prefix-baseline.wav" "${args[@]}" >"$OUT_DIR/$prefix-baseline.txt"
  "$VRNHOST" --out "$OUT_DIR/$prefix-chosen.wav" "${args[@]}" >"$OUT_DIR/$prefix-chosen.txt"
  grep -qx 'plug-in code path baseline' "$OUT_DIR/$prefix-baseline.txt" \
    || fail "VRNZIV_ISA=baseline did not give the baseline code: $(grep 'code path' "$OUT_DIR/$prefix-baseline.txt")"
  local expected=baseline
  if grep -qw avx2 /proc/cpuinfo && grep -qw fma /proc/cpuinfo; then expected=AVX2/FMA; fi
  grep -qx "plug-in code path $expected" "$OUT_DIR/$prefix-chosen.txt" \
    || fail "expected the $expected code: $(grep 'code path' "$OUT_DIR/$prefix-chosen.txt")"
  echo "chosen: $expected"
  "$WAV_CHECK" --compare "$OUT_DIR/$prefix-baseline.wav" "$OUT_DIR/$prefix-chosen.wav" --max-diff 0
}

# Runs vrnhost expecting failure with exactly one line on stderr that starts with "vrnhost: ".
expect_refusal() {
  local description=$1
  shift
  local stderr_file="$OUT_DIR/refusal.err"
  if "$VRNHOST" "$@" >/dev/null 2>"$stderr_file"; then fail "$description: vrnhost succeeded"; fi
  local lines
  lines=$(wc -l <"$stderr_file")
  [[ "$lines" -eq 1 ]] || fail "$description: expected one line on stderr, got $lines: $(cat "$stderr_file")"
  grep -q '^vrnhost: ' "$stderr_file" || fail "$description: message lacks the 'vrnhost: ' prefix"
  echo "ok  $description: $(cat "$stderr_file")"
}

# Program and bank files through a plug-in (.so or .dll): the bank and a program saved through the
# plug-in's chunk load back and save again byte for byte; programs are found by name.
check_program_files() {  # prefix plugin [vrnhost options...]
  local prefix=$1 plugin=$2
  shift 2
  local dir="$OUT_DIR/$prefix-programs"
  mkdir -p "$dir"
  "$VRNHOST" "$@" --list-programs "$plugin" >"$dir/programs.txt"
  [[ $(wc -l <"$dir/programs.txt") -eq 100 ]] || fail "expected 100 programs"
  grep -q '^ 99  Init Patch$' "$dir/programs.txt" || fail "program 99 is not the Init Patch"
  "$VRNHOST" "$@" -q --length 0.5 --out "$dir/a.wav" --save-fxb "$dir/factory.fxb" "$plugin"
  [[ $(stat -c %s "$dir/factory.fxb") -eq 46968 ]] || fail "bank file of $(stat -c %s "$dir/factory.fxb") bytes"
  "$VRNHOST" "$@" -q --length 0.5 --out "$dir/b.wav" --load "$dir/factory.fxb" --save-fxb "$dir/again.fxb" "$plugin"
  cmp "$dir/factory.fxb" "$dir/again.fxb" || fail "a loaded bank saves differently"
  "$VRNHOST" "$@" -q --length 0.5 --out "$dir/c.wav" --program-name "pad - warm pad" \
    --set "FILTER 1: Cutoff=0.3" --save-fxp "$dir/warm.fxp" "$plugin"
  "$VRNHOST" "$@" -q --length 0.5 --out "$dir/d.wav" --load "$dir/warm.fxp" --save-fxp "$dir/warm-again.fxp" "$plugin"
  cmp "$dir/warm.fxp" "$dir/warm-again.fxp" || fail "a loaded program saves differently"
  "$VRNHOST" "$@" --load "$dir/warm.fxp" --list-programs "$plugin" | head -1 | grep -q '^  0  PAD - Warm Pad$' \
    || fail "the loaded program did not replace program 0"
  render_and_check "$dir/render.wav" 44100 120 "$@" --load "$dir/factory.fxb" --program-name "BASS - Acid Bass" "$plugin"
}

need_windows_build() {
  [[ -f "$WIN_BUILD_DIR/VrnZIV.dll" ]] || fail "no $WIN_BUILD_DIR/VrnZIV.dll; build the Windows plug-in first"
  [[ -f "$WIN_BUILD_DIR/vrnhost.exe" ]] || fail "no $WIN_BUILD_DIR/vrnhost.exe; build the Windows host first"
}

mkdir -p "$OUT_DIR"
case "$1" in
  list-params-so)
    "$VRNHOST" --list-params "$PLUGIN_SO" >"$OUT_DIR/so-params.txt"
    check_listing "$OUT_DIR/so-params.txt"
    ;;
  render-so)
    render_and_check "$OUT_DIR/so.wav" 44100 120 "$PLUGIN_SO"
    ;;
  code-paths-so)
    check_code_paths so "$PLUGIN_SO"
    ;;
  block-4096-so)
    render_and_check "$OUT_DIR/so-4096.wav" 44100 120 --block 4096 "$PLUGIN_SO"
    ;;
  zero-frame-calls-so)
    render_and_check "$OUT_DIR/so-zero.wav" 44100 120 --zero-frame-calls --block 256 "$PLUGIN_SO"
    ;;
  options-so)
    render_and_check "$OUT_DIR/so-options.wav" 48000 90 --rate 48000 --tempo 90 --format 24 --stopped \
      --program 5 --set "FILTER 1: Cutoff=0.3" --set 30=0.5 --block 1000 "$PLUGIN_SO"
    ;;
  programs-so)
    check_program_files so "$PLUGIN_SO"
    ;;
  demo-song-so)
    # The demo song: one instance per track, mixed to -14 LUFS with peaks at or below -1 dBFS.
    "$VRNHOST" --midi "$DEMO_SONG" --tracks --loudness -14 --out "$OUT_DIR/song.wav" "$PLUGIN_SO" \
      >"$OUT_DIR/song.txt"
    cat "$OUT_DIR/song.txt"
    [[ $(grep -c '^track ' "$OUT_DIR/song.txt") -ge 4 ]] || fail "the song plays fewer than four tracks"
    awk '/^loudness/ { if ($2 < -14.5 || $2 > -13.5 || $5 > -1.0) exit 1; found = 1 } END { exit !found }' \
      "$OUT_DIR/song.txt" || fail "song not at -14 LUFS and -1 dBFS: $(grep '^loudness' "$OUT_DIR/song.txt")"
    "$WAV_CHECK" "$OUT_DIR/song.wav" --rate 44100 --channels 2 --sound
    ;;
  bad-arguments)
    echo "not a plug-in" >"$OUT_DIR/not-a-plugin.so"
    echo "not a MIDI file" >"$OUT_DIR/not-a-midi.mid"
    expect_refusal "no arguments"
    expect_refusal "unknown option" --volume 11 "$PLUGIN_SO"
    expect_refusal "zero block size" --block 0 "$PLUGIN_SO"
    expect_refusal "malformed rate" --rate 44.1k "$PLUGIN_SO"
    expect_refusal "value out of range" --set "FILTER 1: Cutoff=2" "$PLUGIN_SO"
    expect_refusal "missing plug-in" "$OUT_DIR/missing.so"
    expect_refusal "file that is no plug-in" "$OUT_DIR/not-a-plugin.so"
    expect_refusal "unknown parameter name" --set "FILTER 9: Cutoff=0.5" "$PLUGIN_SO"
    expect_refusal "parameter index out of range" --set 108=0.5 "$PLUGIN_SO"
    expect_refusal "program out of range" --program 100 "$PLUGIN_SO"
    expect_refusal "missing MIDI file" --midi "$OUT_DIR/missing.mid" "$PLUGIN_SO"
    expect_refusal "broken MIDI file" --midi "$OUT_DIR/not-a-midi.mid" "$PLUGIN_SO"
    expect_refusal "unwritable output" --out "$OUT_DIR/no/such/folder/x.wav" "$PLUGIN_SO"
    expect_refusal "missing Windows host" --win-host "$OUT_DIR/nowhere" "$OUT_DIR/missing-host/VrnZIV.dll"
    printf 'CcnK\0\0\0\x10FBCh' >"$OUT_DIR/truncated.fxb"
    echo "not a bank" >"$OUT_DIR/text.fxb"
    expect_refusal "truncated bank file" --load "$OUT_DIR/truncated.fxb" "$PLUGIN_SO"
    expect_refusal "bank file that is no bank" --load "$OUT_DIR/text.fxb" "$PLUGIN_SO"
    expect_refusal "missing program file" --load "$OUT_DIR/missing.fxp" "$PLUGIN_SO"
    expect_refusal "load of another file type" --load "$OUT_DIR/not-a-midi.mid" "$PLUGIN_SO"
    expect_refusal "unknown program name" --program-name "LEAD - Nothing" "$PLUGIN_SO"
    expect_refusal "program by index and name" --program 1 --program-name "Init Patch" "$PLUGIN_SO"
    expect_refusal "save into a missing folder" --save-fxb "$OUT_DIR/no/such/folder/x.fxb" "$PLUGIN_SO"
    expect_refusal "editor of the Linux plug-in" --screenshot "$OUT_DIR/x.png" "$PLUGIN_SO"
    expect_refusal "editor mode with a listing" --screenshot "$OUT_DIR/x.png" --list-params "$PLUGIN_SO"
    echo "not a plug-in" >"$OUT_DIR/not-a-plugin.dll"
    printf 'open\nhover 1 2\n' >"$OUT_DIR/bad.script"
    expect_refusal "malformed editor script" --editor "$OUT_DIR/bad.script" "$OUT_DIR/not-a-plugin.dll"
    expect_refusal "missing editor script" --editor "$OUT_DIR/missing.script" "$OUT_DIR/not-a-plugin.dll"
    ;;
  dll-imports)
    need_windows_build
    objdump=x86_64-w64-mingw32-objdump
    "$objdump" -p "$WIN_BUILD_DIR/VrnZIV.dll" >"$OUT_DIR/dll-headers.txt"
    # Only DLLs that every Windows installation has; a MinGW runtime DLL here would stop the
    # plug-in loading on a user's machine.
    system_dlls='^(kernel32|user32|gdi32|msimg32|shell32|ole32|oleaut32|comdlg32|advapi32|comctl32|shlwapi|winmm|version|uxtheme|imm32|msvcrt|ucrtbase|api-ms-win-[a-z0-9-]+)\.dll$'
    grep 'DLL Name:' "$OUT_DIR/dll-headers.txt" | awk '{ print tolower($3) }' | tee "$OUT_DIR/dll-imports.txt"
    if grep -Evq "$system_dlls" "$OUT_DIR/dll-imports.txt"; then
      fail "VrnZIV.dll imports non-system DLLs: $(grep -Ev "$system_dlls" "$OUT_DIR/dll-imports.txt" | tr '\n' ' ')"
    fi
    for symbol in VSTPluginMain GetPluginFactory; do
      sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' "$OUT_DIR/dll-headers.txt" | grep -qw "$symbol" \
        || fail "VrnZIV.dll does not export $symbol"
    done
    ;;
  wine-prefix)
    bash "$(dirname "$0")/../../wine-prefix.sh"
    ;;
  list-params-dll)
    need_windows_build
    "$VRNHOST" --list-params "$WIN_BUILD_DIR/VrnZIV.dll" >"$OUT_DIR/dll-params.txt"
    check_listing "$OUT_DIR/dll-params.txt"
    cmp -s "$OUT_DIR/dll-params.txt" <("$VRNHOST" --list-params "$PLUGIN_SO") \
      || fail "the .dll's parameter list differs from the .so's"
    ;;
  render-dll)
    need_windows_build
    render_and_check "$OUT_DIR/dll.wav" 44100 120 --win-host "$WIN_BUILD_DIR" "$WIN_BUILD_DIR/VrnZIV.dll"
    ;;
  programs-dll)
    need_windows_build
    check_program_files dll "$WIN_BUILD_DIR/VrnZIV.dll" --win-host "$WIN_BUILD_DIR"
    if [[ -f "$OUT_DIR/so-programs/factory.fxb" ]]; then
      cmp "$OUT_DIR/so-programs/factory.fxb" "$OUT_DIR/dll-programs/factory.fxb" \
        || fail "the .dll's bank differs from the .so's"
    fi
    ;;
  code-paths-dll)
    need_windows_build
    check_code_paths dll --win-host "$WIN_BUILD_DIR" "$WIN_BUILD_DIR/VrnZIV.dll"
    ;;
  so-dll-agree)
    "$WAV_CHECK" --compare "$OUT_DIR/so.wav" "$OUT_DIR/dll.wav" --max-diff "$PLATFORM_MAX_DIFF"
    ;;
  *)
    fail "unknown case '$1'"
    ;;
esac
