"""The recurrence structure as bytes, both ways.

Source: [MS-OXOCAL] 2.2.1.44.5 and its parts. Integers are little-endian; all times are whole minutes
since 1601-01-01 00:00 in the zone of the series.
"""

import struct
from datetime import timedelta

from .pattern import DAYS, WORKDAYS, Changed, Pattern, PatternProblem, from_minutes, minutes, week_start

READER, WRITER, READER2 = 0x3004, 0x3004, 0x3006
NEVER = 0x5AE980DF  # 4500-08-31 23:59
END_DATE, END_COUNT, END_NEVER = 0x2021, 0x2022, 0x2023
ENDLESS_COUNT = 10
FREQUENCY = {"daily": 0x200A, "workdays": 0x200A, "weekly": 0x200B, "monthly": 0x200C, "yearly": 0x200D}

SUBJECT, MEETING_TYPE, REMINDER_DELTA, REMINDER, LOCATION = 0x1, 0x2, 0x4, 0x8, 0x10
BUSY_STATUS, ATTACHMENT, SUBTYPE, COLOR, BODY = 0x20, 0x40, 0x80, 0x100, 0x200
# The order in which the values of an exception record stand; the texts have forms of their own.
_NUMBERS = (
    (MEETING_TYPE, "meeting_type"), (REMINDER_DELTA, "reminder_minutes"), (REMINDER, "reminder"),
    (LOCATION, "location"), (BUSY_STATUS, "busy_status"), (ATTACHMENT, "attachments"),
    (SUBTYPE, "all_day"), (COLOR, "color"),
)


class BlobProblem(Exception):
    """Bytes that are no such structure; the text says why and where."""


