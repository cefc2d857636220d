"""Reads every #include and fails on one that points upwards.

The rooms stand in layers, and a file includes only its own layer's room and what lies below.
"""

import os
import pathlib
import re
import tempfile
import unittest

FOUNDATION, PAPER, MODEL, LANGUAGES, FRAME, TOOLS, WORKER = range(7)

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
    "tools": TOOLS,
    "worker": WORKER,
}

# Headers at the top that are implemented in a room below.
TOP_HEADERS = {
    "JobParser/Export.h": PAPER,
    "JobParser/IChunk.h": MODEL,
    "JobParser/Job.h": MODEL,
    "JobParser/JobFile.h": MODEL,
    "JobParser/JobInfo.h": MODEL,
    "JobParser/JobParserException.h": MODEL,
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
# Rooms that have nothing to do with those beside them.
APART = ("pdf",)

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*["<]([^">]+)[">]', re.MULTILINE)


def layer_of(path):
    if path in TOP_HEADERS:
        return TOP_HEADERS[path]
    folder = path
    while "/" in folder:
        folder = folder.rpartition("/")[0]
        if folder in LAYERS:
            return LAYERS[folder]
    return None


def wrong_includes(root):
    """Pairs of a file and what it must not include, as paths from the root."""
    root = pathlib.Path(root)
    for folder in ROOTS:
        for file in sorted((root / folder).rglob("*")):
            if file.suffix not in (".h", ".cpp"):
                continue
            path = file.relative_to(root).as_posix()
            highest = LANGUAGES if path in LOOKING_UP else layer_of(path)
            for included in INCLUDE.findall(file.read_text(encoding="utf-8")):
                layer = layer_of(included)
                if layer is None and included.split("/")[0] not in ROOTS:
                    continue
                apart = any(included.startswith(room + "/") != path.startswith(room + "/") for room in APART)
                if layer is None or layer > highest or apart and layer == layer_of(path):
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
