"""The whole product in the prefix of a build: registered, with a store of its own, and client processes.

A Product registers server and mail client for the time of one test and puts back what stood in the
registry before, since other tests rely on a machine without a mail client.
"""

import contextlib
import os
import re
import subprocess
import sys
import tempfile
import threading
from collections import namedtuple
from datetime import datetime, timedelta

SOURCE = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", ".."))
DEV = os.path.join(SOURCE, "tools", "dev")
DTSTORE = os.path.join(SOURCE, "tools", "dtstore", "dtstore")
sys.path.insert(0, os.path.join(SOURCE, "tools", "dtstore"))
sys.path.insert(0, os.path.join(SOURCE, "tests", "tools"))

from dtstore_lib import editing, model, zones  # noqa: E402  the path is made above
from dtstore_lib.document import StoreFolder  # noqa: E402

PATIENCE = 120  # seconds: long beyond any bound of the server's, so only what never comes ends a wait
CLEAN = "left interfaces 0 buffers 0 connections 0 misuse 0"
SERVER = "dtOIEx64.exe"

MAIL = r"HKEY_LOCAL_MACHINE\Software\Clients\Mail"
APP_PATH = r"HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion\App Paths\Outlook.exe"
SUBSYSTEM = r"HKEY_LOCAL_MACHINE\Software\Microsoft\Windows Messaging Subsystem"
SETTINGS = r"HKEY_CURRENT_USER\Software\MapiStore"

Event = namedtuple("Event", "sink id number text")
Answer = namedtuple("Answer", "result value")

ON_CALENDAR_UPDATED, ON_INITIALIZE, ON_LIST_APPOINTMENT, ON_TRACE = 1, 2, 3, 14
ADDED, DELETED, UPDATED = 1, 2, 3
OK = 0
UTC_EDIT = editing.Edit(zones.find("Etc/UTC"))


def windows_path(path):
    return "Z:" + os.path.realpath(path).replace("/", "\\")


def subject_of(document):
    """The subject of a document with one appointment, or None."""
    found = re.search(r"<subject><!\[CDATA\[(.*?)\]\]></subject>", document)
    return found and found[1]


class Prefix:
    """A Wine prefix of a build folder: that of the environment, or the one called `name`, which nobody else
    disturbs. `zone` is the zone of the programs that run() starts."""

    def __init__(self, build, zone="UTC", name=None):
        self.build = os.path.realpath(build)
        self.environment = {**os.environ, "DT_TZ": zone, **({"DT_WINE_PREFIX": name} if name else {})}
        self._tool("start")

    def _tool(self, verb):
        subprocess.run([os.path.join(DEV, "wine-prefix"), verb, self.build], env=self.environment, check=True)

    def stop(self):
        """Ends the prefix's Wine server and every process in it."""
        self._tool("stop")

    def run(self, program, *arguments, **more):
        """The finished process of one program, its output as UTF-8 text."""
        return subprocess.run([os.path.join(DEV, "wine-run"), self.build, program, *arguments], env=self.environment,
                              capture_output=True, text=True, encoding="utf-8", errors="replace", check=False, **more)

    def start(self, program):
        """A running program with pipes for input and output."""
        script = 'build=$1; . "$2"; exec "$WINELOADER" "$3"'
        return subprocess.Popen(["/bin/bash", "-c", script, "start", self.build,
                                 os.path.join(DEV, "wine-environment"), program], env=self.environment,
                                stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                                encoding="utf-8", errors="replace")

    def path(self, name):
        return os.path.join(self.build, name)

    def processes_end(self, name, verb="waitend"):
        """Whether every process with this file name ends by itself, or, with "endall", was ended."""
        watcher = Client(self)
        try:
            return watcher.must(f"{verb} {name}") == "1"
        finally:
            watcher.close()


