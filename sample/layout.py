#!/usr/bin/python3
"""Lays out the sample: an installation of the suite, the update server's files, and the server's configuration.

usage: layout.py OUT PORT BUILD [--country N] [--rate R] [--publish]
  OUT/drive_c/KORLAN   the installation (C:\\KORLAN), with the wizard and its libraries out of the build folder BUILD
  OUT/drives           drive letters: set KLN_DRIVES to it
  OUT/www              the server's prefix: nginx -p OUT/www -c nginx.conf; its files lie in OUT/www/files
  OUT/catalogue.tsv    the rows that the server offers, in the order in which a wizard meets them
Without --publish the server has the databases of catalogue/, and every archive carries the newest time they state for
it, to the second, in UTC. With it their files are published anew by klnpub, as a maker would."""
import argparse
import csv
import datetime
import os
import random
import shutil
import sqlite3
import struct
import subprocess
import zipfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
CODES = ("JOB", "LIB", "SYS", "KDS_CML", "KDS_UDN", "KDS_MOD", "KDS_SBK", "KDS_WRK")
LIBRARIES = (".PART", ".SYMBOL", ".PACKAGE", ".PADSTACK")


PACKS = ("SP1", "SP2", "SP3")
COLUMNS = ("FileName", "FilePath", "FileSize", "Filedate", "FileZipName")


def read_rows(path):
    with open(path, encoding="utf-8", newline="") as table:
        return list(csv.DictReader(table, delimiter="\t", quoting=csv.QUOTE_NONE))


def catalogue_rows(packs=PACKS):
    return [row for pack in packs for row in read_rows(HERE / "catalogue" / f"{pack}.mdb.tsv")]


def seconds(date_text):
    day, month, year = map(int, date_text.split(",")[0].split("-"))
    clock = map(int, date_text.split(",")[1].split(":"))
    moment = datetime.datetime(year, month, day, *clock, tzinfo=datetime.timezone.utc)
    return int(moment.timestamp())


def folder_of(program, designation):
    return program if designation == "Root" else program.joinpath(*designation.upper().strip("\\").split("\\"))


