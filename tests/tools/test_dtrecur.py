"""The command line of dtrecur.

usage: test_dtrecur.py DTRECUR
       test_dtrecur.py --wine SOURCE_DIR BUILD_DIR DTRECUR_EXE
"""

import datetime
import os
import random
import subprocess
import sys
import tempfile
import unittest

from recurrence_cases import case
from test_recurrence_model import line_of

COMMAND = []

# [MS-OXOCAL] 4.1.1.2: Monday, Thursday and Friday, with one instance moved and renamed.
WEEKLY = (
    "043004300B2001000000C0210000010000000000000032000000222000000C0000000000000001000000A096BC0C"
    "01000000A096BC0C8020BC0C20ADBC0C0630000009300000580200007602000001003499BC0C5299BC0CF898BC0C"
    "11002200210053696D706C6520526563757272656E6365207769746820657863657074696F6E730800070033342F"
    "34313431000000000400000000000000000000003499BC0C5299BC0CF898BC0C2100530069006D0070006C006500"
    "200052006500630075007200720065006E006300650020007700690074006800200065007800630065007000740069"
    "006F006E0073000700330034002F0034003100340031000000000000000000"
)
# 09:00 to 10:00 every day from 2024-01-01, the 2nd deleted.
DAILY = (
    "043004300A200000000000000000A0050000000000002320" "00000A00000000000000"
    "01000000" "40BB420D" "00000000" "A0B5420D" "DF80E95A" "0630000009300000" "1C020000" "58020000" "0000"
)
EASTERN = (
    "2C010000" "00000000" "C4FFFFFF" "0000" "0000" "0B000000" "01000200" "0000000000000000" "0000"
    "03000000" "02000200" "000000000000"
)


def run(*arguments, stdin=b""):
    done = subprocess.run([*COMMAND, *arguments], input=stdin, capture_output=True, timeout=120)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


def batch_line(name="a", pattern=DAILY, zone="", first="2024-01-01T09:00:00",
               start="2024-01-01T00:00:00", end="2024-01-03T23:59:00",
               subject="Standup", location="Room", keep_all="0"):
    return "\t".join((name, pattern, zone, first, start, end, subject, location, keep_all))


def batch(*lines, arguments=()):
    text = "".join(line + "\n" for line in lines)
    code, out, err = run("batch", *arguments, stdin=text.encode("utf-8", "surrogatepass"))
    assert code == 0, err
    return out.split("\n")[:-1]


