"""`dtstore import`: files of several kinds into one store, in one write."""

import os
import sys
import time

from . import ics_import, model, values
from .appointments import Appointments, Owner
from .eml_import import MailImport
from .problem import Problem
from .vcf_import import ContactImport
from .words import counted

ENDINGS = {".ics": "calendar", ".ical": "calendar", ".vcf": "contacts", ".vcard": "contacts", ".eml": "mail"}
FOLDER_CLASSES = {"calendar": "IPF.Appointment", "contacts": "IPF.Contact", "mail": "IPF.Note"}
PROGRESS_SECONDS = 2.0


class Report:
    """Collects what is to be said of an import and says it: notes at once, progress now and then, a summary last."""

    def __init__(self, quiet=False, out=None, err=None, clock=time.monotonic):
        self.quiet, self.out, self.err, self.clock = quiet, out or sys.stdout, err or sys.stderr, clock
        self.notes = 0
        self.files = 0
        self.totals = {}  # how many of each thing came in, by its name
        self._next = clock() + PROGRESS_SECONDS

    def note_for(self, path):
        def note(label, text):
            self.notes += 1
            print(f"{path}: {label}: {text}" if label != "file" else f"{path}: {text}", file=self.err)
        return note

    def step_for(self, path, what):
        def step(done, of):
            if not self.quiet and self.clock() >= self._next:
                self._next = self.clock() + PROGRESS_SECONDS
                print(f"{path}: {done} of {of} {what}", file=self.err, flush=True)
        return step

    def say(self, text):
        if not self.quiet:
            print(text, file=self.out)

    def came_in(self, one, number, many=None):
        self.files += 1
        self.totals[one] = (self.totals.get(one, (0,))[0] + number, many)

    def finish(self):
        """The last line, of an import of several files or with notes."""
        parts = [counted(number, one, many) for one, (number, many) in self.totals.items()] if self.files > 1 else []
        if parts:
            parts[0] = f"{self.files} files: {parts[0]}"
        if self.notes:
            parts.append(counted(self.notes, "note"))
        if parts:
            self.say(", ".join(parts))


