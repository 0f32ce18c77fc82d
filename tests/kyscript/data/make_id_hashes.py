#!/usr/bin/env python3
"""Writes id_hashes.jsonl, the hashes that tst_KyScriptIdGenerator compares with.

Each line has a text, given by "part" and how often it stands in the text, its asciiHash of each number of
digits from 1 to 20, and the bits of its sigmoidHash, as IEEE 754 single precision, for each start from 0 to 16.
The definitions are worked out here by themselves, with Python's hashlib.
"""

import hashlib
import json
import random
import struct
from pathlib import Path

ALPHABET = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"


def digest(text):
    return hashlib.sha1(text.encode("utf-8")).digest()


def ascii_hash(text, digits):
    signed = struct.unpack("20b", digest(text))
    return "".join(ALPHABET[(byte & 0xFFFFFFFF) % 36] for byte in signed[:digits])


def sigmoid_bits(text, start):
    number = int.from_bytes(digest(text)[start : start + 4], "little")
    return struct.pack(">f", number * 2.0**-32).hex()


def rounds_up_to_one():
    """A text of which some four bytes are within 128 of 2 to the power 32."""
    number = 0
    while True:
        text = f"round {number}"
        bytes_ = digest(text)
        if any(
            int.from_bytes(bytes_[i : i + 4], "little") >= 2**32 - 128 for i in range(17)
        ):
            return text
        number += 1


def texts():
    yield from [("", 1), ("1", 1), ("abc", 1), (" ", 1), ("\0", 1), ("a\0b", 1), ("\n", 1), ("\r\n", 1)]
    yield from [("ä", 1), ("a\u0308", 1), ("ß", 1), ("€", 1), ("日本語", 1), ("Ωμέγα", 1), ("кириллица", 1)]
    yield from [("\U0001f600", 1), ("\ufeff", 1), ("\uffff", 1), ("\u2028", 1), ("{}", 1), ("[object Object]", 1)]
    yield from [("1.2.840.113619.2.55.3.604688119.971.1268214800.1", 1), ("Doe^Jane", 1), ("DOE^JANE", 1)]
    for length in (54, 55, 56, 63, 64, 65, 119, 120, 128, 1000, 100000):
        yield ("x", length)
        yield ("é", length)
    yield (rounds_up_to_one(), 1)
    for number in range(60):
        yield (str(number), 1)
    chance = random.Random(20)
    ranges = [(0x20, 0x7E), (0xA1, 0xFF), (0x370, 0x3FF), (0x4E00, 0x9FFF), (0x1F300, 0x1F5FF)]
    for _ in range(160):
        kinds = chance.sample(ranges, chance.randint(1, 3))
        characters = [chr(chance.randint(*chance.choice(kinds))) for _ in range(chance.randint(1, 60))]
        yield ("".join(characters), 1)


def main():
    lines = []
    for part, count in texts():
        text = part * count
        line = {
            "part": part,
            "count": count,
            "ascii": [ascii_hash(text, digits) for digits in range(1, 21)],
            "sigmoid": [sigmoid_bits(text, start) for start in range(17)],
        }
        lines.append(json.dumps(line, separators=(",", ":")))
    Path(__file__).with_name("id_hashes.jsonl").write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
