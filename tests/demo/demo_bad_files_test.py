#!/usr/bin/env python3
"""The demo given broken WAV files: one line on stderr, exit status 1, never a crash."""

import argparse
import struct
import subprocess
import sys
import tempfile
from pathlib import Path


def wav(channels=2, bits=16, rate=48000, frames=64, data_size=None, fmt_size=16):
    align = channels * bits // 8
    data = bytes(frames * align)
    size = len(data) if data_size is None else data_size
    fmt = struct.pack("<HHIIHH", 1, channels, rate, rate * align, align, bits)
    body = b"WAVE" + b"fmt " + struct.pack("<I", fmt_size) + fmt + b"data"
    body += struct.pack("<I", size) + data
    return b"RIFF" + struct.pack("<I", len(body)) + body


CASES = {
    "empty": b"",
    "header cut short": wav()[:30],
    "data cut short": wav()[:-10],
    "data size beyond the file": wav(data_size=1 << 30),
    "zero channels": wav(channels=0),
    "8-bit samples": wav(bits=8),
    "format chunk past the end": wav(fmt_size=0x7FFFFFF0),
    "not a WAV file": b"hello, world" * 8,
}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("demo")
    args = parser.parse_args()
    failures = []
    with tempfile.TemporaryDirectory() as directory:
        for name, content in CASES.items():
            path = Path(directory) / "broken.wav"
            path.write_bytes(content)
            run = subprocess.run([args.demo, str(path), "--out", directory],
                                 capture_output=True, text=True, timeout=120)
            lines = run.stderr.strip().splitlines()
            if run.returncode != 1 or len(lines) != 1 or run.stdout.strip():
                failures.append(f"{name}: exit {run.returncode}, stderr {run.stderr!r}")
        missing = Path(directory) / "missing.wav"
        run = subprocess.run([args.demo, str(missing)], capture_output=True, text=True)
        if run.returncode != 1:
            failures.append(f"missing file: exit {run.returncode}")
    for failure in failures:
        print(failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
