"""The page that describes a store, against the tool that follows it; recurrence and zones as bytes."""

import glob
import json
import os
import random
import re
import struct
import unittest
from datetime import date, datetime, timedelta

from store_case import DATA, SOURCE

from dtstore_lib import blobs, describe, document, names, schema, values
from dtstore_lib.pattern import DAYS, WEEKEND, WORKDAYS, Changed, Pattern, PatternProblem, sentence

PAGE = os.path.join(SOURCE, "docs", "mapistore.md")
VECTORS = sorted(glob.glob(os.path.join(DATA, "recurrence-encoding", "*.json")))


def page():
    with open(PAGE, encoding="utf-8") as file:
        return file.read()


class PageTest(unittest.TestCase):
    def test_the_complete_example_is_sound(self):
        example = re.findall(r"```json\n(.*?)```", page(), re.S)[-1]
        self.assertEqual([str(finding) for finding in schema.check(json.loads(example))], [])

    def test_every_known_name_stands_in_the_table_and_no_other(self):
        told = dict(re.findall(r"\| `(PidLid\w+)` \| `([^`]+)` \|", page()))
        self.assertEqual(told, {name: f"{set_name}:0x{number:04X}:{type_name}"
                                for name, (set_name, number, type_name) in names.KNOWN.items()})

    def test_every_property_set_stands_in_the_table(self):
        told = dict(re.findall(r"\| `(PS\w+)` \| (\{[0-9A-F-]+\}) \|", page()))
        self.assertEqual(told, names.SETS)

    def test_the_roles_are_those_of_the_page(self):
        told = re.search(r"^Roles: (.*?)\. A hierarchy", page(), re.S | re.M).group(1)
        self.assertEqual(tuple(re.findall(r'"(\w+)"', told.replace('the class ""', "").replace('"IPM"', ""))), schema.ROLES)

    def test_every_readable_piece_of_the_page_encodes(self):
        pieces = [json.loads(piece) for piece in re.findall(r"```json\n(\{ \"(?:timeZone).*?)```", page(), re.S)]
        self.assertEqual([len(describe.zone_bytes(piece["timeZone"])) for piece in pieces], [48])


class NamesTest(unittest.TestCase):
    def test_names_of_one_property_are_the_same_property(self):
        same = [("PR_SUBJECT", "0x0037001F"), ("PR_SUBJECT_W", "PR_SUBJECT_A"),
                ("PidLidLocation", "PSETID_Appointment:0x8208:PT_UNICODE"),
                ("PSETID_Address:0x8084:PT_UNICODE", "{00062004-0000-0000-c000-000000000046}:0x8084:PT_STRING8"),
                ("PS_PUBLIC_STRINGS:TalvoKey:PT_UNICODE", "PS_PUBLIC_STRINGS:talvokey:PT_UNICODE")]
        for one, other in same:
            self.assertEqual(values.identity_of(one)[0], values.identity_of(other)[0])

    def test_a_string_name_may_hold_colons(self):
        self.assertEqual(names.named_key("PS_PUBLIC_STRINGS:urn:a:b:PT_UNICODE")[1], "urn:a:b")

    def test_wrong_keys_are_refused_with_the_reason(self):
        wrong = {"PR_NOTHING": "unknown property", "0x8014001F": "belong to named properties",
                 "0x0037000D": "no property type", "PSETID_Nothing:0x1:PT_LONG": "unknown property set",
                 "PSETID_Address:0x1:PT_OBJECT": "unknown property type", "PSETID_Address::PT_LONG": "is missing",
                 "PSETID_Address:PT_LONG": "expected SET:IDENTIFIER:TYPE"}
        for key, reason in wrong.items():
            with self.assertRaisesRegex(names.NameProblem, reason, msg=key):
                values.identity_of(key)


