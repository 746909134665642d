#!/usr/bin/env bash
# Checks that the engine's AVX2 pass (engine/isa.h) shares no code with the baseline: every
# global symbol its objects define is an instantiation for isa::Avx2, and no baseline object
# defines one. A function both passes defined under one name (an inline function or a template
# that does not depend on the instruction set) would be merged by the linker, and a processor
# without AVX2 could end up running the AVX2 copy.
#
# usage: avx2_pass_apart.sh NM AVX2_OBJECT_DIR BASELINE_OBJECT_DIR
set -euo pipefail
nm=$1 avx2_dir=$2 baseline_dir=$3
objects() { find "$1" -type f \( -name '*.o' -o -name '*.obj' \) | sort; }
mapfile -t avx2 < <(objects "$avx2_dir")
mapfile -t baseline < <(objects "$baseline_dir")
((${#avx2[@]} > 0)) || { echo "no objects in $avx2_dir"; exit 1; }
((${#baseline[@]} > 0)) || { echo "no objects in $baseline_dir"; exit 1; }
# Defined symbols other than local code and data (t, r, d, b) and unwind tables (p, PE only),
# demangled.
globals() { "$nm" -C --defined-only "$@" | grep -E '^[0-9a-f]+ [^trdbp] ' || true; }
shared=$(globals "${avx2[@]}" | grep -v 'isa::Avx2' || true)
leaked=$(globals "${baseline[@]}" | grep 'isa::Avx2' || true)
count=$(globals "${avx2[@]}" | grep -c 'isa::Avx2' || true)
status=0
if [[ -n $shared ]]; then
  echo "the AVX2 pass defines symbols the baseline may share:"
  echo "$shared"
  status=1
fi
if [[ -n $leaked ]]; then
  echo "baseline objects define AVX2 kernels (a missing 'extern template' declaration?):"
  echo "$leaked"
  status=1
fi
echo "${#avx2[@]} AVX2 objects, $count AVX2 kernels, ${#baseline[@]} baseline objects"
exit $status
