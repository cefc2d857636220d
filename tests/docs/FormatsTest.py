"""The jobs that the pages of docs/formats walk through are taken apart as those pages say.

SOURCE_DIR is the sources, JOBPARSER_TOOL the tool. A dump that does not begin at 0 is part of a sample.
"""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["SOURCE_DIR"])
PAGES = sorted((SOURCE / "docs/formats").glob("*.md"))
sys.path.insert(0, str(SOURCE / "samples"))

import make_samples  # noqa: E402

LINE = re.compile(r"^([0-9a-f]{8})  ((?:[0-9a-f]{2} {1,2})+|(?:[0-9a-f]{2} {1,2})+\.\.\.) *\|(.*)\|$", re.MULTILINE)
ROW = re.compile(r"^\| (?:([0-9A-F]+)(?: to ([0-9A-F]+)|( on))?)? ?\| ([^|]*) \|", re.MULTILINE)


def dump_of(page):
    """Where the bytes of a page's dump begin, the bytes, and what stands beside them."""
    lines = LINE.findall(page)
    data = b"".join(bytes.fromhex(hexadecimal.replace("...", "")) for _, hexadecimal, _ in lines)
    return [int(offset, 16) for offset, _, _ in lines], data, "".join(text for _, _, text in lines)


def rows_of(page):
    """Start, end and class of each row of the table behind the dump; nothing for what is not said."""
    rows = []
    for start, end, is_open, text in ROW.findall(page[LINE.search(page).start():].split("\n## ")[0]):
        named = re.search(r"`(?:Job)?Chunk(\w+)`", text)
        if named:
            last = None if is_open else end or start
            rows.append((int(start, 16) if start else None, int(last, 16) + 1 if last else None, named[1] + "E"))
        elif start:
            break  # Whatever another language makes of the rest.
    return rows


class Formats(unittest.TestCase):
    def chunks_of(self, path):
        """Start, end and class of each chunk; no places where the tool reckons them."""
        page = subprocess.run(
            [os.environ["JOBPARSER_TOOL"], "show", "--no-worker", path], check=True, capture_output=True).stdout
        data = json.loads(re.search(rb'id="job">(.*?)</script>', page, re.DOTALL)[1])
        return [
            (*((None, None) if len(chunk) > 5 else (chunk[1], chunk[1] + chunk[2])), data["kinds"][chunk[0]][0])
            for chunk in data["chunks"]
        ]

    def job_with(self, folder, start, data):
        path = pathlib.Path(folder, "job")
        path.write_bytes(data)
        if start == 0:
            return path
        make_samples.main([str(pathlib.Path(folder, "samples"))])
        found = [
            sample for sample in pathlib.Path(folder, "samples").iterdir()
            if sample.read_bytes()[start:].startswith(data)
        ]
        self.assertEqual(len(found), 1)
        return found[0]

    def test_show_the_bytes_that_they_name(self):
        for path in PAGES:
            with self.subTest(path.name):
                offsets, data, text = dump_of(path.read_text(encoding="utf-8"))

                self.assertEqual(offsets, list(range(offsets[0], offsets[0] + len(data), 16)))
                self.assertEqual(text, "".join(chr(byte) if 32 <= byte < 127 else "." for byte in data))

    def test_walk_through_the_chunks_that_are_made(self):
        for path in PAGES:
            with self.subTest(path.name), tempfile.TemporaryDirectory() as folder:
                page = path.read_text(encoding="utf-8")
                offsets, data, _ = dump_of(page)
                chunks = self.chunks_of(self.job_with(folder, offsets[0], data))
                if offsets[0] > 0:
                    chunks = [chunk for chunk in chunks if chunk[1] > offsets[0]]
                rows = rows_of(page)

                self.assertGreater(len(rows), 1, rows)
                for row, chunk in zip(rows, chunks):
                    said = tuple(have if have is None or says is None else says for says, have in zip(row, chunk))
                    self.assertEqual(said, chunk, row)
                self.assertLessEqual(len(rows), len(chunks))


if __name__ == "__main__":
    unittest.main()
