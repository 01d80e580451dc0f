"""A test of the whole product: the build folder of the command line, and the checks that all of them share."""

import sys
import unittest

from product import CLEAN, Prefix, Product


class RoadCase(unittest.TestCase):
    """`maxDiff` is off: a difference of events is worth reading whole."""

    build = None
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.prefix = Prefix(cls.build)

    def product(self, **more):
        product = Product(self.prefix, **more)
        self.addCleanup(product.__exit__)
        return product

    def assert_clean_end(self, product, *clients):
        """Drops the references of the clients; the server ends by itself and leaves nothing behind."""
        for client in clients:
            client.must("release")
        self.assertTrue(product.wait_for_server_end(), "the server did not end")
        self.assert_clean(product)

    def assert_clean(self, product):
        lines = product.ledger()
        self.assertTrue(lines and CLEAN in lines[-1], "\n".join(lines) or "no ledger was written")


def main():
    if len(sys.argv) < 2:
        sys.exit(f"usage: {sys.argv[0]} BUILD [TEST ...]")
    RoadCase.build = sys.argv.pop(1)
    unittest.main(verbosity=2)
