"""Reading and writing the document of a store folder.

docs/mapistore.md, "Reading, writing, locking". One StoreFolder is used by one thread.
"""

import contextlib
import hashlib
import json
import os
import re

from . import schema
from .problem import Problem

DOCUMENT, LOCK, FILES = "store.json", "store.lock", "files"
LINE_PER_MESSAGE = 2000  # from this many messages on, each stands on one line

try:
    import fcntl
except ImportError:  # Windows
    fcntl = None
    import msvcrt


class StoreFolder:
    """A store folder. `document` is the parsed content as last read; change it only inside writing()."""

    def __init__(self, path):
        self.path = path
        self.document = None
        self._locked = False

    @property
    def document_path(self):
        return os.path.join(self.path, DOCUMENT)

    def read(self, check=True):
        """Reads the document anew. Raises Problem with file, line and place."""
        try:
            with open(self.document_path, "rb") as file:
                data = file.read()
        except FileNotFoundError:
            raise Problem(f"{self.path} is no store: it has no {DOCUMENT} (make one with: dtstore new)") from None
        except OSError as error:
            raise Problem(f"{self.document_path}: {error.strerror}") from None
        self.document = parse(data, self.document_path)
        if check:
            findings = schema.check(self.document, self.path)
            if findings:
                text = data.decode("utf-8")
                raise Problem("\n".join(located(text, self.document_path, finding) for finding in findings[:20]))
        return self.document

    @contextlib.contextmanager
    def writing(self):
        """Holds the lock, gives the document as it now stands, and writes it when the block ends well."""
        os.makedirs(self.path, exist_ok=True)
        with self._lock():
            if self.document is None or os.path.exists(self.document_path):
                self.read()
            yield self.document
            findings = schema.check(self.document, self.path)
            if findings:
                raise Problem("nothing was written: " + "\n".join(str(finding) for finding in findings[:20]))
            self.document["revision"] += 1
            write_atomically(self.document_path, to_text(self.document).encode("utf-8"))

    @contextlib.contextmanager
    def _lock(self):
        """Exclusive lock on byte 0 of the lock file; waits for its present holder."""
        handle = os.open(os.path.join(self.path, LOCK), os.O_RDWR | os.O_CREAT, 0o666)
        try:
            if fcntl:
                fcntl.lockf(handle, fcntl.LOCK_EX, 1, 0)
            else:
                os.lseek(handle, 0, os.SEEK_SET)
                while True:
                    with contextlib.suppress(OSError):
                        msvcrt.locking(handle, msvcrt.LK_LOCK, 1)
                        break
            yield
        finally:
            os.close(handle)

    def create(self, document):
        """Writes the first document of a new store folder. Raises Problem when there is one already."""
        os.makedirs(self.path, exist_ok=True)
        with self._lock():
            if os.path.exists(self.document_path):
                raise Problem(f"{self.path} holds a store already")
            self.document = document
            write_atomically(self.document_path, to_text(document).encode("utf-8"))

    def keep_file(self, data, ending):
        """Stores a large value below files/ and gives its name in the document."""
        name = f"{FILES}/{hashlib.sha256(data).hexdigest()[:32]}{ending}"
        path = os.path.join(self.path, *name.split("/"))
        if not os.path.exists(path):
            os.makedirs(os.path.dirname(path), exist_ok=True)
            write_atomically(path, data)
        return name

    def file_bytes(self, name):
        with open(os.path.join(self.path, *name.split("/")), "rb") as file:
            return file.read()

    def left_over(self):
        """Files that no reader needs: those of files/ that nobody names, and unfinished writes."""
        named = {value for value in file_names(self.document)}
        found = [name for name in os.listdir(self.path) if name.endswith(".new")]
        folder = os.path.join(self.path, FILES)
        if os.path.isdir(folder):
            found += [f"{FILES}/{name}" for name in os.listdir(folder) if f"{FILES}/{name}" not in named]
        return sorted(found)

    def clean(self):
        """Removes what left_over() finds, under the lock; gives the names."""
        with self._lock():
            self.read()
            names = self.left_over()
            for name in names:
                os.unlink(os.path.join(self.path, *name.split("/")))
        return names


def file_names(value):
    """Every {"file": NAME} below a value of the document."""
    if isinstance(value, dict):
        if len(value) == 1 and isinstance(value.get("file"), str):
            yield value["file"]
        else:
            for inner in value.values():
                yield from file_names(inner)
    elif isinstance(value, list):
        for inner in value:
            yield from file_names(inner)


