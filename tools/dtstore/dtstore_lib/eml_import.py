"""Mail files (RFC 5322) into mail messages, with the language's own mail package."""

import email
import email.policy
import email.utils
import re
from datetime import datetime, timezone
from html.parser import HTMLParser

from .appointments import utc_text
from .problem import Problem

READ, HAS_ATTACHMENTS, FROM_ME = 0x01, 0x10, 0x20
RENDER_AT_END = -1


class MailImport:
    """Reads one file. `make` is an Appointments object: bodies and large values are kept its way."""

    def __init__(self, path, owner, make, keep_file, note):
        self.path, self.owner, self.make, self.keep_file, self.note = path, owner, make, keep_file, note

    def run(self, data):
        """(message, whether the owner sent it) of a file's bytes."""
        if data[:3] == b"\xef\xbb\xbf":
            data = data[3:]
        mail = email.message_from_bytes(data, policy=email.policy.default)
        if not any(name.lower() in ("from", "to", "date", "subject") for name, _ in mail.raw_items()):
            raise Problem(f"{self.path}: is no mail file (no From, To, Date or Subject)")
        try:
            return self._message(mail)
        except (ValueError, LookupError, TypeError, AttributeError, OverflowError) as error:
            raise Problem(f"{self.path}: cannot be read as mail: {error}") from None

    def _message(self, mail):
        label = f"mail {_header(mail, 'subject')[:40]!r}"
        sender = _people(mail, "from")
        actual = _people(mail, "sender") or sender
        mine = bool(sender) and sender[0][1].casefold() == self.owner.email.casefold()
        attachments = self._attachments(mail, label)
        sent = self._time(mail, label)
        properties = {
            "PR_SUBJECT_W": _header(mail, "subject"),
            **self._bodies(mail, label),
            "PR_IMPORTANCE": _importance(mail),
            "PR_SENSITIVITY": {"personal": 1, "private": 2, "company-confidential": 3}.get(
                _header(mail, "sensitivity").lower(), 0),
            "PR_MESSAGE_FLAGS": self._flags(mail, mine, attachments),
            "PR_CLIENT_SUBMIT_TIME": utc_text(sent),
            "PR_MESSAGE_DELIVERY_TIME": utc_text(self._delivered(mail) or sent),
            "PR_CREATION_TIME": utc_text(self._delivered(mail) or sent),
            "PR_LAST_MODIFICATION_TIME": utc_text(self._delivered(mail) or sent),
        }
        for key, people in (("PR_SENDER", actual), ("PR_SENT_REPRESENTING", sender)):
            if people:
                name, address = people[0]
                properties.update({
                    f"{key}_NAME_W": name or address, f"{key}_ADDRTYPE_W": "SMTP", f"{key}_EMAIL_ADDRESS_W": address,
                    f"{key}_ENTRYID": {"oneOff": {"name": name or address, "type": "SMTP", "address": address}}})
        for key, header in (("PR_INTERNET_MESSAGE_ID_W", "message-id"), ("PR_IN_REPLY_TO_ID_W", "in-reply-to"),
                            ("PR_INTERNET_REFERENCES_W", "references")):
            if _header(mail, header):
                properties[key] = " ".join(_header(mail, header).split())
        message = {"class": "IPM.Note", "properties": properties}
        rows = [_row(name, address, kind) for header, kind in (("to", 1), ("cc", 2), ("bcc", 3))
                for name, address in _people(mail, header)]
        if rows:
            message["recipients"] = rows
        if attachments:
            message["attachments"] = attachments
        return message, mine

    def _bodies(self, mail, label):
        text, markup = (self._content(mail.get_body((kind,)), label) for kind in ("plain", "html"))
        if text is None and markup is None and not mail.is_multipart() and mail.get_content_maintype() == "text":
            text = self._content(mail, label)
        if text is None and markup:
            self.note(label, "has no plain body; it is made of the other one")
            text = _plain(markup)
        return {**self.make.bodies(text or "", markup or ""),
                "PR_MSG_EDITOR_FORMAT": 2 if markup else 1}

    def _content(self, part, label):
        if part is None:
            return None
        try:
            return clean(part.get_content())
        except (LookupError, UnicodeError, KeyError) as error:
            self.note(label, f"a body is in no known code ({error}); what cannot be read is marked")
            return clean((part.get_payload(decode=True) or b"").decode("utf-8", "replace"))

    def _attachments(self, mail, label):
        found = []
        for part in mail.iter_attachments() if mail.is_multipart() else []:
            if part.get_content_type() == "message/rfc822":
                data, name = part.get_payload(0).as_bytes(), clean(part.get_filename() or "mail.eml")
            else:
                data = part.get_payload(decode=True)
                if data is None:
                    data = part.as_bytes()
                name = clean(part.get_filename() or f"attachment-{len(found) + 1}")
            ending = "." + name.rpartition(".")[2] if "." in name else ""
            safe = ending if ending[1:].isalnum() and len(ending) < 8 else ".bin"
            properties = {
                "PR_ATTACH_METHOD": 1, "PR_ATTACH_LONG_FILENAME_W": name, "PR_ATTACH_FILENAME_W": name,
                "PR_ATTACH_MIME_TAG_W": clean(part.get_content_type()), "PR_RENDERING_POSITION": RENDER_AT_END,
                "PR_ATTACH_DATA_BIN": {"file": self.keep_file(data, safe)}}
            if ending:
                properties["PR_ATTACH_EXTENSION_W"] = ending
            if _header(part, "content-id"):
                properties["PR_ATTACH_CONTENT_ID_W"] = _header(part, "content-id").strip("<> ")
            found.append({"properties": properties})
        return found

    def _flags(self, mail, mine, attachments):
        status = _header(mail, "status")
        unread = _header(mail, "x-unread") == "1" or (status != "" and "R" not in status.upper())
        return (0 if unread else READ) | (FROM_ME if mine else 0) | (HAS_ATTACHMENTS if attachments else 0)

    def _time(self, mail, label):
        moment = _utc(_header(mail, "date"))
        if moment is None:
            self.note(label, "has no date that can be read; 1970-01-01 stands instead")
            return datetime(1970, 1, 1)
        return moment

    @staticmethod
    def _delivered(mail):
        return _utc(_header(mail, "received").rpartition(";")[2])