class Registry:
    """Keys of the registry as they stood before, put back by restore()."""

    def __init__(self, prefix, folder, keys):
        self.prefix = prefix
        self.saved = {}
        for number, key in enumerate(keys):
            path = os.path.join(folder, f"registry-{number}.reg")
            done = prefix.run("reg", "export", key, windows_path(path), "/y")
            self.saved[key] = path if done.returncode == 0 and os.path.exists(path) else None

    def write(self, folder, keys):
        """Sets values: {key: {name: text}}, the name "" being the default value; None takes one away."""
        path = os.path.join(folder, "settings.reg")
        lines = ["Windows Registry Editor Version 5.00", ""]
        for key, entries in keys.items():
            lines.append(f"[{key}]")
            for name, text in entries.items():
                left = f'"{name}"' if name else "@"
                right = "-" if text is None else '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'
                lines.append(f"{left}={right}")
            lines.append("")
        with open(path, "w", encoding="utf-16", newline="\r\n") as file:
            file.write("\n".join(lines))
        self._done("reg", "import", windows_path(path))

    def restore(self):
        for key, path in self.saved.items():
            self.prefix.run("reg", "delete", key, "/f")
            if path:
                self._done("reg", "import", windows_path(path))

    def _done(self, *command):
        done = self.prefix.run(*command)
        if done.returncode:
            raise RuntimeError(f"{' '.join(command)}: {done.stdout}{done.stderr}")


class Product:
    """Server and mail client, registered, over one store folder; `faults` is the plan of the mail library's faults.
    A context manager."""

    def __init__(self, prefix, store=None, faults=""):
        self.prefix = prefix
        self._stack = contextlib.ExitStack()
        self.folder = self._stack.enter_context(tempfile.TemporaryDirectory(prefix="road-"))
        self.store = store or os.path.join(self.folder, "store")
        self.ledger_path = os.path.join(self.folder, "ledger.txt")
        self.faults_path = os.path.join(self.folder, "faults.txt")
        self.set_faults(faults)
        self.clients = []
        if store is None:
            self.dtstore("new", self.store)
        self.registry = Registry(prefix, self.folder, [MAIL, APP_PATH, SUBSYSTEM, SETTINGS])
        self._stack.callback(self._put_back)
        library = windows_path(prefix.path("mapistore64.dll"))
        self.registry.write(self.folder, {
            MAIL: {"": "Microsoft Outlook"},
            MAIL + r"\Microsoft Outlook": {"DllPathEx": library},
            APP_PATH: {"": library},
            SETTINGS: {"Folder": windows_path(self.store), "Ledger": windows_path(self.ledger_path),
                       "Faults": "@" + windows_path(self.faults_path)}})
        self.renew_activator()
        self._register("/RegServer")

    def __enter__(self):
        return self

    def __exit__(self, *error):
        while self.clients:
            self.clients.pop().close()
        self._stack.close()  # once; later calls find nothing left to do

    def _register(self, verb):
        done = self.prefix.run(self.prefix.path(SERVER), verb)
        if done.returncode:
            raise RuntimeError(f"{verb} ended with {done.returncode}")

    def _put_back(self):
        self.prefix.processes_end(SERVER, "endall")
        self._register("/UnregServer")
        self.registry.restore()
        self.renew_activator()

    def renew_activator(self):
        """Wine's object activator keeps the class of a server that was killed before it could revoke it, and
        every later activation fails; a new activator knows nothing of it."""
        self.prefix.run("net", "stop", "RpcSs")

    def set_faults(self, plan):
        """The mail library reads it when it is initialised: at the next bring-up that finds it released."""
        with open(self.faults_path, "w", encoding="utf-8") as file:
            file.write(plan)

    def dtstore(self, *arguments):
        """Standard output of one command of the store tool."""
        done = subprocess.run([DTSTORE, *arguments], capture_output=True, text=True, check=False)
        if done.returncode:
            raise RuntimeError(f"dtstore {' '.join(arguments)}: {done.stderr}")
        return done.stdout

    def edit(self, change):
        """Runs change(document) and writes the document once."""
        folder = StoreFolder(self.store)
        with folder.writing() as document:
            return change(document)

    def client(self, *names):
        """A client process with frame window, object and a sink for each name."""
        client = Client(self.prefix)
        self.clients.append(client)
        for command in ("wholetexts", "frame", "create", *(f"advise {name}" for name in names or ("main",))):
            client.must(command)
        return client

    def wait_for_server_end(self):
        """Whether the server ends by itself."""
        return self.prefix.processes_end(SERVER)

    def ledgers(self):
        """The ledger's reports, one for each time that the mail library was released, as lists of lines."""
        reports = []
        if os.path.exists(self.ledger_path):
            with open(self.ledger_path, encoding="utf-8", errors="replace") as file:
                for line in file.read().splitlines():
                    if line.startswith("ledger process") or not reports:
                        reports.append([])
                    reports[-1].append(line)
        return reports

    def ledger(self):
        """Lines of the ledger's last report."""
        return (self.ledgers() or [[]])[-1]


