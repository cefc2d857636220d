"""What the tool promises on its command line: outputs, exit statuses, and what stays at OUT.

JOBPARSER_TOOL is the tool, SAMPLES the folder of make_samples.py.
"""

import json
import os
import pathlib
import re
import resource
import shlex
import stat
import subprocess
import sys
import tempfile
import threading
import unittest

TOOL = os.environ["JOBPARSER_TOOL"]
sys.path.insert(0, os.environ["SAMPLES"])

import make_samples  # noqa: E402

UEL = b"\x1b%-12345X"
MALFORMED = UEL + b"@PJL \x01"
MALFORMED_CAUSE = b"error=GetPjlToken(): Unexpected character"
RAW = b"neither a language nor a wrapper"
DONE, FAILED, WRONG, NOT_PARSED = 0, 1, 2, 3


def has_sanitizers():
    """Whether the tool is built with them. They have a heap of their own, and need terabytes."""
    with open(TOOL, "rb") as file:
        return b"__asan_init" in file.read()


def limit_data(size):
    """Bounds the heap."""
    if not has_sanitizers():
        resource.setrlimit(resource.RLIMIT_DATA, (size, size))


def heap_parts(process):
    """The mappings of the heap in ascending order: (start, bytes in memory, flags)."""
    parts = []
    for text in re.split(r"\n(?=[0-9a-f]+-[0-9a-f]+ )", pathlib.Path(f"/proc/{process.pid}/smaps").read_text()):
        if "[heap]" in text:
            rows = dict(line.split(":", 1) for line in text.splitlines()[1:])
            parts.append((int(text.split("-")[0], 16), int(rows["Rss"].split()[0]) * 1024, rows["VmFlags"].split()))
    return parts


class ToolTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, name, data):
        (self.folder / name).write_bytes(data)
        return name

    def read(self, name):
        return (self.folder / name).read_bytes()

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())

    def run_tool(self, *arguments, status=DONE, **options):
        options.setdefault("stdout", subprocess.PIPE)
        done = subprocess.run(
            [TOOL, *arguments], cwd=self.folder, stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, timeout=60, **options
        )
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def output(self, *arguments, **options):
        done = self.run_tool(*arguments, **options)
        self.assertEqual(done.stderr, b"")
        return done.stdout

    def assert_failure_line(self, done, file):
        self.assertRegex(done.stderr, b"^jobparser: " + file.encode() + b": [^\n]+\n$")


class Info(ToolTest):
    def test_prints_the_record_and_a_line_feed(self):
        self.file("job.jpg", make_samples.jpeg())

        self.assertEqual(
            self.output("info", "job.jpg"),
            b'{"version":1,"pjl":false,"pdl":7,"paper":null,"monoCount":0,"grayCount":0,"colorCount":1,'
            b'"duplex":null,"copies":1,"forceMono":null,"stapling":null,"punching":null,"orientation":null,'
            b'"ecoMode":null,"ecoMode":null,"pagesPerSheet":null,"originalBrand":null}\n',
        )

    def test_prints_one_line_for_each_file_in_order(self):
        self.file("a", make_samples.jpeg())
        self.file("b", RAW)

        lines = self.output("info", "b", "a", "b").splitlines()

        self.assertEqual([json.loads(line)["pdl"] for line in lines], [0, 7, 0])

    def test_goes_on_behind_a_file_that_failed(self):
        self.file("good", make_samples.jpeg())

        done = self.run_tool("info", "missing", "good", status=FAILED)

        self.assertEqual(json.loads(done.stdout)["pdl"], 7)
        self.assert_failure_line(done, "missing")

    def test_takes_a_malformed_job_as_the_library_does(self):
        self.file("job", MALFORMED)

        self.assertIsNone(json.loads(self.output("info", "job"))["pdl"])

    def test_takes_file_names_as_they_stand(self):
        names = ["[a]", "[a,b]", "{}", "%%", "meta", "++", "a=b", "-", " "]
        for name in names:
            self.file(name, RAW)

        self.assertEqual(len(self.output("info", *names).splitlines()), len(names))

    def test_takes_a_name_with_a_dash_behind_two_dashes(self):
        self.file("--help", RAW)

        self.assertEqual(len(self.output("info", "--", "--help").splitlines()), 1)

    def test_takes_files_and_options_in_any_order_whatever_the_environment(self):
        self.file("job", RAW)

        text = self.output("check", "job", "--pdl", "3", env={**os.environ, "POSIXLY_CORRECT": "1"})

        self.assertEqual(text, self.output("check", "--pdl", "3", "job"))

    def test_takes_no_options(self):
        self.file("job", RAW)

        for option in (["--pdl", "1"], ["--no-worker"], ["--log", "4"], ["--no-collect"], ["-o", "out"]):
            self.run_tool("info", "job", *option, status=WRONG)

    def test_says_what_went_wrong_where_an_exception_says_little(self):
        self.file("number", UEL + b"@PJL XCPT <copies>x</copies>\r\n" + UEL)
        self.file("cut", b"%PDF-1.4\n1 0 obj")

        for arguments, message in ((["info", "number"], "A number cannot be read | error=stoi"),
                                   (["check", "cut", "--refuse-restricted"], "The job ends too early")):
            done = self.run_tool(*arguments, status=FAILED)
            self.assertEqual(done.stderr.decode(), f"jobparser: {arguments[1]}: {message}\n")
        done = self.run_tool("scan", "number", status=FAILED)
        self.assertEqual(json.loads(done.stdout), {"path": "number", "error": "A number cannot be read | error=stoi"})

    def test_keeps_a_message_on_one_line(self):
        done = self.run_tool("info", "two\nlines\x1b[31m", status=FAILED)

        self.assertEqual(done.stderr.count(b"\n"), 1)
        self.assertNotIn(b"\x1b", done.stderr)


