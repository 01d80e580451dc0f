#!/usr/bin/python3
"""Lists random series through the whole server and compares each instance with python3-dateutil's own expansion.

usage: cross_check.py BUILD [--series N] [--seed S]

The series are made, imported and listed in runs of 400 with a store each, so that any number fits. Start, end,
subject and place of every instance count, and that there is none too many. BUILD is the folder of a
Windows build. The tests run one such run; 7000 series make more than 200,000 instances.

The rules in series_forms.SERVER_DIFFERS are left out: the server reads them otherwise on purpose.
"""

import argparse
import json
import os
import subprocess
import sys
import tempfile
from collections import Counter

from product import CLEAN, SOURCE, Prefix, Product

import series_forms  # product.py makes the path

PER_RUN = 400
WINDOW = ("2026-01-01", "2028-01-01")
MAKER = os.path.join(SOURCE, "tests", "tools", "random_series.py")


class Run:
    """One store of series through the server: what was expected and what differs."""

    def __init__(self, prefix, count, seed):
        with tempfile.TemporaryDirectory(prefix="cross-check-") as folder:
            subprocess.run(["/usr/bin/python3", "-W", "ignore::DeprecationWarning", MAKER, folder, "--series",
                            str(count), "--seed", seed, "--store"], check=True, capture_output=True)
            self.series, self.forms, expected = 0, set(), Counter()
            for name in sorted(os.listdir(folder)):
                if name.endswith(".json"):
                    with open(os.path.join(folder, name), encoding="utf-8") as file:
                        made = json.load(file)
                    self.series += len(made["series"])
                    self.forms |= {one["form"] for one in made["series"]}
                    expected.update(map(tuple, made["instances"]))
            with Product(prefix, os.path.join(folder, "store")) as product:
                listed = self._list(prefix)
                self.ended = product.wait_for_server_end()
                self.ledger = product.ledger()
        self.instances = sum(expected.values())
        self.missing = sorted((expected - listed).elements())
        self.unexpected = sorted((listed - expected).elements())

    @staticmethod
    def _list(prefix):
        done = prefix.run(prefix.path("dtclient.exe"), "list", "--from", WINDOW[0], "--to", WINDOW[1], "--json",
                          "--timeout", "500")
        if done.returncode:
            raise RuntimeError(f"dtclient ended with {done.returncode}: {done.stderr}")
        return Counter((one["startTime"], one["endTime"], one["subject"], one["location"])
                       for one in json.loads(done.stdout)["appointments"])

    def problems(self):
        """Lines that say what is wrong; none when all is well."""
        found = [f"missing: {one}" for one in self.missing] + [f"unexpected: {one}" for one in self.unexpected]
        if not self.ended:
            found.append("the server did not end")
        if not self.ledger or CLEAN not in self.ledger[-1]:
            found += ["the ledger is not clean:", *self.ledger]
        return found


def compared_forms():
    return {form for form in series_forms.FORMS if form not in series_forms.SERVER_DIFFERS}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build")
    parser.add_argument("--series", type=int, default=7000)
    parser.add_argument("--seed", default="1")
    options = parser.parse_args()
    prefix = Prefix(options.build)
    series, instances, wrong, forms = 0, 0, 0, set()
    while series < options.series:
        number = series // PER_RUN + 1
        run = Run(prefix, min(PER_RUN, options.series - series), f"{options.seed}.{number}")
        problems = run.problems()
        series, instances, forms = series + run.series, instances + run.instances, forms | run.forms
        wrong += len(problems)
        print(f"run {number}: {run.series} series, {run.instances} instances, {len(problems)} problems", flush=True)
        for line in problems[:20]:
            print(f"  {line}", flush=True)
    print(f"{series} series, {instances} instances, {len(forms)} of {len(compared_forms())} rule forms, {wrong} problems")
    print("left out, read otherwise by the server: " + "; ".join(series_forms.SERVER_DIFFERS))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
