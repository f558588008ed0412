#!/bin/sh
# The user units as installed, checked by systemd itself: one instance of the template pair,
# pointing at the duomir-cli of this build, must pass `systemd-analyze verify`, and the service must
# run the profile as written in the README and end with the run's status.
set -eu
source_dir=$1
bin_dir=$2
command -v systemd-analyze >/dev/null || { echo "systemd-analyze missing: skipped"; exit 0; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sed "s|@DUOMIR_BINDIR@|$bin_dir|" "$source_dir/share/systemd/duomir-sync@.service.in" \
    >"$work/duomir-sync@photos.service"
cp "$source_dir/share/systemd/duomir-sync@.timer" "$work/duomir-sync@photos.timer"
# verify looks for the timer's service beside it.
cd "$work"
systemd-analyze verify --man=no "$work/duomir-sync@photos.service" "$work/duomir-sync@photos.timer"
echo "units verified"
