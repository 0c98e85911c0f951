"""Measures whole runs of the wizard and its procedures, each against something else in the same run, in turns, and
prints one table.

usage: scripts/bench [--quick] [PART...]
  --quick  fewer rounds and smaller loads, under two minutes
  PART     big, many, search, start, toggle, cancel or procedures; all when none is named"""
import argparse
import json
import os
import platform
import resource
import shutil
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

from bed import DATE, MOMENT, ROOT, Bed, Case, names, pack, zeros
from window import Program, Screen, seconds_to_rename

BUILD = ROOT / "build" / "release"
PAGE = (500, 300, 900, 500)  # inside the window, and inside a box that comes before it
UPDATE, CANCEL, FIRST_CHECK_BOX = (747, 635), (843, 635), (446, 298)
LINKED_ROWS = (436, 312, 620, 540)  # of the list, below the first
figures = {}  # what: values of the rounds


def note(what, value):
    figures.setdefault(what, []).append(value)


def seconds(command, **more):
    start = time.perf_counter()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, **more)
    return time.perf_counter() - start


def wizard_run(case, screen):
    """Seconds from Update to the end."""
    case.renew("DATA")
    wizard = case.start(screen)
    wizard.wait_until_quiet()
    screen.point(UPDATE)
    taken = seconds_to_rename(case.program / "SYS", "TESSARY.INI", screen.click)
    wizard.end()
    left = [row[0] for row in case.rows if not (case.program / "DATA" / row[0]).exists()]
    if left:
        raise RuntimeError(f"not installed: {left[:3]}")
    return taken


def plain_run(case):
    """Seconds that wget and one unzip for each archive take."""
    case.renew("DATA")
    fetched = case.program / "Temp"
    (fetched / "list").write_text("".join(case.url(row[4]) + "\n" for row in case.rows))
    return seconds(["bash", "-c", 'wget -q -i list && for archive in *.ZIP; do unzip -q -o -j "$archive" -d ../DATA; done'],
                   cwd=fetched)


def against_plain(case, screen, what):
    ours, plain = wizard_run(case, screen), plain_run(case)
    note(what, ours / plain)
    return ours


def big(bed, screen, quick):
    case = Case(bed, "big", names(1))
    pack(case.files, case.rows, 200_000_000)
    yield lambda: against_plain(case, screen, "200 MB archive, from Update to the end | wget + unzip | 0.7 | 0.5")


def many(bed, screen, quick):
    count = 300 if quick else 2000
    more, some = Case(bed, "more", names(3 * count)), Case(bed, "some", names(count))
    pack(more.files, more.rows, 20_000)
    for row in some.rows:
        (some.files / row[4]).hardlink_to(more.files / row[4])

    def once():
        fewer = against_plain(some, screen, f"{count:,} archives of 20 KB, from Update to the end | wget + unzip | 0.6 | 0.35")
        note(f"{3 * count:,} of them | {count:,} of them | 3.3 | 3.05", wizard_run(more, screen) / fewer)
    yield once


def search(bed, screen, quick):
    cases = [Case(bed, f"search{count}", names(count)) for count in (0, 5000, 50000)]
    for case in cases:
        (case.program / "DATA").mkdir()
        case.install(MOMENT - 86400)
    most = cases[-1]
    paths = "".join(f"{most.program}/DATA/{row[0]}\0" for row in most.rows).encode()

    def plain():
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        subprocess.run(["mdb-export", most.files / "SP1.mdb", "Files"], check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["xargs", "-0", "stat", "-c", "%Y %n"], check=True, input=paths, stdout=subprocess.DEVNULL)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime

    def once():
        results = []
        for case in cases:
            wizard = case.start(screen)
            results.append((wizard.wait_until_quiet(), *wizard.end()))
        (first, _, empty), (few, _, _), (all_, worked, full) = results
        silent = most.start(screen, XDG_STATE_HOME="/dev/null")
        silent.wait_until_quiet()
        note("search over 50,000 rows with its log, processor time | where none can be written | 1.1 | 1.05", worked / silent.end()[0])
        note("search over 50,000 installed files, processor time | mdb-export + stat of the same | 4 | 2", worked / plain())
        note("search over 50,000 rows | 5,000 rows, first window left out | 11 | 10.2", (all_ - first) / (few - first))
        note("peak memory of the 50,000-row search above an empty one | rows x 1 KB | 0.8 | 0.5", (full - empty) / 50000)
    yield once


