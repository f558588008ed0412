#!/usr/bin/env bash
# Duomir's one entry point for a fresh Debian 12 machine:
#   ./dev.sh run     install what is missing, build, start duomir
#   ./dev.sh test    install what is missing, build, run every test through CTest
#   ./dev.sh asan    the same tests under AddressSanitizer and UndefinedBehaviorSanitizer
#   ./dev.sh tsan    the engine's tests under ThreadSanitizer
#   ./dev.sh package build the .deb and check it (lintian, AppStream, desktop entry, install)
set -euo pipefail
cd "$(dirname "$0")"

packages=(cmake ninja-build g++ qt6-base-dev qt6-base-dev-tools libgl-dev qt6-qpa-plugins
          xvfb xauth clang-format exfatprogs exfat-fuse dosfstools fusefat qt6-translations-l10n)

install_missing() {
    local missing=()
    for p in "${packages[@]}" "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return
    echo "Installing: ${missing[*]}"
    local sudo=()
    [ "$(id -u)" -ne 0 ] && sudo=(sudo)
    "${sudo[@]}" apt-get update -qq
    # Through env: sudo would drop the variable from the environment.
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}"
}

build() {
    cmake --preset "$1" >/dev/null
    cmake --build --preset "$1" "${@:2}"
}

case "${1:-}" in
run)
    install_missing
    build release --target duomir duomir_share # the program, not the tests
    shift
    if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
        echo "No display here: duomir starts on a virtual display (Xvfb) that nobody sees." >&2
        echo "Run it from a desktop session, or with ssh -X, to see the window; Ctrl-C ends it." >&2
        exec xvfb-run -a build/release/bin/duomir "$@"
    fi
    exec build/release/bin/duomir "$@"
    ;;
test)
    install_missing
    build dev
    ctest --preset dev -j "$(nproc)"
    ;;
asan)
    install_missing
    build asan
    ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=print_stacktrace=1 ctest --preset asan -j "$(nproc)"
    ;;
tsan)
    install_missing
    build tsan
    # The engine's tests: copies, scans and sorts run on threads there.
    TSAN_OPTIONS="halt_on_error=1 die_after_fork=0 suppressions=$PWD/tests/tsan.supp" ctest --preset tsan -j "$(nproc)" -L "core|sync|cli"
    ;;
package)
    install_missing dpkg-dev lintian appstream desktop-file-utils help2man
    build package
    (cd build/package && cpack -G DEB >/dev/null)
    deb=$(ls build/package/duomir_*.deb)
    lintian --fail-on error --suppress-tags dir-or-file-in-opt "$deb"
    appstreamcli validate --no-net share/metainfo/invalid.duomir.Duomir.metainfo.xml
    desktop-file-validate share/duomir.desktop
    # Installed into and removed from a scratch root: the package's files and scripts work.
    root=$(mktemp -d)
    trap 'rm -rf "$root"' EXIT
    mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
    touch "$root/var/lib/dpkg/status"
    dpkg --root="$root" --force-depends --force-not-root -i "$deb" >/dev/null
    test -x "$root/usr/bin/duomir-cli" && test -f "$root/usr/share/man/man1/duomir-cli.1.gz"
    dpkg --root="$root" --force-depends --force-not-root -r duomir >/dev/null
    echo "Package $deb: built, lintian clean, installed and removed in a scratch root."
    ;;
*)
    echo "usage: $0 run|test|asan|tsan|package" >&2
    exit 2
    ;;
esac
