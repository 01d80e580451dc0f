#!/usr/bin/python3
"""Writes the library's tables of property names from the store tool's.

usage: make_names.py FOLDER_OF_THE_TOOL OUTPUT_FOLDER

Both halves read one list, so a document means the same to either.
"""

import pathlib
import sys

sys.path.insert(0, sys.argv[1])
from dtstore_lib import names  # noqa: E402  the path is an argument


def write(name, lines):
    path = pathlib.Path(sys.argv[2], name)
    text = "\n".join(lines) + "\n"
    if not path.exists() or path.read_text(encoding="ascii") != text:
        path.write_text(text, encoding="ascii")


write("PropertyTags.inc", [f'{{"{name}", 0x{tag:08X}}},' for name, tag in sorted(names.TAGS.items())])
write("PropertyTypes.inc", [f'{{"{name}", 0x{value:04X}}},' for name, value in sorted(names.TYPES.items())])
write("PropertySets.inc", [f'{{"{name}", "{guid}"}},' for name, guid in sorted(names.SETS.items())])
write("KnownNames.inc", [
    f'{{"{name}", "{set_name}", 0x{number:04X}, 0x{names.TYPES[type_name]:04X}}},'
    for name, (set_name, number, type_name) in sorted(names.KNOWN.items())
])
