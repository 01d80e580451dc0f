"""The mails of the samples: an inbox and what was sent."""

import base64
from email.header import Header
from email.utils import formataddr

from sample_people import person, photo

# folder/name, from, to, cc, date, subject, plain text, marked-up text or "", attached bytes or b""
_MAILS = (
    ("inbox/drill-core", "Bo", ("me",), (), "Mon, 02 Nov 2026 08:12:31 +0100", "Drill core 14",
     "The core is in the freezer.\nLayer at 31.4 m is ash, not dust.\n\nBo", "", b""),
    ("inbox/budget", "Farid", ("me",), ("Clara",), "Tue, 03 Nov 2026 16:40:02 +0100", "Budget 2027, second round",
     "Please look at rows 12 to 19 before Thursday.", "<html><body><p>Please look at rows <b>12 to 19</b> before "
     "Thursday.</p></body></html>", b""),
    ("inbox/flight", "Henry", ("me", "Grace"), (), "Wed, 11 Nov 2026 07:05:44 -0400", "Wind on Friday",
     "Forty knots. We fly Saturday or not at all.", "", b""),
    ("inbox/chart", "Ελένη Παππά", ("me",), (), "Thu, 12 Nov 2026 13:22:10 +0200", "Χάρτης του φιόρδ",
     "Σας στέλνω τον νέο χάρτη. 🗺️", "", b""),
    ("inbox/currents", "Игорь Левашов", ("me", "Bo"), (), "Fri, 13 Nov 2026 18:01:59 +0300", "Данные о течениях",
     "Таблица готова, смотрите вложение.", "", b"depth;speed\r\n10;0.4\r\n20;0.3\r\n"),
    ("inbox/prototype", "山田 花子", ("me",), ("Dag",), "Mon, 16 Nov 2026 17:45:00 +0900", "試作品について",
     "来週、試作品を二台送ります。𠮷野さんにもよろしく。", "", b""),
    ("inbox/portrait", "נועה ברק", ("me",), (), "Tue, 17 Nov 2026 10:30:00 +0200", "איור חדש", "מצורף האיור.", "", "photo"),
    ("inbox/urgent", "Ewa", ("me",), (), "Thu, 19 Nov 2026 09:00:00 +0100", "Fire drill at eleven",
     "Meet at the east gate.", "", b""),
    ("sent/re-drill-core", "me", ("Bo",), (), "Mon, 02 Nov 2026 09:30:00 +0100", "Re: Drill core 14",
     "Ash it is. Show me at eleven?", "", b""),
    ("sent/invitation", "me", ("Grace", "Henry", "Ines"), ("Clara",), "Wed, 04 Nov 2026 12:00:00 +0100", "Visit in January",
     "We plan the visit for the second week of January.\nTell me what you need.", "", b""),
    ("sent/review", "me", ("سلمى الحداد", "प्रिया नायर"), (), "Tue, 10 Nov 2026 15:20:00 +0100", "Report: texts for review",
     "شكراً — धन्यवाद!\nThe texts are attached.", "", b"Chapter 1\r\nOn ice.\r\n"),
    ("sent/thanks", "me", ("Farid",), (), "Thu, 05 Nov 2026 18:02:00 +0100", "Re: Budget 2027, second round",
     "Done. Row 17 is too low.", "", b""),
)


def _address(name, me):
    full, mail = me if name == "me" else person(name)
    return formataddr((str(Header(full, "utf-8")) if not full.isascii() else full, mail))


def _part(kind, text):
    data = base64.encodebytes(text.replace("\n", "\r\n").encode("utf-8")).decode().replace("\n", "\r\n")
    return f"Content-Type: text/{kind}; charset=utf-8\r\nContent-Transfer-Encoding: base64\r\n\r\n{data}"


def mails(me):
    """(folder/name, text) of every mail."""
    for name, sender, to, cc, date, subject, plain, markup, attached in _MAILS:
        lines = [f"From: {_address(sender, me)}", f"To: {', '.join(_address(one, me) for one in to)}"]
        if cc:
            lines.append(f"Cc: {', '.join(_address(one, me) for one in cc)}")
        coded = Header(subject, "utf-8", maxlinelen=70).encode(linesep="\r\n") if not subject.isascii() else subject
        lines += [f"Subject: {coded}", f"Date: {date}", f"Message-ID: <{name.replace('/', '.')}@nordlys.example>",
                  "MIME-Version: 1.0"]
        if name == "inbox/urgent":
            lines += ["Importance: high", "Status: O"]
        body = _part("plain", plain)
        if markup:
            body = ('Content-Type: multipart/alternative; boundary="alt"\r\n\r\n--alt\r\n' + body + "--alt\r\n"
                    + _part("html", markup) + "--alt--\r\n")
        if attached:
            data, kind, file = (photo(140), "image/png", "portrait.png") if attached == "photo" else (
                attached, "text/plain", "table.txt")
            body = ('Content-Type: multipart/mixed; boundary="mix"\r\n\r\n--mix\r\n' + body + "--mix\r\n"
                    f'Content-Type: {kind}\r\nContent-Disposition: attachment; filename="{file}"\r\n'
                    "Content-Transfer-Encoding: base64\r\n\r\n"
                    + base64.encodebytes(data).decode().replace("\n", "\r\n") + "--mix--\r\n")
        yield name, "\r\n".join(lines) + "\r\n" + body
