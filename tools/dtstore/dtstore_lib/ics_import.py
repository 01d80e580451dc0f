"""The road from an iCalendar file to appointment messages: series where a pattern can hold them,
single messages within a horizon where it cannot, and a note for every difference."""

import dataclasses
from datetime import datetime, timedelta

from . import zones
from .appointments import Appointments
from .ics_read import Calendar
from .ics_rules import Inexpressible, own_dates, pattern_of, zone_rule
from .pattern import PatternProblem
from .words import counted


MOST_FOLLOWED = 1_000_000  # instances of one rule that are looked at on the way to the horizon


@dataclasses.dataclass
class Horizon:
    """Where instances that no pattern holds become single messages; both ends inclusive dates."""

    first: datetime
    last: datetime
    most: int = 2000  # messages of one event


@dataclasses.dataclass
class Counts:
    events: int = 0
    singles: int = 0
    series: int = 0
    changed: int = 0
    left_out: int = 0   # instances that exclusions take away
    expanded: int = 0   # events kept as single messages
    pieces: int = 0     # and how many messages that made
    extras: int = 0     # single messages beside a series

    def text(self):
        parts = [counted(self.events, "event"), f"{self.singles} single", f"{self.series} series"]
        if self.changed or self.left_out:
            parts.append(f"{self.changed} changed and {self.left_out} left-out instances")
        if self.expanded:
            parts.append(f"{counted(self.expanded, 'recurring event')} as {counted(self.pieces, 'single message')}")
        if self.extras:
            parts.append(f"{counted(self.extras, 'single message')} beside their series")
        return ", ".join(parts)


