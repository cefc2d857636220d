"""How the tool goes through files and folders."""

import json
import os
import pty
import subprocess
import threading
import unittest

from ToolTest import FAILED, MALFORMED, RAW, TOOL, UEL, WRONG, ToolTest, make_samples


class ScanTest(ToolTest):
    def folders(self, *names):
        for name in names:
            (self.folder / name).mkdir(parents=True)

    def scan(self, *arguments, status=0):
        done = self.run_tool("scan", "--no-worker", *arguments, status=status)
        return [json.loads(line) for line in done.stdout.splitlines()], done.stderr

    def paths(self, *arguments):
        lines, errors = self.scan(*arguments)
        self.assertEqual(errors, b"")
        return [line["path"] for line in lines]


class Lines(ScanTest):
    def test_hold_the_path_and_the_record(self):
        self.file("job.jpg", make_samples.jpeg())

        line = self.output("scan", "job.jpg", "--no-worker")

        record = self.output("info", "job.jpg")
        self.assertEqual(line, b'{"path":"job.jpg","info":' + record.rstrip(b"\n") + b"}\n")

    def test_hold_the_error_of_a_file_that_fails(self):
        self.file("good", RAW)

        lines, errors = self.scan("missing", "good", status=FAILED)

        self.assertEqual(lines[0], {"path": "missing",
                                    "error": "Cannot open file | path=missing | error=No such file or directory"})
        self.assertEqual(lines[1]["info"]["pdl"], 0)
        self.assertEqual(errors, b"jobparser: missing: Cannot open file | path=missing | error=No such file or directory\n")

    def test_take_a_malformed_job_as_info_does(self):
        self.file("job", MALFORMED)

        lines, errors = self.scan("job")

        self.assertIsNone(lines[0]["info"]["pdl"])
        self.assertEqual(errors, b"")

    def test_hold_names_of_any_bytes(self):
        name = os.fsdecode(b"a\xff\n\"job")
        self.file(name, RAW)

        done = self.run_tool("scan", "--no-worker", ".")

        self.assertEqual(done.stdout.count(b"\n"), 1)
        self.assertEqual(json.loads(done.stdout)["path"], "./a\uefff\n\"job")

    def test_come_in_order_on_any_number_of_threads(self):
        self.folders("spool")
        for number in range(300):
            self.file(f"spool/{number:03}", RAW * (1 + number % 7 * 5000))
        expected = [f"spool/{number:03}" for number in range(300)]

        for jobs in ("1", "2", "3", "16"):
            self.assertEqual(self.paths("--jobs", jobs, "spool"), expected)
        self.assertEqual(self.paths("spool"), expected)

    def test_are_the_same_on_any_number_of_threads(self):
        self.folders("spool")
        for number in range(300):
            comments = b"@PJL COMMENT large enough to be mapped\r\n" * (number % 50 * 200)
            self.file(f"spool/{number:03}", UEL + comments + b"@PJL SET COPIES=%d\r\n" % (number + 1))

        for jobs in ("1", "2", "3"):
            lines, _ = self.scan("--jobs", jobs, "spool")
            self.assertEqual([line["info"]["copies"] for line in lines], list(range(1, 301)))

    def test_come_as_soon_as_they_are_known(self):
        os.mkfifo(self.folder / "pipe")
        self.folders("spool")
        for number in range(5000):
            self.file(f"spool/{number}", b"")
        reader, writer = os.pipe()
        with subprocess.Popen([TOOL, "scan", "--no-worker", "spool"], cwd=self.folder, stdout=writer) as tool:
            os.close(writer)
            first = os.read(reader, 65536)
            rest = b""
            while data := os.read(reader, 65536):
                rest += data
        os.close(reader)

        self.assertTrue(first.startswith(b'{"path":"spool/0","info"'))
        self.assertEqual((first + rest).count(b"\n"), 5000)
        self.assertEqual(tool.returncode, 0)

    def test_are_those_of_the_options(self):
        self.file("job", make_samples.jpeg())

        lines, _ = self.scan("job", "--pdl", "3", "--no-collect")

        self.assertEqual(lines[0]["info"]["pdl"], 3)
        self.assertIsNone(lines[0]["info"]["colorCount"])

    def test_are_followed_by_messages_of_the_log(self):
        self.file("job", MALFORMED)

        _, errors = self.scan("job", "--log", "1")

        self.assertEqual(errors.count(b"Parsing failed at offset"), 1)


