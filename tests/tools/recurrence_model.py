"""A plain model of the recurrence expansion, written for clearness and not for speed.

It shares nothing with the server but the rules of the stored format: dates come from Python's own
calendar, and every loop is spelt out. `dtrecur batch` is held against it.

Dates are minutes since 1601 in 32 bits. Where the server's dates go beyond Python's year 9999, the
model says so with OutOfModel and the case is left out.
"""

import datetime
import struct
from fractions import Fraction

U32 = 0xFFFFFFFF
EPOCH = datetime.datetime(1601, 1, 1)
VARIANT_EPOCH = datetime.datetime(1899, 12, 30)
TICKS_PER_MINUTE = 600_000_000


class OutOfModel(Exception):
    """A date that Python's calendar does not have."""


class Warned(Exception):
    def __init__(self, number):
        super().__init__(number)
        self.number = number


# Calendar ------------------------------------------------------------------------------------


def time_of_minutes(minutes):
    return EPOCH + datetime.timedelta(minutes=minutes & U32)


def minutes_of(year, month, day, hour=0, minute=0):
    """0 for a date that does not exist; cut to 32 bits."""
    year &= 0xFFFF
    if year < 1601 or year > 30827:
        return 0
    if year > 9999:
        raise OutOfModel
    try:
        moment = datetime.datetime(year, month, day, hour, minute)
    except (ValueError, OverflowError):
        return 0
    return ((moment - EPOCH) // datetime.timedelta(minutes=1)) & U32


def weekday(moment):
    return moment.isoweekday() % 7


def days_in_month(month, year):
    if month == 2:
        return 29 if year % 400 == 0 or (year % 4 == 0 and year % 100 != 0) else 28
    return 31 if month in (1, 3, 5, 7, 8, 10, 12) else 30


# Zones ---------------------------------------------------------------------------------------


class Zone:
    def __init__(self, blob):
        self.bias = self.daylight_bias = self.standard_bias = 0
        self.standard = (0, 0, 0)  # month, day, hour
        self.daylight = (0, 0, 0)
        if len(blob) == 48:
            (self.bias,) = struct.unpack_from("<i", blob, 0)
            (self.daylight_bias,) = struct.unpack_from("<i", blob, 8)
            (self.standard_bias,) = struct.unpack_from("<i", blob, 26)
            at = lambda offset: struct.unpack_from("<H", blob, offset)[0]
            self.standard = (at(16), at(20), at(22))
            self.daylight = (at(34), at(38), at(40))

    def correct(self, first_year):
        if first_year < 2020 and self.bias == 180 and self.standard[0] == 2:
            self.standard = self.daylight = (0, 0, 0)


def switch_of_year(year, rule):
    """The moment that the platform works out; None when the date does not exist."""
    month, day, hour = rule
    if not 1 <= month <= 12 or not 1 <= day <= 5 or hour > 23:
        return None
    sundays = [
        datetime.datetime(year, month, d, hour)
        for d in range(1, days_in_month(month, year) + 1)
        if weekday(datetime.date(year, month, d)) == 0
    ]
    return sundays[min(day, len(sundays)) - 1]


def utc_to_local(utc, zone):
    """None when there is no such local time."""
    minute = datetime.timedelta(minutes=1)
    try:
        bias = zone.bias
        if zone.standard[0] != 0 and zone.daylight[0] != 0:
            year = (utc - zone.bias * minute).year
            to_standard = switch_of_year(year, zone.standard)
            to_daylight = switch_of_year(year, zone.daylight)
            if to_standard is not None and to_daylight is not None:
                on_standard = utc - (zone.bias + zone.standard_bias) * minute
                on_daylight = utc - (zone.bias + zone.daylight_bias) * minute
                begun = on_standard >= to_daylight
                over = on_daylight >= to_standard
                if to_daylight < to_standard:
                    is_daylight = begun and not over
                else:
                    is_daylight = begun or not over
                bias += zone.daylight_bias if is_daylight else zone.standard_bias
        local = utc - bias * minute
    except OverflowError as error:
        if zone.bias > 0 and zone.daylight_bias >= 0 and zone.standard_bias >= 0:
            return None
        raise OutOfModel from error
    return local if local >= EPOCH else None


def variant_of(moment):
    """Signed days since 1899-12-30 as an exact fraction."""
    days = (moment.date() - VARIANT_EPOCH.date()).days
    of_day = Fraction(moment.hour * 3600 + moment.minute * 60 + moment.second, 86400)
    return days + of_day if days >= 0 else days - of_day


def moment_of_variant(value):
    """None outside the years 100 to 9999."""
    if value <= -657435 or value >= 2958466:
        return None
    days = int(value)  # towards zero
    seconds = abs(value - days) * 86400
    return VARIANT_EPOCH + datetime.timedelta(days=days, seconds=int(seconds))


def variant_switch(year, rule, lowest_week):
    month, day, hour = rule
    if not 1 <= month <= 12:
        start = Fraction(0)
        first = None
    else:
        start = variant_of(datetime.datetime(year, month, 1) + datetime.timedelta(hours=hour))
        first = (year, month)
    on = weekday(moment_of_variant(start))
    target = start + (0 - on + 7) % 7
    week = max(day - 1, lowest_week)
    while week >= 1:
        try:
            moment = moment_of_variant(target + 7 * week)
        except OverflowError:
            moment = None
        if moment is not None and (moment.year, moment.month) == first:
            break
        week -= 1
    return target + 7 * week


def is_daylight(local, zone):
    if zone.standard[0] == 0:
        return False
    now = variant_of(local)
    to_standard = variant_switch(local.year, zone.standard, -1)
    to_daylight = variant_switch(local.year, zone.daylight, 0)
    if zone.standard[0] <= zone.daylight[0]:
        return now > to_daylight or now < to_standard
    return to_daylight < now < to_standard


def utc_of_minutes(minutes, zone):
    local = time_of_minutes(minutes)
    offset = zone.bias + (zone.daylight_bias if is_daylight(local, zone) else 0)
    return moment_of_variant(variant_of(local) + Fraction(offset, 1440))


# The stored pattern --------------------------------------------------------------------------


class Reader:
    def __init__(self, blob, pos):
        self.blob = blob
        self.pos = pos

    def number(self, size):
        raw = self.blob[self.pos : self.pos + size] if self.pos < len(self.blob) else b""
        self.pos += size
        return int.from_bytes(raw, "little")

    def u16(self):
        return self.number(2)

    def u32(self):
        return self.number(4)

    def check(self, beyond, number):
        if self.pos + beyond > len(self.blob):
            raise Warned(number)

    def scan_reserved(self):
        while self.pos + 4 <= len(self.blob):
            size = int.from_bytes(self.blob[self.pos : self.pos + 4], "little")
            if size not in (0, 4):
                break
            self.pos += size + 4


class Exception_:
    def __init__(self, original):
        self.original = original
        self.start = self.end = 0
        self.subject = self.location = ""
        self.state = -1
        self.meeting_type = 0
        self.has_meeting_type = 0
        self.flags = 0


class Series:
    """One case: the blobs, the first time's year, the window, the texts, keep-all."""

    def __init__(self, blob, zone, first_year, window, subject, location, keep_all):
        self.blob = blob
        self.zone = Zone(zone)
        self.zone.correct(first_year)
        self.window = window
        self.subject = subject
        self.location = location
        self.keep_all = keep_all
        self.start_date = self.end_date = self.start_offset = self.end_offset = 0
        self.exceptions = {}
        self.instances = []
        self.warning = None

    def at16(self, offset):
        return Reader(self.blob, offset).u16()

    def at32(self, offset):
        return Reader(self.blob, offset).u32()

    # -- tail

    def read_tail(self, argument):
        reader = Reader(self.blob, argument + 4)
        try:
            self.read_tail_checked(reader)
        except Warned as warned:
            self.warning = (warned.number, reader.pos - 4)

    def read_tail_checked(self, reader):
        deleted = reader.u32()
        reader.check(4 * deleted, 8)
        for _ in range(deleted):
            date = reader.u32()
            self.exceptions[date] = Exception_(date)
        modified = reader.u32()
        reader.pos += 4 * modified
        self.start_date = reader.u32()
        self.end_date = reader.u32()
        reader.pos += 8
        self.start_offset = reader.u32()
        self.end_offset = reader.u32()
        reader.check(0, 9)
        for info in self.exceptions.values():
            info.original = (info.original + self.start_offset) & U32
        count = reader.u16()
        for _ in range(count):
            reader.check(14, 10)
            self.read_exception(reader)
        if count == 0:
            return
        reader.check(4, 15)
        reader.scan_reserved()
        for _ in range(count):
            self.read_extended(reader)

    def read_exception(self, reader):
        start, end, original, flags = reader.u32(), reader.u32(), reader.u32(), reader.u16()
        subject = self.subject
        meeting_type = has_meeting_type = 0
        seen_64 = False
        for flag in (1, 2, 4, 8, 16, 32, 64, 128, 256, 512):
            if not flags & flag:
                continue
            if flag in (1, 16):
                reader.pos += 2
                length = reader.u16()
                reader.pos += length
                if flag == 1:
                    subject = ""
                reader.check(0, 13 if flag == 1 else 14)
            elif flag == 2:
                whole = reader.pos + 4 <= len(reader.blob)
                value = reader.u32()
                meeting_type = value if whole else 0
                has_meeting_type = 1
            elif flag == 64:
                seen_64 = True
            elif flag == 512:
                reader.pos += 4 if seen_64 else 0
            else:
                reader.pos += 4
        info = self.exceptions.get((original - self.start_offset) & U32)
        if info is not None:
            info.original, info.start, info.end, info.state = original, start, end, 1
            info.subject, info.location = subject, self.location
            info.has_meeting_type, info.meeting_type = has_meeting_type, meeting_type
            info.flags = flags

    def read_extended(self, reader):
        reader.check(4, 1)
        if reader.u32() == 0:
            return
        reader.check(8, 2)
        reader.u32()
        original = reader.u32()
        info = self.exceptions.get((original - self.start_offset) & U32)
        if info is None:
            raise Warned(3)
        for flag, name, number in ((1, "subject", 5), (16, "location", 7)):
            if not info.flags & flag:
                continue
            units = reader.u16()
            if units == 0:
                continue
            reader.check(2 * units, number)
            raw = self.blob[reader.pos : reader.pos + 2 * units]
            reader.pos += 2 * units
            text = raw.decode("utf-16-le", "surrogatepass")
            setattr(info, name, text.split("\0")[0])
        reader.scan_reserved()

    # -- frame

    def local_window(self, utc):
        local = utc_to_local(utc, self.zone)
        if local is None:
            return 0, 0, 0
        minutes = ((local - EPOCH) // datetime.timedelta(minutes=1)) & U32
        return minutes, local.hour, local.minute

    def open(self, argument):
        self.w0, hour0, minute0 = self.local_window(self.window[0])
        self.w1, hour1, minute1 = self.local_window(self.window[1])
        self.tod0 = hour0 * 60 + minute0
        self.tod1 = hour1 * 60 + minute1
        self.hour0, self.minute0 = hour0, minute0
        self.read_tail(argument)
        self.taken = set()
        for _, info in sorted(self.exceptions.items()):
            if self.w0 <= info.original <= self.w1:
                self.taken.add(info.original)
            if info.state != -1 and self.w0 <= info.start <= self.w1:
                self.instances.append(
                    (
                        utc_of_minutes(info.start, self.zone),
                        utc_of_minutes(info.end, self.zone),
                        info.original,
                        info.subject,
                        info.location,
                        info.has_meeting_type,
                        info.meeting_type,
                    )
                )

    def begin(self, end_type):
        if self.w0 > (self.end_date + 1440) & U32 or self.w1 < self.start_date:
            return False
        self.cur = self.start_date
        if self.w0 > self.start_date:
            if self.start_offset < self.tod0:
                self.cur = (self.w0 + (24 - self.hour0) * 60 - self.minute0) & U32
            else:
                self.cur = (self.w0 - self.tod0) & U32
        clip = self.w1 - self.tod1
        if self.start_offset > self.tod1:
            clip -= 1440
        clip &= U32
        end_type &= 0xFF
        if end_type in (0x21, 0x22):
            self.last = clip if self.w1 < self.end_date else self.end_date
        elif end_type in (0x23, 0xFF):
            self.last = clip
        else:
            return False
        return True

    def rounds(self):
        """One turn for each round; the caller moves self.cur or breaks off."""
        tries = 0
        while self.cur <= self.last:
            if tries > 1000:
                return
            tries += 1
            yield time_of_minutes(self.cur)

    def is_free(self):
        return (self.start_offset + self.cur) & U32 not in self.taken

    def emit(self):
        start = (self.start_offset + self.cur) & U32
        end = (self.end_offset + self.cur) & U32
        self.instances.append(
            (
                utc_of_minutes(start, self.zone),
                utc_of_minutes(end, self.zone),
                self.cur,
                self.subject,
                self.location,
                0,
                0,
            )
        )

    def expand(self):
        if len(self.blob) < 34:
            return self.instances
        kind = self.blob[4]
        form = self.at16(6)
        if kind == 10:
            if form & 0xFF == 0:
                self.daily()
            elif form & 0xFF == 1 and self.at32(10) == 8640:
                self.working_days()
        elif kind == 11:
            self.weekly()
        elif kind in (12, 13) and form in (2, 3):
            needed = 38 if form == 2 else 42
            if self.at16(8) == 0 and len(self.blob) >= needed:
                {
                    (12, 2): self.monthly_day,
                    (12, 3): self.monthly_ordinal,
                    (13, 2): self.yearly_day,
                    (13, 3): self.yearly_ordinal,
                }[kind, form]()
        return self.instances

    # -- handlers

    def daily(self):
        period = self.at32(14)
        self.open(30)
        if not self.begin(self.at16(22)) or period == 0:
            return
        for _ in self.rounds():
            if ((self.cur - self.start_date) & U32) % period == 0 and self.is_free():
                self.emit()
            self.cur = (self.cur + period) & U32

    def working_days(self):
        if len(self.blob) < 38:
            return
        self.open(34)
        if not self.begin(self.at16(26)):
            return
        for day in self.rounds():
            if weekday(day) not in (0, 6) and self.is_free():
                self.emit()
            self.cur = (self.cur + 1440) & U32

    def weekly(self):
        if len(self.blob) < 38:
            return
        period = self.at32(14)
        mask = self.blob[22]
        self.open(34)
        gaps = [0] * 7
        highest = lowest = following = -1
        for day in range(6, -1, -1):
            if mask >> day & 1:
                if highest <= 0:
                    highest = day
                    gaps[day] = 0
                lowest = day
                if day != highest:
                    gaps[day] = following - day
                following = day
        if highest == -1 or period == 0:
            return
        wrapped = (period * 7 - highest + lowest) & U32
        gaps[highest] = wrapped - (1 << 32) if wrapped >> 31 else wrapped
        first_day = weekday(time_of_minutes(self.start_date))
        if not self.begin(self.at16(26)):
            return
        for moment in self.rounds():
            w = weekday(moment)
            if gaps[w] < 1:
                self.cur = (self.cur + 1440) & U32
                continue
            days = ((self.cur - self.start_date) & U32) // 1440
            if w > first_day:
                days -= sum(gaps[first_day:w])
            elif w < first_day:
                days += sum(gaps[w:first_day])
            if (days & U32) % (period * 7 & U32) != 0:
                self.cur = (self.cur + 1440) & U32
                continue
            if self.is_free() or self.keep_all:
                self.emit()
            self.cur = (self.cur + gaps[w] * 1440) & U32

    def month_after(self, year, month, months):
        if months > 120_000:
            raise OutOfModel  # the walk below would not end
        minutes = minutes_of(year, month, 1)
        for _ in range(months):
            minutes += days_in_month(month, year) * 1440
            month += 1
            if month == 13:
                month, year = 1, year + 1
        return minutes & U32

    def months_since(self, first, moment):
        return ((moment.year - first.year) * 12 - first.month + moment.month) & U32

    def monthly_day(self):
        period, wanted = self.at32(14), self.at32(22)
        self.open(34)
        if not self.begin(self.at32(26)) or period == 0:
            return
        first = time_of_minutes(self.start_date)
        for st in self.rounds():
            dim = days_in_month(st.month, st.year)
            if st.day != wanted and not (st.day == dim and wanted > dim):
                if st.day < wanted:
                    days = min(wanted, dim) - st.day
                else:
                    days = dim - st.day + 1
                self.cur = (self.cur + days * 1440) & U32
                continue
            if self.months_since(first, st) % period != 0:
                break
            following = self.month_after(st.year, st.month, period)
            if self.is_free():
                self.emit()
            self.cur = following

    DAY_CODES = {1: 0, 2: 1, 4: 2, 8: 3, 16: 4, 32: 5, 64: 6, 78: 6, 62: 8, 65: 8, 127: 8}

    def target(self, year, month, st, mask, week, is_yearly):
        """Minutes and day of the month of the day to hit."""
        month_first = minutes_of(year, month, 1)
        first = datetime.datetime(year, month, 1)
        dim = days_in_month(month, year)
        wd = weekday(first)
        last_wd = weekday(datetime.datetime(year, month, dim))
        code = self.DAY_CODES[mask]
        if code < 7:
            days = ((week - 1) * 7 + (code - wd + 7) % 7) & U32
            minutes = (month_first + days * 1440) & U32
            hit = time_of_minutes(minutes)
            if week >= 4 and hit.month + (hit.year - st.year) * 12 != st.month:
                minutes = (minutes - 7 * 1440) & U32
                hit = time_of_minutes(minutes)
            return minutes, hit.day
        if mask == 62:
            base = 1
            if wd in (0, 6):
                base += (8 - wd) % 7
            if week < 5:
                if is_yearly:
                    day = base + week - 1
                else:
                    w = (wd + base - 1) % 7
                    n = (w - 1 + week) % 5
                    if n == 0:
                        n = 5
                    day = base - w + n
                    if n < w:
                        day += 7
            elif last_wd in (0, 6):
                day = dim - (last_wd + 2) % 7
            else:
                day = dim
            return minutes_of(year, month, day), day
        if mask == 65:
            v = 1
            if week == 1:
                day = v if wd in (0, 6) else v + 6 - wd
            elif week == 2:
                day = v + 6 if wd == 0 else v + 7 - wd
            elif week == 3:
                day = v + 7 if wd == 0 else v + 6 - wd + 7
            elif week == 4:
                day = v + 13 if wd == 0 else v + 7 - wd + 7
            elif week == 5:
                day = dim if last_wd in (0, 6) else dim - last_wd
            else:
                return 0, 0
            return minutes_of(year, month, day), day
        day = dim if week >= 5 else week
        return minutes_of(year, month, day), day

    def monthly_ordinal(self):
        period, mask, week = self.at32(14), self.at32(22), self.at32(26)
        self.open(38)
        if not self.begin(self.at32(30)) or period == 0 or mask not in self.DAY_CODES:
            return
        first = time_of_minutes(self.start_date)
        for st in self.rounds():
            if self.months_since(first, st) % period != 0:
                break
            target, day = self.target(st.year, st.month, st, mask, week, False)
            following = self.month_after(st.year, st.month, period)
            after = time_of_minutes(following)
            if (after.year, after.month) <= (st.year, st.month):
                break
            if st.day < day:
                self.cur = target
            elif st.day > day:
                self.cur = following
            else:
                if self.is_free():
                    self.emit()
                self.cur = following

    def month_of_year(self, first):
        offset, total = self.at32(10), 0
        for month in range(1, 12):
            total += days_in_month(month, first.year) * 1440
            if total == offset:
                return month + 1
        return first.month

    def yearly_day(self):
        years, wanted = self.at32(14) // 12, self.at32(22)
        self.open(34)
        if not self.begin(self.at32(26)) or years == 0:
            return
        first = time_of_minutes(self.start_date)
        month = self.month_of_year(first)
        for st in self.rounds():
            q, r = divmod((st.year - first.year) & U32, years)
            if r == 0 and st.month == month and st.day == wanted:
                following = minutes_of(st.year + years, month, wanted)
                if self.is_free():
                    self.emit()
                self.cur = following
                continue
            year = st.year if r == 0 else ((q + 1) * years + first.year) & U32
            day = min(wanted, days_in_month(month, year & 0xFFFF))
            t = minutes_of(year, month, day)
            if t < self.cur:
                t = minutes_of(year + years, month, day)
            self.cur = t

    def yearly_ordinal(self):
        years, mask, week = self.at32(14) // 12, self.at32(22), self.at32(26)
        self.open(38)
        if not self.begin(self.at32(30)) or years == 0 or mask not in self.DAY_CODES:
            return
        first = time_of_minutes(self.start_date)
        month = self.month_of_year(first)
        for st in self.rounds():
            q, r = divmod((st.year - first.year) & U32, years)
            if r != 0:
                self.cur = minutes_of((q + 1) * years + first.year, 1, 1)
                continue
            target, _ = self.target(st.year, month, st, mask, week, True)
            following = minutes_of(st.year + years, month, 1)
            if self.cur > target:
                self.cur = following
            elif self.cur < target:
                self.cur = target
            else:
                if self.is_free():
                    self.emit()
                self.cur = following
