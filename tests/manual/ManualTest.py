"""The manual pages and the completion against what the tool says of itself, and the header.

JOBPARSER_TOOL is the tool, SOURCE_DIR the sources, MANUAL the folder of what is made while the tool is built.
"""

import fcntl
import os
import pathlib
import pty
import re
import select
import shutil
import struct
import subprocess
import tempfile
import termios
import unittest

TOOL = os.environ["JOBPARSER_TOOL"]
SOURCE = pathlib.Path(os.environ["SOURCE_DIR"])
MANUAL = pathlib.Path(os.environ["MANUAL"])
TOOL_PAGE = MANUAL / "jobparser.1"
PAGES = (TOOL_PAGE, SOURCE / "docs/man/JobParserC.3", SOURCE / "docs/man/ZemJobProcessor.8")


def help_of(*subcommand):
    return subprocess.run([TOOL, *subcommand, "--help"], check=True, capture_output=True, text=True).stdout


SUBCOMMANDS = re.findall(r"^  (?!jobparser)(\w+) [A-Z]", help_of().split("Examples:")[0], re.MULTILINE)


def options_of(subcommand):
    """Name and help of each option and step."""
    return re.findall(r"^  (--?[\w-]+)(?: [A-Z][A-Z=:]*)*  +(.*)$", help_of(subcommand), re.MULTILINE)


def rendered(page):
    text = subprocess.run(["mandoc", "-T", "ascii", page], check=True, capture_output=True, text=True).stdout
    return re.sub(".\b", "", text)


class Pages(unittest.TestCase):
    def test_are_well_formed(self):
        if not shutil.which("mandoc"):
            self.skipTest("There is no mandoc")
        for page in PAGES:
            done = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", page], capture_output=True, text=True)
            # Pages of ours that are not installed yet are not found.
            self.assertEqual(done.stdout, "", page.name)

    def test_fit_a_terminal_of_80_columns(self):
        if not shutil.which("groff"):
            self.skipTest("There is no groff")
        for page in PAGES:
            done = subprocess.run(
                ["groff", "-mandoc", "-Tutf8", "-Kutf8", "-ww", "-rLL=80n", page], capture_output=True, text=True
            )
            lines = re.sub("\x1b\\[[0-9;]*m|.\b", "", done.stdout).splitlines()

            self.assertEqual(done.stderr, "", page.name)
            # Examples are to be copied, so a long command is not broken.
            self.assertEqual([line for line in lines if len(line) > 80 and not line.startswith(" " * 11)], [], page.name)
            self.assertRegex(lines[-1], r"^JobParser +\w+ \d+, \d{4} +JobParser$")

    def test_of_the_tool_holds_every_option_with_its_help(self):
        if not shutil.which("mandoc"):
            self.skipTest("There is no mandoc")
        text = " ".join(rendered(TOOL_PAGE).split())

        self.assertGreater(len(SUBCOMMANDS), 5)
        for subcommand in SUBCOMMANDS:
            options = options_of(subcommand)
            self.assertGreater(len(options), 0, subcommand)
            for name, meaning in options:
                self.assertIn(name, text)
                self.assertIn(" ".join(meaning.split()), text)

    def test_of_the_tool_holds_statuses_and_examples(self):
        if not shutil.which("mandoc"):
            self.skipTest("There is no mandoc")
        text = " ".join(rendered(TOOL_PAGE).split())
        said = help_of()

        for example in re.findall(r"^  (jobparser .*(?:\||-).*)$", said.split("Examples:")[1], re.MULTILINE):
            self.assertIn(" ".join(example.split()), text)
        for status in re.findall(r"^  \d  (.*)$", said, re.MULTILINE):
            self.assertIn(status, text)

    def test_of_the_c_interface_holds_every_prototype(self):
        header = (SOURCE / "JobParser/JobParserC.h").read_text(encoding="utf-8")
        page = (SOURCE / "docs/man/JobParserC.3").read_text(encoding="utf-8")
        declared = [
            (kind, name, ["void"] if arguments == "void" else [" ".join(part.split()) for part in arguments.split(",")])
            for kind, name, arguments in re.findall(r"^TORV_EXPORT ([\w ]+\*?) (\w+)\(([^)]*)\);", header, re.MULTILINE)
        ]
        documented = [
            (kind, name, re.findall(r'^\.Fa "?(.*?)"?$', arguments, re.MULTILINE))
            for kind, name, arguments in re.findall(r"^\.Ft (.*)\n\.Fo (\w+)\n((?:\.Fa .*\n)*)\.Fc", page, re.MULTILINE)
        ]

        self.assertEqual(len(declared), 15)
        self.assertEqual(documented, declared)
        constants = re.findall(r"\b(JOBPARSER_[A-Z0-9_]+) = -?\d", header)
        self.assertEqual(len(constants), 9 + 11 + 3 + 14)
        for name in constants:
            self.assertRegex(page, rf"(?m)^\.(It )?Dv {name}(?: |$)")
        for struct in re.findall(r"typedef struct (\w+) {(.*?)}", header, re.DOTALL):
            described = re.search(rf"^\.It Vt {struct[0]}$(.*?)^\.(?:It Vt|El)", page, re.MULTILINE | re.DOTALL)[1]
            for member in re.findall(r"(\w+);", re.sub(r"/\*.*?\*/", "", struct[1])):
                self.assertRegex(described, rf"(?m)^\.It Va {member}$", struct[0])
        for _, name, _ in declared:
            self.assertIn(f".Nm {name}", page)


