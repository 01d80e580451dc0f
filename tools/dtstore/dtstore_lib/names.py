"""Names of properties, property sets and types, as they may stand in a store's document.

Source: the public property lists ([MS-OXPROPS], [MS-OXOCAL], [MS-OXOCNTC]). docs/mapistore.md shows
the table of known named properties; a test holds the two against each other.
"""

import re

TYPES = {
    "PT_UNSPECIFIED": 0x0000,
    "PT_NULL": 0x0001,
    "PT_I2": 0x0002,
    "PT_LONG": 0x0003,
    "PT_R4": 0x0004,
    "PT_DOUBLE": 0x0005,
    "PT_CURRENCY": 0x0006,
    "PT_APPTIME": 0x0007,
    "PT_ERROR": 0x000A,
    "PT_BOOLEAN": 0x000B,
    "PT_OBJECT": 0x000D,
    "PT_I8": 0x0014,
    "PT_STRING8": 0x001E,
    "PT_UNICODE": 0x001F,
    "PT_SYSTIME": 0x0040,
    "PT_CLSID": 0x0048,
    "PT_BINARY": 0x0102,
}
MV_FLAG = 0x1000
for _name, _value in list(TYPES.items()):
    if _name in (
        "PT_I2", "PT_LONG", "PT_R4", "PT_DOUBLE", "PT_CURRENCY", "PT_APPTIME", "PT_I8",
        "PT_STRING8", "PT_UNICODE", "PT_SYSTIME", "PT_CLSID", "PT_BINARY",
    ):
        TYPES["PT_MV_" + _name[3:]] = _value | MV_FLAG
TYPE_NAMES = {value: name for name, value in TYPES.items()}

# Types a stored property can have; the others exist only while a property is asked for.
STORED_TYPES = frozenset(
    value for name, value in TYPES.items()
    if name not in ("PT_UNSPECIFIED", "PT_NULL", "PT_ERROR", "PT_OBJECT")
)

SETS = {
    "PS_MAPI": "{00020328-0000-0000-C000-000000000046}",
    "PS_PUBLIC_STRINGS": "{00020329-0000-0000-C000-000000000046}",
    "PS_INTERNET_HEADERS": "{00020386-0000-0000-C000-000000000046}",
    "PSETID_Appointment": "{00062002-0000-0000-C000-000000000046}",
    "PSETID_Task": "{00062003-0000-0000-C000-000000000046}",
    "PSETID_Address": "{00062004-0000-0000-C000-000000000046}",
    "PSETID_Common": "{00062008-0000-0000-C000-000000000046}",
    "PSETID_Meeting": "{6ED8DA90-450B-101B-98DA-00AA003F1305}",
}
SET_NAMES = {guid: name for name, guid in SETS.items()}

