"""Mail files into mail messages."""

import unittest

from store_case import ADA

from dtstore_lib.appointments import Appointments
from dtstore_lib.eml_import import MailImport
from dtstore_lib.problem import Problem

HEAD = """From: Bo Ferrand <bo.ferrand@nordlys.example>
To: Ada Quist <ada.quist@nordlys.example>
Subject: The figures
Date: Fri, 20 Nov 2026 10:00:00 +0100
Message-ID: <m1@nordlys.example>
"""


class Read:
    def __init__(self, text):
        self.notes, self.files = [], {}
        work = MailImport("test.eml", ADA, Appointments(ADA, self.keep), self.keep, lambda label, text: self.notes.append(text))
        self.message, self.mine = work.run(text if isinstance(text, bytes) else text.encode("utf-8"))
        self.properties = self.message["properties"]

    def keep(self, data, ending):
        name = f"files/{len(self.files)}{ending}"
        self.files[name] = data
        return name


class MailTest(unittest.TestCase):
    def test_times_sender_and_identifier_are_kept(self):
        held = Read(HEAD + "\nHello").properties
        self.assertEqual([held[key] for key in (
            "PR_SUBJECT_W", "PR_CLIENT_SUBMIT_TIME", "PR_MESSAGE_DELIVERY_TIME", "PR_SENDER_EMAIL_ADDRESS_W",
            "PR_SENT_REPRESENTING_NAME_W", "PR_INTERNET_MESSAGE_ID_W", "PR_BODY_W", "PR_MSG_EDITOR_FORMAT",
            "PR_INTERNET_CPID", "PR_MESSAGE_FLAGS")], [
            "The figures", "2026-11-20T09:00:00Z", "2026-11-20T09:00:00Z", "bo.ferrand@nordlys.example", "Bo Ferrand",
            "<m1@nordlys.example>", "Hello", 1, 65001, 1])

    def test_the_time_of_delivery_is_that_of_the_last_receipt(self):
        held = Read("Received: from a by b; Fri, 20 Nov 2026 09:30:00 +0000\n" + HEAD + "\nx").properties
        self.assertEqual(held["PR_MESSAGE_DELIVERY_TIME"], "2026-11-20T09:30:00Z")

    def test_recipients_keep_their_kinds(self):
        rows = Read(HEAD + "Cc: a@x, \"B, C\" <b@x>\nBcc: c@x\n\nx").message["recipients"]
        self.assertEqual([(row["PR_RECIPIENT_TYPE"], row["PR_DISPLAY_NAME_W"], row["PR_EMAIL_ADDRESS_W"]) for row in rows], [
            (1, "Ada Quist", "ada.quist@nordlys.example"), (2, "a@x", "a@x"), (2, "B, C", "b@x"), (3, "c@x", "c@x")])

    def test_a_mail_of_the_owner_is_marked_as_sent(self):
        read = Read(HEAD.replace("Bo Ferrand <bo.ferrand", "Ada <ADA.Quist") + "\nx")
        self.assertEqual((read.mine, read.properties["PR_MESSAGE_FLAGS"]), (True, 0x21))

    def test_unread_mails_and_importance_are_kept(self):
        held = Read("Status: O\nImportance: high\n" + HEAD + "\nx").properties
        self.assertEqual((held["PR_MESSAGE_FLAGS"], held["PR_IMPORTANCE"]), (0, 2))
        self.assertEqual(Read("X-Priority: 5 (lowest)\n" + HEAD + "\nx").properties["PR_IMPORTANCE"], 0)

    def test_both_bodies_of_a_mail_are_kept(self):
        held = Read(HEAD + 'Content-Type: multipart/alternative; boundary=b\n\n--b\nContent-Type: text/plain; charset=utf-8\n'
                    '\nplain ü\n--b\nContent-Type: text/html; charset=utf-8\n\n<p>marked ü</p>\n--b--\n').properties
        self.assertEqual((held["PR_BODY_W"].strip(), held["PR_BODY_HTML_W"].strip(), held["PR_MSG_EDITOR_FORMAT"]),
                         ("plain ü", "<p>marked &#252;</p>", 2))

    def test_a_plain_body_is_made_of_the_other_and_told(self):
        read = Read(HEAD + "Content-Type: text/html\n\n<style>x{}</style><p>Hello <b>you</b></p><p>two</p>")
        self.assertEqual((read.properties["PR_BODY_W"], read.notes),
                         ("Hello you\r\ntwo", ["has no plain body; it is made of the other one"]))

    def test_coded_words_and_codes_of_bodies_are_read(self):
        held = Read((HEAD.replace("The figures", "=?utf-8?b?5ryi5a2X?=") + "Content-Type: text/plain; charset=koi8-r\n\n")
                    .encode() + "привет".encode("koi8-r")).properties
        self.assertEqual((held["PR_SUBJECT_W"], held["PR_BODY_W"]), ("漢字", "привет"))

    def test_an_unknown_code_is_told(self):
        read = Read(HEAD + "Content-Type: text/plain; charset=martian\n\nhello")
        self.assertEqual(read.properties["PR_BODY_W"], "hello")
        self.assertTrue(read.notes[0].startswith("a body is in no known code"), read.notes)

    def test_attachments_are_kept_with_their_bytes(self):
        read = Read(HEAD + 'Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Type: text/plain\n\nx\n--b\n'
                    'Content-Type: application/pdf\nContent-Disposition: attachment; filename="a.pdf"\n'
                    'Content-Transfer-Encoding: base64\n\nJVBERi0=\n--b--\n')
        attachment = read.message["attachments"][0]["properties"]
        self.assertEqual(read.files[attachment["PR_ATTACH_DATA_BIN"]["file"]], b"%PDF-")
        self.assertEqual((attachment["PR_ATTACH_LONG_FILENAME_W"], attachment["PR_ATTACH_MIME_TAG_W"],
                          read.properties["PR_MESSAGE_FLAGS"]), ("a.pdf", "application/pdf", 0x11))

    def test_a_mail_without_a_date_is_told(self):
        read = Read("From: a@x\nSubject: s\n\nx")
        self.assertEqual((read.properties["PR_CLIENT_SUBMIT_TIME"], read.notes),
                         ("1970-01-01T00:00:00Z", ["has no date that can be read; 1970-01-01 stands instead"]))

    def test_what_is_no_mail_is_refused(self):
        for text in ("", "hello there\n", b"\x00\x01\x02"):
            with self.assertRaisesRegex(Problem, "test.eml: is no mail file"):
                Read(text)


if __name__ == "__main__":
    unittest.main()
