"""The folders that are measured on. They are made once and stay; what the program keeps in them is taken away as needed."""

import os
import shutil
import sqlite3
import struct
import zlib

TOP = "My Space"
_ENDINGS = ("pdf", "txt", "md", "docx", "xlsx", "html", "c", "zip", "mp4", "png")


def hidden(library):
    return os.path.join(library, ".corvelle")


def database(library):
    return os.path.join(hidden(library), "library.sqlite")


def forget(library):
    """Makes it a folder that the program has never seen."""
    shutil.rmtree(hidden(library), ignore_errors=True)


def count_nodes(library):
    connection = sqlite3.connect(database(library))
    count = connection.execute("SELECT count(*) FROM nodes").fetchone()[0]
    connection.close()
    return count


def large(data):
    """100,000 files in 5,000 folders."""
    def fill(top):
        number = 0
        for area in range(50):
            area_path = os.path.join(top, f"Area {area:02}")
            folders = [area_path] + [os.path.join(area_path, f"Folder {folder:03}") for folder in range(99)]
            for folder in folders:
                os.mkdir(folder)
                for _ in range(20):
                    _file(folder, number)
                    number += 1
    return _made(data, "large", fill)


def wide(data):
    """One folder of 10,000 things, one in sixteen of them a folder."""
    def fill(top):
        for number in range(10_000):
            if number % 16 == 0:
                os.mkdir(os.path.join(top, f"Thing {number:05}"))
            else:
                _file(top, number)
    return _made(data, "wide", fill)


def empty(data):
    return _made(data, "empty", lambda top: None)


def spread(library):
    """Puts the cards of the top onto a grid of 100 x 100."""
    connection = sqlite3.connect(database(library))
    ids = [row[0] for row in connection.execute("SELECT id FROM nodes WHERE parent_id IS NULL ORDER BY rowid")]
    connection.executemany(
        "UPDATE nodes SET x = ?, y = ? WHERE id = ?",
        [(rank % 100 * 256, rank // 100 * 264, id) for rank, id in enumerate(ids)])
    connection.commit()
    connection.close()


def _made(data, name, fill):
    library = os.path.join(data, name)
    if not os.path.isdir(library):
        unfinished = library + ".unfinished"
        shutil.rmtree(unfinished, ignore_errors=True)
        os.makedirs(os.path.join(unfinished, TOP))
        fill(os.path.join(unfinished, TOP))
        os.rename(unfinished, library)
    return library


def _file(folder, number):
    # Only pictures are read when they come in; everything else has a size, but takes no room.
    ending = _ENDINGS[number % len(_ENDINGS)]
    with open(os.path.join(folder, f"document {number:06}.{ending}"), "wb") as file:
        if ending == "png":
            file.write(_picture(number))
        else:
            file.truncate(100 + number * 37 % 90_000)


def _picture(number):
    width, height = 160, 120
    rows = b"".join(b"\0" + bytes((number % 256, y * 2, 200)) * width for y in range(height))

    def chunk(kind, content):
        return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))

    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows, 1))
            + chunk(b"IEND", b""))
