# Shared by the benchmark scripts (POSIX sh, sourced after setting `bench` to the absolute path
# of bench/): tools, a fresh release build and the generated trees.

# need TOOL [PACKAGE]: installs the Debian package when the tool is missing.
need() {
    command -v "$1" >/dev/null 2>&1 && return
    echo "installing ${2:-$1}"
    if [ "$(id -u)" -eq 0 ]; then apt-get install -y "${2:-$1}"; else sudo apt-get install -y "${2:-$1}"; fi
}

# build_release TARGET...: always, since a binary older than the sources would time the wrong code.
build_release() {
    (cd "$bench/.." && cmake --preset release >/dev/null &&
        cmake --build --preset release --target "$@" >/dev/null)
}

# generated_tree DIR FILES: the source/destination pair of bench/gentree.py, made once.
generated_tree() {
    [ -d "$1/dst" ] && return
    mkdir -p "$1"
    python3 "$bench/gentree.py" "$1" --files "$2"
}
