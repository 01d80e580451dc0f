"""Samples with random damage: each file is refused with a plain message, or what comes of it can be stored."""

import glob
import json
import os
import random
import re
import unittest

from store_case import ADA, SOURCE, Imported

from dtstore_lib import schema
from dtstore_lib.appointments import Appointments
from dtstore_lib.eml_import import MailImport
from dtstore_lib.problem import Problem
from dtstore_lib.vcf_import import ContactImport

EACH = 1000
PIECES = (
    b";", b":", b",", b"=", b"\r\n", b" ", b'"', b"\\", b"\x00", b"\xff", b"99999999", b"-1", b"0", b"T", b"Z", b"UNTIL=",
    b"BYDAY=", b"DTSTART", b"VALUE=DATE", b"TZID=X", b"20261301T990000", b"00010101", b"RRULE:FREQ=MINUTELY", b"P1W", b"-P1D",
    b"DURATION:", b"mailto:", b"=?utf-8?b?!!?=", b"charset=x", b"INTERVAL=0")


def samples(pattern, piece=None, most=3000):
    found = []
    for path in sorted(glob.glob(os.path.join(SOURCE, "samples", "**", pattern), recursive=True)):
        with open(path, "rb") as file:
            data = file.read()
        found += [data] if piece is None else [one for one in re.findall(piece, data, re.S) if len(one) < most]
    return found


def damaged(rng, data):
    data = bytearray(data)
    for _ in range(rng.randint(1, 6)):
        at, kind = rng.randrange(len(data) + 1), rng.randrange(5)
        if kind == 0:
            data[at:at] = rng.choice(PIECES)
        elif kind == 1:
            del data[at:at + rng.randint(1, 12)]
        elif kind == 2:
            data[at:at + 1] = bytes((rng.randrange(256),))
        elif kind == 3:
            source = rng.randrange(len(data) + 1)
            data[at:at] = data[source:source + rng.randint(1, 30)]
        else:
            lines = bytes(data).split(b"\r\n")
            one, other = rng.randrange(len(lines)), rng.randrange(len(lines))
            lines[one], lines[other] = lines[other], lines[one]
            data = bytearray(b"\r\n".join(lines))
    return bytes(data)


class DamagedTest(unittest.TestCase):
    def check(self, seed, originals, read):
        """Reads damaged copies; at least some must be refused or told of, and none may end in anything else."""
        rng = random.Random(seed)
        kept = 0
        for _ in range(EACH):
            data = damaged(rng, rng.choice(originals))
            try:
                messages = read(data)
            except Problem as problem:
                self.assertTrue(str(problem))
                continue
            kept += len(messages)
            check = schema._Check({}, None)
            for message in messages:
                check.message((), message)
            self.assertEqual([str(finding) for finding in check.findings], [], data)
            json.dumps(messages, ensure_ascii=False).encode("utf-8")
        self.assertGreater(kept, EACH // 10)

    def test_calendars(self):
        events = samples("*.ics", rb"BEGIN:VEVENT.*?END:VEVENT\r\n")
        rng = random.Random(1)
        files = [b"BEGIN:VCALENDAR\r\nVERSION:2.0\r\n" + b"".join(rng.sample(events, 2)) + b"END:VCALENDAR\r\n"
                 for _ in range(200)]
        self.check("ics", files, lambda data: Imported(data).messages)

    def test_cards(self):
        def read(data):
            work = ContactImport("x.vcf", lambda data, ending: "files/x", lambda label, text: None)
            for card in work.cards(data):
                work.entry_properties(card, 1)
            return work.run(data)
        self.check("vcf", samples("*.vcf", rb"BEGIN:VCARD.*?END:VCARD\r\n"), read)

    def test_mails(self):
        def keep(data, ending):
            return "files/x"

        def read(data):
            return [MailImport("x.eml", ADA, Appointments(ADA, keep), keep, lambda label, text: None).run(data)[0]]
        self.check("eml", samples("*.eml"), read)


if __name__ == "__main__":
    unittest.main()
