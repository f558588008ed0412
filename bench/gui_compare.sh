#!/bin/sh
# Compare in the main window (offscreen) against `duomir-cli compare` on the same generated pair,
# the time of a filter click, a sort and a scroll through the list, and a Synchronize of two
# identical trees, each with the memory held (release build).
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
# A second pair of identical trees (hard links of the source, made once): a Synchronize there
# finds nothing to do.
[ -d "$TREE/same" ] || cp -al "$TREE/src" "$TREE/same"
"$BIN/duomir_gui_bench" "$TREE/src" "$TREE/dst" "$TREE/src" "$TREE/same" 2>/dev/null
