#!/usr/bin/env bash
# Trees behind a network mount where every call is a round trip: sshfs to a local sshd, and
# rclone mount of `rclone serve sftp`, both on the loopback (bench/loopmounts.sh), each mounted
# afresh before every run. Times, over each mount:
#   - duomir-cli compare against `rsync -a -n --delete` of the same two folders;
#   - a sync of FILES changed small files into the mount against `rsync -a` doing the same;
# and, beside them, rsync over ssh with its remote agent, as such a user would otherwise do it.
#
#   bench/mount.sh [FILES] [WORKDIR]     (defaults: 10000, /tmp/duomir-mount; RUNS=3; root, FUSE)
#
# Targets: compare <= half of rsync -a -n; sync <= rsync -a (both over the same mount).
set -euo pipefail
files=${1:-10000}
work=${2:-/tmp/duomir-mount}
bench=$(cd "$(dirname "$0")" && pwd)
. "$bench/common.sh"
need hyperfine
need rsync
build_release duomir-cli
cli=$bench/../build/release/bin/duomir-cli

mkdir -p "$work"
generated_tree "$work/tree" "$files"
src=$work/tree/src
. "$bench/loopmounts.sh"
export XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data
runs=${RUNS:-3}

# The compare: the generated destination (a share of it changed, missing or extra) on the server.
for m in sshfs rclone; do
    rm -rf "$work/remote-$m/cmp"
    cp -a "$work/tree/dst" "$work/remote-$m/cmp"
done
hyperfine --runs "$runs" --prepare "$work/remount.sh" --export-json "$work/compare.json" \
    -n "duomir-cli compare, sshfs" "$cli compare --source $src --destination $work/mnt-sshfs/cmp >/dev/null" \
    -n "rsync -a -n --delete, sshfs" "rsync -a -n --delete $src/ $work/mnt-sshfs/cmp/ >/dev/null" \
    -n "duomir-cli compare, rclone mount" "$cli compare --source $src --destination $work/mnt-rclone/cmp >/dev/null" \
    -n "rsync -a -n --delete, rclone mount" "rsync -a -n --delete $src/ $work/mnt-rclone/cmp/ >/dev/null" \
    -n "rsync -a -n --delete over ssh" "rsync -a -n --delete -e 'ssh $ssh_opts' $src/ root@127.0.0.1:$work/remote-sshfs/cmp/ >/dev/null"

# The sync: every file of the source exists on the server, older and of another content, so each
# one is replaced. The server's folder is made anew before every run.
cat >"$work/stale.sh" <<SCRIPT
#!/bin/sh
"$work/unmount.sh"
for m in sshfs rclone; do
    rm -rf "$work/remote-\$m/sync"
    cp -a "$src" "$work/remote-\$m/sync"
    find "$work/remote-\$m/sync" -type f -exec sh -c 'for f; do printf old >"\$f"; done; touch -d 2020-01-01 "\$@"' _ {} +
done
"$work/remount.sh"
SCRIPT
chmod +x "$work/stale.sh"
# Gone for good, as rsync replaces: the default (the trash) also keeps every replaced file.
hyperfine --runs "$runs" --prepare "$work/stale.sh" --export-json "$work/sync.json" \
    -n "duomir-cli sync, sshfs" "$cli sync --source $src --destination $work/mnt-sshfs/sync --direction to-destination --versioning none -q" \
    -n "rsync -a, sshfs" "rsync -a $src/ $work/mnt-sshfs/sync/" \
    -n "duomir-cli sync, rclone mount" "$cli sync --source $src --destination $work/mnt-rclone/sync --direction to-destination --versioning none -q" \
    -n "rsync -a, rclone mount" "rsync -a $src/ $work/mnt-rclone/sync/" \
    -n "rsync -a over ssh" "rsync -a -e 'ssh $ssh_opts' $src/ root@127.0.0.1:$work/remote-sshfs/sync/"

python3 - "$work/compare.json" "$work/sync.json" <<'PY'
import json, sys
for path in sys.argv[1:]:
    runs = {r["command"]: r["mean"] for r in json.load(open(path))["results"]}
    for name, t in runs.items():
        print(f"{t:8.2f} s  {name}")
    for m in ("sshfs", "rclone mount"):
        d = next(t for n, t in runs.items() if n.startswith("duomir") and n.endswith(m))
        r = next(t for n, t in runs.items() if n.startswith("rsync") and n.endswith(m))
        print(f"          duomir / rsync over {m}: {d / r:.2f}")
PY
