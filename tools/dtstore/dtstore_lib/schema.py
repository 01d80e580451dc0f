"""Checks a document against docs/mapistore.md: every key, every value, every reference."""

import os
import re

from . import names, values
from .problem import Finding

MOST_ID = 2**53 - 1
ROLES = ("root", "ipmSubtree", "inbox", "outbox", "sentItems", "deletedItems", "calendar", "contacts", "drafts",
         "journal", "notes", "tasks", "commonViews", "views", "finder")
_UID = re.compile(r"[0-9A-Fa-f]{32}")

TEXT, WHOLE, TRUTH, LIST, OBJECT, ANY = "text", "a whole number", "true or false", "an array", "an object", None
_KINDS = {
    TEXT: lambda v: isinstance(v, str),
    WHOLE: lambda v: isinstance(v, int) and not isinstance(v, bool),
    TRUTH: lambda v: isinstance(v, bool),
    LIST: lambda v: isinstance(v, list),
    OBJECT: lambda v: isinstance(v, dict),
    ANY: lambda v: True,
}
# key: (kind, required)
_DOCUMENT = {"format": (TEXT, 1), "version": (WHOLE, 1), "revision": (WHOLE, 1), "nextId": (WHOLE, 1),
             "options": (OBJECT, 0), "namedIds": (OBJECT, 0), "profiles": (LIST, 1), "stores": (LIST, 1),
             "addressBook": (OBJECT, 1)}
_OPTIONS = {"largeValueBytes": (WHOLE, 0), "sendDelayMs": (WHOLE, 0)}
_PROFILE = {"name": (TEXT, 1), "default": (TRUTH, 0), "identity": (WHOLE, 0), "stores": (LIST, 1)}
_STORE = {"id": (WHOLE, 1), "name": (TEXT, 1), "uid": (TEXT, 1), "default": (TRUTH, 0), "personal": (TRUTH, 0),
          "tableIdentifiers": (TEXT, 0), "properties": (OBJECT, 0), "folders": (LIST, 1), "messages": (LIST, 1)}
_FOLDER = {"id": (WHOLE, 1), "parent": (ANY, 1), "name": (TEXT, 1), "class": (TEXT, 0), "hidden": (TRUTH, 0),
           "role": (TEXT, 0), "advise": (TRUTH, 0), "properties": (OBJECT, 0)}
_INNER = {"class": (TEXT, 1), "properties": (OBJECT, 1), "recipients": (LIST, 0), "attachments": (LIST, 0)}
_MESSAGE = {"id": (WHOLE, 1), "folder": (WHOLE, 1), "associated": (TRUTH, 0), **_INNER}
_ATTACHMENT = {"properties": (OBJECT, 1), "message": (OBJECT, 0)}
_BOOK = {"uid": (TEXT, 1), "containers": (LIST, 1), "entries": (LIST, 1)}
_CONTAINER = {"id": (WHOLE, 1), "parent": (ANY, 1), "properties": (OBJECT, 1)}
_ENTRY = {"id": (WHOLE, 1), "containers": (LIST, 1), "type": (TEXT, 0), "members": (LIST, 0),
          "properties": (OBJECT, 1)}


def check(document, folder=None):
    """The findings of a document, in its order. `folder` is where its files are looked for, if given."""
    return _Check(document, folder).run()


