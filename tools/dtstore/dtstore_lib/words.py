"""How numbers of things are told."""


def counted(number, one, many=None):
    """"1 event", "2 events"; `many` where an s is not enough."""
    return f"{number} {one if number == 1 else many or one + 's'}"
