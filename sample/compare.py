#!/usr/bin/python3
"""What a run of the wizard changed in the sample installation, and whether it is what the catalogue promises.

usage: compare.py snapshot OUT      remembers the installation as it is now in OUT/before.json
       compare.py report OUT        prints every change since, and exits with 1 when a promise is not kept"""
import csv
import datetime
import hashlib
import json
import sqlite3
import sys
import zipfile
from pathlib import Path

import layout

SECTIONS = ("LIVEUPDATEFROMWEB", "LIVEUPDATESPCFILEFROMWEB", "LIVEUPDATESPCFROMWEB", "DEVLIBS", "SCHLIBS", "LAYLIBS",
            "PADLIBS", "KLN_DEVLIBS", "KLN_SCHLIBS", "KLN_LAYLIBS", "KLN_PADLIBS")


def sections(ini):
    found, current = {}, None
    for line in ini.read_text(encoding="utf-8").splitlines():
        if line.startswith("["):
            current = found.setdefault(line.strip("[] "), [])
        elif current is not None and "=" in line:
            current.append(line)
    return {name: found[name] for name in SECTIONS if name in found}


def part_rows(database):
    if not database.read_bytes().startswith(b"SQLite"):  # the text that the tests under Wine have in its place
        with open(database, encoding="utf-8", newline="") as table:
            rows = csv.DictReader(table, delimiter="\t", quoting=csv.QUOTE_NONE)
            return sorted(" | ".join(row[c].replace("%N", "") for c in ("Library", "Name", "Package", "KdsModel", "SSQNum"))
                          for row in rows)
    connection = sqlite3.connect(f"file:{database}?mode=ro", uri=True)
    rows = [" | ".join("" if value is None else str(value) for value in row)
            for row in connection.execute("SELECT Library, Name, Package, KdsModel, SSQNum FROM PartFields")]
    connection.close()
    return sorted(rows)


def stored(folder):
    return {str(path.relative_to(folder)): path.read_text(encoding="utf-8").splitlines()
            for path in sorted(folder.rglob("*")) if path.is_file()}


def snapshot(out):
    program = out / "drive_c" / "KORLAN"
    files = {}
    for path in sorted(program.rglob("*")):
        name = str(path.relative_to(program))
        if path.is_dir():
            files[name + "/"] = ["", 0]
        else:
            files[name] = [hashlib.sha256(path.read_bytes()).hexdigest(), int(path.stat().st_mtime)]
    return {"files": files, "ini": sections(program / "SYS" / "TESSARY.INI"),
            "parts": part_rows(program / "LIB" / "Parts.abd"), "settings": stored(out / "config")}


def moment(seconds):
    return datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc).strftime("%Y-%m-%d %H:%M:%S")


def print_files(before, after):
    print("\nFiles changed (times in UTC):")
    for name in sorted(before.keys() | after.keys()):
        was, now = before.get(name), after.get(name)
        if was == now:
            continue
        if name.endswith("/"):
            print(f"  {'new folder' if was is None else 'folder gone':12} {name}")
        elif was is None:
            print(f"  {'added':12} {name}  {moment(now[1])}")
        elif now is None:
            print(f"  {'removed':12} {name}")
        else:
            print(f"  {'replaced' if was[0] != now[0] else 'new time':12} {name}  {moment(was[1])} -> {moment(now[1])}")


def print_lists(title, before, after):
    print(f"\n{title}:")
    for name in sorted(before.keys() | after.keys()):
        print(f"  [{name}]")
        was, now = before.get(name, []), after.get(name, [])
        for line in was:
            print(f"    {' ' if line in now else '-'} {line}")
        for line in now:
            if line not in was:
                print(f"    + {line}")


def print_parts(before, after):
    print("\nPart index (library | part | package | model | position):")
    for sign, rows in (("-", set(before) - set(after)), ("+", set(after) - set(before))):
        for row in sorted(rows):
            print(f"  {sign} {row}")


def promises(out, before):
    """Every file the catalogue lists first for its place is there, no older than the catalogue says, with the content
    of its archive; every pack is recorded."""
    program, broken, judged, identities = out / "drive_c" / "KORLAN", [], set(), set()
    there = {}
    for path in program.rglob("*"):
        there.setdefault(str(path).upper(), []).append(path)
    for row in layout.read_rows(out / "catalogue.tsv"):
        if row["FileZipName"] in identities:
            continue  # an archive or folder counts where it stands first
        identities.add(row["FileZipName"])
        if row["FilePath"] == "NEWFOLDER":
            folder = program.joinpath(*row["FileName"].strip("\\").split("\\"))
            if not any(path.is_dir() for path in there.get(str(folder).upper(), [])):
                broken.append(f"{folder} was not made")
            continue
        target = layout.folder_of(program, row["FilePath"]) / row["FileName"]
        place = str(target).upper()
        if place in judged:
            continue
        judged.add(place)
        found = there.get(place, [])
        if len(found) != 1:
            broken.append(f"{target}: {len(found)} files of that name")
            continue
        if int(found[0].stat().st_mtime) // 60 < layout.seconds(row["Filedate"]) // 60:
            broken.append(f"{target} is older than the catalogue's")
        was = before["files"].get(str(found[0].relative_to(program)))
        if was is not None and was[1] // 60 >= layout.seconds(row["Filedate"]) // 60:
            continue  # it was up to date before
        with zipfile.ZipFile(out / "www" / "files" / row["FileZipName"]) as archive:
            content = archive.read(archive.namelist()[0])
        installed = found[0].read_bytes()
        if target.suffix.upper() == ".SPC":
            if content not in installed:
                broken.append(f"{target} lacks the new models")
        elif installed != content:
            broken.append(f"{target} is not what its archive holds")
    packs = {line.split("=")[1] for line in sections(program / "SYS" / "TESSARY.INI").get("LIVEUPDATEFROMWEB", [])}
    broken += [f"{pack} is not recorded" for pack in ("SP1.mdb", "SP2.mdb", "SP3.mdb") if pack not in packs]
    return broken


def main():
    command, out = sys.argv[1], Path(sys.argv[2])
    memory = out / "before.json"
    if command == "snapshot":
        memory.write_text(json.dumps(snapshot(out)))
        return
    before, after = json.loads(memory.read_text()), snapshot(out)
    print_files(before["files"], after["files"])
    print_lists("Settings of the suite (TESSARY.INI)", before["ini"], after["ini"])
    print_parts(before["parts"], after["parts"])
    print_lists("Settings of the user", before["settings"], after["settings"])
    broken = promises(out, before)
    print(f"\n{len(broken)} promises of the catalogue not kept")
    print("\n".join(f"  {line}" for line in broken))
    sys.exit(1 if broken else 0)


main()
