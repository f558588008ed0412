#!/bin/sh
# Compare in the main window (offscreen) against `duomir-cli compare` on the same generated pair,
# and the time of a filter click, a sort and a scroll through the list (release build).
#
#   bench/gui_compare.sh [FILES] [WORKDIR]      (defaults: 300000, /tmp/duomir-bench)
set -eu

FILES=${1:-300000}
WORK=${2:-/tmp/duomir-bench}
HERE=$(cd "$(dirname "$0")" && pwd)
ROOT=$(dirname "$HERE")
BIN=$ROOT/build/release/bin

bench=$HERE
. "$bench/common.sh"
build_release duomir-cli duomir_gui_bench

TREE=$WORK/$FILES
generated_tree "$TREE" "$FILES"
export XDG_CONFIG_HOME=$WORK/config XDG_DATA_HOME=$WORK/data
echo "entries (both sides): $(find "$TREE/src" "$TREE/dst" -mindepth 1 | wc -l)"

# Warm the cache once, then time each front end.
"$BIN/duomir-cli" compare --source "$TREE/src" --destination "$TREE/dst" >/dev/null 2>&1 || true
start=$(date +%s%N)
"$BIN/duomir-cli" compare --source "$TREE/src" --destination "$TREE/dst" >/dev/null 2>&1 || true
end=$(date +%s%N)
echo "duomir-cli compare: $(( (end - start) / 1000000 )) ms"
"$BIN/duomir_gui_bench" "$TREE/src" "$TREE/dst" 2>/dev/null
