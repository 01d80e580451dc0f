"""Calendar files into appointment messages: each property, meetings, series with exceptions."""

import unittest
from datetime import datetime

from store_case import Imported, calendar

from dtstore_lib import blobs, schema, values
from dtstore_lib.names import SETS, named_key
from dtstore_lib.problem import Problem

NINE = "UID:1@x\nSUMMARY:Review\nDTSTART;TZID=Europe/Berlin:20261102T090000\nDTEND;TZID=Europe/Berlin:20261102T100000"
WEEKLY = NINE + "\nRRULE:FREQ=WEEKLY;BYDAY=MO;COUNT=6"
ME = "mailto:ada.quist@nordlys.example"
OTHER = "mailto:bo.ferrand@nordlys.example"


def properties(*events, **more):
    return Imported(calendar(*events), **more).messages[0]["properties"]


def pattern(message):
    return blobs.decode(bytes.fromhex(message["properties"]["PidLidAppointmentRecur"]))


class SingleTest(unittest.TestCase):
    def test_times_are_kept_in_utc_with_duration_and_clip_range(self):
        held = properties(NINE)
        self.assertEqual([held[key] for key in (
            "PidLidAppointmentStartWhole", "PidLidAppointmentEndWhole", "PidLidAppointmentDuration", "PidLidClipStart",
            "PidLidClipEnd", "PidLidRecurring", "PidLidAppointmentSubType")], [
            "2026-11-02T08:00:00Z", "2026-11-02T09:00:00Z", 60, "2026-11-02T08:00:00Z", "2026-11-02T09:00:00Z", False, False])

    def test_a_whole_day_runs_from_midnight_to_midnight_of_the_default_zone(self):
        held = properties("UID:1\nDTSTART;VALUE=DATE:20261102", zone="America/New_York")
        self.assertEqual((held["PidLidAppointmentStartWhole"], held["PidLidAppointmentEndWhole"],
                          held["PidLidAppointmentSubType"]), ("2026-11-02T05:00:00Z", "2026-11-03T05:00:00Z", True))

    def test_a_length_may_stand_in_place_of_an_end(self):
        self.assertEqual(properties("UID:1\nDTSTART:20261102T090000Z\nDURATION:PT1H30M")["PidLidAppointmentDuration"], 90)

    def test_an_end_in_another_zone_is_the_same_moment(self):
        held = properties("UID:1\nDTSTART;TZID=Europe/Berlin:20261102T090000\nDTEND;TZID=America/New_York:20261102T120000")
        self.assertEqual(held["PidLidAppointmentEndWhole"], "2026-11-02T17:00:00Z")

    def test_an_end_before_the_start_is_told_and_left_out(self):
        done = Imported(calendar("UID:1\nDTSTART:20261102T090000Z\nDTEND:20261102T080000Z"))
        self.assertEqual(done.messages[0]["properties"]["PidLidAppointmentDuration"], 0)
        self.assertIn("ends before it starts; it is kept without length", done.texts)

    def test_texts_of_every_script_arrive_unchanged(self):
        text = "Ünïcode, Ελληνικά; кириллица 漢字 العربية עברית हिन्दी 𝒳🎯"
        escaped = text.replace(",", "\\,").replace(";", "\\;")
        held = properties(f"UID:1\nSUMMARY:{escaped}\nLOCATION:{escaped}\nDESCRIPTION:{escaped}\\nsecond\nDTSTART:20261102T090000Z")
        self.assertEqual((held["PR_SUBJECT_W"], held["PidLidLocation"], held["PR_BODY_W"]), (text, text, text + "\r\nsecond"))

    def test_a_long_body_goes_into_a_file(self):
        done = Imported(calendar("UID:1\nDTSTART:20261102T090000Z\nDESCRIPTION:" + "ü" * 9000))
        name = done.messages[0]["properties"]["PR_BODY_W"]["file"]
        self.assertEqual(done.files[name].decode(), "ü" * 9000)

    def test_markup_is_kept_and_made_where_there_is_none(self):
        held = properties("UID:1\nDTSTART:20261102T090000Z\nDESCRIPTION:a\nX-ALT-DESC;FMTTYPE=text/html:<html><b>a</b></html>")
        self.assertEqual(held["PR_BODY_HTML_W"], "<html><b>a</b></html>")
        held = properties("UID:1\nDTSTART:20261102T090000Z\nDESCRIPTION:a < b\\nc")
        self.assertEqual(held["PR_BODY_HTML_W"], "<html><body><p>a &lt; b<br>\r\nc</p></body></html>")

    def test_markup_is_ascii_whatever_it_says(self):
        held = properties("UID:1\nDTSTART:20261102T090000Z\nDESCRIPTION:漢字 🎯")
        self.assertEqual(held["PR_BODY_HTML_W"], "<html><body><p>&#28450;&#23383; &#127919;</p></body></html>")

    def test_busy_states_follow_the_words_of_the_file(self):
        for lines, busy in (("", 2), ("TRANSP:TRANSPARENT", 0), ("STATUS:TENTATIVE", 1), ("X-MICROSOFT-CDO-BUSYSTATUS:OOF", 3),
                            ("TRANSP:TRANSPARENT\nX-MICROSOFT-CDO-BUSYSTATUS:WORKINGELSEWHERE", 4)):
            self.assertEqual(properties(NINE + "\n" + lines)["PidLidBusyStatus"], busy, lines)

    def test_priority_class_and_reminder_are_kept(self):
        held = properties(NINE + "\nPRIORITY:1\nCLASS:PRIVATE\nBEGIN:VALARM\nACTION:DISPLAY\nTRIGGER:-PT15M\nEND:VALARM")
        self.assertEqual((held["PR_IMPORTANCE"], held["PR_SENSITIVITY"], held["PidLidReminderSet"], held["PidLidReminderDelta"]),
                         (2, 2, True, 15))

    def test_the_identifier_is_kept_as_a_global_object_identifier(self):
        data = bytes.fromhex(properties(NINE)["PidLidGlobalObjectId"])
        self.assertEqual(data[40:], b"vCal-Uid\x01\x00\x00\x001@x\x00")

    def test_named_properties_of_other_programs_can_stand_in_a_file(self):
        held = properties(NINE + '\nX-DT-PROPERTY;NAME="PS_PUBLIC_STRINGS:TalvoKey:PT_UNICODE":k-1')
        self.assertEqual(held["PS_PUBLIC_STRINGS:TalvoKey:PT_UNICODE"], "k-1")

    def test_a_named_property_goes_before_what_stands_under_another_name_of_it(self):
        held = properties(NINE + '\nLOCATION:a\nX-DT-PROPERTY;NAME="PSETID_Appointment:0x8208:PT_UNICODE":b'
                          '\nX-DT-PROPERTY;NAME="PSETID_Appointment:0x8214:PT_LONG":3')
        self.assertNotIn("PidLidLocation", held)
        self.assertEqual((held["PSETID_Appointment:0x8208:PT_UNICODE"], held["PSETID_Appointment:0x8214:PT_LONG"]), ("b", 3))

    def test_a_named_property_that_cannot_be_is_told(self):
        done = Imported(calendar(NINE + '\nX-DT-PROPERTY;NAME="PR_NOTHING":x\nX-DT-PROPERTY;NAME="PR_IMPORTANCE":high'))
        self.assertEqual(done.texts[0], "the property 'PR_NOTHING' is left out (unknown property)")
        self.assertTrue(done.texts[1].startswith("the property 'PR_IMPORTANCE' is left out ("))

    def test_what_is_left_out_is_told(self):
        done = Imported(calendar(NINE + "\nCATEGORIES:a,b\nATTACH:http://x.example/a"))
        self.assertEqual(done.texts, ["categories are left out", "attachments are left out"])

    def test_an_event_without_a_start_is_told(self):
        done = Imported(calendar("UID:1\nSUMMARY:lost", NINE))
        self.assertEqual((len(done.messages), done.notes), (1, [("event 1 'lost'", "has no start and is left out")]))

    def test_other_components_are_counted(self):
        text = calendar(NINE).replace("END:VCALENDAR", "BEGIN:VTODO\r\nUID:2\r\nEND:VTODO\r\nEND:VCALENDAR")
        self.assertEqual(Imported(text).texts, ["1 of VTODO are no events and are left out"])

    def test_a_file_that_is_no_calendar_is_refused(self):
        for text in ("", "hello", "BEGIN:VCARD\r\nEND:VCARD\r\n"):
            with self.assertRaisesRegex(Problem, "test.ics: is no iCalendar file"):
                Imported(text)

    def test_a_broken_file_is_refused_with_the_reason(self):
        with self.assertRaisesRegex(Problem, "test.ics: cannot be read as iCalendar"):
            Imported("BEGIN:VCALENDAR\r\nthis is no line\r\nEND:VCALENDAR\r\n")

    def test_a_file_in_the_old_western_code_is_read_and_told(self):
        done = Imported(calendar(NINE.replace("Review", "Überblick")).encode("cp1252"))
        self.assertEqual(done.messages[0]["properties"]["PR_SUBJECT_W"], "Überblick")
        self.assertEqual(done.texts, ["is not UTF-8; it is read as Windows-1252"])