class BatchTest(unittest.TestCase):
    def test_a_count_and_a_line_for_each_instance(self):
        self.assertEqual(
            batch(batch_line()),
            [
                "a\t2",
                "a\t0\t2024-01-01T09:00:00\t2024-01-01T10:00:00\t222475680\tStandup\tRoom\t0\t0",
                "a\t1\t2024-01-03T09:00:00\t2024-01-03T10:00:00\t222478560\tStandup\tRoom\t0\t0",
            ],
        )

    def test_the_window_is_utc_and_the_zone_is_the_series_own(self):
        self.assertEqual(
            batch(batch_line(zone=EASTERN, end="2024-01-01T14:00:00"))[1].split("\t")[2],
            "2024-01-01T14:00:00",
        )

    def test_nothing_in_the_window_is_a_count_of_0(self):
        self.assertEqual(batch(batch_line(end="2023-12-31T00:00:00", start="2023-12-01T00:00:00")),
                         ["a\t0"])

    def test_an_empty_pattern_is_a_count_of_0(self):
        self.assertEqual(batch(batch_line(pattern="")), ["a\t0"])

    def test_modified_instances_stand_first_with_their_own_texts(self):
        lines = batch(batch_line(pattern=WEEKLY.lower(), start="2007-04-13T00:00:00",
                                 end="2007-04-21T00:00:00"))
        self.assertEqual(lines[0], "a\t4")
        self.assertEqual(
            lines[1],
            "a\t0\t2007-04-16T11:00:00\t2007-04-16T11:30:00\t213686520\t"
            "Simple Recurrence with exceptions\t34/4141\t0\t0",
        )

    def test_keep_all_lists_the_old_place_as_well(self):
        window = {"start": "2007-04-13T00:00:00", "end": "2007-04-21T00:00:00"}
        lines = batch(batch_line(pattern=WEEKLY, keep_all="1", **window))
        self.assertEqual(lines[0], "a\t5")
        self.assertIn("2007-04-16T10:00:00", lines[3])

    def test_texts_are_escaped(self):
        subject = "b\\s \x01\x1f\x7f \u00e4\u20ac\U0001f600 \ud800x\udc00"
        line = batch(batch_line(subject=subject, location="cr\r!"))[1]
        self.assertEqual(line.split("\t")[5],
                         "b\\\\s \\u0001\\u001F\\u007F \u00e4\u20ac\U0001f600 \\uD800x\\uDC00")
        self.assertEqual(line.split("\t")[6], "cr\\r!")

    def test_a_date_that_cannot_be_told_is_all_zero(self):
        # A bias of 0x70000000 minutes, and an end that lies 0xA0000000 minutes behind midnight: the
        # instance begins in 5596 and ends in 10699.
        zone = "00000070" + "00" * 44
        pattern = DAILY.replace("58020000", "000000A0")
        window = datetime.datetime(2024, 1, 1) + datetime.timedelta(minutes=0x70000000)
        lines = batch(batch_line(pattern=pattern, zone=zone, start=window.isoformat(),
                                 end=(window + datetime.timedelta(hours=10)).isoformat()))
        self.assertEqual(lines[0], "a\t1")
        self.assertTrue(lines[1].split("\t")[2].startswith("5596-"))
        self.assertEqual(lines[1].split("\t")[3], "0000-00-00T00:00:00")

    def test_a_malformed_line_is_told_and_the_batch_goes_on(self):
        lines = batch(
            "x",
            "",
            batch_line(name="h", pattern="0g"),
            batch_line(name="o", pattern="012"),
            batch_line(name="z", zone="zz"),
            batch_line(name="f", first="2024-1-1"),
            batch_line(name="s", start="2024-02-30T00:00:00"),
            batch_line(name="e", end="yesterday"),
            batch_line(name="k", keep_all="2"),
            batch_line(name="m") + "\textra",
            batch_line(name="good"),
        )
        self.assertEqual(
            lines[:-3],
            [
                "x\terror\tnot nine fields",
                "\terror\tnot nine fields",
                "h\terror\tpattern is not hexadecimal",
                "o\terror\tpattern is not hexadecimal",
                "z\terror\tzone is not hexadecimal",
                "f\terror\tfirst time is not YYYY-MM-DDTHH:MM:SS",
                "s\terror\twindow start is no time",
                "e\terror\twindow end is no time",
                "k\terror\tkeep-all is neither 0 nor 1",
                "m\terror\tnot nine fields",
            ],
        )
        self.assertEqual(lines[-3], "good\t2")

    def test_texts_that_are_not_utf_8_are_malformed(self):
        line = batch_line(subject="SUBJECT", location="PLACE").encode()
        for field, name in ((b"SUBJECT", "subject"), (b"PLACE", "location")):
            for wrong in (b"\xff", b"\xc3", b"\xc0\x80", b"\xe0\x80\x80", b"\xf5\x80\x80\x80"):
                _, out, _ = run("batch", stdin=line.replace(field, wrong) + b"\n")
                self.assertEqual(out, "a\terror\t%s is not UTF-8\n" % name)

    def test_the_last_line_needs_no_ending_and_a_carriage_return_goes_with_it(self):
        expected = batch(batch_line())
        for ending in ("", "\r\n"):
            _, out, _ = run("batch", stdin=(batch_line() + ending).encode())
            self.assertEqual(out.split("\n")[:-1], expected)

    def test_trace_lines_stand_before_the_count(self):
        lines = batch(batch_line(), batch_line(name="b", pattern=DAILY[:-4] + "0100"),
                      arguments=["--trace"])
        self.assertEqual(
            lines[:4],
            [
                "a\ttrace\tCRecurrentRule::SetInfo m_zInfo.StandardDate.wMonth=0 "
                "m_zInfo.DaylightDate.wMonth=0",
                "a\ttrace\tCRecurrentRule::ParseDaily",
                "a\ttrace\tCRecurrentRule::ParseNonworkDaily",
                "a\t2",
            ],
        )
        self.assertIn("b\ttrace\tRec rule parse warning, Appt Name[Standup], pos[68], posEx[10]",
                      lines)

    def test_output_has_line_feeds_only(self):
        _, out, _ = run("batch", stdin=(batch_line() + "\n").encode())
        self.assertNotIn("\r", out)

    def test_an_answer_comes_before_the_next_question(self):
        process = subprocess.Popen([*COMMAND, "batch"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        with process:
            for name in ("one", "two"):
                process.stdin.write((batch_line(name=name, end="2024-01-01T01:00:00") + "\n").encode())
                process.stdin.flush()
                self.assertEqual(process.stdout.readline().decode(), name + "\t0\n")
            process.stdin.close()
        self.assertEqual(process.returncode, 0)

    def test_a_large_batch_equals_its_lines_one_by_one(self):
        rng = random.Random(5)
        lines = [line_of("n%d" % i, case(rng)) for i in range(3000)]
        whole = batch(*lines)
        parts = []
        for i in range(0, len(lines), 750):
            parts += batch(*lines[i : i + 750])
        self.assertEqual(whole, parts)

    def test_an_unknown_argument_is_refused(self):
        code, out, err = run("batch", "--quick")
        self.assertEqual((code, out), (2, ""))
        self.assertIn("unknown argument '--quick'", err)


class ShowTest(unittest.TestCase):
    def test_explains_rule_period_end_zone_and_exceptions(self):
        code, out, _ = run("show", "--pattern", WEEKLY, "--subject", "Simple", "--location", "34/4639")
        self.assertEqual(code, 0)
        lines = out.split("\n")
        self.assertEqual(
            lines[:6],
            [
                "Rule        every week on Monday, Thursday and Friday",
                "Starts      2007-03-26",
                "Ends        after 12 instances, stored as the date 2007-04-20, which is what counts",
                "Time        10:00 - 10:30 local, 30 minutes",
                "Zone        none: local time is UTC",
                'Exceptions  2007-04-16: moved to Mon 2007-04-16 11:00 - 11:30, subject "Simple '
                'Recurrence with exceptions", location "34/4141"',
            ],
        )
        self.assertIn("12 instances from 2007-03-25T00:00:00 to 2007-04-22T00:00:00 UTC", lines)
        self.assertIn(
            "    1  Mon 2007-03-26 10:00 local  2007-03-26T10:00:00 - 2007-03-26T10:30:00 UTC  "
            "key 213655680",
            lines,
        )

    def test_draws_a_calendar_that_tells_instances_moved_and_deleted_ones_apart(self):
        _, out, _ = run("show", "--pattern", DAILY, "--to", "2024-01-05T23:00:00")
        self.assertIn("January 2024\n  Mo  Tu  We  Th  Fr  Sa  Su\n  1*  2x  3*  4*  5*  6   7\n", out)
        _, out, _ = run("show", "--pattern", WEEKLY)
        self.assertIn(" 16> 17  18  19* 20* 21  22\n", out)

    def test_an_instance_moved_to_another_day_leaves_its_old_place_marked(self):
        # To April 17.
        moved = WEEKLY.replace("3499BC0C5299BC0CF898BC0C", "D49EBC0CF29EBC0CF898BC0C")
        _, out, _ = run("show", "--pattern", moved)
        self.assertIn(" 16< 17> 18  19* 20* 21  22\n", out)

    def test_colours_only_when_asked_or_on_a_terminal(self):
        for choice, expected in (("auto", False), ("never", False), ("always", True)):
            _, out, _ = run("show", "--pattern", DAILY, "--color", choice)
            self.assertEqual("\033[" in out, expected, choice)

    def test_explains_a_zone_with_switches(self):
        _, out, _ = run("show", "--pattern", DAILY, "--zone", EASTERN)
        self.assertIn("Zone        UTC-05:00\n", out)
        self.assertIn("UTC-04:00 in daylight time, from the second Sunday of March at 2:00 to the "
                      "first Sunday of November at 2:00\n", out)

    def test_tells_warnings_with_their_offset(self):
        code, out, _ = run("show", "--pattern", WEEKLY[: 2 * 60])
        self.assertEqual(code, 0)
        self.assertIn("Warning     9 at offset 74: the fixed part before the exceptions runs past "
                      "the end\n", out)

    def test_tells_a_pattern_that_the_server_does_not_know(self):
        for pattern in ("00", "", WEEKLY[:40], WEEKLY.replace("0B20", "0F20")):
            arguments = ["--pattern", pattern] if pattern else ["--pattern", " "]
            code, out, _ = run("show", *arguments)
            self.assertEqual(code, 0)
            self.assertIn("Rule        none that the server knows", out)
            self.assertIn("\n0 instances from ", out)

    def test_reads_raw_bytes_from_a_file(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "pattern.bin")
            with open(path, "wb") as file:
                file.write(bytes.fromhex(WEEKLY))
            name = "Z:" + path.replace("/", "\\") if len(COMMAND) > 1 else path
            _, from_file, _ = run("show", "--pattern", "@" + name)
        _, from_hex, _ = run("show", "--pattern", WEEKLY)
        self.assertEqual(from_file, from_hex)

    def test_reads_digits_from_standard_input(self):
        _, from_input, _ = run("show", "--pattern", "-", stdin=(WEEKLY[:50] + "\n  " + WEEKLY[50:] + "\n").encode())
        _, from_hex, _ = run("show", "--pattern", WEEKLY)
        self.assertEqual(from_input, from_hex)

    def test_reads_raw_bytes_from_standard_input(self):
        digits = run("show", "--pattern", DAILY)
        self.assertEqual(run("show", "--pattern", "-", stdin=bytes.fromhex(DAILY)), digits)

    def test_a_date_alone_is_its_midnight(self):
        whole = run("show", "--pattern", DAILY, "--from", "2024-01-01T00:00:00", "--to", "2024-01-05T00:00:00")
        self.assertEqual(whole[0], 0)
        self.assertEqual(run("show", "--pattern", DAILY, "--from", "2024-01-01", "--to", "2024-01-05"), whole)

    def test_a_file_that_is_not_there_is_a_failure(self):
        code, out, err = run("show", "--pattern", "@no-such-file")
        self.assertEqual((code, out), (1, ""))
        self.assertIn("cannot open 'no-such-file'", err)

    def test_wrong_arguments_are_refused(self):
        for arguments, complaint in (
            ((), "--pattern is missing"),
            (("--pattern",), "'--pattern' needs a value"),
            (("--pattern", "0x12"), "not hexadecimal: '0x12'"),
            (("--pattern", DAILY, "--from", "today"), "'today' is no time"),
            (("--pattern", DAILY, "--first", "today"), "'today' is not of the form"),
            (("--pattern", DAILY, "--color", "red"), "'red' is none of auto, always and never"),
            (("--pattern", DAILY, "--loud"), "unknown argument '--loud'"),
        ):
            code, out, err = run("show", *arguments)
            self.assertEqual((code, out), (2, ""), arguments)
            self.assertIn(complaint, err)

    def test_trace_lines_follow_the_calendar(self):
        _, out, _ = run("show", "--pattern", DAILY, "--trace")
        self.assertIn("\nTrace\n  3 CRecurrentRule::SetInfo ", out)
        self.assertIn("\n  2 CRecurrentRule::ParseNonworkDaily\n", out)

    def test_keep_all_lists_deleted_weekly_instances(self):
        _, out, _ = run("show", "--pattern", WEEKLY, "--keep-all")
        self.assertIn("13 instances from", out)

    def test_names_every_kind_of_rule(self):
        head = "04300430%s%s0000%s%s00000000%s"
        tail = "2320000000000000" "00000000" "00000000" "00000000" "A0B5420D" "DF80E95A" "0630000009300000" "1C02000058020000" "0000"
        for frequency, form, first, period, specific, words in (
            ("0A20", "0000", "00000000", "E0100000", "", "every 3 days"),
            ("0A20", "0100", "C0210000", "01000000", "3E000000", "every working day, Monday to Friday"),
            ("0B20", "0100", "00000000", "02000000", "2A000000", "every 2 weeks on Monday, Wednesday and Friday"),
            ("0C20", "0200", "00000000", "01000000", "1F000000", "day 31 of every month"),
            ("0C20", "0300", "00000000", "03000000", "0400000005000000", "the last Tuesday of every 3 months"),
            ("0C20", "0300", "00000000", "01000000", "3E00000002000000", "the second working day of every month"),
            ("0D20", "0200", "00000000", "0C000000", "04000000", "January 4, every year"),
            ("0D20", "0300", "60AE0000", "18000000", "4100000001000000", "the first weekend day of February, every 2 years"),
        ):
            _, out, _ = run("show", "--pattern", head % (frequency, form, first, period, specific) + tail)
            self.assertTrue(out.startswith("Rule        " + words + "\n"), out.split("\n")[0])


class CommandLineTest(unittest.TestCase):
    def test_help_goes_to_standard_output(self):
        for arguments, beginning in (
            (("--help",), "dtrecur: expands stored recurrence patterns"),
            (("-h",), "dtrecur: expands stored recurrence patterns"),
            (("show", "--help"), "dtrecur show: "),
            (("batch", "--help"), "dtrecur batch: "),
            (("--version",), "dtrecur 1.0\n"),
        ):
            code, out, err = run(*arguments)
            self.assertEqual((code, err), (0, ""))
            self.assertTrue(out.startswith(beginning), out)

    def test_a_missing_or_unknown_command_is_refused(self):
        for arguments, complaint in (((), "a command is missing"), (("list",), "unknown command 'list'")):
            code, out, err = run(*arguments)
            self.assertEqual((code, out), (2, ""))
            self.assertIn(complaint, err)


if __name__ == "__main__":
    if sys.argv[1] == "--wine":
        source, build, program = sys.argv[2:5]
        COMMAND = ["bash", "-c", 'build=$1; shift; . "%s/tools/dev/wine-environment"; exec "$WINELOADER" "$@"'
                   % source, "bash", build, program]
    else:
        COMMAND = [sys.argv[1]]
    unittest.main(argv=sys.argv[:1])
