"""Writes catalogues of any length as Jet 4 files: a catalogue of the tests, its rows replaced by others."""
import struct
from pathlib import Path

PAGE = 4096
TEMPLATE = Path(__file__).resolve().parent.parent / "tests" / "data" / "jet" / "rows5000.mdb"
DEFINITION, MAP_PAGE, FIRST_FREE = 24, 25, TEMPLATE.stat().st_size // PAGE


def row_bytes(values):
    """A row of five text columns: count, texts squeezed to one byte a character, their ends, their number, all set."""
    texts = [b"\xff\xfe" + value.encode("ascii") for value in values]
    ends = [2 + sum(map(len, texts[:k])) for k in range(6)]
    return struct.pack("<H", 5) + b"".join(texts) + struct.pack("<7HB", *reversed(ends), 5, 0x1F)


def data_pages(rows):
    page, stored = [], 14
    for row in map(row_bytes, rows):
        if stored + len(row) + 2 > PAGE:
            yield page
            page, stored = [], 14
        page.append(row)
        stored += len(row) + 2
    yield page


def data_page(rows):
    starts, start = [], PAGE
    for row in rows:
        start -= len(row)
        starts.append(start)
    head = struct.pack(f"<BBHIIH{len(rows)}H", 1, 1, start - 14 - 2 * len(rows), DEFINITION, 0, len(rows), *starts)
    return head.ljust(start, b"\0") + b"".join(reversed(rows))


def write_catalogue(path, rows):
    """rows: tuples of FileName, FilePath, FileSize, Filedate, FileZipName."""
    file = bytearray(TEMPLATE.read_bytes())
    struct.pack_into("<I", file, DEFINITION * PAGE + 16, len(rows))
    pages = [data_page(page) for page in data_pages(rows)] if rows else []
    start = MAP_PAGE * PAGE + (struct.unpack_from("<H", file, MAP_PAGE * PAGE + 14)[0] & 0x1FFF)
    file[start:start + 69] = struct.pack("<BI", 1, FIRST_FREE).ljust(69, b"\0")  # the map lies in a page of its own
    bitmap = sum(1 << FIRST_FREE + 1 + k for k in range(len(pages))).to_bytes(PAGE - 4, "little")
    path.write_bytes(file + b"\5\1\0\0" + bitmap + b"".join(pages))
