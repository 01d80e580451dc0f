"""Random recurring events of every rule form, and what they mean by python3-dateutil.

The expected instances are worked out from the rule text alone; nothing of dtstore takes part.
"""

import random
from dataclasses import dataclass, field
from datetime import datetime, timedelta, timezone
from zoneinfo import ZoneInfo

from dateutil.rrule import rrulestr

DAYS = ("MO", "TU", "WE", "TH", "FR", "SA", "SU")
WORK, WEEKEND = "MO,TU,WE,TH,FR", "SA,SU"
POSITIONS = (1, 2, 3, 4, -1)
# Zones whose clocks change on Sundays, in both hemispheres, with whole and half hours, and some that never change.
ZONES = ("Europe/Berlin", "Europe/London", "America/New_York", "America/Los_Angeles", "Australia/Sydney",
         "Pacific/Auckland", "Asia/Kolkata", "Asia/Tokyo", "America/Sao_Paulo", "Australia/Adelaide", "Etc/UTC")
# No event begins or ends in these hours: some zone's clocks skip or repeat times in them.
FIRST_MINUTE, LAST_MINUTE = 5 * 60, 23 * 60



def _days(rng):
    chosen = set(rng.sample(DAYS, rng.randint(1, 6)))
    return ",".join(day for day in DAYS if day in chosen)


# name: the rule's text for a day on which a series may begin
FORMS = {
    "daily": lambda rng, day: f"FREQ=DAILY;INTERVAL={rng.randint(1, 6)}",
    "workdays": lambda rng, day: f"FREQ=DAILY;BYDAY={WORK}",
    "daily on some days": lambda rng, day: f"FREQ=DAILY;BYDAY={_days(rng)}",
    "weekly": lambda rng, day: f"FREQ=WEEKLY;BYDAY={_days(rng)};WKST={rng.choice(DAYS)}",
    "every few weeks": lambda rng, day: f"FREQ=WEEKLY;INTERVAL={rng.randint(2, 4)};BYDAY={_days(rng)};WKST=SU",
    "weekly without days": lambda rng, day: f"FREQ=WEEKLY;INTERVAL={rng.randint(1, 3)}",
    "monthly by day": lambda rng, day: f"FREQ=MONTHLY;INTERVAL={rng.randint(1, 4)};BYMONTHDAY={rng.randint(1, 28)}",
    "monthly on the last day": lambda rng, day: f"FREQ=MONTHLY;INTERVAL={rng.randint(1, 3)};BYMONTHDAY=-1",
    "monthly without day": lambda rng, day: f"FREQ=MONTHLY;INTERVAL={rng.randint(1, 3)}",
    "monthly by numbered weekday":
        lambda rng, day: f"FREQ=MONTHLY;INTERVAL={rng.randint(1, 3)};BYDAY={rng.choice(POSITIONS)}{rng.choice(DAYS)}",
    "monthly by weekday and position":
        lambda rng, day: f"FREQ=MONTHLY;BYDAY={rng.choice(DAYS)};BYSETPOS={rng.choice(POSITIONS)}",
    "monthly by working day":
        lambda rng, day: f"FREQ=MONTHLY;INTERVAL={rng.randint(1, 2)};BYDAY={WORK};BYSETPOS={rng.choice(POSITIONS)}",
    "monthly by weekend day": lambda rng, day: f"FREQ=MONTHLY;BYDAY={WEEKEND};BYSETPOS={rng.choice(POSITIONS)}",
    "monthly by any day":
        lambda rng, day: f"FREQ=MONTHLY;BYDAY={WORK},{WEEKEND};BYSETPOS={rng.choice(POSITIONS)}",
    "monthly by weekday within seven days": lambda rng, day: (
        lambda week: f"FREQ=MONTHLY;BYDAY={rng.choice(DAYS)};BYMONTHDAY="
        + ",".join(str(n) for n in range(week * 7 - 6, week * 7 + 1)))(rng.randint(1, 4)),
    "yearly": lambda rng, day: f"FREQ=YEARLY;INTERVAL={rng.randint(1, 3)}",
    "yearly by month and day":
        lambda rng, day: f"FREQ=YEARLY;BYMONTH={day.month};BYMONTHDAY={rng.randint(1, 28)}",
    "yearly by numbered weekday":
        lambda rng, day: f"FREQ=YEARLY;BYMONTH={day.month};BYDAY={rng.choice(POSITIONS)}{rng.choice(DAYS)}",
    "yearly by weekend day":
        lambda rng, day: f"FREQ=YEARLY;BYMONTH={day.month};BYDAY={WEEKEND};BYSETPOS={rng.choice(POSITIONS)}",
    "yearly by any day":
        lambda rng, day: f"FREQ=YEARLY;BYMONTH={day.month};BYDAY={WORK},{WEEKEND};BYSETPOS={rng.choice(POSITIONS)}",
    "yearly by the last working day":
        lambda rng, day: f"FREQ=YEARLY;BYMONTH={day.month};BYDAY={WORK};BYSETPOS=-1",
    "yearly in two months": lambda rng, day: (
        f"FREQ=YEARLY;BYMONTH={','.join(map(str, sorted((day.month, (day.month + 5) % 12 + 1))))};BYMONTHDAY=10"),
    # The server counts calendar days from the first working day here, so it is left out of comparisons with it.
    "yearly by working day":
        lambda rng, day: f"FREQ=YEARLY;BYMONTH={day.month};BYDAY={WORK};BYSETPOS={rng.randint(1, 4)}",
    # The server's weeks begin on Sunday, whatever the pattern says.
    "every few weeks that begin on another day": lambda rng, day: (
        f"FREQ=WEEKLY;INTERVAL={rng.randint(2, 4)};BYDAY={_days(rng)};WKST={rng.choice(DAYS[:-1])}"),
}
SERVER_DIFFERS = ("yearly by working day", "every few weeks that begin on another day")