class Completion(unittest.TestCase):
    def complete(self, *words):
        """What bash offers for the last word."""
        script = (
            'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _jobparser; '
            'printf "%s\\n" "${COMPREPLY[@]}"'
        )
        done = subprocess.run(
            ["bash", "-c", script, "bash", MANUAL / "jobparser", "jobparser", *words], capture_output=True, text=True, cwd=self.folder
        )
        self.assertEqual(done.stderr, "")
        return done.stdout.split()

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        pathlib.Path(self.folder, "job.prn").touch()

    def test_offers_subcommands(self):
        self.assertEqual(sorted(self.complete("")), sorted([*SUBCOMMANDS, "--help", "--version"]))
        self.assertEqual(self.complete("re"), ["rewrite"])

    def test_offers_every_option_of_a_subcommand(self):
        for subcommand in SUBCOMMANDS:
            self.assertEqual(sorted(self.complete(subcommand, "-")), sorted(name for name, _ in options_of(subcommand)))

    def test_offers_files(self):
        self.assertEqual(self.complete("meta", ""), ["job.prn"])
        self.assertEqual(self.complete("save", "job.prn", "-o", "jo"), ["job.prn"])

    def test_offers_nothing_for_numbers_and_texts(self):
        self.assertEqual(self.complete("meta", "--pdl", ""), [])
        self.assertEqual(self.complete("rewrite", "--set", "j"), [])

    def test_offers_languages(self):
        self.assertIn("POSTSCRIPT", self.complete("rewrite", "--wrap", ""))
        self.assertEqual(self.complete("rewrite", "--wrap", "PCLX"), ["PCLXL"])

    def test_for_zsh_holds_every_option(self):
        text = (MANUAL / "_jobparser").read_text(encoding="utf-8")

        for subcommand in SUBCOMMANDS:
            part = re.search(rf"^    {subcommand}\)$(.*?)^        ;;$", text, re.MULTILINE | re.DOTALL)[1]
            self.assertEqual(
                sorted(re.findall(r"'\*(--?[\w-]+)\[", part)), sorted(name for name, _ in options_of(subcommand))
            )

    def test_for_zsh_is_well_formed(self):
        if not shutil.which("zsh"):
            self.skipTest("There is no zsh")
        done = subprocess.run(["zsh", "-n", MANUAL / "_jobparser"], capture_output=True, text=True)

        self.assertEqual((done.returncode, done.stderr), (0, ""))


