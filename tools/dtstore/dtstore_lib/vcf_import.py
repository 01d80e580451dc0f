"""vCard files into contact messages or address book entries, with python3-vobject."""

import binascii
import re

import vobject

from .ics_read import decode_text
from .problem import Problem

_PHONES = (  # kinds that a number must have: the properties it fills, the first free one
    ({"fax", "work"}, ("PR_BUSINESS_FAX_NUMBER_W",)),
    ({"fax", "home"}, ("PR_HOME_FAX_NUMBER_W",)),
    ({"fax"}, ("PR_BUSINESS_FAX_NUMBER_W", "PR_PRIMARY_FAX_NUMBER_W")),
    ({"pager"}, ("PR_PAGER_TELEPHONE_NUMBER_W",)),
    ({"cell"}, ("PR_MOBILE_TELEPHONE_NUMBER_W",)),
    ({"home"}, ("PR_HOME_TELEPHONE_NUMBER_W", "PR_HOME2_TELEPHONE_NUMBER_W")),
    ({"work"}, ("PR_BUSINESS_TELEPHONE_NUMBER_W", "PR_BUSINESS2_TELEPHONE_NUMBER_W")),
    (set(), ("PR_PRIMARY_TELEPHONE_NUMBER_W", "PR_OTHER_TELEPHONE_NUMBER_W")),
)
_ADDRESS = (("street", "STREET"), ("city", "CITY"), ("region", "STATE_OR_PROVINCE"), ("code", "POSTAL_CODE"),
            ("country", "COUNTRY"))
_PHOTO_KINDS = ((b"\xff\xd8\xff", ".jpg", "image/jpeg"), (b"\x89PNG\r\n\x1a\n", ".png", "image/png"),
                (b"GIF8", ".gif", "image/gif"), (b"BM", ".bmp", "image/bmp"))


