"""vCard files into contacts and address book entries."""

import base64
import unittest

from store_case import StoreCase

from dtstore_lib.problem import Problem
from dtstore_lib.vcf_import import ContactImport

JPEG = b"\xff\xd8\xff\xe0" + b"photo" * 400
PNG = b"\x89PNG\r\n\x1a\n" + b"photo"


class Read:
    def __init__(self, text):
        self.notes, self.files = [], {}
        self.work = ContactImport("test.vcf", self.keep, lambda label, text: self.notes.append(text))
        self.messages = self.work.run(text if isinstance(text, bytes) else text.encode("utf-8"))

    def keep(self, data, ending):
        name = f"files/{len(self.files)}{ending}"
        self.files[name] = data
        return name

    @property
    def properties(self):
        return self.messages[0]["properties"]


def card(*lines, version="3.0"):
    return "\r\n".join(("BEGIN:VCARD", f"VERSION:{version}", *lines, "END:VCARD", ""))


def folded(line):
    return "\r\n ".join(line[at:at + 70] for at in range(0, len(line), 70))


class ContactTest(unittest.TestCase):
    def test_names_company_and_title_are_kept(self):
        held = Read(card("N:Ferrand;Bo;Erik;Dr;Jr", "FN:Dr Bo Ferrand", "ORG:Nordlys;Research;Ice", "TITLE:Engineer")).properties
        self.assertEqual([held[key] for key in (
            "PR_DISPLAY_NAME_W", "PR_GIVEN_NAME_W", "PR_SURNAME_W", "PR_MIDDLE_NAME_W", "PR_DISPLAY_NAME_PREFIX_W",
            "PR_GENERATION_W", "PR_COMPANY_NAME_W", "PR_DEPARTMENT_NAME_W", "PR_TITLE_W", "PidLidFileUnder")], [
            "Dr Bo Ferrand", "Bo", "Ferrand", "Erik", "Dr", "Jr", "Nordlys", "Research, Ice", "Engineer", "Ferrand, Bo"])

    def test_numbers_go_to_their_kinds_and_then_to_the_second_places(self):
        held = Read(card("FN:B", "TEL;TYPE=WORK:1", "TEL;TYPE=work,voice:2", "TEL;TYPE=HOME:3", "TEL;TYPE=HOME:4",
                         "TEL;TYPE=CELL:5", "TEL;TYPE=WORK,FAX:6", 'TEL;VALUE=uri;TYPE="pager":tel:7')).properties
        self.assertEqual([held[f"PR_{key}_TELEPHONE_NUMBER_W"] for key in (
            "BUSINESS", "BUSINESS2", "HOME", "HOME2", "MOBILE", "PAGER")], ["1", "2", "3", "4", "5", "7"])
        self.assertEqual(held["PR_BUSINESS_FAX_NUMBER_W"], "6")

    def test_three_addresses_are_kept_the_preferred_first_and_a_fourth_is_told(self):
        read = Read(card("FN:B", "EMAIL:a@x", "EMAIL;TYPE=PREF:b@x", "EMAIL:c@x", "EMAIL:d@x"))
        self.assertEqual([read.properties[f"PidLidEmail{n}OriginalDisplayName"] for n in (1, 2, 3)], ["b@x", "a@x", "c@x"])
        self.assertEqual(read.properties["PidLidEmail1EmailAddress"], "b@x")
        self.assertEqual(read.notes, ["has no place left for the address d@x"])

    def test_addresses_of_work_and_home_are_kept(self):
        held = Read(card("FN:B", "ADR;TYPE=WORK:;;Kaia 1;Oslo;Viken;0150;Norway", "ADR;TYPE=HOME:;;Vei 2;Bergen;;;")).properties
        self.assertEqual([held[key] for key in ("PR_STREET_ADDRESS_W", "PR_LOCALITY_W", "PR_STATE_OR_PROVINCE_W",
                                                "PR_POSTAL_CODE_W", "PR_COUNTRY_W", "PR_HOME_ADDRESS_STREET_W",
                                                "PR_HOME_ADDRESS_CITY_W")],
                         ["Kaia 1", "Oslo", "Viken", "0150", "Norway", "Vei 2", "Bergen"])

    def test_web_page_birthday_note_and_messaging_address_are_kept(self):
        held = Read(card("FN:B", "URL:https://b.example", "BDAY:19800203", "NOTE:line\\nnext", "IMPP:sip:b@x")).properties
        self.assertEqual([held[key] for key in ("PR_BUSINESS_HOME_PAGE_W", "PR_BIRTHDAY", "PR_BODY_W",
                                                "PidLidInstantMessagingAddress")],
                         ["https://b.example", "1980-02-03T00:00:00Z", "line\nnext", "sip:b@x"])

    def test_a_photo_is_an_attachment_of_its_own_kind(self):
        for line, data, ending in (
                ("PHOTO;ENCODING=b;TYPE=JPEG:" + base64.b64encode(JPEG).decode(), JPEG, ".jpg"),
                ("PHOTO:data:image/png;base64," + base64.b64encode(PNG).decode(), PNG, ".png")):
            read = Read(card("FN:B", folded(line)))
            attachment = read.messages[0]["attachments"][0]["properties"]
            self.assertEqual(read.files[attachment["PR_ATTACH_DATA_BIN"]["file"]], data)
            self.assertEqual((attachment["PR_ATTACHMENT_CONTACTPHOTO"], attachment["PR_ATTACH_METHOD"],
                              attachment["PR_ATTACH_LONG_FILENAME_W"], read.properties["PidLidHasPicture"]),
                             (True, 1, "ContactPicture" + ending, True))

    def test_a_photo_elsewhere_is_told(self):
        read = Read(card("FN:B", "PHOTO;VALUE=uri:https://x.example/b.jpg"))
        self.assertEqual((read.properties["PidLidHasPicture"], read.notes), (False, ["its photo stands elsewhere and is left out"]))

    def test_a_card_that_cannot_be_read_is_told_and_the_rest_go_on(self):
        read = Read(card("FN:A", "PHOTO;ENCODING=b:%%%") + card("FN:B"))
        self.assertEqual([message["properties"]["PR_DISPLAY_NAME_W"] for message in read.messages][-1], "B")
        self.assertEqual(len(read.notes), 1 if len(read.messages) == 1 else 0)

    def test_a_list_is_kept_as_a_list_and_its_members_are_told(self):
        read = Read(card("FN:All", "KIND:group", "MEMBER:urn:uuid:1", "MEMBER:urn:uuid:2", version="4.0"))
        self.assertEqual((read.messages[0]["class"], read.notes), ("IPM.DistList", ["a list; its 2 members are left out"]))

    def test_a_nameless_card_takes_its_address(self):
        self.assertEqual(Read(card("FN:", "N:;;;;", "EMAIL:a@x")).properties["PR_DISPLAY_NAME_W"], "a@x")

    def test_texts_of_every_script_arrive_unchanged(self):
        self.assertEqual(Read(card("FN:Ελένη 漢字 𝒳🎯")).properties["PR_DISPLAY_NAME_W"], "Ελένη 漢字 𝒳🎯")

    def test_what_is_no_card_file_is_refused(self):
        with self.assertRaisesRegex(Problem, "test.vcf: is no vCard file"):
            Read("hello")
        with self.assertRaisesRegex(Problem, "test.vcf: cannot be read as vCard"):
            Read("BEGIN:VCARD\r\nFN:a\r\n")


