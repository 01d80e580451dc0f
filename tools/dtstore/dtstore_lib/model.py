"""Making and finding things in a parsed document. Nothing here reads or writes files."""

import uuid

from . import names
from .problem import Problem

FIRST_NAMED_ID, LAST_NAMED_ID = 0x8100, 0xFFFE
MESSAGE_CLASS_FOLDERS = (("ipm.appointment", "calendar"), ("ipm.contact", "contacts"), ("ipm.distlist", "contacts"))
GLOBAL_LIST = "Global Address List"
DT_GLOBAL = 0x00020000
AB_RECIPIENTS, AB_SUBCONTAINERS, AB_UNMODIFIABLE = 1, 2, 8

_FOLDERS = (
    ("", None, "root", None),
    ("Top of personal folders", "root", "ipmSubtree", None),
    ("Inbox", "ipmSubtree", "inbox", "IPF.Note"),
    ("Outbox", "ipmSubtree", "outbox", "IPF.Note"),
    ("Sent Items", "ipmSubtree", "sentItems", "IPF.Note"),
    ("Deleted Items", "ipmSubtree", "deletedItems", "IPF.Note"),
    ("Drafts", "ipmSubtree", "drafts", "IPF.Note"),
    ("Calendar", "ipmSubtree", "calendar", "IPF.Appointment"),
    ("Contacts", "ipmSubtree", "contacts", "IPF.Contact"),
)


def new_document(name, email, profile="Demo", personal=True):
    """A document with one profile, one store with the usual folders, and its owner in the address book."""
    document = {
        "format": "mapistore", "version": 1, "revision": 1, "nextId": 1, "namedIds": {}, "profiles": [], "stores": [],
        "addressBook": {"uid": new_uid(), "containers": [], "entries": []},
    }
    store = {"id": take_id(document), "name": email, "uid": new_uid(), "default": True, "personal": personal,
             "folders": [], "messages": []}
    roles = {}
    for shown, parent, role, folder_class in _FOLDERS:
        folder = {"id": take_id(document), "parent": roles.get(parent), "name": shown, "role": role}
        if folder_class:
            folder["class"] = folder_class
        roles[role] = folder["id"]
        store["folders"].append(folder)
    document["stores"].append(store)
    container = book_container(document, [GLOBAL_LIST])
    given, _, family = name.rpartition(" ")
    entry = add_entry(document, {
        "PR_DISPLAY_NAME_W": name, "PR_GIVEN_NAME_W": given or name, "PR_SURNAME_W": family if given else "",
        "PR_ADDRTYPE_W": "SMTP", "PR_EMAIL_ADDRESS_W": email, "PR_SMTP_ADDRESS_W": email,
        "PR_ACCOUNT_W": email.partition("@")[0]}, [container])
    document["profiles"].append({"name": profile, "default": True, "identity": entry["id"], "stores": [store["id"]]})
    return document


def new_uid():
    return uuid.uuid4().hex.upper()


def take_id(document):
    document["nextId"] += 1
    return document["nextId"] - 1


def owner_of(document):
    """(name, e-mail address) of the default profile's identity."""
    profiles = sorted(document["profiles"], key=lambda profile: not profile.get("default", False))
    number = profiles[0].get("identity") if profiles else None
    for entry in document["addressBook"]["entries"]:
        if entry["id"] == number:
            properties = entry["properties"]
            email = properties.get("PR_SMTP_ADDRESS_W") or properties.get("PR_EMAIL_ADDRESS_W") or ""
            return properties.get("PR_DISPLAY_NAME_W", email), email
    return "", ""


def default_store(document):
    stores = document["stores"]
    if not stores:
        raise Problem("the document has no store")
    return next((store for store in stores if store.get("default")), stores[0])


def find_folder(document, text):
    """(store, folder) by id, role, or name or path without regard to case. Raises Problem."""
    found = []
    for store in document["stores"]:
        by_id = {folder["id"]: folder for folder in store["folders"]}
        for folder in store["folders"]:
            if text == str(folder["id"]) or text == folder.get("role"):
                return store, folder
            if text.casefold() in (folder["name"].casefold(), folder_path(folder, by_id).casefold()):
                found.append((store, folder))
    if len(found) != 1:
        raise Problem(f"there is no folder {text!r}" if not found else
                      f"{len(found)} folders are called {text!r}; use the id or the path")
    return found[0]


def folder_path(folder, by_id):
    """Names below the IPM subtree, joined by "/"."""
    parts = []
    while folder is not None and folder.get("role") not in ("root", "ipmSubtree"):
        parts.append(folder["name"])
        folder = by_id.get(folder["parent"])
    return "/".join(reversed(parts))


