#!/usr/bin/env bash
# Every test: installs what is missing, builds both plug-ins, prepares a private wine prefix and
# runs the whole CTest suite (unit tests, the Linux plug-in through the headless host, and the
# Windows plug-in through the Windows host under wine).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

bash "$root/tools/setup.sh"
bash "$root/tools/build.sh"
ctest --test-dir "$root/build" --output-on-failure -j "$(nproc)"
