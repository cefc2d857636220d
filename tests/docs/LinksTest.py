"""Documents lead to each other: each link has an end, each document is reached, each `./dev` command is there.

SOURCE_DIR is the root of the sources.
"""

import json
import os
import pathlib
import re
import unittest

SOURCE = pathlib.Path(os.environ["SOURCE_DIR"])
DOCUMENTS = sorted([*SOURCE.glob("*.md"), *SOURCE.glob("docs/**/*.md"), *SOURCE.glob("[a-zA-Z]*/README.md"),
                    *SOURCE.glob("JobParser/*/README.md")])
DOCUMENTS = [path for path in DOCUMENTS if "build" not in path.relative_to(SOURCE).parts]
LINK = re.compile(r"\]\(([^)\s]+)\)")


def links(document):
    """The files and folders that a document names as links."""
    found = LINK.findall(document.read_text(encoding="utf-8"))
    return [(document.parent / link.partition("#")[0]).resolve() for link in found if "://" not in link]


class Links(unittest.TestCase):
    def test_have_an_end(self):
        missing = [f"{document.relative_to(SOURCE)}: {end}" for document in DOCUMENTS for end in links(document)
                   if not end.exists()]

        self.assertEqual(missing, [])

    def test_lead_from_the_first_page_to_every_document(self):
        first = set(links(SOURCE / "README.md"))
        wanted = [*SOURCE.glob("*.md"), *SOURCE.glob("docs/*.md")]
        reached = {path for path in wanted if path.resolve() in first or path.name == "README.md"}

        self.assertEqual([path.name for path in wanted if path not in reached], [])
        self.assertIn((SOURCE / "docs/formats").resolve(), first)
        self.assertIn((SOURCE / "docs/schema").resolve(), first)

    def test_name_commands_that_are_there(self):
        script = (SOURCE / "dev").read_text(encoding="utf-8")
        known = set(re.findall(r"^  ([a-z]+) ", script[script.index("TEXT'"):], re.MULTILINE))
        named = {(document.name, command) for document in DOCUMENTS
                 for command in re.findall(r"\./dev ([a-z]+)", document.read_text(encoding="utf-8"))}

        self.assertIn("package", known)
        self.assertEqual([pair for pair in sorted(named) if pair[1] not in known], [])

    def test_name_presets_that_are_there(self):
        presets = {preset["name"] for preset in json.loads((SOURCE / "CMakePresets.json").read_text())["configurePresets"]}
        named = {(document.name, preset) for document in DOCUMENTS
                 for preset in re.findall(r"--preset (\w+)", document.read_text(encoding="utf-8"))}

        self.assertIn(("CONTRIBUTING.md", "asan"), named)
        self.assertEqual([pair for pair in sorted(named) if pair[1] not in presets], [])

    def test_name_sources_that_are_there(self):
        missing = []
        for name in ("CONTRIBUTING.md", "SECURITY.md", "docs/third-party.md", "README.md"):
            text = (SOURCE / name).read_text(encoding="utf-8")
            for path in re.findall(r"`((?:JobParser|Torv|pdf|tests|fuzz|bench|cmake|docs|python)/[\w./-]+)`", text):
                if not re.search(r"NAME|LANGUAGE", path) and not (SOURCE / path).exists():
                    missing.append(f"{name}: {path}")

        self.assertEqual(missing, [])


if __name__ == "__main__":
    unittest.main()