class Payload:
    """The content of a file as the maker publishes it: what the build has made of that name is the real thing."""

    def __init__(self, build):
        self.built = build / "sample"
        self.make_library = [build / "sample" / "kln-makelib"]
        if not self.make_library[0].exists():  # a Windows build
            self.make_library = [HERE.parent / "scripts" / "wine", build / "sample" / "kln-makelib.exe"]

    def content(self, row, scratch):
        name = row["FileName"]
        own = HERE / "payload" / row["FileZipName"].rsplit(".", 1)[0]
        if row["FilePath"].startswith("\\COUNTRY") and not own.exists():
            own = folder_of(HERE / "installation", row["FilePath"]) / name
        if name.upper().endswith(LIBRARIES):
            library = scratch / name
            subprocess.run([*self.make_library, f"{own}.txt", library], check=True)
            return library.read_bytes()
        for real in (own, self.built / name):
            if real.exists():
                return real.read_bytes()
        size = int(row["FileSize"])
        if name.upper().endswith((".EXE", ".DLL", ".OCX")):
            return random.Random(f"{name} {row['Filedate']}").randbytes(size)
        line = f"{name} {row['Filedate']} sample content\r\n".encode()
        return (line * (size // len(line) + 1))[:size]


def write_archive(path, name, content, mtime):
    moment = datetime.datetime.fromtimestamp(mtime, datetime.timezone.utc)
    entry = zipfile.ZipInfo(name, moment.timetuple()[:6])
    entry.compress_type = zipfile.ZIP_DEFLATED
    entry.extra = struct.pack("<HHBi", 0x5455, 5, 1, mtime)  # the time in UTC, which the DOS field cannot say
    with zipfile.ZipFile(path, "w") as archive:
        archive.writestr(entry, content)


def put(path, content, mtime=None):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)
    if mtime is not None:
        os.utime(path, (mtime, mtime))


def write_rows(path, rows):
    lines = ["\t".join(COLUMNS)] + ["\t".join(row[column] for column in COLUMNS) for row in rows]
    path.write_text("\n".join(lines) + "\n", encoding="utf-8")


def stage(tree, pack, payload, scratch):
    """The files of a pack where the maker's build would leave them."""
    staged = set()
    for row in catalogue_rows([pack]):
        name = row["FileName"]
        if row["FilePath"] == "NEWFOLDER":
            if not any(path.is_relative_to(name.upper().strip("\\").replace("\\", "/")) for path in staged):
                tree.joinpath(*name.strip("\\").split("\\")).mkdir(parents=True)
            continue
        if row["FileZipName"] == "OPAMP_2DOTTSPC.zip":
            name = "OPAMP_2.SPC"  # models that a pack before has published go on under a name of their own
        folder = tree / "Root" if row["FilePath"] == "Root" else folder_of(tree, row["FilePath"])
        if (place := Path(str(folder / name)[len(str(tree)) + 1:].upper())) not in staged:
            put(folder / name, payload.content(row, scratch), seconds(row["Filedate"]))
            staged.add(place)


def publish_server(files, payload, scratch, build, program):
    """Published by klnpub, and read back by tools that know nothing of it."""
    for pack in PACKS:
        stage(scratch / pack, pack, payload, scratch)
        subprocess.run([build / "klnpub", "pack", pack, "--from", scratch / pack, "--to", files], check=True)
    subprocess.run([build / "klnpub", "note", files, program / "KlnUpdt.EXE"], check=True)

    def export(database):
        text = subprocess.run(["mdb-export", files / database, "Files"], check=True, capture_output=True).stdout.decode()
        return list(csv.DictReader(text.splitlines()))
    return [row for pack in export("Update.mdb") for row in export(pack["FileName"])]


def lay_out_server(files, payload, scratch, program_time):
    for name in ("Update",) + PACKS:
        shutil.copy(HERE / "catalogue" / f"{name}.mdb", files)
    newest = {}
    for row in catalogue_rows():
        if row["FilePath"] == "NEWFOLDER":
            continue
        known = newest.get(row["FileZipName"])
        if known is None or seconds(known["Filedate"]) < seconds(row["Filedate"]):
            newest[row["FileZipName"]] = row
    for archive, row in newest.items():
        write_archive(files / archive, row["FileName"], payload.content(row, scratch), seconds(row["Filedate"]))
    note = datetime.datetime.fromtimestamp(program_time, datetime.timezone.utc)
    (files / "KlnUpdt.txt").write_text(f"{note.day}-{note.month}-{note.year},{note.hour}:{note.minute}:{note.second}\r\n")
    return catalogue_rows()


def lay_out_part_index(library_folder, as_text):
    """The part index: every part of the libraries that the installation holds, and of one that is gone. As text it is
    what the database engine of the tests under Wine reads."""
    if as_text:
        shutil.copy(HERE / "installation" / "Parts.abd.tsv", library_folder / "Parts.abd")
        return
    with open(HERE / "installation" / "Parts.abd.tsv", encoding="utf-8", newline="") as table:
        columns, *rows = csv.reader(table, delimiter="\t", quoting=csv.QUOTE_NONE)
    numbers = ("SSQON", "SSQNum")
    database = sqlite3.connect(library_folder / "Parts.abd")
    database.execute("CREATE TABLE PartFields (%s)" %
                     ", ".join(f"{c} {'INTEGER' if c in numbers else 'TEXT'}" for c in columns))
    database.executemany(f"INSERT INTO PartFields VALUES ({', '.join('?' * len(columns))})",
                         [[None if value == "%N" else value for value in row] for row in rows])
    database.commit()
    database.close()


def lay_out_installation(program, build, payload, scratch, url, country):
    for code in CODES + ("Temp",):
        (program / code).mkdir(parents=True, exist_ok=True)
    shutil.copy(build / "KlnUpdt.EXE", program)
    on_windows = (build / "sample" / "KLWUPDT.DLL").exists()
    shutil.copy(build / "sample" / ("KLWUPDT.DLL" if on_windows else "libklwupdt.so"), program)
    shutil.copy(HERE / "help" / "KlnUpdt.chm", program)
    for companion in ("KLNUPSLF.EXE", "KLNUPDTR.exe"):
        shutil.copy(HERE / "companion", program / companion)
    ini = (HERE / "installation" / "SYS" / "TESSARY.INI").read_text(encoding="utf-8")
    ini = ini.replace("@PROGRAM@", "C:\\KORLAN").replace("@URL@", url).replace("@COUNTRY@", str(country))
    put(program / "SYS" / "TESSARY.INI", ini.replace("\n", "\r\n").encode())
    for text in sorted((HERE / "installation" / "COUNTRY").rglob("*.*")):
        put(program / text.relative_to(HERE / "installation"), text.read_bytes())

    first = {}
    for row in catalogue_rows():
        first.setdefault((row["FilePath"], row["FileName"]), row)
    with open(HERE / "installation" / "files.tsv", encoding="utf-8") as table:
        for designation, name, age in (line.rstrip("\n").split("\t") for line in table if not line.startswith("#")):
            row = first[(designation, name)]
            target = folder_of(program, designation) / name
            if not target.exists():
                own = HERE / "installation" / "files" / name
                old = dict(row, Filedate="older build") if age == "older" else row
                put(target, own.read_bytes() if own.exists() else payload.content(old, scratch))
            shift = {"older": -86400, "current": 0, "newer": 86400}[age]
            mtime = seconds(row["Filedate"]) + shift
            os.utime(target, (mtime, mtime))
    lay_out_part_index(program / "LIB", on_windows)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("out", type=Path)
    parser.add_argument("port", type=int)
    parser.add_argument("build", type=Path)
    parser.add_argument("--country", type=int, default=1, help="entry of the country table: 1 English, 2 German")
    parser.add_argument("--rate", default="0", help="bytes a second that a download gets, 0 = all there is")
    parser.add_argument("--publish", action="store_true", help="publish the server's files with klnpub")
    arguments = parser.parse_args()
    out = arguments.out
    program, www, scratch = out / "drive_c" / "KORLAN", out / "www", out / "scratch"
    for folder in (out / "drives", www / "files", www / "temp", scratch):
        folder.mkdir(parents=True, exist_ok=True)
    (out / "drives" / "c:").symlink_to("../drive_c")
    (out / "drives" / "z:").symlink_to("/")

    payload = Payload(arguments.build)
    lay_out_installation(program, arguments.build, payload, scratch, f"http://127.0.0.1:{arguments.port}/files",
                         arguments.country)
    if arguments.publish:
        rows = publish_server(www / "files", payload, scratch, arguments.build, program)
    else:
        rows = lay_out_server(www / "files", payload, scratch, int((program / "KlnUpdt.EXE").stat().st_mtime))
    write_rows(out / "catalogue.tsv", rows)
    server = (HERE / "nginx.conf").read_text().replace("@PORT@", str(arguments.port)).replace("@RATE@", arguments.rate)
    (www / "nginx.conf").write_text(server)
    shutil.rmtree(scratch)


if __name__ == "__main__":
    main()
