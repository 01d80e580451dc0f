"""What goes wrong and is told to whoever called the tool."""


class Problem(Exception):
    """The command cannot go on; the text is the whole message, without a name of a class or a trace."""


class Finding:
    """One fault of a document. `place` is the tuple of keys and indices that leads to it."""

    def __init__(self, place, text):
        self.place, self.text = place, text

    def __str__(self):
        path = ""
        for step in self.place:
            path += f"[{step}]" if isinstance(step, int) else f".{step}" if path else step
        return f"{path or 'document'}: {self.text}"
