"""The commands as people and scripts call them: output, exit codes, what is left behind."""

import io
import json
import os
import signal
import subprocess
import unittest

from store_case import ADA, SOURCE, TODAY, TOOL, StoreCase, calendar

from dtstore_lib import ics_import, importing, zones

WEEKLY = ("UID:1@x\nSUMMARY:Review\nDTSTART;TZID=Europe/Berlin:20261102T090000\nDTEND;TZID=Europe/Berlin:20261102T100000\n"
          "RRULE:FREQ=WEEKLY;COUNT=6")
HOURLY = "UID:2@x\nSUMMARY:Odd\nDTSTART:20261102T090000Z\nDURATION:PT5M\nRRULE:FREQ=HOURLY;COUNT=3"


class CommandTest(StoreCase):
    def setUp(self):
        super().setUp()
        self.done("new", "s")

    def failed(self, *arguments, code=1, **more):
        result = self.run_tool(*arguments, **more)
        self.assertEqual(result.returncode, code, result.stdout + result.stderr)
        self.assertNotIn("Traceback", result.stderr)
        return result.stderr

    def document(self):
        return json.loads(self.read("s/store.json"))

    def messages(self):
        return self.document()["stores"][0]["messages"]

    def test_a_new_store_has_profile_owner_and_the_usual_folders(self):
        shown = self.done("show", "s")
        self.assertIn("profile 'Demo' (default): stores 1", shown)
        self.assertIn("owner 'Ada Quist' <ada.quist@nordlys.example>", shown)
        for role in ("ipmSubtree", "inbox", "outbox", "sentItems", "deletedItems", "drafts", "calendar", "contacts"):
            self.assertIn(f"({role}", shown)

    def test_a_new_store_can_be_of_another_owner_and_kind(self):
        self.done("new", "t", "--name", "Bo Ferrand", "--email", "bo@x.example", "--profile", "G Suite Bo", "--not-personal")
        held = json.loads(self.read("t/store.json"))
        self.assertEqual((held["profiles"][0]["name"], held["stores"][0]["personal"], held["stores"][0]["name"]),
                         ("G Suite Bo", False, "bo@x.example"))

    def test_new_never_overwrites(self):
        self.assertEqual(self.failed("new", "s"), "dtstore: s holds a store already\n")

    def test_an_import_says_what_came_in_and_what_differs(self):
        self.write("a.ics", calendar(WEEKLY, HOURLY))
        result = self.run_tool("import", "s", "a.ics", "--today", "2026-11-20")
        self.assertEqual((result.returncode, result.stdout), (
            0, "a.ics: 2 events, 0 single, 1 series, 1 recurring event as 3 single messages\n1 note\n"))
        self.assertEqual(result.stderr, "a.ics: event 2 'Odd': it repeats more than once a day (HOURLY); "
                         "kept as 3 single events from 2025-11-20 to 2028-11-19\n")

    def test_a_strict_import_with_notes_ends_with_3_and_stands(self):
        self.write("a.ics", calendar(HOURLY))
        self.assertEqual(self.run_tool("import", "s", "a.ics", "--strict").returncode, 3)
        self.assertEqual(len(self.messages()), 3)

    def test_an_import_that_fails_leaves_the_store_as_it_was(self):
        self.write("a.ics", calendar(WEEKLY))
        self.write("b.ics", "broken")
        before = self.read("s/store.json")
        self.assertEqual(self.failed("import", "s", "a.ics", "b.ics"),
                         "dtstore: b.ics: is no iCalendar file (no BEGIN:VCALENDAR)\n")
        self.assertEqual(self.read("s/store.json"), before)

    def test_a_second_import_changes_events_and_keeps_their_ids(self):
        self.write("a.ics", calendar(WEEKLY, HOURLY))
        self.done("import", "s", "a.ics")
        ids = [message["id"] for message in self.messages()]
        self.write("a.ics", calendar(WEEKLY.replace("Review", "Renamed"), HOURLY.replace("COUNT=3", "COUNT=2")))
        self.assertIn("(3 took the place of earlier ones)", self.done("import", "s", "a.ics"))
        self.assertEqual([message["id"] for message in self.messages()], ids[:3])
        self.assertEqual(self.messages()[0]["properties"]["PR_SUBJECT_W"], "Renamed")

    def test_a_folder_of_files_is_read_through(self):
        self.write("in/a.ics", calendar(WEEKLY))
        self.write("in/deep/b.vcf", "BEGIN:VCARD\nVERSION:3.0\nFN:Bo\nEND:VCARD\n")
        self.write("in/note.txt", "not read")
        self.assertEqual(self.done("import", "s", "in"), "in/a.ics: 1 event, 0 single, 1 series\n"
                         "in/deep/b.vcf: 1 contact, 0 with a photo\n2 files: 1 event, 1 contact\n")

    def test_an_import_can_fill_a_folder_of_choice(self):
        number = self.done("add", "s", "folder", "Calendar/Team", "IPF.Appointment").strip()
        self.write("a.ics", calendar(WEEKLY))
        self.done("import", "s", "a.ics", "--folder", "calendar/team")
        self.assertEqual(str(self.messages()[0]["folder"]), number)

    def test_long_imports_tell_their_progress_now_and_then(self):
        now, err = [0.0], io.StringIO()
        report = importing.Report(err=err, clock=lambda: now[0])
        step = report.step_for("a.ics", "events")
        for done in range(1, 101):
            now[0] += 0.5
            step(done, 100)
        self.assertEqual(err.getvalue().splitlines()[:2], ["a.ics: 4 of 100 events", "a.ics: 8 of 100 events"])
        self.assertEqual(len(err.getvalue().splitlines()), 25)

    def test_each_file_can_have_a_folder_of_its_own(self):
        self.write("Team one.ics", calendar(WEEKLY))
        self.write("two.vcf", "BEGIN:VCARD\nVERSION:3.0\nFN:Bo\nEND:VCARD\n")
        self.done("import", "s", "Team one.ics", "two.vcf", "--own-folders")
        shown = self.done("show", "s")
        self.assertIn("'Team one' (IPF.Appointment): 1 message\n", shown)
        self.assertIn("'two' (IPF.Contact): 1 message\n", shown)

    def test_every_step_of_an_import_is_told(self):
        steps = []
        work = ics_import.CalendarImport("a", ADA, zones.UTC, ics_import.default_horizon(TODAY), None, None,
                                         lambda done, of: steps.append((done, of)))
        work.run(calendar(*(f"UID:{n}\nDTSTART:20261102T090000Z" for n in range(3))).encode())
        self.assertEqual(steps, [(n, 6) for n in range(1, 7)])

    def test_a_quiet_import_says_nothing_but_notes(self):
        self.write("a.ics", calendar(WEEKLY))
        self.assertEqual(self.done("import", "s", "a.ics", "--quiet"), "")

    def test_every_wrong_input_has_a_plain_message(self):
        self.write("x.doc", "x")
        os.mkdir(self.path("empty"))
        for arguments, text in (
                (("import", "s", "none.ics"), "dtstore: none.ics: No such file or directory"),
                (("import", "s", "x.doc"), "dtstore: x.doc: is none of the kinds that can be read"),
                (("import", "s", "empty"), "dtstore: there is no file to import in empty"),
                (("import", "none", "x.doc"), "dtstore: none is no store"),
                (("import", "s", "x.doc", "--folder", "nope"), "dtstore: there is no folder 'nope'"),
                (("show", "s", "99"), "dtstore: nothing has the id 99"),
                (("show", "s", "nope"), "dtstore: there is no folder 'nope'"),
                (("remove", "s", "99"), "dtstore: nothing has the id 99"),
                (("remove", "s", "1"), "dtstore: 1 is a store and stays"),
                (("remove", "s", "2"), "dtstore: folder 2 is not empty"),
                (("change", "s", "9", "nonsense"), "dtstore: 'nonsense': expected KEY=VALUE"),
                (("change", "s", "9", "PR_X=1"), "dtstore: PR_X: unknown property"),
                (("add", "s", "appointment", "subject=a"), "dtstore: an appointment needs start=TIME and end=TIME"),
                (("add", "s", "appointment", "start=soon", "end=late"), "dtstore: 'soon': expected a time"),
                (("add", "s", "appointment", "start=2026-11-20T10:00", "end=2026-11-20T09:00"),
                 "dtstore: the end lies before the start"),
                (("new", "t", "--email", "nobody"), "dtstore: 'nobody' is no e-mail address")):
            self.assertIn(text, self.failed(*arguments), arguments)

    def test_wrong_usage_ends_with_2(self):
        for arguments in ((), ("frobnicate",), ("import", "s"), ("change", "s", "x", "a=b"), ("import", "s", "a", "--zone", "Mars"),
                          ("import", "s", "a", "--today", "later"), ("import", "s", "a", "--most", "0")):
            self.assertIn("usage: dtstore", self.failed(*arguments, code=2), arguments)

    def test_a_missing_command_is_named(self):
        self.assertIn("dtstore: error: a command is missing (dtstore --help lists them)\n", self.failed(code=2))

    def test_every_command_explains_itself_and_its_exit_codes(self):
        listed = self.done("--help")
        for command in ("new", "import", "show", "add", "change", "remove", "validate"):
            text = self.done(command, "--help")
            self.assertIn(f"    {command} ", listed)
            self.assertTrue(text.startswith(f"usage: dtstore {command} "), text)
            self.assertIn("the store's folder", text)
            self.assertIn("Exit codes: 0 done; 1 not done", " ".join(text.split()))

    def test_an_import_of_several_files_ends_with_a_sum(self):
        self.write("a.ics", calendar(WEEKLY, HOURLY))
        self.write("b.ics", calendar(WEEKLY.replace("1@x", "3@x")))
        self.write("c.vcf", "BEGIN:VCARD\nVERSION:3.0\nFN:Bo\nEND:VCARD\n" * 2)
        self.assertEqual(self.done("import", "s", "a.ics", "b.ics", "c.vcf").splitlines()[-1],
                         "3 files: 3 events, 2 contacts, 1 note")
        self.assertEqual(self.done("import", "s", "b.ics", "--quiet"), "")

    def test_an_appointment_can_be_added_moved_and_removed(self):
        number = self.done("add", "s", "appointment", "subject=Tea", "start=2026-11-20T10:00", "end=2026-11-20T10:30",
                           "location=Kitchen").strip()
        held = self.messages()[0]["properties"]
        self.assertEqual([held[key] for key in ("PidLidAppointmentStartWhole", "PidLidClipEnd", "PidLidAppointmentDuration",
                                                "PidLidLocation")],
                         ["2026-11-20T09:00:00Z", "2026-11-20T09:30:00Z", 30, "Kitchen"])
        self.done("change", "s", number, "end=2026-11-20T11:00", "subject=Long tea", "PidLidLocation=null")
        held = self.messages()[0]["properties"]
        self.assertEqual((held["PidLidAppointmentDuration"], held["PR_SUBJECT_W"], "PidLidLocation" in held),
                         (60, "Long tea", False))
        self.done("remove", "s", number)
        self.assertEqual(self.messages(), [])

    def test_a_series_is_not_moved_by_its_start(self):
        self.write("a.ics", calendar(WEEKLY))
        self.done("import", "s", "a.ics")
        number = str(self.messages()[0]["id"])
        self.assertIn("a series is moved by its pattern", self.failed("change", "s", number, "start=2026-11-03"))

    def test_contacts_mails_and_whole_messages_can_be_added(self):
        self.done("add", "s", "contact", "name=Bo Ferrand", "email=bo@x.example", "mobile=+47 1")
        self.done("add", "s", "mail", "subject=Hello", "body=a < b")
        self.done("add", "s", "json", "--folder", "sentItems", stdin='{"class": "IPM.Note", "properties": {"0x0037001F": "x"}}')
        contact, mail, whole = self.messages()
        self.assertEqual((contact["properties"]["PidLidEmail1OriginalDisplayName"], mail["properties"]["PR_BODY_HTML_W"],
                          whole["folder"]), ("bo@x.example", "<html><body><p>a &lt; b</p></body></html>", 6))

    def test_a_whole_message_that_is_wrong_is_refused_with_its_place(self):
        text = self.failed("add", "s", "json", stdin='{"class": "IPM.Note", "properties": {"PR_SUBJECT_W": 3}}')
        self.assertIn("properties.PR_SUBJECT_W: expected text", text)

    def test_one_object_is_shown_with_its_recurrence_in_words(self):
        self.write("a.ics", calendar(WEEKLY))
        self.done("import", "s", "a.ics")
        shown = json.loads(self.done("show", "s", str(self.messages()[0]["id"])))
        self.assertEqual(shown["properties"]["PidLidAppointmentRecur"]["recurrence"]["frequency"], "weekly")
        self.assertEqual(shown["properties"]["PidLidTimeZoneStruct"]["timeZone"]["bias"], -60)

    def test_a_folder_is_shown_as_lines(self):
        self.write("a.ics", calendar(WEEKLY))
        self.done("import", "s", "a.ics")
        self.assertRegex(self.done("show", "s", "calendar"), r"^ +\d+  2026-11-02T08:00:00Z  IPM.Appointment  recurring  Review\n$")

    def test_named_properties_get_identifiers_that_stay(self):
        self.write("a.ics", calendar(WEEKLY))
        self.done("import", "s", "a.ics")
        before = self.document()["namedIds"]
        self.done("add", "s", "contact", "name=Bo")
        after = self.document()["namedIds"]
        self.assertEqual({key: after[key] for key in before}, before)
        self.assertTrue(all(0x8100 <= int(text, 16) <= 0xFFFE for text in after.values()))
        self.assertIn("PSETID_Appointment:0x820D", after)

    def test_validate_tells_that_a_store_is_sound_or_where_it_is_not(self):
        self.assertRegex(self.done("validate", "s"), r"^s: sound; revision 1, 9 folders, 0 messages, 1 address book entry\n$")
        self.write("s/files/lost.bin", "x")
        self.assertIn("files/lost.bin: nothing names it (remove with --clean)", self.done("validate", "s"))
        self.assertIn("files/lost.bin: nothing names it, removed", self.done("validate", "s", "--clean"))
        self.assertFalse(os.path.exists(self.path("s/files/lost.bin")))
        self.write("s/store.json", self.read("s/store.json").replace('"mapistore"', '"other"'))
        self.assertRegex(self.failed("validate", "s"), r'^dtstore: s/store.json:\d+:\d+: format: expected "mapistore"\n$')

    def test_the_operations_of_fault_plans_are_listed(self):
        path = os.path.join(SOURCE, "mapistore", "operations.txt")
        with open(path, encoding="utf-8") as file:
            wanted = [line.strip() for line in file if line.strip() and not line.startswith("#")]
        self.assertEqual(self.done("--list-operations").splitlines(), wanted)
        for name in ("MAPILogonEx", "IMAPITable::Restrict", "IMessage::SubmitMessage"):
            self.assertIn(name, wanted)

    def test_a_reader_that_has_enough_ends_the_command_quietly_behind_its_change(self):
        for arguments in (["--list-operations"], ["show", "s"], ["add", "s", "contact", "name=Bo"]):
            with self.subTest(arguments=arguments):
                reader, writer = os.pipe()
                os.close(reader)
                try:
                    done = subprocess.run([TOOL, *arguments], stdout=writer, stderr=subprocess.PIPE, text=True,
                                          cwd=self.folder, check=False)
                finally:
                    os.close(writer)
                self.assertEqual((done.returncode, done.stderr), (-signal.SIGPIPE, ""))
        self.assertEqual([message["properties"]["PR_DISPLAY_NAME_W"] for message in self.messages()], ["Bo"])

    def test_an_output_that_cannot_be_written_is_told(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([TOOL, "--list-operations"], stdout=full, stderr=subprocess.PIPE, text=True,
                                  env={**os.environ, "PYTHONUNBUFFERED": "1"}, check=False)
        self.assertEqual((done.returncode, done.stderr), (1, "dtstore: output: No space left on device\n"))

    def test_the_launcher_runs_on_the_systems_own_interpreter(self):
        with open(os.path.join(SOURCE, "tools", "dtstore", "dtstore"), encoding="utf-8") as file:
            self.assertEqual(file.readline(), "#!/usr/bin/python3\n")


if __name__ == "__main__":
    unittest.main()
