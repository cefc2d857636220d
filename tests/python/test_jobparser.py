"""The Python module against the library that was built; JOBPARSER_LIBRARY names it."""

import ctypes
import dataclasses
import gc
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import threading

import jobparser
import pytest
from conftest import PCL_JOB, UEL
from jobparser import _library, steps

SOURCE = pathlib.Path(os.environ["SOURCE_DIR"])
HEADER = (SOURCE / "JobParser/JobParserC.h").read_text(encoding="utf-8")


def in_new_process(code, **environment):
    return subprocess.run(
        [sys.executable, "-c", code], env={**os.environ, **environment}, capture_output=True, text=True, timeout=60
    )


class TestRecord:
    def test_tells_what_the_job_says(self, job_path):
        with jobparser.parse(job_path) as job:
            info = job.info

        assert info == jobparser.JobInfo(language=jobparser.Language.PCL5, copies=2, pjl=True)
        assert info.language is jobparser.Language.PCL5
        assert info.page_count is None

    def test_adds_pages_up(self):
        info = jobparser.JobInfo.from_record({"monoCount": 1, "grayCount": 2, "colorCount": 3})

        assert info.page_count == 6

    def test_keeps_a_number_without_a_name(self):
        info = jobparser.JobInfo.from_record({"pdl": 77, "originalBrand": 8, "paper": 5})

        assert (info.language, info.brand, info.paper) == (77, 8, jobparser.Paper.A4)
        assert type(info.language) is int

    def test_has_every_key_of_the_record(self):
        record = {
            "version": 1, "pjl": True, "pdl": 2, "paper": 20, "monoCount": 1, "grayCount": 2, "colorCount": 3,
            "duplex": 1, "copies": 4, "forceMono": True, "stapling": 101, "punching": 3, "orientation": 2,
            "ecoMode": False, "pagesPerSheet": 2, "originalBrand": 2, "kfeedShortEdge": True, "fonts": ["B", "A"],
        }

        assert jobparser.JobInfo.from_record(record) == jobparser.JobInfo(
            language=jobparser.Language.POSTSCRIPT, paper=jobparser.Paper.LETTER, mono_count=1, gray_count=2,
            color_count=3, duplex=jobparser.Duplex.LONG_EDGE, copies=4, force_mono=True,
            stapling=jobparser.Staple.DEVICE_DEFAULT, punching=jobparser.Punch.FOUR_HOLES,
            orientation=jobparser.Orientation.REVERSE_PORTRAIT, eco_mode=False, pages_per_sheet=2,
            brand=jobparser.Brand.HP, pjl=True, feed_short_edge=True, fonts=frozenset({"A", "B"}),
        )

    def test_brings_fonts_from_metadata(self, job_path, tmp_path):
        metadata = tmp_path / "m.meta.json"
        metadata.write_text('{"jobInfo":{"fonts":["Arial"]},"chunks":[]}')

        assert jobparser.load(job_path, metadata).info.fonts == {"Arial"}


class TestMalformed:
    def test_is_no_failure_and_has_a_cause(self, tmp_path):
        path = tmp_path / "job"
        path.write_bytes(UEL + b"@PJL \x01")

        with jobparser.parse(path) as job:
            assert not job.parsed
            assert "error=GetPjlToken(): Unexpected character" in job.cause
            assert [chunk.class_name for chunk in job.chunks] == ["RawDataE"]

    def test_is_not_what_a_good_job_is(self, job_path):
        with jobparser.parse(job_path) as job:
            assert job.parsed
            assert job.cause is None

    def test_numbers_that_do_not_convert_are_an_error(self, tmp_path):
        path = tmp_path / "job"
        path.write_bytes(UEL + b"@PJL XCPT <copies>x</copies>\r\n" + UEL)

        with pytest.raises(jobparser.MalformedJobError):
            jobparser.parse(path)


