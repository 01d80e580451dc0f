"""Values of properties in a document: what each type may hold (docs/mapistore.md, "Properties")."""

import re
from datetime import datetime

from . import describe, names

_HEX = re.compile(r"(?:[0-9A-Fa-f]{2})*")
_TIME = re.compile(r"(\d{4})-(\d\d)-(\d\d)T(\d\d):(\d\d):(\d\d)(?:\.\d{1,7})?Z")
_GUID = re.compile(r"\{[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}\}")
_BITS = {names.TYPES["PT_I2"]: 16, names.TYPES["PT_LONG"]: 32, names.TYPES["PT_I8"]: 64}
_STRING8, _UNICODE, _BINARY = (names.TYPES[name] for name in ("PT_STRING8", "PT_UNICODE", "PT_BINARY"))
_REFERENCES = ("folder", "message", "store", "entry", "container")
_DESCRIBED = {
    "oneOff": describe.one_off_bytes, "globalObjectId": describe.global_object_id_bytes,
    "timeZone": describe.zone_bytes, "recurrence": describe.recurrence_bytes,
}


def identity_of(key):
    """(identity, type) of a key: equal identities are one property. Raises NameProblem."""
    named = names.named_key(key)
    if named:
        return (named[0], named[1].lower() if isinstance(named[1], str) else named[1]), named[2]
    tag = names.tag_of(key)
    if tag is None:
        raise names.NameProblem("unknown property")
    return tag >> 16, tag & 0xFFFF


def problem_of(type_number, value, references):
    """Why the value does not fit the type, or None. Adds (kind, what) for all that it refers to."""
    if isinstance(value, dict) and "error" in value:
        return _error_problem(value)
    if type_number & names.MV_FLAG:
        if not isinstance(value, list):
            return "expected an array"
        for one in value:
            problem = problem_of(type_number & ~names.MV_FLAG, one, references)
            if problem:
                return problem
        return None
    return _SINGLE[type_number](value, references)


def _error_problem(value):
    text = value["error"]
    if len(value) == 1 and isinstance(text, str) and re.fullmatch(r"0x[0-9A-Fa-f]{8}", text):
        return None
    return 'expected {"error": "0x8007000E"}'


def _whole(bits):
    def problem(value, _references):
        number = value
        if isinstance(value, str) and re.fullmatch(r"0[xX][0-9A-Fa-f]{1,16}", value):
            number = int(value, 16)
        elif bits == 64 and isinstance(value, str) and re.fullmatch(r"-?\d{1,19}", value):
            number = int(value)
        if not isinstance(number, int) or isinstance(number, bool):
            return "expected a whole number"
        if not -(1 << bits - 1) <= number < 1 << bits:
            return f"does not fit {bits} bits"
        return None
    return problem


def _number(value, _references):
    return None if isinstance(value, (int, float)) and not isinstance(value, bool) else "expected a number"


def _currency(value, references):
    if _number(value, references) or round(value * 10000) != value * 10000:
        return "expected a number with up to four decimals"
    return None


def _truth(value, _references):
    return None if isinstance(value, bool) else "expected true or false"


def _text(value, references):
    if isinstance(value, str):
        if "\0" in value:
            return "holds a zero character"
        if any("\ud800" <= c <= "\udfff" for c in value):
            return "holds half of a surrogate pair"
        return None
    return _file_problem(value, references) if _is_file(value) else "expected text"


def _is_file(value):
    return isinstance(value, dict) and list(value) == ["file"]


def _file_problem(value, references):
    name = value["file"]
    if not isinstance(name, str) or not name.startswith("files/") or "\\" in name or any(
            part in ("", ".", "..") for part in name.split("/")):
        return "expected the name of a file below files/"
    references.append(("file", name))
    return None


def _time(value, _references):
    match = _TIME.fullmatch(value) if isinstance(value, str) else None
    if match:
        try:
            if datetime(*map(int, match.groups())).year >= 1601:
                return None
        except ValueError:
            pass
    return "expected a time such as 2026-11-02T09:00:00Z"


def _guid(value, _references):
    return None if isinstance(value, str) and _GUID.fullmatch(value) else "expected a GUID in braces"


def _binary(value, references):
    if isinstance(value, str):
        return None if _HEX.fullmatch(value) else "expected pairs of hexadecimal digits"
    if _is_file(value):
        return _file_problem(value, references)
    if not isinstance(value, dict) or len(value) != 1:
        return "expected hexadecimal text or an object with one key"
    (kind, inner), = value.items()
    if kind in _REFERENCES:
        if not isinstance(inner, int) or isinstance(inner, bool):
            return f"{kind}: expected an id"
        references.append((kind, inner))
        return None
    if kind not in _DESCRIBED:
        return f"unknown kind of binary value {kind!r}"
    try:
        _DESCRIBED[kind](inner)
    except describe.DescriptionProblem as problem:
        return str(problem)
    return None


_SINGLE = {
    **{type_number: _whole(bits) for type_number, bits in _BITS.items()},
    names.TYPES["PT_R4"]: _number, names.TYPES["PT_DOUBLE"]: _number, names.TYPES["PT_APPTIME"]: _number,
    names.TYPES["PT_CURRENCY"]: _currency, names.TYPES["PT_BOOLEAN"]: _truth,
    _STRING8: _text, _UNICODE: _text, names.TYPES["PT_SYSTIME"]: _time, names.TYPES["PT_CLSID"]: _guid,
    _BINARY: _binary,
}


def described_bytes(value):
    """Bytes of a binary value that needs nothing but itself; None for files and references."""
    if isinstance(value, str):
        return bytes.fromhex(value)
    (kind, inner), = value.items()
    return _DESCRIBED[kind](inner) if kind in _DESCRIBED else None
