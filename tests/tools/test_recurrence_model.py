"""Holds dtrecur batch against the model of recurrence_model.py, over random series.

usage: test_recurrence_model.py DTRECUR [CASES [SEED]]
"""

import random
import subprocess
import sys
import unittest

from recurrence_cases import case
from recurrence_model import OutOfModel, Series

DTRECUR = "dtrecur"
CASES = 20_000
SEED = 1


def escaped(text):
    out = []
    units = text.encode("utf-16-le", "surrogatepass")
    values = [units[i] | units[i + 1] << 8 for i in range(0, len(units), 2)]
    short = {0x5C: "\\\\", 9: "\\t", 10: "\\n", 13: "\\r"}
    i = 0
    while i < len(values):
        unit = values[i]
        i += 1
        if unit in short:
            out.append(short[unit])
        elif 0xD800 <= unit < 0xDC00 and i < len(values) and 0xDC00 <= values[i] < 0xE000:
            out.append(chr(0x10000 + ((unit - 0xD800) << 10) + values[i] - 0xDC00))
            i += 1
        elif unit < 0x20 or unit == 0x7F or 0xD800 <= unit < 0xE000:
            out.append("\\u%04X" % unit)
        else:
            out.append(chr(unit))
    return "".join(out)


def form(moment):
    if moment is None:
        return "0000-00-00T00:00:00"
    return "%04d-%02d-%02dT%02d:%02d:%02d" % (
        moment.year,
        moment.month,
        moment.day,
        moment.hour,
        moment.minute,
        moment.second,
    )


def line_of(name, made):
    blob, zone, first, window_start, window_end, subject, location, keep_all = made
    return "\t".join(
        (
            name,
            blob.hex(),
            zone.hex().upper(),
            form(first),
            form(window_start),
            form(window_end),
            subject,
            location,
            "1" if keep_all else "0",
        )
    )


def answer_of(name, made):
    """The lines that dtrecur has to write; None where the model cannot follow."""
    blob, zone, first, window_start, window_end, subject, location, keep_all = made
    series = Series(blob, zone, first.year, (window_start, window_end), subject, location, keep_all)
    try:
        instances = series.expand()
    except (OutOfModel, OverflowError):
        return None
    lines = ["%s\t%d" % (name, len(instances))]
    for index, (start, end, key, subject, location, has_type, meeting_type) in enumerate(instances):
        lines.append(
            "\t".join(
                (
                    name,
                    str(index),
                    form(start),
                    form(end),
                    str(key),
                    escaped(subject),
                    escaped(location),
                    str(has_type),
                    str(meeting_type),
                )
            )
        )
    return lines


class RecurrenceModelTest(unittest.TestCase):
    def test_every_series_expands_as_the_model_says(self):
        rng = random.Random(SEED)
        made = [("c%d" % number, case(rng)) for number in range(CASES)]
        text = "".join(line_of(name, c) + "\n" for name, c in made)
        done = subprocess.run([DTRECUR, "batch"], input=text.encode(), capture_output=True, check=True)
        answers = {}
        for line in done.stdout.decode().split("\n"):
            if line:
                answers.setdefault(line.split("\t")[0], []).append(line)
        left_out = listed = 0
        wrong = []
        for name, c in made:
            expected = answer_of(name, c)
            if expected is None:
                left_out += 1
                continue
            listed += len(expected) > 1
            if answers.get(name) != expected:
                wrong.append((name, c, expected, answers.get(name)))
        print(
            "%d cases, %d with instances, %d beyond the model, %d wrong"
            % (CASES, listed, left_out, len(wrong))
        )
        for name, c, expected, got in wrong[:3]:
            print(line_of(name, c))
            for i in range(max(len(expected), len(got or []))):
                ours = got[i] if got and i < len(got) else "-"
                theirs = expected[i] if i < len(expected) else "-"
                if ours != theirs:
                    print("  model ", theirs, "\n  dtrecur", ours)
                    break
        self.assertEqual(len(wrong), 0)
        # The comparison would be worth nothing if it left the cases out or met only empty ones.
        self.assertLess(left_out, CASES // 20)
        self.assertGreater(listed, CASES // 3)


if __name__ == "__main__":
    arguments = sys.argv[1:]
    DTRECUR = arguments[0]
    if len(arguments) > 1:
        CASES = int(arguments[1])
    if len(arguments) > 2:
        SEED = int(arguments[2])
    unittest.main(argv=sys.argv[:1])