def start(bed, screen, quick):
    case = Case(bed, "start", [])

    def painted(begin):
        taken, program = screen.seconds_to_change(PAGE, begin)
        program.wait_until_quiet()
        program.end()
        time.sleep(0.1)  # the screen is empty again
        return taken
    yield lambda: note("start to first painted window | an empty Qt program's | 1.5 | 1.2",
                       painted(lambda: case.start(screen)) /
                       painted(lambda: Program(BUILD / "bench" / "EmptyWindow", screen, bed.environment)))


def toggle(bed, screen, quick):
    case = Case(bed, "toggle", names(25001, "A") + [(f"G{k}.DAT", "\\B", "20", DATE, f"G{k}.ZIP") for k in range(24999)])

    def once():
        wizard = case.start(screen)
        wizard.wait_until_quiet()
        screen.point(FIRST_CHECK_BOX)
        taken, _ = screen.seconds_to_change(LINKED_ROWS, screen.click)
        wizard.end()
        note("toggle of a row that links 25,000 others, to the next painted frame | ms, for the eye | 100 | 16", 1000 * taken)
    yield once


def cancel(bed, screen, quick):
    megabytes = 1000 if quick else 3000
    member, stalled = Case(bed, "member", names(1)), Case(bed, "stalled", names(1))
    zeros(member, megabytes)
    pack(stalled.files, stalled.rows, 20_000_000)

    def seconds_to_box(case, sign):
        case.renew("DATA")
        wizard = case.start(screen)
        wizard.wait_until_quiet()
        screen.point(UPDATE)
        screen.click()
        while not sign(case):
            time.sleep(0.01)
        screen.point(CANCEL)
        time.sleep(0.3)
        taken, _ = screen.seconds_to_change(PAGE, screen.click)
        wizard.end()
        return 1000 * taken

    def once():
        note("Cancel to the question box while a server stalls | ms, for the eye | 100 | 50",
             seconds_to_box(stalled, lambda case: (case.program / "Temp" / "F1.ZIP").exists()))
        note(f"Cancel to the question box while a member of {megabytes / 1000:g} GB is written | ms, for the eye | 100 | 50",
             seconds_to_box(member, lambda case: any((case.program / "DATA").iterdir())))
    yield once


def procedures(bed, screen, quick):
    case = Case(bed, "procedures", names(50000))
    case.renew("DATA")
    case.install(MOMENT)
    count = 300 if quick else 2000
    pack(case.program / "Temp", case.rows[:count], 20_000)

    def once():
        result = subprocess.run([BUILD / "bench" / "ProceduresBench", "--benchmark_format=json"], check=True, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                env=dict(os.environ, KLN_DRIVES=str(bed.out / "drives"), KLN_ARCHIVES=str(count)))
        for one in json.loads(result.stdout)["benchmarks"]:
            note(one["label"], one["ratio"])
    yield once


PARTS = {part.__name__: part for part in (big, many, search, start, toggle, cancel, procedures)}
SERVED_BEFORE_IT_STALLS = "1; limit_rate_after 16m"  # bytes a second and bytes


def measure(part, quick, out):
    out.mkdir()
    screen = Screen(out)
    bed = Bed(out, BUILD, SERVED_BEFORE_IT_STALLS if part is cancel else "0")
    try:
        for once in part(bed, screen, quick):
            bed.serve()
            for _ in range(2 if quick else 5):
                once()
    finally:
        bed.close()
        screen.close()


def git(*arguments):
    return subprocess.run(["git", *arguments], cwd=ROOT, text=True, stdout=subprocess.PIPE, check=True).stdout.strip()


def print_table():
    model = next(line.split(":")[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name"))
    changed = " and changes" if git("status", "--porcelain", "--untracked-files=no") else ""
    print(f"{os.cpu_count()} x {model}, Linux {platform.release()}, commit {git('rev-parse', '--short', 'HEAD')}{changed}\n")
    print("| What | Against, in the same run | Median | Lowest to highest | Rounds | Reach | Aim |\n|---|---|---|---|---|---|---|")
    for what, values in figures.items():
        title, against, reach, aim = what.split(" | ")
        print(f"| {title} | {against} | {statistics.median(values):.3g} | {min(values):.3g} to {max(values):.3g} | "
              f"{len(values)} | {reach} | {aim} |")


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1])
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("part", nargs="*", choices=[[], *PARTS])
    arguments = parser.parse_args()
    beds = Path(tempfile.mkdtemp(prefix="kln-bench-"))
    beds.chmod(0o755)
    try:
        for name in arguments.part or PARTS:
            measure(PARTS[name], arguments.quick, beds / name)
    finally:
        shutil.rmtree(beds)  # at the end only: what has just gone slows the making of new files
    print_table()


if __name__ == "__main__":
    main()
