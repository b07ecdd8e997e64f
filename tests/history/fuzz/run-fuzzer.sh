#!/usr/bin/env bash
# Builds the history decoder fuzzer with clang and libFuzzer, apart from the
# main build (which uses g++), and runs it for a fixed time. ctest runs this.
#   run-fuzzer.sh SOURCE_ROOT WORK_DIR SECONDS
set -euo pipefail
root=$1
work=$(mkdir -p "$2" && cd "$2" && pwd)
seconds=${3:-60}
clang=${CLANGXX:-clang++-14}

mkdir -p "$work/corpus"
binary="$work/history-decoder-fuzzer"
sources=("$root/src/history/HistoryItem.cpp" "$root/src/history/OldHistoryItem.cpp"
         "$root/src/history/JsonFields.cpp" "$root/src/appbase/CaptureKind.cpp"
         "$root/tests/history/fuzz/HistoryDecoderFuzzer.cpp")
headers=("$root/src/history/HistoryItem.h" "$root/src/history/OldHistoryItem.h"
         "$root/src/history/JsonFields.h" "$root/src/appbase/CaptureKind.h")
if [ ! -x "$binary" ] || [ -n "$(find "${sources[@]}" "${headers[@]}" -newer "$binary")" ]; then
  # Qt itself is not instrumented; the decoders and the target are.
  "$clang" -std=c++20 -O1 -g -fPIC -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    -DQT_USE_QSTRINGBUILDER -DQT_NO_KEYWORDS -I "$root/src" $(pkg-config --cflags Qt6Core) \
    "${sources[@]}" $(pkg-config --libs Qt6Core) -o "$binary"
fi
cp -n "$root"/tests/history/fuzz/seeds/* "$work/corpus/" 2>/dev/null || true
cd "$work"
exec "$binary" -max_total_time="$seconds" -timeout=5 -rss_limit_mb=1024 -print_final_stats=1 corpus
