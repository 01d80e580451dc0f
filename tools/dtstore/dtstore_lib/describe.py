"""The readable forms of binary values in a document, and the bytes that they stand for.

docs/mapistore.md, "Zones", "Recurrence" and "Objects that stand for binary values". The mail library
encodes the same descriptions; tests/data/recurrence-encoding holds the vectors for both.
"""

import re
import struct
from datetime import date, datetime

from . import blobs
from .pattern import DAYS, Changed, Pattern, PatternProblem

_CHANGED = {  # key in the document: attribute, kind
    "subject": ("subject", str), "meetingType": ("meeting_type", int),
    "reminderMinutes": ("reminder_minutes", int), "reminder": ("reminder", bool),
    "location": ("location", str), "busyStatus": ("busy_status", int), "attachments": ("attachments", int),
    "allDay": ("all_day", bool), "color": ("color", int), "body": ("body", bool),
}
ONE_OFF_UID = bytes.fromhex("812B1FA4BEA310199D6E00DD010F5402")
OBJECT_ID_HEAD = bytes.fromhex("040000008200E00074C5B7101A82E008")


class DescriptionProblem(Exception):
    """A description that does not follow the page; the text says where and why."""


def _need(ok, text):
    if not ok:
        raise DescriptionProblem(text)


def _keys(value, where, required, optional=()):
    _need(isinstance(value, dict), f"{where}: expected an object")
    for key in required:
        _need(key in value, f"{where}: {key} is missing")
    for key in value:
        _need(key in required or key in optional or key == "comment", f"{where}: unknown key {key!r}")


def _whole(value, where, low, high):
    _need(isinstance(value, int) and not isinstance(value, bool) and low <= value <= high,
          f"{where}: expected a whole number from {low} to {high}")
    return value


def _date(text, where):
    try:
        _need(isinstance(text, str) and re.fullmatch(r"\d{4}-\d\d-\d\d", text), f"{where}: expected a date")
        return date.fromisoformat(text)
    except ValueError:
        raise DescriptionProblem(f"{where}: no such date") from None


def _moment(text, where):
    try:
        _need(isinstance(text, str) and re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d", text),
              f"{where}: expected a date and time such as 2026-11-02T09:00")
        return datetime.fromisoformat(text)
    except ValueError:
        raise DescriptionProblem(f"{where}: no such date and time") from None


def pattern_of(value):
    """The checked pattern of a "recurrence" object."""
    _keys(value, "recurrence", ("frequency", "start", "startMinute", "endMinute", "end"),
          ("interval", "days", "week", "dayOfMonth", "firstDayOfWeek", "deleted", "modified", "writerVersion2"))
    days = value.get("days", [])
    _need(isinstance(days, list), "days: expected an array")
    version = value.get("writerVersion2", "0x3009")
    _need(version in ("0x3006", "0x3007", "0x3008", "0x3009"), "writerVersion2: expected 0x3006 to 0x3009")
    pattern = Pattern(
        frequency=value["frequency"], start=_date(value["start"], "start"), days=tuple(days),
        start_minute=_whole(value["startMinute"], "startMinute", 0, 1439),
        end_minute=_whole(value["endMinute"], "endMinute", 0, 0xFFFFFFF),
        interval=_whole(value.get("interval", 1), "interval", 1, 999),
        first_day=value.get("firstDayOfWeek", "SU"), writer2=int(version, 16))
    if "week" in value:
        pattern.week = _whole(value["week"], "week", 1, 5)
    if "dayOfMonth" in value:
        pattern.day_of_month = _whole(value["dayOfMonth"], "dayOfMonth", 1, 31)
    _read_end(value["end"], pattern)
    for name, attribute, reader in (("deleted", "deleted", _date), ("modified", "changed", _read_changed)):
        entries = value.get(name, [])
        _need(isinstance(entries, list), f"{name}: expected an array")
        setattr(pattern, attribute, [reader(entry, f"{name}[{i}]") for i, entry in enumerate(entries)])
    try:
        pattern.check()
    except PatternProblem as problem:
        raise DescriptionProblem(str(problem)) from None
    return pattern


def _read_end(end, pattern):
    if end == "never":
        return
    _need(isinstance(end, dict), 'end: expected "never" or an object')
    if "until" in end:
        _keys(end, "end", ("until",))
        pattern.last = _date(end["until"], "end.until")
    else:
        _keys(end, "end", ("count", "last"))
        pattern.count = _whole(end["count"], "end.count", 1, 0xFFFFFFFF)
        pattern.last = _date(end["last"], "end.last")


def _read_changed(value, where):
    _keys(value, where, ("original", "start", "end"), _CHANGED)
    changed = Changed(*(_moment(value[key], f"{where}.{key}") for key in ("original", "start", "end")))
    for key, (attribute, kind) in _CHANGED.items():
        if key in value:
            _need(type(value[key]) is kind, f"{where}.{key}: expected {kind.__name__}")
            if kind is int:
                _whole(value[key], f"{where}.{key}", 0, 0xFFFFFFFF)
            setattr(changed, attribute, value[key])
    return changed