def first_date_time(pattern):
    """[MS-OXOCAL] 2.2.1.44.1.1."""
    if pattern.frequency == "daily":
        return minutes(pattern.start) % (pattern.interval * 1440)
    if pattern.frequency == "workdays":
        return minutes(week_start(pattern.start, "SU")) % 10080
    if pattern.frequency == "weekly":
        return minutes(week_start(pattern.start, pattern.first_day)) % (pattern.interval * 10080)
    months = ((pattern.start.year - 1601) * 12 + pattern.start.month - 1) % _period(pattern)
    return minutes(pattern.start.replace(year=1601 + months // 12, month=months % 12 + 1, day=1))


def _period(pattern):
    return {"daily": pattern.interval * 1440, "workdays": 1, "yearly": pattern.interval * 12}.get(
        pattern.frequency, pattern.interval)


def encode(pattern):
    """The bytes of a checked pattern. Raises PatternProblem."""
    pattern.check()
    changed = sorted(pattern.changed, key=lambda one: (one.start, one.original))
    deleted = sorted(set(pattern.deleted) | {one.original.date() for one in changed})
    out = [struct.pack("<5HIII", READER, WRITER, FREQUENCY[pattern.frequency], _pattern_type(pattern), 0,
                       first_date_time(pattern), _period(pattern), 0)]
    if pattern.frequency in ("workdays", "weekly"):
        out.append(struct.pack("<I", pattern.days_mask()))
    elif pattern.day_of_month is not None:
        out.append(struct.pack("<I", pattern.day_of_month))
    elif pattern.week is not None:
        out.append(struct.pack("<II", pattern.days_mask(), pattern.week))
    if pattern.last is None:
        end_type, count = END_NEVER, ENDLESS_COUNT
    elif pattern.count is not None:
        end_type, count = END_COUNT, pattern.count
    else:
        end_type, count = END_DATE, sum(1 for _ in pattern.dates())
    out.append(struct.pack("<III", end_type, count, DAYS.index(pattern.first_day)))
    for dates in (deleted, sorted(one.start.date() for one in changed)):
        out.append(struct.pack(f"<I{len(dates)}I", len(dates), *(minutes(day) for day in dates)))
    out.append(struct.pack("<IIIIIIH", minutes(pattern.start),
                           NEVER if pattern.last is None else minutes(pattern.last), READER2, pattern.writer2,
                           pattern.start_minute, pattern.end_minute, len(changed)))
    out.extend(_exception(one) for one in changed)
    out.append(struct.pack("<I", 0))
    out.extend(_extended(one, pattern.writer2) for one in changed)
    out.append(struct.pack("<I", 0))
    return b"".join(out)


def _pattern_type(pattern):
    if pattern.frequency == "daily":
        return 0
    if pattern.frequency in ("workdays", "weekly"):
        return 1
    return 2 if pattern.day_of_month is not None else 3


def _flags(one):
    flags = SUBJECT if one.subject is not None else 0
    for flag, name in _NUMBERS:
        if getattr(one, name) is not None:
            flags |= flag
    return flags | (BODY if one.body else 0)


def _times(one):
    return struct.pack("<III", minutes(one.start), minutes(one.end), minutes(one.original))


def _narrow(text):
    data = text.encode("cp1252", "replace")
    if len(data) > 0xFFFE:
        raise PatternProblem("a text of a changed instance is longer than 65534 characters")
    return struct.pack("<HH", len(data) + 1, len(data)) + data


def _exception(one):
    out = [_times(one), struct.pack("<H", _flags(one))]
    if one.subject is not None:
        out.append(_narrow(one.subject))
    for _, name in _NUMBERS:
        value = getattr(one, name)
        if value is not None:
            out.append(_narrow(value) if name == "location" else struct.pack("<I", int(value)))
    return b"".join(out)


def _extended(one, writer2):
    out = [struct.pack("<II", 4, 0)] if writer2 >= 0x3009 else []
    out.append(struct.pack("<I", 0))
    texts = [text for text in (one.subject, one.location) if text is not None]
    if texts:
        out.append(_times(one))
        for text in texts:
            data = text.encode("utf-16-le")
            if len(data) // 2 > 0xFFFF:
                raise PatternProblem("a text of a changed instance is longer than 65535 characters")
            out.append(struct.pack("<H", len(data) // 2) + data)
        out.append(struct.pack("<I", 0))
    return b"".join(out)


class _Reader:
    def __init__(self, data):
        self.data, self.at = data, 0

    def take(self, size, what):
        if self.at + size > len(self.data):
            raise BlobProblem(f"ends inside {what}, at byte {self.at}")
        self.at += size
        return self.data[self.at - size:self.at]

    def word(self, what):
        return struct.unpack("<H", self.take(2, what))[0]

    def long(self, what):
        return struct.unpack("<I", self.take(4, what))[0]

    def longs(self, count, what):
        return struct.unpack(f"<{count}I", self.take(4 * count, what))

    def skip_block(self, what):
        return self.take(self.long(what), what)


def decode(data):
    """The pattern of the bytes. Raises BlobProblem for what is no such structure or no Gregorian one."""
    read = _Reader(data)
    if (read.word("reader version"), read.word("writer version")) != (READER, WRITER):
        raise BlobProblem("the versions are not 0x3004")
    number, kind, calendar_type = (read.word(what) for what in ("frequency", "pattern type", "calendar type"))
    if calendar_type not in (0, 1):
        raise BlobProblem(f"calendar type {calendar_type} is not the Gregorian one")
    read.long("first date-time")
    period = read.long("period")
    read.long("sliding flag")
    fields = _pattern_fields(read, number, kind, period)
    end_type, count, first = (read.long(what) for what in ("end type", "occurrence count", "first day of week"))
    deleted = [from_minutes(m).date() for m in read.longs(read.long("deleted count"), "deleted dates")]
    read.longs(read.long("modified count"), "modified dates")
    start, end = from_minutes(read.long("start date")).date(), read.long("end date")
    read.long("reader version 2")
    writer2, begin, finish = (read.long(what) for what in ("writer version 2", "start offset", "end offset"))
    if first > 6:
        raise BlobProblem(f"first day of week {first}")
    changed = [_read_exception(read) for _ in range(read.word("exception count"))]
    read.skip_block("reserved block 1")
    for one in changed:
        _read_extended(read, one, writer2)
    read.skip_block("reserved block 2")
    if read.at != len(data):
        raise BlobProblem(f"{len(data) - read.at} bytes follow the structure")
    endless = end_type in (END_NEVER, 0xFFFFFFFF)
    if not endless and end_type not in (END_DATE, END_COUNT):
        raise BlobProblem(f"end type 0x{end_type:X}")
    originals = {one.original.date() for one in changed}
    return Pattern(
        start=start, start_minute=begin, end_minute=finish, first_day=DAYS[first],
        count=count if end_type == END_COUNT else None, last=None if endless else from_minutes(end).date(),
        deleted=[day for day in deleted if day not in originals], changed=changed, writer2=writer2, **fields)


def _pattern_fields(read, number, kind, period):
    frequency = {0x200A: "daily", 0x200B: "weekly", 0x200C: "monthly", 0x200D: "yearly"}.get(number)
    if frequency is None:
        raise BlobProblem(f"frequency 0x{number:X}")
    if kind == 0 and frequency == "daily":
        return {"frequency": "daily", "interval": period // 1440}
    if kind == 1 and frequency in ("daily", "weekly"):
        days = _mask_days(read.long("day mask"))
        if frequency == "daily":
            if set(days) == set(WORKDAYS):
                return {"frequency": "workdays"}
            raise BlobProblem("a daily pattern by week that is not the working days")
        return {"frequency": "weekly", "days": days, "interval": period}
    if frequency in ("daily", "weekly") or kind not in (2, 3, 4):
        raise BlobProblem(f"pattern type {kind} with frequency 0x{number:X}")
    fields = {"frequency": frequency, "interval": period // 12 if frequency == "yearly" else period}
    if kind == 3:
        fields["days"] = _mask_days(read.long("day mask"))
        fields["week"] = read.long("week")
    else:
        fields["day_of_month"] = 31 if kind == 4 else read.long("day of month")
        if kind == 4:
            read.long("day of month")
    return fields


def _mask_days(mask):
    return tuple(day for bit, day in enumerate(DAYS) if mask & 1 << bit)


def _read_exception(read):
    begin, end, original = (from_minutes(read.long("exception")) for _ in range(3))
    flags = read.word("override flags")
    one = Changed(original=original, start=begin, end=end, body=bool(flags & BODY))
    if flags & SUBJECT:
        one.subject = _read_narrow(read, "exception subject")
    for flag, name in _NUMBERS:
        if not flags & flag:
            continue
        if flag == LOCATION:
            one.location = _read_narrow(read, "exception location")
        else:
            value = read.long("exception value")
            setattr(one, name, bool(value) if flag in (REMINDER, SUBTYPE) else value)
    return one


def _read_narrow(read, what):
    read.word(what)
    return read.take(read.word(what), what).decode("cp1252", "replace")


def _read_extended(read, one, writer2):
    if writer2 >= 0x3009:
        read.skip_block("change highlight")
    read.skip_block("reserved block of an extended exception")
    if one.subject is None and one.location is None:
        return
    read.longs(3, "extended exception")
    for name in ("subject", "location"):
        if getattr(one, name) is not None:
            size = read.word("extended text")
            setattr(one, name, read.take(2 * size, "extended text").decode("utf-16-le", "replace"))
    read.skip_block("second reserved block of an extended exception")


def last_of_count(pattern, count):
    """Date of instance number `count` of a pattern without end; None when it lies beyond the year 4500."""
    day = None
    for number, day in enumerate(pattern.dates(), 1):
        if number == count:
            return day
    return None


def clip_end(pattern):
    """The local midnight after everything that the series holds, or None for a series without end."""
    if pattern.last is None:
        return None
    ends = [from_minutes(minutes(pattern.last)) + timedelta(minutes=pattern.end_minute)]
    ends += [one.end for one in pattern.changed]
    return max(ends)
