#!/usr/bin/env bash
# Builds a libFuzzer target with clang, apart from the main build (which uses
# g++), and runs it for a fixed time from a fixed seed corpus. ctest runs this
# through glimpso_fuzz_test().
#   run-fuzzer.sh WORK_DIR SECONDS SEED_DIR NAME [--qt] [--pkg "MODULE..."] SOURCE...
# --pkg adds pkg-config modules (not instrumented), e.g. "Qt6Gui".
# A source's own header (same name, .h) also counts when deciding to rebuild.
set -euo pipefail
work=$(mkdir -p "$1" && cd "$1" && pwd)
seconds=$2
seeds=$3
name=$4
shift 4
with_qt=0
if [ "${1:-}" = --qt ]; then with_qt=1; shift; fi
modules=""
if [ "${1:-}" = --pkg ]; then modules=$2; shift 2; fi
sources=("$@")
clang=${CLANGXX:-clang++-14}
root=$(cd "$(dirname "$0")/../.." && pwd)

watched=("${sources[@]}")
for source in "${sources[@]}"; do
  [ -f "${source%.cpp}.h" ] && watched+=("${source%.cpp}.h")
done

binary="$work/$name"
if [ ! -x "$binary" ] || [ -n "$(find "${watched[@]}" -newer "$binary")" ]; then
  flags=(-std=c++20 -O1 -g -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined -I "$root/src")
  libs=()
  if [ $with_qt -eq 1 ]; then
    # Qt itself is not instrumented; our code and the target are.
    # shellcheck disable=SC2207
    flags+=(-fPIC -DQT_USE_QSTRINGBUILDER -DQT_NO_KEYWORDS $(pkg-config --cflags Qt6Core))
    # shellcheck disable=SC2207
    libs=($(pkg-config --libs Qt6Core))
  fi
  if [ -n "$modules" ]; then
    # shellcheck disable=SC2207,SC2086
    flags+=(-fPIC $(pkg-config --cflags $modules))
    # shellcheck disable=SC2207,SC2086
    libs+=($(pkg-config --libs $modules))
  fi
  "$clang" "${flags[@]}" "${sources[@]}" "${libs[@]}" -o "$binary"
fi
mkdir -p "$work/corpus"
cp -n "$seeds"/* "$work/corpus/" 2>/dev/null || true
cd "$work"
exec "$binary" -max_total_time="$seconds" -timeout=5 -rss_limit_mb=1024 -print_final_stats=1 corpus