_A, _C, _M, _P = "PSETID_Appointment", "PSETID_Common", "PSETID_Meeting", "PSETID_Address"
KNOWN = {
    "PidLidSendMeetingAsIcal": (_A, 0x8200, "PT_BOOLEAN"),
    "PidLidAppointmentSequence": (_A, 0x8201, "PT_LONG"),
    "PidLidFInvited": (_A, 0x8229, "PT_BOOLEAN"),
    "PidLidBusyStatus": (_A, 0x8205, "PT_LONG"),
    "PidLidAppointmentAuxiliaryFlags": (_A, 0x8207, "PT_LONG"),
    "PidLidLocation": (_A, 0x8208, "PT_UNICODE"),
    "PidLidAppointmentStartWhole": (_A, 0x820D, "PT_SYSTIME"),
    "PidLidAppointmentEndWhole": (_A, 0x820E, "PT_SYSTIME"),
    "PidLidAppointmentDuration": (_A, 0x8213, "PT_LONG"),
    "PidLidAppointmentColor": (_A, 0x8214, "PT_LONG"),
    "PidLidAppointmentSubType": (_A, 0x8215, "PT_BOOLEAN"),
    "PidLidAppointmentRecur": (_A, 0x8216, "PT_BINARY"),
    "PidLidAppointmentStateFlags": (_A, 0x8217, "PT_LONG"),
    "PidLidResponseStatus": (_A, 0x8218, "PT_LONG"),
    "PidLidRecurring": (_A, 0x8223, "PT_BOOLEAN"),
    "PidLidExceptionReplaceTime": (_A, 0x8228, "PT_SYSTIME"),
    "PidLidRecurrenceType": (_A, 0x8231, "PT_LONG"),
    "PidLidRecurrencePattern": (_A, 0x8232, "PT_UNICODE"),
    "PidLidTimeZoneStruct": (_A, 0x8233, "PT_BINARY"),
    "PidLidTimeZoneDescription": (_A, 0x8234, "PT_UNICODE"),
    "PidLidClipStart": (_A, 0x8235, "PT_SYSTIME"),
    "PidLidClipEnd": (_A, 0x8236, "PT_SYSTIME"),
    "PidLidAllAttendeesString": (_A, 0x8238, "PT_UNICODE"),
    "PidLidToAttendeesString": (_A, 0x823B, "PT_UNICODE"),
    "PidLidCcAttendeesString": (_A, 0x823C, "PT_UNICODE"),
    "PidLidAppointmentProposedDuration": (_A, 0x8256, "PT_LONG"),
    "PidLidAppointmentCounterProposal": (_A, 0x8257, "PT_BOOLEAN"),
    "PidLidAppointmentNotAllowPropose": (_A, 0x825A, "PT_BOOLEAN"),
    "PidLidAppointmentTimeZoneDefinitionStartDisplay": (_A, 0x825E, "PT_BINARY"),
    "PidLidAppointmentTimeZoneDefinitionEndDisplay": (_A, 0x825F, "PT_BINARY"),
    "PidLidAppointmentTimeZoneDefinitionRecur": (_A, 0x8260, "PT_BINARY"),
    "PidLidReminderDelta": (_C, 0x8501, "PT_LONG"),
    "PidLidReminderTime": (_C, 0x8502, "PT_SYSTIME"),
    "PidLidReminderSet": (_C, 0x8503, "PT_BOOLEAN"),
    "PidLidPrivate": (_C, 0x8506, "PT_BOOLEAN"),
    "PidLidSideEffects": (_C, 0x8510, "PT_LONG"),
    "PidLidCommonStart": (_C, 0x8516, "PT_SYSTIME"),
    "PidLidCommonEnd": (_C, 0x8517, "PT_SYSTIME"),
    "PidLidReminderSignalTime": (_C, 0x8560, "PT_SYSTIME"),
    "PidLidGlobalObjectId": (_M, 0x0003, "PT_BINARY"),
    "PidLidIsRecurring": (_M, 0x0005, "PT_BOOLEAN"),
    "PidLidIsException": (_M, 0x000A, "PT_BOOLEAN"),
    "PidLidOwnerCriticalChange": (_M, 0x001A, "PT_SYSTIME"),
    "PidLidCleanGlobalObjectId": (_M, 0x0023, "PT_BINARY"),
    "PidLidFileUnder": (_P, 0x8005, "PT_UNICODE"),
    "PidLidHasPicture": (_P, 0x8015, "PT_BOOLEAN"),
    "PidLidInstantMessagingAddress": (_P, 0x8062, "PT_UNICODE"),
    "PidLidEmail1DisplayName": (_P, 0x8080, "PT_UNICODE"),
    "PidLidEmail1AddressType": (_P, 0x8082, "PT_UNICODE"),
    "PidLidEmail1EmailAddress": (_P, 0x8083, "PT_UNICODE"),
    "PidLidEmail1OriginalDisplayName": (_P, 0x8084, "PT_UNICODE"),
    "PidLidEmail1OriginalEntryId": (_P, 0x8085, "PT_BINARY"),
    "PidLidEmail2DisplayName": (_P, 0x8090, "PT_UNICODE"),
    "PidLidEmail2AddressType": (_P, 0x8092, "PT_UNICODE"),
    "PidLidEmail2EmailAddress": (_P, 0x8093, "PT_UNICODE"),
    "PidLidEmail2OriginalDisplayName": (_P, 0x8094, "PT_UNICODE"),
    "PidLidEmail2OriginalEntryId": (_P, 0x8095, "PT_BINARY"),
    "PidLidEmail3DisplayName": (_P, 0x80A0, "PT_UNICODE"),
    "PidLidEmail3AddressType": (_P, 0x80A2, "PT_UNICODE"),
    "PidLidEmail3EmailAddress": (_P, 0x80A3, "PT_UNICODE"),
    "PidLidEmail3OriginalDisplayName": (_P, 0x80A4, "PT_UNICODE"),
    "PidLidEmail3OriginalEntryId": (_P, 0x80A5, "PT_BINARY"),
}

