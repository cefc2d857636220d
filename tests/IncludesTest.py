"""Reads every #include and fails on one that points upwards.

The rooms stand in layers, and a file includes only its own room and what lies below.
"""

import os
import pathlib
import re
import tempfile
import unittest

FOUNDATION, PAPER, MODEL, LANGUAGES, FRAME, PROGRAMS = range(6)

# The longest prefix counts. What stands directly in JobParser/ is the frame's, but for TOP_HEADERS.
LAYERS = {
    "Torv": FOUNDATION,
    "JobParser/paper": PAPER,
    "JobParser/model": MODEL,
    "JobParser/languages": LANGUAGES,
    "JobParser/pclxl": LANGUAGES,
    "JobParser/xps": LANGUAGES,
    "pdf": LANGUAGES,
    "JobParser": FRAME,
    "tools": PROGRAMS,
    "worker": PROGRAMS,
}

# Headers at the top that are implemented in a room below.
TOP_HEADERS = {
    "JobParser/Export.h": "JobParser/paper",
    "JobParser/IChunk.h": "JobParser/model",
    "JobParser/Job.h": "JobParser/model",
    "JobParser/JobFile.h": "JobParser/model",
    "JobParser/JobInfo.h": "JobParser/model",
    "JobParser/JobParserException.h": "JobParser/model",
}

# Classes that look upwards by design, as far as the languages: the owner of all stream parsers, the rewriter of
# jobs, and the reader of a paper out of a PCL XL value.
LOOKING_UP = {
    "JobParser/model/GlobalParser.h",
    "JobParser/model/GlobalParser.cpp",
    "JobParser/model/JobRewriting.cpp",
    "JobParser/paper/PclXlUtils.h",
    "JobParser/paper/PclXlUtils.cpp",
}

