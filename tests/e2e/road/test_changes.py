#!/usr/bin/python3
"""What clients hear when a store changes under the running server."""

from datetime import datetime, timedelta

import road_case
from product import (ADDED, DELETED, ON_CALENDAR_UPDATED, ON_LIST_APPOINTMENT, UPDATED, appointment, change, editing,
                     subject_of)

FIRST, LAST = datetime(2026, 12, 1), datetime(2026, 12, 31)
MANY = 1000


class ChangesTest(road_case.RoadCase):
    def filled(self, count, **more):
        """A product with `count` appointments "Event N", and their ids."""
        product = self.product(**more)
        ids = product.edit(lambda document: [appointment(document, f"Event {number}", FIRST + timedelta(hours=number % 600))
                                             for number in range(count)])
        return product, ids

    def listening(self, product, *names):
        client = product.client(*names)
        client.initialize((names or ("main",))[0])
        return client

    def fence(self, product, client, sink="main"):
        """Adds an appointment behind everything so far and waits until it is told; gives all changes before it."""
        product.edit(lambda document: appointment(document, "Fence", LAST - timedelta(days=1)))
        client.wait(lambda heard: any(e.id == ON_CALENDAR_UPDATED and e.sink == sink and subject_of(e.text) == "Fence"
                                      for e in heard), "the last change")
        changes = client.changes(sink)
        self.assertEqual(changes[-1], (ADDED, "Fence"))
        return changes[:-1]

    def test_an_addition_a_change_and_a_deletion_are_told_each_with_its_kind(self):
        product, _ = self.filled(0)
        client = self.listening(product)
        store = product.store

        number = product.dtstore("add", store, "appointment", "subject=Tea", "start=2026-12-02T15:00:00Z",
                                 "end=2026-12-02T15:30:00Z").strip()
        client.wait(lambda _: len(client.changes()) == 1, "the addition")
        product.dtstore("change", store, number, "subject=Coffee")
        client.wait(lambda _: len(client.changes()) == 2, "the change")
        product.dtstore("remove", store, number)
        client.wait(lambda _: len(client.changes()) == 3, "the deletion")

        self.assertEqual(client.changes(), [(ADDED, "Tea"), (UPDATED, "Coffee"), (DELETED, "Coffee")])
        self.assert_clean_end(product, client)

    def test_a_change_of_seconds_tells_nothing(self):
        product, (number,) = self.filled(1)
        client = self.listening(product)
        client.list(FIRST, LAST)

        product.edit(lambda document: change(document, number, "start=2026-12-01T00:00:20Z", "end=2026-12-01T00:30:40Z"))

        self.assertEqual(self.fence(product, client), [])
        self.assert_clean_end(product, client)

    def test_a_listed_row_that_goes_is_told_and_one_that_was_never_listed_is_not(self):
        product, (listed,) = self.filled(1)
        unlisted = product.edit(lambda document: appointment(document, "Far away", datetime(2027, 6, 1)))
        client = self.listening(product)
        client.list(FIRST, LAST)

        product.edit(lambda document: editing.remove(document, unlisted))
        product.edit(lambda document: editing.remove(document, listed))

        self.assertEqual(self.fence(product, client), [(DELETED, "Event 0")])
        self.assert_clean_end(product, client)

    def test_a_burst_over_a_thousand_rows_tells_each_real_change_once(self):
        product, ids = self.filled(MANY)
        client = self.listening(product)
        client.list(FIRST, LAST)
        expected = []

        def burst(document):
            for number, one in enumerate(ids):
                if number % 4 == 0:
                    change(document, one, f"subject=Moved {number}")
                    expected.append((UPDATED, f"Moved {number}"))
                elif number % 4 == 1:
                    start = FIRST + timedelta(hours=number % 600, seconds=15)
                    change(document, one, f"start={start:%Y-%m-%dT%H:%M:%SZ}",
                           f"end={start + timedelta(minutes=30):%Y-%m-%dT%H:%M:%SZ}")
                elif number % 4 == 2:
                    editing.remove(document, one)
                    expected.append((DELETED, f"Event {number}"))
                else:
                    change(document, one, "PidLidReminderSet=true")  # nothing that a client sees

        product.edit(burst)

        self.assertEqual(sorted(self.fence(product, client)), sorted(expected))
        self.assert_clean_end(product, client)

    def test_a_thousand_changes_of_one_row_end_with_its_last_state_and_repeat_nothing(self):
        product, (number,) = self.filled(1)
        client = self.listening(product)
        client.list(FIRST, LAST)

        for step in range(MANY):
            product.edit(lambda document, step=step: change(document, number, f"subject=Step {step}"))

        changes = self.fence(product, client)
        steps = [int(subject.split()[1]) for kind, subject in changes if kind == UPDATED]
        self.assertEqual(len(steps), len(changes))
        self.assertEqual(steps[-1], MANY - 1)
        self.assertTrue(all(before < after for before, after in zip(steps, steps[1:])), steps)
        self.assert_clean_end(product, client)

    def test_two_clients_hear_every_change_that_comes_while_one_of_them_lists(self):
        # The listing is held in the middle, so that the changes come while it is under way.
        product, ids = self.filled(50, faults="IMessage::GetProps call 20 hang middle")
        first = self.listening(product, "one", "two")
        second = self.listening(product, "three")
        second.must("keepsignal MapiStore.middle.reached")
        sequence = first.ask(FIRST, LAST)
        self.assertEqual(second.must("waitsignal MapiStore.middle.reached"), "1")

        product.edit(lambda document: [change(document, one, f"subject=New {one}") for one in ids[:10]])
        product.edit(lambda document: appointment(document, "Added", FIRST + timedelta(days=2)))
        self.assertEqual((first.listings("one"), first.changes("one")), ([], []))
        second.must("signal MapiStore.middle")

        self.fence(product, second, "three")
        for client, sink in ((first, "one"), (first, "two"), (second, "three")):
            client.wait(lambda _, c=client, s=sink: c.changes(s)[-1:] == [(ADDED, "Fence")], "the last change")
        heard = second.changes("three")
        self.assertIn((ADDED, "Added"), heard)
        self.assertEqual(first.changes("one"), heard)
        self.assertEqual(first.changes("two"), heard)
        # Every row stands with its new subject in the listing or in a change behind it.
        first.wait(lambda events: any(e.id == ON_LIST_APPOINTMENT and e.number == sequence for e in events), "the listing")
        document = first.listings("one")[0].text
        for one in ids[:10]:
            self.assertTrue((UPDATED, f"New {one}") in heard or f"[New {one}]" in document, one)
        self.assert_clean_end(product, second, first)


if __name__ == "__main__":
    road_case.main()
