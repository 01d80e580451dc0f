"""What the built executable imports, exports and carries."""

import re
import subprocess
import sys
import unittest

EXECUTABLE = sys.argv.pop(1)
EXPORT_TABLE = sys.argv.pop(1)
OBJDUMP = "x86_64-w64-mingw32-objdump"
STRINGS = "strings"

# DLLs that every Windows of the last fifteen years has.
SYSTEM_DLLS = {
    "advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll", "psapi.dll", "shlwapi.dll",
    "shell32.dll", "user32.dll", "userenv.dll", "version.dll", "wtsapi32.dll", "mapi32.dll",
}


def private_headers():
    return subprocess.run([OBJDUMP, "-p", EXECUTABLE], check=True, capture_output=True,
                          text=True).stdout


class ExecutableTest(unittest.TestCase):
    def test_only_system_libraries_are_imported(self):
        imported = {name.lower() for name in re.findall(r"DLL Name: (\S+)", private_headers())}
        self.assertIn("kernel32.dll", imported)
        self.assertEqual(imported - SYSTEM_DLLS, set())

    def test_exactly_the_table_is_exported(self):
        with open(EXPORT_TABLE, encoding="ascii") as table:
            lines = [line.split(";")[0].strip() for line in table]
        wanted = [line.split()[0] for line in lines[lines.index("EXPORTS") + 1:] if line]
        names = private_headers().split("[Ordinal/Name Pointer] Table")[1].split("\n\n")[0]
        exported = re.findall(r"^\s*\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+\S+\s+)?(\S+)$", names, re.M)
        self.assertIn("SendTrace", exported)
        self.assertEqual(sorted(exported), sorted(wanted))

    def test_it_is_a_64_bit_windows_program_without_a_console(self):
        headers = private_headers()
        self.assertRegex(headers, r"file format pei-x86-64")
        self.assertRegex(headers, r"Subsystem\s+00000002")

    def test_it_carries_its_version(self):
        wide = subprocess.run([STRINGS, "-el", EXECUTABLE], check=True, capture_output=True,
                              text=True).stdout.split("\n")
        self.assertIn("VS_VERSION_INFO", wide)
        self.assertEqual(wide[wide.index("OriginalFilename") + 1], "dtOIEx64.exe")


if __name__ == "__main__":
    unittest.main()
