#!/usr/bin/env bash
# CPU cost per voice of Vrn ZIV against two other VST 2.4 synthesizers from Debian,
# amsynth (package amsynth) and ZynAddSubFX (package zynaddsubfx-vst), all three
# rendered by our headless host build/vrnhost at 44.1 kHz, playing the same notes.
#
# Patches:
#   Vrn ZIV      "Init Patch" with OSC 2: Gain 0.7, SUB: Gain 0.5, SHAPER: Mix 0.5
#                (two saws, sub, both filters, shaper at half mix); for 64 voices also
#                VOICE: Unison Voices 4 and VOICE: Polyphony 16.
#   amsynth      the plug-in's default patch as loaded (no program or parameter set).
#   ZynAddSubFX  the plug-in's default patch as loaded (no program or parameter set).
# Their default patches sound one voice per note, so their voice count is the note count.
#
# Cases: 64 voices (16 held notes; ours 16 notes x unison 4) at host block 256 and 32,
# one voice (one held note) at block 256, idle (no notes) at block 256.
# Cost = plug-in CPU time per second of audio, from vrnhost's real-time factor
# (CPU time measured on the thread that calls the plug-in's process function).
# Per case and round the three plug-ins run one after another, the order rotating from
# round to round; ratios are formed within a round and printed as the median and the
# min-max over the rounds.
#
# usage: bench/compare_cpu.sh [-n ROUNDS] [-l SECONDS] [-b BUILD_DIR]
#   -n  rounds per case (default 9)      -l  seconds of audio per render (default 10)
#   -b  build directory holding vrnhost and VrnZIV.so (default build)
# Installs amsynth and zynaddsubfx-vst with apt-get when they are missing.
set -euo pipefail

rounds=9
seconds=10
build=build
while getopts "n:l:b:h" opt; do
  case "$opt" in
    n) rounds=$OPTARG ;;
    l) seconds=$OPTARG ;;
    b) build=$OPTARG ;;
    *) sed -n '2,26p' "$0" | sed 's/^# \{0,1\}//'; exit 2 ;;
  esac
done

cd "$(dirname "$0")/.."
host=$build/vrnhost
ours=$build/VrnZIV.so
for f in "$host" "$ours"; do
  [[ -e $f ]] || { echo "missing $f: build the targets VrnZIV and vrnhost first" >&2; exit 1; }
done

missing=()
for pkg in amsynth zynaddsubfx-vst; do
  dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed" || missing+=("$pkg")