# The usual names with a type of their own. String names stand in _STRINGS without their ending.
TAGS = {
    "PR_IMPORTANCE": 0x00170003,
    "PR_PRIORITY": 0x00260003,
    "PR_SENSITIVITY": 0x00360003,
    "PR_CLIENT_SUBMIT_TIME": 0x00390040,
    "PR_SENT_REPRESENTING_SEARCH_KEY": 0x003B0102,
    "PR_RECEIVED_BY_ENTRYID": 0x003F0102,
    "PR_SENT_REPRESENTING_ENTRYID": 0x00410102,
    "PR_RCVD_REPRESENTING_ENTRYID": 0x00430102,
    "PR_REPLY_RECIPIENT_ENTRIES": 0x004F0102,
    "PR_START_DATE": 0x00600040,
    "PR_END_DATE": 0x00610040,
    "PR_OWNER_APPT_ID": 0x00620003,
    "PR_RESPONSE_REQUESTED": 0x0063000B,
    "PR_CONVERSATION_INDEX": 0x00710102,
    "PR_RECIPIENT_TYPE": 0x0C150003,
    "PR_SENDER_ENTRYID": 0x0C190102,
    "PR_SENDER_SEARCH_KEY": 0x0C1D0102,
    "PR_DELETE_AFTER_SUBMIT": 0x0E01000B,
    "PR_MESSAGE_DELIVERY_TIME": 0x0E060040,
    "PR_MESSAGE_FLAGS": 0x0E070003,
    "PR_MESSAGE_SIZE": 0x0E080003,
    "PR_PARENT_ENTRYID": 0x0E090102,
    "PR_SENTMAIL_ENTRYID": 0x0E0A0102,
    "PR_RESPONSIBILITY": 0x0E0F000B,
    "PR_MESSAGE_STATUS": 0x0E170003,
    "PR_HASATTACH": 0x0E1B000B,
    "PR_ATTACH_SIZE": 0x0E200003,
    "PR_ATTACH_NUM": 0x0E210003,
    "PR_ACCESS": 0x0FF40003,
    "PR_ROW_TYPE": 0x0FF50003,
    "PR_INSTANCE_KEY": 0x0FF60102,
    "PR_ACCESS_LEVEL": 0x0FF70003,
    "PR_MAPPING_SIGNATURE": 0x0FF80102,
    "PR_RECORD_KEY": 0x0FF90102,
    "PR_STORE_RECORD_KEY": 0x0FFA0102,
    "PR_STORE_ENTRYID": 0x0FFB0102,
    "PR_OBJECT_TYPE": 0x0FFE0003,
    "PR_ENTRYID": 0x0FFF0102,
    "PR_RTF_COMPRESSED": 0x10090102,
    "PR_HTML": 0x10130102,
    "PR_ICON_INDEX": 0x10800003,
    "PR_ATTR_HIDDEN": 0x10F4000B,
    "PR_ROWID": 0x30000003,
    "PR_CREATION_TIME": 0x30070040,
    "PR_LAST_MODIFICATION_TIME": 0x30080040,
    "PR_SEARCH_KEY": 0x300B0102,
    "PR_TARGET_ENTRYID": 0x30100102,
    "PR_STORE_SUPPORT_MASK": 0x340D0003,
    "PR_DEFAULT_STORE": 0x3400000B,
    "PR_MDB_PROVIDER": 0x34140102,
    "PR_RECEIVE_FOLDER_SETTINGS": 0x3415000D,
    "PR_VALID_FOLDER_MASK": 0x35DF0003,
    "PR_IPM_SUBTREE_ENTRYID": 0x35E00102,
    "PR_IPM_OUTBOX_ENTRYID": 0x35E20102,
    "PR_IPM_WASTEBASKET_ENTRYID": 0x35E30102,
    "PR_IPM_SENTMAIL_ENTRYID": 0x35E40102,
    "PR_VIEWS_ENTRYID": 0x35E50102,
    "PR_COMMON_VIEWS_ENTRYID": 0x35E60102,
    "PR_FINDER_ENTRYID": 0x35E70102,
    "PR_CONTAINER_FLAGS": 0x36000003,
    "PR_FOLDER_TYPE": 0x36010003,
    "PR_CONTENT_COUNT": 0x36020003,
    "PR_CONTENT_UNREAD": 0x36030003,
    "PR_SUBFOLDERS": 0x360A000B,
    "PR_STATUS": 0x360B0003,
    "PR_DEFAULT_VIEW_ENTRYID": 0x36160102,
    "PR_ASSOC_CONTENT_COUNT": 0x36170003,
    "PR_ATTACHMENT_X400_PARAMETERS": 0x37000102,
    "PR_ATTACH_DATA_BIN": 0x37010102,
    "PR_ATTACH_DATA_OBJ": 0x3701000D,
    "PR_ATTACH_ENCODING": 0x37020102,
    "PR_ATTACH_METHOD": 0x37050003,
    "PR_ATTACH_RENDERING": 0x37090102,
    "PR_ATTACH_TAG": 0x370A0102,
    "PR_RENDERING_POSITION": 0x370B0003,
    "PR_ATTACH_FLAGS": 0x37140003,
    "PR_DISPLAY_TYPE": 0x39000003,
    "PR_BIRTHDAY": 0x3A420040,
    "PR_WEDDING_ANNIVERSARY": 0x3A410040,
    "PR_SEND_RICH_INFO": 0x3A40000B,
    "PR_DEFAULT_PROFILE": 0x3D04000B,
    "PR_RESOURCE_FLAGS": 0x30090003,
    "PR_RESOURCE_TYPE": 0x3E030003,
    "PR_STATUS_CODE": 0x3E040003,
    "PR_INTERNET_CPID": 0x3FDE0003,
    "PR_MESSAGE_CODEPAGE": 0x3FFD0003,
    "PR_MSG_EDITOR_FORMAT": 0x59090003,
    "PR_RECIPIENT_FLAGS": 0x5FFD0003,
    "PR_RECIPIENT_TRACKSTATUS": 0x5FFF0003,
    "PR_RECIPIENT_TRACKSTATUS_TIME": 0x5FFB0040,
    "PR_RECIPIENT_ORDER": 0x5FDF0003,
    "PR_ATTACHMENT_LINKID": 0x7FFA0003,
    "PR_EXCEPTION_STARTTIME": 0x7FFB0040,
    "PR_EXCEPTION_ENDTIME": 0x7FFC0040,
    "PR_ATTACHMENT_FLAGS": 0x7FFD0003,
    "PR_ATTACHMENT_HIDDEN": 0x7FFE000B,
    "PR_ATTACHMENT_CONTACTPHOTO": 0x7FFF000B,
}

