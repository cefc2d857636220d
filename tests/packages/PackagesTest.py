"""The Debian packages: what is in them, what they ask for, and that they serve on a machine that has nothing else.

PACKAGES is a folder of packages; without it those of BUILD_DIR are made. SOURCE_DIR is the sources, VERSION what is
packed, WORKER whether the worker was built. The packages are installed into a root made for it by mmdebstrap, which
takes a minute or two and fetches packages of Debian; JOBPARSER_CLEAN_ROOT=0 leaves that out.
"""

import gzip
import io
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["SOURCE_DIR"])
VERSION = os.environ["VERSION"]
WITH_WORKER = os.environ["WORKER"] == "ON"
CLEAN_ROOT = os.environ.get("JOBPARSER_CLEAN_ROOT") != "0"
HERE = pathlib.Path(__file__).resolve().parent
JOB = b"\x1b%-12345X@PJL SET COPIES=5\r\n\x1b%-12345X"


def run(*command, **options):
    done = subprocess.run(
        [str(word) for word in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        **{"timeout": 600, **options}
    )
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout.decode(errors='replace')}")
    return done.stdout.decode(errors="replace")


def packages():
    """The packages by name, each as its path."""
    folder = os.environ.get("PACKAGES")
    if not folder:
        folder = tempfile.mkdtemp()
        unittest.addModuleCleanup(shutil.rmtree, folder)
        run("cpack", "--config", pathlib.Path(os.environ["BUILD_DIR"]) / "CPackConfig.cmake", "-B", folder, cwd=folder)
    return {path.name.partition("_")[0]: path.resolve() for path in pathlib.Path(folder).glob("*.deb")}


def setUpModule():
    global PACKAGES
    PACKAGES = packages()


def field(package, name):
    return run("dpkg-deb", "--field", PACKAGES[package], name).strip()


def relations(package, name):
    """What the package relates to by a field, by name: the version asked for, or nothing."""
    found = {}
    for relation in filter(None, re.split(r",\s*", field(package, name))):
        other, version = re.fullmatch(r"(\S+)(?: \((.*)\))?", relation).groups()
        found[other] = version
    return found


def contents(package):
    """The files and links of a package, from its root on, the folder of the architecture left out."""
    lines = run("dpkg-deb", "--contents", PACKAGES[package]).splitlines()
    paths = (re.split(r"\s+", line, maxsplit=5)[5].split(" -> ")[0] for line in lines if not line.startswith("d"))
    return {re.sub(r"/lib/[^/]+-linux-gnu/", "/lib/", path.removeprefix(".")) for path in paths}


def bare_environment():
    """What the builds in a clean root must not learn of this machine: it has other programs."""
    kept = ("PATH", "HOME", "TMPDIR", "http_proxy", "https_proxy", "no_proxy")
    return {"LC_ALL": "C.UTF-8", **{name: os.environ[name] for name in kept if name in os.environ}}


def file_of(package, path):
    archive = subprocess.run(["dpkg-deb", "--fsys-tarfile", PACKAGES[package]], check=True, capture_output=True).stdout
    with tarfile.open(fileobj=io.BytesIO(archive)) as files:
        return files.extractfile("." + path).read()


def own(package):
    """The contents but for what every package brings."""
    folder = f"/usr/share/doc/{package}/"
    return {path for path in contents(package) if not path.startswith(folder)}


