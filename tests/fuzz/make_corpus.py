#!/usr/bin/env python3
"""Writes the seed corpus of the fuzz targets: deterministic pseudo-random inputs whose last byte
(the first one the targets read) walks through the functions or kinds, so that the run starts
from many of them. Run it again after adding functions; the same files come out."""
import pathlib
import random

ROOT = pathlib.Path(__file__).resolve().parent / "corpus"
# Files, largest size, and the step of the selector byte between files: the utility target has
# about 190 functions (one byte picks one, modulo their count), the transform target 8 kinds.
TARGETS = {"utility": (40, 512, 5), "transform": (24, 384, 1)}


def main():
    for target, (count, size, step) in TARGETS.items():
        directory = ROOT / target
        directory.mkdir(parents=True, exist_ok=True)
        for old in directory.glob("seed-*"):
            old.unlink()
        rng = random.Random(target)
        for i in range(count):
            body = bytes(rng.randrange(256) for _ in range(rng.randrange(16, size)))
            selector = (i * step) & 0xFF
            (directory / f"seed-{i:02d}").write_bytes(body + bytes([selector]))


if __name__ == "__main__":
    main()
