"""What a run needs: an installation of the wizard, the update server's files, and the server."""
import os
import random
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import zipfile
from pathlib import Path

from catalogue import write_catalogue
from window import Program

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "sample"))
from layout import put, write_archive  # noqa: E402

MOMENT, DATE = 1078477632, "5-3-2004,9:7:12"  # of every file on the server
SETTINGS = r"""[Tessary]
SysName=Korlan
Ver=1.61
[WEB]
UPDATEONLINE={url}
"""


class Bed:
    """A server, and below one folder everything it serves and the wizard installs."""

    def __init__(self, out, build, rate="0"):
        self.out, self.build = out, build
        for folder in ("www/files", "www/temp", "home", "runtime", "drives"):
            (out / folder).mkdir(parents=True)
        (out / "runtime").chmod(0o700)
        (out / "drives" / "c:").symlink_to(out)
        self.environment = {"KLN_DRIVES": str(out / "drives"), "HOME": str(out / "home"),
                            "XDG_RUNTIME_DIR": str(out / "runtime")}
        with socket.create_server(("127.0.0.1", 0)) as free:
            self.port = free.getsockname()[1]
        text = (ROOT / "sample" / "nginx.conf").read_text()
        (out / "www" / "nginx.conf").write_text(text.replace("@PORT@", str(self.port)).replace("@RATE@", rate))
        self.server = None

    def serve(self):
        self.server = subprocess.Popen([ROOT / "sample" / "serve", self.out])
        while subprocess.call(["wget", "-q", "--spider", f"http://127.0.0.1:{self.port}/files/"]) == 4:
            time.sleep(0.1)

    def close(self):
        if self.server:
            self.server.terminate()
            self.server.wait()


class Case:
    """One catalogue with one service pack, and an installation that looks at it."""

    def __init__(self, bed, name, rows):
        self.bed, self.rows = bed, rows
        self.files, self.program = bed.out / "www" / "files" / name, bed.out / name
        self.files.mkdir()
        write_catalogue(self.files / "Update.mdb", [("SP1.mdb", "", "", "", "")])
        write_catalogue(self.files / "SP1.mdb", rows)
        (self.files / "KlnUpdt.txt").write_text("1-1-2000,0:0:0\r\n")
        put(self.program / "SYS" / "TESSARY.INI", b"")
        for file in (bed.build / "KlnUpdt.EXE", bed.build / "sample" / "libklwupdt.so"):
            shutil.copy(file, self.program)
        self.renew()

    def url(self, file):
        return f"http://127.0.0.1:{self.bed.port}/files/{self.files.name}/{file}"

    def renew(self, folder=None):
        """As before any run, but for what is installed elsewhere than in that folder. Nobody pays for another's writes,
        or for memory that the host of a virtual machine takes back where it is not in use and gives again slowly."""
        put(self.program / "SYS" / "TESSARY.INI", SETTINGS.format(url=self.url("")[:-1]).encode())
        for name in filter(None, ("Temp", folder)):
            if (self.program / name).exists():  # kept aside: a file system takes long to use again what has just gone
                (self.program / name).rename(tempfile.mkdtemp(dir=self.program))
            (self.program / name).mkdir()
        os.sync()
        b"\1" * 1_000_000_000  # each page is touched, then free

    def start(self, screen, **more):
        return Program(self.program / "KlnUpdt.EXE", screen, {**self.bed.environment, **more})

    def install(self, mtime):
        """Puts every file of the catalogue where it belongs."""
        for name, designation, *_ in self.rows:
            put(self.program / designation[1:] / name, b"old", mtime)


def names(count, folder="DATA"):
    return [(f"F{k}.DAT", "\\" + folder, "20", DATE, f"F{k}.ZIP") for k in range(1, count + 1)]


def pack(folder, rows, size):
    """Packs for each row of a catalogue an archive with a file that cannot be squeezed."""
    for name, _, _, _, archive in rows:
        write_archive(folder / archive, name, random.Random(name).randbytes(size), MOMENT)


def zeros(case, megabytes):
    """Packs for the one row of the catalogue an archive with a file of zeros."""
    block = bytes(1 << 20)
    with zipfile.ZipFile(case.files / case.rows[0][4], "w", zipfile.ZIP_DEFLATED, compresslevel=1) as archive:
        with archive.open(case.rows[0][0], "w", force_zip64=True) as member:
            for _ in range(megabytes):
                member.write(block)