class ValueTest(unittest.TestCase):
    GOOD = (
        ("PT_UNICODE", "x"), ("PT_UNICODE", {"file": "files/a.txt"}), ("PT_LONG", -5), ("PT_LONG", "0xFFFFFFFF"),
        ("PT_I2", 65535), ("PT_I8", "9223372036854775807"), ("PT_BOOLEAN", True), ("PT_DOUBLE", 1.5), ("PT_CURRENCY", 1.25),
        ("PT_SYSTIME", "2026-11-02T09:00:00.1234567Z"), ("PT_CLSID", "{00020329-0000-0000-C000-000000000046}"),
        ("PT_BINARY", ""), ("PT_BINARY", "0aFF"), ("PT_BINARY", {"folder": 3}), ("PT_BINARY", {"globalObjectId": "a"}),
        ("PT_MV_UNICODE", ["a", "b"]), ("PT_MV_BINARY", []), ("PT_LONG", {"error": "0x8007000E"}))
    BAD = (
        ("PT_UNICODE", 1), ("PT_UNICODE", "a\0b"), ("PT_UNICODE", "\ud83d"), ("PT_UNICODE", {"file": "../x"}),
        ("PT_UNICODE", {"file": "files/../x"}), ("PT_LONG", 1 << 32), ("PT_LONG", True), ("PT_LONG", "9"), ("PT_I2", -32769),
        ("PT_BOOLEAN", 1), ("PT_DOUBLE", "1"), ("PT_CURRENCY", 0.00001), ("PT_SYSTIME", "2026-11-02T09:00:00"),
        ("PT_SYSTIME", "2026-02-30T09:00:00Z"), ("PT_SYSTIME", "1600-01-01T00:00:00Z"), ("PT_CLSID", "x"),
        ("PT_BINARY", "0"), ("PT_BINARY", "zz"), ("PT_BINARY", {"folder": "3"}), ("PT_BINARY", {"thing": 3}),
        ("PT_BINARY", {"folder": 3, "message": 4}), ("PT_MV_UNICODE", "a"), ("PT_MV_LONG", ["a"]), ("PT_LONG", {"error": 5}))

    def test_each_type_takes_its_values(self):
        for type_name, value in self.GOOD:
            self.assertIsNone(values.problem_of(names.TYPES[type_name], value, []), (type_name, value))

    def test_each_type_refuses_what_it_cannot_hold(self):
        for type_name, value in self.BAD:
            self.assertIsNotNone(values.problem_of(names.TYPES[type_name], value, []), (type_name, value))


