"""Zones: the yearly rule that a store keeps, against the zones themselves."""

import random
import struct
import unittest
from datetime import datetime, timedelta
from zoneinfo import ZoneInfo

import series_forms
from store_case import Imported, calendar

from dtstore_lib import describe, zones

CUSTOM = """BEGIN:VTIMEZONE
TZID:Harbour Time
BEGIN:STANDARD
DTSTART:16011028T030000
RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=10
TZOFFSETFROM:+0500
TZOFFSETTO:+0400
END:STANDARD
BEGIN:DAYLIGHT
DTSTART:16010325T020000
RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=3
TZOFFSETFROM:+0400
TZOFFSETTO:+0500
END:DAYLIGHT
END:VTIMEZONE
"""


class RuleTest(unittest.TestCase):
    def test_the_rule_of_a_zone_gives_its_offset_at_any_local_time(self):
        rng = random.Random(1)
        for name in series_forms.ZONES + ("Asia/Jerusalem", "Africa/Cairo", "America/Santiago", "Australia/Lord_Howe"):
            zone = ZoneInfo(name)
            rule = zones.rules_of(zone, 2026)[0]
            for _ in range(2000):
                local = datetime(2026, 1, 1) + timedelta(minutes=rng.randrange(365 * 1440))
                if not zones.is_gap(zone, local):
                    self.assertEqual(rule.offset_at(local) * 60, zones.offset_seconds(zone, local), (name, local))

    def test_the_48_bytes_stand_where_the_published_structure_has_them(self):
        data = zones.rules_of(ZoneInfo("America/New_York"), 2026)[0].to_bytes()
        self.assertEqual(struct.unpack_from("<iii", data), (300, 0, -60))
        # standard date: November, Sunday, the first, 02:00; daylight date: March, Sunday, the second, 02:00
        self.assertEqual(struct.unpack_from("<H8H", data, 12), (0, 0, 11, 0, 1, 2, 0, 0, 0))
        self.assertEqual(struct.unpack_from("<H8H", data, 30), (0, 0, 3, 0, 2, 2, 0, 0, 0))
        self.assertEqual(len(data), 48)

    def test_the_published_example_of_the_structure_is_made_of_its_zone(self):
        # [MS-OXOCAL] 4.1.5
        rule = zones.rules_of(ZoneInfo("America/Los_Angeles"), 2026)[0]
        self.assertEqual(rule.to_bytes().hex().upper(), "E001000000000000C4FFFFFF000000000B00000001000200"
                         "000000000000000000000300000002000200000000000000")

    def test_the_published_example_of_the_definition_is_made_of_its_zone(self):
        # [MS-OXOCAL] 4.1.4: its second rule stands here as the only one.
        rule = zones.rules_of(ZoneInfo("America/Los_Angeles"), 2026)[0]
        self.assertEqual(
            zones.definition_bytes(rule, "Pacific Standard Time", 2007).hex().upper(),
            "0201300002001500500061006300690066006900630020005300740061006E0064006100720064002000540069006D0065000100"
            "02013E000300D7070000000000000000000000000000E001000000000000C4FFFFFF00000B00000001000200000000000000"
            "00000300000002000200000000000000")

    def test_a_zone_without_daylight_time_has_two_empty_dates(self):
        data = zones.rules_of(ZoneInfo("Asia/Kolkata"), 2026)[0].to_bytes()
        self.assertEqual(data, struct.pack("<i", -330) + bytes(44))

    def test_a_zone_whose_clocks_follow_the_moon_has_no_rule_over_years(self):
        zone = ZoneInfo("Africa/Casablanca")
        self.assertIsNone(zones.rule_for(zone, [datetime(year, month, 15, 9) for year in (2026, 2029, 2034)
                                                for month in range(1, 13)]))

    def test_a_description_of_the_bytes_gives_the_bytes_again(self):
        for name in series_forms.ZONES:
            data = zones.rules_of(ZoneInfo(name), 2026)[0].to_bytes()
            self.assertEqual(describe.zone_bytes(describe.describe_zone(data)), data)

    def test_bytes_that_no_description_says_are_left_as_they_are(self):
        self.assertIsNone(describe.describe_zone(bytes(47)))
        self.assertIsNone(describe.describe_zone(bytes(28) + b"\x01" + bytes(19)))

    def test_the_definition_of_a_zone_holds_name_flags_and_rule(self):
        rule = zones.rules_of(ZoneInfo("Europe/Berlin"), 2026)[0]
        data = zones.definition_bytes(rule, "W. Europe Standard Time", 2026)
        self.assertEqual(data[:4], bytes((2, 1, 52, 0)))
        self.assertEqual(data[8:54].decode("utf-16-le"), "W. Europe Standard Time")
        self.assertEqual(struct.unpack_from("<HBBHHH", data, 54), (1, 2, 1, 0x3E, 3, 2026))
        self.assertEqual(struct.unpack_from("<iii", data, 78), (-60, 0, -60))
        self.assertEqual(len(data), 4 + 52 + 66)


