"""Time zones: names as calendars write them, and the yearly rule that a store can keep of one.

A rule is found from the zone's own switches in one year and says, like the stored structure, only month,
weekday, which one in the month, and time of day.
"""

import functools
import struct
from dataclasses import dataclass
from datetime import date, datetime, timedelta, timezone
from typing import Optional, Tuple
from zoneinfo import ZoneInfo, ZoneInfoNotFoundError

from . import describe
from .pattern import DAYS, day_code
from .zone_names import ZONE_OF_WINDOWS, WINDOWS_OF_ZONE

UTC = timezone.utc


@dataclass(frozen=True)
class Switch:
    """The day and local time at which clocks change, by the clock that they showed before."""

    month: int
    week: int  # 1 to 4, 5 for the last
    day: str
    minute: int

    def date_in(self, year):
        first = date(year, self.month, 1)
        day = first + timedelta(days=(DAYS.index(self.day) - DAYS.index(day_code(first))) % 7 + 7 * (self.week - 1))
        while day.month != self.month:
            day -= timedelta(days=7)
        return day

    @functools.lru_cache(maxsize=None)
    def moment_in(self, year):
        day = self.date_in(year)
        return datetime(day.year, day.month, day.day) + timedelta(minutes=self.minute)


@dataclass(frozen=True)
class Rule:
    """Offsets are minutes to be added to UTC. Without daylight time both switches are None."""

    standard: int
    daylight: int
    to_standard: Optional[Switch] = None
    to_daylight: Optional[Switch] = None

    def offset_at(self, local):
        """The offset at a local time: of the two for a time that comes twice, the first; within the gap, the new one."""
        if self.to_standard is None:
            return self.standard
        to_daylight, to_standard = self.to_daylight.moment_in(local.year), self.to_standard.moment_in(local.year)
        if to_daylight < to_standard:
            summer = to_daylight <= local < to_standard
        else:
            summer = not to_standard <= local < to_daylight
        return self.daylight if summer else self.standard

    def to_utc(self, local):
        return local - timedelta(minutes=self.offset_at(local))

    def description(self):
        """The "timeZone" object of a document."""
        value = {"bias": -self.standard, "standardBias": 0, "daylightBias": self.standard - self.daylight}
        for key, switch in (("standardDate", self.to_standard), ("daylightDate", self.to_daylight)):
            if switch:
                value[key] = {"month": switch.month, "week": switch.week, "day": switch.day,
                              "time": f"{switch.minute // 60:02}:{switch.minute % 60:02}"}
        return value

    def to_bytes(self):
        return describe.zone_bytes(self.description())


