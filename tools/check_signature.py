#!/usr/bin/env python3
"""Checks the ad hoc signatures of macOS libraries: that each part has one, and that every page has the hash it says."""
import hashlib
import struct
import sys


def check(name, data):
    commands, = struct.unpack_from("<I", data, 16)
    at, found = 32, None
    for _ in range(commands):
        command, size = struct.unpack_from("<II", data, at)
        if command == 0x1D:  # LC_CODE_SIGNATURE
            found = struct.unpack_from("<I", data, at + 8)[0]
        at += size
    if found is None:
        return "not signed"
    count, = struct.unpack_from(">I", data, found + 8)
    for i in range(count):
        offset, = struct.unpack_from(">I", data, found + 12 + 8 * i + 4)
        start = found + offset
        if struct.unpack_from(">I", data, start)[0] != 0xFADE0C02:  # the code directory
            continue
        flags, hashes = struct.unpack_from(">II", data, start + 12)
        slots, limit = struct.unpack_from(">II", data, start + 28)
        page = 1 << data[start + 39]
        if not flags & 2:
            return "not ad hoc"
        for slot in range(slots):
            expected = data[start + hashes + 32 * slot:][:32]
            if hashlib.sha256(data[slot * page:min(limit, (slot + 1) * page)]).digest() != expected:
                return f"page {slot} is not as signed"
        return None
    return "no code directory"


faults = 0
for name in sys.argv[1:]:
    data = open(name, "rb").read()
    parts = [(0, len(data))]
    if data[:4] == b"\xca\xfe\xba\xbe":
        parts = [struct.unpack_from(">II", data, 16 + 20 * i) for i in range(struct.unpack_from(">I", data, 4)[0])]
    for offset, size in parts:
        fault = check(name, data[offset:offset + size])
        print(f"{name}: part at {offset}: {fault or 'signed ad hoc, all pages as signed'}", file=sys.stderr)
        faults += fault is not None
sys.exit(faults > 0)
