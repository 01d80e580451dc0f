"""What the tests of the store tool share: where it stands, a folder of its own, small files."""

import os
import subprocess
import sys
import tempfile
import unittest
from datetime import datetime

SOURCE = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))
TOOL_FOLDER = os.path.join(SOURCE, "tools", "dtstore")
TOOL = os.path.join(TOOL_FOLDER, "dtstore")
DATA = os.path.join(SOURCE, "tests", "data")
sys.path.insert(0, TOOL_FOLDER)

from dtstore_lib import ics_import, zones  # noqa: E402  the path is made above
from dtstore_lib.appointments import Owner  # noqa: E402

ADA = Owner("Ada Quist", "ada.quist@nordlys.example")
TODAY = datetime(2026, 11, 20)


class StoreCase(unittest.TestCase):
    """A test with a folder of its own that goes when it ends."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="dtstore-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, content):
        data = content if isinstance(content, bytes) else content.encode("utf-8")
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), "wb") as file:
            file.write(data)
        return self.path(name)

    def read(self, name):
        with open(self.path(name), encoding="utf-8") as file:
            return file.read()

    def run_tool(self, *arguments, stdin=None, zone="Europe/Berlin"):
        """The finished process of one command."""
        return subprocess.run([TOOL, *arguments], capture_output=True, text=True, input=stdin, cwd=self.folder,
                              env={**os.environ, "TZ": zone}, check=False)

    def done(self, *arguments, **more):
        """Standard output of a command that must end well."""
        result = self.run_tool(*arguments, **more)
        self.assertEqual((result.returncode, result.stderr if result.returncode else ""), (0, ""))
        return result.stdout


class Imported:
    """One calendar text through the importer: messages, notes, counts and files kept."""

    def __init__(self, text, zone="Europe/Berlin", owner=ADA, horizon=None, **more):
        self.notes, self.files = [], {}
        work = ics_import.CalendarImport(
            "test.ics", owner, zones.find(zone), horizon or ics_import.default_horizon(TODAY), self.keep,
            lambda label, note: self.notes.append((label, note)), **more)
        self.messages = work.run(text if isinstance(text, bytes) else text.encode("utf-8"))
        self.counts = work.counts

    def keep(self, data, ending):
        name = f"files/{len(self.files)}{ending}"
        self.files[name] = data
        return name

    @property
    def texts(self):
        return [note for _, note in self.notes]


def calendar(*events, head=""):
    """A calendar file of events, each a text of lines without their frame."""
    frames = "".join("BEGIN:VEVENT\n" + event.strip() + "\nEND:VEVENT\n" for event in events)
    return ("BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//x//y//EN\n" + head + frames + "END:VCALENDAR\n").replace("\n", "\r\n")
