#!/usr/bin/env python3
"""Runs a Windows test program under Wine with a desktop: under_wine.py PREFIX PROGRAM ARGUMENT...

The automation tests create their Excel in the program server/excel.exe beside them."""
import os
import subprocess
import sys

from wine import WineDesktop

with WineDesktop(sys.argv[1]) as desktop:
    server = os.path.join(os.path.dirname(sys.argv[2]), "server", "excel.exe")
    if os.path.exists(server):
        desktop.register_automation_server(server)
    code = subprocess.run(["wine", *sys.argv[2:]], env=desktop.environment).returncode
sys.exit(code)
