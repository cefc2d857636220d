"""docs/rewriting.md: each command and each piece of C++ does to a job what its heading says.

DOCUMENT is the file, JOBPARSER_TOOL the tool, REWRITING_TASKS and REWRITING_PROGRAM what was built from it.
"""

import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import rewriting_document

TOOL = pathlib.Path(os.environ["JOBPARSER_TOOL"])
PROGRAM = os.environ["REWRITING_PROGRAM"]
TASKS = os.environ["REWRITING_TASKS"]
DOCUMENT = os.environ["DOCUMENT"]

UEL = b"\x1b%-12345X"
BODY = b"\x1bEtext\x0c\x1bE"
HEAD = (
    b'@PJL JOB NAME="Secret" DISPLAY="Secret of alice"\r\n'
    b"@PJL SET COPIES=9\r\n"
    b"@PJL SET HOLD=OFF\r\n"
    b'@PJL SET JOBATTR="JobAcct1=alice"\r\n'
    b'@PJL SET JOBATTR="JobAcct9=old"\r\n'
    b'@PJL SET PROCESSINGACTION=APPEND\r\n@PJL SET PROCESSINGTYPE="STAPLING"\r\n'
    b'@PJL SET PROCESSINGOPTION="RIGHT_1PT"\r\n@PJL SET PROCESSINGBOUNDARY=MOPY\r\n'
)
ENTER = b"@PJL ENTER LANGUAGE=PCL\r\n"
TAIL = UEL + b'@PJL EOJ NAME="Secret"\r\n' + UEL
JOB = UEL + HEAD + ENTER + BODY + b"!R! UNIT C;EXIT;" + TAIL


def changed(*pairs, added=b""):
    """The job with texts replaced, each of which stands there once, and lines added before ENTER."""
    job = JOB
    for before, after in pairs:
        if job.count(before) != 1:
            raise AssertionError(before)
        job = job.replace(before, after)
    return job.replace(ENTER, added + ENTER)


def wrapped(*lines):
    return UEL + b'@PJL JOB NAME="Report"\r\n' + b"".join(lines) + ENTER + BODY + UEL + b'@PJL EOJ NAME="Report"\r\n' + UEL


# What each task makes of the job, and what is reported of it then.
EXPECTED = [
    (
        "Hold a job until its PIN is typed",
        changed(
            (b"@PJL SET HOLD=OFF\r\n", b""),
            added=b'@PJL SET HOLD=ON\r\n@PJL SET HOLDTYPE=PRIVATE\r\n@PJL SET HOLDKEY=1234\r\n@PJL SET USERNAME="alice"\r\n',
        ),
        {},
    ),
    (
        "Add an accounting code",
        changed((b'@PJL SET JOBATTR="JobAcct9=old"\r\n', b""), added=b'@PJL SET JOBATTR="JobAcct9=4711"\r\n'),
        {},
    ),
    ("Force both sides", changed(added=b"@PJL SET DUPLEX=ON\r\n@PJL SET BINDING=LONGEDGE\r\n"), {"duplex": 1}),
    ("Force black and white", changed(added=b"@PJL SET RENDERMODE=GRAYSCALE\r\n"), {"forceMono": True}),
    ("Set the number of copies", changed((b"@PJL SET COPIES=9\r\n", b""), added=b"@PJL SET QTY=3\r\n"), {"copies": 3}),
    ("Staple", changed((b"RIGHT_1PT", b"LEFT_1PT")), {"stapling": 1}),
    ("Strip a vendor's envelope", BODY, {"pjl": False, "pdl": 1}),
    ("Replace a vendor's envelope", wrapped(), {"pjl": True, "pdl": 1}),
    ("Wrap a job that has no PJL", wrapped(b"@PJL SET COPIES=2\r\n"), {"pjl": True, "pdl": 1, "copies": 2}),
    ("Rename", changed((b'JOB NAME="Secret" DISPLAY="Secret of alice"', b'JOB NAME="Report"')), {}),
    ("Rename", changed((b'JOB NAME="Secret"', b'JOB NAME="Report"')), {}),
    ("Insert any PJL", changed(added=b"@PJL COMMENT checked by the host\r\n"), {}),
]


class Document(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "job.prn").write_bytes(JOB)
        (self.folder / "raw.prn").write_bytes(BODY)
        self.program, self.tasks = rewriting_document.read(DOCUMENT)

    def run_here(self, *command, **options):
        environment = {**os.environ, "PATH": f"{TOOL.parent}:{os.environ['PATH']}"}
        done = subprocess.run(command, cwd=self.folder, env=environment, stderr=subprocess.PIPE, timeout=60, **options)
        self.assertEqual((done.returncode, done.stderr), (0, b""), command)
        return done

    def taken(self, name):
        data = (self.folder / name).read_bytes()
        os.unlink(self.folder / name)
        return data

    def record(self, data):
        (self.folder / "result").write_bytes(data)
        return json.loads(self.run_here(TOOL, "info", "result", stdout=subprocess.PIPE).stdout)

    def test_has_the_tasks_that_are_tested(self):
        self.assertEqual([heading for heading, _, _ in self.tasks], [heading for heading, _, _ in EXPECTED])

    def test_commands_do_what_they_say(self):
        for (heading, command, _), (_, expected, _) in zip(self.tasks, EXPECTED):
            with self.subTest(heading):
                self.run_here("sh", "-e", "-c", command)

                self.assertEqual(self.taken("out.prn"), expected)

    def test_lines_of_cpp_do_the_same(self):
        for number, (heading, command, _) in enumerate(self.tasks):
            with self.subTest(heading):
                source = re.search(r"rewrite (\S+)", command).group(1)
                self.run_here(TASKS, source, "out.prn", str(number))

                self.assertEqual(self.taken("out.prn"), EXPECTED[number][1])

    def test_program_runs_as_it_stands_there(self):
        self.run_here(PROGRAM, "job.prn", "out.prn")

        self.assertEqual(self.taken("out.prn"), EXPECTED[0][1])

    def test_results_report_what_was_asked(self):
        for heading, expected, facts in EXPECTED:
            with self.subTest(heading):
                record = self.record(expected)

                self.assertEqual({name: record[name] for name in facts}, facts)

    def test_stored_metadata_serves_a_later_change(self):
        text = pathlib.Path(DOCUMENT).read_text(encoding="utf-8")
        commands = "\n".join(re.findall(r"^      (jobparser .*)$", text, re.MULTILINE))

        self.run_here("sh", "-e", "-c", commands)

        self.assertEqual(self.taken("first.prn"), changed(added=b"@PJL SET QTY=2\r\n"))
        self.assertEqual(
            self.taken("second.prn"), changed((b"@PJL SET HOLD=OFF\r\n", b""), added=b"@PJL SET QTY=2\r\n@PJL SET HOLD=ON\r\n")
        )


if __name__ == "__main__":
    unittest.main()