class ContactImport:
    """Reads one file. note(label, text) hears of what a contact loses, step() of every card."""

    def __init__(self, path, keep_file, note, step=lambda done, of: None):
        self.path, self.keep_file, self.note, self.step = path, keep_file, note, step
        self.photos = 0

    def cards(self, data):
        text = decode_text(data, self.path, self.note)
        if "BEGIN:VCARD" not in text.upper():
            raise Problem(f"{self.path}: is no vCard file (no BEGIN:VCARD)")
        # The parser cuts a value at its first comma, which takes the bytes off a data: photo.
        text = re.sub(r"\r?\n[ \t]", "", text)
        text = re.sub(r"(?im)^((?:[\w-]+\.)?PHOTO)\b[^:\n]*:data:([^;,\n]*);base64,(.*)$", r"\1;ENCODING=b;TYPE=\2:\3", text)
        cards, broken = [], []
        for number, one in enumerate(re.findall(r"(?ims)^BEGIN:VCARD\s*$.*?^END:VCARD\s*$", text), 1):
            try:
                cards += list(vobject.readComponents(one))
            except (vobject.base.ParseError, UnicodeDecodeError, ValueError, binascii.Error) as error:
                broken.append((number, error))
        if not cards:
            reason = broken[0][1] if broken else "no END:VCARD"
            raise Problem(f"{self.path}: cannot be read as vCard: {reason}")
        for number, error in broken:
            self.note(f"card {number}", f"cannot be read and is left out ({error})")
        return cards

    def run(self, data):
        """Contact messages of a file's bytes."""
        cards = self.cards(data)
        found = []
        for number, card in enumerate(cards, 1):
            found.append(self.contact(card, number))
            self.step(number, len(cards))
        return found

    def contact(self, card, number):
        properties = self.properties(card, number)
        label = self.label(card, number)
        if _text(card, "kind").lower() == "group":
            members = len(card.contents.get("member", []))
            if members:
                self.note(label, f"a list; its {members} members are left out")
            return {"class": "IPM.DistList", "properties": {
                "PR_DISPLAY_NAME_W": properties["PR_DISPLAY_NAME_W"], "PR_BODY_W": properties.get("PR_BODY_W", "")}}
        self._emails(card, properties, label)
        message = {"class": "IPM.Contact", "properties": properties}
        photo = self.photo(card, label)
        properties["PidLidHasPicture"] = photo is not None
        if photo is not None:
            self.photos += 1
            message["attachments"] = [self._photo_attachment(photo)]
        return message

    def label(self, card, number):
        return f"card {number} {_text(card, 'fn')[:40]!r}"

    def properties(self, card, number):
        """What a contact and an address book entry have in common."""
        name = card.contents["n"][0].value if "n" in card.contents else None
        given, family = (_join(getattr(name, part, "")) for part in ("given", "family")) if name else ("", "")
        shown = _text(card, "fn") or " ".join(part for part in (given, family) if part)
        if not shown:
            shown = _text(card, "email") or f"contact {number}"
        properties = {"PR_DISPLAY_NAME_W": shown, "PidLidFileUnder": f"{family}, {given}" if family and given else shown,
                      "PR_SUBJECT_W": shown}
        pairs = [("PR_GIVEN_NAME_W", given), ("PR_SURNAME_W", family), ("PR_TITLE_W", _text(card, "title")),
                 ("PR_NICKNAME_W", _text(card, "nickname")), ("PR_BUSINESS_HOME_PAGE_W", _text(card, "url")),
                 ("PR_BODY_W", _text(card, "note"))]
        if name:
            pairs += [("PR_MIDDLE_NAME_W", _join(name.additional)), ("PR_DISPLAY_NAME_PREFIX_W", _join(name.prefix)),
                      ("PR_GENERATION_W", _join(name.suffix))]
        if "org" in card.contents:
            units = card.contents["org"][0].value
            units = [_join(unit) for unit in units] if isinstance(units, list) else [_join(units)]
            pairs += [("PR_COMPANY_NAME_W", units[0]), ("PR_DEPARTMENT_NAME_W", ", ".join(units[1:]))]
        properties.update({key: value for key, value in pairs if value})
        self._phones(card, properties, self.label(card, number))
        self._addresses(card, properties, self.label(card, number))
        day = re.fullmatch(r"(\d{4})-?(\d\d)-?(\d\d).*", _text(card, "bday"))
        if day:
            properties["PR_BIRTHDAY"] = "{}-{}-{}T00:00:00Z".format(*day.groups())
        return properties

    def _phones(self, card, properties, label):
        for line in card.contents.get("tel", []):
            kinds = _kinds(line)
            kinds = {"cell" if kind == "mobile" else kind for kind in kinds}
            number = re.sub(r"^tel:", "", str(line.value).strip(), flags=re.I)
            for needed, places in _PHONES:
                free = next((place for place in places if place not in properties), None)
                if needed <= kinds and free:
                    properties[free] = number
                    break
            else:
                self.note(label, f"has no place left for the number {number}")

    def _addresses(self, card, properties, label):
        for line in card.contents.get("adr", []):
            home = "home" in _kinds(line)
            prefix = "PR_HOME_ADDRESS_" if home else "PR_"
            names = {"CITY": "CITY" if home else "LOCALITY", "STREET": "STREET" if home else "STREET_ADDRESS"}
            found = {f"{prefix}{names.get(key, key)}_W": _join(getattr(line.value, part)) for part, key in _ADDRESS}
            found = {key: value for key, value in found.items() if value}
            if any(key in properties for key in found):
                self.note(label, "has no place left for a further address")
            else:
                properties.update(found)

    def addresses(self, card):
        """E-mail addresses, the preferred first."""
        lines = card.contents.get("email", [])
        lines = sorted(lines, key=lambda line: "pref" not in _kinds(line) and "PREF" not in line.params)
        found = []
        for line in lines:
            address = re.sub(r"^mailto:", "", str(line.value).strip(), flags=re.I)
            if address and address not in found:
                found.append(address)
        return found

    def _emails(self, card, properties, label):
        addresses = self.addresses(card)
        for number, address in enumerate(addresses[:3], 1):
            shown = f"{properties['PR_DISPLAY_NAME_W']} ({address})"
            properties.update({
                f"PidLidEmail{number}DisplayName": shown, f"PidLidEmail{number}AddressType": "SMTP",
                f"PidLidEmail{number}EmailAddress": address, f"PidLidEmail{number}OriginalDisplayName": address,
                f"PidLidEmail{number}OriginalEntryId": {
                    "oneOff": {"name": shown, "type": "SMTP", "address": address}},
            })
        for address in addresses[3:]:
            self.note(label, f"has no place left for the address {address}")
        for key in ("impp", "x-jabber", "x-skype", "x-skype-username", "x-sip", "x-ms-imaddress", "x-aim"):
            if _text(card, key):
                properties["PidLidInstantMessagingAddress"] = _text(card, key)
                break

    def photo(self, card, label):
        """The bytes of the first photo that the file itself holds."""
        for line in card.contents.get("photo", []):
            if isinstance(line.value, bytes):
                return line.value
            self.note(label, "its photo stands elsewhere and is left out")
        return None

    def _photo_attachment(self, data):
        ending, kind = next(((ending, kind) for head, ending, kind in _PHOTO_KINDS if data.startswith(head)),
                            (".bin", "application/octet-stream"))
        return {"properties": {
            "PR_ATTACH_METHOD": 1,
            "PR_ATTACH_LONG_FILENAME_W": "ContactPicture" + ending,
            "PR_ATTACH_FILENAME_W": "Contact" + ending,
            "PR_ATTACH_EXTENSION_W": ending,
            "PR_ATTACH_MIME_TAG_W": kind,
            "PR_RENDERING_POSITION": -1,
            "PR_ATTACHMENT_CONTACTPHOTO": True,
            "PR_ATTACHMENT_HIDDEN": True,
            "PR_ATTACH_DATA_BIN": {"file": self.keep_file(data, ending)},
        }}

    def entry_properties(self, card, number):
        """Properties of an address book entry."""
        properties = self.properties(card, number)
        for key in ("PidLidFileUnder", "PR_SUBJECT_W", "PR_BODY_W", "PR_BIRTHDAY"):
            properties.pop(key, None)
        addresses = self.addresses(card)
        native = _text(card, "x-native-address")
        account = _text(card, "x-account") or (addresses[0].partition("@")[0] if addresses else "")
        properties.update({"PR_ADDRTYPE_W": "EX" if native else "SMTP"})
        pairs = (("PR_EMAIL_ADDRESS_W", native or (addresses[0] if addresses else "")),
                 ("PR_SMTP_ADDRESS_W", addresses[0] if addresses else ""), ("PR_ACCOUNT_W", account))
        properties.update({key: value for key, value in pairs if value})
        return properties


def _kinds(line):
    kinds = {kind.lower() for value in line.params.get("TYPE", []) for kind in str(value).split(",")}
    return kinds | {kind.lower() for kind in getattr(line, "singletonparams", [])}


def _text(card, name):
    lines = card.contents.get(name, [])
    value = lines[0].value if lines else ""
    return value.strip().replace("\0", "") if isinstance(value, str) else _join(value)


def _join(value):
    if isinstance(value, (list, tuple)):
        return " ".join(part for part in map(_join, value) if part)
    return str(value or "").strip()
