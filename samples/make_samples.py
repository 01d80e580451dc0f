#!/usr/bin/python3
"""Writes the samples: calendars, contacts with photos, an address book, mail. Run it after a change here.

Everybody in them is made up, and every run writes the same files.
"""

import base64
import os
import shutil
import sys

sys.dont_write_bytecode = True

import sample_events  # noqa: E402  no compiled files beside the samples
import sample_mail  # noqa: E402
from sample_people import DOMAIN, ME, PEOPLE, address, photo  # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))


def fold(line):
    """A content line in pieces of at most 75 bytes, none of them inside a character."""
    pieces, current = [], b""
    for character in line:
        data = character.encode("utf-8")
        if len(current) + len(data) > (75 if not pieces else 74):
            pieces.append(current.decode("utf-8"))
            current = b""
        current += data
    pieces.append(current.decode("utf-8"))
    return "\r\n ".join(pieces)


def write(top, name, text):
    path = os.path.join(top, *name.split("/"))
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8", newline="") as file:
        file.write(text)


def content_lines(lines):
    return "".join(fold(line) + "\r\n" for line in lines)


def escaped(text):
    return text.replace("\\", "\\\\").replace(";", "\\;").replace(",", "\\,").replace("\n", "\\n")


def card(number, entry, with_photo):
    name, given, family, place, title, department, hue = entry
    lines = ["BEGIN:VCARD", "VERSION:3.0", f"N:{family};{given};;;", f"FN:{name}",
             f"ORG:{'Nordlys Ice Survey' if place != 'Partners' else 'Partners & Friends'};{department}", f"TITLE:{title}",
             f"EMAIL;TYPE=INTERNET:{address(name)}", f"TEL;TYPE=WORK,VOICE:+47 555 01 {number:02}"]
    if with_photo:
        lines += [f"TEL;TYPE=CELL:+47 555 02 {number:02}", f"IMPP:sip:{address(name)}",
                  f"ADR;TYPE=WORK:;;Isbryggen {number};Oslo;;0150;Norway", "URL:https://" + DOMAIN,
                  "PHOTO;ENCODING=b;TYPE=PNG:" + base64.b64encode(photo(hue)).decode()]
        if number % 3 == 0:
            lines += [f"TEL;TYPE=HOME:+47 555 03 {number:02}", f"EMAIL;TYPE=INTERNET:{given.lower()}{number}@home.example",
                      f"NOTE:{escaped('Met at the spring expedition; likes tea, not coffee.')}"]
    else:
        lines += [f"X-ACCOUNT:{address(name).partition('@')[0]}",
                  f"X-NATIVE-ADDRESS:/o=Nordlys/ou=First/cn=Recipients/cn={address(name).partition('@')[0].replace('.', '')}"]
    return lines + ["END:VCARD"]


def main(top=HERE):
    for name in ("calendar", "contacts", "address-book", "mail"):
        shutil.rmtree(os.path.join(top, name), ignore_errors=True)
    for name, events in sample_events.CALENDARS.items():
        write(top, f"calendar/{name}.ics", content_lines(
            ["BEGIN:VCALENDAR", "VERSION:2.0", f"PRODID:-//{DOMAIN}//samples//EN", f"X-WR-CALNAME:{name}",
             "X-WR-TIMEZONE:Europe/Oslo", *sample_events.ZONES, *[line for event in events() for line in event],
             "END:VCALENDAR"]))
    write(top, "contacts/contacts.vcf", content_lines(
        [line for number, entry in enumerate(PEOPLE, 1) for line in card(number, entry, True)]))
    places = {}
    for number, entry in enumerate(PEOPLE, 1):
        places.setdefault(entry[3], []).append(card(number, entry, False))
    for place, cards in places.items():
        write(top, f"address-book/{place}/people.vcf", content_lines([line for lines in cards for line in lines]))
    write(top, "address-book/everybody.vcf", content_lines(
        ["BEGIN:VCARD", "VERSION:3.0", "KIND:group", "FN:Everybody at Nordlys", f"EMAIL:everybody@{DOMAIN}", "END:VCARD"]))
    for name, text in sample_mail.mails(ME):
        write(top, f"mail/{name}.eml", text)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
