"""The ppdx encoding once more, on Python's own zlib and base64.

encode NAME: a block on standard input to "PPD:" lines on standard output.
decode NAME: lines to the block.
"""
import base64
import sys
import zlib


def encode(name, block):
    entries = []
    if block:
        stream = zlib.compress(block, 9)
        pieces = [stream[i:i + 158] for i in range(0, len(stream), 158)]
        if len(stream) % 158 == 0:
            pieces.append(b"")
        # The buffer of the format holds 211 characters, one "=" less than a piece of 157 or 158 bytes has.
        entries = [base64.b64encode(piece).decode()[:211] for piece in pieces]
    entries.append('""')
    line = "PPD:"
    for number, value in enumerate(entries):
        entry = " %s%04x=%s" % (name, number, value)
        if len(line) + len(entry) >= 2046:
            yield line + "\n"
            line = "PPD:"
        line += entry
    yield line + "\n"


def decode(name, text):
    entries = dict(piece.split("=", 1) for line in text.splitlines() for piece in line.split()[1:])
    inflater = zlib.decompressobj()
    block = b""
    number = 0
    while entries["%s%04x" % (name, number)] not in ("", '""'):
        value = entries["%s%04x" % (name, number)].rstrip("=")
        block += inflater.decompress(base64.b64decode(value + "=" * (-len(value) % 4)))
        number += 1
    return block


if sys.argv[1] == "encode":
    sys.stdout.writelines(encode(sys.argv[2], sys.stdin.buffer.read()))
else:
    sys.stdout.buffer.write(decode(sys.argv[2], sys.stdin.read()))
