"""Writes archives that no tool would make: make_archives.py FOLDER

NAME.zip holds "first.bin", the entry or flaw that it is named after, and "last.bin", unless the whole
file is flawed. Everything is built byte by byte, so that each field can be wrong.
"""
import bz2
import os
import random
import struct
import sys
import zlib

out = sys.argv[1]
noise = random.Random(1).randbytes


def entry(name, data=b"data of an entry", method=8, flags=0, **fields):
    """One entry: its local header and data, and its directory header without the offset. A field given
    by keyword (csize, usize, crc: in both headers; local_csize...: in the local one) replaces the right value."""
    name = name if isinstance(name, bytes) else name.encode()
    packed = fields.get("packed")
    if packed is None:
        deflate = zlib.compressobj(9, zlib.DEFLATED, -15)
        packed = data if method == 0 else deflate.compress(data) + deflate.flush()
    crc = fields.get("crc", zlib.crc32(data))
    csize = fields.get("csize", len(packed))
    usize = fields.get("usize", len(data))
    common = struct.pack("<HHHHHIIIHH", 20, flags, method, 0, 0x5821, crc, csize, usize, len(name), 0)
    local = fields.get("signature", b"PK\3\4") + common + name + packed
    return local, lambda at: b"PK\1\2" + struct.pack("<H", 20) + common + struct.pack("<HHHII", 0, 0, 0, 0, at) + name


def archive(entries, count=None, offsets=None, before=b""):
    data, directory = b"", b""
    for i, (local, header) in enumerate(entries):
        directory += header(offsets[i] if offsets else len(data))
        data += local
    count = len(entries) if count is None else count
    end = struct.pack("<4sHHHHIIH", b"PK\5\6", 0, 0, count, count, len(directory), len(data), 0)
    return before + data + directory + end


def write(name, content):
    with open(os.path.join(out, name + ".zip"), "wb") as file:
        file.write(content)


def around(*middle):
    return [entry("first.bin"), *middle, entry("last.bin")]


# Entries that cannot be written, most of them since they would leave the destination.
outside = os.path.join(os.path.dirname(out), "outside", "evil.bin")
for name, path in {
    "dotdot": "a/b/../../../outside/evil.bin",
    "dotdot-backslash": "..\\outside\\evil.bin",
    "dotdot-folder": "../outside/evil/",
    "absolute": outside,
    "drive": "c:evil.bin",
    "through-link": "link/evil.bin",
    "through-link-folder": "link/sub/",
    "onto-link": "filelink",
    "onto-pipe": "pipe",
    "long-name": "n" * 300,
    "long-path": "d/" * 2500 + "evil.bin",
    "nul-in-utf7": "..+AAA-/outside/evil.bin",
}.items():
    write(name, archive(around(entry(path, b"" if path.endswith("/") else b"evil"))))

# Entries that are not what they say.
long = bytes(range(256)) * 800
write("nul", archive(around(entry(b"evil.bin\0.txt"))))
write("wrong-crc", archive(around(entry("evil.bin", long, crc=1))))
write("claims-more", archive(around(entry("evil.bin", long, usize=len(long) + 1))))
write("claims-less", archive(around(entry("evil.bin", long, usize=len(long) - 1))))
write("stored-sizes-differ", archive(around(entry("evil.bin", b"stored", 0, usize=3))))
sound = zlib.compressobj(9, zlib.DEFLATED, -15)
unknown_block = sound.compress(long) + sound.flush(zlib.Z_FULL_FLUSH) + b"\6"
write("damaged-data", archive(around(entry("evil.bin", packed=unknown_block, usize=2 * len(long)))))
write("damaged-header", archive(around(entry("evil.bin", signature=b"PK\0\0"))))
write("bzip2", archive(around(entry("evil.bin", long, 12, packed=bz2.compress(long)))))
write("strong-encryption", archive(around(entry("evil.bin", flags=0x41))))
write("zip64-size", archive(around(entry("evil.bin", usize=0xFFFFFFFF))))

