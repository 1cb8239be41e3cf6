"""Writes the fuzz targets' seed inputs: make_seeds.py FOLDER, one folder below it for each target.
What the inputs mean is said at the top of each target."""
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

out = pathlib.Path(sys.argv[1])
tests = pathlib.Path(__file__).parent.parent / "tests"
shutil.rmtree(out, ignore_errors=True)


def seeds(target, *contents):
    folder = out / target
    folder.mkdir(parents=True, exist_ok=True)
    for content in contents:
        (folder / str(len(list(folder.iterdir())))).write_bytes(content)


# Archives: the flawed ones that the tests use, and those of other tools.
(out / "zip_archive").mkdir(parents=True)
subprocess.run([sys.executable, tests / "ziparchive/make_archives.py", out / "zip_archive"], check=True)
# Its 3 MB would make every other input as long, and slow.
(out / "zip_archive/ratio-bomb.zip").unlink()
with tempfile.TemporaryDirectory() as folder:
    for name in ("VornUpdate2/VORN_I-1.0.bin", "fresh/a/readme.txt", "VORN-2.0.bin"):
        path = pathlib.Path(folder, name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(random.Random(name).randbytes(300) + bytes(3000))
    for name, *command in (
        ("zip", "zip", "-qr"),
        ("store", "zip", "-qr0"),
        ("secret", "zip", "-qrP", "secret"),
        ("7z", "7z", "a", "-bso0", "-tzip"),
        ("bsdtar", "bsdtar", "--format", "zip", "-cf"),
    ):
        for what in ("VornUpdate2", "VORN-2.0.bin", "VornUpdate2 fresh VORN-2.0.bin"):
            archive = out / "zip_archive" / f"{name}-{len(what)}.zip"
            subprocess.run([*command, archive.absolute(), *what.split()], cwd=folder, check=True)
for archive in sorted((out / "zip_archive").iterdir()):
    if archive.stem not in ("large", "many", "overlap-bomb"):
        for name in range(4):
            seeds("package", bytes([name]) + archive.read_bytes())

seeds(
    "download_headers",
    b"attachment; filename=\"VornUpdate2.zip\"\n1234\nsoftware/VornUpdate2.zip\n127.0.0.1:8443",
    b"attachment; filename*=UTF-8'de'f%C3%BCr.zip; filename=x.zip\n \t77\n../a/%2e%2e\n[::1]:443",
    b"inline;filename=\"a\\\"b;c.zip\n9223372036854775807\n\npackages.example",
    b"attachment; filename*=iso-8859-1''%2F..%5Cx.zip\n-5\na?b#c\nuser@host",
)

# Exchanges. A delay of one unit (of a millisecond) puts each answer behind the frame before.
ms, second = 0x00, 0xC0


def answer(data, units=1, unit=ms):
    return bytes([unit | units, len(data)]) + data


def exchange(model, length, *, is_query=False, connect=None, erase=None, end=b""):
    ack = answer(b"\xaf")
    first = answer(b"\xaf", 25)  # the sync byte goes out after 20 ms
    erased = b"" if model < 2 else answer(b"\xaf", 3, second) if erase is None else erase
    frames = ack * (length // 250 + 1)
    return (bytes([length >> 8 | (0x80 if is_query else 0), length & 0xFF]) + first
            + (connect or answer(bytes([0xAF, 0, 0, model]))) + ack + ack + erased + ack + frames + end)


seeds(
    "update",
    *(exchange(model, length) for model in (0, 1, 2, 8) for length in (0, 1, 249, 250, 1000, 2047)),
    exchange(8, 0, is_query=True),
    exchange(8, 600, connect=answer(b"\xaf") + answer(b"\0\0") + answer(b"\x08")),
    exchange(2, 600, erase=answer(b"\xaf\xaf", 2, second)),
    exchange(2, 600, erase=answer(b"\xaf\xfc", 2, second)),
    exchange(1, 600)[:-2] + answer(b"\xfc"),
    exchange(1, 600)[:-4] + bytes([1, 0xFE]),
    exchange(8, 600)[:-4] + bytes([1, 0xFF]),
    exchange(1, 600)[:-6] + answer(b"garbage") + answer(b"\xaf", 5, second),
)


def packets(kind, options, longest, first, second, stream):
    return bytes([kind, options, longest, len(first), len(second)]) + first + (second if kind == 1 else b"") + stream


stream = "a;\nb\r\n_A1 é\u212a\u2028\U0001f600ab;aab;".encode() + b"\xc3\xff\xe2\x84;ab"
seeds(
    "packets",
    *(packets(0, options, 12, pattern.encode(), b"", stream)
      for pattern in ("a+;", "^a.*;$", "(?:a|b)\\R", "(?<k>\\w+)(?<e>;)", "a(?=b)", "\u212a", "(?<!a)b",
                      "\\bb", "[[:alpha:]]{2}", "(?>ab\\z|a)b", "\\p{Lu}", "(a)\\1", "a|^b", "(?i)^b")
      for options in (0, 1, 64)),
    packets(1, 3, 20, b"ab", b"b;", b"xxababb;ab;ab;"),
    packets(1, 1, 4, b"ab", b"", b"xxababb"),
    packets(1, 2, 4, b"", b";", b"xx;abb;"),
    packets(1, 0, 4, b"", b"", b"xx;abb;"),
    packets(2, 0, 4, b"ab;", b"", b"xx;ab;bab;"),
    packets(3, 3, 9, b"a", b"", b"xx;ab;bab;"),
)

reads = bytes([1]) + b"\xf4" + bytes([4]) + b"\x03\x01\xfe\xfc" + bytes([252]) + bytes(252)
log = b"a log\n0.000000 RTS high\n0.020111 > F4\r\n0.020156 < AF\n0.020157 > 03 01 FE FC\n0.020217 < AF 00 00 08\n"
seeds(
    "replay",
    log + b"\0" + reads,
    log + b"1.000000 > (252 bytes)\n2.5 gone\n3.000000 gone\n\0" + reads * 2,
    *(path.read_bytes() + b"\0" + reads for path in (tests / "simulator/transcripts").iterdir()),
)

names = ["VORN_I-1.10.0.bin", "VORN_I-1.9.3.bin", "VORN_I-1.10.0-beta.bin", "VORN-2.bin", "VORN_PLATINA-3.1.bin",
         "usbserial-A10K", "usbmodem-14201", "ttyUSB0", "Vorn/\t1\u200f", "x.bin", "\u0663.\u0664.BIN"]
seeds("names", *(bytes([model]) + "\n".join(names[start:]).encode() for model in (0, 1, 2, 3, 9, 40) for start in (0, 5)))
