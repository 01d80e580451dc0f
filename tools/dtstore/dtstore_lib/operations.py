"""Names of the operations that a fault plan can name, from the list that the library is built of."""

import os

from .problem import Problem

LIST = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "..", "mapistore", "operations.txt")


def names(path=LIST):
    """"Interface::Method", one each, in the order of the list."""
    try:
        with open(path, encoding="utf-8") as file:
            lines = [line.partition("#")[0].strip() for line in file]
    except OSError as error:
        raise Problem(f"{os.path.normpath(path)}: {error.strerror}") from None
    return [line for line in lines if line]
