"""The events of the samples: Ada Quist's half year from October 2026 to March 2027.

Oslo and Halifax Bay (which keeps New York's clocks) change to winter time a week apart, on 25 October and
1 November 2026, and back two weeks apart, on 14 and 28 March 2027.
"""

from sample_people import DOMAIN, ME, crowd, person

OSLO, BAY = "Europe/Oslo", "America/New_York"
ZONES = (
    "BEGIN:VTIMEZONE", "TZID:Europe/Oslo",
    "BEGIN:STANDARD", "DTSTART:19961027T030000", "RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU",
    "TZOFFSETFROM:+0200", "TZOFFSETTO:+0100", "END:STANDARD",
    "BEGIN:DAYLIGHT", "DTSTART:19810329T020000", "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU",
    "TZOFFSETFROM:+0100", "TZOFFSETTO:+0200", "END:DAYLIGHT", "END:VTIMEZONE",
    "BEGIN:VTIMEZONE", "TZID:America/New_York",
    "BEGIN:STANDARD", "DTSTART:20071104T020000", "RRULE:FREQ=YEARLY;BYMONTH=11;BYDAY=1SU",
    "TZOFFSETFROM:-0400", "TZOFFSETTO:-0500", "END:STANDARD",
    "BEGIN:DAYLIGHT", "DTSTART:20070311T020000", "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=2SU",
    "TZOFFSETFROM:-0500", "TZOFFSETTO:-0400", "END:DAYLIGHT", "END:VTIMEZONE",
)


def escaped(text):
    return text.replace("\\", "\\\\").replace(";", "\\;").replace(",", "\\,").replace("\n", "\\n")


def event(uid, summary, start, end, *more, place="", text="", zone=OSLO, host=None, people=(), answer=None):
    """The lines of one event. `people` are names, or (name, answer); `answer` is Ada's own when the host is another."""
    day = len(start) == 8
    lines = ["BEGIN:VEVENT", f"UID:{uid}@{DOMAIN}", "DTSTAMP:20260901T080000Z", f"SUMMARY:{escaped(summary)}"]
    for name, value in (("DTSTART", start), ("DTEND", end)):
        lines.append(f"{name};VALUE=DATE:{value}" if day else f"{name};TZID={zone}:{value}00")
    if place:
        lines.append(f"LOCATION:{escaped(place)}")
    if text:
        lines.append(f"DESCRIPTION:{escaped(text)}")
    if host or people:
        name, mail = person(host) if host else ME
        lines.append(f'ORGANIZER;CN="{name}":mailto:{mail}')
    if host:
        lines.append(_attendee(*ME, answer or "NEEDS-ACTION"))
    for one in people:
        name, said = one if isinstance(one, tuple) else (one, "ACCEPTED")
        lines.append(_attendee(*person(name), said))
    return lines + list(more) + ["END:VEVENT"]


def _attendee(name, mail, said, extra=""):
    return f'ATTENDEE;CN="{name}";PARTSTAT={said}{extra}:mailto:{mail}'


def instance(uid, original, summary, start, end, *more, zone=OSLO, **rest):
    """An instance of a series that differs from the rest."""
    return event(uid, summary, start, end, f"RECURRENCE-ID;TZID={zone}:{original}00", *more, zone=zone, **rest)


LONG_TEXT = "\n".join(f"{n:04} The ice at this depth is {n % 7 + 1} winters old; ρ = 0.{n % 9 + 1} g/cm³." for n in range(900))
SCRIPTS = (
    ("Übung für den Ernstfall: Größe, Ærø, façade", "Salle des fêtes, Łódź"),
    ("Συνάντηση για τον χάρτη", "Αίθουσα Β"),
    ("Совещание по течениям", "Переговорная «Север»"),
    ("試作品の打ち合わせ 𠮷野屋 🍜", "会議室三"),
    ("اجتماع التحرير", "قاعة النخيل"),
    ("פגישת איור 🎨", "חדר 5"),
    ("अनुवाद की समीक्षा", "कक्ष दो"),
    ("𝒮𝓊𝓇𝓇𝑜𝑔𝒶𝓉𝑒 pairs 🧊🏔️👩‍🔬", "🗻"),
)


