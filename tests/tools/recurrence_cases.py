"""Random series for the comparison of dtrecur with the model: mostly sensible, some odd, some torn."""

import datetime
import struct

from recurrence_model import EPOCH

KINDS = ("daily", "work", "weekly", "monthly2", "monthly3", "yearly2", "yearly3")
MASKS = (1, 2, 4, 8, 16, 32, 64, 78, 62, 65, 127)
TEXTS = ("", "Standup", "Besprechung \u00e4\u00f6", "caf\u00e9 \u2603", "\U0001f4c5 plan", "a\\b", "x" * 40)


def minutes(moment):
    return (moment - EPOCH) // datetime.timedelta(minutes=1)


def zone_blob(rng):
    pick = rng.random()
    if pick < 0.15:
        return b""
    if pick < 0.17:
        return bytes(rng.randrange(256) for _ in range(rng.choice((1, 47, 49))))
    bias = rng.choice((300, 480, 0, -60, -120, -330, -600, 180, 210, -840))
    standard = rng.choice(((11, 1, 2), (10, 5, 3), (4, 1, 3), (0, 0, 0), (2, 3, 0), (9, 2, 23)))
    daylight = rng.choice(((3, 2, 2), (3, 5, 2), (10, 1, 2), (10, 3, 0), (0, 0, 0), (4, 5, 0)))
    daylight_bias = rng.choice((-60, -60, -60, -30, 0, 60))
    standard_bias = rng.choice((0, 0, 0, 0, 30, -15))
    if pick > 0.97:
        standard = (rng.randrange(13), rng.randrange(7), rng.randrange(24))
        daylight = (rng.randrange(13), rng.randrange(7), rng.randrange(24))
    blob = bytearray(48)
    struct.pack_into("<i", blob, 0, bias)
    struct.pack_into("<i", blob, 8, daylight_bias)
    struct.pack_into("<H", blob, 16, standard[0])
    struct.pack_into("<HH", blob, 20, standard[1], standard[2])
    struct.pack_into("<i", blob, 26, standard_bias)
    struct.pack_into("<H", blob, 34, daylight[0])
    struct.pack_into("<HH", blob, 38, daylight[1], daylight[2])
    return bytes(blob)


def head(rng, kind, start):
    """Frequency, pattern type, first date-time, period, pattern-specific numbers."""
    odd = rng.random() < 0.06
    if kind == "daily":
        period = 1440 * rng.choice((1, 1, 2, 3, 7, 30))
        if odd:
            period = rng.choice((0, 1, 720, 1441, 0xFFFFFFFF))
        return 10, 0, start % 1440, period, ()
    if kind == "work":
        return 10, 1, rng.choice((8640,) * 9 + (1440,)), 1, (62,)
    if kind == "weekly":
        period = rng.choice((1, 1, 2, 3, 4, 6, 12))
        if odd:
            period = rng.choice((0, 100, 0x24924925, 0xFFFFFFFF))
        return 11, 1, 8640, period, (rng.randrange(128) | (rng.randrange(256) << 8 if odd else 0),)
    period = rng.choice((1, 1, 2, 3, 5, 6, 12, 13))
    if kind.startswith("yearly"):
        period = 12 * rng.choice((1, 1, 2, 3, 4, 5)) + rng.choice((0, 0, 0, 7))
    if odd:
        period = rng.choice((0, 11, 1200, 95000, 90000))
    frequency = 12 if kind.startswith("monthly") else 13
    first = EPOCH + datetime.timedelta(minutes=start)
    offset = minutes(datetime.datetime(first.year, first.month, 1)) - minutes(
        datetime.datetime(first.year, 1, 1)
    )
    if rng.random() < 0.2:
        offset = rng.choice((0, 44640, 84960, 86400, 480960, 1))
    if kind.endswith("2"):
        day = rng.choice((first.day, first.day, rng.randrange(1, 32), 31, 29))
        if odd:
            day = rng.choice((0, 32, 0xFFFFFFFF))
        return frequency, 2, offset, period, (day,)
    mask = rng.choice(MASKS)
    week = rng.randrange(1, 6)
    if odd:
        mask = rng.choice(MASKS + (0, 3, 255, 0x100))
        week = rng.choice((0, 6, 7, 9, 0x80000000, 0xFFFFFFFF))
    return frequency, 3, offset, period, (mask, week)


