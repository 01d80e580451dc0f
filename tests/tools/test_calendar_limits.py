"""What a stored pattern cannot hold: told with the reason, kept as single messages, never dropped."""

import unittest
from datetime import datetime

from store_case import TODAY, Imported, calendar

from dtstore_lib.ics_import import Horizon, default_horizon

NINE = "UID:1@x\nSUMMARY:Odd\nDTSTART;TZID=Europe/Berlin:20261102T090000\nDTEND;TZID=Europe/Berlin:20261102T100000"
HORIZON = Horizon(datetime(2026, 11, 1), datetime(2026, 12, 31, 23, 59))


def starts(done):
    return [message["properties"]["PidLidAppointmentStartWhole"] for message in done.messages]


class ReasonTest(unittest.TestCase):
    REASONS = {
        "FREQ=HOURLY;COUNT=3": "it repeats more than once a day (HOURLY)",
        "FREQ=MINUTELY;COUNT=3": "it repeats more than once a day (MINUTELY)",
        "FREQ=SECONDLY;COUNT=3": "it repeats more than once a day (SECONDLY)",
        "FREQ=DAILY;BYHOUR=9,14": "it has several times of day (BYHOUR)",
        "FREQ=DAILY;BYMINUTE=0,30": "it has several times of day (BYMINUTE)",
        "FREQ=DAILY;INTERVAL=2;BYDAY=MO": "it takes certain weekdays of every n-th day",
        "FREQ=DAILY;INTERVAL=1000": "its interval 1000 is above 999",
        "FREQ=DAILY;BYMONTH=11": "a stored pattern of this frequency has no BYMONTH",
        "FREQ=WEEKLY;BYDAY=MO,TU;BYSETPOS=1": "a stored pattern of this frequency has no BYSETPOS",
        "FREQ=WEEKLY;BYMONTH=11,12": "a stored pattern of this frequency has no BYMONTH",
        "FREQ=MONTHLY;BYMONTHDAY=2,16": "it takes several days of the month",
        "FREQ=MONTHLY;BYMONTHDAY=-2": "it counts days from the end of the month",
        "FREQ=MONTHLY;BYDAY=MO": "it takes every such weekday of the month",
        "FREQ=MONTHLY;BYDAY=MO,TU;BYSETPOS=1": "it takes the n-th of several weekdays",
        "FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-2": "it takes position -2, and a stored pattern has 1 to 4 and the last",
        "FREQ=MONTHLY;BYDAY=MO;BYSETPOS=1,3": "it takes several positions (BYSETPOS)",
        "FREQ=MONTHLY;BYDAY=1MO,3MO": "it takes several numbered weekdays of the month",
        "FREQ=MONTHLY;BYDAY=FR;BYMONTHDAY=13": "it takes weekdays that fall on certain days of the month",
        "FREQ=MONTHLY;INTERVAL=2;BYMONTH=11": "it takes certain months of every n-th month",
        "FREQ=YEARLY;BYDAY=20MO": "its days are numbered within the year",
        "FREQ=YEARLY;BYWEEKNO=45": "a stored pattern has no BYWEEKNO",
        "FREQ=YEARLY;BYYEARDAY=306": "a stored pattern has no BYYEARDAY",
        "FREQ=YEARLY;BYMONTH=11,12;BYMONTHDAY=2": "its months are not spread evenly over the year",
        "FREQ=YEARLY;INTERVAL=2;BYMONTH=5,11": "it takes several months of every n-th year",
        "FREQ=DAILY;COUNT=2;UNTIL=20270101T000000Z": "its rule has both a count and an end",
    }

    def test_each_form_that_no_pattern_holds_is_told_with_its_reason(self):
        for rule, reason in self.REASONS.items():
            done = Imported(calendar(f"{NINE}\nRRULE:{rule}"), horizon=HORIZON)
            label, text = done.notes[-1]
            self.assertEqual(label, "event 1 'Odd'")
            self.assertTrue(text.startswith(reason + "; kept as "), (rule, text))
            self.assertEqual((done.counts.expanded, done.counts.pieces), (1, len(done.messages)), rule)
            self.assertIn("2026-11-02T08:00:00Z", starts(done), rule)

    def test_a_day_that_short_months_lack_is_told(self):
        text = "UID:1\nDTSTART:20261231T090000Z\nRRULE:FREQ=MONTHLY;BYMONTHDAY=31"
        done = Imported(calendar(text))
        self.assertIn("the nearest stored pattern has 2027-02-28 where the rule has 2027-03-31", done.texts[0])

    def test_a_fifth_weekday_is_told(self):
        done = Imported(calendar("UID:1\nDTSTART:20261130T090000Z\nRRULE:FREQ=MONTHLY;BYDAY=5MO"))
        self.assertIn("the nearest stored pattern has 2026-12-28 where the rule has 2027-03-29", done.texts[0])

    def test_the_29_february_is_told(self):
        done = Imported(calendar("UID:1\nDTSTART:20240229T090000Z\nRRULE:FREQ=YEARLY"))
        self.assertIn("the nearest stored pattern has 2025-02-28 where the rule has 2028-02-29", done.texts[0])

    def test_short_series_that_never_meet_a_short_month_are_series(self):
        done = Imported(calendar("UID:1\nDTSTART:20261231T090000Z\nRRULE:FREQ=MONTHLY;COUNT=2"))
        self.assertEqual((done.counts.series, done.notes), (1, []))

    def test_two_rules_are_told(self):
        done = Imported(calendar(NINE + "\nRRULE:FREQ=WEEKLY;COUNT=3\nRRULE:FREQ=DAILY;COUNT=3"), horizon=HORIZON)
        self.assertTrue(done.texts[0].startswith("it has 2 rules, and a stored pattern has one; kept as 5"))
        self.assertEqual(starts(done), [f"2026-11-{day:02}T08:00:00Z" for day in (2, 3, 4, 9, 16)])

    def test_the_same_rule_twice_is_one_rule(self):
        done = Imported(calendar(NINE + "\nRRULE:FREQ=WEEKLY;COUNT=3\nRRULE:FREQ=WEEKLY;COUNT=3"))
        self.assertEqual((done.counts.series, done.notes), (1, []))

    def test_seconds_are_told(self):
        done = Imported(calendar("UID:1\nDTSTART:20261102T090030Z\nDTEND:20261102T100000Z\nRRULE:FREQ=DAILY;COUNT=2"))
        self.assertIn("it starts or ends within a minute", done.texts[0])
        self.assertEqual(starts(done), ["2026-11-02T09:00:30Z", "2026-11-03T09:00:30Z"])

    def test_dates_without_a_rule_are_told(self):
        done = Imported(calendar(NINE + "\nRDATE;TZID=Europe/Berlin:20261105T090000,20261107T113000"), horizon=HORIZON)
        self.assertEqual(starts(done), ["2026-11-02T08:00:00Z", "2026-11-05T08:00:00Z", "2026-11-07T10:30:00Z"])
        self.assertIn("it has dates of its own (RDATE) and no rule", done.texts[0])

    def test_a_zone_without_a_yearly_rule_is_told(self):
        text = NINE.replace("Europe/Berlin", "Africa/Casablanca") + "\nRRULE:FREQ=WEEKLY"
        self.assertIn("the clocks of Morocco Standard Time follow no yearly rule over its time", Imported(calendar(text)).texts[0])

    def test_a_rule_that_cannot_be_read_keeps_the_event(self):
        for rule in ("FREQ=WEEKLY;BYDAY=XX", "FREQ=FOO", "INTERVAL=2", "FREQ=WEEKLY;INTERVAL=0", "FREQ=WEEKLY;COUNT=0",
                     "FREQ=WEEKLY;INTERVAL=-1", "FREQ=WEEKLY;UNTIL=2020", "FREQ=WEEKLY;COUNT=x", "FREQ=WEEKLY;BYDAY=", "",
                     "FREQ=MONTHLY;BYMONTHDAY=32", "FREQ=MONTHLY;BYMONTHDAY=0", "FREQ=WEEKLY;WKST=XX", "FREQ=YEARLY;BYMONTH=13",
                     "FREQ=DAILY;RSCALE=HEBREW", "FREQ=SECONDLY;BYMONTH=2;BYMONTHDAY=30"):
            done = Imported(calendar(f"{NINE}\nRRULE:{rule}"))
            self.assertEqual(starts(done), ["2026-11-02T08:00:00Z"], rule)
            self.assertEqual(len(done.notes), 1, rule)

    def test_a_rule_that_ended_before_its_start_keeps_the_event(self):
        done = Imported(calendar(NINE + "\nRRULE:FREQ=WEEKLY;UNTIL=20200101"))
        self.assertEqual(starts(done), ["2026-11-02T08:00:00Z"])
        self.assertIn("its rule ends before the first date", done.texts[0])


