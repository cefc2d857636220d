"""What the tool asks worker processes, and how it reads encrypted jobs.

TEST_WORKER is the worker for tests, JOBPARSER_LIBRARY the library that the tool reads JSON with.
"""

import io
import json
import os
import pathlib
import pty
import shutil
import subprocess
import unittest
import zipfile

from ToolTest import DONE, FAILED, MALFORMED, NOT_PARSED, RAW, TOOL, WRONG, ToolTest, make_samples

WORKER = os.environ["TEST_WORKER"]
LIBRARY = pathlib.Path(os.environ["JOBPARSER_LIBRARY"])
PCL = b"\x1bEtext\x0c\x1bE"
REPLY = '{"monoCount":2,"grayCount":1,"colorCount":4,"copies":1,"pageWidth":2100,"pageHeight":2970}'
KEY = "00112233445566778899aabbccddeeff"
IV = "ffeeddccbbaa99887766554433221100"
CIPHER = f"aes-128-cbc:{KEY}:{IV}"


def printing(text):
    return "print " + "".join(f"%{byte:02X}" for byte in text.encode() + b"\n")


class WorkerToolTest(ToolTest):
    def worker(self, script=printing(REPLY)):
        return ["--worker", WORKER, "--worker-args", f"each log {self.folder}/requests {script}"]

    def requests(self):
        path = self.folder / "requests"
        return [json.loads(line) for line in path.read_text().splitlines()] if path.exists() else []

    def encrypted(self, name, data, cipher="aes-128-cbc", key=KEY):
        command = ["openssl", "enc", "-" + cipher, "-K", key, "-iv", IV]
        self.file(name, subprocess.run(command, input=data, stdout=subprocess.PIPE, check=True).stdout)
        return name


class Asking(WorkerToolTest):
    def record(self, *arguments, **options):
        return json.loads(self.output("meta", "job", *arguments, **options))["jobInfo"]

    def test_takes_the_answer_into_the_record(self):
        self.file("job", PCL)

        record = self.record(*self.worker())

        self.assertEqual((record["monoCount"], record["colorCount"], record["paper"]), (3, 4, 5))
        self.assertEqual(self.requests(), [{"command": "parse", "pdl": 1, "jobPath": "job", "grayscaleTolerance": 0}])

    def test_asks_nobody_if_told_so(self):
        self.file("job", PCL)

        for arguments in (["--no-worker"], ["--no-collect"]):
            self.assertIsNone(self.record(*self.worker(), *arguments)["monoCount"])
        self.assertIsNone(self.record(*self.worker(), "--worker-processes", "0")["monoCount"])
        self.assertEqual(self.requests(), [])

    def test_starts_no_worker_if_none_can_be_asked(self):
        self.file("job", PCL)
        self.run_tool("meta", "job", "--beside", "--no-worker")
        script = ["--worker", WORKER, "--worker-args", f"logpid {self.folder}/started"]

        self.output("check", "job", "--no-worker", *script)
        self.output("check", "job", "--from-meta", "job", *script)

        self.assertEqual(self.names(), ["job", "job.meta.json"])

    def test_starts_as_many_workers_as_asked_for_and_ends_them(self):
        self.file("job", RAW)
        script = ["--worker", WORKER, "--worker-args", f"logpid {self.folder}/started exit log {self.folder}/ended"]

        self.output("check", "job", *script)
        self.assertEqual(len(self.read("ended").splitlines()), 2)
        self.output("check", "job", *script, "--worker-processes", "3")

        self.assertEqual(len(self.read("started").splitlines()), 5)
        self.assertEqual(self.read("ended"), b'{"command":"exit"}\n' * 5)

    def test_sends_the_tolerance(self):
        self.file("job", PCL)

        self.record(*self.worker(), "--tolerance", "12")

        self.assertEqual(self.requests()[0]["grayscaleTolerance"], 12)

    def test_goes_on_without_an_answer_and_tells_the_log(self):
        self.file("job", PCL)
        cases = (
            (self.worker("crash"), b"The worker process died | signal=6"),
            ([*self.worker("hang"), "--deadline", "100"], b"The worker process did not answer in time"),
            (["--worker", "missing"], b"Cannot start the worker process | path=missing | error=No such file"),
        )
        for arguments, message in cases:
            with self.subTest(message):
                self.assertIsNone(self.record(*arguments)["monoCount"])
                told = self.run_tool("meta", "job", *arguments, "--log", "1")
                self.assertIn(b"Parsing via an external parser failed: " + message, told.stderr)
                self.assertEqual(told.stderr.count(b"\n"), 1)

    def test_takes_a_worker_by_a_name_in_this_folder(self):
        self.file("job", PCL)
        shutil.copy(WORKER, self.folder / "here")

        self.assertEqual(self.record("--worker", "here", "--worker-args", "each " + printing(REPLY))["monoCount"], 3)

    def test_finds_the_worker_beside_the_tool(self):
        place = self.folder / "place"
        (place / "bin").mkdir(parents=True)
        shutil.copy(TOOL, place / "bin/jobparser")
        (place / LIBRARY.parent.name).symlink_to(LIBRARY.parent)
        worker = place / "bin/ZemJobProcessor"
        worker.write_text(f"#!/bin/sh\nwhile read request; do case $request in *exit*) exit;; esac; echo '{REPLY}'; done\n")
        worker.chmod(0o755)
        self.file("job", PCL)

        for subcommand in ("info", "scan"):
            done = subprocess.run([place / "bin/jobparser", subcommand, "job"], cwd=self.folder, stdout=subprocess.PIPE)
            record = json.loads(done.stdout)

            self.assertEqual(record.get("info", record)["monoCount"], 3)

    def test_takes_only_numbers_that_make_sense(self):
        self.file("job", RAW)
        for arguments in (
            ["--worker-processes", "-1"],
            ["--worker-processes", "2x"],
            ["--deadline", "-1"],
            ["--deadline", "99999999999999999999"],
            ["--tolerance", "gray"],
            ["--worker"],
        ):
            self.run_tool("check", "job", *arguments, status=WRONG)