@dataclass
class Moved:
    original: datetime
    start: datetime
    end: datetime
    subject: str
    location: str


@dataclass
class Series:
    uid: str
    form: str
    rule: str
    zone: str
    start: datetime
    length: timedelta
    subject: str
    location: str
    all_day: bool = False
    gone: list = field(default_factory=list)
    moved: list = field(default_factory=list)

    def starts(self, until=None):
        """Local starts of the bare rule, by dateutil alone."""
        found = []
        for moment in rrulestr(self.rule, dtstart=self.start):
            if (until is not None and moment > until) or len(found) >= 20000:
                break
            found.append(moment)
        return found

    def instances(self, until):
        """(start, end) in UTC, subject, location of what stands with a rule's date up to `until` (local)."""
        taken = {one.original for one in self.moved} | set(self.gone)
        found = [(self.utc(moment), self.utc(moment + self.length), self.subject, self.location)
                 for moment in self.starts(until) if moment not in taken]
        found += [(self.utc(one.start), self.utc(one.end), one.subject, one.location) for one in self.moved]
        return sorted(found)

    def utc(self, moment):
        return moment.replace(tzinfo=ZoneInfo(self.zone)).astimezone(timezone.utc).replace(tzinfo=None)

    def to_ics(self):
        lines = ["BEGIN:VEVENT", f"UID:{self.uid}", f"SUMMARY:{self.subject}", f"LOCATION:{self.location}"]
        lines += [self._time("DTSTART", self.start), self._time("DTEND", self.start + self.length), f"RRULE:{self._rule()}"]
        lines += [self._time("EXDATE", moment) for moment in self.gone]
        lines.append("END:VEVENT")
        for one in self.moved:
            lines += ["BEGIN:VEVENT", f"UID:{self.uid}", self._time("RECURRENCE-ID", one.original),
                      f"SUMMARY:{one.subject}", f"LOCATION:{one.location}", self._time("DTSTART", one.start),
                      self._time("DTEND", one.end), "END:VEVENT"]
        return "".join(line + "\r\n" for line in lines)

    def _rule(self):
        """The rule with its end in the form that a file has it: UTC, or a date for whole days."""
        head, found, until = self.rule.partition(";UNTIL=")
        if not found:
            return self.rule
        moment = datetime.strptime(until, "%Y%m%dT%H%M%S")
        return f"{head};UNTIL=" + (f"{moment:%Y%m%d}" if self.all_day else f"{self.utc(moment):%Y%m%dT%H%M%SZ}")

    def _time(self, name, moment):
        if self.all_day:
            return f"{name};VALUE=DATE:{moment:%Y%m%d}"
        if self.zone == "Etc/UTC":
            return f"{name}:{moment:%Y%m%dT%H%M%SZ}"
        return f"{name};TZID={self.zone}:{moment:%Y%m%dT%H%M%S}"


def make_series(rng, number, first, last, forms=None, exceptions=True, whole_day_zone="Europe/Berlin"):
    """A random series whose start, and whose end where it has one, lie between two dates."""
    while True:
        form = rng.choice(forms or tuple(FORMS))
        day = first + timedelta(days=rng.randrange(max(1, (last - first).days // 2)))
        all_day = rng.random() < 0.1
        begin = 0 if all_day else 5 * rng.randrange(FIRST_MINUTE // 5, LAST_MINUTE // 5 - 6)
        length = timedelta(days=rng.randint(1, 2)) if all_day else timedelta(
            minutes=5 * rng.randint(1, (LAST_MINUTE - begin) // 5))
        moment = datetime(day.year, day.month, day.day) + timedelta(minutes=begin)
        rule = FORMS[form](rng, day)
        start = next(iter(rrulestr(rule, dtstart=moment)))
        if start >= last or (start.day > 28 and form in ("monthly without day", "yearly")):
            continue
        series = Series(f"series-{number}@forms.example", form, rule, whole_day_zone if all_day else rng.choice(ZONES),
                        start, length, f"Series {number} {form}", f"Room {number % 40}", all_day)
        kind = rng.choice(("count", "until", "never"))
        if kind == "count":
            series.rule += f";COUNT={rng.randint(1, 40)}"
        elif kind == "until":
            end = start + timedelta(days=rng.randint(0, 500), minutes=rng.choice((-1, 0, 1)))
            series.rule += f";UNTIL={max(end, start):%Y%m%dT%H%M%S}"
        if exceptions:
            _add_exceptions(rng, series, last)
        return series


def _add_exceptions(rng, series, last):
    starts = series.starts(last)
    chosen = rng.sample(starts, min(len(starts) - 1, rng.choice((0, 0, 1, 2, 4)))) if len(starts) > 1 else []
    for moment in sorted(chosen):
        kind = rng.choice(("gone", "moved", "renamed"))
        if kind == "gone":
            series.gone.append(moment)
        else:
            shift = timedelta(days=rng.randint(-3, 3)) if kind == "moved" else timedelta(0)
            subject = series.subject if kind == "moved" else series.subject + " ändert sich 🗓"
            place = series.location if rng.random() < 0.5 else "Elsewhere"
            start = moment + shift
            series.moved.append(Moved(moment, start, start + series.length, subject, place))


def calendar_text(series):
    return ("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//forms.example//series//EN\r\n"
            + "".join(one.to_ics() for one in series) + "END:VCALENDAR\r\n")


def seeded(seed):
    return random.Random(seed)
