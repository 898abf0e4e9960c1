#!/usr/bin/env python3
"""Runs a Windows test program under Wine with a desktop: under_wine.py PREFIX PROGRAM ARGUMENT..."""
import sys

from wine import WineDesktop

with WineDesktop(sys.argv[1]) as desktop:
    code, output = desktop.run(*sys.argv[2:], seconds=None)
sys.stdout.write(output)
sys.exit(code)
