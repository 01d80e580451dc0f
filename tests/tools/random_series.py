#!/usr/bin/python3
"""Writes random recurring events as .ics files, and beside each what it means by python3-dateutil.

usage: random_series.py OUTPUT [--series N] [--seed S] [--from DATE] [--until DATE] [--most N] [--all-forms] [--store]

For each `NNN.ics` there is an `NNN.json`:
  {"window": [START, END],      both in UTC; every series starts inside
   "series": [{"uid", "form", "rule", "zone", "subject"}],
   "instances": [[START, END, SUBJECT, LOCATION], ...]}   in UTC, sorted; those that start in the window

No file holds more than --most instances, so that each fits a calendar folder's listing. Forms that the
server reads otherwise than the calendar does (series_forms.SERVER_DIFFERS) are left out unless --all-forms
is given. With --store a store is made in OUTPUT/store with a calendar folder for each file, named like it.
"""

import argparse
import json
import os
import subprocess
import sys
from datetime import datetime, timedelta

import series_forms

TOOL = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools", "dtstore", "dtstore")


def text(moment):
    return f"{moment:%Y-%m-%dT%H:%M:%SZ}"


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("output")
    parser.add_argument("--series", type=int, default=7000)
    parser.add_argument("--seed", default="1")
    parser.add_argument("--from", dest="first", type=datetime.fromisoformat, default=datetime(2026, 1, 1))
    parser.add_argument("--until", dest="last", type=datetime.fromisoformat, default=datetime(2028, 1, 1))
    parser.add_argument("--most", type=int, default=1900)
    parser.add_argument("--all-forms", action="store_true")
    parser.add_argument("--store", action="store_true")
    return parser.parse_args()


def bins(options):
    """Lists of (series, its instances in the window), none with more instances than a file may hold."""
    rng = series_forms.seeded(options.seed)
    forms = [form for form in series_forms.FORMS if options.all_forms or form not in series_forms.SERVER_DIFFERS]
    # A day at either edge keeps the local times of every zone inside the window.
    first, last = options.first + timedelta(days=4), options.last - timedelta(days=4)
    held, count = [], 0
    for number in range(options.series):
        series = series_forms.make_series(rng, number, first, last, forms=forms)
        found = [instance for instance in series.instances(options.last + timedelta(days=2))
                 if options.first <= instance[0] <= options.last]
        if held and count + len(found) > options.most:
            yield held
            held, count = [], 0
        held.append((series, found))
        count += len(found)
    if held:
        yield held


def main():
    options = arguments()
    os.makedirs(options.output, exist_ok=True)
    names, instances, series_count = [], 0, 0
    for number, held in enumerate(bins(options), 1):
        name = f"{number:03}"
        names.append(name)
        with open(os.path.join(options.output, name + ".ics"), "w", encoding="utf-8", newline="") as file:
            file.write(series_forms.calendar_text([series for series, _ in held]))
        found = sorted((text(start), text(end), subject, place)
                       for _, some in held for start, end, subject, place in some)
        with open(os.path.join(options.output, name + ".json"), "w", encoding="utf-8") as file:
            json.dump({"window": [text(options.first), text(options.last)],
                       "series": [{"uid": one.uid, "form": one.form, "rule": one.rule, "zone": one.zone,
                                   "subject": one.subject} for one, _ in held],
                       "instances": found}, file, ensure_ascii=False)
        instances += len(found)
        series_count += len(held)
    if options.store:
        make_store(options.output, names)
    print(f"{len(names)} files, {series_count} series, {instances} instances")
    return 0


def make_store(output, names):
    store = os.path.join(output, "store")
    subprocess.run([TOOL, "new", store], check=True)
    subprocess.run([TOOL, "import", store, *(os.path.join(output, name + ".ics") for name in names), "--own-folders",
                    "--strict", "--zone", "Europe/Berlin"], check=True, stdout=subprocess.DEVNULL)


if __name__ == "__main__":
    sys.exit(main())