def definition_bytes(rule, name, first_year):
    """The zone as PidLidAppointmentTimeZoneDefinitionRecur keeps it ([MS-OXOCAL] 2.2.1.41)."""
    text = name.encode("utf-16-le")
    header = struct.pack("<HH", 2, len(text) // 2) + text + struct.pack("<H", 1)
    flags = 0x0003  # the rule in effect, and the one that the series uses
    blob = rule.to_bytes()
    one = struct.pack("<BBHHH", 2, 1, 0x3E, flags, first_year) + bytes(14) + blob[:12] + blob[14:30] + blob[32:48]
    return struct.pack("<BBH", 2, 1, len(header)) + header + one


def _offset(zone, moment):
    return int(moment.astimezone(zone).utcoffset().total_seconds())


def _switches(zone, year):
    """(moment in UTC, offset before, offset after) in seconds, for each change in a year of standard local time."""
    start = datetime(year, 1, 1, tzinfo=UTC)
    found = []
    step = timedelta(days=1)
    for number in range(366 if year % 4 == 0 and (year % 100 or year % 400 == 0) else 365):
        low, high = start + number * step, start + (number + 1) * step
        if _offset(zone, low) == _offset(zone, high):
            continue
        before, after = _offset(zone, low), _offset(zone, high)
        while high - low > timedelta(seconds=1):
            middle = (low + (high - low) / 2).replace(microsecond=0)
            if _offset(zone, middle) == before:
                low = middle
            else:
                high = middle
        found.append((high, before, after))
    return found


def _candidates(local):
    """The switches that would name this local day: the n-th, and the last when it is the last."""
    week = (local.day - 1) // 7 + 1
    minute = local.hour * 60 + local.minute
    names = []
    if (local + timedelta(days=7)).month != local.month:
        names.append(Switch(local.month, 5, day_code(local.date()), minute))
    if week < 5:
        names.append(Switch(local.month, week, day_code(local.date()), minute))
    return names


def rules_of(zone, year) -> Tuple[Rule, ...]:
    """The rules that fit a zone's switches in one year, the likelier first; empty when none does."""
    switches = _switches(zone, year)
    winter = _offset(zone, datetime(year, 1, 1, tzinfo=UTC))
    if not switches:
        return (Rule(winter // 60, winter // 60),) if winter % 60 == 0 else ()
    if len(switches) != 2 or any(seconds % 60 for _, before, after in switches for seconds in (before, after)):
        return ()
    options = []
    for moment, before, after in switches:
        local = (moment + timedelta(seconds=before)).replace(tzinfo=None)
        options.append((after > before, before, after, _candidates(local)))
    ups = [option for option in options if option[0]]
    downs = [option for option in options if not option[0]]
    if len(ups) != 1 or len(downs) != 1 or ups[0][1] != downs[0][2] or ups[0][2] != downs[0][1]:
        return ()
    found = [Rule(ups[0][1] // 60, ups[0][2] // 60, down, up) for down in downs[0][3] for up in ups[0][3]]
    return tuple(sorted(found, key=lambda rule: -_years_fitting(zone, rule, year)))


def _years_fitting(zone, rule, year):
    """Over how many of the surrounding years the rule gives the zone's own switches."""
    return sum(
        all((rule.to_daylight.moment_in(y) if after > before else rule.to_standard.moment_in(y))
            == (moment + timedelta(seconds=before)).replace(tzinfo=None) for moment, before, after in _switches(zone, y))
        for y in range(year - 3, year + 8))


_rules = {}


def rule_for(zone, locals_):
    """The first rule that gives the zone's offset at each of the local times; None when there is none.

    Times in the gap of a switch do not count: a calendar has no agreed meaning for them.
    """
    locals_ = list(locals_)
    years = sorted({local.year for local in locals_})
    for year in years[:1] + years[-1:] + years[len(years) // 2:len(years) // 2 + 1]:
        if (zone, year) not in _rules:
            _rules[zone, year] = rules_of(zone, year)
        for rule in _rules[zone, year]:
            if all(is_gap(zone, local) or rule.offset_at(local) * 60 == offset_seconds(zone, local)
                   for local in locals_):
                return rule
    return None


def offset_seconds(zone, local):
    return int(local.replace(tzinfo=zone, fold=0).utcoffset().total_seconds())


def is_gap(zone, local):
    """Whether clocks of the zone never show this local time."""
    there = local.replace(tzinfo=zone)
    return there.astimezone(UTC).astimezone(zone).replace(tzinfo=None) != local


def to_utc(zone, local):
    """A naive local time as naive UTC; of a time that comes twice the first is meant."""
    return local.replace(tzinfo=zone, fold=0).astimezone(UTC).replace(tzinfo=None)


def find(name):
    """The zone of a usual name: an Olson name, one behind a path, or a Windows name. None when unknown."""
    if not name:
        return None
    name = name.strip().strip('"')
    if name.upper() in ("UTC", "GMT", "Z", "ETC/UTC"):
        return UTC
    parts = [part for part in name.split("/") if part]
    for count in (len(parts), 3, 2, 1):
        zone = _olson("/".join(parts[-count:])) if 0 < count <= len(parts) else None
        if zone and (count > 1 or count == len(parts)):
            return zone
    key = name.casefold()
    return _olson(ZONE_OF_WINDOWS[key]) if key in ZONE_OF_WINDOWS else None


def _olson(name):
    try:
        return ZoneInfo(name)
    except (ZoneInfoNotFoundError, ValueError, OSError):
        return None


def name_of(zone):
    """The name by which a mail client knows the zone."""
    key = getattr(zone, "key", None)
    return "UTC" if zone is UTC else WINDOWS_OF_ZONE.get(key, key or "Customized Time Zone")
