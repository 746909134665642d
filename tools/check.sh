#!/usr/bin/env bash
# Every test: installs what is missing, builds both plug-ins, fuzzes the program and bank loaders
# briefly under libFuzzer with AddressSanitizer and UndefinedBehaviorSanitizer (clang build in
# build-fuzz/; fuzz/README.md has the longer run), runs the torture host against the plug-in
# built with AddressSanitizer and UndefinedBehaviorSanitizer (build-asan/) and with
# ThreadSanitizer (build-tsan/), where any sanitizer report fails the run, then runs the whole
# CTest suite: unit tests, the torture host against the Release plug-in, the Linux plug-in
# through the headless host, and the Windows plug-in through the Windows host and the torture
# host under wine in a private wine prefix.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(nproc)

bash "$root/tools/setup.sh"
bash "$root/tools/build.sh"

CC=clang CXX=clang++ cmake -S "$root" -B "$root/build-fuzz" -DCMAKE_BUILD_TYPE=Release -DZIV_FUZZ=ON >/dev/null
cmake --build "$root/build-fuzz" -j "$jobs" \
  --target fuzz_program_chunk fuzz_bank_chunk fuzz_program_image fuzz_bank_image
ctest --test-dir "$root/build-fuzz" -R '^fuzz\.' --output-on-failure -j "$jobs"

# Only the plug-in and the torture host are built with each sanitizer.
for variant in asan:address,undefined tsan:thread; do
  dir="$root/build-${variant%%:*}"
  CC=clang CXX=clang++ cmake -S "$root" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DZIV_SANITIZE="${variant#*:}" >/dev/null
  cmake --build "$dir" -j "$jobs" --target VrnZIV vrntorture
  ctest --test-dir "$dir" -R '^torture\.' --output-on-failure
done

ctest --test-dir "$root/build" --output-on-failure -j "$jobs"
