#!/usr/bin/python3
"""Calls of the mail provider that never come back: a sample; hang_sweep.py takes all of them."""

import hang_sweep
import road_case


class HangsTest(road_case.RoadCase):
    def test_a_provider_that_hangs_in_any_call_leaves_clients_their_answers_and_the_server_its_end(self):
        stage = hang_sweep.Stage(self.prefix)
        self.addCleanup(stage.close)
        cases = stage.cases_of_all_calls()
        # The road of the release takes the server's two waits of ten seconds.
        sample = hang_sweep.sample_of(cases, "frame", 7, 0.13) + hang_sweep.sample_of(cases, "release", 1, 0.5)

        outcomes = hang_sweep.run_all([stage], sample)

        self.assertEqual([line for outcome in outcomes for line in outcome.problems], [])
        # When the scenario changes, other shares may be needed to meet all of them.
        self.assertEqual({outcome.phase for outcome in outcomes}, set(hang_sweep.PHASES))


if __name__ == "__main__":
    road_case.main()
