#!/usr/bin/env bash
# Compares two builds of duomir-cli on the generated trees, round by round: each round runs both
# binaries after the same reset, in alternating order, so that the file system's drift over a
# session (ext4 inode tables after the previous run's deletions) hits both alike. hyperfine runs
# all of one command before the other and then shows that drift as a difference.
#
#   bench/ab.sh BEFORE AFTER [FILES] [WORKDIR]     (defaults: 300000, /tmp/duomir-bench; ROUNDS=8)
#
# AFTER_ARGS holds options only the second build knows (e.g. "--versioning none"), added to its
# sync. Files a run puts in the trash are emptied out with every reset.
#
# Prints the mean wall and CPU time of compare and of a two-way sync per binary, and the peak
# memory of one compare each.
set -euo pipefail
before=$(realpath "$1")
after=$(realpath "$2")
files=${3:-300000}
work=${4:-/tmp/duomir-bench}
bench=$(cd "$(dirname "$0")" && pwd)
. "$bench/common.sh"
need rsync
[ -x /usr/bin/time ] || need /usr/bin/time time

tree=$work/$files
generated_tree "$tree" "$files"
run=$work/ab
if [ ! -d "$run/dst" ]; then
    mkdir -p "$run"
    cp -a "$tree/src" "$tree/dst" "$run/"
fi
export XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data
reset() {
    rm -rf "$XDG_DATA_HOME/Trash"
    rsync -a --delete "$tree/src/" "$run/src/" && rsync -a --delete "$tree/dst/" "$run/dst/" && sync
}
timed() { # LABEL BINARY ARGS...: one line "LABEL wall user system"
    local label=$1
    shift
    /usr/bin/time -o "$work/ab.time" -f "%e %U %S" "$@" >/dev/null 2>&1 || true
    echo "$label $(cat "$work/ab.time")"
}
results=$work/ab.results
: >"$results"
for i in $(seq 1 "${ROUNDS:-8}"); do
    if [ $((i % 2)) = 1 ]; then order="before after"; else order="after before"; fi
    for b in $order; do
        bin=$before
        [ "$b" = after ] && bin=$after
        timed "compare-$b" "$bin" compare --source "$tree/src" --destination "$tree/dst" >>"$results"
    done
    for b in $order; do
        bin=$before
        extra=()
        [ "$b" = after ] && bin=$after && read -ra extra <<<"${AFTER_ARGS:-}"
        reset
        timed "twoway-$b" "$bin" sync --source "$run/src" --destination "$run/dst" --hidden-files \
            --hidden-dirs --system-files --system-dirs "${extra[@]}" >>"$results"
    done
done
awk '{n[$1]++; w[$1]+=$2; c[$1]+=$3+$4} END {for (k in n) printf "%-16s %d runs: wall %.2f s, cpu %.2f s\n", k, n[k], w[k]/n[k], c[k]/n[k]}' "$results" | sort
for b in before after; do
    bin=$before
    [ "$b" = after ] && bin=$after
    /usr/bin/time -o "$work/ab.time" -f "%M" "$bin" compare --source "$tree/src" --destination "$tree/dst" >/dev/null 2>&1 || true
    echo "peak-$b $(cat "$work/ab.time") KB"
done