def write_atomically(path, data):
    """The file holds the old content or the new one, whatever happens."""
    fresh = f"{path}.{os.getpid()}.new"
    with open(fresh, "wb") as file:
        file.write(data)
        file.flush()
        os.fsync(file.fileno())
    os.replace(fresh, path)
    if fcntl:
        folder = os.open(os.path.dirname(path) or ".", os.O_RDONLY)
        try:
            os.fsync(folder)
        finally:
            os.close(folder)


class _TwiceProblem(Exception):
    pass


def parse(data, path):
    """The parsed document. Raises Problem with file, line and column."""
    try:
        text = data.decode("utf-8")
    except UnicodeDecodeError as error:
        line = data[:error.start].count(b"\n") + 1
        raise Problem(f"{path}:{line}: not UTF-8 text") from None
    if text.startswith("\ufeff"):
        raise Problem(f"{path}:1:1: begins with a byte order mark")

    def unique(pairs):
        value = dict(pairs)
        if len(value) != len(pairs):
            keys = [key for key, _ in pairs]
            raise _TwiceProblem(next(key for key in keys if keys.count(key) > 1))
        return value

    def no_constant(name):
        raise _TwiceProblem(name)

    try:
        return json.loads(text, object_pairs_hook=unique, parse_constant=no_constant)
    except json.JSONDecodeError as error:
        raise Problem(f"{path}:{error.lineno}:{error.colno}: {error.msg}") from None
    except _TwiceProblem as twice:
        line = _line_of_twice(text, str(twice))
        raise Problem(f"{path}:{line}: the key {str(twice)!r} stands twice in one object, or is no value") from None
    except RecursionError:
        raise Problem(f"{path}: nested too deeply") from None


def _line_of_twice(text, key):
    """Line of the second of two equal keys of one object, or of a word that is no value."""
    seen = [set()]
    for match in re.finditer(r'[{}]|"(?:[^"\\]|\\.)*"(\s*:)?|NaN|-?Infinity', text):
        token = match.group()
        if token == "{":
            seen.append(set())
        elif token == "}":
            seen.pop()
        elif match.group(1):
            name = json.loads(token[:-len(match.group(1))])
            if name == key and name in seen[-1]:
                return text.count("\n", 0, match.start()) + 1
            seen[-1].add(name)
        elif token == key:
            return text.count("\n", 0, match.start()) + 1
    return 1


def located(text, path, finding):
    """A finding with file, line and column in front of it."""
    offset = offset_of(text, finding.place)
    line = text.count("\n", 0, offset) + 1
    column = offset - (text.rfind("\n", 0, offset) + 1) + 1
    return f"{path}:{line}:{column}: {finding}"


_SPACE = re.compile(r"[ \t\r\n]*")
_DECODER = json.JSONDecoder()


def offset_of(text, place):
    """Where the value at a place, a tuple of keys and indices, begins in the text."""
    at = _SPACE.match(text, 0).end()
    for step in place:
        inside = _SPACE.match(text, at + 1).end()
        index = 0
        while True:
            if text[inside] in "}]":
                return at
            if isinstance(step, str):
                key, inside = _DECODER.raw_decode(text, inside)
                inside = _SPACE.match(text, _SPACE.match(text, inside).end() + 1).end()
            else:
                key = index
            if key == step:
                at = inside
                break
            _, inside = _DECODER.raw_decode(text, inside)
            inside = _SPACE.match(text, inside).end()
            if text[inside] == ",":
                inside = _SPACE.match(text, inside + 1).end()
            index += 1
    return at


def to_text(document):
    """The document as text: readable, and one line a message where there are very many."""
    count = sum(len(store["messages"]) for store in document["stores"])
    if count < LINE_PER_MESSAGE:
        return json.dumps(document, indent=1, ensure_ascii=False) + "\n"
    frame = {**document, "stores": [{**store, "messages": [f"@messages {i}@"]} for i, store in
                                    enumerate(document["stores"])]}
    text = json.dumps(frame, indent=1, ensure_ascii=False) + "\n"
    for i, store in enumerate(document["stores"]):
        lines = ",\n    ".join(json.dumps(message, ensure_ascii=False) for message in store["messages"])
        head, mark, tail = text.partition(f'"@messages {i}@"')
        text = head + lines + tail if mark else text
    return text