class _Check:
    def __init__(self, document, folder):
        self.document, self.folder = document, folder
        self.findings = []
        self.ids = {}       # id: kind
        self.references = []  # (place, kind, id)

    def run(self):
        d = self.document
        if not self.shape((), d, _DOCUMENT):
            return self.findings
        if d["format"] != "mapistore":
            self.say(("format",), 'expected "mapistore"')
        if d["version"] != 1:
            self.say(("version",), f"version {d['version']} is not known; this is for version 1")
        self.shape(("options",), d.get("options", {}), _OPTIONS)
        self.named_ids(d.get("namedIds", {}))
        for i, store in enumerate(d["stores"]):
            self.store(("stores", i), store)
        self.book(("addressBook",), d["addressBook"])
        self.profiles(d["profiles"])
        for place, kind, number in self.references:
            if self.ids.get(number) != kind:
                self.say(place, f"there is no {kind} {number}")
        if self.ids and not max(self.ids) < d["nextId"] <= MOST_ID + 1:
            self.say(("nextId",), f"must lie above every id; the highest is {max(self.ids)}")
        return self.findings

    def say(self, place, text):
        self.findings.append(Finding(place, text))

    def shape(self, place, value, keys):
        """Whether the value is an object with these keys and kinds; says what is not."""
        if not isinstance(value, dict):
            self.say(place, "expected an object")
            return False
        before = len(self.findings)
        for key, (kind, required) in keys.items():
            if key not in value:
                if required:
                    self.say(place, f"{key} is missing")
            elif not _KINDS[kind](value[key]):
                self.say((*place, key), f"expected {kind}")
        for key in value:
            if key not in keys and key != "comment":
                self.say((*place, key), "unknown key")
        return len(self.findings) == before

    def take_id(self, place, value, kind):
        number = value["id"]
        if not 1 <= number <= MOST_ID:
            self.say((*place, "id"), "expected 1 to 2^53 - 1")
        elif number in self.ids:
            self.say((*place, "id"), f"{number} is taken by a {self.ids[number]}")
        self.ids[number] = kind

    def named_ids(self, value):
        taken = {}
        for key, text in value.items():
            place = ("namedIds", key)
            set_text, _, name = key.partition(":")
            try:
                names.split_name(set_text, name)
            except names.NameProblem as problem:
                self.say(place, str(problem))
            if not isinstance(text, str) or not re.fullmatch(r"0[xX][0-9A-Fa-f]{4}", text) or not (
                    0x8000 <= int(text, 16) <= 0xFFFE):
                self.say(place, "expected 0x8000 to 0xFFFE")
            elif int(text, 16) in taken:
                self.say(place, f"{text} belongs to {taken[int(text, 16)]}")
            else:
                taken[int(text, 16)] = key

    def store(self, place, store):
        if not self.shape(place, store, _STORE):
            return
        self.take_id(place, store, "store")
        self.uid((*place, "uid"), store["uid"])
        if store.get("tableIdentifiers", "table") not in ("longTerm", "table"):
            self.say((*place, "tableIdentifiers"), 'expected "longTerm" or "table"')
        self.properties((*place, "properties"), store.get("properties", {}))
        self.folders((*place, "folders"), store["folders"])
        own = {folder["id"] for folder in store["folders"] if isinstance(folder, dict) and "id" in folder}
        for i, message in enumerate(store["messages"]):
            at = (*place, "messages", i)
            if self.shape(at, message, _MESSAGE):
                self.take_id(at, message, "message")
                if message["folder"] not in own:
                    self.say((*at, "folder"), f"the store has no folder {message['folder']}")
                self.message(at, message)

    def uid(self, place, text):
        if not _UID.fullmatch(text):
            self.say(place, "expected 32 hexadecimal digits")

    def folders(self, place, folders):
        parents, roles, roots = {}, {}, 0
        for i, folder in enumerate(folders):
            at = (*place, i)
            if not self.shape(at, folder, _FOLDER):
                continue
            self.take_id(at, folder, "folder")
            role, parent = folder.get("role"), folder["parent"]
            if role is not None and role not in ROLES:
                self.say((*at, "role"), f"unknown role; expected one of {', '.join(ROLES)}")
            elif role in roles:
                self.say((*at, "role"), f"folder {roles[role]} has this role already")
            elif role is not None:
                roles[role] = folder["id"]
            roots += parent is None
            parents[folder["id"]] = parent
            self.properties((*at, "properties"), folder.get("properties", {}))
        if roots != 1:
            self.say(place, f"expected one folder without a parent, found {roots}")
        self.hierarchy(place, folders, parents)

    def hierarchy(self, place, nodes, parents):
        for i, node in enumerate(nodes):
            if not isinstance(node, dict) or node.get("id") not in parents:
                continue
            seen, at = set(), node["id"]
            while at is not None and at in parents and at not in seen:
                seen.add(at)
                at = parents[at]
            if at is not None:
                self.say((*place, i, "parent"), "leads back to itself" if at in seen else f"there is no {at!r} here")

    def message(self, place, message):
        self.properties((*place, "properties"), message["properties"])
        for i, recipient in enumerate(message.get("recipients", [])):
            at = (*place, "recipients", i)
            if not isinstance(recipient, dict):
                self.say(at, "expected an object")
                continue
            if "PR_RECIPIENT_TYPE" not in recipient and "0x0C150003" not in recipient:
                self.say(at, "PR_RECIPIENT_TYPE is missing")
            if "recipient" in recipient:
                self.value((*at, "recipient"), 0x0102, recipient["recipient"])
            self.properties(at, {key: v for key, v in recipient.items() if key != "recipient"})
        for i, attachment in enumerate(message.get("attachments", [])):
            self.attachment((*place, "attachments", i), attachment)

    def attachment(self, place, attachment):
        if not self.shape(place, attachment, _ATTACHMENT):
            return
        properties = attachment["properties"]
        self.properties((*place, "properties"), properties)
        method = properties.get("PR_ATTACH_METHOD", properties.get("0x37050003"))
        if method is None:
            self.say((*place, "properties"), "PR_ATTACH_METHOD is missing")
        elif (method == 5) != ("message" in attachment):
            self.say(place, "an embedded message stands only and always with PR_ATTACH_METHOD 5")
        inner = attachment.get("message")
        if inner is not None and self.shape((*place, "message"), inner, _INNER):
            self.message((*place, "message"), inner)

    def book(self, place, book):
        if not self.shape(place, book, _BOOK):
            return
        self.uid((*place, "uid"), book["uid"])
        parents = {}
        for i, container in enumerate(book["containers"]):
            at = (*place, "containers", i)
            if self.shape(at, container, _CONTAINER):
                self.take_id(at, container, "container")
                parents[container["id"]] = container["parent"]
                self.properties((*at, "properties"), container["properties"])
        self.hierarchy((*place, "containers"), book["containers"], parents)
        for i, entry in enumerate(book["entries"]):
            at = (*place, "entries", i)
            if not self.shape(at, entry, _ENTRY):
                continue
            self.take_id(at, entry, "entry")
            if entry.get("type", "mailUser") not in ("mailUser", "distList"):
                self.say((*at, "type"), 'expected "mailUser" or "distList"')
            for key, kind in (("containers", "container"), ("members", "entry")):
                self.references += [((*at, key, n), kind, number) for n, number in enumerate(entry.get(key, []))]
            self.properties((*at, "properties"), entry["properties"])

    def profiles(self, profiles):
        seen = set()
        for i, profile in enumerate(profiles):
            at = ("profiles", i)
            if not self.shape(at, profile, _PROFILE):
                continue
            if profile["name"].casefold() in seen:
                self.say((*at, "name"), "there is another profile of this name")
            seen.add(profile["name"].casefold())
            if "identity" in profile:
                self.references.append(((*at, "identity"), "entry", profile["identity"]))
            self.references += [((*at, "stores", n), "store", number) for n, number in enumerate(profile["stores"])]

    def properties(self, place, properties):
        seen = {}
        for key, value in properties.items():
            if key == "comment":
                continue
            try:
                identity, type_number = values.identity_of(key)
            except names.NameProblem as problem:
                self.say((*place, key), str(problem))
                continue
            if identity in names.COMPUTED_ALWAYS:
                self.say((*place, key), "is made by the library and may not be stored")
            if identity in seen:
                self.say((*place, key), f"names the same property as {seen[identity]}")
            seen[identity] = key
            self.value((*place, key), type_number, value)

    def value(self, place, type_number, value):
        references = []
        problem = values.problem_of(type_number, value, references)
        if problem:
            self.say(place, problem)
        for kind, number in references:
            if kind == "file":
                self.file(place, number)
            else:
                self.references.append((place, kind, number))

    def file(self, place, name):
        if self.folder is not None and not os.path.isfile(os.path.join(self.folder, *name.split("/"))):
            self.say(place, f"there is no file {name}")