class MeetingTest(unittest.TestCase):
    def rows(self, lines):
        message = Imported(calendar(NINE + "\n" + lines)).messages[0]
        return message["properties"], [(row["PR_EMAIL_ADDRESS_W"].partition("@")[0], row["PR_RECIPIENT_TYPE"],
                                        row["PR_RECIPIENT_FLAGS"], row["PR_RECIPIENT_TRACKSTATUS"])
                                       for row in message.get("recipients", [])]

    def test_the_host_stands_first_with_both_flags(self):
        _, rows = self.rows(f"ATTENDEE;CN=Bo;PARTSTAT=ACCEPTED:{OTHER}\nORGANIZER;CN=Ada:{ME}")
        self.assertEqual(rows, [("ada.quist", 1, 3, 1), ("bo.ferrand", 1, 1, 3)])

    def test_a_host_among_the_attendees_stands_once(self):
        _, rows = self.rows(f"ATTENDEE:{ME}\nATTENDEE:{OTHER}\nORGANIZER:{ME}")
        self.assertEqual([row[0] for row in rows], ["ada.quist", "bo.ferrand"])

    def test_answers_roles_and_rooms_are_kept(self):
        _, rows = self.rows(
            f"ORGANIZER:{ME}\nATTENDEE;PARTSTAT=DECLINED:mailto:a@x\nATTENDEE;PARTSTAT=TENTATIVE;ROLE=OPT-PARTICIPANT:mailto:b@x"
            "\nATTENDEE;CUTYPE=ROOM:mailto:c@x\nATTENDEE;PARTSTAT=DELEGATED;ROLE=NON-PARTICIPANT:mailto:d@x")
        self.assertEqual(rows[1:], [("a", 1, 1, 4), ("b", 2, 1, 2), ("c", 3, 1, 5), ("d", 2, 1, 0)])

    def test_states_of_own_received_and_plain_events(self):
        for lines, state, answer in (("", 0, 0), (f"ORGANIZER:{ME}\nATTENDEE:{OTHER}", 1, 1),
                                     (f"ORGANIZER:{OTHER}\nATTENDEE;PARTSTAT=TENTATIVE:{ME}", 3, 2),
                                     (f"ORGANIZER:{OTHER}\nATTENDEE;PARTSTAT=NEEDS-ACTION:{ME}", 3, 5),
                                     (f"ORGANIZER:{OTHER}\nSTATUS:CANCELLED", 7, 5)):
            held, _ = self.rows(lines)
            self.assertEqual((held["PidLidAppointmentStateFlags"], held["PidLidResponseStatus"]), (state, answer), lines)

    def test_two_hundred_attendees_keep_their_order(self):
        lines = "\n".join(f"ATTENDEE;CN=Person {n}:mailto:p{n}@x.example" for n in range(200))
        _, rows = self.rows(f"ORGANIZER:{ME}\n{lines}")
        self.assertEqual([row[0] for row in rows[1:]], [f"p{n}" for n in range(200)])

    def test_the_sender_is_the_host(self):
        held, _ = self.rows(f"ORGANIZER;CN=Bo Ferrand:{OTHER}")
        self.assertEqual(held["PR_SENT_REPRESENTING_ENTRYID"], {"oneOff": {
            "name": "Bo Ferrand", "type": "SMTP", "address": "bo.ferrand@nordlys.example"}})


