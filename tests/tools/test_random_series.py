"""The generator of random series: its files, its figures, its store."""

import glob
import json
import os
import subprocess
import sys
import unittest

from store_case import SOURCE, StoreCase

SCRIPT = os.path.join(SOURCE, "tests", "tools", "random_series.py")


class RandomSeriesTest(StoreCase):
    def run_script(self, *arguments):
        done = subprocess.run([sys.executable, SCRIPT, self.path("out"), *arguments], capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def files(self):
        found = []
        for path in sorted(glob.glob(self.path("out/*.json"))):
            with open(path, encoding="utf-8") as file:
                found.append(json.load(file))
        return found

    def test_the_files_hold_what_it_says(self):
        said = self.run_script("--series", "120", "--most", "400")
        files = self.files()
        series = sum(len(one["series"]) for one in files)
        instances = sum(len(one["instances"]) for one in files)
        self.assertEqual(said, f"{len(files)} files, {series} series, {instances} instances\n")
        self.assertEqual(series, 120)
        for one in files:
            self.assertLessEqual(len(one["instances"]), 400 if len(one["series"]) > 1 else len(one["instances"]))
            self.assertEqual(one["instances"], sorted(one["instances"]))
            self.assertTrue(all(one["window"][0] <= start <= one["window"][1] for start, *_ in one["instances"]))

    def test_the_same_seed_gives_the_same_files_and_another_one_others(self):
        self.run_script("--series", "20", "--seed", "a")
        first = self.read("out/001.ics")
        self.run_script("--series", "20", "--seed", "a")
        self.assertEqual(self.read("out/001.ics"), first)
        self.run_script("--series", "20", "--seed", "b")
        self.assertNotEqual(self.read("out/001.ics"), first)

    def test_its_store_has_a_calendar_folder_for_each_file(self):
        self.run_script("--series", "40", "--most", "300", "--store")
        with open(self.path("out/store/store.json"), encoding="utf-8") as file:
            store = json.load(file)["stores"][0]
        names = {folder["id"]: folder["name"] for folder in store["folders"]}
        classes = {folder["name"]: folder.get("class") for folder in store["folders"]}
        held = {}
        for message in store["messages"]:
            held.setdefault(names[message["folder"]], []).append(message["properties"]["PR_SUBJECT_W"])
        for number, one in enumerate(self.files(), 1):
            name = f"{number:03}"
            self.assertEqual(classes[name], "IPF.Appointment")
            self.assertEqual(sorted(held[name]), sorted(series["subject"] for series in one["series"]))


if __name__ == "__main__":
    unittest.main()
