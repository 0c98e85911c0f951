"""Runs of the whole wizard on the sample as processes of their own, and what must hold of the installation after each."""
import collections
import os
import re
import shutil
import signal
import socket
import sqlite3
import subprocess
import tempfile
import time
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
STRAYS = re.compile(r"^\.kln|\.tmp$|-journal$", re.IGNORECASE)


def settings(ini):
    """Every value of an INI file by section and key."""
    found, section = {}, ""
    for line in ini.decode().splitlines():
        if line.startswith("["):
            section = line.strip("[] ").upper()
        elif "=" in line:
            key, value = line.split("=", 1)
            found[section, key.strip().upper()] = value.strip()
    return found


class Sample:
    """The sample installation and its server; `installed` holds what an undisturbed update makes of it."""

    def __init__(self, build):
        self.build, self.top = Path(build), Path(tempfile.mkdtemp(prefix="kln-runs-"))
        self.out = self.top / "out"
        self.top.chmod(0o755)
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            self.port = port = free.getsockname()[1]
        subprocess.run([SOURCE / "sample" / "layout.py", self.out, str(port), build], check=True)
        for folder in ("config", "cache"):
            (self.out / folder).mkdir()
        self.server = subprocess.Popen([SOURCE / "sample" / "serve", self.out])
        for _ in range(200):
            with socket.socket() as client:
                if client.connect_ex(("127.0.0.1", port)) == 0:
                    break
            time.sleep(0.05)
        self.program = self.out / "drive_c" / "KORLAN"
        shutil.copytree(self.out / "drive_c", self.top / "drive_c")
        self.before = self.state()
        assert self.run() == "updated"
        self.installed = [self.state()]
        # A run killed while it records the packs leaves some of them to the next, which may hold a later version of a
        # file that two packs list.
        shutil.copytree(self.out / "drive_c", self.top / "updated")
        for packs in (1, 2):
            self.restore("updated")
            ini = self.program / "SYS" / "TESSARY.INI"
            ini.write_bytes(re.sub(rb"(\[LIVEUPDATEFROMWEB\]\s+number=)3", rb"\g<1>%d" % packs, ini.read_bytes()))
            assert self.run() == "updated"
            self.installed.append(self.state())

    def close(self):
        self.server.terminate()
        self.server.wait()
        shutil.rmtree(self.top)

    def restore(self, tree="drive_c"):
        for folder in ("drive_c", "config", "cache"):
            shutil.rmtree(self.out / folder)
        shutil.copytree(self.top / tree, self.out / "drive_c")
        for folder in ("config", "cache"):
            (self.out / folder).mkdir()

    def run(self, fault="", log="", kill_after=None):
        """The last line of the run, "killed" or the signal's number."""
        environment = dict(os.environ, KLN_DRIVES=f"{self.out}/drives", XDG_CONFIG_HOME=f"{self.out}/config",
                           XDG_CACHE_HOME=f"{self.out}/cache", XDG_STATE_HOME=f"{self.out}/state")
        if fault or log:
            environment.update(KLN_FAULT_TREE=str(self.out), KLN_FAULT=fault, KLN_FAULT_LOG=str(log),
                               LD_PRELOAD=str(self.build / "tests" / "libKlnFaultyFiles.so"))
        run = subprocess.Popen([self.build / "tests" / "KlnUnattended"], env=environment, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, text=True)
        if kill_after is not None:
            time.sleep(kill_after)
            run.kill()
        lines = run.communicate(timeout=60)[0].split("\n")
        if run.returncode == -signal.SIGKILL:
            return "killed"
        return str(run.returncode) if run.returncode else (lines[-2] if len(lines) > 1 else "closed")

    def operations(self):
        """What an undisturbed update does to its files, in order: (operation, path)."""
        self.restore()
        self.run(log=self.top / "operations")
        lines = (self.top / "operations").read_text().splitlines()
        return [line.split(" ", 1) for line in lines]

    def index_rows(self):
        """The part index as whoever opens it next finds it, by library."""
        with tempfile.TemporaryDirectory() as copy:
            for file in (self.program / "LIB").glob("Parts.abd*"):
                shutil.copy(file, copy)
            index = sqlite3.connect(Path(copy) / "Parts.abd")
            rows = collections.defaultdict(list)
            if index.execute("PRAGMA integrity_check").fetchone() != ("ok",):
                rows["damaged"].append(())
            for row in index.execute("SELECT * FROM PartFields ORDER BY Library, Name"):
                rows[row[1]].append(row)
            index.close()
            return dict(rows)

    def state(self):
        files = {str(path.relative_to(self.program)): path.read_bytes()
                 for path in self.program.rglob("*") if path.is_file()}
        ini = settings(files.pop("SYS/TESSARY.INI"))
        packs = {value for (section, key), value in ini.items() if section == "LIVEUPDATEFROMWEB" and key.isdigit()}
        files = {name: data for name, data in files.items() if not name.startswith(("Temp/", "LIB/Parts.abd"))}
        return {"files": files, "ini": ini, "packs": packs, "index": self.index_rows()}

    def broken_promises(self, converged=False):
        """What does not hold of the installation now; after a run that was left to its end, `converged` asks for more."""
        now, broken = self.state(), []
        lost = self.before["ini"].keys() - now["ini"].keys()
        broken += [f"setting {key} is lost" for key in sorted(lost)]
        for name in sorted(now["files"].keys() | self.installed[0]["files"].keys()):
            there, old = now["files"].get(name), self.before["files"].get(name)
            new = [state["files"].get(name) for state in self.installed]
            if name.endswith(".SPC") and old:  # models are added behind the old ones, twice by a run after a kill
                new.append(new[0] + new[0][len(old):])
            if STRAYS.search(Path(name).name):
                broken += [f"{name} is left over"] if converged else []
            elif there not in new and (converged or there not in (old, None)):
                broken.append(f"{name} is not what an undisturbed run leaves")
        for library in sorted(now["index"].keys() | self.installed[0]["index"].keys()):
            rows = [state["index"].get(library, []) for state in (now, self.before, *self.installed)]
            if rows[0] and rows[0] not in rows[1:]:
                broken.append(f"the index holds a part of {library}")
        if converged and now["index"] not in [state["index"] for state in self.installed]:
            broken.append("the index is behind its libraries")
        if converged and now["packs"] != self.installed[0]["packs"]:
            broken.append(f"recorded packs: {now['packs']}")
        return broken
