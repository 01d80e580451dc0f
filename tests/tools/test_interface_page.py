"""The worked clients in docs/interface.md are the files that are built and tested."""
import os
import unittest

SOURCE = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))


def read(*parts):
    with open(os.path.join(SOURCE, *parts), encoding="utf-8") as file:
        return file.read()


class InterfacePage(unittest.TestCase):
    def test_the_client_in_cpp_is_the_one_that_is_built(self):
        source = read("client", "example", "ListingClient.cpp")
        self.assertIn("```cpp\n" + source + "```\n", read("docs", "interface.md"))

    def test_the_client_in_script_is_the_one_that_is_run(self):
        source = read("client", "example", "profile-client.js")
        self.assertIn("```js\n" + source + "```\n", read("docs", "interface.md"))

    def test_every_method_and_event_of_the_description_is_told(self):
        page = read("docs", "interface.md")
        description = read("idl", "dtOIEx64.idl")
        names = [line.split("HRESULT ")[1].split("(")[0]
                 for line in description.splitlines() if "HRESULT " in line]
        self.assertEqual(29, len(names))
        for name in names:
            with self.subTest(name=name):
                self.assertIn("`" + name, page)


if __name__ == "__main__":
    unittest.main()
