"""What of an event's recurrence a stored pattern can hold, and what it cannot.

Every pattern that is made here is held against the event's own dates before it is used.
"""

import re
from datetime import date, datetime, timedelta

from dateutil import rrule as dateutil_rrule

from . import blobs, zones
from .pattern import DAYS, MOST, WORKDAYS, Pattern, PatternProblem, day_code, nth_days_fit

CHECK_YEARS = 12       # how far a series without end is compared with its rule
CHECK_INSTANCES = 6000  # and a series with an end


class Inexpressible(Exception):
    """A recurrence that the stored pattern cannot hold; the text is the reason."""


def rule_text(rule, event):
    """The rule as text whose UNTIL is naive local time, as dateutil wants it beside a naive start."""
    parts = []
    for part in rule.to_ical().decode().split(";"):
        name, _, value = part.partition("=")
        if name.upper() == "UNTIL":
            value = until_of(rule, event).strftime("%Y%m%dT%H%M%S")
        parts.append(f"{name}={value}")
    return ";".join(parts)


def until_of(rule, event):
    """UNTIL as local time of the event's zone; a date means the end of that day."""
    until = rule["UNTIL"][0]
    if not isinstance(until, datetime):
        return datetime(until.year, until.month, until.day, 23, 59, 59)
    if until.tzinfo is not None:
        return until.astimezone(event.zone).replace(tzinfo=None)
    return until


_RANGES = {"INTERVAL": (1, 10**6), "COUNT": (1, 10**6), "BYMONTH": (1, 12), "BYHOUR": (0, 23), "BYMINUTE": (0, 59),
           "BYSECOND": (0, 60)}
_SIGNED = {"BYMONTHDAY": 31, "BYSETPOS": 366, "BYYEARDAY": 366, "BYWEEKNO": 53}
_PARTS = {"FREQ", "UNTIL", "WKST", "BYDAY", *_RANGES, *_SIGNED}
_SLOW = ("SECONDLY", "MINUTELY")
_FREQUENCIES = ("SECONDLY", "MINUTELY", "HOURLY", "DAILY", "WEEKLY", "MONTHLY", "YEARLY")


def fault_of(rule):
    """Why a rule is none, or None."""
    if any(not values for values in rule.values()):
        return "a part is empty"
    unknown = [name for name in rule if name.upper() not in _PARTS]
    if unknown:
        return f"unknown part {unknown[0]}"
    frequency = str((rule.get("FREQ") or [""])[0]).upper()
    if frequency not in _FREQUENCIES:
        return f"unknown frequency {frequency!r}"
    for name, (low, high) in _RANGES.items():
        for value in rule.get(name) or []:
            if not isinstance(value, int) or not low <= value <= high:
                return f"{name} is outside {low} to {high}"
    for name, most in _SIGNED.items():
        for value in rule.get(name) or []:
            if not isinstance(value, int) or not 1 <= abs(value) <= most:
                return f"{name} is outside 1 to {most}"
    for value in rule.get("BYDAY", []):
        if not re.fullmatch(r"[+-]?\d{0,2}(SU|MO|TU|WE|TH|FR|SA)", str(value).upper()):
            return f"BYDAY has no day {str(value)!r}"
    if str((rule.get("WKST") or ["MO"])[0]).upper() not in DAYS:
        return "WKST is no day"
    for value in rule.get("UNTIL", []):
        if not isinstance(value, date):
            return "UNTIL is no date"
    return None


def own_dates(event):
    """All starts that the event's rules, dates and exclusions give, as a dateutil set."""
    dates = dateutil_rrule.rruleset(cache=False)
    for rule in event.rules:
        if rule["FREQ"][0].upper() in _SLOW and any(
                name in rule for name in ("BYMONTH", "BYMONTHDAY", "BYYEARDAY", "BYWEEKNO", "BYDAY", "BYHOUR")):
            raise Inexpressible("it repeats within the hour on certain days only, which takes too long to follow")
        try:
            dates.rrule(dateutil_rrule.rrulestr(rule_text(rule, event), dtstart=event.start))
        except (ValueError, TypeError) as error:
            raise Inexpressible(f"the rule cannot be read ({error})") from None
    return dates


