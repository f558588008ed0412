# Network mounts on this machine's loopback, for the benchmarks (bash, sourced after common.sh
# with `work` set): a local sshd on port 2222 mounted with sshfs at $work/mnt-sshfs (files in
# $work/remote-sshfs), and `rclone serve sftp` on port 2022 mounted with `rclone mount` at
# $work/mnt-rclone (files in $work/remote-rclone). Everything stops when the script exits.
# Needs root (the sshd) and FUSE.
need sshd openssh-server
need sshfs
need rclone

key=$work/key
[ -f "$key" ] || ssh-keygen -q -t ed25519 -N '' -f "$key"
[ -f "$work/host" ] || ssh-keygen -q -t ed25519 -N '' -f "$work/host"
cp "$key.pub" "$work/authorized_keys"
cat >"$work/sshd_config" <<CONF
Port 2222
ListenAddress 127.0.0.1
HostKey $work/host
AuthorizedKeysFile $work/authorized_keys
PermitRootLogin prohibit-password
PasswordAuthentication no
PidFile $work/sshd.pid
Subsystem sftp internal-sftp
StrictModes no
CONF
mkdir -p /run/sshd
/usr/sbin/sshd -f "$work/sshd_config"
ssh_opts="-p 2222 -i $key -o StrictHostKeyChecking=no -o UserKnownHostsFile=/dev/null -o LogLevel=ERROR"
# The server reads its folder afresh on every listing: the benchmarks prepare their trees there
# directly, behind its back, and a cached listing would show the previous run's files.
rclone serve sftp "$work/remote-rclone" --addr 127.0.0.1:2022 --user bench --pass bench \
    --dir-cache-time 0s >/dev/null 2>&1 &
rclone_pid=$!
export RCLONE_CONFIG_R_TYPE=sftp RCLONE_CONFIG_R_HOST=127.0.0.1 RCLONE_CONFIG_R_PORT=2022 \
    RCLONE_CONFIG_R_USER=bench RCLONE_CONFIG_R_PASS=$(rclone obscure bench)

# $work/remount.sh mounts both afresh: a new mount remembers nothing, as on a first run on a
# user's machine (for hyperfine's --prepare).
# The rclone daemon goes on uploading what its write cache holds after the unmount: until it has
# exited, a preparation that rewrites the server's folder races with it. What it leaves in the
# cache the next daemon would upload first, before its mount is ready: each mount starts empty.
cat >"$work/unmount.sh" <<SCRIPT
#!/bin/sh
fusermount -u "$work/mnt-sshfs" 2>/dev/null
fusermount -u "$work/mnt-rclone" 2>/dev/null
while pgrep -f "rclone mount r: $work/mnt-rclone" >/dev/null; do sleep 0.1; done
rm -rf "$work/rclone-cache"
SCRIPT
cat >"$work/remount.sh" <<SCRIPT
#!/bin/sh
"$work/unmount.sh"
sshfs -p 2222 -o IdentityFile="$key",StrictHostKeyChecking=no,UserKnownHostsFile=/dev/null \\
    root@127.0.0.1:"$work/remote-sshfs" "$work/mnt-sshfs"
rclone mount r: "$work/mnt-rclone" --daemon --vfs-cache-mode writes \\
    --cache-dir "$work/rclone-cache"
for i in \$(seq 50); do mountpoint -q "$work/mnt-rclone" && break; sleep 0.1; done
SCRIPT
chmod +x "$work/unmount.sh" "$work/remount.sh"
stop_mounts() {
    "$work/unmount.sh" || true
    kill "$rclone_pid" 2>/dev/null || true
    kill "$(cat "$work/sshd.pid")" 2>/dev/null || true
}
trap stop_mounts EXIT
mkdir -p "$work/remote-sshfs" "$work/remote-rclone" "$work/mnt-sshfs" "$work/mnt-rclone"
sleep 1
"$work/remount.sh"
