"""`dtstore show`: what a store holds, for people."""

import json

from . import blobs, describe, model
from .editing import find
from .words import counted


def overview(document):
    """Lines about profiles, stores, folders and the address book."""
    lines = []
    for profile in document["profiles"]:
        mark = " (default)" if profile.get("default") else ""
        lines.append(f"profile {profile['name']!r}{mark}: stores {', '.join(map(str, profile['stores']))}")
    name, email = model.owner_of(document)
    lines.append(f"owner {name!r} <{email}>")
    for store in document["stores"]:
        kind = "personal" if store.get("personal") else "not personal"
        lines.append(f"store {store['id']} {store['name']!r} ({kind}): {counted(len(store['messages']), 'message')}")
        counts = {}
        for message in store["messages"]:
            counts[message["folder"]] = counts.get(message["folder"], 0) + 1
        lines += _tree(store["folders"], None, 1, lambda folder: _folder_line(folder, counts))
    book = document["addressBook"]
    lines.append(f"address book: {counted(len(book['entries']), 'entry', 'entries')}")
    shown = {}
    for entry in book["entries"]:
        for number in entry["containers"]:
            shown[number] = shown.get(number, 0) + 1
    lines += _tree(book["containers"], None, 1, lambda one: (
        f"{one['id']} {one['properties'].get('PR_DISPLAY_NAME_W', '')!r}: {counted(shown.get(one['id'], 0), 'entry', 'entries')}"))
    return lines


def _folder_line(folder, counts):
    facts = [folder[key] for key in ("role", "class") if key in folder] + (["hidden"] if folder.get("hidden") else [])
    return f"{folder['id']} {folder['name']!r} ({', '.join(facts)}): {counted(counts.get(folder['id'], 0), 'message')}"


def _tree(nodes, parent, depth, line):
    lines = []
    for node in nodes:
        if node["parent"] == parent:
            lines.append("  " * depth + line(node))
            lines += _tree(nodes, node["id"], depth + 1, line)
    return lines


def folder_lines(store, folder):
    """A line for each message of a folder: id, what matters of its kind, subject."""
    lines = []
    for message in store["messages"]:
        if message["folder"] != folder["id"]:
            continue
        properties = message["properties"]
        when = properties.get("PidLidAppointmentStartWhole") or properties.get("PR_MESSAGE_DELIVERY_TIME") or ""
        repeat = " recurring" if properties.get("PidLidRecurring") else ""
        what = properties.get("PR_SUBJECT_W") or properties.get("PR_DISPLAY_NAME_W") or ""
        lines.append(f"{message['id']:>6}  {when:<20}  {message['class']:<16}{repeat}  {what if isinstance(what, str) else ''}")
    return lines


def object_text(document, number):
    """One object as JSON, with what its binary values say in place of their bytes."""
    kind, one, _ = find(document, number)
    if kind == "store":
        one = {key: value for key, value in one.items() if key not in ("folders", "messages")}
    return json.dumps(readable(one), indent=1, ensure_ascii=False)


def readable(value):
    if isinstance(value, list):
        return [readable(one) for one in value]
    if not isinstance(value, dict):
        return value
    return {key: _readable_value(key, inner) for key, inner in value.items()}


def _readable_value(key, value):
    if isinstance(value, str) and value and key in ("PidLidAppointmentRecur", "PidLidTimeZoneStruct"):
        try:
            if key == "PidLidTimeZoneStruct":
                zone = describe.describe_zone(bytes.fromhex(value))
                return {"timeZone": zone} if zone else value
            return {"recurrence": describe.describe_pattern(blobs.decode(bytes.fromhex(value)))}
        except (blobs.BlobProblem, ValueError, OverflowError):
            return value
    return readable(value)


def show(document, what):
    """The text that `show` prints."""
    if what is None:
        return "\n".join(overview(document))
    if what.isdigit():
        kind, one, _ = find(document, int(what))
        if kind != "folder":
            return object_text(document, int(what))
    store, folder = model.find_folder(document, what)
    return "\n".join(folder_lines(store, folder)) or "the folder is empty"