class TestChunks:
    def test_have_class_place_and_size(self, job_path):
        chunks = jobparser.parse(job_path).chunks

        assert len(chunks) == 8
        assert chunks[0] == jobparser.Chunk("UelE", None, None, 9)
        assert chunks[-2] == jobparser.Chunk("RawDataE", 76, 4, 4)
        assert chunks[6:] == [chunks[6], chunks[7]]
        assert chunks[::-4] == [chunks[7], chunks[3]]
        assert list(chunks) == [chunks[index] for index in range(8)]
        assert sum(chunk.size for chunk in chunks) == len(PCL_JOB)

    def test_end_where_they_end(self, job_path):
        chunks = jobparser.parse(job_path).chunks

        for index in (8, -9, 10**30):
            with pytest.raises(IndexError):
                chunks[index]

    def test_come_in_blocks(self, tmp_path):
        path = tmp_path / "job"
        path.write_bytes(UEL + b"@PJL SET A=1\r\n" * 10000 + UEL)

        chunks = list(jobparser.parse(path).chunks)

        assert len(chunks) == 10002
        assert {chunk.class_name for chunk in chunks[1:-1]} == {"PjlCmdE"}


class TestMetadata:
    def test_makes_the_job_again(self, job_path, tmp_path):
        with jobparser.parse(job_path) as job:
            pathlib.Path(f"{job_path}.meta.json").write_text(job.metadata_json(), encoding="utf-8")
            assert list(job.metadata()) == ["jobInfo", "chunks"]

        with jobparser.load(job_path) as job:
            job.save(tmp_path / "out")

        assert (tmp_path / "out").read_bytes() == PCL_JOB


class TestSaving:
    def test_replaces_the_jobs_own_file(self, job_path):
        with jobparser.parse(job_path) as job:
            job.change(steps.set("QTY", "3"))
            job.save()

        assert b"@PJL SET QTY=3\r\n@PJL ENTER" in job_path.read_bytes()
        assert [path.name for path in job_path.parent.iterdir()] == ["job.prn"]

    def test_takes_paths_of_any_bytes(self, tmp_path):
        for name in (b"\xff\xfe", b"two\nlines", "\u00e4".encode()):
            path = os.fsencode(tmp_path) + b"/" + name
            with open(path, "wb") as file:
                file.write(PCL_JOB)

            with jobparser.parse(path) as job:
                job.save(path + b".out")

            with open(path + b".out", "rb") as file:
                assert file.read() == PCL_JOB

    def test_tells_that_the_disk_is_full(self, job_path):
        with jobparser.parse(job_path) as job, pytest.raises(
            jobparser.CannotWriteError, match=re.escape("path=/dev/full | error=No space left on device")
        ) as caught:
            job.save("/dev/full")

        assert caught.value.status == 3

    def test_makes_a_failed_assertion_an_error(self, job_path, tmp_path):
        metadata = tmp_path / "m.meta.json"
        chunk = {"class": "RawDataE", "id": 2, "dto": {"offset": -1, "size": 1}}
        metadata.write_text(json.dumps({"jobInfo": {}, "chunks": [chunk]}))

        with jobparser.load(job_path, metadata) as job, pytest.raises(jobparser.AssertionFailedError):
            job.save(tmp_path / "out")

        assert not (tmp_path / "out").exists()