class HorizonTest(unittest.TestCase):
    HOURLY = NINE + "\nRRULE:FREQ=HOURLY"

    def test_the_horizon_limits_single_messages_and_tells_what_lies_outside(self):
        horizon = Horizon(datetime(2026, 11, 2, 12), datetime(2026, 11, 2, 15))
        done = Imported(calendar(self.HOURLY), horizon=horizon)
        self.assertEqual(starts(done), [f"2026-11-02T{hour}:00:00Z" for hour in (11, 12, 13, 14)])
        self.assertIn("kept as 4 single events from 2026-11-02 to 2026-11-02, without 3 before and further ones after",
                      done.texts[0])

    def test_one_event_makes_no_more_messages_than_it_may(self):
        horizon = default_horizon(TODAY)
        horizon.most = 7
        done = Imported(calendar(self.HOURLY), horizon=horizon)
        self.assertEqual(len(done.messages), 7)
        self.assertIn("further ones after", done.texts[0])

    def test_the_default_horizon_is_a_year_back_and_two_ahead(self):
        horizon = default_horizon(TODAY)
        self.assertEqual((str(horizon.first.date()), str(horizon.last.date())), ("2025-11-20", "2028-11-19"))

    def test_exclusions_and_replacements_hold_for_single_messages(self):
        other = ("UID:1@x\nRECURRENCE-ID;TZID=Europe/Berlin:20261102T110000\nSUMMARY:Changed\n"
                 "DTSTART;TZID=Europe/Berlin:20261102T113000\nDTEND;TZID=Europe/Berlin:20261102T120000")
        done = Imported(calendar(NINE + "\nRRULE:FREQ=HOURLY;COUNT=4\nEXDATE;TZID=Europe/Berlin:20261102T100000", other))
        self.assertEqual(sorted(starts(done)), ["2026-11-02T08:00:00Z", "2026-11-02T10:30:00Z", "2026-11-02T11:00:00Z"])
        self.assertIn("Changed", [message["properties"]["PR_SUBJECT_W"] for message in done.messages])

    def test_a_change_for_all_later_instances_is_told_and_carried_on(self):
        later = ("UID:1@x\nRECURRENCE-ID;RANGE=THISANDFUTURE;TZID=Europe/Berlin:20261116T090000\nSUMMARY:Later\n"
                 "DTSTART;TZID=Europe/Berlin:20261116T140000\nDTEND;TZID=Europe/Berlin:20261116T150000")
        done = Imported(calendar(NINE + "\nRRULE:FREQ=WEEKLY;COUNT=4", later), horizon=HORIZON)
        self.assertEqual(starts(done), ["2026-11-02T08:00:00Z", "2026-11-09T08:00:00Z", "2026-11-16T13:00:00Z",
                                        "2026-11-23T13:00:00Z"])
        self.assertIn("one of its changes is for all later instances (THISANDFUTURE)", done.texts[0])

    def test_each_single_message_has_an_identifier_with_its_date(self):
        done = Imported(calendar(NINE + "\nRRULE:FREQ=DAILY;BYHOUR=9,14;COUNT=3"))
        dates = [bytes.fromhex(message["properties"]["PidLidGlobalObjectId"])[16:20] for message in done.messages]
        self.assertEqual(dates[0], bytes((2026 >> 8, 2026 & 255, 11, 2)))
        self.assertEqual(len({message["properties"]["PidLidCleanGlobalObjectId"] for message in done.messages}), 1)


