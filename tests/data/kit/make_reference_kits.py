#!/usr/bin/env python3
"""Writes the reference kits in this folder, with a tiny kit writer of its own.

Deliberately independent of the C++ kit tool: the bytes are laid out here from the
format grammar in doc/kit-format.md, so the reader and the tool are checked against
something they do not share code with. Every kit is a raw deflate stream NAME.deflate;
when the installer's inflater must accept the stream, NAME.deflate.inflated holds the
exact bytes it must produce (for a truncated stream: what can be inflated). The
script is deterministic: every time stamp is a constant.
Run from anywhere:  python3 tests/data/kit/make_reference_kits.py
"""
import pathlib
import struct
import zlib

HERE = pathlib.Path(__file__).resolve().parent
WINDOW_BITS = -15  # raw deflate: no zlib or gzip wrapper
UNIX_EPOCH_AS_FILE_TIME = 116444736000000000

STORED, FIXED, DYNAMIC = 0, 1, 2


def file_time(unix_seconds):
    return unix_seconds * 10000000 + UNIX_EPOCH_AS_FILE_TIME


MARCH_2024 = file_time(1709285400)    # 2024-03-01T09:30:00Z
NEW_YEAR_2000 = file_time(946684800)  # 2000-01-01T00:00:00Z


def u32(value):
    return struct.pack("<I", value)


