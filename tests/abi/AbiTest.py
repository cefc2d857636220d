"""Compares the names that the library shows with the stored lists, and those of C with the headers.

LIBRARY is the shared library, SOURCE_DIR the sources. The layout of the structs is held by JobParserCTest.

    LIBRARY=build/dev/lib/libJobParser.so SOURCE_DIR=. tests/abi/AbiTest.py store    # writes the list of C++ anew
"""

import os
import pathlib
import re
import subprocess
import sys
import unittest

SOURCE = pathlib.Path(os.environ["SOURCE_DIR"])
STORED = (SOURCE / "tests/abi/JobParserC.symbols").read_text(encoding="utf-8").splitlines()
CPP_LIST = SOURCE / "tests/abi/JobParser.symbols"
C_NAME = re.compile(r"(?!_Z|_init$|_fini$)[A-Za-z]\w*")


def shown():
    """Name and kind of what the library shows."""
    output = subprocess.run(
        ["nm", "--dynamic", "--defined-only", "--format=posix", os.environ["LIBRARY"]], check=True, capture_output=True
    ).stdout.decode()
    return [line.split()[:2] for line in output.splitlines()]


def shown_c_names():
    return sorted(name for name, _ in shown() if C_NAME.fullmatch(name))


def shown_cpp_names():
    """Functions and data of classes. What each program may make for itself, such as templates, is left out."""
    strong = [name for name, kind in shown() if name.startswith("_Z") and kind in "TDBR"]
    output = subprocess.run(["c++filt"], input="\n".join(strong), check=True, capture_output=True, text=True).stdout
    return sorted({name for name in output.splitlines() if re.match(r"(JobParser|Pdf|Torv|Zem)::", name)})


class Names(unittest.TestCase):
    def test_of_c_are_those_that_are_stored(self):
        self.assertEqual(shown_c_names(), [line for line in STORED if not line.startswith("#")])

    def test_of_the_c_interface_are_those_of_its_header(self):
        header = (SOURCE / "JobParser/JobParserC.h").read_text(encoding="utf-8")
        declared = re.findall(r"^TORV_EXPORT .*?\b(jobParser\w+)\(", header, re.MULTILINE)

        self.assertEqual(sorted(declared), [name for name in STORED if name.startswith("jobParser")])


    @unittest.skipUnless(sys.maxsize > 2**32, "The list names the types of 64-bit systems")
    def test_of_cpp_stay(self):
        stored = [line for line in CPP_LIST.read_text(encoding="utf-8").splitlines() if not line.startswith("#")]

        self.assertGreater(len(stored), 300)
        # A new one needs no place in the list before it is promised by a version.
        self.assertEqual(sorted(set(stored) - set(shown_cpp_names())), [])


def store():
    head = (
        "# What the library shows to C++, sorted. A name stays as long as libJobParser.so.1 does; AbiTest.py writes the\n"
        "# list anew.\n"
    )
    CPP_LIST.write_text(head + "".join(name + "\n" for name in shown_cpp_names()), encoding="utf-8")


if __name__ == "__main__":
    if sys.argv[1:] == ["store"]:
        store()
    else:
        unittest.main()