class TestRewriting:
    @pytest.mark.parametrize(
        ("step", "old", "new"),
        [
            (steps.job_name("new"), b'NAME="old"', b'NAME="new"'),
            (steps.job_param("NAME", b'"\xff"'), b'NAME="old"', b'NAME="\xff"'),
            (steps.set("QTY", "3"), b"@PJL ENTER", b"@PJL SET QTY=3\r\n@PJL ENTER"),
            (steps.set("copies", "\u00e4", quoted=True), b"COPIES=2", b'copies="\xc3\xa4"'),
            (steps.add("COPIES", "3"), b"@PJL ENTER", b"@PJL SET COPIES=3\r\n@PJL ENTER"),
            (steps.add("COPIES", "3", quoted=True), b"@PJL ENTER", b'@PJL SET COPIES="3"\r\n@PJL ENTER'),
            (steps.unset("COPIES", "2"), b"@PJL SET COPIES=2\r\n", b""),
            (steps.unset_first("COP"), b"@PJL SET COPIES=2\r\n", b""),
            (steps.unset_all("COP"), b"@PJL SET COPIES=2\r\n", b""),
            (steps.pjl_code("\\x41\n"), b"@PJL ENTER", b"\\x41\n@PJL ENTER"),
            (steps.strip_prescribe(), b"", b""),
            (
                steps.finishing('"T"', '"O"'),
                b"@PJL ENTER",
                b'@PJL SET PROCESSINGACTION=APPEND\r\n@PJL SET PROCESSINGTYPE="T"\r\n'
                b'@PJL SET PROCESSINGOPTION="O"\r\n@PJL SET PROCESSINGBOUNDARY=MOPY\r\n@PJL ENTER',
            ),
        ],
    )
    def test_does_each_step(self, job_path, tmp_path, step, old, new):
        with jobparser.parse(job_path) as job:
            job.rewrite(tmp_path / "out", step)

        assert (tmp_path / "out").read_bytes() == PCL_JOB.replace(old, new, 1)

    def test_does_steps_in_their_order(self, job_path, tmp_path):
        with jobparser.parse(job_path) as job:
            job.rewrite(tmp_path / "out", steps.strip_pjl(), steps.wrap("PCL", "n"))

        # The record still says that the job has PJL, and such a job is not wrapped.
        assert (tmp_path / "out").read_bytes() == b"\x1bEtext"

    def test_wraps(self, tmp_path):
        path = tmp_path / "job"
        path.write_bytes(b"bytes")

        with jobparser.parse(path) as job:
            job.rewrite(None, steps.wrap("PCL", "n"))

        assert path.read_bytes() == (
            UEL + b'@PJL JOB NAME="n"\r\n@PJL ENTER LANGUAGE=PCL\r\nbytes' + UEL + b'@PJL EOJ NAME="n"\r\n' + UEL
        )

    def test_refuses_what_makes_no_sense(self, job_path):
        with jobparser.parse(job_path) as job:
            for step in (steps.wrap("KLINGON", "n"), steps.Step(99), steps.Step(4, "a")):
                with pytest.raises(jobparser.InvalidArgumentError):
                    job.change(step)
            with pytest.raises(ValueError, match="zero byte"):
                job.change(steps.set("A", "b\0c"))


class TestReading:
    def test_tells_why_a_file_cannot_be_read(self, tmp_path):
        with pytest.raises(jobparser.CannotReadError, match="No such file or directory") as caught:
            jobparser.parse(os.fsencode(tmp_path) + b"/\xff")

        assert os.fsencode(tmp_path) + b"/\xff" in os.fsencode(str(caught.value))
        with pytest.raises(jobparser.CannotReadError):
            jobparser.parse(tmp_path)
        with pytest.raises(jobparser.CannotReadError, match="Error while reading job metadata"):
            jobparser.load(__file__, tmp_path / "none")

    def test_refuses_a_path_with_a_zero_byte(self):
        with pytest.raises(ValueError, match="zero byte"):
            jobparser.parse("a\0b")

    def test_takes_options(self, job_path, tmp_path):
        path = tmp_path / "x"
        path.write_bytes(b"bytes")
        language = jobparser.Language

        assert jobparser.parse(path, language=language.ESCP).info.language is language.ESCP
        assert jobparser.parse(path, language=language.UNKNOWN).info.language is language.UNKNOWN
        assert jobparser.parse(path, collect=False, refuse_restricted=True, worker=False).parsed
        with pytest.raises(jobparser.InvalidArgumentError):
            jobparser.parse(path, language=10)


