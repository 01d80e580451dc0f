"""`dtstore add`, `change`, `remove`: single things of a store by hand."""

import json
import re
from datetime import datetime, timezone

from . import model, names, values, zones
from .appointments import utc_text
from .problem import Problem

KINDS = {"appointment": "IPM.Appointment", "contact": "IPM.Contact", "mail": "IPM.Note"}
_SHORT = {"subject": "PR_SUBJECT_W", "location": "PidLidLocation", "name": "PR_DISPLAY_NAME_W",
          "busy": "PidLidBusyStatus", "allday": "PidLidAppointmentSubType", "importance": "PR_IMPORTANCE",
          "phone": "PR_BUSINESS_TELEPHONE_NUMBER_W", "mobile": "PR_MOBILE_TELEPHONE_NUMBER_W",
          "company": "PR_COMPANY_NAME_W", "title": "PR_TITLE_W"}
_TIMES = {"start": "PidLidAppointmentStartWhole", "end": "PidLidAppointmentEndWhole"}


class Edit:
    """Turns KEY=VALUE words into changes of a property object. `zone` is what times without a zone mean."""

    def __init__(self, zone):
        self.zone = zone

    def apply(self, message, words):
        properties = message["properties"]
        for word in words:
            key, equals, text = word.partition("=")
            if not equals or not key:
                raise Problem(f"{word!r}: expected KEY=VALUE")
            if key == "class":
                message["class"] = text
            elif key in _TIMES:
                self._time(message, key, text)
            elif key == "body":
                properties["PR_BODY_W"] = text
                properties["PR_BODY_HTML_W"] = f"<html><body><p>{_escaped(text)}</p></body></html>"
            elif key == "email":
                self._email(properties, text)
            else:
                self._property(properties, _SHORT.get(key, key), text)
        self._settle(message)

    def _property(self, properties, key, text):
        try:
            identity, type_number = values.identity_of(key)
        except names.NameProblem as problem:
            raise Problem(f"{key}: {problem}") from None
        for other in list(properties):
            if other != key and other != "comment" and values.identity_of(other)[0] == identity:
                del properties[other]
        if text == "null":
            properties.pop(key, None)
            return
        value = self.value(type_number, text)
        problem = values.problem_of(type_number, value, [])
        if problem:
            raise Problem(f"{key}: {problem}")
        properties[key] = value

    def value(self, type_number, text):
        """The JSON value of a word: text for text types, otherwise JSON where it is some."""
        if type_number in (names.TYPES["PT_UNICODE"], names.TYPES["PT_STRING8"]) and not text.startswith('{"'):
            return text
        if type_number == names.TYPES["PT_SYSTIME"] and not text.startswith("{"):
            return self.moment(text)
        try:
            return json.loads(text)
        except ValueError:
            return text

    def moment(self, text):
        """A time as a document has it; without "Z" it is local to the zone."""
        match = re.fullmatch(r"(\d{4}-\d\d-\d\d)(?:[T ](\d\d:\d\d(?::\d\d)?))?(Z?)", text)
        if not match:
            raise Problem(f"{text!r}: expected a time such as 2026-11-20T09:00 or 2026-11-20T08:00:00Z")
        try:
            local = datetime.fromisoformat(f"{match[1]}T{match[2] or '00:00'}")
        except ValueError:
            raise Problem(f"{text!r}: there is no such time") from None
        return utc_text(local if match[3] else zones.to_utc(self.zone, local))

    def _time(self, message, key, text):
        if message["properties"].get("PidLidRecurring"):
            raise Problem("a series is moved by its pattern: change PidLidAppointmentRecur, or import it again")
        message["properties"][_TIMES[key]] = self.moment(text)

    @staticmethod
    def _email(properties, text):
        shown = properties.get("PR_DISPLAY_NAME_W", text)
        properties.update({
            "PidLidEmail1DisplayName": f"{shown} ({text})", "PidLidEmail1AddressType": "SMTP",
            "PidLidEmail1EmailAddress": text, "PidLidEmail1OriginalDisplayName": text})

    @staticmethod
    def _settle(message):
        """Values of a single appointment that follow from its times."""
        properties = message["properties"]
        if not message["class"].startswith("IPM.Appointment") or properties.get("PidLidRecurring"):
            return
        start, end = (properties.get(_TIMES[key]) for key in ("start", "end"))
        if isinstance(start, str) and isinstance(end, str):
            length = _parsed(end) - _parsed(start)
            if length.total_seconds() < 0:
                raise Problem("the end lies before the start")
            properties.update({"PidLidClipStart": start, "PidLidClipEnd": end,
                               "PidLidAppointmentDuration": int(length.total_seconds() // 60)})


def new_message(kind, words, edit):
    """A message of a kind with the usual values and those of the words."""
    message = {"class": KINDS[kind], "properties": {}}
    now = utc_text(datetime.now(timezone.utc).replace(tzinfo=None, microsecond=0))
    properties = message["properties"]
    if kind == "appointment":
        given = {word.partition("=")[0] for word in words}
        missing = {"start", "end"} - given
        if missing and not {_TIMES[key] for key in missing} <= given:
            raise Problem("an appointment needs start=TIME and end=TIME")
        uid = f"{model.new_uid()}@dtstore"
        properties.update({
            "PR_SUBJECT_W": "", "PR_BODY_W": "", "PR_BODY_HTML_W": "<html><body></body></html>",
            "PidLidLocation": "", "PidLidBusyStatus": 2, "PidLidAppointmentStateFlags": 0, "PidLidResponseStatus": 0,
            "PidLidAppointmentSubType": False, "PidLidRecurring": False,
            "PidLidGlobalObjectId": {"globalObjectId": uid}, "PidLidCleanGlobalObjectId": {"globalObjectId": uid}})
    elif kind == "mail":
        properties.update({
            "PR_SUBJECT_W": "", "PR_BODY_W": "", "PR_MESSAGE_FLAGS": 0, "PR_IMPORTANCE": 1,
            "PR_MESSAGE_DELIVERY_TIME": now, "PR_CLIENT_SUBMIT_TIME": now})
    else:
        properties["PidLidHasPicture"] = False
    properties.update({"PR_CREATION_TIME": now, "PR_LAST_MODIFICATION_TIME": now})
    edit.apply(message, words)
    if kind == "contact" and "PR_SUBJECT_W" not in properties:
        properties["PR_SUBJECT_W"] = properties.get("PR_DISPLAY_NAME_W", "")
    return message


def find(document, number):
    """(kind, object, the list that holds it) of an id. Raises Problem."""
    for store in document["stores"]:
        for kind, key in (("message", "messages"), ("folder", "folders")):
            for one in store[key]:
                if one["id"] == number:
                    return kind, one, store[key]
        if store["id"] == number:
            return "store", store, document["stores"]
    for kind, key in (("container", "containers"), ("entry", "entries")):
        for one in document["addressBook"][key]:
            if one["id"] == number:
                return kind, one, document["addressBook"][key]
    raise Problem(f"nothing has the id {number}")


def remove(document, number):
    """Takes a message, an entry, or an empty folder or container out. Gives its kind."""
    kind, one, holder = find(document, number)
    if kind == "store":
        raise Problem(f"{number} is a store and stays; remove its folder on the disk instead")
    if kind == "folder":
        store = next(store for store in document["stores"] if holder is store["folders"])
        if any(folder["parent"] == number for folder in holder) or any(
                message["folder"] == number for message in store["messages"]):
            raise Problem(f"folder {number} is not empty")
        if one["parent"] is None:
            raise Problem(f"folder {number} is the root of its store")
    if kind == "container":
        book = document["addressBook"]
        if any(other["parent"] == number for other in book["containers"]) or any(
                number in entry["containers"] for entry in book["entries"]):
            raise Problem(f"container {number} is not empty")
    holder.remove(one)
    if kind == "entry":
        for entry in holder:
            if number in entry.get("members", ()):
                entry["members"].remove(number)
    return kind


def _parsed(text):
    head, _, fraction = text[:-1].partition(".")
    moment = datetime.fromisoformat(head)
    return moment.replace(microsecond=int((fraction + "000000")[:6]))


def _escaped(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;").replace("\n", "<br>\r\n")
