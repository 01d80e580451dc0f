"""A recurrence pattern as the store keeps it: its description, its checks and its dates.

Dates are naive and local to the zone of the series. The dates of a pattern follow the public rules of
[MS-OXOCAL] 2.2.1.44.1; a day of month beyond the end of a month means that month's last day.
"""

import calendar
from dataclasses import dataclass, field
from datetime import date, datetime, timedelta
from typing import List, Optional, Tuple

DAYS = ("SU", "MO", "TU", "WE", "TH", "FR", "SA")
WORKDAYS = ("MO", "TU", "WE", "TH", "FR")
WEEKEND = ("SA", "SU")
FREQUENCIES = ("daily", "workdays", "weekly", "monthly", "yearly")
# What a mail client offers, and the calendar's format can hold in three decimal digits.
MOST = {"daily": 999, "workdays": 1, "weekly": 99, "monthly": 99, "yearly": 99}
EPOCH = date(1601, 1, 1)


class PatternProblem(Exception):
    """A pattern that cannot be; the text says why."""


@dataclass
class Changed:
    """One changed instance. Values that are None are those of the series."""

    original: datetime
    start: datetime
    end: datetime
    subject: Optional[str] = None
    meeting_type: Optional[int] = None
    reminder_minutes: Optional[int] = None
    reminder: Optional[bool] = None
    location: Optional[str] = None
    busy_status: Optional[int] = None
    attachments: Optional[int] = None
    all_day: Optional[bool] = None
    color: Optional[int] = None
    body: bool = False


