"""The folder on the disk: damaged documents, power cuts, several writers at once."""

import json
import os
import random
import signal
import subprocess
import sys
import unittest

from store_case import SOURCE, TOOL_FOLDER, StoreCase

from dtstore_lib import document, model
from dtstore_lib.problem import Problem

KILLS = 1000
WRITER = f"""
import sys
sys.path.insert(0, {TOOL_FOLDER!r})
from dtstore_lib import document, model
folder = document.StoreFolder(sys.argv[1])
print("ready", flush=True)
for number in range(int(sys.argv[3])):
    with folder.writing() as held:
        store = held["stores"][0]
        name = folder.keep_file((sys.argv[2] + str(number)).encode() * 2000, ".txt")
        model.add_message(held, store, store["folders"][-2], {{"class": "IPM.Note", "properties": {{
            "PR_SUBJECT_W": sys.argv[2] + " " + str(number), "PR_BODY_W": {{"file": name}}}}}})
"""


def sound_document():
    return model.new_document("Ada Quist", "ada.quist@nordlys.example")


class DamagedTest(StoreCase):
    def problem(self, text):
        self.write("s/store.json", text)
        with self.assertRaises(Problem) as caught:
            document.StoreFolder(self.path("s")).read()
        return str(caught.exception).replace(self.path("s"), "S")

    def changed(self, change):
        held = sound_document()
        change(held)
        return self.problem(document.to_text(held))

    def test_a_folder_without_a_document_is_told_with_the_way_out(self):
        os.mkdir(self.path("s"))
        with self.assertRaisesRegex(Problem, "is no store.*dtstore new"):
            document.StoreFolder(self.path("s")).read()

    def test_a_break_in_the_text_is_told_with_line_and_column(self):
        self.assertEqual(self.problem('{\n "format": "mapistore",\n "version" 1\n}'),
                         "S/store.json:3:12: Expecting ':' delimiter")

    def test_an_empty_document_is_told(self):
        self.assertEqual(self.problem(""), "S/store.json:1:1: Expecting value")

    def test_a_mark_at_the_beginning_is_told(self):
        self.assertIn("S/store.json:1:1: begins with a byte order mark", self.problem(b"\xef\xbb\xbf{}"))

    def test_bytes_that_are_no_text_are_told_with_the_line(self):
        self.assertEqual(self.problem(b'{\n"format": "\xff"}'), "S/store.json:2: not UTF-8 text")

    def test_a_key_that_stands_twice_is_told_with_the_line_of_the_second(self):
        self.assertIn("S/store.json:4: the key 'version' stands twice",
                      self.problem('{\n"format": "mapistore",\n"version": 1,\n"version": 1\n}'))

    def test_a_word_that_is_no_value_is_refused(self):
        self.assertIn("S/store.json:2", self.problem('{\n"version": NaN}'))

    def test_nesting_without_end_is_refused(self):
        self.assertIn("nested too deeply", self.problem("[" * 200000))

    def test_every_kind_of_wrong_content_is_told_with_its_place(self):
        def store(held):
            return held["stores"][0]

        def message(**fields):
            def change(held):
                full = {"id": model.take_id(held), "folder": store(held)["folders"][2]["id"], "class": "IPM.Note",
                        "properties": {}, **fields}
                store(held)["messages"].append(full)
            return change

        cases = (
            (lambda d: d.update(format="x"), "format: expected \"mapistore\""),
            (lambda d: d.update(version=2), "version: version 2 is not known"),
            (lambda d: d.pop("nextId"), "document: nextId is missing"),
            (lambda d: d.update(nextId=3), "nextId: must lie above every id"),
            (lambda d: d.update(extra=1), "extra: unknown key"),
            (lambda d: d.update(profiles={}), "profiles: expected an array"),
            (lambda d: d["profiles"][0].update(identity=999), "profiles[0].identity: there is no entry 999"),
            (lambda d: d["profiles"].append({"name": "DEMO", "stores": []}), "profiles[1].name: there is another"),
            (lambda d: store(d).update(uid="12"), "stores[0].uid: expected 32 hexadecimal digits"),
            (lambda d: store(d)["folders"][3].update(role="outbox2"), "stores[0].folders[3].role: unknown role"),
            (lambda d: store(d)["folders"][4].update(role="inbox"), "stores[0].folders[4].role: folder 4 has this role"),
            (lambda d: store(d)["folders"][3].update(parent=77), "stores[0].folders[3].parent: there is no 77"),
            (lambda d: store(d)["folders"][1].update(parent=5), "leads back to itself"),
            (lambda d: store(d)["folders"][3].update(id=4), "stores[0].folders[3].id: 4 is taken by a folder"),
            (lambda d: store(d)["folders"][0].update(parent=3), "expected one folder without a parent, found 0"),
            (message(folder=99), "stores[0].messages[0].folder: the store has no folder 99"),
            (message(properties={"PR_X": 1}), "stores[0].messages[0].properties.PR_X: unknown property"),
            (message(properties={"PR_ENTRYID": "00"}), "properties.PR_ENTRYID: is made by the library"),
            (message(properties={"PR_SUBJECT": "a", "PR_SUBJECT_A": "b"}), "names the same property as PR_SUBJECT"),
            (message(properties={"PR_BODY_W": {"file": "files/none.txt"}}), "there is no file files/none.txt"),
            (message(properties={"PR_SENTMAIL_ENTRYID": {"folder": 99}}), "PR_SENTMAIL_ENTRYID: there is no folder 99"),
            (message(recipients=[{"PR_DISPLAY_NAME_W": "a"}]), "recipients[0]: PR_RECIPIENT_TYPE is missing"),
            (message(attachments=[{"properties": {}}]), "attachments[0].properties: PR_ATTACH_METHOD is missing"),
            (message(attachments=[{"properties": {"PR_ATTACH_METHOD": 5}}]), "an embedded message stands only and always"),
            (lambda d: d["namedIds"].update({"PS_MAPI:0x1": "0x7000"}), "namedIds.PS_MAPI:0x1: expected 0x8000 to 0xFFFE"),
            (lambda d: d["namedIds"].update({"PS_MAPI:0x1": "0x8001", "PS_MAPI:0x2": "0x8001"}), "belongs to PS_MAPI:0x1"),
            (lambda d: d["addressBook"]["entries"][0].update(containers=[500]), "there is no container 500"),
            (lambda d: d["addressBook"]["containers"][0].update(parent=900), "containers[0].parent: there is no 900"),
        )
        for change, text in cases:
            told = self.changed(change)
            self.assertIn(text, told)
            self.assertRegex(told, r"^S/store\.json:\d+:\d+: ")

    def test_the_line_of_a_finding_is_the_line_of_its_value(self):
        held = sound_document()
        held["stores"][0]["folders"][2]["hidden"] = "yes"
        text = document.to_text(held)
        line = next(n for n, one in enumerate(text.splitlines(), 1) if '"hidden"' in one)
        self.assertIn(f"S/store.json:{line}:", self.problem(text))

    def test_nothing_is_written_when_the_change_is_wrong(self):
        folder = document.StoreFolder(self.path("s"))
        folder.create(sound_document())
        before = self.read("s/store.json")
        with self.assertRaisesRegex(Problem, "nothing was written"), folder.writing() as held:
            held["stores"][0]["messages"].append({"id": "x"})
        self.assertEqual(self.read("s/store.json"), before)

    def test_nothing_is_written_when_the_work_fails(self):
        folder = document.StoreFolder(self.path("s"))
        folder.create(sound_document())
        before = self.read("s/store.json")
        with self.assertRaises(ZeroDivisionError), folder.writing() as held:
            held["stores"][0]["name"] = "other"
            raise ZeroDivisionError
        self.assertEqual(self.read("s/store.json"), before)


