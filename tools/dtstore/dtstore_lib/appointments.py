"""Appointment messages of a store, made from plain events, as a mail client would keep them."""

import html
from datetime import timedelta

from . import blobs, describe, values, zones
from .pattern import Changed, sentence

CLASS = "IPM.Appointment"
EXCEPTION_CLASS = "IPM.OLE.CLASS.{00061055-0000-0000-C000-000000000046}"
RECURRENCE_TYPE = {"daily": 1, "workdays": 1, "weekly": 2, "monthly": 3, "yearly": 4}
MEETING, RECEIVED, CANCELLED = 1, 2, 4
TRACK = {"TENTATIVE": 2, "ACCEPTED": 3, "DECLINED": 4, "NEEDS-ACTION": 5}
RESPONSE = {**TRACK, "NEEDS-ACTION": 5}
NEVER = "4500-08-31T23:59:00Z"
SENDABLE, ORGANIZER = 1, 2
LONG_BODY = 4000  # characters; a longer body goes into a file of its own


class Owner:
    """Who the mailbox belongs to; decides what is a received meeting."""

    def __init__(self, name, email):
        self.name, self.email = name, email

    def is_me(self, person):
        return person is not None and person.email.casefold() == self.email.casefold()


def utc_text(moment):
    """A naive UTC time as it stands in a document."""
    text = moment.isoformat(timespec="microseconds" if moment.microsecond else "seconds")
    return text + "Z"