_STRINGS = {
    "PR_MESSAGE_CLASS": 0x001A,
    "PR_SUBJECT": 0x0037,
    "PR_SUBJECT_PREFIX": 0x003D,
    "PR_RECEIVED_BY_NAME": 0x0040,
    "PR_SENT_REPRESENTING_NAME": 0x0042,
    "PR_RCVD_REPRESENTING_NAME": 0x0044,
    "PR_REPLY_RECIPIENT_NAMES": 0x0050,
    "PR_SENT_REPRESENTING_ADDRTYPE": 0x0064,
    "PR_SENT_REPRESENTING_EMAIL_ADDRESS": 0x0065,
    "PR_CONVERSATION_TOPIC": 0x0070,
    "PR_RECEIVED_BY_ADDRTYPE": 0x0075,
    "PR_RECEIVED_BY_EMAIL_ADDRESS": 0x0076,
    "PR_TRANSPORT_MESSAGE_HEADERS": 0x007D,
    "PR_SENDER_NAME": 0x0C1A,
    "PR_SENDER_ADDRTYPE": 0x0C1E,
    "PR_SENDER_EMAIL_ADDRESS": 0x0C1F,
    "PR_DISPLAY_BCC": 0x0E02,
    "PR_DISPLAY_CC": 0x0E03,
    "PR_DISPLAY_TO": 0x0E04,
    "PR_PARENT_DISPLAY": 0x0E05,
    "PR_NORMALIZED_SUBJECT": 0x0E1D,
    "PR_BODY": 0x1000,
    "PR_BODY_HTML": 0x1013,
    "PR_INTERNET_MESSAGE_ID": 0x1035,
    "PR_INTERNET_REFERENCES": 0x1039,
    "PR_IN_REPLY_TO_ID": 0x1042,
    "PR_DISPLAY_NAME": 0x3001,
    "PR_ADDRTYPE": 0x3002,
    "PR_EMAIL_ADDRESS": 0x3003,
    "PR_COMMENT": 0x3004,
    "PR_PROVIDER_DISPLAY": 0x3006,
    "PR_CONTAINER_CLASS": 0x3613,
    "PR_ATTACH_EXTENSION": 0x3703,
    "PR_ATTACH_FILENAME": 0x3704,
    "PR_ATTACH_LONG_FILENAME": 0x3707,
    "PR_ATTACH_PATHNAME": 0x3708,
    "PR_ATTACH_MIME_TAG": 0x370E,
    "PR_ATTACH_CONTENT_ID": 0x3712,
    "PR_7BIT_DISPLAY_NAME": 0x39FF,
    "PR_SMTP_ADDRESS": 0x39FE,
    "PR_ACCOUNT": 0x3A00,
    "PR_GENERATION": 0x3A05,
    "PR_GIVEN_NAME": 0x3A06,
    "PR_BUSINESS_TELEPHONE_NUMBER": 0x3A08,
    "PR_HOME_TELEPHONE_NUMBER": 0x3A09,
    "PR_INITIALS": 0x3A0A,
    "PR_KEYWORD": 0x3A0B,
    "PR_SURNAME": 0x3A11,
    "PR_ORIGINAL_DISPLAY_NAME": 0x3A13,
    "PR_POSTAL_ADDRESS": 0x3A15,
    "PR_COMPANY_NAME": 0x3A16,
    "PR_TITLE": 0x3A17,
    "PR_DEPARTMENT_NAME": 0x3A18,
    "PR_OFFICE_LOCATION": 0x3A19,
    "PR_PRIMARY_TELEPHONE_NUMBER": 0x3A1A,
    "PR_BUSINESS2_TELEPHONE_NUMBER": 0x3A1B,
    "PR_MOBILE_TELEPHONE_NUMBER": 0x3A1C,
    "PR_OTHER_TELEPHONE_NUMBER": 0x3A1F,
    "PR_PAGER_TELEPHONE_NUMBER": 0x3A21,
    "PR_PRIMARY_FAX_NUMBER": 0x3A23,
    "PR_BUSINESS_FAX_NUMBER": 0x3A24,
    "PR_HOME_FAX_NUMBER": 0x3A25,
    "PR_COUNTRY": 0x3A26,
    "PR_LOCALITY": 0x3A27,
    "PR_STATE_OR_PROVINCE": 0x3A28,
    "PR_STREET_ADDRESS": 0x3A29,
    "PR_POSTAL_CODE": 0x3A2A,
    "PR_POST_OFFICE_BOX": 0x3A2B,
    "PR_HOME2_TELEPHONE_NUMBER": 0x3A2F,
    "PR_ASSISTANT": 0x3A30,
    "PR_MIDDLE_NAME": 0x3A44,
    "PR_DISPLAY_NAME_PREFIX": 0x3A45,
    "PR_MANAGER_NAME": 0x3A4E,
    "PR_NICKNAME": 0x3A4F,
    "PR_PERSONAL_HOME_PAGE": 0x3A50,
    "PR_BUSINESS_HOME_PAGE": 0x3A51,
    "PR_HOME_ADDRESS_CITY": 0x3A59,
    "PR_HOME_ADDRESS_COUNTRY": 0x3A5A,
    "PR_HOME_ADDRESS_POSTAL_CODE": 0x3A5B,
    "PR_HOME_ADDRESS_STATE_OR_PROVINCE": 0x3A5C,
    "PR_HOME_ADDRESS_STREET": 0x3A5D,
    "PR_PROFILE_NAME": 0x3D12,
}
for _name, _id in _STRINGS.items():
    TAGS[_name] = _id << 16 | TYPES["PT_UNICODE"]
    TAGS[_name + "_W"] = _id << 16 | TYPES["PT_UNICODE"]
    TAGS[_name + "_A"] = _id << 16 | TYPES["PT_STRING8"]