class Convert(WorkerToolTest):
    def test_asks_for_a_conversion(self):
        self.file("job", RAW)

        text = self.output("convert", "job", "out", "--format", "3", "--pages", "1", "--force-mono", "--width", "2",
                           "--height", "4294967295", "--dpi", "600", *self.worker(printing('{"success":true}')))

        self.assertEqual(text, b"")
        self.assertEqual(self.requests(), [{"command": "convert", "params": {
            "jobPath": "job", "outPath": "out", "conversionFormat": 3, "pageCount": 1, "forceMono": True,
            "imgBoundingBoxWidth": 2, "imgBoundingBoxHeight": 4294967295, "imgDpi": 600}}])

    def test_leaves_the_rest_to_the_worker(self):
        self.file("job", RAW)

        self.output("convert", "job", "out", "--format", "0", *self.worker(printing('{"success":true}')))

        self.assertEqual(self.requests()[0]["params"], {
            "jobPath": "job", "outPath": "out", "conversionFormat": 0, "pageCount": 0, "forceMono": False,
            "imgBoundingBoxWidth": 0, "imgBoundingBoxHeight": 0, "imgDpi": 0})

    def test_fails_with_the_worker(self):
        self.file("job", RAW)
        cases = (
            (printing('{"success":false,"errorMessage":"no"}'), b'| error={"success":false,"errorMessage":"no"}\n'),
            (printing("{}"), b"The key is missing"),
            ("crash", b"The worker process died"),
        )
        for script, message in cases:
            done = self.run_tool("convert", "job", "out", "--format", "0", *self.worker(script), status=FAILED)

            self.assert_failure_line(done, "job")
            self.assertIn(message, done.stderr)
        done = self.run_tool("convert", "job", "out", "--format", "0", "--worker", "missing", status=FAILED)
        self.assert_failure_line(done, "job")

    # Writes "made" to the file that a conversion names, and a second file beside it if that is format 1.
    MAKING = b"""#!/bin/sh
read -r request
out=$(printf %s "$request" | sed 's/.*"outPath":"\\([^"]*\\)".*/\\1/')
case $request in
*'"conversionFormat":1,'*) printf made >"$out-1" ;;
*) printf made >"$out" ;;
esac
echo '{"success":true}'
"""

    def making_worker(self):
        self.file("making", self.MAKING)
        (self.folder / "making").chmod(0o755)
        return ["--worker", str(self.folder / "making")]

    def test_copies_what_goes_to_standard_output_or_a_pipe(self):
        self.file("job", RAW)
        os.mkfifo(self.folder / "pipe")
        temporary = self.folder / "temporary"
        temporary.mkdir()
        environment = {**os.environ, "TMPDIR": str(temporary)}
        worker = self.making_worker()

        for out in ("/dev/stdout", "/dev/fd/1"):
            text = self.output("convert", "job", out, "--format", "0", *worker, env=environment)
            self.assertEqual(text, b"made", out)
        with subprocess.Popen([TOOL, "convert", "job", "pipe", "--format", "0", *worker], cwd=self.folder,
                              env=environment) as process:
            self.assertEqual((self.folder / "pipe").read_bytes(), b"made")
        self.assertEqual(process.returncode, 0)
        with open(self.folder / "file", "wb") as file:
            file.write(b"before ")
            file.flush()
            subprocess.run([TOOL, "convert", "job", "/dev/stdout", "--format", "0", *worker], cwd=self.folder,
                           env=environment, stdout=file, check=True)

        self.assertEqual((self.folder / "file").read_bytes(), b"before made")
        self.assertTrue((self.folder / "pipe").is_fifo())
        self.assertEqual(list(temporary.iterdir()), [])

    def test_refuses_to_write_several_files_to_a_device(self):
        self.file("job", RAW)

        done = self.run_tool("convert", "job", "/dev/null", "--format", "1", *self.making_worker(), status=FAILED)

        self.assert_failure_line(done, "job")
        self.assertIn(b"Several files cannot be written there | path=/dev/null", done.stderr)

    def test_tells_the_worker_how_the_job_is_encrypted(self):
        self.file("job", RAW)
        script = f"each log {self.folder}/requests arguments"

        done = self.run_tool("convert", "job", "out", "--format", "0", "--decrypt", CIPHER, "--worker", WORKER,
                             "--worker-args", script, status=FAILED)

        self.assertIn(b"The key is missing | key=success", done.stderr)
        self.assertEqual(len(self.requests()), 1)

    def test_wants_a_file_an_output_and_a_format(self):
        self.file("job", RAW)
        for arguments in (
            [],
            ["job"],
            ["job", "out"],
            ["--format", "0", "job"],
            ["--format", "0", "job", "out", "more"],
            ["--format", "pdf", "job", "out"],
            ["--format", "-1", "job", "out"],
            ["--format", "0", "--pages", "-1", "job", "out"],
            ["--format", "0", "--dpi", "4294967296", "job", "out"],
            ["--format", "0", "--no-worker", "job", "out"],
            ["--format", "0", "--pdl", "1", "job", "out"],
        ):
            with self.subTest(arguments):
                self.run_tool("convert", *arguments, status=WRONG)