class Appointments:
    """Makes messages. `keep_file(data, ending)` stores a large value and gives its name."""

    def __init__(self, owner, keep_file, readable=False):
        self.owner, self.keep_file, self.readable = owner, keep_file, readable

    def single(self, event, original=None):
        """A message without recurrence. `original` is the date that it replaces in a series, if any."""
        properties = self._common(event)
        start, end = (zones.to_utc(event.zone, moment) for moment in (event.start, event.end))
        properties.update({
            "PidLidAppointmentStartWhole": utc_text(start),
            "PidLidAppointmentEndWhole": utc_text(end),
            "PidLidAppointmentDuration": int((end - start).total_seconds() // 60),
            "PidLidClipStart": utc_text(start),
            "PidLidClipEnd": utc_text(end),
            "PidLidRecurring": False,
            **self._object_id(event.uid, original),
        })
        return self._message(CLASS, properties, event)

    def series(self, event, pattern, rule, changed):
        """A recurring message. `changed` holds (Changed, its event) of the instances that differ."""
        pattern.changed = [one for one, _ in changed]
        properties = self._common(event)
        first = pattern.start.toordinal() - event.start.date().toordinal()
        start = zones.to_utc(event.zone, event.start + timedelta(days=first))
        end = zones.to_utc(event.zone, event.end + timedelta(days=first))
        properties.update({
            "PidLidAppointmentStartWhole": utc_text(start),
            "PidLidAppointmentEndWhole": utc_text(end),
            "PidLidAppointmentDuration": pattern.end_minute - pattern.start_minute,
            **self._clip(pattern, rule, start),
            "PidLidRecurring": True,
            "PidLidIsRecurring": True,
            "PidLidRecurrenceType": RECURRENCE_TYPE[pattern.frequency],
            "PidLidRecurrencePattern": sentence(pattern),
            "PidLidAppointmentRecur": self._blob("recurrence", describe.describe_pattern(pattern),
                                                 blobs.encode(pattern)),
            "PidLidTimeZoneStruct": self._blob("timeZone", rule.description(), rule.to_bytes()),
            "PidLidTimeZoneDescription": zones.name_of(event.zone),
            "PidLidAppointmentTimeZoneDefinitionRecur": zones.definition_bytes(
                rule, zones.name_of(event.zone), pattern.start.year).hex().upper(),
            **self._object_id(event.uid, None),
        })
        message = self._message(CLASS, properties, event)
        attachments = [self._exception(one, other, event, pattern) for one, other in sorted(
            changed, key=lambda pair: (pair[0].start, pair[0].original))]
        if attachments:
            message["attachments"] = attachments
        return message

    def changed_instance(self, master, original, other):
        """The Changed record of an instance that `other` describes; both in the zone of the series."""
        one = Changed(original=original, start=other.start, end=other.end)
        if other.summary != master.summary:
            one.subject = other.summary
        if other.location != master.location:
            one.location = other.location
        if other.busy != master.busy:
            one.busy_status = other.busy
        if other.all_day != master.all_day:
            one.all_day = other.all_day
        if other.reminder != master.reminder:
            one.reminder = other.reminder is not None
            if other.reminder is not None:
                one.reminder_minutes = other.reminder
        one.body = self._bodies_differ(master, other)
        state = self.state_of(other)
        if state != self.state_of(master):
            one.meeting_type = state
        return one

    def state_of(self, event):
        """PidLidAppointmentStateFlags of an event."""
        meeting = bool(event.attendees) or event.organizer is not None
        state = MEETING if meeting else 0
        if meeting and event.organizer is not None and not self.owner.is_me(event.organizer):
            state |= RECEIVED
        if event.status == "CANCELLED":
            state |= CANCELLED
        return state

    @staticmethod
    def _bodies_differ(master, other):
        return other.description != master.description or other.html != master.html

    def _blob(self, kind, description, data):
        return {kind: description} if self.readable else data.hex().upper()

    def _text(self, text, ending):
        if len(text) > LONG_BODY:
            return {"file": self.keep_file(text.encode("utf-8"), ending)}
        return text

    def bodies(self, description, markup):
        """Both forms of a body; markup is made of the text when there is none.

        Lines end as mail clients end them. Markup holds nothing but ASCII, the rest as references, so that
        it stays whole when it is read as 8-bit text of whatever code page.
        """
        text = description.replace("\r\n", "\n").replace("\n", "\r\n")
        if not markup:
            lines = html.escape(text, quote=False).replace("\r\n", "<br>\r\n")
            markup = f"<html><body><p>{lines}</p></body></html>" if text else "<html><body></body></html>"
        markup = markup.encode("ascii", "xmlcharrefreplace").decode("ascii")
        return {"PR_BODY_W": self._text(text, ".txt"), "PR_BODY_HTML_W": self._text(markup, ".html"),
                "PR_INTERNET_CPID": 65001}

    def _common(self, event):
        properties = {"PR_SUBJECT_W": event.summary, **self.bodies(event.description, event.html)}
        state = self.state_of(event)
        properties.update({
            "PR_IMPORTANCE": event.importance,
            "PR_SENSITIVITY": event.sensitivity,
            "PidLidLocation": event.location,
            "PidLidAppointmentStateFlags": state,
            "PidLidAppointmentSubType": event.all_day,
            "PidLidResponseStatus": self._response(event, state),
            "PidLidBusyStatus": event.busy,
            "PidLidAppointmentSequence": event.sequence,
            "PidLidReminderSet": event.reminder is not None,
        })
        if event.reminder is not None:
            properties["PidLidReminderDelta"] = event.reminder
        for name, moment in (("PR_CREATION_TIME", event.created), ("PR_LAST_MODIFICATION_TIME", event.modified)):
            if moment is not None:
                properties[name] = utc_text(moment)
        host = event.organizer
        if host is None and not event.attendees:
            host_name, host_email = self.owner.name, self.owner.email
        else:
            host_name, host_email = (host.name, host.email) if host else (self.owner.name, self.owner.email)
        properties.update({
            "PR_SENT_REPRESENTING_NAME_W": host_name,
            "PR_SENT_REPRESENTING_ADDRTYPE_W": "SMTP",
            "PR_SENT_REPRESENTING_EMAIL_ADDRESS_W": host_email,
            "PR_SENT_REPRESENTING_ENTRYID": {"oneOff": {"name": host_name, "type": "SMTP", "address": host_email}},
        })
        _add_named(properties, event.named)
        return properties

    def _response(self, event, state):
        if not state & MEETING:
            return 0
        if not state & RECEIVED:
            return 1
        for person in event.attendees:
            if self.owner.is_me(person):
                return RESPONSE.get(person.part_stat, 0)
        return 5

    @staticmethod
    def _clip(pattern, rule, start):
        begin = min([start] + [rule.to_utc(one.start) for one in pattern.changed])
        begin = begin.replace(hour=0, minute=0, second=0, microsecond=0)
        end = blobs.clip_end(pattern)
        if end is not None:
            end = rule.to_utc(end)
            midnight = end.replace(hour=0, minute=0, second=0, microsecond=0)
            end = end if end == midnight else midnight + timedelta(days=1)
        return {"PidLidClipStart": utc_text(begin), "PidLidClipEnd": utc_text(end) if end else NEVER}

    @staticmethod
    def _object_id(uid, original):
        clean = describe.global_object_id_bytes(uid)
        own = clean
        if original is not None:
            year, month, day = original.year, original.month, original.day
            own = clean[:16] + bytes((year >> 8, year & 0xFF, month, day)) + clean[20:]
        return {"PidLidGlobalObjectId": own.hex().upper(), "PidLidCleanGlobalObjectId": clean.hex().upper()}

    def _message(self, message_class, properties, event):
        message = {"class": message_class, "properties": properties}
        recipients = self.recipients(event)
        if recipients:
            message["recipients"] = recipients
        return message

    def recipients(self, event):
        """The host first, marked as such, then the attendees in their order."""
        rows = []
        host = event.organizer
        if host is None and event.attendees:
            host = type(event.attendees[0])(self.owner.name, self.owner.email)
        if host is not None:
            rows.append(_row(host.name, host.email, 1, SENDABLE | ORGANIZER, 1))
        for person in event.attendees:
            if host is not None and person.email.casefold() == host.email.casefold():
                continue
            kind = 3 if person.kind in ("ROOM", "RESOURCE") else 1 if person.role in ("REQ-PARTICIPANT", "CHAIR") else 2
            rows.append(_row(person.name, person.email, kind, SENDABLE, TRACK.get(person.part_stat, 0)))
        return rows

    def _exception(self, one, other, master, pattern):
        """The attachment that keeps a changed instance: what it changes, its times, its people."""
        start, end = (zones.to_utc(other.zone, moment) for moment in (other.start, other.end))
        properties = {"PR_SUBJECT_W": other.summary}
        if one.body:
            properties.update(self.bodies(other.description, other.html))
        properties.update({
            "PidLidAppointmentStartWhole": utc_text(start),
            "PidLidAppointmentEndWhole": utc_text(end),
            "PidLidAppointmentDuration": int((end - start).total_seconds() // 60),
            "PidLidExceptionReplaceTime": utc_text(zones.to_utc(master.zone, one.original)),
            "PidLidLocation": other.location,
            "PidLidAppointmentStateFlags": self.state_of(other),
            "PidLidAppointmentSubType": other.all_day,
            "PidLidBusyStatus": other.busy,
            "PidLidResponseStatus": self._response(other, self.state_of(other)),
            "PidLidIsException": True,
            "PidLidRecurring": False,
        })
        _add_named(properties, other.named)
        message = {"class": EXCEPTION_CLASS, "properties": properties}
        recipients = self.recipients(other)
        if recipients:
            message["recipients"] = recipients
        return {
            "properties": {
                "PR_ATTACH_METHOD": 5,
                "PR_DISPLAY_NAME_W": "Untitled",
                "PR_RENDERING_POSITION": -1,
                "PR_ATTACHMENT_FLAGS": 2,
                "PR_ATTACHMENT_HIDDEN": True,
                "PR_ATTACHMENT_LINKID": 0,
                "PR_EXCEPTION_STARTTIME": utc_text(one.start),
                "PR_EXCEPTION_ENDTIME": utc_text(one.end),
            },
            "message": message,
        }


def _add_named(properties, named):
    """Properties that a file names itself; they go before what stands under another name of theirs."""
    for key, value in named:
        identity = values.identity_of(key)[0]
        for other in [other for other in properties if values.identity_of(other)[0] == identity]:
            del properties[other]
        properties[key] = value


def _row(name, email, kind, flags, track):
    return {
        "PR_RECIPIENT_TYPE": kind,
        "PR_DISPLAY_NAME_W": name,
        "PR_ADDRTYPE_W": "SMTP",
        "PR_EMAIL_ADDRESS_W": email,
        "PR_SMTP_ADDRESS_W": email,
        "PR_RECIPIENT_FLAGS": flags,
        "PR_RECIPIENT_TRACKSTATUS": track,
        "recipient": {"oneOff": {"name": name, "type": "SMTP", "address": email}},
    }