class BytesTest(unittest.TestCase):
    def test_every_vector_encodes_to_its_bytes(self):
        self.assertGreaterEqual(len(VECTORS), 10)
        for path in VECTORS:
            with open(path, encoding="utf-8") as file:
                vector = json.load(file)
            self.assertEqual(describe.recurrence_bytes(vector["recurrence"]).hex().upper(), vector["bytes"], path)

    def test_every_vector_reads_back_as_its_description(self):
        for path in VECTORS:
            with open(path, encoding="utf-8") as file:
                vector = json.load(file)
            pattern = blobs.decode(bytes.fromhex(vector["bytes"]))
            self.assertEqual(blobs.encode(pattern).hex().upper(), vector["bytes"], path)

    def test_every_shortened_vector_is_refused(self):
        for path in VECTORS:
            with open(path, encoding="utf-8") as file:
                data = bytes.fromhex(json.load(file)["bytes"])
            for size in range(len(data)):
                with self.assertRaises(blobs.BlobProblem, msg=(path, size)):
                    blobs.decode(data[:size])
            with self.assertRaisesRegex(blobs.BlobProblem, "1 bytes follow"):
                blobs.decode(data + b"\0")

    def test_a_calendar_other_than_the_gregorian_is_refused(self):
        # [MS-OXOCAL] 4.1.1.6, a Hebrew year
        data = bytes.fromhex(
            "043004300D200200080080750A000C0000000000000003000000232000000A0000000000000001000000207EDC0C01000000207EDC0C"
            "6074C40CDF80E95A0630000009300000E0010000FE01000001000080DC0C1E80DC0C0080DC0C24023C00000001000000000000000400"
            "0000000000000000000000000000")
        with self.assertRaisesRegex(blobs.BlobProblem, "calendar type 8"):
            blobs.decode(data)

    def test_the_first_date_time_of_each_kind_follows_the_published_rule(self):
        def pattern(**more):
            return Pattern(start=date(2026, 11, 4), start_minute=0, end_minute=1, **more)
        minutes_to_start = (date(2026, 11, 4) - date(1601, 1, 1)).days * 1440
        self.assertEqual(blobs.first_date_time(pattern(frequency="daily", interval=7)), minutes_to_start % 10080)
        self.assertEqual(blobs.first_date_time(pattern(frequency="workdays")), 8640)
        self.assertEqual(blobs.first_date_time(pattern(frequency="weekly", days=("WE",))), 8640)
        self.assertEqual(blobs.first_date_time(pattern(frequency="weekly", days=("WE",), first_day="MO")), 0)
        # November 1601 is 304 days after the first of January.
        self.assertEqual(blobs.first_date_time(pattern(frequency="yearly", day_of_month=4)), 304 * 1440)
        self.assertEqual(blobs.first_date_time(pattern(frequency="monthly", day_of_month=4)), 0)

    def test_a_random_pattern_survives_the_way_to_bytes_and_back(self):
        rng = random.Random(7)
        for _ in range(3000):
            pattern = random_pattern(rng)
            data = blobs.encode(pattern)
            again = blobs.decode(data)
            self.assertEqual(blobs.encode(again), data)
            self.assertEqual(list(again.instances(pattern.start + timedelta(days=400))),
                             list(pattern.instances(pattern.start + timedelta(days=400))))
            self.assertEqual(describe.recurrence_bytes(describe.describe_pattern(pattern)), data)

    def test_damaged_bytes_are_refused_or_read_but_never_worse(self):
        rng = random.Random(8)
        refused = 0
        for _ in range(3000):
            data = bytearray(blobs.encode(random_pattern(rng)))
            for _ in range(rng.randint(1, 4)):
                data[rng.randrange(len(data))] = rng.randrange(256)
            try:
                blobs.decode(bytes(data))
            except (blobs.BlobProblem, OverflowError):
                refused += 1
        self.assertGreater(refused, 500)

    def test_the_global_object_identifier_holds_the_text_behind_vcal_uid(self):
        data = describe.global_object_id_bytes("event-1@nordlys.example")
        size, = struct.unpack_from("<I", data, 36)
        self.assertEqual(data[40:48], b"vCal-Uid")
        self.assertEqual(data[52:], b"event-1@nordlys.example\0")
        self.assertEqual(size - 12, len(data[52:]))

    def test_a_clients_own_global_object_identifier_is_passed_on(self):
        own = "040000008200E00074C5B7101A82E008" + "00" * 20 + "10000000" + "AB" * 16
        self.assertEqual(describe.global_object_id_bytes(own).hex().upper(), own)

    def test_a_one_off_identifier_has_the_wide_form(self):
        data = describe.one_off_bytes({"name": "Bo", "type": "SMTP", "address": "b@c"})
        self.assertEqual(data[:24].hex().upper(), "00000000812B1FA4BEA310199D6E00DD010F540200000190")
        self.assertEqual(data[24:].decode("utf-16-le"), "Bo\0SMTP\0b@c\0")

    def test_entry_identifiers_follow_the_page(self):
        self.assertEqual(describe.entry_id_bytes("message", "00112233445566778899AABBCCDDEEFF", 0x1234, table_form=True).hex(),
                         "80000000" "00112233445566778899aabbccddeeff" "01050000" "3412000000000000")
        self.assertEqual(describe.entry_id_bytes("entry", "00" * 16, 1, dist_list=True)[21], 8)

    def test_wrong_descriptions_are_refused_with_the_place(self):
        good = {"frequency": "weekly", "days": ["MO"], "start": "2026-11-02", "startMinute": 0, "endMinute": 30, "end": "never"}
        wrong = [({"frequency": "hourly"}, "frequency"), ({"days": []}, "needs days"), ({"start": "2026-13-01"}, "start"),
                 ({"startMinute": 1440}, "startMinute"), ({"endMinute": -1}, "endMinute"), ({"end": "soon"}, "end"),
                 ({"end": {"count": 3}}, "last is missing"), ({"end": {"until": "2026-11-01"}}, "before the first"),
                 ({"interval": 100}, "interval"), ({"colour": 1}, "unknown key"), ({"deleted": ["x"]}, r"deleted\[0\]"),
                 ({"modified": [{"original": "2026-11-02T00:00", "start": "2026-11-02T02:00", "end": "2026-11-02T01:00"}]},
                  "ends before it starts"), ({"writerVersion2": "0x3010"}, "writerVersion2"), ({"week": 2}, "neither a week")]
        for change, reason in wrong:
            with self.assertRaisesRegex(describe.DescriptionProblem, reason, msg=change):
                describe.recurrence_bytes({**good, **change})

    def test_a_sentence_says_the_rule(self):
        base = {"start": date(2026, 11, 2), "start_minute": 540, "end_minute": 600}
        told = {
            "every Monday and Friday effective 2026-11-02 from 09:00 to 10:00": {"frequency": "weekly", "days": ("FR", "MO")},
            "every 3 days effective 2026-11-02 from 09:00 to 10:00": {"frequency": "daily", "interval": 3},
            "every weekday effective 2026-11-02 from 09:00 to 10:00": {"frequency": "workdays"},
            "the last weekend day of every 2 months effective 2026-11-02 from 09:00 to 10:00":
                {"frequency": "monthly", "interval": 2, "days": WEEKEND, "week": 5},
            "day 2 of November every year effective 2026-11-02 until 2030-11-02 from 09:00 to 10:00":
                {"frequency": "yearly", "day_of_month": 2, "last": date(2030, 11, 2)}}
        for text, fields in told.items():
            self.assertEqual(sentence(Pattern(**base, **fields)), text)


