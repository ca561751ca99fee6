#!/usr/bin/env python3
"""Fails when a tracked file names a processor maker or product line.

Processors are described by what matters to the code (year, CPUID family/model, level, caches),
never by brand. The forbidden words are kept as digests so that this file names none of them:
a file is split into words (camelCase and snake_case split, case folded), and each word and each
pair of neighbouring words is looked up. File names are checked the same way.

Usage: check_neutral_names.py [--root DIR]     check every file git tracks under DIR
       check_neutral_names.py --digest WORDS   print the digest of a word or word pair, to add
Exit status: 0 clean, 1 names found, 2 usage or tool error.
"""

import argparse
import hashlib
import pathlib
import re
import subprocess
import sys

WORDS = frozenset({
    "03ec0a25ea4e7bc7", "05ddd07db1727ab7", "0f96571912ed33a1", "12178f06446af3c4",
    "148be1481c607ff3", "18998954fa83e4c1", "1bf521836de96e75", "240389f4b730bad4",
    "285065ca8174296c", "2ede7db0125bc51b", "2fe9ca49da518152", "31550ded345997f9",
    "317fb19070ed7cac", "35e0d88ae9fe2253", "40c961ceaff3b808", "453c7a39002b9ec1",
    "459397a41b25f7cf", "4a5098d9a7e98b79", "4cff8deea7f27227", "4f7af91de611618c",
    "51d0174f6eb3d772", "52517ef8699ccdf8", "579be61436853d71", "5861314d7fccb39c",
    "5a3ebf6afc1c9213", "6230fa7f06f9f029", "655f09716b4685ee", "674a9f73ae8edee9",
    "6db7e65368c888e7", "7375c774ba1fddec", "7f93529cc8438b0c", "80046c2e199db161",
    "813f1a32b8163ad2", "8446428d7a1dce59", "8a6da5e1c9899af0", "92e4accd3d41d63f",
    "96eebba49dbbf422", "9701a731c3a5a787", "9a960585bc51f7cb", "a438cae41f071dc4",
    "a8cd9f9ed55b7f58", "a9872ba19aaafcd7", "ae9390f21da46cc4", "af5d8444175881ae",
    "b3865ce1e48e6e05", "b3e39d1f06969fb0", "b40aa392184735c3", "b520a314ff1014d7",
    "c34ef651b620aee8", "cc1bdb4541ebdf44", "cf274e8d7b7c4e3c", "d3c50bd834e21814",
    "d6a99e93d2ef8639", "d7b45c44f4e11b8e", "d960a6104c2f79fa", "ddff629fd4800abd",
    "e1f40b24b0d57055", "e74a03b075bad74d", "ed74ffd8937ce93f", "f3daf83f5feeabd2",
    "f4d08bd88fa8d775", "f60da00044e9424e", "f91d27dd6def1784", "f9f662d20e9496b0",
    "fa88c942c47e84c9",
})

WORD_PAIRS = frozenset({
    "07593ee933bb2624", "0c9e0c397c4343a7", "0fafc18d0bf61431", "14eaab72d905ba1a",
    "28186cbb137f756f", "398a6eccbe665238", "3cc9a0bab69fa16b", "411e26b352408313",
    "4573c1c068220e14", "4894e5bfa4a62426", "49e0af83199ff064", "4c68ec988d682ce1",
    "5a247d4d2abdbbb3", "65d1743f47788829", "69e7f9e5b9dd2509", "70051d1f7de3c12b",
    "7ba2ccd901f75738", "816d501f017b276a", "835668e297dd6409", "99c4ff0868c3b5cc",
    "9b80d4ad68141413", "9ee69874de253c0f", "9f08d0c1a2e6079a", "ac87d887b3520533",
    "c06d4660f41da9df", "cba7b15f000081d8", "cdc5d238793e4275", "cf646dea71bb0eec",
    "dff84e35c7f57567", "e73cc158fec7d187",
})


def Digest(text):
    return hashlib.sha256(text.encode()).hexdigest()[:16]


def Findings(text):
    """(line number, word) for every forbidden word or word pair in text."""
    for number, line in enumerate(text.splitlines(), 1):
        words = [w for token in re.findall(r"[A-Za-z0-9]+", line) for w in Split(token)]
        for word in words:
            if Digest(word) in WORDS:
                yield number, word
        for first, second in zip(words, words[1:]):
            if Digest(f"{first} {second}") in WORD_PAIRS:
                yield number, f"{first} {second}"


def Split(token):
    """The token itself and, for camelCase, its parts, case folded."""
    parts = re.findall(r"[A-Z]*[a-z0-9]+|[A-Z]+(?![a-z])", token)
    if len(parts) > 1:
        return [p.lower() for p in parts]
    return [token.lower()]


def TrackedFiles(root):
    listing = subprocess.run(["git", "-C", str(root), "ls-files", "-z"], capture_output=True,
                             check=True)
    return [root / name for name in listing.stdout.decode().split("\0") if name]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parent.parent)
    parser.add_argument("--digest", nargs="+", metavar="WORD")
    args = parser.parse_args()
    if args.digest:
        print(Digest(" ".join(args.digest).lower()))
        return 0
    try:
        files = TrackedFiles(args.root)
    except (OSError, subprocess.CalledProcessError) as error:
        print(f"cannot list the tracked files: {error}", file=sys.stderr)
        return 2

    found = 0
    for path in files:
        name = path.relative_to(args.root)
        for _, word in Findings(str(name)):
            print(f"{name}: file name holds \"{word}\"")
            found += 1
        if not path.is_file():
            continue
        data = path.read_bytes()
        if b"\0" in data:
            continue
        for number, word in Findings(data.decode("utf-8", errors="replace")):
            print(f"{name}:{number}: \"{word}\"")
            found += 1
    print(f"{len(files)} files checked, {found} processor maker or product-line names")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