class Meta(ToolTest):
    def test_prints_record_and_chunks_and_a_line_feed(self):
        self.file("job", RAW)

        text = self.output("meta", "job")

        self.assertTrue(text.endswith(b"}\n"))
        metadata = json.loads(text)
        self.assertEqual(list(metadata), ["jobInfo", "chunks"])
        self.assertEqual(metadata["chunks"], [{"class": "RawDataE", "id": 2, "dto": {"offset": 0, "size": len(RAW)}}])

    def test_writes_the_same_text_into_a_file(self):
        self.file("job", RAW)

        self.assertEqual(self.output("meta", "job", "-o", "out"), b"")

        self.assertEqual(self.read("out"), self.output("meta", "job"))

    def test_writes_beside_the_job(self):
        self.file("job.prn", RAW)

        self.assertEqual(self.output("meta", "job.prn", "--beside"), b"")

        self.assertEqual(self.read("job.prn.meta.json"), self.output("meta", "job.prn"))

    def test_refuses_to_replace_the_job_by_its_metadata(self):
        # A path of nine bytes is its own metadata path.
        for name in ("abcdefghi", "job.meta.json"):
            self.file(name, RAW)

            done = self.run_tool("meta", name, "--beside", status=FAILED)

            self.assert_failure_line(done, name)
            self.assertEqual(self.read(name), RAW)
            self.assertEqual(self.names(), [name])
            os.unlink(self.folder / name)

    def test_refuses_a_place_beside_that_is_a_link_to_the_job(self):
        self.file("job", RAW)
        (self.folder / "job.meta.json").symlink_to("job")

        self.run_tool("meta", "job", "--beside", status=FAILED)

        self.assertEqual(self.read("job"), RAW)

    def test_knows_a_nine_byte_path_only_by_its_length(self):
        self.file("abcdefghi", RAW)

        self.assertEqual(self.output("meta", "./abcdefghi", "--beside"), b"")

        self.assertEqual(self.names(), ["abcdefghi", "abcdefghi.meta.json"])

    def test_gives_the_text_again_from_its_metadata(self):
        for name, make in make_samples.SAMPLES.items():
            with self.subTest(name):
                self.file("job", make())
                text = self.output("meta", "job")
                self.file("job.meta.json", text)

                self.assertEqual(self.output("meta", "job", "--from-meta", "job.meta.json"), text)

    def test_takes_two_places_for_a_wrong_command_line(self):
        self.file("job", RAW)

        self.run_tool("meta", "job", "--beside", "-o", "out", status=WRONG)


class Dump(ToolTest):
    def test_prints_the_number_of_chunks_and_a_line_for_each(self):
        self.file("job", UEL + RAW)

        lines = self.output("dump", "job").splitlines()

        self.assertEqual(lines[0], b"Job parser: Dumping 2 chunks")
        self.assertEqual(len(lines), 3)


class Check(ToolTest):
    def test_prints_chunks_and_bytes(self):
        self.file("job", UEL + RAW)

        self.assertEqual(self.output("check", "job"), b"ok: 2 chunks, 41 bytes\n")

    def test_counts_every_byte_of_each_sample(self):
        for name, make in make_samples.SAMPLES.items():
            with self.subTest(name):
                self.file("job", make())

                self.assertRegex(self.output("check", "job"), b"^ok: [0-9]+ chunks, %d bytes\n$" % len(make()))

    def test_counts_a_job_of_many_chunks(self):
        page = b"%%Page: 1 1\n" + b"0 0 moveto\n" * 40
        self.file("job", b"%!PS\n" + page * 25000)

        self.assertEqual(self.output("check", "job"), b"ok: 50001 chunks, 11300005 bytes\n")

    def test_counts_a_job_of_many_chunks_where_the_heap_cannot_grow_ahead(self):
        page = b"%%Page: 1 1\n" + b"0 0 moveto\n" * 400
        self.file("job", b"%!PS\n" + page * 2500)

        text = self.output("check", "job", preexec_fn=lambda: limit_data(12 * 1024 * 1024))

        self.assertEqual(text, b"ok: 5001 chunks, 11030005 bytes\n")

    @unittest.skipIf(has_sanitizers(), "the heap is not the system's")
    @unittest.skipUnless(os.path.exists("/sys/kernel/mm/transparent_hugepage"), "the system has no large pages")
    def test_keeps_many_chunks_on_large_pages(self):
        self.file("job", b"%!PS\n" + (b"%%Page: 1 1\n" + b"0 0 moveto\n" * 40) * 25000)

        with subprocess.Popen([TOOL, "meta", "--no-worker", "job"], cwd=self.folder, stdout=subprocess.PIPE) as tool:
            # What is not read keeps the tool waiting, with its chunks made.
            tool.stdout.read(1)
            small, large = heap_parts(tool)
            tool.stdout.read()

        self.assertEqual(tool.returncode, DONE)
        self.assertNotIn("hg", small[2])
        self.assertLessEqual(small[1], 768 * 1024)
        self.assertEqual(large[0] % (2 * 1024 * 1024), 0)
        self.assertIn("hg", large[2])
        self.assertGreater(large[1], 2 * 1024 * 1024)

    def test_fails_for_metadata_of_another_job(self):
        self.file("job", RAW)
        self.file("short", b"x")
        self.run_tool("meta", "job", "--beside")

        done = self.run_tool("check", "short", "--from-meta", "job", status=FAILED)

        self.assert_failure_line(done, "short")


