#!/bin/sh
# Times `duomir-cli compare` (release build) on two generated trees against `find` over both
# trees, two `find`s at once (one a tree: what two cores can list) and rsync's dry run, and
# reports the peak memory per scanned entry. Run it with 100000, 300000 and 1000000 to see the
# growth.
#
#   bench/compare.sh [FILES] [WORKDIR]      (defaults: 300000, /tmp/duomir-bench)
#
# Targets (warm cache): compare <= 1.25 x two finds at once, faster than rsync -n,
# <= 100 bytes per entry at the peak.
set -eu

FILES=${1:-300000}
WORK=${2:-/tmp/duomir-bench}
HERE=$(cd "$(dirname "$0")" && pwd)
ROOT=$(dirname "$HERE")
CLI=$ROOT/build/release/bin/duomir-cli

bench=$HERE
. "$bench/common.sh"
need hyperfine
need rsync
[ -x /usr/bin/time ] || need /usr/bin/time time
build_release duomir-cli

TREE=$WORK/$FILES
generated_tree "$TREE" "$FILES"
SRC=$TREE/src
DST=$TREE/dst
ENTRIES=$(find "$SRC" "$DST" -mindepth 1 | wc -l)
echo "entries scanned (both sides): $ENTRIES"

# Keep the benchmark's settings away from the user's.
export XDG_CONFIG_HOME=$WORK/config XDG_DATA_HOME=$WORK/data

hyperfine --warmup 2 --runs 5 --export-json "$WORK/compare.json" \
    -n find "find $SRC $DST -printf '%s %T@ %p\n' >/dev/null" \
    -n "two finds" "find $SRC -printf '%s %T@ %p\n' >/dev/null & find $DST -printf '%s %T@ %p\n' >/dev/null; wait" \
    -n duomir "$CLI compare --source $SRC --destination $DST >/dev/null 2>&1" \
    -n rsync "rsync -a -n --delete -i $SRC/ $DST/ >/dev/null"

/usr/bin/time -v "$CLI" compare --source "$SRC" --destination "$DST" >/dev/null 2>"$WORK/time.txt" || true
RSS_KB=$(sed -n 's/.*Maximum resident set size (kbytes): //p' "$WORK/time.txt")

python3 - "$WORK/compare.json" "$RSS_KB" "$ENTRIES" <<'PY'
import json, sys
results = json.load(open(sys.argv[1]))["results"]
runs = {r["command"]: r["mean"] for r in results}
cpu = {r["command"]: r["user"] + r["system"] for r in results}
rss_kb, entries = int(sys.argv[2]), int(sys.argv[3])
f, two, d, r = runs["find"], runs["two finds"], runs["duomir"], runs["rsync"]
print(f"find      {f:.3f} s\ntwo finds {two:.3f} s")
print(f"duomir    {d:.3f} s  ({d / two:.2f} x two finds at once, target <= 1.25)")
print(f"rsync     {r:.3f} s  (duomir is {r / d:.2f} x faster)")
# On a busy machine wall times follow CPU time; the two scan threads only pay off on idle cores.
print(f"cpu    find {cpu['find']:.3f} s, duomir {cpu['duomir']:.3f} s, rsync {cpu['rsync']:.3f} s (user + system)")
print(f"peak      {rss_kb / 1024:.1f} MiB = {rss_kb * 1024 / entries:.0f} bytes per entry (target <= 100)")
PY