class Folders(ScanTest):
    def test_are_walked_in_the_order_of_names(self):
        self.folders("s/b/deep", "s/d", "s/empty")
        for name in ("s/c", "s/a", "s/b/2", "s/b/1", "s/b/deep/x", "s/d/z", "s/.hidden", "s/B"):
            self.file(name, RAW)

        self.assertEqual(self.paths("s"), ["s/.hidden", "s/B", "s/a", "s/b/1", "s/b/2", "s/b/deep/x", "s/c", "s/d/z"])
        self.assertEqual(self.paths("s/d/", "s/a", "s/b"), ["s/d/z", "s/a", "s/b/1", "s/b/2", "s/b/deep/x"])

    def test_of_any_number_are_walked_by_any_number_of_threads(self):
        sizes = [number * 37 % 150 if number % 3 == 0 else number % 5 for number in range(60)]
        self.folders(*(f"s/{number:02}" for number in range(60)))
        expected = [f"s/{number:02}/{name:03}" for number, size in enumerate(sizes) for name in range(size)]
        for path in expected:
            self.file(path, RAW)

        for jobs in ("1", "2", "16", "200"):
            self.assertEqual(self.paths("--jobs", jobs, "s"), expected)

    def test_give_regular_files_only(self):
        self.folders("s")
        self.file("s/job", RAW)
        os.mkfifo(self.folder / "s/pipe")
        (self.folder / "s/nowhere").symlink_to("missing")
        (self.folder / "s/device").symlink_to("/dev/null")

        self.assertEqual(self.paths("s"), ["s/job"])

    def test_are_not_left_by_links_to_folders(self):
        self.folders("s", "other")
        self.file("other/job", RAW)
        (self.folder / "s/file").symlink_to("../other/job")
        (self.folder / "s/loop").symlink_to(".")
        (self.folder / "s/other").symlink_to("../other")
        (self.folder / "named").symlink_to("other")

        self.assertEqual(self.paths("s"), ["s/file"])
        self.assertEqual(self.paths("named"), ["named/job"])

    def test_may_be_nested_deeply(self):
        path = self.folder
        for _ in range(400):
            path = path / "d"
        path.mkdir(parents=True)
        (path / "job").write_bytes(RAW)

        self.assertEqual(self.paths("d"), ["d/" * 400 + "job"])

    @unittest.skipIf(os.geteuid() == 0, "everything can be read")
    def test_that_cannot_be_read_are_told_of(self):
        self.folders("s/closed")
        self.file("s/job", RAW)
        (self.folder / "s/closed").chmod(0)

        lines, _ = self.scan("s", status=FAILED)

        self.assertEqual(lines[0], {"path": "s/closed", "error": "Cannot read folder | path=s/closed | error=Permission denied"})
        self.assertEqual(lines[1]["path"], "s/job")

    def test_that_are_empty_give_nothing(self):
        self.folders("s")

        self.assertEqual(self.paths("s"), [])


class CommandLine(ScanTest):
    def test_names_what_is_no_file(self):
        os.mkfifo(self.folder / "pipe")

        lines, _ = self.scan("pipe", status=FAILED)

        self.assertEqual(lines, [{"path": "pipe", "error": "Cannot open file | path=pipe | error=Not a regular file"}])

    def test_calls_a_wrong_one_wrong(self):
        self.file("job", RAW)
        for arguments in ([], ["job", "--jobs", "0"], ["job", "--jobs", "-1"], ["job", "--jobs", "two"],
                          ["job", "--from-meta", "job"], ["job", "-o", "out"]):
            with self.subTest(arguments):
                self.run_tool("scan", *arguments, status=WRONG)

    def test_says_what_is_missing(self):
        done = self.run_tool("scan", status=WRONG)

        self.assertEqual(done.stderr, b"jobparser: PATH is missing\nTry: jobparser scan --help\n")

    def test_fails_if_the_configuration_cannot_be_read(self):
        self.file("job", RAW)

        done = self.run_tool("scan", "job", "--config", "missing", status=FAILED)

        self.assertIn(b"Cannot read the configuration | path=missing", done.stderr)


class StandardOutput(ScanTest):
    def test_that_is_full_ends_the_scan(self):
        self.folders("s")
        for number in range(3000):
            self.file(f"s/{number}", b"")
        with open("/dev/full", "wb") as full:
            done = self.run_tool("scan", "--no-worker", "s", status=FAILED, stdout=full)

        self.assertEqual(done.stderr.count(b"\n"), 1)
        self.assertIn(b"standard output", done.stderr)


class Progress(ScanTest):
    def scan_on_terminal(self, *arguments):
        """What the scan writes to a terminal at its standard error, and to its standard output."""
        primary, secondary = pty.openpty()
        shown = []

        def read():
            while True:
                try:
                    data = os.read(primary, 65536)
                except OSError:
                    return
                if not data:
                    return
                shown.append(data)

        reader = threading.Thread(target=read)
        reader.start()
        done = subprocess.run([TOOL, "scan", "--no-worker", *arguments], cwd=self.folder, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=secondary, timeout=60)
        os.close(secondary)
        reader.join()
        os.close(primary)
        return b"".join(shown), done

    def test_is_shown_on_a_terminal_and_taken_away(self):
        self.folders("s")
        for number in range(20):
            self.file(f"s/{number}", RAW * 10000)

        shown, done = self.scan_on_terminal("s")

        self.assertRegex(shown, rb"^\r\[#*-*\] +[0-9]+%  [0-9]+/20 files  [0-9]+\.[0-9] MB/s  [-0-9]+:[-0-9]{2} left\x1b\[K")
        self.assertTrue(shown.endswith(b"\r\x1b[K"))
        self.assertEqual(done.stdout.count(b"\n"), 20)
        self.assertEqual(done.returncode, 0)

    def test_makes_room_for_errors(self):
        self.file("job", RAW)

        shown, done = self.scan_on_terminal("job", "missing")

        self.assertIn(b"\r\x1b[Kjobparser: missing: Cannot open file", shown)
        self.assertEqual(done.returncode, FAILED)

    def test_is_not_shown_if_told_so_or_elsewhere(self):
        self.file("job", RAW)

        shown, _ = self.scan_on_terminal("job", "--no-progress")

        self.assertEqual(shown, b"")
        self.assertEqual(self.scan("job")[1], b"")


if __name__ == "__main__":
    unittest.main()
