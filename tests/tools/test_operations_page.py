"""Whoever has a failure or a warning of the server's trace before him finds it in docs/operations.md."""
import glob
import os
import re
import unittest

SOURCE = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))
SERVER = ("support", "TlvOICommon", "tlvOIExLib", "dtoiex64")

LITERAL = r'((?:"(?:[^"\\]|\\.)*"\s*)+)'
# A trace of level 0 or 1 with a text of its own, and the steps of a bring-up, which share one trace.
TRACE = re.compile(r"SEND_TRACE\(\s*[01]\s*,\s*[^,]+,\s*" + LITERAL)
STEP = re.compile(r"FailBringUp\(\s*" + LITERAL)
CONVERSION = re.compile(r"%[-0-9l z]*[a-zA-Z]")


def told_by(text):
    """The longest run of a trace text that stands in every line made of it."""
    whole = "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', text)).replace("\\n", "")
    return max(CONVERSION.split(whole), key=len).strip(" ,[]-")


def failures_and_warnings():
    found = {}
    for folder in SERVER:
        for path in glob.glob(os.path.join(SOURCE, folder, "**", "*.cpp"), recursive=True):
            with open(path, encoding="utf-8") as file:
                source = file.read()
            for text in TRACE.findall(source) + STEP.findall(source):
                if told_by(text):
                    found[told_by(text)] = os.path.relpath(path, SOURCE)
    return found


class OperationsPage(unittest.TestCase):
    def test_every_failure_and_warning_of_the_trace_is_told(self):
        with open(os.path.join(SOURCE, "docs", "operations.md"), encoding="utf-8") as file:
            page = file.read()
        found = failures_and_warnings()
        self.assertGreater(len(found), 50)
        self.assertIn("create semphore-WorkPending failed", " ".join(found))
        for text, path in sorted(found.items()):
            with self.subTest(text=text, path=path):
                self.assertTrue(text in page, "docs/operations.md does not tell of it")


if __name__ == "__main__":
    unittest.main()