def _utc(text):
    try:
        moment = email.utils.parsedate_to_datetime(text.strip())
    except (ValueError, TypeError, IndexError, OverflowError):
        return None
    if moment.tzinfo is not None:
        moment = moment.astimezone(timezone.utc).replace(tzinfo=None)
    return moment if moment.year > 1601 else None


def _header(mail, name):
    """The first header of a name as clean text; one that is badly written as far as it can be read."""
    try:
        text = str(mail.get(name, ""))
    except (ValueError, LookupError, TypeError, AttributeError):
        text = _raw(mail, name)
    return clean(text).strip()


def _raw(mail, name):
    return next((" ".join(str(value).split()) for key, value in mail.raw_items() if key.lower() == name), "")


def clean(text):
    """Text without zero characters, and without the stand-ins for bytes that no code explains."""
    return text.encode("utf-8", "surrogateescape").decode("utf-8", "replace").replace("\0", "")


def _people(mail, header):
    """(name, address) of everybody in the headers of a name."""
    try:
        found = [(address.display_name, address.addr_spec) for value in mail.get_all(header) or []
                 for address in getattr(value, "addresses", ())]
    except (ValueError, LookupError, TypeError, AttributeError):
        found = email.utils.getaddresses([_raw(mail, header)])
    return [(clean(name), clean(address)) for name, address in found if address]


def _row(name, address, kind):
    return {
        "PR_RECIPIENT_TYPE": kind, "PR_DISPLAY_NAME_W": name or address, "PR_ADDRTYPE_W": "SMTP",
        "PR_EMAIL_ADDRESS_W": address, "PR_SMTP_ADDRESS_W": address, "PR_RECIPIENT_FLAGS": 1,
        "recipient": {"oneOff": {"name": name or address, "type": "SMTP", "address": address}},
    }


def _importance(mail):
    text = _header(mail, "importance").lower()
    if text in ("high", "low"):
        return 2 if text == "high" else 0
    number = _header(mail, "x-priority")[:1]
    return 2 if number in ("1", "2") else 0 if number in ("4", "5") else 1


def _plain(markup):
    """The words of a marked-up body, a line for each block."""
    class Words(HTMLParser):
        def __init__(self):
            super().__init__()
            self.text, self.hidden = [], 0

        def handle_starttag(self, tag, attrs):
            if tag in ("script", "style", "head"):
                self.hidden += 1
            elif tag in ("p", "br", "div", "li", "tr", "h1", "h2", "h3"):
                self.text.append("\n")

        def handle_endtag(self, tag):
            if tag in ("script", "style", "head"):
                self.hidden = max(0, self.hidden - 1)

        def handle_data(self, data):
            if not self.hidden:
                self.text.append(re.sub(r"\s+", " ", data))

    words = Words()
    words.feed(markup)
    return re.sub(r" *\n *", "\n", "".join(words.text)).strip()
