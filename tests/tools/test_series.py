"""Every rule form: import, bytes, and the bytes read again, against python3-dateutil."""

import unittest
from datetime import datetime, timedelta
from zoneinfo import ZoneInfo

import series_forms
from store_case import Imported

from dtstore_lib import blobs, zones

EACH_FORM = 60
FIRST, LAST = datetime(2024, 1, 1), datetime(2028, 12, 31, 23, 59)


def stored_instances(message, zone, until):
    """What the stored bytes say, through the stored zone: (start, end) in UTC, subject, location."""
    properties = message["properties"]
    pattern = blobs.decode(bytes.fromhex(properties["PidLidAppointmentRecur"]))
    rule = next(rule for rule in zones.rules_of(ZoneInfo(zone), pattern.start.year)
                if rule.to_bytes().hex().upper() == properties["PidLidTimeZoneStruct"])
    found = []
    for start, end, changed in pattern.instances(until.date()):
        subject, location = properties["PR_SUBJECT_W"], properties["PidLidLocation"]
        if changed is not None:
            subject = changed.subject if changed.subject is not None else subject
            location = changed.location if changed.location is not None else location
        found.append((rule.to_utc(start), rule.to_utc(end), subject, location))
    return sorted(found)


class SeriesTest(unittest.TestCase):
    def check(self, series):
        done = Imported(series_forms.calendar_text([series]))
        self.assertEqual(done.notes, [], series)
        self.assertEqual(len(done.messages), 1, series)
        stored = stored_instances(done.messages[0], series.zone, LAST)
        self.assertEqual(stored, series.instances(LAST), series)
        return len(stored)

    def test_an_instance_is_at_its_local_time_on_both_sides_of_each_switch(self):
        for zone in series_forms.ZONES:
            series = series_forms.Series("a@b", "daily", "FREQ=DAILY", zone, datetime(2026, 1, 1, 9), timedelta(hours=1),
                                         "Daily", "Here")
            self.check(series)

def _test_of(form):
    def test(self):
        rng = series_forms.seeded(form)
        count = sum(self.check(series_forms.make_series(rng, n, FIRST, LAST, forms=(form,))) for n in range(EACH_FORM))
        self.assertGreater(count, EACH_FORM)
    return test


for _form in series_forms.FORMS:
    setattr(SeriesTest, "test_" + _form.replace(" ", "_") + "_gives_the_dates_of_its_rule", _test_of(_form))


if __name__ == "__main__":
    unittest.main()