class Save(ToolTest):
    def test_gives_back_every_byte_of_each_sample(self):
        for name, make in make_samples.SAMPLES.items():
            with self.subTest(name):
                self.file("job", make())

                self.assertEqual(self.output("save", "job", "-o", "out"), b"")

                self.assertEqual(self.read("out"), make())

    def test_replaces_the_job_itself(self):
        self.file("job", make_samples.pcl5_in_pjl())

        self.output("save", "job", "-o", "job")

        self.assertEqual(self.read("job"), make_samples.pcl5_in_pjl())
        self.assertEqual(self.names(), ["job"])

    def test_takes_names_as_they_stand(self):
        for name in ("[a]", "{}", "info", "%%"):
            self.file(name, RAW)

            self.output("save", name, "-o", "[b]")

            self.assertEqual(self.read("[b]"), RAW)

    def test_needs_a_place(self):
        self.file("job", RAW)

        self.run_tool("save", "job", status=WRONG)

    def test_takes_bytes_from_the_file_and_chunks_from_the_metadata(self):
        self.file("job", b"ABCDEF")
        metadata = json.loads(self.output("meta", "job"))
        metadata["chunks"][0]["dto"] = {"offset": 2, "size": 3}
        self.file("job.meta.json", json.dumps(metadata).encode())

        self.output("save", "job", "-o", "out", "--from-meta", "job")

        self.assertEqual(self.read("out"), b"CDE")


