#!/usr/bin/python3
"""Instances that the server lists, against python3-dateutil's. cross_check.py runs any number of series."""

import cross_check
import road_case


class CrossCheckTest(road_case.RoadCase):
    def test_the_server_lists_what_dateutil_expands(self):
        run = cross_check.Run(self.prefix, cross_check.PER_RUN, "1")

        self.assertEqual(run.problems(), [])
        self.assertEqual(run.series, cross_check.PER_RUN)
        self.assertGreater(run.instances, 10000)
        self.assertEqual(run.forms, cross_check.compared_forms())

    def test_only_two_rule_forms_are_left_out(self):
        self.assertEqual(set(cross_check.series_forms.FORMS) - cross_check.compared_forms(),
                         {"yearly by working day", "every few weeks that begin on another day"})


if __name__ == "__main__":
    road_case.main()
