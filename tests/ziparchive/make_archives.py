"""Writes archives that no tool would make: make_archives.py FOLDER

NAME.zip holds "first.bin", the entry or flaw that it is named after, and "last.bin", unless the whole
file is flawed. Everything is built byte by byte, so that each field can be wrong.
"""
import bz2
import os
import pathlib
import random
import struct
import subprocess
import sys
import tempfile
import zlib

out = sys.argv[1]
noise = random.Random(1).randbytes


def entry(name, data=b"data of an entry", method=8, flags=0, **fields):
    """One entry: its local header and data, and its directory header without the offset. A field given
    by keyword (csize, usize, crc, signature, packed) replaces the right value."""
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
    pathlib.Path(out, name + ".zip").write_bytes(content)


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


# The same behind the password "secret", as zip makes them, but for one field of the second entry's
# directory header.
def encrypted(offset, value):
    with tempfile.TemporaryDirectory() as folder:
        files = {"first.bin": b"data of an entry", "evil.bin": long, "last.bin": b"data of an entry"}
        for name, data in files.items():
            pathlib.Path(folder, name).write_bytes(data)
        subprocess.run(["zip", "-qP", "secret", "a.zip", *files], cwd=folder, check=True)
        content = bytearray(pathlib.Path(folder, "a.zip").read_bytes())
    struct.pack_into("<I", content, content.rindex(b"evil.bin") - 46 + offset, value)
    return content


write("encrypted", encrypted(24, len(long)))
write("encrypted-wrong-crc", encrypted(16, 1))
write("encrypted-short", encrypted(20, 11))
write("encrypted-claims-more", encrypted(24, len(long) + 1))

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