class Client:
    """One e2e_client.exe; its commands stand in tests/e2e/support/ScriptedClient.h. Clients that share the
    condition `came` can be waited for together."""

    def __init__(self, prefix, came=None):
        self.process = prefix.start(prefix.path("tests/e2e_client.exe"))
        self.came = came or threading.Condition()
        self.events, self.answers, self.ended = [], [], False
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read(self):
        for line in self.process.stdout:
            kind, _, rest = line.rstrip("\r\n").partition(" ")
            with self.came:
                if kind == "event":
                    sink, number, value, text = (rest.split(" ", 3) + [""])[:4]
                    self.events.append(Event(sink, int(number), int(value), text))
                elif kind == "done":
                    name, code, value = (rest.split(" ", 2) + [""])[:3]
                    self.answers.append((name, Answer(int(code, 16), value)))
                self.came.notify_all()
        with self.came:
            self.ended = True
            self.came.notify_all()

    def send(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()

    def answer(self, name):
        with self.came:
            self.came.wait_for(lambda: self.ended or any(entry[0] == name for entry in self.answers), PATIENCE)
            for entry in self.answers:
                if entry[0] == name:
                    self.answers.remove(entry)
                    return entry[1]
        raise AssertionError(f"{name} was not answered")

    def is_answered(self, name):
        with self.came:
            return any(entry[0] == name for entry in self.answers)

    def do(self, command):
        self.send(command)
        return self.answer(command.split()[0])

    def must(self, command):
        """The value of a command that must answer S_OK."""
        answer = self.do(command)
        if answer.result != OK:
            raise AssertionError(f"{command} answered 0x{answer.result:08X} {answer.value}")
        return answer.value

    def wait(self, wanted, what):
        """Waits until wanted(events) is true for all that was heard so far, and gives the events."""
        with self.came:
            if not self.came.wait_for(lambda: wanted(self.events), PATIENCE):
                raise AssertionError(f"{what} did not come; heard {[event[:3] for event in self.events[-20:]]}")
            return list(self.events)

    def event(self, number, sink="main"):
        """Waits for the first event with this id to a sink."""
        events = self.wait(lambda heard: any(e.id == number and e.sink == sink for e in heard), f"event {number}")
        return next(e for e in events if e.id == number and e.sink == sink)

    def changes(self, sink="main"):
        """Calendar changes heard so far: (type, subject)."""
        with self.came:
            return [(e.number, subject_of(e.text)) for e in self.events
                    if e.id == ON_CALENDAR_UPDATED and e.sink == sink]

    def listings(self, sink="main"):
        with self.came:
            return [e for e in self.events if e.id == ON_LIST_APPOINTMENT and e.sink == sink]

    def initialize(self, sink="main"):
        self.must("initialize 1 CALENDARING")
        event = self.event(ON_INITIALIZE, sink)
        if event.number != OK:
            raise AssertionError(f"OnInitialize brought {event.number}")

    def ask(self, first, last):
        """Asks for a listing of two dates and gives the sequence id."""
        begin = (first - datetime(2020, 1, 1)).total_seconds()
        return int(self.must(f"list {begin:.0f} {(last - first).total_seconds():.0f}"))

    def list(self, first, last, sink="main"):
        """The document of one listing."""
        sequence = self.ask(first, last)
        events = self.wait(lambda heard: any(e.id == ON_LIST_APPOINTMENT and e.number == sequence and e.sink == sink
                                             for e in heard), f"listing {sequence}")
        return next(e.text for e in events if e.id == ON_LIST_APPOINTMENT and e.number == sequence and e.sink == sink)

    def close(self):
        with contextlib.suppress(OSError):
            self.process.stdin.close()
        try:
            self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.reader.join(5)  # a process of Wine's may still hold the pipe


def appointment(document, subject, start, **more):
    """Adds an appointment of half an hour to the calendar of a document; gives its id. `start` is in UTC."""
    end = start + timedelta(minutes=30)
    words = [f"subject={subject}", f"start={start:%Y-%m-%dT%H:%M:%SZ}", f"end={end:%Y-%m-%dT%H:%M:%SZ}",
             *(f"{key}={value}" for key, value in more.items())]
    store = model.default_store(document)
    message = editing.new_message("appointment", words, UTC_EDIT)
    number = model.add_message(document, store, model.folder_for_class(store, message["class"]), message)["id"]
    model.name_properties(document)
    return number


def change(document, number, *words):
    """Changes properties of a message as `dtstore change` does."""
    UTC_EDIT.apply(editing.find(document, number)[1], words)