class CalendarImport:
    """Imports one file. note(label, text) hears of every difference, step() of every event."""

    def __init__(self, path, owner, zone, horizon, keep_file, note, step=lambda done, of: None, readable=False,
                 zone_is_given=False):
        self.calendar = Calendar(path, zone, note)
        self.make = Appointments(owner, keep_file, readable)
        self.horizon, self.note, self.step = horizon, note, step
        self.zone_is_given = zone_is_given
        self.counts = Counts()
        self.messages = []

    def run(self, data):
        """The messages of a file's bytes."""
        events = self.calendar.read(data, self.zone_is_given, lambda done, of: self.step(done, 2 * of))
        self.counts.events = len(events)
        groups = {}
        for event in events:
            groups.setdefault(event.uid, []).append(event)
        done = 0
        for group in groups.values():
            try:
                self._group(group)
            except OverflowError:
                self.note(group[0].label, "reaches beyond the years that a calendar has, and is left out")
            done += len(group)
            self.step(len(events) + done, 2 * len(events))
        return self.messages

    def _group(self, group):
        """All events of one identifier: a master, perhaps, and the instances that replace some of its own."""
        masters = [event for event in group if event.recurrence_id is None]
        others = [event for event in group if event.recurrence_id is not None]
        for older in sorted(masters, key=lambda event: event.sequence)[:-1]:
            if older.rules or others:
                self.note(older.label, "another event has its identifier and a later sequence; this one is left out")
            else:
                self._single(older)
        master = max(masters, key=lambda event: event.sequence, default=None)
        if master is None or not (master.rules or master.rdates):
            for event in ([master] if master else []) + others:
                if event.recurrence_id is not None:
                    self.note(event.label, "replaces an instance of a series that the file lacks; kept as a single one")
                self._single(event)
            return
        self._recurring(master, self._latest(others))

    def _latest(self, others):
        latest = {}
        for event in others:
            key = event.recurrence_id.replace(tzinfo=event.recurrence_id_zone).timestamp(), event.and_future
            if key in latest:
                self.note(event.label, "one instance is replaced twice; the later sequence counts")
            if key not in latest or event.sequence >= latest[key].sequence:
                latest[key] = event
        return list(latest.values())

    def _single(self, event, original=None):
        self.messages.append(self.make.single(event, original))
        self.counts.singles += 1

    def _recurring(self, master, others):
        try:
            if any(event.and_future for event in others):
                raise Inexpressible("one of its changes is for all later instances (THISANDFUTURE)")
            if not master.rules:
                raise Inexpressible("it has dates of its own (RDATE) and no rule")
            pattern = pattern_of(master)
            rule = zone_rule(master, pattern)
            self._series(master, others, pattern, rule)
        except (Inexpressible, PatternProblem) as reason:
            self._expanded(master, others, str(reason))

    def _series(self, master, others, pattern, rule):
        extras = []
        if pattern.start != master.start.date():
            extras.append((master.start, None, "its start is no date of its rule"))
        own = {begin for begin, _ in master.rdates}
        extras += [(begin, end, "an added date (RDATE)") for begin, end in master.rdates
                   if not pattern.is_instance(begin.date()) or begin.time() != master.start.time()]
        changed, loose = [], []
        for other in others:
            other = self._in_zone(other, master)
            original = self._original(other, master)
            if original.time() == master.start.time() and pattern.is_instance(original.date()):
                if other.start.second or other.end.second:
                    raise Inexpressible("a changed instance starts or ends within a minute")
                changed.append((self.make.changed_instance(master, original, other), other, original))
            else:
                loose.append((other, original))
        self._exclude(master, pattern, changed)
        kept = self._drop_own_cancelled(pattern, changed)
        message = self.make.series(master, pattern, rule, kept)
        self.messages.append(message)
        self.counts.series += 1
        self.counts.changed += len(kept)
        self.counts.left_out += len(pattern.deleted)
        for other, original in loose:
            if original not in own:
                self.note(other.label, "replaces no instance of its series; kept as a single one")
            self._extra(other, original.date())
        replaced = {original for _, original in loose}
        for begin, end, why in extras:
            if begin not in replaced and begin not in master.exdates:
                self.note(master.label, f"{why}: {begin} is kept as a single one beside the series")
                self._extra(self._at(master, begin, end), begin.date())

    def _extra(self, event, original):
        self.messages.append(self.make.single(event, original))
        self.counts.extras += 1

    def _exclude(self, master, pattern, changed):
        taken = {original.date() for _, _, original in changed}
        for moment in master.exdates:
            if moment.time() != master.start.time() or not pattern.is_instance(moment.date()):
                if moment not in {begin for begin, _ in master.rdates}:
                    self.note(master.label, f"leaves out {moment}, which is none of its instances")
            elif moment.date() not in taken and moment.date() not in pattern.deleted:
                pattern.deleted.append(moment.date())
        for day in master.exdays:
            if pattern.is_instance(day) and day not in taken and day not in pattern.deleted:
                pattern.deleted.append(day)

    def _drop_own_cancelled(self, pattern, changed):
        """An instance that the owner called off is gone; one that somebody else called off stays, marked."""
        kept = []
        for one, other, original in changed:
            if other.status == "CANCELLED" and not self.make.state_of(other) & 2:
                pattern.deleted.append(original.date())
            else:
                kept.append((one, other))
        return kept

    def _in_zone(self, other, master):
        """The same event with its times in the master's zone; a whole day keeps its date."""
        if other.zone is master.zone or other.all_day:
            return dataclasses.replace(other, zone=master.zone)
        start, end = (moment.replace(tzinfo=other.zone).astimezone(master.zone).replace(tzinfo=None)
                      for moment in (other.start, other.end))
        return dataclasses.replace(other, zone=master.zone, start=start, end=end)

    def _original(self, other, master):
        moment, zone = other.recurrence_id, other.recurrence_id_zone
        if zone is not master.zone and moment.time() != datetime.min.time():
            moment = moment.replace(tzinfo=zone).astimezone(master.zone).replace(tzinfo=None)
        if moment.time() == datetime.min.time() and not master.all_day:
            same_day = moment.replace(hour=master.start.hour, minute=master.start.minute, second=master.start.second)
            return same_day
        return moment

    @staticmethod
    def _at(event, begin, end=None):
        return dataclasses.replace(event, start=begin, end=end or begin + event.duration)

    def _expanded(self, master, others, reason):
        """Single messages for all instances within the horizon."""
        replaced = {self._original(other, master): self._in_zone(other, master) for other in others
                    if not other.and_future}
        later = sorted(((self._original(other, master), self._in_zone(other, master)) for other in others
                        if other.and_future), key=lambda pair: pair[0])
        try:
            dates = own_dates(master)
        except Inexpressible as problem:
            self.note(master.label, f"{problem}; kept as one single event")
            self._single(dataclasses.replace(master, rules=[], rdates=[]))
            return
        ends = dict(master.rdates)
        for begin in [master.start, *ends]:
            dates.rdate(begin)
        gone = set(master.exdates)
        made = before = after = 0
        for number, begin in enumerate(dates):
            if number == MOST_FOLLOWED:
                after = "further ones"
                self.note(master.label, f"its rule was followed for {MOST_FOLLOWED} instances and no further")
                break
            if begin in gone or begin.date() in master.exdays:
                continue
            if begin < self.horizon.first:
                before += 1
                continue
            if begin > self.horizon.last or made == self.horizon.most:
                after = "further ones"
                break
            self.messages.append(self.make.single(self._instance(master, begin, ends, replaced, later), begin.date()))
            made += 1
        for original, other in replaced.items():
            if original not in gone and not self.horizon.first <= original <= self.horizon.last:
                self.note(other.label, "replaces an instance outside the horizon and is left out")
        self.counts.expanded += 1
        self.counts.pieces += made
        text = f"{reason}; kept as {made} single events from {self.horizon.first:%Y-%m-%d} to {self.horizon.last:%Y-%m-%d}"
        if before or after:
            text += f", without {before or 'none'} before and {after or 'none'} after"
        self.note(master.label, text)

    def _instance(self, master, begin, ends, replaced, later):
        if begin in replaced:
            return replaced[begin]
        for original, other in reversed(later):
            if begin >= original:
                shift = other.start - original
                return dataclasses.replace(other, start=begin + shift, end=begin + shift + other.duration)
        return self._at(master, begin, ends.get(begin))


def default_horizon(today, back=timedelta(days=365), ahead=timedelta(days=730)):
    midnight = datetime(today.year, today.month, today.day)
    return Horizon(midnight - back, midnight + ahead)


def local_zone():
    """The zone of this machine, UTC when it tells none."""
    import os
    name = os.environ.get("TZ", "").lstrip(":")
    if not name and os.path.islink("/etc/localtime"):
        name = os.path.realpath("/etc/localtime").partition("zoneinfo/")[2]
    return zones.find(name) or zones.UTC