class Packages(unittest.TestCase):
    def test_are_one_a_purpose(self):
        worker = {"jobparser-worker"} if WITH_WORKER else set()

        self.assertEqual(
            set(PACKAGES), {"libjobparser1", "libjobparser-dev", "jobparser", "python3-jobparser"} | worker)

    def test_are_of_this_version(self):
        for package in PACKAGES:
            self.assertEqual(field(package, "Version"), VERSION, package)

    def test_have_a_maintainer_and_a_description_of_two_parts(self):
        for package in PACKAGES:
            with self.subTest(package):
                short, *long = field(package, "Description").splitlines()

                self.assertRegex(field(package, "Maintainer"), r"^.+ <.+@.+>$")
                self.assertTrue(10 < len(short) < 80, short)
                self.assertTrue(long and all(line.startswith(" ") for line in long), long)

    def test_say_each_something_else(self):
        self.assertEqual(len({field(package, "Description") for package in PACKAGES}), len(PACKAGES))
        self.assertEqual(len({field(package, "Description").splitlines()[0] for package in PACKAGES}), len(PACKAGES))

    def test_tell_whose_code_is_in_them(self):
        for package in PACKAGES:
            folder = f"/usr/share/doc/{package}"

            self.assertLessEqual(
                {f"{folder}/third-party.md", f"{folder}/copyright", f"{folder}/changelog.gz"}, contents(package))

    def test_bring_the_notices_of_what_they_contain(self):
        contained = {
            "libjobparser1": ["libsimdjson-dev", "libsimpleini-dev"], "libjobparser-dev": [], "python3-jobparser": [],
            "jobparser": [
                "libre2-dev", "libminizip-dev", "zlib1g-dev", "libsimdjson-dev", "libsimpleini-dev", "libc6-dev"],
            "jobparser-worker": ["libmupdf-dev", "libsimdjson-dev", "libsimpleini-dev"],
        }
        for package in PACKAGES:
            text = file_of(package, f"/usr/share/doc/{package}/copyright").decode()

            self.assertEqual(re.findall(r"^---- Contained, from (\S+) ----$", text, re.MULTILINE), contained[package])
            for other in contained[package]:
                self.assertIn(pathlib.Path(f"/usr/share/doc/{other}/copyright").read_text(encoding="utf-8"), text)

    @unittest.skipUnless(shutil.which("lintian"), "There is no lintian, which knows the rules of Debian")
    def test_keep_the_rules_of_debian(self):
        suppressed = {
            "bogus-mail-host", "root-in-contact",  # Whoever answers for the packages is named when they are made.
            "lacks-ldconfig-trigger", "maintscript-calls-ldconfig",  # CPack knows scripts only.
            "syntax-error-in-debian-changelog",  # It is that of the project.
            "pkg-config-unavailable-for-cross-compilation",  # Only a prefix of /usr has a folder of the architecture.
            "embedded-library",  # The tool contains zlib for the sake of its start.
        }

        output = run(
            "lintian", "--allow-root", "--tag-display-limit", "0", "--fail-on", "none", "--suppress-tags",
            ",".join(sorted(suppressed)), *PACKAGES.values())

        self.assertEqual(output, "")

    def test_share_no_file(self):
        count = sum(len(contents(package)) for package in PACKAGES)

        self.assertEqual(len(set().union(*(contents(package) for package in PACKAGES))), count)

    def test_are_root_s_and_may_be_read_by_all(self):
        for package in PACKAGES:
            for line in run("dpkg-deb", "--contents", PACKAGES[package]).splitlines():
                with self.subTest(line):
                    self.assertRegex(line, r"^(-rw-r--r--|-rwxr-xr-x|drwxr-xr-x|lrwxrwxrwx) root/root ")


class Library(unittest.TestCase):
    PACKAGE = "libjobparser1"

    def test_brings_the_library_alone(self):
        self.assertEqual(own(self.PACKAGE), {f"/usr/lib/libJobParser.so.{VERSION}", "/usr/lib/libJobParser.so.1"})

    def test_asks_for_the_libraries_it_is_linked_to(self):
        needed = relations(self.PACKAGE, "Depends")

        self.assertLessEqual(
            {"libc6", "libstdc++6", "libgcc-s1", "libminizip1", "libre2-9", "libsimdjson14", "zlib1g"}, set(needed))

    def test_asks_for_no_ciphers_but_recommends_them(self):
        self.assertNotIn("libssl3", relations(self.PACKAGE, "Depends"))
        self.assertEqual(relations(self.PACKAGE, "Recommends"), {"libssl3": None})

    def test_asks_for_none_of_the_worker_s_engines(self):
        self.assertEqual([name for name in relations(self.PACKAGE, "Depends") if re.match("libgs|libmupdf", name)], [])

    def test_tells_packages_of_other_programs_what_to_ask_for(self):
        control = run("dpkg-deb", "--info", PACKAGES[self.PACKAGE], "shlibs")

        self.assertEqual(control.split(), ["libJobParser", "1", "libjobparser1", "(>=", f"{VERSION})"])

    def test_has_the_loader_learn_of_it(self):
        self.assertIn("ldconfig", run("dpkg-deb", "--info", PACKAGES[self.PACKAGE], "postinst"))


class Development(unittest.TestCase):
    PACKAGE = "libjobparser-dev"

    def test_brings_what_programs_are_built_with(self):
        self.assertLessEqual(
            {
                "/usr/lib/libJobParser.so", "/usr/lib/pkgconfig/jobparser.pc",
                "/usr/lib/cmake/JobParser/JobParserConfig.cmake", "/usr/lib/cmake/JobParser/JobParserTargets.cmake",
                "/usr/share/man/man3/JobParserC.3.gz", "/usr/share/doc/JobParser/config.ini",
                "/usr/share/jobparser/schema/record.schema.json", "/usr/share/jobparser/schema/metadata.schema.json",
            },
            own(self.PACKAGE))

    def test_brings_every_chief_header(self):
        chief = {f"/usr/include/JobParser/{header.name}" for header in (SOURCE / "JobParser").glob("*.h")}

        self.assertLessEqual(chief, own(self.PACKAGE))

    def test_asks_for_the_library_of_the_same_version(self):
        self.assertEqual(relations(self.PACKAGE, "Depends"), {"libjobparser1": f"= {VERSION}"})