ROOTS = ("Torv", "JobParser", "pdf", "tools", "worker")
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*["<]([^">]+)[">]', re.MULTILINE)


def room_of(path):
    if path in TOP_HEADERS:
        return TOP_HEADERS[path]
    folder = path
    while "/" in folder:
        folder = folder.rpartition("/")[0]
        if folder in LAYERS:
            return folder
    return None


def is_wrong(path, included):
    room, other = room_of(path), room_of(included)
    if other is None:
        return included.split("/")[0] in ROOTS
    if room == other:
        return False
    if path in LOOKING_UP:
        return LAYERS[other] > LANGUAGES
    return LAYERS[other] >= LAYERS[room]


def wrong_includes(root):
    """Pairs of a file and what it must not include, as paths from the root."""
    root = pathlib.Path(root)
    for folder in ROOTS:
        for file in sorted((root / folder).rglob("*")):
            if file.suffix not in (".h", ".cpp"):
                continue
            path = file.relative_to(root).as_posix()
            for included in INCLUDE.findall(file.read_text(encoding="utf-8")):
                if is_wrong(path, included):
                    yield path, included


class Tree(unittest.TestCase):
    def test_includes_run_one_way(self):
        self.assertEqual(list(wrong_includes(os.environ["SOURCE_DIR"])), [])

    def test_exceptions_are_not_older_than_their_files(self):
        root = pathlib.Path(os.environ["SOURCE_DIR"])
        headers = [path for path in TOP_HEADERS if not (root / path).is_file()]
        self.assertEqual(headers, [])


class Reader(unittest.TestCase):
    def includes(self, path, text):
        with tempfile.TemporaryDirectory() as root:
            file = pathlib.Path(root) / path
            file.parent.mkdir(parents=True)
            file.write_text(text, encoding="utf-8")
            return [included for _, included in wrong_includes(root)]

    def test_finds_each_wrong_direction(self):
        for path, included in (
            ("Torv/Text.cpp", "JobParser/Export.h"),
            ("Torv/Text.cpp", "pdf/Value.h"),
            ("JobParser/paper/PaperUtils.cpp", "JobParser/JobInfo.h"),
            ("JobParser/paper/PaperUtils.cpp", "JobParser/model/Pdl.h"),
            ("JobParser/model/Pdl.h", "JobParser/languages/PjlParser.h"),
            ("JobParser/model/Job.cpp", "JobParser/Parser.h"),
            ("JobParser/IChunk.h", "JobParser/Library.h"),
            ("JobParser/Job.h", "JobParser/pclxl/PclXLParser.h"),
            ("JobParser/languages/PjlParser.cpp", "JobParser/Parser.h"),
            ("JobParser/paper/EMediaSize.h", "JobParser/pclxl/PclXLTags.h"),
            ("JobParser/paper/PaperSizeManager.cpp", "JobParser/pclxl/JobChunkPclXLAttributeValue.h"),
            ("JobParser/model/UnserializationContext.cpp", "JobParser/pclxl/JobChunkPclXLRaw.h"),
            ("JobParser/pclxl/PclXLParser.cpp", "JobParser/Library.h"),
            ("pdf/Document.cpp", "JobParser/ParseJobInfo.h"),
            ("pdf/Value.h", "JobParser/languages/PjlParser.h"),
            ("pdf/Lexer.cpp", "JobParser/pclxl/PclXLParser.h"),
            ("JobParser/languages/PjlParser.cpp", "pdf/Parser.h"),
            ("JobParser/Job.h", "pdf/Value.h"),
            ("JobParser/Parser.cpp", "tools/Subcommands.h"),
            ("JobParser/model/Job.cpp", "JobParser/xps/ChunkXps.h"),
            ("JobParser/xps/XpsParser.cpp", "JobParser/Parser.h"),
            ("JobParser/ExtJobProcessor.cpp", "worker/Request.h"),
            ("tools/main.cpp", "worker/Service.h"),
            ("worker/Service.cpp", "tools/Session.h"),
            ("JobParser/pclxl/PclXLMode.cpp", "JobParser/languages/PrescribeParser.h"),
            ("JobParser/languages/PjlParser.cpp", "JobParser/xps/XpsParser.h"),
        ):
            with self.subTest(f"{path} includes {included}"):
                self.assertEqual(self.includes(path, f'#include "{included}"\n'), [included])

    def test_lets_the_right_direction_pass(self):
        for path, included in (
            ("Torv/Text.cpp", "Torv/Text.h"),
            ("Torv/Text.cpp", "string"),
            ("JobParser/paper/PaperUtils.h", "JobParser/Export.h"),
            ("JobParser/model/Pdl.h", "JobParser/paper/Paper.h"),
            ("JobParser/Job.h", "JobParser/IChunk.h"),
            ("JobParser/languages/PjlParser.cpp", "JobParser/model/GlobalParser.h"),
            ("JobParser/Parser.h", "pdf/PdfParserException.h"),
            ("JobParser/pclxl/Operator.cpp", "JobParser/paper/PclXlUtils.h"),
            ("JobParser/pclxl/PclXLMode.cpp", "JobParser/model/GlobalParser.h"),
            ("JobParser/Library.cpp", "JobParser/pclxl/JobChunkPclXLRaw.h"),
            ("pdf/Parser.cpp", "pdf/Lexer.h"),
            ("pdf/JobFileSource.cpp", "JobParser/JobFile.h"),
            ("pdf/ChunkPdf.h", "JobParser/IChunk.h"),
            ("tools/main.cpp", "JobParser/Parser.h"),
            ("JobParser/xps/XpsParser.cpp", "JobParser/JobFile.h"),
            ("worker/BodyFinder.cpp", "JobParser/model/GlobalParser.h"),
        ):
            with self.subTest(f"{path} includes {included}"):
                self.assertEqual(self.includes(path, f'#include "{included}"\n'), [])

    def test_lets_the_named_classes_look_up(self):
        for path in sorted(LOOKING_UP):
            self.assertEqual(self.includes(path, '#include "JobParser/languages/PjlParser.h"\n'), [])

    def test_lets_the_named_classes_look_no_further_than_the_languages(self):
        for path in sorted(LOOKING_UP):
            for included in ("JobParser/Parser.h", "tools/Subcommands.h"):
                self.assertEqual(self.includes(path, f'#include "{included}"\n'), [included])

    def test_lets_no_helper_of_the_rewriter_look_up(self):
        for path in ("JobParser/model/ShrinkingList.cpp", "JobParser/model/JobRewriting.h", "JobParser/Job.h"):
            included = "JobParser/languages/ChunkPjlCmd.h"
            self.assertEqual(self.includes(path, f'#include "{included}"\n'), [included])

    def test_reads_every_way_to_write_an_include(self):
        for line in ("#include <tools/X.h>", "  #  include \"tools/X.h\"", "int a;\n#include\t\"tools/X.h\" // why"):
            self.assertEqual(self.includes("Torv/Text.cpp", line + "\n"), ["tools/X.h"])


if __name__ == "__main__":
    unittest.main()