class TestLifetime:
    def test_a_closed_job_refuses_everything(self, job_path):
        job = jobparser.parse(job_path)
        job.close()
        job.close()

        for use in (lambda: job.info, lambda: job.chunks[0], job.save, job.metadata_json, lambda: job.parsed):
            with pytest.raises(ValueError, match="closed"):
                use()

    def test_a_forgotten_job_closes_its_file(self, job_path):
        def descriptors():
            paths = pathlib.Path("/proc/self/fd").iterdir()
            return sum(path.is_symlink() and os.readlink(path).endswith("job.prn") for path in paths)

        job = jobparser.parse(job_path)
        assert descriptors() == 1
        del job
        gc.collect()

        assert descriptors() == 0

    def test_chunks_keep_their_job(self, job_path):
        chunks = jobparser.parse(job_path).chunks
        gc.collect()

        assert len(chunks) == 8

    def test_threads_may_share_a_job(self, job_path):
        job = jobparser.parse(job_path)
        seen = []

        threads = [threading.Thread(target=lambda: seen.append(job.info.copies)) for _ in range(8)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()

        assert seen == [2] * 8


class TestSetUp:
    def test_happens_once(self, tmp_path):
        code = (
            "import jobparser\n"
            "jobparser.set_up(processes=0, deadline_ms=0)\n"
            "try:\n    jobparser.set_up()\n"
            "except jobparser.AlreadySetUpError as error:\n    print(error)"
        )

        assert in_new_process(code).stdout == "the library is set up already\n"

    def test_reads_the_configuration(self, tmp_path):
        (tmp_path / "names.ini").write_text("[JobParser]\naliasA4 = HouseSheet\n")
        (tmp_path / "job").write_bytes(UEL + b"@PJL SET PAPER=HouseSheet\r\n@PJL ENTER LANGUAGE=PCL\r\n" + UEL)
        code = (
            "import jobparser, sys\n"
            "jobparser.set_up(processes=0, config=sys.argv[1] + '/names.ini')\n"
            "print(jobparser.parse(sys.argv[1] + '/job').info.paper.name)"
        )

        done = in_new_process(f"import sys; sys.argv = ['', {str(tmp_path)!r}]\n" + code)

        assert done.stdout == "A4\n", done.stderr

    @pytest.mark.skipif(shutil.which("openssl") is None, reason="There is no openssl")
    def test_reads_encrypted_jobs(self, job_path, tmp_path):
        key, iv = bytes(range(16)), bytes(range(16, 32))
        command = ["openssl", "enc", "-aes-128-cbc", "-K", key.hex(), "-iv", iv.hex(), "-in", job_path, "-out", tmp_path / "x"]
        subprocess.run(command, check=True)
        code = (
            "import jobparser\n"
            f"jobparser.set_up(processes=0, decrypt=jobparser.Decryption('aes-128-cbc', {key!r}, {iv!r}))\n"
            f"with jobparser.parse({str(tmp_path / 'x')!r}) as job:\n"
            f"    print(job.info.copies)\n    job.save({str(tmp_path / 'out')!r})"
        )

        done = in_new_process(code)

        assert done.stdout == "2\n", done.stderr
        assert (tmp_path / "out").read_bytes() == PCL_JOB

    @pytest.mark.parametrize(
        ("algorithm", "key", "message"), [("rot13", b"k" * 16, "no cipher of this name"), ("aes-128-cbc", b"k", "key")]
    )
    def test_refuses_ciphers_and_keys_that_do_not_fit(self, algorithm, key, message):
        code = f"import jobparser\njobparser.set_up(decrypt=jobparser.Decryption({algorithm!r}, {key!r}, b'i' * 16))"

        done = in_new_process(code)

        assert "InvalidArgumentError" in done.stderr
        assert message in done.stderr.lower()

    def test_tells_which_library_is_missing(self):
        done = in_new_process("import jobparser", JOBPARSER_LIBRARY="/nowhere/lib.so")

        assert "ImportError: The library of jobparser cannot be loaded: /nowhere/lib.so" in done.stderr


class TestInterface:
    """The declarations here against those of the header."""

    def test_knows_every_function(self):
        declared = set(re.findall(r"\b(jobParser\w+)\(", re.sub(r"/\*.*?\*/", "", HEADER, flags=re.DOTALL)))

        assert declared == {
            *_library._FUNCTIONS, "jobParserVersion", "jobParserStatusText", "jobParserFreeText", "jobParserFreeJob"
        }

    def test_knows_every_struct(self):
        types = {
            "size_t": ctypes.c_size_t, "int32_t": ctypes.c_int32, "uint32_t": ctypes.c_uint32,
            "int64_t": ctypes.c_int64, "const char*": ctypes.c_char_p, "const void*": ctypes.c_void_p,
        }
        for name in ("SetUpOptions", "ParseOptions", "Chunk", "Step"):
            body = re.search(rf"typedef struct JobParser{name} {{(.*?)}}", HEADER, re.DOTALL)[1]
            members = re.findall(r"^\s*((?:const )?\w+\*?) (\w+);", body, re.MULTILINE)
            assert getattr(_library, name)._fields_ == [(member, types[kind]) for kind, member in members]

    def test_numbers_steps_as_the_header_does(self):
        numbers = dict(re.findall(r"JOBPARSER_STEP_(\w+) = (\d+)", HEADER))
        texts = {"WRAP": 2, "JOB_PARAM": 2, "SET": 2, "ADD": 2, "UNSET": 2, "FINISHING": 2, "STRIP_PJL": 0,
                 "STRIP_PRESCRIBE": 0}
        for name, number in numbers.items():
            quoted = name.endswith("_QUOTED")
            function = name.removesuffix("_QUOTED")
            made = getattr(steps, function.lower())(*["x"] * texts.get(function, 1), **({"quoted": True} if quoted else {}))
            assert made.kind == int(number), name

    def test_numbers_languages_as_the_header_does(self):
        numbers = dict(re.findall(r"JOBPARSER_LANGUAGE_(\w+) = (\d+)", HEADER))
        del numbers["DETECT"]

        assert {name: str(int(language)) for name, language in jobparser.Language.__members__.items()} == {
            **numbers, "UNKNOWN": "0"
        }

    def test_tells_the_version(self):
        assert jobparser.version() == "1.0.0"

    @pytest.mark.skipif(shutil.which("mypy") is None, reason="There is no mypy")
    def test_has_types_that_hold_for_module_and_callers(self, tmp_path):
        caller = tmp_path / "caller.py"
        caller.write_text(
            "import jobparser\n"
            "from jobparser import steps\n"
            "with jobparser.parse(b'job') as job:\n"
            "    copies: int | None = job.info.copies\n"
            "    sizes: list[int] = [chunk.size for chunk in job.chunks[1:]]\n"
            "    job.rewrite('out', steps.set('COPIES', '2'))\n"
            "    wrong: str = job.info.copies\n"
        )

        command = ["mypy", "--strict", "--cache-dir", tmp_path / "cache"]
        module = subprocess.run([*command, SOURCE / "python/jobparser"], capture_output=True, text=True)
        use = subprocess.run(
            [*command, caller], capture_output=True, text=True, env={**os.environ, "MYPYPATH": str(SOURCE / "python")}
        )

        assert module.stdout.startswith("Success: no issues found"), module.stdout + module.stderr
        assert re.findall(r"caller.py:(\d+): error", use.stdout) == ["7"], use.stdout + use.stderr

    def test_is_typed(self):
        assert pathlib.Path(jobparser.__file__).with_name("py.typed").is_file()
        assert all(dataclasses.is_dataclass(kind) for kind in (jobparser.JobInfo, jobparser.Chunk, jobparser.Step))
