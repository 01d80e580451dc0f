"""The samples: they are what their script writes, come in without a note, and hold what they promise."""

import filecmp
import json
import os
import subprocess
import sys
import unicodedata
import unittest

from store_case import SOURCE, StoreCase

SAMPLES = os.path.join(SOURCE, "samples")
PARTS = ("calendar", "contacts", "address-book", "mail")


def files_below(top):
    return sorted(os.path.relpath(os.path.join(folder, name), top) for part in PARTS
                  for folder, _, names in os.walk(os.path.join(top, part)) for name in names)


class SampleTest(StoreCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        keeper = StoreCase()
        keeper.setUp()
        cls.addClassCleanup(keeper.doCleanups)
        cls.result = keeper.run_tool("new", "s", "--samples", "--today", "2026-11-20", "--strict", zone="Europe/Oslo")
        with open(keeper.path("s/store.json"), encoding="utf-8") as file:
            cls.document = json.load(file)
        cls.messages = cls.document["stores"][0]["messages"]
        cls.validated = keeper.run_tool("validate", "s")
        cls.file = staticmethod(lambda name: open(keeper.path("s/" + name), "rb").read())

    def held(self, key):
        return [message["properties"][key] for message in self.messages if key in message["properties"]]

    def test_the_files_are_what_their_script_writes(self):
        subprocess.run([sys.executable, "-B", os.path.join(SAMPLES, "make_samples.py"), self.folder], check=True)
        self.assertEqual(files_below(self.folder), files_below(SAMPLES))
        for name in files_below(SAMPLES):
            self.assertTrue(filecmp.cmp(self.path(name), os.path.join(SAMPLES, name), shallow=False), name)

    def test_everything_comes_in_without_a_note(self):
        self.assertEqual((self.result.returncode, self.result.stderr), (0, ""))
        self.assertEqual(self.validated.returncode, 0, self.validated.stderr)

    def test_the_calendar_has_every_kind_of_series(self):
        self.assertEqual(set(self.held("PidLidRecurrenceType")), {1, 2, 3, 4})
        words = " ".join(self.held("PidLidRecurrencePattern"))
        for kind in ("every weekday", "every 9 days", "every 2 weeks on", "every Saturday and Sunday", "day 15 of every month",
                     "day 31 of every month", "the second Tuesday", "the first weekday", "the last Friday", "the third weekend day",
                     "every year", "every 2 years", "of every 3 months"):
            self.assertIn(kind, words)

    def test_the_calendar_has_two_zones(self):
        self.assertEqual(set(self.held("PidLidTimeZoneDescription")), {"W. Europe Standard Time", "Eastern Standard Time"})

    def test_the_calendar_fills_half_a_year(self):
        begun = {text[:7] for text in self.held("PidLidAppointmentStartWhole")}
        self.assertLessEqual({"2026-10", "2026-11", "2026-12", "2027-01", "2027-02"}, begun)
        self.assertTrue(any("2027-03-31" < last < "2027-05" for last in self.held("PidLidClipEnd")))

    def test_series_of_both_zones_run_across_both_changes_of_the_clocks(self):
        switches = {"W. Europe Standard Time": ("2026-10-25", "2027-03-28"), "Eastern Standard Time": ("2026-11-01", "2027-03-14")}
        for zone, (winter, summer) in switches.items():
            spans = [(one["properties"]["PidLidClipStart"], one["properties"]["PidLidClipEnd"]) for one in self.messages
                     if one["properties"].get("PidLidTimeZoneDescription") == zone]
            self.assertTrue(any(first < winter and last > summer for first, last in spans), (zone, spans))

    def test_the_calendar_has_moved_changed_and_cancelled_instances(self):
        shown = [attachment["message"]["properties"] for message in self.messages for attachment in message.get("attachments", ())
                 if "message" in attachment]
        self.assertEqual(len(shown), 5)
        self.assertIn(7, [inner["PidLidAppointmentStateFlags"] for inner in shown])
        self.assertIn("Planning, long", [inner["PR_SUBJECT_W"] for inner in shown])

    def test_the_calendar_has_all_day_events_and_every_answer(self):
        self.assertGreater(self.held("PidLidAppointmentSubType").count(True), 5)
        self.assertEqual(set(self.held("PidLidResponseStatus")), {0, 1, 2, 3, 4})
        self.assertLessEqual({0, 2, 3}, set(self.held("PidLidBusyStatus")))

    def test_one_meeting_has_two_hundred_attendees(self):
        self.assertEqual(max(len(message.get("recipients", ())) for message in self.messages), 201)

    def test_a_body_is_longer_than_one_read_gives(self):
        sizes = [len(self.file(body["file"])) for body in self.held("PR_BODY_W") if isinstance(body, dict)]
        self.assertGreater(max(sizes), 32768)

    def test_texts_stand_in_more_than_six_scripts_and_in_surrogate_pairs(self):
        text = "".join(self.held("PR_SUBJECT_W"))
        scripts = {unicodedata.name(character).split()[0] for character in text if character.isalpha()}
        self.assertLessEqual({"LATIN", "GREEK", "CYRILLIC", "CJK", "HIRAGANA", "ARABIC", "HEBREW", "DEVANAGARI"}, scripts)
        self.assertTrue(any(ord(character) > 0xFFFF for character in text))

    def test_every_contact_has_a_photo(self):
        contacts = [message for message in self.messages if message["class"] == "IPM.Contact"]
        photos = [attachment["properties"]["PR_ATTACH_DATA_BIN"]["file"] for contact in contacts
                  for attachment in contact["attachments"]]
        self.assertEqual((len(contacts), len(photos)), (14, 14))
        self.assertTrue(all(self.file(name).startswith(b"\x89PNG") for name in photos))

    def test_the_address_book_has_containers_inside_containers(self):
        book = self.document["addressBook"]
        parents = {one["id"]: one["parent"] for one in book["containers"]}
        depths = []
        for number in parents:
            depth, at = 0, number
            while parents[at] is not None:
                depth, at = depth + 1, parents[at]
            depths.append(depth)
        self.assertEqual(max(depths), 2)
        self.assertIn("distList", [entry.get("type") for entry in book["entries"]])
        self.assertIn("EX", [entry["properties"].get("PR_ADDRTYPE_W") for entry in book["entries"]])

    def test_inbox_and_sent_items_hold_mail(self):
        folders = {folder["id"]: folder.get("role") for folder in self.document["stores"][0]["folders"]}
        roles = [folders[message["folder"]] for message in self.messages if message["class"] == "IPM.Note"]
        self.assertEqual((roles.count("inbox"), roles.count("sentItems")), (8, 4))


if __name__ == "__main__":
    unittest.main()
