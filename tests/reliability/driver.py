"""What the tests share that run the driver as processes of their own."""
import os
import subprocess
import sys

LONG = os.environ.get("WAGEMILL_LONG") == "1"


def rounds(short, long):
    """How often to do something: a few times for every change, as often as promised in the long form."""
    return long if LONG else short


def environment(home, **changes):
    """Of a user with a home folder of their own, and no TEMP unless it is given."""
    plain = {key: value for key, value in os.environ.items() if not key.startswith("XDG_") and key != "TEMP"}
    runtime = os.path.join(home, "run")
    os.makedirs(runtime, mode=0o700, exist_ok=True)
    return {**plain, "HOME": home, "XDG_CONFIG_HOME": os.path.join(home, "config"), "XDG_RUNTIME_DIR": runtime,
            "QT_QPA_PLATFORM": "offscreen", **changes}


def start(*arguments, home, **changes):
    """The driver, its program file being the first argument of this script."""
    return subprocess.Popen([sys.argv[1], *map(str, arguments)], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                            text=True, env=environment(home, **changes))


def run_folders(home):
    """The private folders of runs that are there."""
    return os.listdir(os.path.join(home, "run"))
