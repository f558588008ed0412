#!/usr/bin/env bash
# Times `duomir-cli sync` of a fresh tree beside `cp -a` and `rsync -a` on the same data:
#   100,000 small files (1-4 KiB in 1,000 folders) and a few large files (500 MB each).
# Usage: bench/copy.sh [WORKDIR]   (installs hyperfine and rsync when missing; builds the release preset)
# Targets: small files <= 1.3x cp -a, large files within 10 % of cp -a.
set -euo pipefail
cd "$(dirname "$0")/.."
work=${1:-$(mktemp -d /var/tmp/duomir-bench.XXXXXX)}
small=${SMALL_FILES:-100000}
large=${LARGE_FILES:-3}
large_mb=${LARGE_MB:-500}

bench=$PWD/bench
. "$bench/common.sh"
need hyperfine
need rsync
build_release duomir-cli
cli=$PWD/build/release/bin/duomir-cli

mkdir -p "$work/small" "$work/large"
if [ ! -e "$work/small/.done" ]; then
    python3 - "$work/small" "$small" <<'PY'
import os, sys, random
root, n = sys.argv[1], int(sys.argv[2])
random.seed(1)
for i in range(n):
    d = os.path.join(root, "d%03d" % (i % 1000))
    os.makedirs(d, exist_ok=True)
    with open(os.path.join(d, "f%06d.dat" % i), "wb") as f:
        f.write(os.urandom(random.randint(1024, 4096)))
PY
    touch "$work/small/.done"
fi
if [ ! -e "$work/large/.done" ]; then
    for i in $(seq 1 "$large"); do
        head -c "$((large_mb * 1000 * 1000))" /dev/urandom > "$work/large/big$i.bin"
    done
    touch "$work/large/.done"
fi

for set in small large; do
    echo "== $set =="
    hyperfine --warmup 1 --runs "${RUNS:-5}" \
        --prepare "rm -rf '$work/out' && sync" \
        -n "duomir-cli sync" "mkdir '$work/out' && '$cli' sync --source '$work/$set' --destination '$work/out' --direction to-destination >/dev/null" \
        -n "cp -a" "cp -a '$work/$set' '$work/out'" \
        -n "rsync -a" "rsync -a '$work/$set/' '$work/out/'" \
        --export-markdown "$work/$set.md"
done
rm -rf "$work/out"
echo "Results in $work/small.md and $work/large.md"
