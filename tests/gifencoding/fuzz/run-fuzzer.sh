#!/usr/bin/env bash
# Builds the image block fuzzer with clang and libFuzzer, apart from the main
# build (which uses g++), and runs it for a fixed time. ctest runs this.
#   run-fuzzer.sh SOURCE_ROOT WORK_DIR SECONDS
set -euo pipefail
root=$1
work=$(mkdir -p "$2" && cd "$2" && pwd)
seconds=${3:-60}
clang=${CLANGXX:-clang++-14}

mkdir -p "$work/corpus"
binary="$work/image-block-fuzzer"
sources=("$root/src/gifencoding/ImageBlock.cpp" "$root/tests/gifencoding/fuzz/ImageBlockFuzzer.cpp")
if [ ! -x "$binary" ] || [ -n "$(find "${sources[@]}" "$root/src/gifencoding/ImageBlock.h" -newer "$binary")" ]; then
  "$clang" -std=c++20 -O1 -g -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    -I "$root/src" "${sources[@]}" -o "$binary"
fi
cp -n "$root"/tests/gifencoding/fuzz/seeds/* "$work/corpus/" 2>/dev/null || true
cd "$work"
exec "$binary" -max_total_time="$seconds" -timeout=5 -rss_limit_mb=1024 -print_final_stats=1 corpus
