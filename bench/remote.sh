#!/usr/bin/env bash
# Trees behind a network mount, on this machine's loopback: a local sshd mounted with sshfs, and
# `rclone serve sftp` mounted with `rclone mount`. Times duomir-cli compare and a one-way sync
# into the mounted destination, beside rsync over ssh and `rclone sync` doing the same job.
#
#   bench/remote.sh [FILES] [WORKDIR]     (defaults: 5000, /tmp/duomir-remote; RUNS=2; needs root
#                                          for the sshd on port 2222 and FUSE)
set -euo pipefail
files=${1:-5000}
work=${2:-/tmp/duomir-remote}
bench=$(cd "$(dirname "$0")" && pwd)
. "$bench/common.sh"
need hyperfine
build_release duomir-cli
cli=$bench/../build/release/bin/duomir-cli

mkdir -p "$work"
generated_tree "$work/tree" "$files"
src=$work/tree/src
. "$bench/loopmounts.sh"
export XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data

# Each job starts from an empty remote folder: a first backup, then a compare of the result.
# Emptied through the mounts: their caches must not remember the old folder.
hyperfine --runs "${RUNS:-2}" --prepare "rm -rf $work/mnt-sshfs/dst $work/mnt-rclone/dst $work/remote-sshfs/dst $work/remote-rclone/dst || true" \
    -n "duomir-cli sync, sshfs" \
    "$cli sync --source $src --destination $work/mnt-sshfs/dst --mkdir --direction to-destination -q" \
    -n "duomir-cli sync, rclone mount" \
    "$cli sync --source $src --destination $work/mnt-rclone/dst --mkdir --direction to-destination -q" \
    -n "rsync -a over ssh" \
    "rsync -a -e 'ssh $ssh_opts' $src/ root@127.0.0.1:$work/remote-sshfs/dst/" \
    -n "rclone sync over sftp" \
    "rclone sync $src r:dst"
# The trees are in step now: a compare over each mount, beside their own dry runs.
"$cli" sync --source "$src" --destination "$work/mnt-sshfs/dst" --mkdir --direction to-destination -q >/dev/null
"$cli" sync --source "$src" --destination "$work/mnt-rclone/dst" --mkdir --direction to-destination -q >/dev/null
hyperfine --runs "${RUNS:-2}" \
    -n "duomir-cli compare, sshfs" "$cli compare --source $src --destination $work/mnt-sshfs/dst >/dev/null" \
    -n "duomir-cli compare, rclone mount" "$cli compare --source $src --destination $work/mnt-rclone/dst >/dev/null" \
    -n "rsync -an over ssh" "rsync -an -e 'ssh $ssh_opts' $src/ root@127.0.0.1:$work/remote-sshfs/dst/" \
    -n "rclone check over sftp" "rclone check $src r:dst --one-way 2>/dev/null || true"
# What a second comparison over each mount finds still different (times kept to the second?).
for m in sshfs rclone; do
    printf '%s: rows still differing after the first backup: ' "$m"
    "$cli" compare --source "$src" --destination "$work/mnt-$m/dst" --filter modified | tail -n +2 | wc -l
done
