"""Reads iCalendar files into plain events (RFC 5545), with python3-icalendar.

Times are naive and local to the event's zone. What cannot be read is noted by event.
"""

import io
import json
import re
from dataclasses import dataclass, field
from datetime import date, datetime, timedelta, timezone
from typing import Any, List, Optional, Tuple

import icalendar
from dateutil import tz as dateutil_tz

from . import ics_rules, names, values, zones
from .problem import Problem

# What the parsers of other people raise over files that are not what they expect.
PARSER_FAULTS = (ValueError, KeyError, IndexError, TypeError, AttributeError, OverflowError)
FIRST_YEAR, LAST_YEAR = 1602, 4499
TEXT_TYPES = (names.TYPES["PT_UNICODE"], names.TYPES["PT_STRING8"])


@dataclass
class Person:
    name: str
    email: str
    part_stat: str = "NEEDS-ACTION"
    role: str = "REQ-PARTICIPANT"
    kind: str = "INDIVIDUAL"


@dataclass
class Event:
    uid: str
    label: str  # how notes call it
    start: datetime
    end: datetime
    zone: Any
    all_day: bool
    summary: str = ""
    location: str = ""
    description: str = ""
    html: str = ""
    status: str = ""
    busy: int = 2
    sensitivity: int = 0
    importance: int = 1
    organizer: Optional[Person] = None
    attendees: List[Person] = field(default_factory=list)
    rules: List[dict] = field(default_factory=list)
    exclusion_rules: bool = False
    rdates: List[Tuple[datetime, Optional[datetime]]] = field(default_factory=list)
    exdates: List[datetime] = field(default_factory=list)
    exdays: List[date] = field(default_factory=list)
    recurrence_id: Optional[datetime] = None
    recurrence_id_zone: Any = None
    and_future: bool = False
    sequence: int = 0
    reminder: Optional[int] = None
    created: Optional[datetime] = None
    modified: Optional[datetime] = None
    named: List[Tuple[str, Any]] = field(default_factory=list)

    @property
    def duration(self):
        return self.end - self.start


class OddRule(icalendar.vRecur):
    """A rule by its text alone, for forms that the parser does not take. Raises ValueError."""

    def __init__(self, text):
        super().__init__()
        self.text = text
        for part in text.split(";"):
            name, _, values = part.upper().partition("=")
            if name == "UNTIL":
                self[name] = [icalendar.vDDDTypes.from_ical(values)]
            else:
                self[name] = [int(v) if v.lstrip("+-").isdigit() else v for v in values.split(",")]
        if "FREQ" not in self:
            raise ValueError("it has no frequency")

    def to_ical(self):
        return self.text.encode()


