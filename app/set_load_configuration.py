#!/usr/bin/env python3
"""set_load_configuration.py PROGRAM NM: enters the symbol wagemillLoadConfiguration as the load configuration of a 64-bit
Windows program, which the linker does not do."""
import struct
import subprocess
import sys

SYMBOL = "wagemillLoadConfiguration"
SIZE = 112
IMAGE_BASE, DIRECTORIES = 24 + 24, 24 + 112  # from the signature of the program on
LOAD_CONFIGURATION = 10  # entry of the directories


def main():
    program, nm = sys.argv[1:]
    symbols = subprocess.run([nm, program], check=True, capture_output=True, text=True).stdout.splitlines()
    address = next(int(line.split()[0], 16) for line in symbols if line.split()[-1] == SYMBOL)
    with open(program, "r+b") as file:
        file.seek(0x3C)
        start = struct.unpack("<I", file.read(4))[0]
        file.seek(start + IMAGE_BASE)
        base = struct.unpack("<Q", file.read(8))[0]
        file.seek(start + DIRECTORIES + 8 * LOAD_CONFIGURATION)
        file.write(struct.pack("<II", address - base, SIZE))


main()