def exception(rng, original, offset_start, offset_end):
    """The record, the extended record's texts, in the stored form."""
    flags = 0
    for flag in (1, 2, 4, 8, 16, 32, 64, 128, 256, 512):
        if rng.random() < (0.4 if flag in (1, 2, 16) else 0.1):
            flags |= flag
    if flags & 64 and rng.random() < 0.8:
        flags |= 512
    moved = original + rng.choice((0, 60, 1440, -1440, 90, 10080, 86400))
    end = moved + rng.choice((30, 60, offset_end - offset_start)) & 0xFFFFFFFF
    moved &= 0xFFFFFFFF
    texts = [rng.choice(TEXTS) for _ in range(2)]
    record = struct.pack("<IIIH", moved, end, original & 0xFFFFFFFF, flags)
    for flag in (1, 2, 4, 8, 16, 32, 64, 128, 256):
        if not flags & flag:
            continue
        if flag in (1, 16):
            raw = texts[0 if flag == 1 else 1].encode("latin-1", "replace")
            record += struct.pack("<HH", len(raw) + 1, len(raw)) + raw
        else:
            record += struct.pack("<I", rng.choice((0, 1, 3, 5, 7)))
    extended = b""
    if flags & 17:
        extended = struct.pack("<III", moved, end, original & 0xFFFFFFFF)
        for flag, text in zip((1, 16), texts):
            if flags & flag:
                if rng.random() < 0.05:
                    text = "t\tn\nr\r\\ \x01\x7f " + chr(0xD800) + "x" + chr(0xDC00)
                raw = text.encode("utf-16-le", "surrogatepass")
                extended += struct.pack("<H", len(raw) // 2) + raw
        extended += struct.pack("<I", 0)
    return record, extended


def pattern_blob(rng):
    kind = rng.choice(KINDS)
    start_day = datetime.datetime(rng.choice((2004, 2016, 2019, 2020, 2023, 2024)), 1, 1)
    start_day += datetime.timedelta(days=rng.randrange(366))
    if rng.random() < 0.05:
        start_day = start_day.replace(month=2, day=28) + datetime.timedelta(days=rng.randrange(2))
    start = minutes(start_day)
    frequency, form, first, period, specific = head(rng, kind, start)
    end_type = rng.choice((0x2021, 0x2022, 0x2023, 0x2023, 0xFFFFFFFF))
    if rng.random() < 0.02:
        end_type = rng.choice((0, 0x24, 0x21FF, 0x2300))
    calendar = 0 if rng.random() < 0.98 else rng.choice((1, 15, 256))
    blob = struct.pack(
        "<HHHHHIII", 0x3004, 0x3004, 0x2000 | frequency, form, calendar, first, period, 0
    )
    blob += b"".join(struct.pack("<I", number) for number in specific)
    blob += struct.pack("<III", end_type, 10, 0)
    offset_start = rng.choice((0, 540, 600, 1410, 1439, 5))
    offset_end = offset_start + rng.choice((0, 30, 60, 1440, 600))
    if rng.random() < 0.01:
        offset_start = rng.choice((1440, 3000, 0xFFFFFFFF))
    near = [start + 1440 * rng.randrange(0, 60) for _ in range(rng.choice((0, 0, 1, 2, 5)))]
    changed = [start + 1440 * rng.randrange(0, 60) for _ in range(rng.choice((0, 0, 1, 2, 3)))]
    listed = sorted(set(near + [day for day in changed if rng.random() < 0.95]))
    blob += struct.pack("<I", len(listed)) + b"".join(struct.pack("<I", day) for day in listed)
    blob += struct.pack("<I", len(changed)) + b"".join(struct.pack("<I", day) for day in changed)
    end = start + 1440 * rng.choice((0, 5, 40, 400, 4000))
    if end_type == 0x2023:
        end = 0x5AE980DF
    writer = rng.choice((0x3008, 0x3009))
    blob += struct.pack("<IIIIII", start, end, 0x3006, writer, offset_start, offset_end)
    blob += struct.pack("<H", len(changed))
    extended = b""
    for day in changed:
        record, texts = exception(rng, day + offset_start, offset_start, offset_end)
        blob += record
        extended += struct.pack("<II", 4, 0) if writer == 0x3009 else b""
        extended += struct.pack("<I", 0) + texts
    blob += struct.pack("<I", 0) + extended + struct.pack("<I", 0)
    return blob, start_day


def tear(rng, blob):
    """Cut, changed or run together, as a broken mailbox would have it."""
    blob = bytearray(blob)
    pick = rng.random()
    if pick < 0.5:
        return bytes(blob[: rng.randrange(len(blob) + 1)])
    for _ in range(rng.choice((1, 1, 2, 4))):
        blob[rng.randrange(min(len(blob), 34 if pick < 0.7 else len(blob)))] = rng.randrange(256)
    return bytes(blob)


def case(rng):
    """Blob, zone, first time, window start, window end, subject, location, keep-all."""
    blob, start_day = pattern_blob(rng)
    if rng.random() < 0.2:
        blob = tear(rng, blob)
    from_day = start_day + datetime.timedelta(
        days=rng.choice((-400, -1, 0, 0, 1, 3, 10, 31, 45, 366, 1500)),
        minutes=rng.choice((0, 0, 300, 540, 541, 599, 600, 1410)),
        seconds=rng.choice((0, 0, 0, 59)),
    )
    to_day = from_day + datetime.timedelta(
        days=rng.choice((0, 1, 7, 31, 31, 90, 366, 3700)),
        minutes=rng.choice((0, 300, 540, 541, 1439)),
    )
    return (
        blob,
        zone_blob(rng),
        start_day,
        from_day,
        to_day,
        rng.choice(TEXTS),
        rng.choice(TEXTS),
        rng.random() < 0.1,
    )