class Rewrite(ToolTest):
    JOB = (
        UEL + b'@PJL JOB NAME="a" DISPLAY="b"\r\n@PJL SET QTY=1\r\n@PJL SET HOLD=ON\r\n@PJL SET QTY=2\r\n'
        b"@PJL ENTER LANGUAGE=PCL\r\n\x1bEtext\x0c\x1bE" + UEL + b'@PJL EOJ NAME="a"\r\n' + UEL
    )
    PLAIN = b"\x1bEtext\x0c\x1bE"
    PRESCRIBE = b"!R! UNIT C;EXIT;"

    def rewritten(self, *steps, job=None):
        self.file("job", self.JOB if job is None else job)

        self.assertEqual(self.output("rewrite", "job", "-o", "out", *steps), b"")

        return self.read("out")

    def assert_replaced(self, before, after, *steps, job=None):
        job = self.JOB if job is None else job
        self.assertEqual(job.count(before), 1)
        self.assertEqual(self.rewritten(*steps, job=job), job.replace(before, after))

    def test_wrap_puts_a_job_into_an_envelope(self):
        self.assertEqual(
            self.rewritten("--wrap", "pcl", 'My "job"', job=self.PLAIN),
            UEL + b'@PJL JOB NAME="My "job""\r\n@PJL ENTER LANGUAGE=PCL\r\n' + self.PLAIN + UEL
            + b'@PJL EOJ NAME="My "job""\r\n' + UEL,
        )

    def test_wrap_knows_every_language(self):
        text = self.output("rewrite", "--help")
        for word in (b"PCL", b"POSTSCRIPT", b"ESCP", b"PRESCRIBE", b"PCLXL", b"PDF", b"JPEG", b"XPS", b"URF"):
            self.assertRegex(text, b"\nLANGUAGE is .*\\b" + word + b"\\b")
            self.assertIn(b"@PJL ENTER LANGUAGE=" + word + b"\r\n", self.rewritten("--wrap", word.decode(), "a", job=RAW))

    def test_wrap_leaves_a_job_with_pjl_alone(self):
        self.assertEqual(self.rewritten("--wrap", "PCL", "a"), self.JOB)

    def test_job_param_sets_one_parameter(self):
        self.assert_replaced(b'DISPLAY="b"', b"DISPLAY=c", "--job-param", "display", "c")
        self.assert_replaced(b'"b"\r', b'"b" KEY=c=d\r', "--job-param", "KEY", "c=d")

    def test_job_name_is_all_that_is_left(self):
        self.assert_replaced(b'JOB NAME="a" DISPLAY="b"', b'JOB NAME="c"', "--job-name", "c")

    def test_set_replaces_every_value(self):
        self.assertEqual(
            self.rewritten("--set", "qty=3=4"),
            self.JOB.replace(b"@PJL SET QTY=1\r\n", b"").replace(b"SET QTY=2", b"SET qty=3=4"),
        )
        self.assertEqual(
            self.rewritten("--set-quoted", "QTY=3"),
            self.JOB.replace(b"@PJL SET QTY=1\r\n", b"").replace(b"SET QTY=2", b'SET QTY="3"'),
        )

    def test_add_replaces_the_same_value(self):
        self.assertEqual(
            self.rewritten("--add", "QTY=1"),
            self.JOB.replace(b"@PJL SET QTY=1\r\n", b"").replace(b"SET QTY=2", b"SET QTY=2\r\n@PJL SET QTY=1"),
        )
        self.assert_replaced(b"SET QTY=2", b'SET QTY=2\r\n@PJL SET QTY="3"', "--add-quoted", "QTY=3")

    def test_set_takes_an_empty_value(self):
        self.assert_replaced(b"SET QTY=2", b"SET QTY=2\r\n@PJL SET USERNAME=", "--set", "USERNAME=")

    def test_unset_removes_a_value(self):
        self.assert_replaced(b"@PJL SET QTY=2\r\n", b"", "--unset", "qty=2")
        self.assertEqual(self.rewritten("--unset", "QTY=3"), self.JOB)

    def test_unset_first_and_all_remove_by_the_start(self):
        self.assert_replaced(b"@PJL SET QTY=1\r\n", b"", "--unset-first", "Q")
        self.assertEqual(
            self.rewritten("--unset-all", "Q"),
            self.JOB.replace(b"@PJL SET QTY=1\r\n", b"").replace(b"@PJL SET QTY=2\r\n", b""),
        )
        self.assertEqual(self.rewritten("--unset-first", "q", "--unset-all", "q"), self.JOB)

    def test_finishing_writes_one_group(self):
        group = (
            b'@PJL SET PROCESSINGACTION=APPEND\r\n@PJL SET PROCESSINGTYPE="STAPLING"\r\n'
            b'@PJL SET PROCESSINGOPTION="LEFT_1PT"\r\n@PJL SET PROCESSINGBOUNDARY=MOPY\r\n'
        )
        step = ["--finishing", '"STAPLING"', '"LEFT_1PT"']

        self.assert_replaced(b"@PJL ENTER", group + b"@PJL ENTER", *step, *step)

    def test_pjl_code_decodes_its_escapes(self):
        for text, code in (
            (r"@PJL COMMENT x\r\n", b"@PJL COMMENT x\r\n"),
            (r"a\tb\\rc\\\\", b"a\tb\\rc\\\\"),
            (r"\x00\xfF\x1B1", b"\x00\xff\x1b1"),
            ("", b""),
            ("\u00e4", "\u00e4".encode()),
        ):
            with self.subTest(text):
                self.assert_replaced(b"@PJL ENTER", code + b"@PJL ENTER", "--pjl-code", text)

    def test_strip_pjl_leaves_the_body(self):
        self.assertEqual(self.rewritten("--strip-pjl"), self.PLAIN)

    def test_strip_prescribe_leaves_the_rest(self):
        job = UEL + b"@PJL SET A=1\r\n" + self.PRESCRIBE + b"text" + UEL
        self.assert_replaced(self.PRESCRIBE, b"", "--strip-prescribe", job=job)

    def test_takes_steps_in_the_order_of_the_command_line(self):
        self.assert_replaced(
            b"@PJL ENTER", b"@PJL SET A=2\r\n@PJL SET B=1\r\n@PJL ENTER", "--set", "A=1", "--set", "B=0", "--set", "A=2", "--set", "B=1"
        )
        self.assert_replaced(b"@PJL ENTER", b"b;a;@PJL ENTER", "--pjl-code", "b;", "--pjl-code", "a;")
        named = self.rewritten("--job-name", "x", "--wrap", "PCL", "y", job=self.PLAIN)
        self.assertIn(b'JOB NAME="y"', named)
        renamed = self.rewritten("--wrap", "PCL", "y", "--job-name", "x", "--set", "QTY=2", job=self.PLAIN)
        self.assertIn(b'JOB NAME="x"\r\n@PJL SET QTY=2\r\n@PJL ENTER', renamed)

    def test_takes_options_files_and_steps_in_any_order(self):
        self.file("job", self.JOB)

        self.output("rewrite", "--set", "QTY=3", "job", "--no-worker", "--unset", "HOLD=ON", "-o", "out")

        self.assertEqual(self.read("out"), self.rewritten("--set", "QTY=3", "--unset", "HOLD=ON"))

    def test_takes_arguments_that_look_like_options(self):
        self.assert_replaced(b'DISPLAY="b"', b"DISPLAY=--help", "--job-param", "DISPLAY", "--help")
        self.assert_replaced(b"SET QTY=2", b"SET QTY=2\r\n@PJL SET -o=--", "--set", "-o=--")
        self.assertIn(b'NAME="--"', self.rewritten("--wrap=PCL", "--", job=self.PLAIN))

    def test_finds_nothing_to_do_without_failing(self):
        steps = [
            "--job-name", "x", "--job-param", "A", "b", "--set", "A=b", "--set-quoted", "A=b", "--add", "A=b", "--add-quoted", "A=b",
            "--finishing", "A", "B", "--pjl-code", "x", "--unset", "A=b", "--unset-first", "A", "--unset-all", "A", "--strip-pjl",
            "--strip-prescribe",
        ]

        self.assertEqual(self.rewritten(*steps, job=RAW), RAW)

    def test_saves_the_job_where_no_step_is_given(self):
        self.assertEqual(self.rewritten(), self.JOB)

    def test_replaces_the_job_itself(self):
        self.file("job", self.JOB)

        self.output("rewrite", "job", "-o", "job", "--strip-pjl")

        self.assertEqual(self.read("job"), self.PLAIN)
        self.assertEqual(self.names(), ["job"])

    def test_meta_out_holds_the_changed_job(self):
        changed = self.rewritten("--set", "QTY=3", "--meta-out", "meta")

        metadata = self.read("meta")
        self.assertTrue(metadata.endswith(b"}\n"))
        commands = [chunk["dto"] for chunk in json.loads(metadata)["chunks"] if chunk["class"] == "PjlCmdE"]
        self.assertIn({"cmd": "SET", "param": "QTY=3"}, commands)
        # The chunks refer to the bytes of the old job.
        self.file("job.meta.json", metadata)
        self.output("save", "job", "-o", "again", "--from-meta", "job")
        self.assertEqual(self.read("again"), changed)

    def test_meta_out_of_no_steps_is_what_meta_prints(self):
        self.rewritten("--meta-out", "meta")

        self.assertEqual(self.read("meta"), self.output("meta", "job"))

    def test_takes_the_job_from_its_metadata(self):
        self.file("job", self.JOB)
        self.output("rewrite", "job", "-o", "once", "--set", "A=1", "--meta-out", "job.meta.json")

        self.output("rewrite", "job", "-o", "twice", "--set", "B=2", "--from-meta", "job")

        self.assertEqual(self.read("twice"), self.rewritten("--set", "A=1", "--set", "B=2"))

    def test_rewrites_a_malformed_job_as_one_stretch(self):
        self.file("job", MALFORMED)

        done = self.run_tool("rewrite", "job", "-o", "out", "--set", "A=1", "--meta-out", "meta", status=NOT_PARSED)

        self.assertEqual(self.read("out"), MALFORMED)
        self.assertEqual(len(json.loads(self.read("meta"))["chunks"]), 1)
        self.assertIn(MALFORMED_CAUSE, done.stderr)

    def test_leaves_nothing_behind_when_one_of_two_files_fails(self):
        self.file("job", self.JOB)
        self.file("out", b"as it was")
        for out, meta in (("out", "no/such/folder"), ("no/such/folder", "meta"), ("out", "/dev/full"), ("/dev/full", "meta")):
            done = self.run_tool("rewrite", "job", "-o", out, "--meta-out", meta, "--strip-pjl", status=FAILED)

            self.assert_failure_line(done, "job")
            self.assertEqual(self.read("out"), b"as it was")
            self.assertEqual(self.names(), ["job", "out"])

    def test_does_not_put_metadata_in_the_place_of_the_job(self):
        self.file("job", self.JOB)
        os.link(self.folder / "job", self.folder / "same")
        for meta in ("job", "./job", "same"):
            done = self.run_tool("rewrite", "job", "-o", "out", "--meta-out", meta, "--set", "A=1", status=FAILED)

            self.assertEqual(done.stderr.decode(),
                             f"jobparser: job: The metadata would replace the job | path={meta}\n")
            self.assertEqual(self.read("job"), self.JOB)
            self.assertEqual(self.names(), ["job", "same"])

    def test_writes_both_to_one_pipe_one_behind_the_other(self):
        out = self.rewritten("--set", "QTY=3", "--meta-out", "meta")

        both = self.output("rewrite", "job", "-o", "/dev/stdout", "--meta-out", "/dev/fd/1", "--set", "QTY=3")

        self.assertEqual(both, out + self.read("meta"))

    def test_fails_for_a_missing_job(self):
        self.assert_failure_line(self.run_tool("rewrite", "gone", "-o", "out", "--strip-pjl", status=FAILED), "gone")
        self.assertEqual(self.names(), [])

    def test_calls_a_wrong_command_line_wrong(self):
        self.file("job", self.JOB)
        out = ["job", "-o", "out"]
        for arguments in (
            ["job", "--strip-pjl"],
            ["-o", "out", "--strip-pjl"],
            [*out, "job", "--strip-pjl"],
            [*out, "--wrap", "NOBODY", "a"],
            [*out, "--wrap", "", "a"],
            [*out, "--wrap", "PCL"],
            [*out, "--wrap"],
            [*out, "--job-param", "NAME"],
            [*out, "--finishing", "TYPE"],
            [*out, "--job-name"],
            [*out, "--set", "QTY"],
            [*out, "--set-quoted", "QTY"],
            [*out, "--add", "QTY"],
            [*out, "--add-quoted", "QTY"],
            [*out, "--unset", "QTY"],
            [*out, "--set", ""],
            [*out, "--unset-first"],
            [*out, "--unset-all"],
            [*out, "--strip-pjl=yes"],
            [*out, "--pjl-code"],
            [*out, "--pjl-code", "a\\"],
            [*out, "--pjl-code", "\\q"],
            [*out, "--pjl-code", "\\x"],
            [*out, "--pjl-code", "\\x1"],
            [*out, "--pjl-code", "\\x1g"],
            [*out, "--pjl-code", "\\x+1"],
            [*out, "--pjl-code", "\\x-1"],
            [*out, "--pjl-code", "\\X41"],
            [*out, "--beside"],
            [*out, "--meta-out"],
            [*out, "--meta-out", "out"],
            [*out, "--unknown"],
        ):
            with self.subTest(arguments):
                done = self.run_tool("rewrite", *arguments, status=WRONG)

                self.assertEqual(done.stdout, b"")
                self.assertIn(b"Try: jobparser rewrite --help\n", done.stderr)
        self.assertEqual(self.names(), ["job"])

    def test_is_the_only_one_that_takes_steps(self):
        self.file("job", self.JOB)
        for subcommand in ("info", "meta", "dump", "check", "save"):
            for step in (["--strip-pjl"], ["--set", "A=1"], ["--meta-out", "meta"]):
                self.run_tool(subcommand, "job", *step, status=WRONG)

    def test_tells_every_step(self):
        text = self.output("rewrite", "--help")

        for step in (
            b"--wrap LANGUAGE NAME ", b"--job-param NAME VALUE ", b"--set NAME=VALUE ", b"--set-quoted NAME=VALUE ",
            b"--add NAME=VALUE ", b"--add-quoted NAME=VALUE ", b"--finishing TYPE OPTION ", b"--pjl-code TEXT ",
            b"--unset NAME=VALUE ", b"--unset-first PREFIX ", b"--unset-all PREFIX ", b"--strip-pjl ",
            b"--strip-prescribe ", b"--job-name NAME ",
        ):
            self.assertIn(b"\n  " + step, text)

    def test_teaches_by_examples_that_work(self):
        examples = re.findall(rb"^  jobparser (rewrite .*)$", self.output("rewrite", "--help"), re.MULTILINE)

        self.assertGreater(len(examples), 3)
        for example in examples:
            with self.subTest(example):
                self.file("job.prn", self.JOB)
                self.file("job.pcl", self.PLAIN)
                arguments = shlex.split(example.decode())

                self.output(*arguments)

                self.assertNotIn(self.read(arguments[3]), (self.JOB, self.PLAIN))