class Scan(WorkerToolTest):
    """A scan in which the worker takes long over the last job."""

    SLOW = "sleep 3000 " + printing(REPLY)

    def start(self, **streams):
        self.file("spool/quick", RAW)
        self.file("spool/slow", PCL)
        tool = subprocess.Popen([TOOL, "scan", *self.worker(self.SLOW), "spool"], cwd=self.folder, **streams)
        self.addCleanup(tool.wait)
        self.addCleanup(tool.kill)
        return tool

    def setUp(self):
        super().setUp()
        (self.folder / "spool").mkdir()

    def test_gives_what_is_known_meanwhile(self):
        tool = self.start(stdout=subprocess.PIPE)
        self.addCleanup(tool.stdout.close)

        first = os.read(tool.stdout.fileno(), 65536)

        self.assertEqual(first.count(b"\n"), 1)
        self.assertTrue(first.startswith(b'{"path":"spool/quick","info"'), first)
        rest = tool.stdout.read()
        self.assertEqual(json.loads(rest)["info"]["monoCount"], 3)
        self.assertEqual(tool.wait(), 0)

    def test_shows_how_far_it_is_meanwhile(self):
        primary, secondary = pty.openpty()
        self.addCleanup(os.close, primary)
        tool = self.start(stdout=subprocess.DEVNULL, stderr=secondary)
        os.close(secondary)
        shown = b""
        while shown.count(b" 1/2 files ") < 3:
            shown += os.read(primary, 65536)

        self.assertIsNone(tool.poll())


