#!/usr/bin/env bash
# The main job: installs what is missing, builds both plug-ins, and plays the built-in demo
# phrase through the Linux plug-in with the headless host, exactly as a DAW would load it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

bash "$root/tools/setup.sh"
bash "$root/tools/build.sh"

mkdir -p "$root/out"
# The demo phrase has chords under a melody, so it plays a polyphonic factory program.
"$root/build/vrnhost" --program-name "POLY - Analog Poly" --out "$root/out/demo.wav" "$root/build/VrnZIV.so"

cat <<TEXT

Plug-ins:
  Linux VST 2.4    $root/build/VrnZIV.so
  Windows VST 2.4  $root/build-win/VrnZIV.dll   (one file; copy it into your VST folder)
Demo audio:        $root/out/demo.wav
Play more:         $root/build/vrnhost --help
TEXT