class WritingTest(StoreCase):
    def setUp(self):
        super().setUp()
        self.store = document.StoreFolder(self.path("s"))
        self.store.create(sound_document())
        self.rounds = 0

    def writer(self, name, count):
        process = subprocess.Popen([sys.executable, "-c", WRITER, self.path("s"), name, str(count)], cwd=SOURCE,
                                   stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        self.assertEqual(process.stdout.readline(), "ready\n")
        return process

    def subjects(self):
        held = self.store.read()
        return sorted(message["properties"]["PR_SUBJECT_W"] for message in held["stores"][0]["messages"])

    def test_several_writers_at_once_lose_nothing(self):
        writers = [self.writer(name, 15) for name in "abcd"]
        for writer in writers:
            self.assertEqual(writer.wait(), 0)
        self.assertEqual(self.subjects(), sorted(f"{name} {n}" for name in "abcd" for n in range(15)))
        self.assertEqual(self.store.document["revision"], 61)
        self.assertEqual(self.store.left_over(), [])

    def test_a_kill_at_any_moment_leaves_a_whole_store(self):
        rng = random.Random(3)
        last = 1
        for _ in range(KILLS):
            child = self.forked_writer()
            # Where in its work it is hit is left to chance: after so many turns of reading the folder.
            for _ in range(rng.randrange(1500)):
                os.listdir(self.path("s"))
            os.kill(child, signal.SIGKILL)
            os.waitpid(child, 0)
            held = self.store.read()  # checks every value and every file that is named
            self.assertGreaterEqual(held["revision"], last)
            self.assertEqual(len(held["stores"][0]["messages"]), held["revision"] - 1)
            last = held["revision"]
            if last > 40:
                with self.store.writing() as fresh:
                    fresh["stores"][0]["messages"] = []
                    fresh["revision"] = 0
                self.store.clean()
                self.rounds += 1
                last = 1
        self.assertGreater(self.rounds * 40 + last, 200)
        self.store.clean()
        self.assertEqual(self.store.left_over(), [])

    def forked_writer(self):
        """A process that writes until it is killed; started without a new interpreter."""
        child = os.fork()
        if child == 0:
            number = 0
            try:
                while True:
                    number += 1
                    with self.store.writing() as held:
                        store = held["stores"][0]
                        name = self.store.keep_file(str(number).encode() * 500, ".txt")
                        model.add_message(held, store, store["folders"][2], {
                            "class": "IPM.Note", "properties": {"PR_BODY_W": {"file": name}}})
            finally:
                os._exit(1)
        return child

    def test_a_file_is_kept_once_however_often_it_is_given(self):
        first, second = (self.store.keep_file(b"same", ".bin") for _ in range(2))
        self.assertEqual(first, second)
        self.assertEqual(self.store.file_bytes(first), b"same")

    def test_what_a_crash_leaves_is_found_and_cleaned(self):
        self.write("s/store.json.77.new", "{")
        self.write("s/files/abandoned.bin", "x")
        self.store.read()
        self.assertEqual(self.store.left_over(), ["files/abandoned.bin", "store.json.77.new"])
        self.store.clean()
        self.assertEqual(os.listdir(self.path("s/files")), [])

    def test_a_second_store_in_one_folder_is_refused(self):
        with self.assertRaisesRegex(Problem, "holds a store already"):
            document.StoreFolder(self.path("s")).create(sound_document())

    def test_very_many_messages_stand_one_a_line_and_read_the_same(self):
        with self.store.writing() as held:
            store = held["stores"][0]
            for number in range(document.LINE_PER_MESSAGE):
                model.add_message(held, store, store["folders"][2], {
                    "class": "IPM.Note", "properties": {"PR_SUBJECT_W": f'"{number}" @messages 0@'}})
        text = self.read("s/store.json")
        self.assertEqual(json.loads(text), self.store.read())
        self.assertLess(text.count("\n"), document.LINE_PER_MESSAGE + 200)


if __name__ == "__main__":
    unittest.main()