class Decrypt(WorkerToolTest):
    def test_reads_what_openssl_encrypted(self):
        for cipher, key in (("aes-128-cbc", KEY), ("aes-256-cbc", KEY * 2), ("aes-128-ctr", KEY), ("AES-256-CTR", KEY * 2)):
            for name, make in make_samples.SAMPLES.items():
                with self.subTest(cipher=cipher, job=name):
                    self.file("plain", make())
                    self.encrypted("job", make(), cipher.lower(), key)
                    options = ["--no-worker", "--decrypt", f"{cipher}:{key}:{IV}"]

                    self.assertEqual(self.run_tool("meta", "job", *options).stdout,
                                     self.run_tool("meta", "plain", "--no-worker").stdout)
                    self.run_tool("save", "job", *options, "-o", "saved")
                    self.run_tool("save", "plain", "--no-worker", "-o", "expected")
                    self.assertEqual(self.read("saved"), self.read("expected"))

    def test_ends_jobs_of_several_views_before_the_padding(self):
        package = io.BytesIO(make_samples.xps())
        with zipfile.ZipFile(package, "a") as parts:
            parts.writestr("picture", b"x" * 5000000)
        for name, job, status in (("malformed", MALFORMED + b"x" * 5000000, NOT_PARSED),
                                  ("package", package.getvalue(), DONE)):
            with self.subTest(name):
                self.file("plain", job)
                self.encrypted("job", job)
                options = ["job", "--no-worker", "--decrypt", CIPHER]

                text = self.run_tool("meta", *options, status=status).stdout
                self.run_tool("save", *options, "-o", "saved", status=status)

                self.assertEqual(text, self.run_tool("meta", "plain", "--no-worker", status=status).stdout)
                self.assertEqual(self.read("saved"), job)

    def test_reads_folders(self):
        (self.folder / "spool").mkdir()
        samples = sorted(make_samples.SAMPLES.items())
        for name, make in samples:
            self.file("plain-" + name, make())
            self.encrypted("spool/" + name, make())
        records = [json.loads(self.output("scan", "plain-" + name, "--no-worker"))["info"] for name, _ in samples]

        for jobs in ("1", "2"):
            lines = self.output("scan", "spool", "--no-worker", "--jobs", jobs, "--decrypt", CIPHER).splitlines()
            self.assertEqual([json.loads(line)["info"] for line in lines], records)

    def test_takes_digits_of_either_case(self):
        self.encrypted("job", RAW)

        self.output("save", "job", "--no-worker", "--decrypt", f"aes-128-cbc:{KEY.upper()}:{IV.upper()}", "-o", "saved")

        self.assertEqual(self.read("saved"), RAW)

    def test_takes_an_encrypted_job_from_its_metadata(self):
        self.encrypted("job", RAW)
        self.output("meta", "job", "--decrypt", CIPHER, "--beside", "--no-worker")

        self.output("save", "job", "--decrypt", CIPHER, "--from-meta", "job", "-o", "out")

        self.assertEqual(self.read("out"), RAW)

    def test_tells_the_worker(self):
        self.encrypted("job", PCL)
        place = self.folder / "worker"
        place.write_text(f"#!/bin/sh\nprintf '%s\\n' \"$@\" > {self.folder}/told\nwhile read request; do echo \"$request\" >> asked; echo '{REPLY}'; done\n")
        place.chmod(0o755)

        text = self.output("meta", "job", "--decrypt", CIPHER, "--worker", str(place), "--worker-args", '-q "a b"',
                           "--worker-processes", "1")

        self.assertEqual(json.loads(text)["jobInfo"]["monoCount"], 3)
        *words, options = self.read("told").decode().splitlines()
        self.assertEqual(words, ["-q", "a b", "e"])
        self.assertEqual(json.loads(self.read("asked").splitlines()[0])["jobPath"], "job")
        self.assertEqual(options, '{"algorithm":1,"key":"ABEiM0RVZneImaq7zN3u/w==","iv":"/+7dzLuqmYh3ZlVEMyIRAA=="}')

    def test_fails_for_a_wrong_key(self):
        self.encrypted("job", RAW)
        wrong = CIPHER.replace("0011", "1111", 1)

        done = self.run_tool("check", "job", "--decrypt", wrong, "--no-worker", status=FAILED)

        self.assert_failure_line(done, "job")
        self.assertIn(b"The padding is wrong", done.stderr)

    def test_fails_for_a_file_of_another_size(self):
        self.file("job", RAW + b"x")

        done = self.run_tool("check", "job", "--decrypt", CIPHER, "--no-worker", status=FAILED)

        self.assertIn(b"no multiple of the cipher's blocks", done.stderr)

    def test_takes_only_what_makes_sense_and_keeps_the_key_to_itself(self):
        self.file("job", RAW)
        for text in ("", "aes-128-cbc", f"aes-128-cbc:{KEY}", f"aes-192-cbc:{KEY}:{IV}", f"aes-128-cbc:{KEY}0:{IV}",
                     f"aes-128-cbc:{KEY}00:{IV}", f"aes-256-cbc:{KEY}:{IV}", f"aes-128-cbc:{KEY}:{IV}:",
                     f"aes-128-cbc:{KEY[:-1]}g:{IV}", f"aes-128-cbc:{KEY}:{IV[2:]}"):
            with self.subTest(text):
                done = self.run_tool("check", "job", "--decrypt", text, status=WRONG)

                self.assertNotIn(KEY[4:12].encode(), done.stderr)


if __name__ == "__main__":
    unittest.main()