class Output(ToolTest):
    def test_leaves_nothing_behind_when_writing_fails(self):
        self.file("job", b"x")
        self.file("out", b"as it was")
        metadata = json.loads(self.output("meta", "job"))
        for size in (1000, -1, 2**62):
            metadata["chunks"][0]["dto"] = {"offset": 0, "size": size}
            self.file("job.meta.json", json.dumps(metadata).encode())

            done = self.run_tool("save", "job", "-o", "out", "--from-meta", "job", status=FAILED)

            self.assert_failure_line(done, "job")
            self.assertEqual(self.read("out"), b"as it was")
            self.assertEqual(self.names(), ["job", "job.meta.json", "out"])

    def test_reports_a_failed_assertion_instead_of_aborting(self):
        self.file("job", b"x")
        metadata = json.loads(self.output("meta", "job"))
        metadata["chunks"][0]["dto"] = {"offset": 1000, "size": 1}
        self.file("job.meta.json", json.dumps(metadata).encode())

        done = self.run_tool("save", "job", "-o", "out", "--from-meta", "job", status=FAILED)

        self.assertIn(b"Assertion failed: ", done.stderr)
        self.assertEqual(self.names(), ["job", "job.meta.json"])

    def test_gives_a_new_file_the_usual_permissions(self):
        self.file("job", RAW)
        for umask, mode in ((0o022, 0o644), (0o077, 0o600), (0o000, 0o666)):
            self.run_tool("save", "job", "-o", f"out{mode}", preexec_fn=lambda: os.umask(umask))

            self.assertEqual(stat.S_IMODE((self.folder / f"out{mode}").stat().st_mode), mode)

    def test_keeps_the_permissions_of_a_file_that_it_replaces(self):
        self.file("job", RAW)
        self.file("out", b"")
        for mode in (0o600, 0o666, 0o640):
            (self.folder / "out").chmod(mode)

            self.output("save", "job", "-o", "out")

            self.assertEqual(stat.S_IMODE((self.folder / "out").stat().st_mode), mode)

    def test_writes_through_a_link(self):
        self.file("job", RAW)
        (self.folder / "sub").mkdir()
        for target in ("sub/out", "job"):
            (self.folder / "link").symlink_to(target)

            self.output("save", "job", "-o", "link")

            self.assertTrue((self.folder / "link").is_symlink())
            self.assertEqual(self.read(target), RAW)
            (self.folder / "link").unlink()
        self.assertEqual(os.listdir(self.folder / "sub"), ["out"])

    def test_writes_a_device_straight(self):
        self.file("job", RAW)

        self.output("save", "job", "-o", "/dev/null")

        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))

    def test_writes_a_pipe_straight(self):
        self.file("job", RAW)
        os.mkfifo(self.folder / "pipe")
        got = []
        reader = threading.Thread(target=lambda: got.append(self.read("pipe")))
        reader.start()

        self.output("save", "job", "-o", "pipe")

        reader.join()
        self.assertEqual(got, [RAW])
        self.assertEqual(self.names(), ["job", "pipe"])

    def test_adds_to_what_standard_output_writes(self):
        self.file("job", RAW)
        with open(self.folder / "out", "wb") as out:
            out.write(b"before ")
            out.flush()
            self.run_tool("save", "job", "-o", "/dev/stdout", stdout=out)

        self.assertEqual(self.read("out"), b"before " + RAW)

    def test_fails_where_nothing_can_be_written(self):
        self.file("job", RAW)
        for place in ("no/such/folder", ".", "job/inside", "x" * 300):
            done = self.run_tool("save", "job", "-o", place, status=FAILED)

            self.assert_failure_line(done, "job")
        self.assertEqual(self.names(), ["job"])

    def test_takes_the_longest_name(self):
        self.file("job", RAW)

        self.output("save", "job", "-o", "x" * 255)

        self.assertEqual(self.read("x" * 255), RAW)

    def test_fails_when_standard_output_is_full(self):
        self.file("job", RAW)
        for subcommand in ("info", "meta", "dump", "check"):
            with self.subTest(subcommand), open("/dev/full", "wb") as full:
                done = self.run_tool(subcommand, "job", status=FAILED, stdout=full)

                self.assert_failure_line(done, "job")

    def test_fails_when_the_reader_went_away(self):
        self.file("job", RAW)
        reader, writer = os.pipe()
        os.close(reader)
        with os.fdopen(writer, "wb") as pipe:
            self.run_tool("info", "job", status=FAILED, stdout=pipe)

    def test_fails_when_standard_output_is_closed(self):
        self.file("job", RAW)

        self.run_tool("meta", "job", status=FAILED, preexec_fn=lambda: os.close(1))

        self.assertEqual(self.read("job"), RAW)

    def test_keeps_messages_out_of_the_file_when_standard_error_is_closed(self):
        self.file("job", MALFORMED)

        self.run_tool("save", "job", "-o", "out", status=NOT_PARSED, preexec_fn=lambda: os.close(2))

        self.assertEqual(self.read("out"), MALFORMED)

    def test_writes_metadata_in_few_calls(self):
        self.file("job", b"\x1b%-12345X" * 20000)
        reader, writer = os.pipe()
        os.set_blocking(reader, False)
        sizes = []
        with subprocess.Popen([TOOL, "meta", "job"], cwd=self.folder, stdout=writer) as tool:
            os.close(writer)
            os.set_blocking(reader, True)
            while data := os.read(reader, 1 << 20):
                sizes.append(len(data))
        os.close(reader)

        self.assertEqual(tool.returncode, DONE)
        self.assertGreater(sum(sizes), 500000)
        self.assertGreater(sum(sizes) / len(sizes), 4096)


