#!/usr/bin/env python3
"""Writes the seed corpus of the fuzz targets: deterministic pseudo-random inputs whose last byte
(the first one the targets read) walks through the functions or kinds, so that the run starts
from many of them, and a few inputs spelled out call by call for defects found before.
Run it again after changing the targets; the same files come out."""
import pathlib
import random

ROOT = pathlib.Path(__file__).resolve().parent / "corpus"
# Files, largest size, and the step of the selector byte between files: the utility target has
# 172 functions (one byte picks one, modulo their count), the transform target 8 kinds, the filter
# target 5 filters and the convolution target 8 calls.
TARGETS = {"utility": (40, 512, 5), "transform": (24, 384, 1), "filter": (24, 512, 1),
           "convolution": (24, 512, 1)}

# The utility table's last index and the positions of the functions the spelled-out inputs call
# (utility_fuzz.cpp, Entries()); after the table changes they are just more random seeds.
UTILITY_LAST = 171
ROUND_FLOAT, LN_DOUBLE, MAX_ABS = 84, 103, 130


def fdp_input(draws):
    """The input from which FuzzedDataProvider draws `draws`, a list of (value - min, max - min):
    integers are read from the end of the input, most significant byte first, in as many bytes
    as max - min needs."""
    tail = []
    for value, span in draws:
        count = 0
        while count < 8 and span >> (8 * count):
            count += 1
        tail += [(value >> (8 * (count - 1 - i))) & 0xFF for i in range(count)]
    return bytes(reversed(tail))


# name: (target, draws). Draw order: utility_call.cpp (Call::Call) and transform_fuzz.cpp.
SPELLED_OUT = {
    # MaxAbs of 2^31 elements given 16: a no-op returning 0, not a read past the buffer.
    "maxabs-huge-length": ("utility", [(MAX_ABS, UTILITY_LAST), (0, 255), (13, 15), (0, 65535),
                                       (1, 255), (255, 255), (0, 15), (0, 63), (1, 3),
                                       (130, 255)]),
    # Round of 2.75 toward zero: 3 at every level, whatever the rounding control.
    "round-toward-zero": ("utility", [(ROUND_FLOAT, UTILITY_LAST), (140, 255), (1, 15), (7, 199),
                                      (255, 255), (0, 15), (0, 63), (2, 3), (24576, 65535),
                                      (9, 16), (0, 255), (0, 15), (0, 63)]),
    # Ln of 196608 times -1 into a destination 8 bytes past a 64-byte boundary, a length that
    # streams: each index reported once, as itself.
    "ln-streaming-reports": ("utility", [(LN_DOUBLE, UTILITY_LAST), (0, 255), (12, 15),
                                         (98304, 98304), (255, 255), (0, 1), (0, 7), (0, 63),
                                         (1, 3), (126, 255), (3, 7), (0, 63), (1, 3),
                                         (126, 255)]),
    # A real transform of order 2^31: refused without undefined behaviour.
    "fftinit-order-2-31": ("transform", [(0, 7), (0, 255), (2, 9), (0, 65535), (1, 255)]),
    # FFTImpl built for order 32: GetBlockSize asked without undefined behaviour.
    "fftimpl-order-32": ("transform", [(6, 7), (0, 255), (1, 9), (7, 39)]),
}


def main():
    for target, (count, size, step) in TARGETS.items():
        directory = ROOT / target
        directory.mkdir(parents=True, exist_ok=True)
        for old in directory.iterdir():
            old.unlink()
        rng = random.Random(target)
        for i in range(count):
            body = bytes(rng.randrange(256) for _ in range(rng.randrange(16, size)))
            selector = (i * step) & 0xFF
            (directory / f"seed-{i:02d}").write_bytes(body + bytes([selector]))
    for name, (target, draws) in SPELLED_OUT.items():
        (ROOT / target / name).write_bytes(fdp_input(draws))


if __name__ == "__main__":
    main()
