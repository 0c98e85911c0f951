#!/usr/bin/python3
"""Kills the wizard at random moments of an update, every second time right before a random change of a file, and looks
what is left; then lets it run to its end and looks again. usage: kill_run.py BUILD COUNT [SEED]"""
import random
import sys
import time

from wizard_runs import Sample

sample = Sample(sys.argv[1])
try:
    count, seed = int(sys.argv[2]), int(sys.argv[3]) if len(sys.argv) > 3 else 1
    changes = [operation for operation in sample.operations() if operation[0] != "stat"]
    sample.restore()
    begun = time.monotonic()
    sample.run()
    seconds = time.monotonic() - begun
    broken = killed = 0
    for number in range(seed, seed + count):
        dice = random.Random(number)
        at = dice.randint(1, len(changes)) if number % 2 else None
        after = None if at else dice.uniform(0, seconds)
        sample.restore()
        end = sample.run(fault=f"any * {at} 0" if at else "", kill_after=after)
        killed += end == "killed"
        torn = sample.broken_promises()
        end = sample.run()
        torn += [] if end in ("updated", "none") else [f"the next run ends as {end}"]
        torn += sample.broken_promises(converged=True)
        place = f"before change {at} ({' '.join(changes[at - 1])})" if at else f"after {after:.3f} s"
        broken += bool(torn)
        for line in torn:
            print(f"seed {number}, killed {place}: {line}")
    print(f"{count} runs, {killed} of them killed, {broken} with a broken promise")
finally:
    sample.close()
sys.exit(1 if broken or killed < count // 2 else 0)