class MalformedJob(ToolTest):
    def test_ends_with_its_own_status_and_still_gives_the_output(self):
        self.file("job", MALFORMED)

        saved = self.run_tool("save", "job", "-o", "out", status=NOT_PARSED)
        checked = self.run_tool("check", "job", status=NOT_PARSED)
        dumped = self.run_tool("dump", "job", status=NOT_PARSED)
        meta = self.run_tool("meta", "job", status=NOT_PARSED)

        self.assertEqual(self.read("out"), MALFORMED)
        self.assertEqual(checked.stdout, b"ok: 1 chunks, 15 bytes\n")
        self.assertEqual(len(dumped.stdout.splitlines()), 2)
        self.assertEqual(len(json.loads(meta.stdout)["chunks"]), 1)
        for done in (saved, checked, dumped, meta):
            self.assertIn(MALFORMED_CAUSE, done.stderr)
            self.assertEqual(done.stderr.count(b"\n"), 1)

    def test_tells_the_cause_once_whatever_is_logged(self):
        self.file("job", MALFORMED)
        for level in ("0", "1", "3", "4"):
            done = self.run_tool("check", "job", "--log", level, status=NOT_PARSED)

            self.assertEqual(done.stderr.count(MALFORMED_CAUSE), 1)

    def test_is_a_plain_failure_if_the_output_fails(self):
        self.file("job", MALFORMED)

        self.run_tool("save", "job", "-o", "no/such/folder", status=FAILED)

    def test_is_none_when_the_job_comes_from_its_metadata(self):
        self.file("job", MALFORMED)
        self.run_tool("meta", "job", "--beside", status=NOT_PARSED)

        self.assertEqual(self.output("check", "job", "--from-meta", "job"), b"ok: 1 chunks, 15 bytes\n")