class BookTest(StoreCase):
    def test_folders_become_containers_inside_containers(self):
        self.done("new", "s")
        self.write("book/top.vcf", card("FN:Top One", "EMAIL:top@x.example"))
        self.write("book/Oslo/Quay/q.vcf", card("FN:Quay One", "EMAIL:quay@x.example", "X-NATIVE-ADDRESS:/o=N/cn=quay"))
        self.done("import", "s", "--book", "Global Address List", "book")
        shown = self.done("show", "s")
        self.assertRegex(shown, r"'Global Address List': 3 entries\n +\d+ 'Oslo': 1 entry\n +\d+ 'Quay': 1 entry")

    def test_an_entry_has_the_addresses_that_a_name_search_reads(self):
        held = Read(card("FN:Quay One", "EMAIL:quay@x.example", "X-NATIVE-ADDRESS:/o=N/cn=quay"))
        entry = held.work.entry_properties(held.work.cards(card("FN:Quay One", "EMAIL:quay@x.example",
                                                                "X-NATIVE-ADDRESS:/o=N/cn=quay").encode())[0], 1)
        self.assertEqual([entry[key] for key in ("PR_DISPLAY_NAME_W", "PR_ADDRTYPE_W", "PR_EMAIL_ADDRESS_W", "PR_SMTP_ADDRESS_W",
                                                 "PR_ACCOUNT_W")],
                         ["Quay One", "EX", "/o=N/cn=quay", "quay@x.example", "quay"])

    def test_the_same_address_twice_is_one_entry_in_both_containers(self):
        self.done("new", "s")
        self.write("b.vcf", card("FN:Bo", "EMAIL:bo@x.example"))
        for container in ("Global Address List/A", "Global Address List/B"):
            self.done("import", "s", "--book", container, "b.vcf")
        self.assertIn("address book: 2 entries", self.done("show", "s"))


if __name__ == "__main__":
    unittest.main()
