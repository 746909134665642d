#!/usr/bin/env bash
# The main job: installs what is missing, builds both plug-ins, and plays the demo song through the
# Linux plug-in with the headless host, exactly as a DAW would: each of the song's MIDI tracks runs
# through its own plug-in instance on the factory program its track is named after, and the host
# mixes them to -14 LUFS with peaks at or below -1 dBFS. Writes the audio and its spectrogram.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

bash "$root/tools/setup.sh"
bash "$root/tools/build.sh"

mkdir -p "$root/out"
# "Afterglow", 18 bars at 112 BPM in A minor: warm pad, saw bass, echoing plucks, a saw lead whose
# long notes bring in vibrato with the mod wheel, a noise riser and two impacts.
"$root/build/vrnhost" --midi "$root/tools/demo/afterglow.mid" --tracks --loudness -14 --tail 4 \
  --out "$root/out/demo.wav" "$root/build/VrnZIV.so"
sox -V1 "$root/out/demo.wav" -n spectrogram -x 1200 -y 513 -z 90 -t "Vrn ZIV: Afterglow" -o "$root/out/demo.png"

cat <<TEXT

Plug-ins:
  Linux VST 2.4    $root/build/VrnZIV.so
  Windows VST 2.4  $root/build-win/VrnZIV.dll   (one file; copy it into your VST folder)
Demo audio:        $root/out/demo.wav
Its spectrogram:   $root/out/demo.png
Play more:         $root/build/vrnhost --help
TEXT
