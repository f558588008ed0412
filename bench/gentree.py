#!/usr/bin/env python3
"""Builds a deterministic source/destination pair of trees for the compare benchmark.

gentree.py OUT [--files N] [--per-dir K] [--size-max B] [--seed S]
           [--modified F] [--missing F] [--extra F] [--case F]

OUT/src gets N files spread over directories of K files, nested two levels deep; OUT/dst is a
copy in which a share of the files is modified (newer time, other size), missing, renamed in
case only, and extra files exist that the source lacks. The same arguments always give the same
trees (names, sizes and times), so runs can be compared.
"""
import argparse
import os
import random

BASE_TIME = 1_700_000_000


def write(path, size, mtime):
    with open(path, "wb") as f:
        if size:
            f.truncate(size)  # sparse: the benchmark reads metadata only
    os.utime(path, (mtime, mtime))


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("out")
    ap.add_argument("--files", type=int, default=300_000)
    ap.add_argument("--per-dir", type=int, default=100)
    ap.add_argument("--size-max", type=int, default=64 * 1024)
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--modified", type=float, default=0.05)
    ap.add_argument("--missing", type=float, default=0.02)
    ap.add_argument("--extra", type=float, default=0.02)
    ap.add_argument("--case", type=float, default=0.01)
    a = ap.parse_args()

    rnd = random.Random(a.seed)
    src = os.path.join(a.out, "src")
    dst = os.path.join(a.out, "dst")
    dirs = max(1, a.files // a.per_dir)
    fanout = max(1, int(dirs ** 0.5))
    made = 0
    for d in range(dirs):
        rel = os.path.join(f"group_{d // fanout:04d}", f"folder_{d % fanout:04d}")
        os.makedirs(os.path.join(src, rel), exist_ok=True)
        os.makedirs(os.path.join(dst, rel), exist_ok=True)
        count = a.per_dir if d < dirs - 1 else a.files - made
        for i in range(count):
            name = f"document_{made:07d}.dat"
            made += 1
            size = rnd.randrange(a.size_max)
            mtime = BASE_TIME + rnd.randrange(10_000_000)
            write(os.path.join(src, rel, name), size, mtime)
            roll = rnd.random()
            if roll < a.missing:
                continue
            roll -= a.missing
            dname = name
            if roll < a.case:
                dname = name.upper()
            elif roll < a.case + a.modified:
                size, mtime = size + 1, mtime + 3600
            write(os.path.join(dst, rel, dname), size, mtime)
            if rnd.random() < a.extra:
                write(os.path.join(dst, rel, "extra_" + name), size, mtime)
    print(f"{made} files in {dirs} directories under {src} and {dst}")


if __name__ == "__main__":
    main()
