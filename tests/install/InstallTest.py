"""Installs the build into an empty folder and builds foreign programs on what stands there.

BUILD_DIR is the build, SOURCE_DIR its sources, CMAKE the program.
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

BUILD = pathlib.Path(os.environ["BUILD_DIR"])
SOURCE = pathlib.Path(os.environ["SOURCE_DIR"])
CMAKE = os.environ["CMAKE"]
CONSUMERS = pathlib.Path(__file__).resolve().parent / "consumers"
JOB = b"\x1b%-12345X@PJL SET COPIES=5\r\n\x1b%-12345X"


def run(*command, **options):
    done = subprocess.run(
        [str(word) for word in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        timeout=300, **options
    )
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout.decode(errors='replace')}")
    return done.stdout


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        installed = cls.folder / "installed"
        run(CMAKE, "--install", BUILD, "--prefix", installed)
        # What works only where it was installed would not survive being packed.
        cls.prefix = installed.rename(cls.folder / "moved")
        cls.library = next(cls.prefix.rglob("libJobParser.so"))
        cls.job = cls.folder / "job.prn"
        cls.job.write_bytes(JOB)

    def assert_knows_the_job(self, output):
        self.assertEqual(json.loads(output)["copies"], 5)

    def test_tool_knows_a_job(self):
        self.assert_knows_the_job(run(self.prefix / "bin/jobparser", "info", self.job))

    def test_tool_reads_metadata_by_the_library_beside_it(self):
        tool = self.prefix / "bin/jobparser"
        run(tool, "meta", self.job, "-o", self.folder / "job.meta.json")

        metadata = run(tool, "meta", self.job, "--from-meta", self.folder / "job.meta.json")

        self.assertEqual(metadata.decode().strip(), (self.folder / "job.meta.json").read_text().strip())

    def test_tool_parses_alone_and_names_the_library_that_metadata_would_need(self):
        alone = self.folder / "alone/bin/jobparser"
        alone.parent.mkdir(parents=True)
        shutil.copy(self.prefix / "bin/jobparser", alone)
        run(alone, "meta", self.job, "-o", self.folder / "alone.meta.json")

        done = subprocess.run([alone, "meta", self.job, "--from-meta", self.folder / "alone.meta.json"], capture_output=True)

        self.assertEqual(done.returncode, 1)
        self.assertIn(b"Cannot load the reader of JSON | error=", done.stderr)
        self.assertIn(b"libJobParser.so.1", done.stderr)

    def test_tool_loads_nothing_dear_and_walks_no_search_path(self):
        entries = run("readelf", "--dynamic", "--wide", self.prefix / "bin/jobparser").decode()
        needed = set(re.findall(r"\(NEEDED\).*\[(.*)\]", entries))

        self.assertNotRegex(entries, r"\((?:RUNPATH|RPATH)\)")
        self.assertEqual(
            [name for name in needed if re.match("lib(stdc|JobParser|simdjson|re2|crypto|ssl)", name)], [])

    def test_library_loads_no_ciphers_before_it_decrypts(self):
        entries = run("readelf", "--dynamic", "--wide", self.library).decode()

        self.assertNotRegex(entries, r"\(NEEDED\).*\[lib(crypto|ssl)")

    def test_serves_a_cpp_program_by_its_cmake_package(self):
        build = self.folder / "cpp"
        run(CMAKE, "-S", CONSUMERS / "cpp", "-B", build, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run(CMAKE, "--build", build)

        self.assert_knows_the_job(run(build / "consumer", self.job))

    def test_serves_a_cpp_program_by_pkg_config(self):
        program = self.folder / "cpp-by-pkg-config"
        environment = {**os.environ, "PKG_CONFIG_PATH": str(self.library.parent / "pkgconfig")}
        flags = run("pkg-config", "--cflags", "--libs", "jobparser", env=environment).decode().split()
        run("g++", "-std=c++20", "-Wall", "-Wextra", "-Werror", CONSUMERS / "cpp/consumer.cpp", "-o", program, *flags,
            f"-Wl,-rpath,{self.library.parent}")

        self.assert_knows_the_job(run(program, self.job))

    def test_serves_a_c_program_by_pkg_config(self):
        program = self.folder / "consumer"
        environment = {**os.environ, "PKG_CONFIG_PATH": str(self.library.parent / "pkgconfig")}
        flags = run("pkg-config", "--cflags", "--libs", "jobparser", env=environment).decode().split()
        run("cc", "-std=c99", "-Wall", "-Wextra", "-Wpedantic", "-Werror", CONSUMERS / "c/consumer.c", "-o", program, *flags,
            f"-Wl,-rpath,{self.library.parent}")

        self.assert_knows_the_job(run(program, self.job))

    def test_serves_a_c_program_that_must_stay_up(self):
        program = self.folder / "safe"
        environment = {**os.environ, "PKG_CONFIG_PATH": str(self.library.parent / "pkgconfig")}
        flags = run("pkg-config", "--cflags", "--libs", "jobparser", env=environment).decode().split()
        run("cc", "-std=c99", "-Wall", "-Wextra", "-Wpedantic", "-Werror", CONSUMERS / "c/safe.c", "-o", program, *flags,
            f"-Wl,-rpath,{self.library.parent}")

        self.assert_knows_the_job(run(program, self.job, self.folder / "out.prn"))
        self.assertEqual((self.folder / "out.prn").read_bytes(), JOB)
        done = subprocess.run([program, self.folder / "none", self.folder / "out"], capture_output=True)
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, rb"^cannot read: Cannot open file \| path=.*/none \| error=No such file or directory\n$")

    def test_serves_python_where_it_stands(self):
        module = next(self.prefix.rglob("jobparser/__init__.py")).parent
        code = "import jobparser, sys; print(jobparser.parse(sys.argv[1]).info.copies)"
        environment = {name: value for name, value in os.environ.items() if name != "JOBPARSER_LIBRARY"}

        output = run(sys.executable, "-B", "-c", code, self.job, env={**environment, "PYTHONPATH": str(module.parent)})

        self.assertEqual(output, b"5\n")
        self.assertTrue((module / "py.typed").is_file())

    def test_includes_only_headers_that_are_installed(self):
        include = self.prefix / "include"
        missing = {
            f"{header.relative_to(include)}: {included}"
            for header in include.rglob("*.h")
            for included in re.findall(r'#\s*include\s+"([^"]+)"', header.read_text(encoding="utf-8"))
            if not (include / included).is_file()
        }

        self.assertEqual(missing, set())

    def test_installs_every_chief_header(self):
        chief = {header.name for header in (SOURCE / "JobParser").glob("*.h")}

        self.assertEqual({header.name for header in (self.prefix / "include/JobParser").glob("*.h")}, chief)

    def test_has_a_versioned_library(self):
        self.assertEqual(os.readlink(self.library), "libJobParser.so.1")
        self.assertIn(b"Library soname: [libJobParser.so.1]", run("readelf", "--dynamic", "--wide", self.library))

    def test_names_no_folder_of_the_build(self):
        for binary in (self.library, self.prefix / "bin/jobparser"):
            stripped = self.folder / "stripped"
            run("strip", "-o", stripped, binary)

            self.assertNotIn(str(SOURCE).encode(), stripped.read_bytes(), binary.name)
            self.assertNotIn(str(BUILD).encode(), stripped.read_bytes(), binary.name)

    def test_shows_no_names_but_its_own(self):
        names = run("nm", "--dynamic", "--defined-only", "--demangle", self.library).decode().splitlines()
        shown = [line.split(maxsplit=2)[2] for line in names]
        own = re.compile(r".*\b(JobParser|Torv|Pdf)::|(ParseJobInfo|jobParser[A-Z]\w+|torvReadJsonDocument)$")
        # Instances of the standard library's templates are shared by all of a process anyway, and so are the
        # exceptions of Boost, or they could not be caught in another library.
        shared = re.compile(r".*\bstd::|.*__gnu_cxx::|operator |_init$|_fini$|(typeinfo|typeinfo name|vtable) for boost::")

        self.assertEqual([name for name in shown if not own.match(name) and not shared.match(name)], [])

    def test_brings_manual_pages_completion_and_schemas(self):
        share = self.prefix / "share"
        for name in (
            "man/man1/jobparser.1", "man/man3/JobParserC.3", "man/man8/ZemJobProcessor.8",
            "bash-completion/completions/jobparser", "zsh/vendor-completions/_jobparser",
            "jobparser/schema/record.schema.json", "jobparser/schema/metadata.schema.json",
        ):
            self.assertTrue((share / name).is_file(), name)

    def test_brings_a_sample_configuration(self):
        self.assertEqual(len(list(self.prefix.rglob("share/doc/JobParser/config.ini"))), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
