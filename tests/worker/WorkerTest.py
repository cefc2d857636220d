"""What the worker promises as a process: a line for a line, and an end in time."""

import base64
import json
import os
import pathlib
import re
import subprocess
import tempfile
import time
import unittest

WORKER = os.environ["JOBPARSER_WORKER"]
PCL = b"\x1bEtext\x0c\x1bE"


class WorkerTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def job(self, data, name="job"):
        (self.folder / name).write_bytes(data)
        return str(self.folder / name)

    def talk(self, text, *arguments, status=0):
        done = subprocess.run([WORKER, *arguments], input=text, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=120, check=False)
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stdout

    @staticmethod
    def parse(path, pdl=1):
        return json.dumps({"command": "parse", "pdl": pdl, "jobPath": path, "grayscaleTolerance": 0}).encode() + b"\n"

    def replies(self, text, *arguments):
        return [json.loads(line) for line in self.talk(text, *arguments).splitlines()]

    def test_answers_each_line_with_a_line(self):
        path = self.job(PCL)
        replies = self.replies(self.parse(path) * 3)
        self.assertEqual([reply["monoCount"] for reply in replies], [1, 1, 1])
        self.assertEqual(list(replies[0]), ["errorCode", "errorMessage", "blankCount", "monoCount", "grayCount",
                                            "colorCount", "copies", "pageWidth", "pageHeight"])

    def test_ends_by_the_command(self):
        text = b'{"command":"exit"}\n' + self.parse(self.job(PCL))
        self.assertEqual(self.talk(text), b"")

    def test_ends_with_its_input(self):
        self.assertEqual(self.talk(b""), b"")
        self.assertEqual(self.talk(b"\n\r\n"), b"")

    def test_answers_a_last_line_without_an_end(self):
        self.assertEqual(self.replies(self.parse(self.job(PCL)).rstrip())[0]["monoCount"], 1)

    def test_answers_nonsense_and_goes_on(self):
        text = b"\x00\xff\n[1\n" + b"x" * 3000000 + b"\n" + self.parse(self.job(PCL))
        replies = self.replies(text)
        self.assertEqual([reply["errorCode"] for reply in replies], [1, 1, 1, 0])

    def test_reads_encrypted_jobs(self):
        key, vector = bytes(range(16)), bytes(range(16, 32))
        plain = self.job(PCL, "plain")
        path = str(self.folder / "encrypted")
        subprocess.run(["openssl", "enc", "-aes-128-cbc", "-K", key.hex(), "-iv", vector.hex(), "-in", plain, "-out",
                        path], check=True)
        options = json.dumps({"algorithm": 1, "key": base64.b64encode(key).decode(),
                              "iv": base64.b64encode(vector).decode()})
        for text in (options, json.dumps(options)):
            self.assertEqual(self.replies(self.parse(path), "e", text)[0]["monoCount"], 1)

    def test_takes_the_requests_of_its_manual(self):
        page = (pathlib.Path(os.environ["SOURCE_DIR"]) / "docs/man/ZemJobProcessor.8").read_text(encoding="utf-8")
        path = self.job(b"%!PS\nshowpage\n")
        out = str(self.folder / "out.pdf")
        requests = [
            shown.replace(",...", ',"conversionFormat":0').replace('"pdl":N', '"pdl":2').replace(":N", ":0")
            .replace('"jobPath":"PATH"', f'"jobPath":"{path}"').replace('"outPath":"PATH"', f'"outPath":"{out}"')
            for shown in re.findall(r"^\.It Li (\{.*\})$", page, re.MULTILINE)
        ]

        replies = self.replies("\n".join(requests).encode() + b"\n")

        self.assertEqual([json.loads(request)["command"] for request in requests], ["parse", "convert", "exit"])
        self.assertEqual([replies[0]["errorCode"], replies[1]], [0, {"success": True}])
        self.assertTrue(pathlib.Path(out).read_bytes().startswith(b"%PDF-"))
        keys = set(re.findall(r"^\.Dq (\w+)", page.split("conversionFormat")[0], re.MULTILINE))
        self.assertLessEqual(keys - {"algorithm", "key", "iv", "pdl"}, set(replies[0]))

    def test_rejects_a_wrong_command_line(self):
        self.talk(b"", "--nothing", "1", status=2)
        self.assertIn(b"Usage", self.talk(b"", "--help"))

    def test_ends_jobs_without_end(self):
        path = self.job(b"%!PS\n{} loop\n")
        replies = self.replies(self.parse(path, 2) + self.parse(self.job(PCL, "good")), "--seconds", "1")
        self.assertEqual([reply["errorCode"] for reply in replies], [5, 0])

    def test_engines_print_nothing_into_the_answers(self):
        path = self.job(b"%!PS\n(noise\\n) print flush 0 0 9 9 rectfill showpage\n")
        self.assertEqual(self.replies(self.parse(path, 2))[0]["monoCount"], 1)

    def test_a_worker_that_is_killed_leaves_nothing_for_long(self):
        renderer = self.folder / "gpcl6"
        renderer.write_text(f"#!/bin/sh\necho $$ >{self.folder}/pid.new\nmv {self.folder}/pid.new {self.folder}/pid\n"
                            "exec sleep 600\n")
        renderer.chmod(0o755)
        environment = dict(os.environ, PATH=f"{self.folder}:{os.environ['PATH']}")
        out = self.folder / "out"
        out.mkdir()
        params = {"jobPath": self.job(PCL), "outPath": str(out / "a.pdf"), "conversionFormat": 0}
        request = json.dumps({"command": "convert", "params": params}).encode() + b"\n"
        process = subprocess.Popen([WORKER], stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=environment)
        process.stdin.write(request)
        process.stdin.flush()
        self.wait_for((self.folder / "pid").exists)
        process.kill()
        process.communicate()
        program = int((self.folder / "pid").read_text())

        self.wait_for(lambda: not self.runs(program))
        remains = list(out.iterdir())
        self.assertEqual(len(remains), 1)
        os.utime(remains[0], (0, 0))
        renderer.unlink()
        self.talk(request)

        self.assertEqual(list(out.iterdir()), [])

    def wait_for(self, condition):
        end = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.01)

    @staticmethod
    def runs(number):
        try:
            return ") Z " not in pathlib.Path(f"/proc/{number}/stat").read_text()
        except OSError:
            return False

    def test_leaves_no_process_behind(self):
        path = self.job(b"%!PS\nshowpage\n")
        process = subprocess.Popen([WORKER], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        process.stdin.write(self.parse(path, 2))
        process.stdin.flush()
        self.assertEqual(json.loads(process.stdout.readline())["blankCount"], 1)
        process.kill()
        # The output closes when the last process that holds it has ended.
        self.assertEqual(process.stdout.read(), b"")
        process.stdin.close()
        process.stdout.close()
        process.wait()


if __name__ == "__main__":
    unittest.main()