class ParsingOptions(ToolTest):
    def record(self, *arguments):
        return json.loads(self.output("meta", "job", *arguments))["jobInfo"]

    def test_pdl_names_the_language(self):
        self.file("job", RAW)

        self.assertEqual(self.record()["pdl"], 0)
        self.assertEqual(self.record("--pdl", "-1")["pdl"], 0)
        self.assertEqual(self.record("--pdl", "3")["pdl"], 3)
        self.assertEqual(self.record("--pdl=9")["pdl"], 9)

    def test_no_collect_clears_the_counts(self):
        self.file("job", make_samples.jpeg())

        self.assertEqual(self.record()["colorCount"], 1)
        self.assertIsNone(self.record("--no-collect")["colorCount"])

    def test_no_worker_changes_nothing_here(self):
        self.file("job", make_samples.jpeg())

        self.assertEqual(self.record("--no-worker"), self.record())

    def test_log_shows_levels_up_to_the_one_given(self):
        self.file("job", RAW)

        quiet = self.run_tool("check", "job", "--log", "3")
        loud = self.run_tool("check", "job", "--log", "4")

        self.assertEqual(quiet.stderr, b"")
        self.assertIn(b"Job info PDL: ", loud.stderr)
        self.assertEqual(loud.stdout, b"ok: 1 chunks, %d bytes\n" % len(RAW))

    def test_config_must_be_readable(self):
        self.file("job", RAW)

        done = self.run_tool("meta", "job", "--config", "missing.ini", status=FAILED)

        self.assert_failure_line(done, "job")

    def test_config_adds_names_of_papers(self):
        self.file("job", UEL + b"@PJL SET PAPER=OFFICE\r\n" + UEL)
        self.file("papers.ini", b"[JobParser]\naliasA3 = Office\n")

        self.assertEqual(self.record("--config", "papers.ini")["paper"], 6)
        self.assertNotEqual(self.record()["paper"], 6)

    def test_from_meta_must_be_readable_metadata(self):
        self.file("job", RAW)
        self.file("broken.meta.json", b"{")

        for metadata in ("missing", "broken.meta.json"):
            done = self.run_tool("check", "job", "--from-meta", metadata, status=FAILED)

            self.assertIn(b"Error while reading job metadata.", done.stderr)

    def test_from_meta_still_needs_the_file(self):
        self.file("job", RAW)
        self.run_tool("meta", "job", "--beside")

        done = self.run_tool("meta", "gone", "--from-meta", "job", status=FAILED)

        self.assert_failure_line(done, "gone")

    def test_a_missing_job_is_a_failure(self):
        for arguments in (["meta"], ["dump"], ["check"], ["save", "-o", "out"], ["rewrite", "-o", "out"]):
            done = self.run_tool(*arguments, "missing", status=FAILED)

            self.assert_failure_line(done, "missing")
        self.assertEqual(self.names(), [])

    def test_a_folder_or_a_pipe_is_no_job(self):
        (self.folder / "folder").mkdir()
        os.mkfifo(self.folder / "pipe")
        for name in ("folder", "pipe"):
            self.assert_failure_line(self.run_tool("check", name, status=FAILED), name)