def random_pattern(rng):
    """A sound pattern of any kind, often with exceptions."""
    frequency = rng.choice(("daily", "workdays", "weekly", "monthly", "yearly"))
    begin = rng.randrange(1440)
    pattern = Pattern(frequency=frequency, start=date(2020, 1, 1) + timedelta(days=rng.randrange(3000)), start_minute=begin,
                      end_minute=begin + rng.randrange(3000), first_day=rng.choice(DAYS), writer2=rng.choice((0x3008, 0x3009)))
    if frequency != "workdays":
        pattern.interval = rng.randint(1, 6)
    if frequency == "weekly":
        pattern.days = tuple(day for day in DAYS if rng.random() < 0.4) or ("MO",)
    if frequency in ("monthly", "yearly"):
        if rng.random() < 0.5:
            pattern.day_of_month = rng.randint(1, 31)
        else:
            pattern.week, pattern.days = rng.randint(1, 5), rng.choice((("TU",), WEEKEND, WORKDAYS, DAYS))
            pattern.days = tuple(day for day in DAYS if day in pattern.days)
    pattern.start = next(pattern.dates())
    end = rng.choice(("never", "until", "count"))
    dates = [day for day, _ in zip(pattern.dates(), range(rng.randint(1, 40)))]
    if end != "never":
        pattern.last, pattern.count = dates[-1], len(dates) if end == "count" else None
    for day in rng.sample(dates, min(len(dates), rng.choice((0, 1, 3)))):
        original = datetime(day.year, day.month, day.day) + timedelta(minutes=begin)
        if rng.random() < 0.4:
            pattern.deleted.append(day)
            continue
        start = original + timedelta(minutes=rng.randint(0, 3000))
        changed = Changed(original, start, start + timedelta(minutes=rng.randint(0, 90)), body=rng.random() < 0.2)
        for name, value in (("subject", "Änderung 漢字"), ("location", ""), ("meeting_type", 7), ("reminder", True),
                            ("reminder_minutes", 15), ("busy_status", 1), ("attachments", 1), ("all_day", False), ("color", 3)):
            if rng.random() < 0.3:
                setattr(changed, name, value)
        pattern.changed.append(changed)
    pattern.changed.sort(key=lambda one: (one.start, one.original))
    pattern.check()
    return pattern


class PatternTest(unittest.TestCase):
    def test_what_no_pattern_can_be_is_refused(self):
        base = {"frequency": "weekly", "days": ("MO",), "start": date(2026, 11, 2), "start_minute": 0, "end_minute": 1}
        for change, reason in (({"days": ("MO", "MO")}, "twice"), ({"days": ("XX",)}, "none of"), ({"interval": 0}, "interval"),
                               ({"count": 3}, "count"), ({"start": date(1600, 1, 1)}, "years"), ({"writer2": 1}, "writer"),
                               ({"frequency": "monthly"}, "either"), ({"deleted": [date(2026, 11, 2)] * 2}, "left out twice")):
            with self.assertRaisesRegex(PatternProblem, reason, msg=change):
                Pattern(**{**base, **change}).check()

    def test_the_offset_of_a_place_finds_the_value(self):
        text = '{ "a": [ {"b\\"c": 1}, {"x": {"y": [10, 20]}} ], "z": "q" }'
        self.assertEqual(text[document.offset_of(text, ("a", 1, "x", "y", 1)):][:2], "20")
        self.assertEqual(text[document.offset_of(text, ("a", 0, 'b"c')):][0], "1")
        self.assertEqual(text[document.offset_of(text, ("z",)):][:3], '"q"')


if __name__ == "__main__":
    unittest.main()