class Calendar:
    """One file's events; `zone` is what its floating and whole-day times mean."""

    def __init__(self, path, default_zone, note):
        self.path, self.note = path, note
        self.zone = default_zone
        self.own_zones = {}
        self.events = []

    def read(self, data, zone_is_given=False, step=lambda done, of: None):
        """The events of a file's bytes. step() hears of each component that was looked at."""
        text = decode_text(data, self.path, self.note)
        if "BEGIN:VCALENDAR" not in text.upper():
            raise Problem(f"{self.path}: is no iCalendar file (no BEGIN:VCALENDAR)")
        try:
            calendars = icalendar.Calendar.from_ical(text, multiple=True)
        except PARSER_FAULTS as error:
            raise Problem(f"{self.path}: cannot be read as iCalendar: {error}") from None
        for calendar in calendars:
            name = _text(calendar, "X-WR-TIMEZONE")
            if name and not zone_is_given and zones.find(name):
                self.zone = zones.find(name)
            for component in calendar.walk("VTIMEZONE"):
                self._own_zone(component)
            components = calendar.walk("VEVENT")
            for number, component in enumerate(components, 1):
                step(number, len(components))
                try:
                    event = self._event(component, number)
                except PARSER_FAULTS as error:
                    self.note(f"event {number} {_text(component, 'SUMMARY')[:40]!r}",
                              f"cannot be read and is left out ({error})")
                    continue
                if event:
                    self.events.append(event)
            for kind in ("VTODO", "VJOURNAL"):
                count = len(calendar.walk(kind))
                if count:
                    self.note("file", f"{count} of {kind} are no events and are left out")
        return self.events

    def _own_zone(self, component):
        name = _text(component, "TZID")
        if not name or zones.find(name):
            return
        try:
            text = component.to_ical().decode("utf-8").replace("\r\n", "\n")
            self.own_zones[name] = dateutil_tz.tzical(io.StringIO(text)).get(name)
        except PARSER_FAULTS as error:
            self.note("file", f"the zone {name!r} cannot be read ({error})")

    def _zone(self, name, label):
        zone = zones.find(name) or self.own_zones.get(name)
        if zone is None:
            self.note(label, f"the zone {name!r} is not known; {zones.name_of(self.zone)} is taken instead")
            return self.zone
        return zone

    def _event(self, component, number):
        summary = _text(component, "SUMMARY")
        label = f"event {number} {summary[:40]!r}"
        for name, error in component.errors:
            if name != "RRULE":
                self.note(label, f"{name} cannot be read and is left out ({error})")
        start = _first(component, "DTSTART")
        if start is None:
            self.note(label, "has no start and is left out")
            return None
        begin, zone, all_day = self._moment(start, start.dt, None, label)
        if not FIRST_YEAR <= begin.year <= LAST_YEAR:
            self.note(label, f"begins in the year {begin.year}, which no store can keep, and is left out")
            return None
        event = Event(uid=_text(component, "UID") or f"no-uid-{number}-{begin:%Y%m%dT%H%M%S}", label=label,
                      start=begin, end=begin, zone=zone, all_day=all_day, summary=summary)
        self._read_end(component, event)
        event.location = _text(component, "LOCATION")
        self._read_bodies(component, event)
        self._read_state(component, event)
        self._read_people(component, event)
        self._read_recurrence(component, event)
        for name in ("CREATED", "LAST-MODIFIED"):
            value = _first(component, name)
            if value is not None and isinstance(getattr(value, "dt", None), datetime):
                moment = value.dt if value.dt.tzinfo else value.dt.replace(tzinfo=timezone.utc)
                setattr(event, "created" if name == "CREATED" else "modified",
                        moment.astimezone(timezone.utc).replace(tzinfo=None))
        for value in _all(component, "X-DT-PROPERTY"):
            self._read_named(str(value.params.get("NAME", "")), _clean(str(value)), event)
        return event

    def _read_named(self, key, text, event):
        try:
            _, type_number = values.identity_of(key)
            value = json.loads(text) if type_number not in TEXT_TYPES else text
            fault = values.problem_of(type_number, value, [])
        except (names.NameProblem, ValueError) as problem:
            fault = problem
        if fault:
            self.note(event.label, f"the property {key!r} is left out ({fault})")
        else:
            event.named.append((key, value))

    def _moment(self, prop, value, zone, label):
        """(naive local time, its zone, whether it is a date). With `zone` the time is given in that zone."""
        if not isinstance(value, date):
            raise ValueError(f"{value} is no date")
        if not isinstance(value, datetime):
            return datetime(value.year, value.month, value.day), zone or self.zone, True
        name = str(prop.params.get("TZID", "")) if hasattr(prop, "params") else ""
        naive = value.replace(tzinfo=None)
        if name:
            own = self._zone(name, label)
        elif value.tzinfo is not None:
            own, naive = zones.UTC, value.astimezone(timezone.utc).replace(tzinfo=None)
        else:
            own = self.zone
        if zone is None or zone is own:
            return naive, own, False
        return naive.replace(tzinfo=own).astimezone(zone).replace(tzinfo=None), zone, False

    def _read_end(self, component, event):
        end, duration = _first(component, "DTEND"), _first(component, "DURATION")
        if end is not None:
            event.end, _, _ = self._moment(end, end.dt, event.zone, event.label)
        elif duration is not None and isinstance(duration.dt, timedelta):
            event.end = event.start + duration.dt
        elif event.all_day:
            event.end = event.start + timedelta(days=1)
        if event.end < event.start:
            self.note(event.label, "ends before it starts; it is kept without length")
            event.end = event.start
        if event.all_day and event.end == event.start:
            event.end += timedelta(days=1)

    def _read_bodies(self, component, event):
        event.description = _text(component, "DESCRIPTION")
        for name in ("X-ALT-DESC", "STYLED-DESCRIPTION"):
            for value in _all(component, name):
                if str(value.params.get("FMTTYPE", "text/html")).lower() == "text/html":
                    event.html = event.html or str(value)
        if "CATEGORIES" in component:
            self.note(event.label, "categories are left out")
        if "ATTACH" in component:
            self.note(event.label, "attachments are left out")

    def _read_state(self, component, event):
        event.status = _text(component, "STATUS").upper()
        event.sequence = _number(component, "SEQUENCE", 0)
        event.sensitivity = {"PRIVATE": 2, "CONFIDENTIAL": 3}.get(_text(component, "CLASS").upper(), 0)
        priority = _number(component, "PRIORITY", 0)
        event.importance = 1 if priority in (0, 5) else 2 if priority < 5 else 0
        kinds = {"FREE": 0, "TENTATIVE": 1, "BUSY": 2, "OOF": 3, "WORKINGELSEWHERE": 4}
        busy = kinds.get(_text(component, "X-MICROSOFT-CDO-BUSYSTATUS").upper())
        if busy is None:
            free = _text(component, "TRANSP").upper() == "TRANSPARENT"
            busy = 0 if free else 1 if event.status == "TENTATIVE" else 2
        event.busy = busy
        for alarm in component.walk("VALARM"):
            trigger = _first(alarm, "TRIGGER")
            if trigger is not None and isinstance(trigger.dt, timedelta) and trigger.dt <= timedelta(0):
                event.reminder = int(-trigger.dt.total_seconds() // 60)
                break

    def _read_people(self, component, event):
        organizer = _first(component, "ORGANIZER")
        if organizer is not None:
            event.organizer = _person(organizer)
        for value in _all(component, "ATTENDEE"):
            person = _person(value)
            if person.email or person.name:
                event.attendees.append(person)
            else:
                self.note(event.label, "an attendee without address and name is left out")

    def _read_recurrence(self, component, event):
        for rule in _all(component, "RRULE"):
            if rule not in event.rules:
                self._add_rule(rule, event)
        for name, error in component.errors:
            if name == "RRULE":
                self._read_odd_rule(str(error), event)
        event.exclusion_rules = "EXRULE" in component
        for value in _all(component, "EXDATE"):
            for one in value.dts:
                moment, _, is_date = self._moment(value, one.dt, event.zone, event.label)
                if is_date and not event.all_day:
                    event.exdays.append(moment.date())
                else:
                    event.exdates.append(moment)
        for value in _all(component, "RDATE"):
            for one in value.dts:
                self._read_rdate(value, one.dt, event)
        identifier = _first(component, "RECURRENCE-ID")
        if identifier is not None:
            event.recurrence_id, event.recurrence_id_zone, _ = self._moment(
                identifier, identifier.dt, None, event.label)
            event.and_future = str(identifier.params.get("RANGE", "")).upper() == "THISANDFUTURE"

    def _add_rule(self, rule, event):
        fault = ics_rules.fault_of(rule)
        if fault:
            text = ";".join(f"{name}={','.join(map(str, values))}" for name, values in rule.items())
            self.note(event.label, f"its rule {text!r} cannot be read and is left out ({fault})")
        else:
            event.rules.append(rule)

    def _read_odd_rule(self, error, event):
        """A rule that the parser refuses, such as BYDAY=20MO, may still have dates."""
        text = error.rpartition(": ")[2]
        try:
            self._add_rule(OddRule(text), event)
        except ValueError as problem:
            self.note(event.label, f"its rule {text!r} cannot be read and is left out ({problem})")

    def _read_rdate(self, value, one, event):
        if isinstance(one, tuple):
            begin, _, _ = self._moment(value, one[0], event.zone, event.label)
            if isinstance(one[1], timedelta):
                event.rdates.append((begin, begin + one[1]))
            else:
                event.rdates.append((begin, self._moment(value, one[1], event.zone, event.label)[0]))
        else:
            event.rdates.append((self._moment(value, one, event.zone, event.label)[0], None))


def decode_text(data, path, note):
    """Text of a file: UTF-8 with or without a mark, else Windows-1252 with a note."""
    data = data.replace(b"\0", b"")  # no text of a store holds one
    try:
        return data.decode("utf-8-sig")
    except UnicodeDecodeError:
        note("file", "is not UTF-8; it is read as Windows-1252")
        return data.decode("cp1252", "replace")


def _all(component, name):
    value = component.get(name)
    return [] if value is None else [one for one in value if one is not None] if isinstance(value, list) else [value]


def _first(component, name):
    """The property, or the first of several; a file may have only one of some, and has two all the same."""
    return next(iter(_all(component, name)), None)


def _clean(text):
    return text.replace("\0", "")


def _text(component, name):
    return _clean(str(_first(component, name) or ""))


def _number(component, name, default):
    try:
        return int(_text(component, name) or default)
    except ValueError:
        return default


def _person(value):
    params = value.params
    email = _clean(re.sub(r"^mailto:", "", str(value).strip(), flags=re.I))
    if "@" not in email and params.get("EMAIL"):
        email = str(params["EMAIL"])
    name = _clean(str(params.get("CN", ""))).strip().strip('"') or email
    return Person(name, email, str(params.get("PARTSTAT", "NEEDS-ACTION")).upper(),
                  str(params.get("ROLE", "REQ-PARTICIPANT")).upper(), str(params.get("CUTYPE", "INDIVIDUAL")).upper())
