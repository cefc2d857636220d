"""The programs and commands of README.md, docs/hosting.md and the Python module do what they say, as they stand there.

SOURCE_DIR is the sources, BUILD_DIR the build, CMAKE the program. Those of docs/rewriting.md have a test of their own.
"""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import textwrap
import unittest

SOURCE = pathlib.Path(os.environ["SOURCE_DIR"])
BUILD = pathlib.Path(os.environ["BUILD_DIR"])
CMAKE = os.environ["CMAKE"]
README = (SOURCE / "README.md").read_text(encoding="utf-8")
HOSTING = (SOURCE / "docs/hosting.md").read_text(encoding="utf-8")
FENCED = re.compile(r"^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
INDENTED = re.compile(r"(?:^    .*\n)+", re.MULTILINE)

JOB = b"\x1b%-12345X@PJL SET COPIES=5\r\n@PJL ENTER LANGUAGE=PCL\r\n\x1bEtext\x0c\x1bE\x1b%-12345X"
KEY = bytes(range(16))
VECTOR = bytes(range(16, 32))

# Around the pieces of docs/hosting.md: the surroundings that their text speaks of, and a use of each.
HOST = """
#include <JobParser/JobFile.h>
#include <JobParser/Library.h>
#include <JobParser/ParseJobInfo.h>
#include <Torv/Assert.h>
#include <Torv/GenericException.h>
#include <Torv/Security/Endecryptor/Decryptor.h>
#include <cstdio>
#include <memory>
#include <string>

static void openEncrypted(JobParser::JobFile& file, const std::string& path, const std::string& key, const std::string& iv)
{
%(encrypted)s
}

static void startWorkers()
{
%(workers)s
}

%(guarded)s

%(handler)s

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    %(installed)s
    const char* record = jobInfoOrNull(argv[1]);
    std::puts(record != nullptr ? record : "null");
    std::puts(jobInfoOrNull("/nowhere/at/all") != nullptr ? "not null" : "null");

    std::string key;
    std::string iv;
    for (int byte = 0; byte < 16; ++byte) {
        key += static_cast<char>(byte);
        iv += static_cast<char>(16 + byte);
    }
    JobParser::JobFile file;
    openEncrypted(file, argv[2], key, iv);
    std::printf("%%lld\\n", static_cast<long long>(file.m_realDataSize));

    try {
        TORV_ASSERT(argc == 0, "host");
    } catch (const Torv::GenericException& error) {
        std::puts(error.what());
    }

    startWorkers();
    std::puts(jobInfoOrNull(argv[1]));
}
"""


def run(*command, **options):
    done = subprocess.run(
        [str(word) for word in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        timeout=300, **options
    )
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout.decode(errors='replace')}")
    return done.stdout.decode()


def commands_with(text, part):
    """The lines of the one indented block that holds a part."""
    blocks = [block for block in INDENTED.findall(text) if part in block]
    if len(blocks) != 1:
        raise AssertionError(f"{len(blocks)} blocks hold {part}")
    return [line[4:] for line in blocks[0].splitlines()]


class Blocks(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.prefix = cls.folder / "installed"
        run(CMAKE, "--install", BUILD, "--prefix", cls.prefix)
        (cls.folder / "job.prn").write_bytes(JOB)
        package_config = next(cls.prefix.rglob("jobparser.pc")).parent
        cls.environment = {
            **os.environ, "PKG_CONFIG_PATH": str(package_config), "LD_LIBRARY_PATH": str(package_config.parent)}

    def programs(self, text, *languages):
        found = FENCED.findall(text)
        self.assertEqual([language for language, _ in found], list(languages), "each block is to be tested here")
        return [code for _, code in found]

    def test_programs_of_the_first_page_are_built_by_its_commands(self):
        store, module, info = self.programs(README, "cpp", "python", "c")
        (self.folder / "store.cpp").write_text(store, encoding="utf-8")
        (self.folder / "info.c").write_text(info, encoding="utf-8")
        install, exports, *compilers = commands_with(README, "cmake --install")
        self.assertEqual(install, "cmake --install build/release --prefix PREFIX")
        self.assertEqual(exports, "export PKG_CONFIG_PATH=PREFIX/lib/pkgconfig LD_LIBRARY_PATH=PREFIX/lib")
        self.assertEqual([line.split()[0] for line in compilers], ["g++", "cc"])

        outputs = []
        for line in compilers:
            run("sh", "-e", "-c", line, cwd=self.folder, env=self.environment)
            outputs.append(run("./a.out", "job.prn", cwd=self.folder, env=self.environment))

        self.assertEqual(outputs[0], "PCL 5, 5 copies\n")
        self.assertRegex((self.folder / "job.prn.meta.json").read_text(), '"copies":5')
        self.assertRegex(outputs[1], r'^\{"version":1,"pjl":true,"pdl":1,.*"copies":5,.*\}\n$')
        folder = next(self.prefix.rglob("jobparser/__init__.py")).parents[1]
        shown = run(sys.executable, "-B", "-c", module, cwd=self.folder, env={**self.environment, "PYTHONPATH": str(folder)})
        self.assertRegex(shown, r"^\S+ 5 \d+\n$")

    def test_session_of_the_first_page_goes_as_it_stands_there(self):
        run("python3", "-B", SOURCE / "samples/make_samples.py", self.folder / "build/samples")
        tool = self.prefix / "bin/jobparser"
        session = "\n".join(commands_with(README, "$ ./dev run build/samples"))
        steps = [step.split("\n", 1) for step in re.split(r"^\$ ", session, flags=re.MULTILINE)[1:]]
        self.assertEqual(len(steps), 2)

        for command, expected in steps:
            with self.subTest(command):
                command = command.replace("./dev run", f"{shlex.quote(str(tool))} info")
                command = command.replace("build/release/bin/jobparser", shlex.quote(str(tool)))
                output = run("sh", "-e", "-c", command, cwd=self.folder)

                if not (tool.parent / "ZemJobProcessor").exists():
                    expected = re.sub(r'("(?:mono|gray|color)Count":)\d+', r"\1null", expected)
                shown, cut, _ = expected.partition("...")
                self.assertEqual(output[:len(shown)] if cut else output.rstrip("\n"), shown if cut else shown.rstrip("\n"))

    def test_commands_of_the_first_page_s_table_are_those_of_the_tool(self):
        usage = run(self.prefix / "bin/jobparser", "--help")
        named = re.findall(r"^\| `jobparser (\w+) ", README, re.MULTILINE)

        self.assertGreater(len(named), 5)
        for command in named:
            self.assertRegex(usage, rf"(?m)^  {command} ")

    def test_pieces_for_hosts_do_what_they_say(self):
        workers, encrypted, safe, guarded, handler = self.programs(HOSTING, "cpp", "cpp", "c", "cpp", "cpp")
        self.assertIn('"/usr/bin"', workers)
        workers = workers.replace("/usr/bin", str(self.prefix / "bin"))
        function, statement = re.fullmatch(r"(.*^\}\n)\s*(\S[^\n]*\n)", handler, re.MULTILINE | re.DOTALL).groups()
        (self.folder / "host.cpp").write_text(
            HOST % {"workers": workers, "encrypted": encrypted, "guarded": guarded, "handler": function,
                    "installed": statement},
            encoding="utf-8")
        run("openssl", "enc", "-aes-128-cbc", "-K", KEY.hex(), "-iv", VECTOR.hex(), "-in", self.folder / "job.prn",
            "-out", self.folder / "encrypted.prn")

        run("sh", "-e", "-c", "g++ -std=c++20 -Wall -Wextra -Werror host.cpp -o host $(pkg-config --cflags --libs jobparser)",
            cwd=self.folder, env=self.environment)
        output = run("./host", "job.prn", "encrypted.prn", cwd=self.folder, env=self.environment).splitlines()

        self.assertIn('"copies":5', output[0])
        self.assertEqual(output[1:3], ["null", str(len(JOB))])
        self.assertRegex(output[3], r"^Assertion failed: argc == 0 \| file=host \| function=main$")
        pages = "1" if (self.prefix / "bin/ZemJobProcessor").exists() else "null"
        self.assertIn(f'"monoCount":{pages},', output[4])
        self.assertEqual(len(output), 5)

        (self.folder / "duplex.c").write_text(safe, encoding="utf-8")
        run("sh", "-e", "-c", "cc -std=c99 -Wall -Wextra -Werror duplex.c -o duplex $(pkg-config --cflags --libs jobparser)",
            cwd=self.folder, env=self.environment)
        run("./duplex", "job.prn", "duplex.prn", cwd=self.folder, env=self.environment)
        self.assertIn(b"@PJL SET DUPLEX=ON\r\n", (self.folder / "duplex.prn").read_bytes())

    def test_program_of_the_manual_does_what_it_says(self):
        page = (SOURCE / "docs/man/JobParserC.3").read_text(encoding="utf-8")
        shown = re.search(r"^\.Sh EXAMPLES\n\.Bd [^\n]*\n(.*?)^\.Ed$", page, re.MULTILINE | re.DOTALL)[1]
        (self.folder / "manual.c").write_text(shown.replace("\\e", "\\").replace("\\-", "-"), encoding="utf-8")
        run("sh", "-e", "-c", "cc -std=c99 -Wall -Wextra -Werror manual.c -o manual $(pkg-config --cflags --libs jobparser)",
            cwd=self.folder, env=self.environment)

        self.assertIn('"copies":5', run("./manual", "job.prn", cwd=self.folder, env=self.environment))

    def test_example_of_the_python_module_does_what_it_says(self):
        module = next(self.prefix.rglob("jobparser/__init__.py"))
        text = module.read_text(encoding="utf-8")
        example = textwrap.dedent(re.search(r"^    import jobparser\n.*?(?=^\S)", text, re.MULTILINE | re.DOTALL).group())
        environment = {name: value for name, value in os.environ.items() if name != "JOBPARSER_LIBRARY"}

        output = run(sys.executable, "-B", "-c", example, cwd=self.folder,
                     env={**environment, "PYTHONPATH": str(module.parents[1])})

        self.assertRegex(output, r"^\S+ 5\n$")
        self.assertIn(b"@PJL SET DUPLEX=ON\r\n", (self.folder / "out.prn").read_bytes())

    def test_example_of_the_page_of_the_module_does_what_it_says(self):
        module = next(self.prefix.rglob("jobparser/__init__.py"))
        example, = self.programs((SOURCE / "python/README.md").read_text(encoding="utf-8"), "python")
        environment = {name: value for name, value in os.environ.items() if name != "JOBPARSER_LIBRARY"}

        output = run(sys.executable, "-B", "-c", example, cwd=self.folder,
                     env={**environment, "PYTHONPATH": str(module.parents[1])})

        self.assertRegex(output, r"^\S+ 5 \S+\nUelE None 9\n")
        self.assertIn(b"@PJL SET BINDING=LONGEDGE\r\n", (self.folder / "out.prn").read_bytes())

    def test_no_other_document_shows_programs(self):
        documents = (path.relative_to(SOURCE) for path in SOURCE.rglob("*.md"))
        showing = {
            str(name) for name in documents
            if name.parts[0] != "build" and FENCED.search((SOURCE / name).read_text(encoding="utf-8"))
        }

        self.assertEqual(showing, {"README.md", "docs/hosting.md", "docs/rewriting.md", "python/README.md"})


if __name__ == "__main__":
    unittest.main()