def work():
    yield event("standup", "Stand-up", "20261001T0900", "20261001T0915",
                "RRULE:FREQ=DAILY;BYDAY=MO,TU,WE,TH,FR;UNTIL=20270331T070000Z", "EXDATE;TZID=Europe/Oslo:20261224T090000",
                "EXDATE;TZID=Europe/Oslo:20261225T090000", "EXDATE;TZID=Europe/Oslo:20270101T090000",
                place="Corridor", people=("Bo", "Clara", "Dag"))
    weekly = {"people": ("Bo", ("Clara", "TENTATIVE"), "Farid")}
    yield event("planning", "Planning", "20261005T1000", "20261005T1100", "RRULE:FREQ=WEEKLY;BYDAY=MO;WKST=MO",
                "EXDATE;TZID=Europe/Oslo:20261228T100000", 'X-DT-PROPERTY;NAME="PS_PUBLIC_STRINGS:TalvoKey:PT_UNICODE":planning-1',
                place="Room 4", text="Bring the figures.", **weekly)
    yield instance("planning", "20261116T1000", "Planning, long", "20261116T1300", "20261116T1530", place="Hall", **weekly,
                   text="Bring the figures of the whole year.\nSoup is served.")
    yield instance("planning", "20261207T1000", "Planning", "20261208T1000", "20261208T1100", place="Room 4",
                   text="Bring the figures.", **weekly)
    yield instance("planning", "20270118T1000", "Planning 🧊", "20270118T1000", "20270118T1100", place="Room 4",
                   text="Bring the figures.", people=("Bo", "Clara", "Farid", "Ines"))
    yield event("lab", "Cold laboratory", "20261005T0700", "20261005T0830",
                "RRULE:FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,WE,FR;COUNT=36;WKST=MO", place="Cellar")
    yield event("bay-call", "Call with Halifax Bay", "20261006T1000", "20261006T1045",
                "RRULE:FREQ=WEEKLY;BYDAY=TU", zone=BAY, host="Grace", answer="ACCEPTED", people=("Henry", "Ines"),
                place="Line 2", text="Ten o'clock at the bay, whatever the clocks in Oslo show.")
    yield instance("bay-call", "20261124T1000", "Call with Halifax Bay", "20261124T1000", "20261124T1045", "STATUS:CANCELLED",
                   zone=BAY, host="Grace", answer="ACCEPTED", people=("Henry", "Ines"), place="Line 2",
                   text="Ten o'clock at the bay, whatever the clocks in Oslo show.")
    yield instance("bay-call", "20270112T1000", "Call with Halifax Bay (late)", "20270112T1500", "20270112T1545",
                   zone=BAY, host="Grace", answer="TENTATIVE", people=("Henry", "Ines"), place="Line 2",
                   text="Ten o'clock at the bay, whatever the clocks in Oslo show.")
    yield event("watch", "Ice watch", "20261002T2200", "20261003T0600", "RRULE:FREQ=DAILY;INTERVAL=9;UNTIL=20270320T210000Z",
                "X-MICROSOFT-CDO-BUSYSTATUS:OOF", place="Tower")
    yield event("expenses", "Expenses are due", "20261015T1600", "20261015T1630", "RRULE:FREQ=MONTHLY;BYMONTHDAY=15",
                "TRANSP:TRANSPARENT")
    yield event("close", "Close the month", "20261031T1500", "20261031T1700", "RRULE:FREQ=MONTHLY;BYMONTHDAY=-1;COUNT=6",
                people=("Farid",))
    yield event("board", "Board dinner", "20261013T1830", "20261013T2130", "RRULE:FREQ=MONTHLY;BYDAY=2TU",
                host="Clara", answer="TENTATIVE", place="Restaurant Isfjell")
    yield event("payroll", "Payroll", "20261001T0800", "20261001T0900",
                "RRULE:FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=1", host="Farid", answer="DECLINED")
    yield event("demo", "Show and tell", "20261030T1400", "20261030T1500", "RRULE:FREQ=MONTHLY;BYDAY=-1FR",
                place="Hall", people=("Bo", "Clara", "Dag", "Ines"))
    yield event("inventory", "Inventory", "20261010T1000", "20261010T1400", "RRULE:FREQ=MONTHLY;INTERVAL=3;BYDAY=SA,SU;BYSETPOS=3")
    yield event("quarter", "Quarter review", "20261012T1300", "20261012T1500",
                "RRULE:FREQ=YEARLY;BYMONTH=1,4,7,10;BYMONTHDAY=12", people=("Clara", "Farid"))
    yield event("survey", "Survey conference", "20261109T0900", "20261109T1700",
                "RRULE:FREQ=YEARLY;INTERVAL=2;BYMONTH=11;BYDAY=2MO", place="Tromsø")
    crowd_lines = [_attendee(name, mail, ("ACCEPTED", "TENTATIVE", "DECLINED", "NEEDS-ACTION")[n % 4],
                             ";ROLE=OPT-PARTICIPANT" if n % 10 == 9 else "") for n, (name, mail) in enumerate(crowd(200))]
    yield event("all-hands", "All hands", "20261120T1400", "20261120T1530", f'ORGANIZER;CN="{ME[0]}":mailto:{ME[1]}',
                *crowd_lines, place="Great hall", text="Everybody, please.")
    yield event("report", "Write the yearly report", "20261118T0930", "20261118T1600", text=LONG_TEXT, place="Library")
    yield event("interview", "Interview: technician", "20261123T1300", "20261123T1400",
                "X-ALT-DESC;FMTTYPE=text/html:<html><body><h1>Interview</h1><p>Bring the <i>letter</i> &amp; the list.</p></body></html>",
                text="Interview\nBring the letter & the list.", people=("Ewa", ("Dag", "NEEDS-ACTION")))
    yield event("travel", "Visit at Halifax Bay", "20270111", "20270116", "X-MICROSOFT-CDO-BUSYSTATUS:OOF")
    yield event("flight", "Flight to the bay", "20270110T0930", "20270110T1900", "X-MICROSOFT-CDO-BUSYSTATUS:OOF",
                place="OSL to YHZ", text="Seat 14A")
    yield event("withdrawn", "Budget, third round", "20261126T1100", "20261126T1200", "STATUS:CANCELLED", host="Farid",
                answer="ACCEPTED", place="Room 2")
    for number, (summary, place) in enumerate(SCRIPTS):
        yield event(f"script-{number}", summary, f"202611{10 + number:02}T1500", f"202611{10 + number:02}T1545", place=place,
                    text=f"{summary}\n{place}")