class NameTest(unittest.TestCase):
    def test_usual_names_are_known(self):
        for name, key in (("Europe/Berlin", "Europe/Berlin"), ("W. Europe Standard Time", "Europe/Berlin"),
                          ("eastern standard time", "America/New_York"), ('"Asia/Tokyo"', "Asia/Tokyo"),
                          ("/softwarestudio.org/Olson_20011030_5/America/Chicago", "America/Chicago"),
                          ("/mozilla.org/20050126_1/Africa/Lagos", "Africa/Lagos")):
            self.assertEqual(zones.find(name).key, key)
        self.assertIs(zones.find("UTC"), zones.UTC)

    def test_unknown_names_are_not_guessed(self):
        for name in ("", None, "Mars/Olympus", "Berlin", "../etc/passwd"):
            self.assertIsNone(zones.find(name))

    def test_every_windows_name_leads_to_a_zone(self):
        for windows in zones.ZONE_OF_WINDOWS:
            self.assertIsNotNone(zones.find(windows), windows)


class FileZoneTest(unittest.TestCase):
    EVENT = "UID:1@x\nSUMMARY:a\nDTSTART;TZID={0}:20260715T090000\nDTEND;TZID={0}:20260715T100000"

    def start(self, name, head="", **more):
        done = Imported(calendar(self.EVENT.format(name), head=head), **more)
        return done.messages[0]["properties"]["PidLidAppointmentStartWhole"], done.texts

    def test_a_zone_that_the_file_describes_itself_is_taken_from_there(self):
        self.assertEqual(self.start("Harbour Time", CUSTOM), ("2026-07-15T04:00:00Z", []))

    def test_an_unknown_zone_is_told_and_the_default_one_taken(self):
        start, notes = self.start("Nowhere")
        self.assertEqual(start, "2026-07-15T07:00:00Z")
        self.assertIn("the zone 'Nowhere' is not known; W. Europe Standard Time is taken instead", notes)

    def test_a_series_in_a_zone_of_the_file_keeps_its_rule(self):
        text = calendar(self.EVENT.format("Harbour Time") + "\nRRULE:FREQ=WEEKLY;COUNT=30", head=CUSTOM)
        properties = Imported(text).messages[0]["properties"]
        self.assertEqual(describe.describe_zone(bytes.fromhex(properties["PidLidTimeZoneStruct"])), {
            "bias": -240, "standardBias": 0, "daylightBias": -60,
            "standardDate": {"month": 10, "week": 5, "day": "SU", "time": "03:00"},
            "daylightDate": {"month": 3, "week": 5, "day": "SU", "time": "02:00"}})

    def test_a_floating_time_is_local_to_the_default_zone(self):
        done = Imported(calendar("UID:1\nDTSTART:20260715T090000\nDTEND:20260715T100000"), zone="America/New_York")
        self.assertEqual(done.messages[0]["properties"]["PidLidAppointmentStartWhole"], "2026-07-15T13:00:00Z")

    def test_the_files_own_zone_comes_before_that_of_the_machine(self):
        event = "UID:1\nDTSTART:20260715T090000\nDTEND:20260715T100000"
        text = calendar(event, head="X-WR-TIMEZONE:Asia/Tokyo\n")
        self.assertEqual(Imported(text).messages[0]["properties"]["PidLidAppointmentStartWhole"], "2026-07-15T00:00:00Z")
        given = Imported(text, zone_is_given=True).messages[0]["properties"]["PidLidAppointmentStartWhole"]
        self.assertEqual(given, "2026-07-15T07:00:00Z")


if __name__ == "__main__":
    unittest.main()