class Tool(unittest.TestCase):
    PACKAGE = "jobparser"

    def test_brings_the_tool_its_manual_and_completion(self):
        self.assertEqual(
            own(self.PACKAGE),
            {
                "/usr/bin/jobparser", "/usr/share/man/man1/jobparser.1.gz",
                "/usr/share/bash-completion/completions/jobparser", "/usr/share/zsh/vendor-completions/_jobparser",
            })

    def test_has_a_manual_that_is_packed_whole(self):
        page = gzip.decompress(file_of(self.PACKAGE, "/usr/share/man/man1/jobparser.1.gz"))

        self.assertTrue(page.startswith(b".Dd ") and page.endswith(b".Xr ZemJobProcessor 8\n"))

    def test_asks_for_the_library_of_the_same_version(self):
        # The tool opens it by its path, so that no entry of the binary names it.
        self.assertEqual(relations(self.PACKAGE, "Depends")["libjobparser1"], f"= {VERSION}")

    def test_asks_for_nothing_that_it_carries(self):
        self.assertEqual(set(relations(self.PACKAGE, "Depends")), {"libc6", "libjobparser1"})

    def test_leaves_the_worker_to_the_one_who_installs(self):
        self.assertEqual(relations(self.PACKAGE, "Suggests"), {"jobparser-worker": None})


@unittest.skipUnless(WITH_WORKER, "The worker was not built")
class Worker(unittest.TestCase):
    PACKAGE = "jobparser-worker"

    def test_brings_the_worker_and_its_manual(self):
        self.assertEqual(own(self.PACKAGE), {"/usr/bin/ZemJobProcessor", "/usr/share/man/man8/ZemJobProcessor.8.gz"})

    def test_asks_for_what_it_renders_with(self):
        self.assertLessEqual({"libc6", "libgs10", "libtiff6", "libjpeg62-turbo"}, set(relations(self.PACKAGE, "Depends")))


class Python(unittest.TestCase):
    PACKAGE = "python3-jobparser"

    def test_brings_the_module(self):
        sources = {
            f"/usr/lib/python3/dist-packages/jobparser/{path.name}"
            for path in (SOURCE / "python/jobparser").iterdir() if path.suffix == ".py" or path.name == "py.typed"
        }

        self.assertEqual(own(self.PACKAGE), sources)

    def test_compiles_the_module_when_it_comes_and_leaves_nothing_when_it_goes(self):
        for script, program in (("postinst", "py3compile"), ("prerm", "py3clean")):
            self.assertIn(f"{program} -p python3-jobparser", run("dpkg-deb", "--info", PACKAGES[self.PACKAGE], script))

    def test_serves_every_architecture_with_the_library_of_the_same_version(self):
        self.assertEqual(field(self.PACKAGE, "Architecture"), "all")
        self.assertEqual(set(relations(self.PACKAGE, "Depends")), {"libjobparser1", "python3"})
        # It unites types by a bar while it is loaded.
        self.assertEqual(relations(self.PACKAGE, "Depends")["python3"], ">= 3.10")
        self.assertEqual(relations(self.PACKAGE, "Depends")["libjobparser1"], f"= {VERSION}")


@unittest.skipUnless(CLEAN_ROOT, "JOBPARSER_CLEAN_ROOT=0 leaves the clean root out")
@unittest.skipUnless(shutil.which("mmdebstrap"), "There is no mmdebstrap, which makes a clean root")
class CleanRoot(unittest.TestCase):
    def test_serves_tool_programs_and_module(self):
        with tempfile.TemporaryDirectory() as name:
            given = pathlib.Path(name) / "given"
            (given / "packages").mkdir(parents=True)
            for path in PACKAGES.values():
                shutil.copy(path, given / "packages")
            shutil.copytree(SOURCE / "tests/install/consumers", given / "consumers")
            shutil.copy(HERE / "in_clean_root.sh", given)
            (given / "job.prn").write_bytes(JOB)

            done = subprocess.run(
                ["mmdebstrap", "--variant=apt", f"--customize-hook=copy-in {given} /",
                 "--customize-hook=chroot \"$1\" sh -e /given/in_clean_root.sh", "bookworm", "/dev/null"],
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace",
                timeout=1500, env=bare_environment())

        if "begun: packages" not in done.stdout or re.search(r"Failed to fetch|Could not resolve", done.stdout):
            self.skipTest(f"No clean root can be made here: {done.stdout[-500:]}")
        self.assertEqual(done.returncode, 0, done.stdout)
        wanted = ["tool", "metadata", "manual", "completion", "python", "cmake", "cpp-pkg-config", "pkg-config", "safe"]
        self.assertEqual(
            re.findall(r"^served: (\S+)$", done.stdout, re.MULTILINE), wanted + ["worker"] * WITH_WORKER + ["removal"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