def pattern_of(event):
    """The pattern of the event's one rule, without its exceptions. Raises Inexpressible."""
    if len(event.rules) > 1:
        raise Inexpressible(f"it has {len(event.rules)} rules, and a stored pattern has one")
    if event.exclusion_rules:
        raise Inexpressible("it has rules of exclusion")
    if event.start.second or event.end.second:
        raise Inexpressible("it starts or ends within a minute, and a stored pattern has whole minutes")
    rule = event.rules[0]
    fields = _fields(rule, event.start)
    start_minute = event.start.hour * 60 + event.start.minute
    pattern = Pattern(start=event.start.date(), start_minute=start_minute,
                      end_minute=start_minute + int(event.duration.total_seconds() // 60), **fields)
    if "COUNT" in rule and "UNTIL" in rule:
        raise Inexpressible("its rule has both a count and an end")
    try:
        pattern.check()
        _set_first(pattern)
        _set_end(pattern, rule, event)
        pattern.check()
    except PatternProblem as problem:
        raise Inexpressible(str(problem)) from None
    _compare(pattern, rule, event)
    return pattern


def _set_first(pattern):
    first = next(iter(pattern.dates(pattern.start + timedelta(days=366 * 12))), None)
    if first is None:
        raise Inexpressible("its rule gives no date")
    pattern.start = first


def _set_end(pattern, rule, event):
    if "COUNT" in rule:
        pattern.count = rule["COUNT"][0]
        pattern.last = blobs.last_of_count(pattern, pattern.count)
        if pattern.last is None:
            pattern.count = None
    elif "UNTIL" in rule:
        until = until_of(rule, event)
        last = until.date() if event.start.time() <= until.time() else until.date() - timedelta(days=1)
        days = list(pattern.dates(last))
        if not days:
            raise Inexpressible("its rule ends before the first date")
        pattern.last = days[-1]


def _compare(pattern, rule, event):
    """Raises Inexpressible when the pattern's dates are not the rule's."""
    own = dateutil_rrule.rrulestr(rule_text(rule, event), dtstart=event.start)
    limit = event.start + timedelta(days=366 * CHECK_YEARS)
    mine = pattern.dates(limit.date())
    for number, moment in enumerate(own):
        if moment > limit or number > CHECK_INSTANCES:
            return
        day = next(mine, None)
        if day != moment.date():
            raise Inexpressible(f"the nearest stored pattern has {day or 'no date'} where the rule has {moment.date()}")
    extra = next(mine, None)
    if extra is not None:
        raise Inexpressible(f"the nearest stored pattern has {extra}, which the rule leaves out")


def zone_rule(event, pattern):
    """The yearly rule of the event's zone. Raises Inexpressible when the series outlives it."""
    until = (event.start + timedelta(days=366 * CHECK_YEARS)).date()
    begin, length = timedelta(minutes=pattern.start_minute), event.duration
    starts = [datetime(day.year, day.month, day.day) + begin for day in pattern.dates(until)]
    starts = starts[:CHECK_INSTANCES]
    rule = zones.rule_for(event.zone, starts + [start + length for start in starts[:400]])
    if rule is None:
        raise Inexpressible(f"the clocks of {zones.name_of(event.zone)} follow no yearly rule over its time")
    return rule


def _fields(rule, start):
    frequency = rule["FREQ"][0].upper()
    interval = rule.get("INTERVAL", [1])[0]
    if frequency not in ("DAILY", "WEEKLY", "MONTHLY", "YEARLY"):
        raise Inexpressible(f"it repeats more than once a day ({frequency})")
    for name, own in (("BYHOUR", start.hour), ("BYMINUTE", start.minute), ("BYSECOND", start.second)):
        if name in rule and list(rule[name]) != [own]:
            raise Inexpressible(f"it has several times of day ({name})")
    for name in ("BYYEARDAY", "BYWEEKNO"):
        if name in rule:
            raise Inexpressible(f"a stored pattern has no {name}")
    fields = {"DAILY": _daily, "WEEKLY": _weekly, "MONTHLY": _monthly, "YEARLY": _yearly}[frequency](
        rule, start, interval)
    fields["first_day"] = str(rule.get("WKST", ["MO"])[0]).upper()
    if fields.get("interval", 1) > MOST[fields["frequency"]]:
        raise Inexpressible(f"its interval {interval} is above {MOST[fields['frequency']]}")
    return fields


def _plain_days(rule):
    days = [str(day).upper() for day in rule.get("BYDAY", [])]
    if any(day not in DAYS for day in days):
        raise Inexpressible("its days are numbered within a year or a week")
    return tuple(day for day in DAYS if day in days)


def _refuse(rule, *names):
    for name in names:
        if name in rule:
            raise Inexpressible(f"a stored pattern of this frequency has no {name}")


def _daily(rule, start, interval):
    _refuse(rule, "BYMONTH", "BYMONTHDAY", "BYSETPOS")
    days = _plain_days(rule)
    if not days or len(days) == 7:
        return {"frequency": "daily", "interval": interval}
    if interval != 1:
        raise Inexpressible("it takes certain weekdays of every n-th day")
    return {"frequency": "workdays"} if set(days) == set(WORKDAYS) else {"frequency": "weekly", "days": days}


def _weekly(rule, start, interval):
    _refuse(rule, "BYMONTH", "BYMONTHDAY", "BYSETPOS")
    return {"frequency": "weekly", "interval": interval, "days": _plain_days(rule) or (day_code(start.date()),)}


def _monthly(rule, start, interval):
    months = rule.get("BYMONTH", [])
    if months and interval != 1:
        raise Inexpressible("it takes certain months of every n-th month")
    if months:
        return {**_months(months, start), **_month_day(rule, start)}
    return {"frequency": "monthly", "interval": interval, **_month_day(rule, start)}


def _yearly(rule, start, interval):
    months = rule.get("BYMONTH", [])
    if not months and "BYDAY" in rule:
        raise Inexpressible("its days are numbered within the year")
    if not months and "BYMONTHDAY" in rule:
        if interval != 1:
            raise Inexpressible("it takes every month of every n-th year")
        return {"frequency": "monthly", "interval": 1, **_month_day(rule, start)}
    if len(months) > 1 and interval != 1:
        raise Inexpressible("it takes several months of every n-th year")
    if len(months) > 1:
        return {**_months(months, start), **_month_day(rule, start)}
    month = months[0] if months else start.month
    if month != start.month:
        raise Inexpressible("its month is not that of its start")
    return {"frequency": "yearly", "interval": interval, **_month_day(rule, start)}


def _months(months, start):
    """Every n-th month, when the months of a year are spread evenly."""
    months = sorted(set(months))
    gap = 12 // len(months) if 12 % len(months) == 0 else 0
    if not gap or start.month not in months or any(b - a != gap for a, b in zip(months, months[1:])):
        raise Inexpressible("its months are not spread evenly over the year")
    return {"frequency": "yearly"} if gap == 12 else {"frequency": "monthly", "interval": gap}


def _month_day(rule, start):
    days = [str(day).upper() for day in rule.get("BYDAY", [])]
    numbers = list(rule.get("BYMONTHDAY", []))
    positions = list(rule.get("BYSETPOS", []))
    if not days:
        if not numbers:
            numbers = [start.day]
        if len(numbers) == 1 and positions in ([], [1], [-1]):
            return {"day_of_month": _single_day(numbers[0])}
        raise Inexpressible("it takes several days of the month")
    if numbers:
        return _week_of_days(days, sorted(numbers), positions)
    names = tuple(day for day in DAYS if any(one[-2:] == day for one in days))
    orders = {one[:-2] for one in days}
    if orders == {""}:
        if len(positions) != 1:
            raise Inexpressible("it takes every such weekday of the month" if not positions
                                else "it takes several positions (BYSETPOS)")
        return _nth(names, positions[0])
    if len(days) != 1 or positions not in ([], [1], [-1]):
        raise Inexpressible("it takes several numbered weekdays of the month")
    return _nth(names, int(days[0][:-2]))


def _single_day(number):
    if number == -1:
        return 31
    if number < 0:
        raise Inexpressible("it counts days from the end of the month")
    return number


def _week_of_days(days, numbers, positions):
    """A weekday within seven days that begin a week of the month: the n-th weekday said in another way."""
    first = (numbers[0] - 1) // 7 + 1
    if (len(days) == 1 and days[0] in DAYS and not positions and first <= 4
            and numbers == list(range(first * 7 - 6, first * 7 + 1))):
        return {"days": (days[0],), "week": first}
    raise Inexpressible("it takes weekdays that fall on certain days of the month")


def _nth(names, position):
    if position not in (1, 2, 3, 4, 5, -1):
        raise Inexpressible(f"it takes position {position}, and a stored pattern has 1 to 4 and the last")
    if not nth_days_fit(names):
        raise Inexpressible("it takes the n-th of several weekdays")
    return {"days": names, "week": 5 if position == -1 else position}