class CommandLine(ToolTest):
    def test_tells_its_version(self):
        self.assertRegex(self.output("--version"), rb"^jobparser [0-9]+\.[0-9]+\.[0-9]+\n$")

    def test_tells_what_there_is(self):
        text = self.output("--help")

        for word in (b"info", b"meta", b"dump", b"check", b"save", b"rewrite", b"Exit status"):
            self.assertIn(word, text)

    def test_tells_what_each_subcommand_takes(self):
        asking = {b"--worker", b"--worker-args", b"--worker-processes", b"--deadline", b"--tolerance", b"--decrypt"}
        walking = asking | {b"--pdl", b"--no-collect", b"--refuse-restricted", b"--no-worker", b"--config", b"--log"}
        options = walking | {b"--from-meta"}
        others = {b"-o", b"--beside", b"--meta-out", b"--jobs", b"--no-progress", b"--format", b"--pages"}
        for subcommand, taken in {
            "info": set(),
            "scan": walking | {b"--jobs", b"--no-progress"},
            "convert": asking | {b"--format", b"--pages"},
            "meta": options | {b"-o", b"--beside"},
            "dump": options,
            "check": options,
            "save": options | {b"-o"},
            "rewrite": options | {b"-o", b"--meta-out"},
        }.items():
            text = self.output(subcommand, "--help")

            self.assertIn(b"Usage: jobparser " + subcommand.encode(), text)
            told = {word for word in options | others if b"  " + word + b" " in text}
            self.assertEqual(told, taken)

    def test_names_the_option_that_there_is_not(self):
        for arguments, name in ((["--unknown"], b"--unknown\n"), (["-xy", "job"], b"-x\n"), (["--unknown=1"], b"--unknown=1\n")):
            self.assertIn(b"There is no such option: " + name, self.run_tool("meta", *arguments, status=WRONG).stderr)

    def test_calls_a_wrong_one_wrong(self):
        self.file("job", RAW)
        for arguments in (
            [],
            ["unknown", "job"],
            ["info"],
            ["meta"],
            ["meta", "job", "job"],
            ["check", "job", "--beside"],
            ["check", "job", "-o", "out"],
            ["check", "job", "--unknown"],
            ["check", "job", "--pdl", "many"],
            ["check", "job", "--pdl"],
            ["check", "job", "--pdl", "99999999999"],
            ["check", "job", "--log", "3x"],
            ["check", "job", "--beside=yes"],
            ["check", "job", "--no-worker=yes"],
            ["save", "job", "-o"],
            ["save", "job", "-x"],
            ["check", "job", "--log", "-1"],
            ["check", "job", "--config"],
            ["--version", "job"],
        ):
            with self.subTest(arguments):
                done = self.run_tool(*arguments, status=WRONG)

                self.assertEqual(done.stdout, b"")
                self.assertNotEqual(done.stderr, b"")
        self.assertEqual(self.names(), ["job"])

    def test_says_that_help_and_version_stand_alone(self):
        for option in ("--help", "--version"):
            done = self.run_tool(option, "info", status=WRONG)

            self.assertEqual(done.stderr.decode(), f"jobparser: {option} stands alone\nTry: jobparser --help\n")


if __name__ == "__main__":
    unittest.main()
