#!/usr/bin/env bash
# Times a two-way `duomir-cli sync` of the generated trees (compare, copy both ways, compare
# again) beside `rsync -a` updating the destination one way. Before every run both working trees
# are put back to the generated state, so every run copies the same files.
#
#   bench/twoway.sh [FILES] [WORKDIR]      (defaults: 300000, /tmp/duomir-bench; RUNS=5)
#
# Target: duomir's two-way run takes less time than rsync's one-way run. rsync --sparse, which
# looks for runs of zeros, is timed as well.
set -euo pipefail
files=${1:-300000}
work=${2:-/tmp/duomir-bench}
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
cli=$root/build/release/bin/duomir-cli

bench=$here
. "$bench/common.sh"
need hyperfine
need rsync
build_release duomir-cli

tree=$work/$files
generated_tree "$tree" "$files"
run=$work/twoway
if [ ! -d "$run/dst" ]; then
    mkdir -p "$run"
    cp -a "$tree/src" "$tree/dst" "$run/" # keeps the generated files sparse
fi
# rsync restores just the files a run changed, writing them out in full: from the second run on
# the files to copy hold allocated data, as real files do, and holes no longer help anyone.
reset="rsync -a --delete '$tree/src/' '$run/src/' && rsync -a --delete '$tree/dst/' '$run/dst/' && sync"
sh -c "$reset"

export XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data
hyperfine --runs "${RUNS:-5}" --prepare "$reset" --export-markdown "$work/twoway.md" \
    -n "duomir-cli sync, two-way + re-compare" \
    "'$cli' sync --source '$run/src' --destination '$run/dst' --hidden-files --hidden-dirs --system-files --system-dirs >/dev/null" \
    -n "rsync -a, one-way" "rsync -a '$run/src/' '$run/dst/'" \
    -n "rsync -a --sparse, one-way" "rsync -a --sparse '$run/src/' '$run/dst/'"
sh -c "$reset"
"$cli" sync --source "$run/src" --destination "$run/dst" --hidden-files --hidden-dirs \
    --system-files --system-dirs | tail -n 1
echo "Results in $work/twoway.md"
