#!/usr/bin/env bash
# Installs the Debian 12 packages that building, running and testing Vrn ZIV need. Safe to run
# again: it asks apt only for what is missing, so a prepared machine costs a second.
set -euo pipefail

packages=(
  cmake make g++ pkg-config             # the Linux build
  libgtest-dev libbenchmark-dev         # unit tests and benchmarks
  libsndfile1-dev libsmf-dev            # the headless host's WAV and MIDI files
  g++-mingw-w64-x86-64                  # the Windows plug-in and host
  wine wine64                           # runs them here
  clang libclang-rt-14-dev              # fuzzing the file readers (libFuzzer with sanitizers)
  sox                                   # listening with numbers: levels and spectrograms
  xvfb xauth xdotool x11-utils          # the editor's window under wine, on a virtual screen
  fonts-liberation                      # Arial-compatible metrics for the editor's text under wine
  libebur128-dev                        # loudness of the factory programs and the demo
)
# npm fetches lodepng from its registry; Debian's nodejs may come without it.
command -v npm >/dev/null 2>&1 || packages+=(npm)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
if ((${#missing[@]} == 0)); then
  exit 0
fi

sudo=()
if ((EUID != 0)); then sudo=(sudo); fi
echo "installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -q
"${sudo[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