# The same behind the right password, "secret".
def encrypted(data, **fields):
    def step(crc, byte):
        return zlib.crc32(bytes([byte]), crc ^ 0xFFFFFFFF) ^ 0xFFFFFFFF

    keys = [0x12345678, 0x23456789, 0x34567890]

    def update(byte):
        keys[0] = step(keys[0], byte)
        keys[1] = ((keys[1] + (keys[0] & 0xFF)) * 134775813 + 1) & 0xFFFFFFFF
        keys[2] = step(keys[2], keys[1] >> 24)

    for byte in b"secret":
        update(byte)
    crc = fields.pop("crc", zlib.crc32(data))
    deflate = zlib.compressobj(9, zlib.DEFLATED, -15)
    plain = fields.pop("plain", None) or deflate.compress(data) + deflate.flush()
    packed = bytearray()
    for byte in noise(11) + bytes([crc >> 24]) + plain:
        value = (keys[2] & 0xFFFF) | 2
        packed.append(byte ^ (value * (value ^ 1) >> 8 & 0xFF))
        update(byte)
    return entry("evil.bin", data, flags=1, crc=crc, packed=bytes(packed), **fields)


write("encrypted", archive(around(encrypted(long))))
write("encrypted-wrong-crc", archive(around(encrypted(long, crc=1))))
write("encrypted-claims-more", archive(around(encrypted(long, usize=len(long) + 1))))
write("encrypted-damaged", archive(around(encrypted(long, plain=unknown_block, usize=2 * len(long)))))
write("encrypted-short", archive(around(encrypted(long, csize=11))))

# Archives that are not what they say.
good = archive(around(entry("evil.bin", long)))
write("count-too-small", archive(around(entry("evil.bin")), count=2))
write("count-too-big", archive(around(entry("evil.bin")), count=4))
write("truncated", good[:-10])
write("not-an-archive", b"<html>404 Not Found</html>")
write("nothing", b"")
write("empty", archive([]))

# Bombs. A megabyte of zeros ends on a byte boundary, so it can be repeated.
flush = zlib.compressobj(9, zlib.DEFLATED, -15)
megabyte = flush.compress(bytes(1 << 20)) + flush.flush(zlib.Z_FULL_FLUSH)
end = b"\3\0"
write("ratio-bomb", archive([entry(f"{i}.bin", b"", usize=1 << 30, packed=megabyte * 1024 + end) for i in range(3)]))
kernel = entry("kernel.bin", bytes(1 << 20))
write("overlap-bomb", archive([(kernel[0] if i == 0 else b"", kernel[1]) for i in range(1000)], offsets=[0] * 1000))
outer, inner = entry("outer.bin", b"", method=0), entry("inner.bin", long)
outer = entry("outer.bin", inner[0], method=0)
write("nested", archive([outer, (b"", inner[1])], offsets=[0, len(outer[0]) - len(inner[0])]))
zeros = zlib.crc32(b"")
for _ in range(100):
    zeros = zlib.crc32(bytes(1 << 20), zeros)
write("large", archive([entry("large.bin", b"", usize=100 << 20, crc=zeros, packed=megabyte * 100 + end)]))
write("many", archive([entry(f"{i}.bin", b"", 0) for i in range(300)]))

# Sound archives.
write("backslash", archive([entry("top\\sub\\", b"", 0), entry("top\\sub\\file.bin"), entry("other\\deep\\file.bin")]))
write("gbk", archive([entry("\u56fa\u4ef6/\u7e17".encode("gbk")), entry("\u7e17.bin".encode("gbk"))]))
write("utf8", archive([entry("\u56fa\u4ef6.bin", flags=0x800), entry("\u56fa.bin")]))
write("bytes", archive([entry(b"\xff\xfe\x80.bin")]))
write("dots", archive([entry("./a//b/./c.bin"), entry("a/x/../d.bin")]))
write("twice", archive([entry("twice.bin", b"old"), entry("twice.bin", b"new")]))
write("three", archive([entry("a/one.bin", b"1"), entry("a/b/empty.bin", b"", 0), entry("two.bin", long)]))
write("prefixed", archive(around(), before=b"#!/bin/sh\n" * 50))
write("kinds", archive([entry("taken"), entry("file/below.bin"), entry("last.bin")]))