def describe_pattern(pattern):
    """The "recurrence" object of a pattern: pattern_of() of it gives the pattern back."""
    value = {"frequency": pattern.frequency}
    if pattern.interval != 1:
        value["interval"] = pattern.interval
    if pattern.days:
        value["days"] = list(pattern.days)
    if pattern.week is not None:
        value["week"] = pattern.week
    if pattern.day_of_month is not None:
        value["dayOfMonth"] = pattern.day_of_month
    if pattern.first_day != "SU":
        value["firstDayOfWeek"] = pattern.first_day
    value.update(start=str(pattern.start), startMinute=pattern.start_minute, endMinute=pattern.end_minute)
    if pattern.last is None:
        value["end"] = "never"
    elif pattern.count is not None:
        value["end"] = {"count": pattern.count, "last": str(pattern.last)}
    else:
        value["end"] = {"until": str(pattern.last)}
    if pattern.deleted:
        value["deleted"] = [str(day) for day in sorted(pattern.deleted)]
    if pattern.changed:
        value["modified"] = [_describe_changed(one) for one in pattern.changed]
    if pattern.writer2 != 0x3009:
        value["writerVersion2"] = f"0x{pattern.writer2:04X}"
    return value


def _describe_changed(one):
    value = {key: getattr(one, key).isoformat(timespec="minutes") for key in ("original", "start", "end")}
    for key, (attribute, kind) in _CHANGED.items():
        held = getattr(one, attribute)
        if held is not None and not (key == "body" and not held):
            value[key] = kind(held)
    return value


def recurrence_bytes(value):
    return blobs.encode(pattern_of(value))


def zone_bytes(value):
    """The 48 bytes of a "timeZone" object."""
    _keys(value, "timeZone", ("bias",), ("standardBias", "daylightBias", "standardDate", "daylightDate"))
    _need(("standardDate" in value) == ("daylightDate" in value), "timeZone: one date without the other")
    biases = [_whole(value.get(key, 0), key, -1440, 1440) for key in ("bias", "standardBias", "daylightBias")]
    dates = [_zone_date(value[key], key) if key in value else bytes(16) for key in ("standardDate", "daylightDate")]
    return struct.pack("<iii", *biases) + bytes(2) + dates[0] + bytes(2) + dates[1]


def _zone_date(value, where):
    _keys(value, where, ("month", "week", "day", "time"))
    _need(value["day"] in DAYS, f"{where}.day: expected SU to SA")
    time = value["time"]
    _need(isinstance(time, str) and re.fullmatch(r"([01]\d|2[0-3]):[0-5]\d", time), f"{where}.time: expected HH:MM")
    return struct.pack("<8H", 0, _whole(value["month"], f"{where}.month", 1, 12), DAYS.index(value["day"]),
                       _whole(value["week"], f"{where}.week", 1, 5), int(time[:2]), int(time[3:]), 0, 0)


def describe_zone(data):
    """The "timeZone" object of 48 bytes; None when they hold what the object cannot say."""
    if len(data) != 48:
        return None
    value = dict(zip(("bias", "standardBias", "daylightBias"), struct.unpack_from("<iii", data)))
    for key, offset in (("standardDate", 14), ("daylightDate", 32)):
        year, month, day, week, hour, minute, second, fraction = struct.unpack_from("<8H", data, offset)
        if month and not (year or second or fraction) and day < 7 and hour < 24 and minute < 60:
            value[key] = {"month": month, "week": week, "day": DAYS[day], "time": f"{hour:02}:{minute:02}"}
    try:
        return value if zone_bytes(value) == data else None
    except DescriptionProblem:
        return None


def one_off_bytes(value):
    """The wide one-off entry identifier of a "oneOff" object ([MS-OXCDATA] 2.2.5.1)."""
    _keys(value, "oneOff", ("name", "type", "address"))
    for key in ("name", "type", "address"):
        _need(isinstance(value[key], str) and "\0" not in value[key], f"oneOff.{key}: expected text")
    texts = "".join(value[key] + "\0" for key in ("name", "type", "address")).encode("utf-16-le")
    return bytes(4) + ONE_OFF_UID + struct.pack("<HH", 0, 0x9001) + texts


def global_object_id_bytes(uid):
    """PidLidGlobalObjectId of an event identifier: the client's own form is passed on as it is."""
    _need(isinstance(uid, str) and uid, "globalObjectId: expected text")
    if re.fullmatch(r"[0-9A-Fa-f]{80,}", uid) and len(uid) % 2 == 0 and uid.upper().startswith(OBJECT_ID_HEAD.hex().upper()):
        return bytes.fromhex(uid)
    data = b"vCal-Uid" + struct.pack("<I", 1) + uid.encode("utf-8") + b"\0"
    return OBJECT_ID_HEAD + bytes(4 + 8 + 8) + struct.pack("<I", len(data)) + data


# Kinds of objects that an entry identifier can name, with the object type in its byte 21.
ENTRY_KINDS = {"store": 1, "folder": 3, "container": 4, "message": 5, "entry": 6}


def entry_id_bytes(kind, uid, number, dist_list=False, table_form=False):
    """docs/mapistore.md, "Entry identifiers". `uid` is the hexadecimal text of the store or book."""
    object_type = 8 if kind == "entry" and dist_list else ENTRY_KINDS[kind]
    head = bytes((0x80 if table_form else 0, 0, 0, 0))
    return head + bytes.fromhex(uid) + struct.pack("<BBHQ", 1, object_type, 0, number)
