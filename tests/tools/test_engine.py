"""Imported series through the server's own recurrence engine, against python3-dateutil.

DTRECUR names the program dtrecur. Windows open before a series begins, or anywhere within it for the
forms whose dates the engine finds from any day on.
"""

import os
import re
import subprocess
import unittest
from datetime import datetime, timedelta

import series_forms
from store_case import Imported

EACH_FORM = 150
FIRST, LAST = datetime(2024, 1, 1), datetime(2027, 12, 31)
# The loop of a rule ends after 1001 rounds; two years need fewer in every form.
LONGEST = timedelta(days=730)
PROGRAM = os.environ.get("DTRECUR", "")


def text(moment):
    return f"{moment:%Y-%m-%dT%H:%M:%S}"


def from_any_day(series):
    """Whether the engine finds the instances of a window that opens after the series began.

    With a longer interval the first day of the window is off the grid of a daily or monthly rule, and
    the fourth and last weekday of a month of the year are looked for from the window's own month.
    """
    if "INTERVAL=" in series.rule and "INTERVAL=1;" not in series.rule + ";":
        return series.rule.startswith("FREQ=WEEKLY")
    if series.form in ("yearly in two months",):
        return False
    return not (series.rule.startswith("FREQ=YEARLY") and re.search(r"BYDAY=(4|-1)|BYSETPOS=", series.rule))


def expand(lines):
    """The answer of one batch: id to [(start, end, subject, location)]."""
    if not PROGRAM:
        raise AssertionError("DTRECUR does not name the program dtrecur")
    done = subprocess.run([PROGRAM, "batch"], input="".join(lines), capture_output=True, text=True, check=True,
                          encoding="utf-8")
    found = {}
    for line in done.stdout.splitlines():
        fields = line.split("\t")
        if len(fields) == 2:
            found[fields[0]] = []
        elif fields[1] == "error":
            raise AssertionError(line)
        else:
            found[fields[0]].append((fields[2], fields[3], fields[5], fields[6]))
    return found


class EngineTest(unittest.TestCase):
    def check(self, form, windows, count):
        rng = series_forms.seeded("engine " + form)
        lines, wanted, told = [], {}, {}
        while len(wanted) < count:
            series = series_forms.make_series(rng, len(wanted), FIRST, LAST, forms=(form,))
            window = windows(rng, series)
            if window is None:
                continue
            begin, end = window
            properties = Imported(series_forms.calendar_text([series])).messages[0]["properties"]
            key = str(len(wanted))
            lines.append("\t".join((
                key, properties["PidLidAppointmentRecur"], properties["PidLidTimeZoneStruct"],
                properties["PidLidAppointmentStartWhole"][:19], text(begin), text(end), series.subject, series.location,
                "0")) + "\n")
            told[key] = (series, text(begin), text(end))
            wanted[key] = [(text(a), text(b), subject, place) for a, b, subject, place in series.instances(
                end + timedelta(days=3)) if begin <= a <= end]
        found = expand(lines)
        self.assertEqual(set(found), set(wanted))
        for key, instances in wanted.items():
            inside = sorted(one for one in found[key] if told[key][1] <= one[0] <= told[key][2])
            self.assertEqual(inside, sorted(instances), told[key])
        return sum(len(instances) for instances in wanted.values())


def from_before(rng, series):
    begin = series.utc(series.start) - timedelta(days=rng.randint(2, 40), minutes=rng.randrange(1440))
    return begin, begin + timedelta(days=rng.randint(50, LONGEST.days), minutes=rng.randrange(1440))


def from_within(rng, series):
    if not from_any_day(series):
        return None
    begin = series.utc(series.start) + timedelta(days=rng.randint(1, 300), minutes=rng.randrange(1440))
    return begin, begin + timedelta(days=rng.randint(1, 400), minutes=rng.randrange(1440))


def _test_of(form):
    def test(self):
        self.assertGreater(self.check(form, from_before, EACH_FORM), EACH_FORM)
    return test


def _test_within(form):
    def test(self):
        self.check(form, from_within, EACH_FORM)
    return test


WITHIN = [form for form in series_forms.FORMS if form not in (
    *series_forms.SERVER_DIFFERS, "yearly in two months", "yearly by weekend day", "yearly by any day",
    "yearly by the last working day")]
for _form in series_forms.FORMS:
    _name = _form.replace(" ", "_")
    if _form not in series_forms.SERVER_DIFFERS:
        setattr(EngineTest, f"test_{_name}_from_before_its_start", _test_of(_form))
    if _form in WITHIN:
        setattr(EngineTest, f"test_{_name}_from_within", _test_within(_form))


if __name__ == "__main__":
    unittest.main()