# The library makes these of the objects themselves; a document must not hold them.
COMPUTED_ALWAYS = frozenset(
    TAGS[name] >> 16 for name in (
        "PR_ENTRYID", "PR_PARENT_ENTRYID", "PR_STORE_ENTRYID", "PR_RECORD_KEY", "PR_STORE_RECORD_KEY",
        "PR_INSTANCE_KEY", "PR_ATTACH_NUM", "PR_ROWID",
    )
)


class NameProblem(Exception):
    """A key of a property object that cannot be read; the text says why."""


def named_key(key):
    """(set GUID in upper case, identifier or text, type number) of a named key, else None.

    The key is a known name or "SET:IDENTIFIER:TYPE". Raises NameProblem for a malformed one.
    """
    if key in KNOWN:
        set_name, identifier, type_name = KNOWN[key]
        return SETS[set_name], identifier, TYPES[type_name]
    if ":" not in key:
        return None
    head, _, type_name = key.rpartition(":")
    set_text, colon, name = head.partition(":")
    if not colon:
        raise NameProblem("expected SET:IDENTIFIER:TYPE")
    if TYPES.get(type_name) not in STORED_TYPES:
        raise NameProblem(f"unknown property type {type_name!r}")
    return (*split_name(set_text, name), TYPES[type_name])


