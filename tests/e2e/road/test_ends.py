#!/usr/bin/python3
"""How the server ends when a client releases it in the middle of a listing, and when the mail provider crashes."""

import glob
import os
from datetime import datetime, timedelta

import road_case
from product import OK, appointment

FIRST, LAST = datetime(2026, 12, 1), datetime(2026, 12, 31)


class EndsTest(road_case.RoadCase):
    def filled(self, faults):
        product = self.product(faults=faults)
        product.edit(lambda document: [appointment(document, f"Event {number}", FIRST + timedelta(hours=number))
                                       for number in range(50)])
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

    def test_a_crash_of_the_provider_ends_the_server_with_a_dump_and_com_tells_the_client(self):
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


if __name__ == "__main__":
    road_case.main()
