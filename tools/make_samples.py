#!/usr/bin/env python3
"""Makes GIFs for comparing platforms, the same ones each time: make_samples.py FOLDER COUNT GIF...

A fifth of them are sound, of all sizes, code sizes and orders of blocks; the others are these and the GIFs given, cut,
with bytes changed, taken out or put in.
"""
import random
import sys
from pathlib import Path

random.seed(20260101)


def sub_blocks(data):
    pieces = [data[i:i + 255] for i in range(0, len(data), 255)]
    return b"".join(bytes([len(piece)]) + piece for piece in pieces) + b"\0"


def image_data(pixels, code_size):
    """LZW, with a clear code now and then, or only when the table is full."""
    clear, bits, filled, out = 1 << code_size, 0, 0, bytearray()
    table, width, next_code = {}, code_size + 1, clear + 2

    def put(code):
        nonlocal bits, filled
        bits |= code << filled
        filled += width
        while filled >= 8:
            out.append(bits & 255)
            bits >>= 8
            filled -= 8

    patience = random.choice([10, 300, 1 << 30])
    put(clear)
    string = None
    for number, pixel in enumerate(pixels):
        if string is None:
            string = pixel
        elif (string, pixel) in table:
            string = table[string, pixel]
        else:
            put(string)
            table[string, pixel] = next_code
            if next_code == 1 << width and width < 12:
                width += 1
            next_code += 1
            string = pixel
            if next_code > 4095 or number % patience == patience - 1:
                put(string)
                put(clear)
                table, width, next_code, string = {}, code_size + 1, clear + 2, None
    if string is not None:
        put(string)
        if next_code == 1 << width and width < 12:
            width += 1
    put(clear + 1)
    if filled:
        out.append(bits & 255)
    return bytes([code_size]) + sub_blocks(bytes(out))


def table_of(depth):
    return random.randbytes(3 << depth)


def word(value):
    return value.to_bytes(2, "little")


def image():
    width, height = random.choice([1, 2, 7, 16, 33, 64, 200]), random.choice([1, 3, 5, 8, 31, 100])
    depth = random.randrange(1, 9)
    has_table, interlaced = random.random() < 0.5, random.random() < 0.5
    colours = random.choice([1, 2, 1 << depth])
    pixels = [random.randrange(colours) if random.random() < 0.5 else 0 for _ in range(width * height)]
    flags = (0x80 | depth - 1 if has_table else 0) | (0x40 if interlaced else 0) | random.choice([0, 0x20])
    return (b"," + word(random.randrange(300)) + word(random.randrange(300)) + word(width) + word(height) + bytes([flags])
            + (table_of(depth) if has_table else b"") + image_data(pixels, max(depth, 2)))


def extension():
    kind = random.randrange(4)
    if kind == 0:
        return b"!\xf9\x04" + bytes([random.randrange(32)]) + word(random.randrange(99)) + bytes([random.randrange(256), 0])
    if kind == 1:
        return b"!\xfe" + sub_blocks(random.randbytes(random.randrange(600)))
    if kind == 2:
        return b"!\xff\x0bNETSCAPE2.0\x03\x01" + word(random.randrange(9)) + b"\0"
    return b"!" + random.randbytes(1) + sub_blocks(random.randbytes(random.randrange(300)))


def document():
    depth, has_table = random.randrange(1, 9), random.random() < 0.8
    head = random.choice([b"GIF89a", b"GIF87a"]) + word(random.randrange(400)) + word(random.randrange(400))
    head += bytes([(0x80 if has_table else 0) | random.randrange(8) << 4 | depth - 1, random.randrange(256), 0])
    blocks = [image() if random.random() < 0.5 else extension() for _ in range(random.randrange(8))]
    return head + (table_of(depth) if has_table else b"") + b"".join(blocks) + b";"


def damaged(data):
    data = bytearray(data)
    for _ in range(random.choice([1, 1, 1, 3, 10])):
        at = random.randrange(len(data)) if data else 0
        how = random.randrange(4)
        if how == 0:
            del data[at:]
        elif how == 1 and data:
            data[at] = random.randrange(256)
        elif how == 2:
            del data[at:at + random.randrange(40)]
        else:
            data[at:at] = random.randbytes(random.randrange(20))
    return bytes(data)


def main():
    folder, count = Path(sys.argv[1]), int(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    sound = [document() for _ in range(count // 5)]
    sources = sound + [Path(name).read_bytes() for name in sys.argv[3:]]
    for number in range(count):
        data = sound[number] if number < len(sound) else damaged(random.choice(sources))
        (folder / f"{number:04}.gif").write_bytes(data)


main()