class Shell:
    """A shell at a terminal, which is typed at."""

    def __init__(self, folder, *command):
        self._terminal, there = pty.openpty()
        fcntl.ioctl(there, termios.TIOCSWINSZ, struct.pack("HHHH", 200, 200, 0, 0))
        environment = {"PATH": os.environ["PATH"], "HOME": folder, "TERM": "dumb", "LC_ALL": "C.UTF-8", "PS1": "?> "}
        self._process = subprocess.Popen(
            command, stdin=there, stdout=there, stderr=there, cwd=folder, env=environment, start_new_session=True)
        os.close(there)
        self._read_until("?> ")

    def _read_until(self, end):
        seen = ""
        while end not in seen:
            ready, _, _ = select.select([self._terminal], [], [], 60)
            if not ready:
                raise AssertionError(f"The shell does not answer: {seen!r}")
            seen += os.read(self._terminal, 65536).decode()
        return seen

    def close(self):
        self._process.kill()
        self._process.wait()
        os.close(self._terminal)

    def type(self, keys):
        """What comes at the terminal, until the shell is ready again."""
        # Typed with quotation marks inside, so that only its execution shows it whole. What is typed before the
        # prompt would go to the terminal and not to the shell.
        os.write(self._terminal, keys.encode() + b"\x15echo E'N'D\n")
        seen = self._read_until("END\r\n")
        if "?> " not in seen.split("END\r\n")[1]:
            self._read_until("?> ")
        return re.sub(r"\x1b\[[0-9;?]*[A-Za-z]", "", seen).replace("\r", "")

    def offers(self, line):
        """The words that a line may go on with, which have to begin lines or stand behind two blanks."""
        shown = self.type(line + "\t").split("\n", 1)[1]
        return set(re.findall(r"(?:^|  )(--?[a-z][\w-]*|[a-z]+)(?= *$|  )", shown, re.MULTILINE))


class CompletionAtATerminal(unittest.TestCase):
    """The completion in the shells themselves."""

    def shell(self, *command):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        shell = Shell(folder.name, *command)
        self.addCleanup(shell.close)
        return shell

    def assert_completes(self, shell):
        self.assertLessEqual({*SUBCOMMANDS}, shell.offers("jobparser "))
        self.assertEqual(shell.offers("jobparser -"), {"--help", "--version"})
        for subcommand in SUBCOMMANDS:
            with self.subTest(subcommand):
                names = {name for name, _ in options_of(subcommand)}
                # A word that is the only one is written instead of shown.
                if len(names) > 1:
                    self.assertEqual(shell.offers(f"jobparser {subcommand} -"), names)
        self.assertIn("jobparser rewrite --strip-prescribe ", shell.type("jobparser rewrite --strip-pr\t"))
        self.assertIn("jobparser rewrite --wrap POSTSCRIPT ", shell.type("jobparser rewrite --wrap PO\t"))

    def test_in_bash(self):
        shell = self.shell("bash", "--norc", "--noprofile", "-i")
        shell.type(
            "for option in 'enable-bracketed-paste off' 'page-completions off' 'completion-query-items 0'"
            f" 'show-all-if-ambiguous on'; do bind \"set $option\"; done; . {MANUAL}/jobparser\n")

        self.assert_completes(shell)

    @unittest.skipUnless(shutil.which("zsh"), "There is no zsh")
    def test_in_zsh(self):
        shell = self.shell("zsh", "-f", "-i")
        shell.type(
            f"unsetopt prompt_sp prompt_cr list_ambiguous; bindkey -e; fpath=({MANUAL} $fpath); autoload -Uz compinit;"
            " LISTMAX=9999; compinit -u -D\n")

        self.assert_completes(shell)


if __name__ == "__main__":
    unittest.main()