done
if ((${#missing[@]})); then
  sudo_cmd=()
  ((EUID == 0)) || sudo_cmd=(sudo)
  echo "installing ${missing[*]}" >&2
  "${sudo_cmd[@]}" apt-get update -qq >&2
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq "${missing[@]}" >&2
fi
vst_of() { dpkg -L "$1" | grep -E "/$2\$" | head -n 1; }
amsynth=$(vst_of amsynth amsynth_vst.so)
zyn=$(vst_of zynaddsubfx-vst ZynAddSubFX.so)
[[ -n $amsynth && -n $zyn ]] || { echo "cannot find the amsynth or ZynAddSubFX VST .so" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A format-0 Standard MIDI File (480 ticks per beat, 120 BPM): the given notes start at
# time 0 with velocity 100 and are held past the rendered length.
write_midi() {
  local out=$1; shift
  local ev="" n
  for n in "$@"; do ev+=$(printf '\\x00\\x90\\x%02x\\x64' "$n"); done
  # end of track 50 minutes later (delta 2880000 ticks as a variable-length quantity)
  ev+='\x81\xaf\xe4\x00\xff\x2f\x00'
  local len
  len=$(printf "$ev" | wc -c)
  {
    printf 'MThd\x00\x00\x00\x06\x00\x00\x00\x01\x01\xe0MTrk'
    printf "\\x$(printf %02x $((len >> 24 & 255)))\\x$(printf %02x $((len >> 16 & 255)))"
    printf "\\x$(printf %02x $((len >> 8 & 255)))\\x$(printf %02x $((len & 255)))"
    printf "$ev"
  } >"$out"
}
write_midi "$work/notes16.mid" $(seq 36 3 81)
write_midi "$work/note1.mid" 60
write_midi "$work/idle.mid"

chain=(--program-name "Init Patch" -s "OSC 2: Gain=0.7" -s "SUB: Gain=0.5" -s "SHAPER: Mix=0.5")
poly64=(-s "VOICE: Unison Voices=0.43" -s "VOICE: Polyphony=0.64")

# prints the plug-in CPU microseconds per second of audio of one render
render() { # plugin midi block [host options...]
  local plugin=$1 midi=$2 block=$3; shift 3
  local out rtf cpu
  out=$("$host" -o "$work/out.wav" -m "$midi" -b "$block" --length "$seconds" "$@" "$plugin" 2>&1) ||
    { echo "$out" >&2; exit 1; }
  cpu=$(sed -n 's/.*plug-in CPU time \([0-9.]*\) s.*/\1/p' <<<"$out")
  rtf=$(sed -n 's/.*real-time factor \([0-9.]*\).*/\1/p' <<<"$out")
  [[ -n $rtf && -n $cpu ]] || { echo "no real-time factor from $plugin:" >&2; echo "$out" >&2; exit 1; }
  # both are printed rounded: the CPU time to 1 ms, the factor to 0.1; use the finer one
  awk -v r="$rtf" -v c="$cpu" -v s="$seconds" 'BEGIN { printf "%.3f\n", (r > 10) ? 1e6 / r : 1e6 * c / s }'
}

# median min max of the numbers on stdin
spread() { sort -g | awk '{ v[NR] = $1 } END {
  m = (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2
  printf "%-30s", sprintf("%8.3f  [%.3f - %.3f]", m, v[1], v[NR]) }'; }

# case name, midi, block, our voices, their voices, extra options for ours
run_case() {
  local name=$1 midi=$2 block=$3 vours=$4 vtheirs=$5; shift 5
  local r i p c
  : >"$work/$name.ours"; : >"$work/$name.ams"; : >"$work/$name.zyn"
  for ((r = 0; r < rounds; r++)); do
    for ((i = 0; i < 3; i++)); do
      p=$(((r + i) % 3))
      case $p in
        0) c=$(render "$ours" "$midi" "$block" "${chain[@]}" "$@"); echo "$c" >>"$work/$name.ours" ;;
        1) c=$(render "$amsynth" "$midi" "$block"); echo "$c" >>"$work/$name.ams" ;;
        2) c=$(render "$zyn" "$midi" "$block"); echo "$c" >>"$work/$name.zyn" ;;
      esac
    done
  done
  printf '%-22s' "$name"
  paste "$work/$name.ours" | awk -v v="$vours" '{ print $1 / v }' | spread
  printf '  '
  paste "$work/$name.ams" | awk -v v="$vtheirs" '{ print $1 / v }' | spread
  printf '  '
  paste "$work/$name.zyn" | awk -v v="$vtheirs" '{ print $1 / v }' | spread
  printf '\n'
  # per-round ratios of the per-voice costs
  paste "$work/$name.ours" "$work/$name.ams" | awk -v a="$vours" -v b="$vtheirs" '{ print ($1 / a) / ($2 / b) }' >"$work/$name.r_ams"
  paste "$work/$name.ours" "$work/$name.zyn" | awk -v a="$vours" -v b="$vtheirs" '{ print ($1 / a) / ($2 / b) }' >"$work/$name.r_zyn"
}

echo "Vrn ZIV vs amsynth ($amsynth) and ZynAddSubFX ($zyn)"
echo "44100 Hz, ${seconds} s per render, $rounds alternating rounds per case; $(nproc) CPUs, $(uname -m)"
echo
echo "CPU microseconds per voice per second of audio (idle: per instance), median [min - max]"
printf '%-22s%-32s%-32s%s\n' case "Vrn ZIV" amsynth ZynAddSubFX
run_case "64 voices, block 256" "$work/notes16.mid" 256 64 16 "${poly64[@]}"
run_case "64 voices, block 32" "$work/notes16.mid" 32 64 16 "${poly64[@]}"
run_case "1 voice, block 256" "$work/note1.mid" 256 1 1
run_case "idle, block 256" "$work/idle.mid" 256 1 1

echo
echo "Ratios of cost per voice, median [min - max] over the rounds"
printf '%-22s%-32s%s\n' case "Vrn ZIV / amsynth" "Vrn ZIV / ZynAddSubFX"
for name in "64 voices, block 256" "64 voices, block 32" "1 voice, block 256" "idle, block 256"; do
  printf '%-22s' "$name"
  spread <"$work/$name.r_ams"
  printf '  '
  spread <"$work/$name.r_zyn"
  printf '\n'
done
echo
echo "Vrn ZIV against itself (cost per voice), median [min - max] over the rounds"
printf '%-40s' "block 32 / block 256 (64 voices)"
paste "$work/64 voices, block 32.ours" "$work/64 voices, block 256.ours" | awk '{ print $1 / $2 }' | spread
printf '\n%-40s' "1 voice / 64 voices (block 256)"
paste "$work/1 voice, block 256.ours" "$work/64 voices, block 256.ours" | awk '{ print $1 / ($2 / 64) }' | spread
printf '\n'