def kit_string(text):
    # surrogatepass: a damaged kit may hold a lone surrogate unit.
    units = text.encode("utf-16-le", "surrogatepass")
    return u32(len(units) // 2) + units


def product_record(language, name, vendor, description, padding=b""):
    body = (kit_string(language) + kit_string(name) + kit_string(vendor) +
            kit_string(description) + padding)
    return u32(4 + len(body)) + body


def file_record(name, time, offset, size, padding=b""):
    body = kit_string(name) + struct.pack("<QII", time, offset, size) + padding
    return u32(4 + len(body)) + body


def multi_language_kit(products, files, layout=1, record_padding=b""):
    """products: (language, name, vendor, description); files: (name, time, bytes).
    Data follows the tables in file order; offsets count from the data area."""
    head = u32(layout) + u32(len(products))
    head += b"".join(product_record(*p, padding=record_padding) for p in products)
    return head + file_table(files, record_padding)


def single_product_kit(name, vendor, description, files):
    head = u32(0) + kit_string(name) + kit_string(vendor) + kit_string(description)
    return head + file_table(files, b"")


def file_table(files, record_padding):
    table, data = u32(len(files)), b""
    for name, time, content in files:
        table += file_record(name, time, len(data), len(content), record_padding)
        data += content
    return table + data


def deflate(raw, level):
    compressor = zlib.compressobj(level, zlib.DEFLATED, WINDOW_BITS)
    return compressor.compress(raw) + compressor.flush()


def first_block_type(stream):
    # Bit 0 of the first byte is BFINAL, bits 1-2 are BTYPE.
    return (stream[0] >> 1) & 3


class Refused(Exception):
    pass


def expected_answer(inflated):
    """What a hardened reader answers: (0, products, files) or (13, None, None)."""
    position = 0

    def take(count, limit):
        nonlocal position
        if position + count > limit:
            raise Refused()
        chunk = inflated[position:position + count]
        position += count
        return chunk

    def number(limit):
        return struct.unpack("<I", take(4, limit))[0]

    def text(limit):
        return take(2 * number(limit), limit).decode("utf-16-le", "surrogatepass")

    end = len(inflated)
    try:
        products, files = [], []
        if number(end) == 0:
            products.append(("en", text(end), text(end), text(end)))
        else:
            count = number(end)
            if count > (end - position) // 20:
                raise Refused()
            for _ in range(count):
                start = position
                length = number(end)
                if length < 20 or start + length > end:
                    raise Refused()
                products.append(tuple(text(start + length) for _ in range(4)))
                position = start + length
        count = number(end)
        if count > (end - position) // 24:
            raise Refused()
        for _ in range(count):
            start = position
            length = number(end)
            if length < 24 or start + length > end:
                raise Refused()
            name = text(start + length)
            time, offset, size = struct.unpack("<QII", take(16, start + length))
            files.append((name, time, offset, size))
            position = start + length
        for name, _, offset, size in files:
            segments = name.replace("\\", "/").split("/")
            if (not name or "\0" in name or name[0] in "\\/" or
                    (len(name) >= 2 and name[1] == ":") or ".." in segments):
                raise Refused()
            # Decoded, a paired surrogate is one character above U+FFFF.
            if any(0xD800 <= ord(c) <= 0xDFFF or ord(c) > 0xFFFF for c in name):
                raise Refused()
            if position + offset + size > end:
                raise Refused()
        return 0, products, files
    except Refused:
        return 13, None, None


def stream_state(stream):
    inflater = zlib.decompressobj(WINDOW_BITS)
    try:
        inflater.decompress(stream)
    except zlib.error:
        return "corrupt"
    if not inflater.eof:
        return "ends early"
    if inflater.unused_data:
        return "{} trailing bytes".format(len(inflater.unused_data))
    return "complete"


def inflate_what_installer_sees(stream):
    """Inflates as the installer does: a truncated stream gives what it could, a
    corrupt one is refused (None), trailing bytes are ignored."""
    inflater = zlib.decompressobj(WINDOW_BITS)
    try:
        return inflater.decompress(stream)
    except zlib.error:
        return None


TEMPLATE_CONFIG = (
    "# Connection settings for the reporting service\n"
    "[server]\nhost = localhost\nport = 8080\ntimeout_seconds = 30\n\n"
    "[storage]\npath = ~/Documents/Reports\nkeep_days = 90\n")
TEMPLATE_REPORT = "".join(
    "Line {0:03d}: item, quantity, unit price, total, remarks\n".format(i) for i in range(120))
TEMPLATE_README = "Templates for monthly reports.\nCopy a template, then fill in the fields.\n"
TEMPLATE_RU = "Шаблон отчёта\nДата: ____\nОтветственный: ____\n"
DESCRIPTION_HTML = "<html><body><h1>Report templates</h1><p>Three templates.</p></body></html>\n"

PRODUCTS = [
    ("en", "Report Templates", "Example Works", "docs\\about-en.html"),
    ("ru", "Шаблоны отчётов", "Пример", "docs\\about-en.html"),
    ("de", "Berichtsvorlagen", "Beispielwerk", "docs\\about-en.html"),
]
FILES = [
    ("config\\service.cfg", MARCH_2024, TEMPLATE_CONFIG.encode()),
    ("docs\\about-en.html", MARCH_2024, DESCRIPTION_HTML.encode()),
    ("reports\\monthly\\summary.txt", NEW_YEAR_2000, TEMPLATE_REPORT.encode()),
    ("reports\\отчёт.txt", MARCH_2024, TEMPLATE_RU.encode()),
]
FEW_FILES = [("readme.txt", MARCH_2024, TEMPLATE_README.encode())]
# Small enough that zlib finds fixed Huffman codes cheaper than a code table.
TINY_FILES = [("note.txt", MARCH_2024, b"Fill in the fields.\n")]


def exact_multiple_kit():
    # One file whose data fills the kit up to exactly two output buffers of 32 KiB.
    target = 2 * 32768
    tables = len(multi_language_kit(PRODUCTS[:1], [("big.txt", MARCH_2024, b"")]))
    filler = (TEMPLATE_REPORT * 20).encode()[:target - tables]
    raw = multi_language_kit(PRODUCTS[:1], [("big.txt", MARCH_2024, filler)])
    assert len(raw) == target
    return raw


def damaged_kits():
    """{file name: (inflated bytes, description)}: one fault each, tables otherwise sound."""
    good_product = product_record(*PRODUCTS[0])
    good_file = file_record("readme.txt", MARCH_2024, 0, 4)
    # A name count of 40 units in a record only 26 bytes long; the bytes after the
    # record are enough to satisfy a reader that does not stop at the record's end.
    overrun = bytearray(file_record("a", MARCH_2024, 0, 4))
    overrun[4:8] = u32(40)
    return {
        "overrunning-record.deflate": (
            u32(1) + u32(1) + good_product + u32(1) + bytes(overrun) + b"data" + b"\0" * 100,
            "file record of length 26 whose name count (40) runs past it"),
        "huge-count.deflate": (
            u32(1) + u32(0) + u32(0xFFFFFFFF) + good_file + b"data",
            "file count 0xFFFFFFFF with one record present"),
        "dotdot-name.deflate": (
            u32(1) + u32(0) + u32(1) +
            file_record("reports\\..\\..\\outside.txt", MARCH_2024, 0, 4) + b"data",
            "file name with \"..\" segments"),
        "lone-surrogate-name.deflate": (
            u32(1) + u32(0) + u32(1) + file_record("..\ud800", MARCH_2024, 0, 4) + b"data",
            "file name \"..\" followed by the lone surrogate U+D800"),
        "paired-surrogate-name.deflate": (
            u32(1) + u32(0) + u32(1) + file_record("\U0001F600.txt", MARCH_2024, 0, 4) + b"data",
            "file name U+1F600 (a surrogate pair) followed by \".txt\""),
        "short-record.deflate": (
            u32(1) + u32(1) + u32(8) + u32(0) + u32(0) + b"\0" * 40,
            "product record length 8, below the 20 its fields need"),
        "data-outside.deflate": (
            u32(1) + u32(0) + u32(1) + file_record("readme.txt", MARCH_2024, 2, 4) + b"data",
            "file data at offset 2, size 4 in a 4-byte data area"),
    }


def build():
    """Returns {file name: (stream bytes, description)}; checks each stream's shape."""
    kits = {}
    dynamic = deflate(multi_language_kit(PRODUCTS, FILES), 9)
    assert first_block_type(dynamic) == DYNAMIC
    kits["dynamic-level9.deflate"] = (dynamic, "3 products, 4 files, level 9")

    stored = deflate(multi_language_kit(PRODUCTS[:2], FILES[:3]), 0)
    assert first_block_type(stored) == STORED
    kits["stored-level0.deflate"] = (stored, "2 products, 3 files, level 0")

    fixed = deflate(multi_language_kit([("ru", "Заметки", "", "")], TINY_FILES), 1)
    assert first_block_type(fixed) == FIXED
    kits["fixed-level1.deflate"] = (fixed, "1 product (ru), 1 file, level 1, fixed Huffman codes")

    kits["single-product.deflate"] = (
        deflate(single_product_kit("Report Templates", "Example Works", "readme.txt",
                                   FEW_FILES), 9), "layout 0, 1 file, level 9")
    kits["empty-tables.deflate"] = (deflate(u32(1) + u32(0) + u32(0), 9),
                                "the 12-byte kit: layout 1, no products, no files, level 9")
    kits["layout-ffffffff.deflate"] = (
        deflate(multi_language_kit(PRODUCTS[:1], FEW_FILES, layout=0xFFFFFFFF), 9),
        "layout value 0xFFFFFFFF, read like 1; 1 product, 1 file, level 9")
    kits["padded-records.deflate"] = (
        deflate(multi_language_kit(PRODUCTS[:2], FILES[:2], record_padding=b"PAD!" * 3), 6),
        "every record carries 12 extra bytes that a reader must skip; 2 products, 2 files, level 6")
    kits["exact-32k.deflate"] = (deflate(exact_multiple_kit(), 9),
                             "unpacks to exactly 65,536 bytes; 1 product, 1 file, level 9")
    # All zeros is a kit: layout 0, three empty strings, no files, then an unused data
    # area. Its last match is still being copied when 64 KiB of output are full and
    # every input byte has been taken.
    long_run = deflate(bytes(65537), 9)
    kits["long-run.deflate"] = (long_run, "65,537 zero bytes: layout 0, no files, unused data "
                                          "area; output pending after the last input byte, "
                                          "level 9")
    kits["trailing-bytes.deflate"] = (dynamic + b"TRAILING BYTES\n",
                                  "dynamic-level9.deflate followed by 15 extra bytes")
    kits["truncated.deflate"] = (dynamic[:len(dynamic) // 2],
                             "the first half of dynamic-level9.deflate")
    kits["zlib-header.deflate"] = (zlib.compress(multi_language_kit(PRODUCTS, FILES), 9),
                               "the kit of dynamic-level9.deflate with a zlib wrapper")
    kits["empty.deflate"] = (b"", "zero bytes")
    for name, (raw, how) in damaged_kits().items():
        kits[name] = (deflate(raw, 9), how + ", level 9")
    return kits


README_HEAD = """# Reference kits

Written by `make_reference_kits.py` (run it with Python 3 to rebuild every file and this
README; the output is the same on every run with the same zlib). The script has its own
kit writer, independent of the kit tool. Each kit is a raw deflate stream `NAME.deflate`;
where the inflater must return 0, `NAME.deflate.inflated` holds the exact bytes it must
produce (for the truncated stream, what can be inflated; for trailing bytes, the stream's
content alone). Columns: how the stream was made, how it ends, and what the kit reader
must answer: 0 with the number of products and files, or 13 (damaged data).

| file | made as | stream | reader answers |
|---|---|---|---|
"""


def main():
    rows = []
    for name, (stream, how) in sorted(build().items()):
        (HERE / name).write_bytes(stream)
        inflated = inflate_what_installer_sees(stream)
        if inflated is not None:
            (HERE / (name + ".inflated")).write_bytes(inflated)
        code, products, files = (13, None, None) if inflated is None else expected_answer(
            inflated)
        answer = "13" if code else "0, {} product(s), {} file(s)".format(len(products),
                                                                         len(files))
        rows.append("| `{}` | {} | {} | {} |\n".format(name, how, stream_state(stream), answer))
    (HERE / "README.md").write_text(README_HEAD + "".join(rows), encoding="utf-8")


if __name__ == "__main__":
    main()
