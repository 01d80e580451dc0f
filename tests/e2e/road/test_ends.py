#!/usr/bin/python3
"""How the server ends when a client releases it in the middle of a listing, what a hibernate there leaves, and what
happens when the mail provider crashes."""

import glob
import os
from datetime import datetime, timedelta

import road_case
from product import CLEAN, OK, ON_INITIALIZE, appointment

FIRST, LAST = datetime(2026, 12, 1), datetime(2026, 12, 31)
COUNT = 50


class EndsTest(road_case.RoadCase):
    def filled(self, faults):
        product = self.product(faults=faults)
        product.edit(lambda document: [appointment(document, f"Event {number}", FIRST + timedelta(hours=number))
                                       for number in range(COUNT)])
        return product

    def listing_held(self, product):
        """A client whose listing stands still in the middle until "MapiStore.middle" is signalled."""
        client = product.client()
        client.initialize()
        client.must("keepsignal MapiStore.middle.reached")
        client.ask(FIRST, LAST)
        self.assertEqual(client.must("waitsignal MapiStore.middle.reached"), "1")
        return client

    def test_a_release_while_listing_ends_the_server_in_order(self):
        # Each call takes long enough that the release meets the listing.
        product = self.filled("IMessage::GetProps call 20 hang middle; IMessage::GetProps from 20 wait 50")
        client = self.listing_held(product)

        client.must("signal MapiStore.middle")
        client.must("release")

        self.assertTrue(product.wait_for_server_end())
        self.assertEqual(client.listings(), [])
        self.assert_clean(product)

    def test_a_hibernate_while_listing_leaves_a_server_that_works_in_silence_until_a_release_ends_it(self):
        product = self.filled("IMessage::GetProps call 20 hang middle")
        client = self.listing_held(product)

        client.must("releaseapp -1")  # answered while the listing still stands
        product.set_faults("IMAPITable::Restrict(contents) call 1 hang again")
        client.must("keepsignal MapiStore.again.reached")
        client.must("signal MapiStore.middle")

        # Brought up and asked for a listing anew, and nobody hears of it.
        client.must("initialize 1 CALENDARING")
        client.ask(FIRST, LAST)
        self.assertEqual(client.must("waitsignal MapiStore.again.reached"), "1")
        self.assertRegex(client.must("profile"), "^<CurrentOLProfile>")
        product.set_faults("")
        client.must("signal MapiStore.again")
        client.must("releaseapp 0")
        self.assertEqual([event.id for event in client.events], [ON_INITIALIZE])

        # A release without hibernate gives the server its voice back.
        client.must("initialize 1 CALENDARING")
        client.wait(lambda heard: [event.number for event in heard if event.id == ON_INITIALIZE] == [OK, OK],
                    "the second answer to Initialize")
        self.assertEqual(client.list(FIRST, LAST).count("<appointment>"), COUNT)

        self.assert_clean_end(product, client)
        self.assertEqual([CLEAN in report[-1] for report in product.ledgers()], [True] * 3, product.ledgers())

    def test_a_crash_of_the_provider_leaves_a_dump_and_is_told_by_com_and_the_next_client_gets_a_fresh_server(self):
        files = os.path.join(self.prefix.path(os.environ.get("DT_WINE_PREFIX", "wineprefix")), "drive_c", "users", "*", "AppData", "Roaming",
                             "Talvo Connect", "dtOIEx64.exe.*.dmp")
        for path in glob.glob(files):
            os.unlink(path)
        product = self.filled("IMessage::GetProps call 20 crash")
        client = product.client()
        client.initialize()
        client.ask(FIRST, LAST)

        self.assertTrue(product.wait_for_server_end())
        dumps = glob.glob(files)
        self.assertEqual(len(dumps), 1, dumps)
        with open(dumps[0], "rb") as file:
            self.assertEqual(file.read(4), b"MDMP")
        os.unlink(dumps[0])
        answer = client.do("empties vtable")
        self.assertEqual(answer.value, "0")
        self.assertNotEqual(answer.result, OK)
        self.assertEqual(client.listings(), [])

        product.set_faults("")
        product.renew_activator()
        fresh = product.client()
        fresh.initialize()
        self.assertEqual(fresh.list(FIRST, LAST).count("<appointment>"), COUNT)
        self.assert_clean_end(product, fresh)


if __name__ == "__main__":
    road_case.main()