class Importer:
    """One import into an open document. `options` are the parsed arguments of the command."""

    def __init__(self, folder, document, options, report):
        self.folder, self.document, self.options, self.report = folder, document, options, report
        self.owner = Owner(*model.owner_of(document))
        if options.me:
            self.owner = Owner(self.owner.name, options.me)
        self.store = model.default_store(document)
        self.target = None
        if options.folder:
            self.store, self.target = model.find_folder(document, options.folder)

    def run(self, paths):
        files = self._files(paths)
        if not files:
            raise Problem("there is no file to import in " + ", ".join(paths))
        for path, book in files:
            try:
                with open(path, "rb") as file:
                    data = file.read()
            except OSError as error:
                raise Problem(f"{path}: {error.strerror}") from None
            kind = ENDINGS.get(os.path.splitext(path)[1].lower())
            if kind is None:
                raise Problem(f"{path}: is none of the kinds that can be read ({', '.join(sorted(ENDINGS))})")
            if self.options.own_folders:
                self._own_folder(path, kind)
            if book is not None:
                if kind != "contacts":
                    raise Problem(f"{path}: an address book is read from vCard files")
                self._book(path, data, book)
            else:
                getattr(self, "_" + kind)(path, data)
        model.name_properties(self.document)

    def _own_folder(self, path, kind):
        name = os.path.splitext(os.path.basename(path))[0]
        self.target = model.make_folder(self.document, self.store, name.replace("/", "-"), FOLDER_CLASSES[kind])

    def _files(self, paths):
        """(file, path of address book containers or None) of all files named, folders read through."""
        found = []
        for path in paths:
            if not os.path.isdir(path):
                found.append((path, self._container(path, os.path.dirname(path))))
                continue
            for folder, folders, files in os.walk(path):
                folders.sort()
                found += [(os.path.join(folder, name), self._container(folder, path)) for name in sorted(files)
                          if os.path.splitext(name)[1].lower() in ENDINGS]
        return found

    def _container(self, folder, top):
        if self.options.book is None:
            return None
        inside = os.path.relpath(folder, top) if os.path.isdir(folder) else "."
        return self.options.book.split("/") + [step for step in inside.split(os.sep) if step != "."]

    def _calendar(self, path, data):
        options = self.options
        zone = options.zone or ics_import.local_zone()
        work = ics_import.CalendarImport(
            path, self.owner, zone, options.horizon, self.folder.keep_file, self.report.note_for(path),
            self.report.step_for(path, "steps of reading and keeping events"), options.readable, zone_is_given=options.zone is not None)
        messages = work.run(data)
        target = self.target or model.folder_for_class(self.store, "IPM.Appointment")
        replaced = self._place_events(target, messages)
        self.report.came_in("event", work.counts.events)
        self._summary(path, work.counts.text(), replaced)

    def _place_events(self, target, messages):
        """Events with an identifier that the folder has take the place of what was there. Gives how many did."""
        clean = {_object_id(message, "PidLidCleanGlobalObjectId") for message in messages}
        old = {}
        for message in self.store["messages"]:
            if message["folder"] == target["id"] and _object_id(message, "PidLidCleanGlobalObjectId") in clean:
                old.setdefault(_object_id(message, "PidLidGlobalObjectId"), []).append(message)
        replaced = 0
        for message in messages:
            there = old.get(_object_id(message, "PidLidGlobalObjectId"))
            if there:
                model.replace_message(there.pop(0), message)
                replaced += 1
            else:
                model.add_message(self.document, self.store, target, message)
        gone = {message["id"] for left in old.values() for message in left}
        if gone:
            self.store["messages"] = [m for m in self.store["messages"] if m["id"] not in gone]
        return replaced

    def _contacts(self, path, data):
        work = ContactImport(path, self.folder.keep_file, self.report.note_for(path),
                             self.report.step_for(path, "cards"))
        messages = work.run(data)
        target = self.target or model.folder_for_class(self.store, "IPM.Contact")
        replaced = self._place(target, messages, ("PR_DISPLAY_NAME_W", "PidLidEmail1EmailAddress"))
        self.report.came_in("contact", len(messages))
        self._summary(path, f"{counted(len(messages), 'contact')}, {work.photos} with a photo", replaced)

    def _mail(self, path, data):
        make = Appointments(self.owner, self.folder.keep_file)
        message, mine = MailImport(path, self.owner, make, self.folder.keep_file, self.report.note_for(path)).run(data)
        target = self.target
        if target is None:
            role = "sentItems" if mine else "inbox"
            target = next((one for one in self.store["folders"] if one.get("role") == role), None)
            if target is None:
                raise Problem(f"store {self.store['id']} has no folder with the role {role}; name one with --folder")
        keys = ("PR_INTERNET_MESSAGE_ID_W",) if "PR_INTERNET_MESSAGE_ID_W" in message["properties"] else ()
        replaced = self._place(target, [message], keys)
        self.report.came_in("mail", 1)
        self._summary(path, f"1 mail into {target['name']}", replaced)

    def _place(self, target, messages, keys):
        """Like _place_events, for messages that are the same when these properties are."""
        old = {}
        for message in self.store["messages"] if keys else ():
            if message["folder"] == target["id"]:
                old[tuple(message["properties"].get(key) for key in keys)] = message
        replaced = 0
        for message in messages:
            there = old.pop(tuple(message["properties"].get(key) for key in keys), None) if keys else None
            if there is not None:
                model.replace_message(there, message)
                replaced += 1
            else:
                model.add_message(self.document, self.store, target, message)
        return replaced

    def _book(self, path, data, container_path):
        work = ContactImport(path, self.folder.keep_file, self.report.note_for(path),
                             self.report.step_for(path, "cards"))
        containers = [model.book_container(self.document, container_path[:depth])
                      for depth in range(1, len(container_path) + 1)]
        cards = work.cards(data)
        for number, card in enumerate(cards, 1):
            entry = model.add_entry(self.document, work.entry_properties(card, number), containers)
            if str(getattr(card, "kind", None) and card.kind.value).lower() == "group":
                entry["type"] = "distList"
        words = ("address book entry", "address book entries")
        self.report.came_in(words[0], len(cards), words[1])
        self._summary(path, f"{counted(len(cards), *words)} into {'/'.join(container_path)}", 0)

    def _summary(self, path, text, replaced):
        self.report.say(f"{path}: {text}" + (f" ({replaced} took the place of earlier ones)" if replaced else ""))


def _object_id(message, key):
    """The bytes of an event's identifier in whatever form the document has them; None without one."""
    value = message["properties"].get(key)
    return values.described_bytes(value) if value is not None else None
