#!/usr/bin/env python3
"""A release build is hardened: its program file says so. hardened_test.py PROGRAM"""
import re
import shutil
import subprocess
import sys

# what it is; which list of readelf; what that list must hold
PROTECTIONS = (
    ("loaded at a random address", "--dynamic", r"\(FLAGS_1\).*\bPIE\b"),
    ("all addresses of libraries settled at the start", "--dynamic", r"\bBIND_NOW\b|\(FLAGS_1\).*\bNOW\b"),
    ("and then read-only", "--program-headers", r"GNU_RELRO"),
    ("a stack that cannot be run", "--program-headers", r"GNU_STACK\s+(0x\w+\s+){5}RW\s"),
    ("a stack whose overwriting ends the program", "--dyn-syms", r"__stack_chk_fail"),
)

if not shutil.which("readelf"):
    print("Skipped: readelf, which reads program files, is not installed")
    sys.exit(77)
missing = [what for what, part, pattern in PROTECTIONS if not re.search(pattern, subprocess.run(
    ["readelf", "--wide", part, sys.argv[1]], capture_output=True, text=True, check=True).stdout)]
sys.exit(f"the program lacks: {', '.join(missing)}" if missing else 0)