class SeriesTest(unittest.TestCase):
    def changed(self, *events, head=WEEKLY):
        done = Imported(calendar(head, *events))
        return done, done.messages[0], pattern(done.messages[0])

    def override(self, day, lines, start="T090000", end="T100000", to=None):
        return (f"UID:1@x\nRECURRENCE-ID;TZID=Europe/Berlin:{day}T090000\nDTSTART;TZID=Europe/Berlin:{to or day}{start}\n"
                f"DTEND;TZID=Europe/Berlin:{to or day}{end}\n{lines}")

    def test_the_master_has_kind_words_zone_and_clip_range(self):
        held = Imported(calendar(WEEKLY)).messages[0]["properties"]
        self.assertEqual([held[key] for key in (
            "PidLidRecurring", "PidLidRecurrenceType", "PidLidRecurrencePattern", "PidLidClipStart", "PidLidClipEnd",
            "PidLidTimeZoneDescription", "PidLidAppointmentDuration")], [
            True, 2, "every Monday effective 2026-11-02 until 2026-12-07 from 09:00 to 10:00", "2026-11-02T00:00:00Z",
            "2026-12-08T00:00:00Z", "W. Europe Standard Time", 60])

    def test_a_series_without_end_is_clipped_at_the_end_of_time(self):
        held = properties(NINE + "\nRRULE:FREQ=DAILY")
        self.assertEqual(held["PidLidClipEnd"], "4500-08-31T23:59:00Z")

    def test_a_moved_instance_is_an_exception_with_an_embedded_message(self):
        _, message, found = self.changed(self.override("20261109", "SUMMARY:Review", "T140000", "T153000", "20261110"))
        self.assertEqual([(one.original, one.start, one.end, one.subject) for one in found.changed], [
            (datetime(2026, 11, 9, 9), datetime(2026, 11, 10, 14), datetime(2026, 11, 10, 15, 30), None)])
        attachment, = message["attachments"]
        self.assertEqual((attachment["properties"]["PR_ATTACH_METHOD"], attachment["properties"]["PR_EXCEPTION_STARTTIME"]),
                         (5, "2026-11-10T14:00:00Z"))
        inner = attachment["message"]["properties"]
        self.assertEqual((inner["PidLidAppointmentStartWhole"], inner["PidLidExceptionReplaceTime"]),
                         ("2026-11-10T13:00:00Z", "2026-11-09T08:00:00Z"))

    def test_texts_that_change_stand_in_the_exception_and_only_those(self):
        _, _, found = self.changed(self.override("20261109", "SUMMARY:Other 🎯\nLOCATION:Hall"),
                                   self.override("20261116", "SUMMARY:Review"))
        self.assertEqual([(one.subject, one.location, one.body) for one in found.changed],
                         [("Other 🎯", "Hall", False), (None, None, False)])

    def test_a_body_of_its_own_stands_in_the_embedded_message(self):
        _, message, found = self.changed(self.override("20261109", "SUMMARY:Review\nDESCRIPTION:new"),
                                         self.override("20261116", "SUMMARY:Review"))
        self.assertEqual([one.body for one in found.changed], [True, False])
        self.assertEqual(["PR_BODY_W" in one["message"]["properties"] for one in message["attachments"]], [True, False])

    def test_people_of_an_instance_stand_in_the_embedded_message(self):
        _, message, _ = self.changed(self.override("20261109", f"SUMMARY:Review\nORGANIZER:{ME}\nATTENDEE:{OTHER}"))
        self.assertEqual(len(message["attachments"][0]["message"]["recipients"]), 2)

    def test_left_out_instances_are_deleted_dates(self):
        done, _, found = self.changed(head=WEEKLY + "\nEXDATE;TZID=Europe/Berlin:20261109T090000,20261123T090000")
        self.assertEqual([str(day) for day in found.deleted], ["2026-11-09", "2026-11-23"])
        self.assertEqual((done.counts.left_out, done.notes), (2, []))

    def test_an_exclusion_may_be_a_date_or_in_utc(self):
        _, _, found = self.changed(head=WEEKLY + "\nEXDATE;VALUE=DATE:20261109\nEXDATE:20261116T080000Z")
        self.assertEqual(sorted(str(day) for day in found.deleted), ["2026-11-09", "2026-11-16"])

    def test_an_exclusion_of_no_instance_is_told(self):
        done, _, found = self.changed(head=WEEKLY + "\nEXDATE;TZID=Europe/Berlin:20261110T090000")
        self.assertEqual((found.deleted, done.texts), ([], ["leaves out 2026-11-10 09:00:00, which is none of its instances"]))

    def test_an_instance_that_the_host_called_off_stays_and_is_marked(self):
        head = WEEKLY + f"\nORGANIZER:{OTHER}\nATTENDEE:{ME}"
        _, _, found = self.changed(self.override(
            "20261109", f"SUMMARY:Review\nSTATUS:CANCELLED\nORGANIZER:{OTHER}\nATTENDEE:{ME}"), head=head)
        self.assertEqual([one.meeting_type for one in found.changed], [7])

    def test_an_instance_that_the_owner_called_off_is_gone(self):
        head = WEEKLY + f"\nORGANIZER:{ME}\nATTENDEE:{OTHER}"
        _, _, found = self.changed(self.override("20261109", f"STATUS:CANCELLED\nORGANIZER:{ME}\nATTENDEE:{OTHER}"), head=head)
        self.assertEqual((found.changed, [str(day) for day in found.deleted]), ([], ["2026-11-09"]))

    def test_an_instance_identifier_in_utc_finds_its_instance(self):
        _, _, found = self.changed("UID:1@x\nRECURRENCE-ID:20261109T080000Z\nSUMMARY:Other\nDTSTART:20261109T090000Z\n"
                                   "DTEND:20261109T100000Z")
        self.assertEqual([(one.original.hour, one.start.hour) for one in found.changed], [(9, 10)])

    def test_the_later_sequence_of_one_instance_counts(self):
        done, _, found = self.changed(self.override("20261109", "SUMMARY:new\nSEQUENCE:2"),
                                      self.override("20261109", "SUMMARY:old\nSEQUENCE:1"))
        self.assertEqual([one.subject for one in found.changed], ["new"])
        self.assertIn("one instance is replaced twice; the later sequence counts", done.texts)

    def test_a_replacement_of_no_instance_is_kept_and_told(self):
        done, _, found = self.changed(self.override("20261111", "SUMMARY:stray"))
        self.assertEqual((found.changed, done.messages[1]["properties"]["PR_SUBJECT_W"]), ([], "stray"))
        self.assertIn("replaces no instance of its series; kept as a single one", done.texts)

    def test_an_instance_without_its_series_is_kept_as_a_single_one(self):
        done = Imported(calendar(self.override("20261109", "SUMMARY:alone")))
        self.assertEqual((done.counts.singles, done.texts),
                         (1, ["replaces an instance of a series that the file lacks; kept as a single one"]))

    def test_added_dates_stand_beside_the_series(self):
        done, _, found = self.changed(head=WEEKLY + "\nRDATE;TZID=Europe/Berlin:20261105T110000,20261109T090000")
        self.assertEqual((found.changed, len(done.messages), done.counts.extras), ([], 2, 1))
        self.assertEqual(done.messages[1]["properties"]["PidLidAppointmentStartWhole"], "2026-11-05T10:00:00Z")
        self.assertIn("an added date (RDATE): 2026-11-05 11:00:00 is kept as a single one beside the series", done.texts)

    def test_an_added_period_keeps_its_own_length(self):
        done, _, _ = self.changed(head=WEEKLY + "\nRDATE;VALUE=PERIOD:20261105T100000Z/PT3H")
        self.assertEqual(done.messages[1]["properties"]["PidLidAppointmentDuration"], 180)

    def test_a_start_outside_its_rule_is_kept_beside_the_series(self):
        done, _, found = self.changed(head=NINE + "\nRRULE:FREQ=WEEKLY;BYDAY=WE;COUNT=3")
        self.assertEqual((str(found.start), done.counts.extras), ("2026-11-04", 1))
        self.assertIn("its start is no date of its rule: 2026-11-02 09:00:00 is kept as a single one beside the series",
                      done.texts)
        self.assertEqual(done.messages[0]["properties"]["PidLidAppointmentStartWhole"], "2026-11-04T08:00:00Z")

    def test_a_description_in_place_of_bytes_says_the_same(self):
        text = calendar(WEEKLY, self.override("20261109", "SUMMARY:Other"))
        readable = Imported(text, readable=True).messages[0]["properties"]
        self.assertEqual(values.described_bytes(readable["PidLidAppointmentRecur"]).hex().upper(),
                         Imported(text).messages[0]["properties"]["PidLidAppointmentRecur"])

    def test_every_property_that_is_written_has_a_name_and_a_fitting_value(self):
        check = schema._Check({}, None)
        for message in Imported(calendar(WEEKLY + f"\nORGANIZER:{ME}\nATTENDEE:{OTHER}", self.override("20261109", "SUMMARY:b"),
                                         NINE.replace("1@x", "2@x"))).messages:
            check.message((), message)
        self.assertEqual([str(finding) for finding in check.findings], [])

    def test_what_a_reader_of_appointments_asks_for_is_there(self):
        held = Imported(calendar(WEEKLY)).messages[0]["properties"]
        have = {named_key(key)[:2] for key in held if named_key(key)}
        for number in (0x820D, 0x820E, 0x8208, 0x8213, 0x8217, 0x8215, 0x8218, 0x8205, 0x8223, 0x8232, 0x8216, 0x8231, 0x8233,
                       0x8235, 0x8236):
            self.assertIn((SETS["PSETID_Appointment"], number), have)
        self.assertIn((SETS["PSETID_Meeting"], 3), have)


if __name__ == "__main__":
    unittest.main()
