#!/usr/bin/python3
"""fault_sweep.py BUILD_DIR [--stride N]: each single MAPI call of the calendar scenario fails once.

Makes a small store, registers the stand-in library as the mail client of the build's Wine prefix for as
long as it runs, and runs the sweep program.
"""

import argparse
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent.parent
CLIENTS = r"HKLM\Software\Clients\Mail"
APP_PATH = r"HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\App Paths\Outlook.exe"
SETTINGS = r"HKCU\Software\MapiStore"


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


class Prefix:
    def __init__(self, build):
        self.build = build

    def run(self, *arguments, **options):
        command = [str(ROOT / "tools/dev/wine-run"), str(self.build), *map(str, arguments)]
        return subprocess.run(command, stdin=subprocess.DEVNULL, text=True, **options)

    def set(self, key, name, value):
        named = ["/v", name] if name else ["/ve"]
        self.run("reg", "add", key, *named, "/d", value, "/f", check=True, capture_output=True)

    def delete(self, key, name=None):
        named = (["/v", name] if name else ["/ve"]) if name is not None else []
        self.run("reg", "delete", key, *named, "/f", capture_output=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--stride", type=int, default=1, help="each STRIDE-th run alone, as a sample (1)")
    options = parser.parse_args()
    build = options.build.resolve()
    prefix = Prefix(build)
    folder = pathlib.Path(tempfile.mkdtemp(prefix="fault-sweep-"))
    dtstore = ROOT / "tools/dtstore/dtstore"
    try:
        store = folder / "store"
        subprocess.run([dtstore, "new", store, "--name", "Ada Quist", "--email", "ada@sweep.example"], check=True)
        subprocess.run(
            [dtstore, "import", store, pathlib.Path(__file__).with_name("calendar.ics"), "--quiet"], check=True
        )
        prefix.set(CLIENTS, None, "Microsoft Outlook")
        prefix.set(CLIENTS + r"\Microsoft Outlook", "DllPathEx", windows_path(build / "mapistore64.dll"))
        prefix.set(APP_PATH, None, windows_path(build / "mapistore64.dll"))
        prefix.set(SETTINGS, "Folder", windows_path(store))
        prefix.set(SETTINGS, "Watch", "0")
        operations = windows_path(ROOT / "mapistore/operations.txt")
        return prefix.run(build / "tests/fault_sweep.exe", operations, options.stride).returncode
    finally:
        for key in (SETTINGS, APP_PATH, CLIENTS + r"\Microsoft Outlook"):
            prefix.delete(key)
        prefix.set(CLIENTS, None, "Native Mail Client")
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
