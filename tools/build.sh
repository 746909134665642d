#!/usr/bin/env bash
# Configures and builds both plug-ins with their tools: the Linux VrnZIV.so, vrnhost and the
# tests in build/, the Windows VrnZIV.dll and vrnhost.exe in build-win/. Extra arguments go to
# the Linux configure (for example -DZIV_FUZZ=ON).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(nproc)

cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=Release \
  -DZIV_WINDOWS_BUILD_DIR="$root/build-win" "$@" >/dev/null
cmake --build "$root/build" -j "$jobs"

cmake -S "$root" -B "$root/build-win" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" >/dev/null
cmake --build "$root/build-win" -j "$jobs"
