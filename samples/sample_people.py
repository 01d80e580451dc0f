"""The people of the samples, all made up, with what is known of each; and their little photos."""

import struct
import zlib

DOMAIN = "nordlys.example"
ME = ("Ada Quist", "ada.quist@" + DOMAIN)

# name, given, family, place in the address book, title, department, hue of the photo
PEOPLE = (
    ("Bo Ferrand", "Bo", "Ferrand", "Oslo/Research", "Glaciologist", "Research", 0),
    ("Clara Montelius", "Clara", "Montelius", "Oslo/Research", "Head of research", "Research", 40),
    ("Dag Halvorsrud", "Dag", "Halvorsrud", "Oslo/Workshop", "Instrument maker", "Workshop", 80),
    ("Ewa Sobczyk", "Ewa", "Sobczyk", "Oslo/Office", "Office manager", "Administration", 120),
    ("Farid Benali", "Farid", "Benali", "Oslo/Office", "Controller", "Finance", 160),
    ("Grace Okonjo-Wills", "Grace", "Okonjo-Wills", "Halifax Bay", "Station lead", "Field work", 200),
    ("Henry Tibbets", "Henry", "Tibbets", "Halifax Bay", "Pilot", "Field work", 240),
    ("Ines Caldeira", "Ines", "Caldeira", "Halifax Bay", "Data engineer", "Data", 280),
    ("Ελένη Παππά", "Ελένη", "Παππά", "Partners", "Cartographer", "Partners", 320),
    ("Игорь Левашов", "Игорь", "Левашов", "Partners", "Oceanographer", "Partners", 20),
    ("山田 花子", "花子", "山田", "Partners", "Engineer", "Partners", 60),
    ("سلمى الحداد", "سلمى", "الحداد", "Partners", "Editor", "Partners", 100),
    ("נועה ברק", "נועה", "ברק", "Partners", "Illustrator", "Partners", 140),
    ("प्रिया नायर", "प्रिया", "नायर", "Partners", "Translator", "Partners", 180),
)
_LATIN = {"Ελένη Παππά": "eleni.pappa", "Игорь Левашов": "igor.levashov", "山田 花子": "hanako.yamada",
          "سلمى الحداد": "salma.alhaddad", "נועה ברק": "noa.barak", "प्रिया नायर": "priya.nair"}


def address(name):
    local = _LATIN.get(name) or name.lower().replace(" ", ".")
    return f"{local}@{DOMAIN if name not in _LATIN else 'partners.example'}"


def person(name):
    """(name, address) of a given name or a whole one."""
    for full, given, *_ in PEOPLE:
        if name in (full, given):
            return full, address(full)
    raise KeyError(name)


def crowd(count):
    """So many further colleagues, for a meeting of everybody."""
    given = ("Alma", "Birk", "Cora", "Dina", "Edvin", "Frida", "Gustav", "Hedda", "Ivar", "Jonas", "Kaja", "Leo", "Mina",
             "Nils", "Oda", "Pia", "Rune", "Sol", "Tuva", "Vera")
    family = ("Aasen", "Bratlie", "Dahlin", "Ekre", "Fossum", "Grytten", "Hovland", "Isdal", "Kvamme", "Lunder")
    for number in range(count):
        name = f"{given[number % len(given)]} {family[number // len(given) % len(family)]}"
        yield name, f"{name.lower().replace(' ', '.')}@{DOMAIN}"


def photo(hue, size=48):
    """A drawn face on a coloured ground as PNG bytes."""
    ground, skin, hair = _colour(hue, 0.35, 0.95), _colour(28, 0.45, 0.85), _colour(hue + 180, 0.6, 0.45)
    rows = []
    for y in range(size):
        row = bytearray(b"\0")
        for x in range(size):
            row += bytes(_pixel((x - size / 2) / size, (y - size / 2) / size, ground, skin, hair))
        rows.append(bytes(row))
    header = struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + _chunk(b"IHDR", header) + _chunk(b"IDAT", zlib.compress(b"".join(rows), 9)) + _chunk(b"IEND", b"")


def _pixel(x, y, ground, skin, hair):
    if (abs(x) - 0.1) ** 2 + (y + 0.02) ** 2 < 0.0012 or (abs(y - 0.13) < 0.015 and abs(x) < 0.09):
        return hair
    if x * x + y * y < 0.075:
        return hair if y < -0.13 else skin
    if x * x + (y - 0.55) ** 2 < 0.12:
        return hair
    return ground


def _chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def _colour(hue, saturation, value):
    """Hue in degrees to three bytes."""
    def channel(shift):
        k = (shift + hue % 360 / 60) % 6
        return int(255 * (value - value * saturation * max(0, min(k, 4 - k, 1))))
    return channel(5), channel(3), channel(1)