@dataclass
class Pattern:
    frequency: str
    start: date
    start_minute: int
    end_minute: int
    interval: int = 1
    days: Tuple[str, ...] = ()
    week: Optional[int] = None
    day_of_month: Optional[int] = None
    first_day: str = "SU"
    count: Optional[int] = None
    last: Optional[date] = None  # date of the last instance; None only for a series without end
    deleted: List[date] = field(default_factory=list)
    changed: List[Changed] = field(default_factory=list)
    writer2: int = 0x3009

    def check(self):
        """Raises PatternProblem for what no pattern can be."""
        if self.frequency not in FREQUENCIES:
            raise PatternProblem(f"unknown frequency {self.frequency!r}")
        if not 1 <= self.interval <= MOST[self.frequency]:
            raise PatternProblem(f"interval {self.interval} is outside 1 to {MOST[self.frequency]}")
        if self.first_day not in DAYS or any(day not in DAYS for day in self.days):
            raise PatternProblem("a day is none of SU, MO, TU, WE, TH, FR, SA")
        if len(set(self.days)) != len(self.days):
            raise PatternProblem("a day stands twice")
        if self.frequency == "weekly" and not self.days:
            raise PatternProblem("a weekly pattern needs days")
        if self.frequency in ("monthly", "yearly"):
            self._check_month()
        elif self.week is not None or self.day_of_month is not None:
            raise PatternProblem(f"a {self.frequency} pattern has neither a week nor a day of the month")
        if self.frequency in ("daily", "workdays") and self.days:
            raise PatternProblem(f"a {self.frequency} pattern has no days")
        if not 0 <= self.start_minute < 1440:
            raise PatternProblem("the start minute is outside 0 to 1439")
        if self.end_minute < self.start_minute:
            raise PatternProblem("the end lies before the start")
        if self.last is not None and self.last < self.start:
            raise PatternProblem("the last instance lies before the first")
        if self.count is not None and (self.count < 1 or self.last is None):
            raise PatternProblem("a count must be above 0 and come with the date of the last instance")
        if not 0x3006 <= self.writer2 <= 0x3009:
            raise PatternProblem("the second writer version is outside 0x3006 to 0x3009")
        if EPOCH > self.start or self.start.year > 4500:
            raise PatternProblem("the start is outside the years 1601 to 4500")
        originals = set()
        for changed in self.changed:
            if changed.end < changed.start:
                raise PatternProblem("a changed instance ends before it starts")
            if changed.original.date() in originals:
                raise PatternProblem("two changed instances have the same original date")
            originals.add(changed.original.date())
        if originals & set(self.deleted) or len(set(self.deleted)) != len(self.deleted):
            raise PatternProblem("a date is left out twice")

    def _check_month(self):
        if (self.day_of_month is None) == (self.week is None):
            raise PatternProblem("needs either a day of the month or days with a week")
        if self.day_of_month is not None:
            if self.days or not 1 <= self.day_of_month <= 31:
                raise PatternProblem("the day of the month is outside 1 to 31, or days stand beside it")
            return
        if not 1 <= self.week <= 5:
            raise PatternProblem("the week is outside 1 to 5")
        if not nth_days_fit(self.days):
            raise PatternProblem("the days are neither one day, nor the working days, the weekend or all seven")

    def is_instance(self, day):
        """Whether the bare rule, without what is left out or changed, has an instance on this date."""
        if day < self.start or (self.last is not None and day > self.last):
            return False
        if self.frequency == "daily":
            return (day - self.start).days % self.interval == 0
        if self.frequency == "workdays":
            return day.weekday() < 5
        if self.frequency == "weekly":
            weeks = (week_start(day, self.first_day) - week_start(self.start, self.first_day)).days // 7
            return weeks % self.interval == 0 and day_code(day) in self.days
        months = (day.year - self.start.year) * 12 + day.month - self.start.month
        step = self.interval * (12 if self.frequency == "yearly" else 1)
        return months % step == 0 and day == self.day_in_month(day.year, day.month)

    def day_in_month(self, year, month):
        """The date that a monthly or yearly pattern means in one month."""
        length = calendar.monthrange(year, month)[1]
        if self.day_of_month is not None:
            return date(year, month, min(self.day_of_month, length))
        fitting = [date(year, month, n) for n in range(1, length + 1) if day_code(date(year, month, n)) in self.days]
        return fitting[-1] if self.week == 5 or self.week > len(fitting) else fitting[self.week - 1]

    def dates(self, until=None):
        """The dates of the bare rule, in order, up to `until` or the last instance."""
        ends = [day for day in (until, self.last) if day is not None]
        end = min(ends) if ends else date(4500, 8, 31)
        if self.frequency in ("monthly", "yearly"):
            step = self.interval * (12 if self.frequency == "yearly" else 1)
            month = self.start.year * 12 + self.start.month - 1
            while date(month // 12, month % 12 + 1, 1) <= end:
                day = self.day_in_month(month // 12, month % 12 + 1)
                if self.start <= day <= end:
                    yield day
                month += step
            return
        if self.frequency == "weekly":
            week = week_start(self.start, self.first_day)
            first = DAYS.index(self.first_day)
            offsets = sorted((DAYS.index(day) - first) % 7 for day in self.days)
            while week <= end:
                for offset in offsets:
                    if self.start <= week + timedelta(days=offset) <= end:
                        yield week + timedelta(days=offset)
                week += timedelta(days=7 * self.interval)
            return
        day = self.start
        step = timedelta(days=self.interval if self.frequency == "daily" else 1)
        while day <= end:
            if self.is_instance(day):
                yield day
            day += step

    def instances(self, until=None):
        """(start, end, changed or None) of every instance that stands, in order of start."""
        gone = set(self.deleted) | {changed.original.date() for changed in self.changed}
        found = [(changed.start, changed.end, changed) for changed in self.changed]
        for day in self.dates(until):
            if day not in gone:
                midnight = datetime(day.year, day.month, day.day)
                found.append((midnight + timedelta(minutes=self.start_minute),
                              midnight + timedelta(minutes=self.end_minute), None))
        return sorted(found, key=lambda instance: instance[:2])

    def days_mask(self):
        days = WORKDAYS if self.frequency == "workdays" else self.days
        return sum(1 << DAYS.index(day) for day in days)


def day_code(day):
    return DAYS[(day.weekday() + 1) % 7]


def week_start(day, first_day):
    return day - timedelta(days=(DAYS.index(day_code(day)) - DAYS.index(first_day)) % 7)


def nth_days_fit(days):
    """Whether a mail client can say "the n-th" of these days."""
    chosen = set(days)
    return len(chosen) == len(days) and (len(days) == 1 or chosen in (set(WORKDAYS), set(WEEKEND), set(DAYS)))


def minutes(value):
    """Whole minutes from 1601-01-01 00:00 to a local date or date and time."""
    if not isinstance(value, datetime):
        value = datetime(value.year, value.month, value.day)
    return int((value - datetime(1601, 1, 1)).total_seconds() // 60)


def from_minutes(count):
    return datetime(1601, 1, 1) + timedelta(minutes=count)


_NTH = {1: "first", 2: "second", 3: "third", 4: "fourth", 5: "last"}
_DAY_NAMES = dict(zip(DAYS, ("Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday")))


def sentence(pattern):
    """The rule as the text that a client keeps beside it, such as "every Monday from 09:00 to 10:00"."""
    step, many = pattern.interval, pattern.interval > 1
    if pattern.frequency == "daily":
        what = f"every {step} days" if many else "every day"
    elif pattern.frequency == "workdays":
        what = "every weekday"
    elif pattern.frequency == "weekly":
        first = DAYS.index(pattern.first_day)
        names = [_DAY_NAMES[day] for day in DAYS[first:] + DAYS[:first] if day in pattern.days]
        joined = names[0] if len(names) == 1 else ", ".join(names[:-1]) + " and " + names[-1]
        what = f"every {step} weeks on {joined}" if many else f"every {joined}"
    else:
        what = _month_sentence(pattern, step, many)
    begin, end = pattern.start_minute, pattern.end_minute % 1440
    when = "" if begin == 0 and end == 0 and pattern.end_minute else (
        f" from {begin // 60:02}:{begin % 60:02} to {end // 60:02}:{end % 60:02}")
    span = f" effective {pattern.start}"
    return what + span + (f" until {pattern.last}" if pattern.last else "") + when


def _month_sentence(pattern, step, many):
    if pattern.day_of_month is not None:
        which = f"day {pattern.day_of_month}"
    else:
        chosen = set(pattern.days)
        name = (_DAY_NAMES[pattern.days[0]] if len(chosen) == 1 else "weekday" if chosen == set(WORKDAYS)
                else "weekend day" if chosen == set(WEEKEND) else "day")
        which = f"the {_NTH[pattern.week]} {name}"
    if pattern.frequency == "monthly":
        return f"{which} of every {step} months" if many else f"{which} of every month"
    month = calendar.month_name[pattern.start.month]
    return f"{which} of {month} every {step} years" if many else f"{which} of {month} every year"