def private():
    yield event("birthday-bo", "Birthday: Bo", "20261203", "20261204", "RRULE:FREQ=YEARLY", "TRANSP:TRANSPARENT")
    yield event("birthday-mother", "Birthday: mother", "20270214", "20270215", "RRULE:FREQ=YEARLY;COUNT=10", "TRANSP:TRANSPARENT")
    yield event("choir", "Choir", "20261008T1900", "20261008T2100", "RRULE:FREQ=WEEKLY;UNTIL=20270325T180000Z",
                "EXDATE;VALUE=DATE:20261224", "EXDATE;VALUE=DATE:20261231", place="St. Olav's")
    yield event("skating", "Skating", "20261101T1100", "20261101T1230", "RRULE:FREQ=WEEKLY;BYDAY=SA,SU;WKST=MO")
    yield event("dentist", "Dentist", "20261027T0815", "20261027T0900", "CLASS:PRIVATE", "BEGIN:VALARM", "ACTION:DISPLAY",
                "TRIGGER:-PT60M", "END:VALARM", place="Storgata 11")
    yield event("concert", "Concert in the harbour", "20261204T1930", "20261204T2230", "PRIORITY:1", place="Harbour")
    yield event("christmas", "Christmas at the cabin", "20261223", "20261228", "X-MICROSOFT-CDO-BUSYSTATUS:OOF")
    yield event("new-year", "Fireworks", "20261231T2300", "20270101T0100")
    yield event("tablets", "Vitamin D", "20261015T0800", "20261015T0805", "RRULE:FREQ=DAILY;COUNT=120", "TRANSP:TRANSPARENT")
    yield event("bins", "Bins out", "20261001", "20261002", "RRULE:FREQ=WEEKLY;INTERVAL=2", "TRANSP:TRANSPARENT")
    yield event("skiing", "Skiing week", "20270220", "20270228")
    for week, (what, place) in enumerate((("Lunch with Ines", "Kaia"), ("Parents' evening", "School"), ("Bicycle repair", "Shop"),
                                          ("Museum", "Bygdøy"), ("Haircut", "Majorstuen"), ("Book club", "At home"))):
        yield event(f"odd-{week}", what, f"2026{10 + week // 4:02}{5 + 7 * (week % 4):02}T1730",
                    f"2026{10 + week // 4:02}{5 + 7 * (week % 4):02}T1830", place=place)


CALENDARS = {"work": work, "private": private}
