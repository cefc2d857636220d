"""Compares the C names of the library with the stored list, and both with the headers.

LIBRARY is the shared library, SOURCE_DIR the sources. The layout of the structs is held by JobParserCTest.
"""

import os
import pathlib
import re
import subprocess
import unittest

SOURCE = pathlib.Path(os.environ["SOURCE_DIR"])
STORED = (SOURCE / "tests/abi/JobParserC.symbols").read_text(encoding="utf-8").splitlines()
C_NAME = re.compile(r"(?!_Z|_init$|_fini$)[A-Za-z]\w*")


def shown_names():
    output = subprocess.run(
        ["nm", "--dynamic", "--defined-only", "--format=posix", os.environ["LIBRARY"]], check=True, capture_output=True
    ).stdout.decode()
    return sorted(name for name in (line.split()[0] for line in output.splitlines()) if C_NAME.fullmatch(name))


class Names(unittest.TestCase):
    def test_are_those_that_are_stored(self):
        self.assertEqual(shown_names(), [line for line in STORED if not line.startswith("#")])

    def test_of_the_c_interface_are_those_of_its_header(self):
        header = (SOURCE / "JobParser/JobParserC.h").read_text(encoding="utf-8")
        declared = re.findall(r"^TORV_EXPORT .*?\b(jobParser\w+)\(", header, re.MULTILINE)

        self.assertEqual(sorted(declared), [name for name in STORED if name.startswith("jobParser")])


if __name__ == "__main__":
    unittest.main()