def folder_for_class(store, message_class):
    role = next((role for head, role in MESSAGE_CLASS_FOLDERS if message_class.lower().startswith(head)), "inbox")
    for folder in store["folders"]:
        if folder.get("role") == role:
            return folder
    raise Problem(f"store {store['id']} has no folder with the role {role}; name one with --folder")


def make_folder(document, store, path, folder_class=None):
    """The folder of a path below the IPM subtree; the last step is made when it is missing."""
    parent = next((folder for folder in store["folders"] if folder.get("role") == "ipmSubtree"), None)
    if parent is None:
        raise Problem(f"store {store['id']} has no IPM subtree")
    steps = [step for step in path.split("/") if step]
    for number, step in enumerate(steps):
        below = [folder for folder in store["folders"] if folder["parent"] == parent["id"]
                 and folder["name"].casefold() == step.casefold()]
        if below:
            parent = below[0]
            continue
        if number != len(steps) - 1:
            raise Problem(f"there is no folder {'/'.join(steps[:number + 1])!r}")
        folder = {"id": take_id(document), "parent": parent["id"], "name": step}
        if folder_class:
            folder["class"] = folder_class
        store["folders"].append(folder)
        parent = folder
    return parent


def add_message(document, store, folder, message):
    """Gives the message its id and its place."""
    full = {"id": take_id(document), "folder": folder["id"], **message}
    store["messages"].append(full)
    return full


def replace_message(old, new):
    """Puts new content under the old id."""
    keep = {key: old[key] for key in ("id", "folder", "associated", "comment") if key in old}
    old.clear()
    old.update({**keep, **new})


def book_container(document, path):
    """The address book container of a path of names; what is missing is made, the first step as a global list."""
    book, parent = document["addressBook"], None
    for depth, name in enumerate(path):
        container = next((one for one in book["containers"] if one["parent"] == parent
                          and one["properties"].get("PR_DISPLAY_NAME_W", "").casefold() == name.casefold()), None)
        if container is None:
            flags = AB_RECIPIENTS | AB_UNMODIFIABLE
            container = {"id": take_id(document), "parent": parent,
                         "properties": {"PR_DISPLAY_NAME_W": name, "PR_CONTAINER_FLAGS": flags}}
            if depth == 0:
                container["properties"]["PR_DISPLAY_TYPE"] = DT_GLOBAL
            book["containers"].append(container)
            if parent is not None:
                above = next(one for one in book["containers"] if one["id"] == parent)["properties"]
                above["PR_CONTAINER_FLAGS"] = above.get("PR_CONTAINER_FLAGS", flags) | AB_SUBCONTAINERS
        parent = container["id"]
    return container


def add_entry(document, properties, containers):
    """An entry shown in these containers; one with the same address is changed instead."""
    address = properties.get("PR_SMTP_ADDRESS_W", "").casefold()
    properties = {key: value for key, value in properties.items() if value != ""}
    numbers = [container["id"] for container in containers]
    for entry in document["addressBook"]["entries"]:
        if address and entry["properties"].get("PR_SMTP_ADDRESS_W", "").casefold() == address:
            entry["properties"].update(properties)
            entry["containers"] += [number for number in numbers if number not in entry["containers"]]
            return entry
    entry = {"id": take_id(document), "containers": numbers, "properties": properties}
    document["addressBook"]["entries"].append(entry)
    return entry


def all_property_objects(value):
    """Every property object of a document."""
    for store in value["stores"]:
        yield store.get("properties", {})
        for folder in store["folders"]:
            yield folder.get("properties", {})
        for message in store["messages"]:
            yield from _message_properties(message)
    for one in value["addressBook"]["containers"] + value["addressBook"]["entries"]:
        yield one["properties"]


def _message_properties(message):
    yield message["properties"]
    yield from message.get("recipients", ())
    for attachment in message.get("attachments", ()):
        yield attachment["properties"]
        if "message" in attachment:
            yield from _message_properties(attachment["message"])


def name_properties(document):
    """Gives every named property of the document its identifier."""
    known = document.setdefault("namedIds", {})
    have = set()
    for key in known:
        set_text, _, name = key.partition(":")
        have.add(names.split_name(set_text, name))
    taken = {int(text, 16) for text in known.values()}
    free = (number for number in range(FIRST_NAMED_ID, LAST_NAMED_ID + 1) if number not in taken)
    seen = set()
    for properties in all_property_objects(document):
        for key in properties:
            if key in seen:
                continue
            seen.add(key)
            try:
                named = names.named_key(key)
            except names.NameProblem:
                continue  # the check before writing says so with its place
            if named and named[:2] not in have:
                have.add(named[:2])
                known[names.name_text(*named[:2])] = f"0x{next(free):04X}"