class SwitchTest(unittest.TestCase):
    """Whole mirrored forms that look odd and are patterns all the same."""

    def test_forms_that_say_a_pattern_in_another_way_are_series(self):
        for rule in ("FREQ=DAILY;BYDAY=MO,TU,WE,TH,FR,SA,SU", "FREQ=MONTHLY;BYDAY=MO;BYMONTHDAY=1,2,3,4,5,6,7",
                     "FREQ=YEARLY;BYMONTH=5,11;BYMONTHDAY=2", "FREQ=YEARLY;BYMONTHDAY=2", "FREQ=MONTHLY;BYMONTH=11;BYDAY=1MO",
                     "FREQ=DAILY;BYHOUR=9;BYMINUTE=0;BYSECOND=0", "FREQ=MONTHLY;BYMONTHDAY=2;BYSETPOS=1"):
            done = Imported(calendar(f"{NINE}\nRRULE:{rule}"))
            self.assertEqual((done.counts.series, done.notes), (1, []), rule)

    def test_an_end_given_as_a_date_includes_that_day(self):
        for until, last in (("20261116", "2026-11-17T00:00:00Z"), ("20261116T080000Z", "2026-11-17T00:00:00Z"),
                            ("20261116T075959Z", "2026-11-10T00:00:00Z")):
            held = Imported(calendar(f"{NINE}\nRRULE:FREQ=WEEKLY;UNTIL={until}")).messages[0]["properties"]
            self.assertEqual(held["PidLidClipEnd"], last, until)


if __name__ == "__main__":
    unittest.main()
