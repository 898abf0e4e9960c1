#!/usr/bin/env python3
"""Counts with callgrind the instructions that the jobs of instruction_jobs take, and compares them with the counts kept
in instructions.txt: a job that takes over 5 % more fails.

check_instructions.py PROGRAM COUNTS [--keep]

Counts do not depend on how busy or fast a machine is, but on compiler and libraries: with others than the file names
there is nothing to compare with, and the check is skipped (exit code 77). --keep writes the file again.
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile

MAX_RISE = 1.05
SKIPPED = 77
# Memory functions and image conversions have variants for what a processor can do, and as many threads as it has cores.
ENVIRONMENT = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "QT_HASH_SEED": "0",
               "QT_NO_CPU_FEATURE": "avx avx2 avx512f", "GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX,-AVX2,-ERMS,-FSRM"}


def answer(program, option):
    return subprocess.run([program, option], env=ENVIRONMENT, capture_output=True, text=True, check=True).stdout.strip()


def built_with(program):
    libc = os.confstr("CS_GNU_LIBC_VERSION")
    valgrind = subprocess.run(["valgrind", "--version"], capture_output=True, text=True, check=True).stdout.strip()
    return f"{answer(program, '--built-with')}, {libc}, {valgrind}, {os.uname().machine}"


def count(program, job):
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "counts")
        run = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=" + out,
                              "--toggle-collect=measuredJob*", program, job],
                             env=ENVIRONMENT, capture_output=True, text=True)
        counted = re.search(r"^(?:summary|totals): (\d+)", open(out).read(), re.M) if run.returncode == 0 else None
        if not counted or int(counted[1]) == 0:
            sys.exit(f"{job} could not be counted:\n{run.stderr}")
        return int(counted[1])


def kept_counts(path):
    lines = open(path, encoding="utf-8").read().splitlines()
    names = next((line[len("# built with: "):] for line in lines if line.startswith("# built with: ")), "")
    return names, {job: int(number) for job, number in (line.split() for line in lines if line and line[0] != "#")}


def keep(path, names, counts):
    with open(path, "w", encoding="utf-8") as out:
        out.write("# Instructions that each job takes; written by check_instructions.py --keep, which see.\n"
                  f"# built with: {names}\n")
        out.writelines(f"{job:12} {number:>12}\n" for job, number in counts.items())


def main(program, path, *options):
    keeping = options == ("--keep",)
    if not shutil.which("valgrind"):
        print("Skipped: valgrind is not installed.")
        return SKIPPED
    os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})
    names = built_with(program)
    kept_names, kept = kept_counts(path) if os.path.exists(path) else ("", {})
    if not keeping and names != kept_names:
        print(f"Skipped: the kept counts are for \"{kept_names}\"; here it is \"{names}\".")
        return SKIPPED
    counts = {job: count(program, job) for job in answer(program, "--jobs").split()}
    if keeping:
        keep(path, names, counts)
    too_many = [job for job in counts if not keeping and counts[job] > kept.get(job, 0) * MAX_RISE]
    for job, number in counts.items():
        change = f"{number / kept[job] - 1:+7.1%}" if job in kept else "    new"
        print(f"{job:12} kept {kept.get(job, 0):>12}, now {number:>12}  {change}{'  TOO MANY' if job in too_many else ''}")
    return int(bool(too_many))


sys.exit(main(*sys.argv[1:]))