def split_name(set_text, name):
    """(GUID, identifier or text) of the two halves of a property name."""
    if set_text in SETS:
        guid = SETS[set_text]
    elif re.fullmatch(r"\{[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}\}", set_text):
        guid = set_text.upper()
    else:
        raise NameProblem(f"unknown property set {set_text!r}")
    if not name:
        raise NameProblem("the property's identifier is missing")
    if re.fullmatch(r"0[xX][0-9A-Fa-f]{1,8}", name):
        return guid, int(name, 16)
    return guid, name


def name_text(guid, name):
    """The key of `namedIds` for one property name: "SET:IDENTIFIER"."""
    text = f"0x{name:04X}" if isinstance(name, int) else name
    return f"{SET_NAMES.get(guid, guid)}:{text}"


def tag_of(key):
    """The property tag of a usual name or a hexadecimal tag; None when the key is neither."""
    if key in TAGS:
        return TAGS[key]
    if re.fullmatch(r"0[xX][0-9A-Fa-f]{8}", key):
        tag = int(key, 16)
        if tag >> 16 >= 0x8000:
            raise NameProblem("identifiers of 0x8000 and above belong to named properties; write SET:IDENTIFIER:TYPE")
        if tag & 0xFFFF not in STORED_TYPES:
            raise NameProblem(f"0x{tag & 0xFFFF:04X} is no property type that can be stored")
        return tag
    return None
