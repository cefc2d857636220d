"""Validates what the tool gives against docs/schema.

SOURCE_DIR is the tree, JOBPARSER_TOOL the tool. JOBPARSER_CORPUS, or else JOBPARSER_DEFAULT_CORPUS, may name a folder
of real jobs with a manifest.jsonl.
"""

import copy
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import jsonschema

SOURCE = pathlib.Path(os.environ["SOURCE_DIR"])
TOOL = os.environ["JOBPARSER_TOOL"]
sys.path.insert(0, str(SOURCE / "samples"))

import make_samples  # noqa: E402

RECORD = json.loads((SOURCE / "docs/schema/record.schema.json").read_text(encoding="utf-8"))
METADATA = json.loads((SOURCE / "docs/schema/metadata.schema.json").read_text(encoding="utf-8"))
STORE = {schema["$id"]: schema for schema in (RECORD, METADATA)}


def validator(schema):
    resolver = jsonschema.RefResolver(schema["$id"], schema, store=STORE)
    return jsonschema.Draft202012Validator(schema, resolver=resolver)


IS_RECORD, IS_METADATA = validator(RECORD), validator(METADATA)


def output(*arguments):
    done = subprocess.run([TOOL, *map(str, arguments)], capture_output=True, timeout=120)
    # A malformed job has metadata, too.
    if done.returncode not in (0, 3):
        raise AssertionError(done.stderr)
    return json.loads(done.stdout)


def metadata_of(path, *options):
    return output("meta", "--no-worker", *options, path)


class Outputs(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def assert_valid(self, path):
        with self.subTest(path.name):
            IS_RECORD.validate(output("info", path))
            IS_METADATA.validate(metadata_of(path))

    def test_of_samples_are_valid(self):
        make_samples.main([str(self.folder)])
        jobs = sorted(self.folder.iterdir())

        for path in jobs:
            self.assert_valid(path)
        self.assertGreaterEqual(len(jobs), 8)

    def test_of_real_jobs_are_valid(self):
        corpus = pathlib.Path(os.environ.get("JOBPARSER_CORPUS") or os.environ["JOBPARSER_DEFAULT_CORPUS"])
        if not (corpus / "manifest.jsonl").is_file():
            self.skipTest("There are no jobs: JOBPARSER_CORPUS names no folder with a manifest.jsonl")
        names = [json.loads(line)["file"] for line in (corpus / "manifest.jsonl").read_text().splitlines()]

        for name in names:
            self.assert_valid(corpus / name)

    def test_of_malformed_jobs_are_valid(self):
        path = self.folder / "job"
        for data in (b"", b"\x1b%-12345X@PJL \x01", b"\x1b%-12345X@PJL SET COPIES=3\r\n@PXL"):
            path.write_bytes(data)
            self.assert_valid(path)

    def test_of_every_kind_of_chunk_are_valid(self):
        stored = self.folder / "m.meta.json"
        stored.write_bytes((SOURCE / "fuzz/MetadataFuzz_corpus/every_chunk").read_bytes())
        job = self.folder / "job"
        job.write_bytes(b"")

        metadata = metadata_of(job, "--from-meta", stored)

        IS_METADATA.validate(metadata)
        # Its record has no facts, but is whole again.
        text = json.dumps(metadata)
        tags = set(re.findall(r'"class": "(\w+)"', text))
        self.assertGreaterEqual(len(tags), 10)
        self.assertLessEqual(tags, set(METADATA["$defs"]))

    def test_of_a_rewritten_job_are_valid(self):
        job = self.folder / "job"
        job.write_bytes(make_samples.pcl5_in_pjl())
        subprocess.run(
            [TOOL, "rewrite", job, "-o", self.folder / "out", "--pjl-code", "x", "--meta-out", self.folder / "m", "--no-worker"],
            check=True,
        )
        IS_METADATA.validate(json.loads((self.folder / "m").read_text()))


class Schemas(unittest.TestCase):
    """What a schema refuses, since one that takes everything would pass the other tests."""

    def setUp(self):
        with tempfile.TemporaryDirectory() as folder:
            job = pathlib.Path(folder, "job")
            job.write_bytes(make_samples.pcl5_in_pjl())
            self.record = output("info", job)
            self.metadata = metadata_of(job)

    def assert_refused(self, check, value):
        self.assertFalse(check.is_valid(value), value)

    def test_are_schemas(self):
        for schema in STORE.values():
            jsonschema.Draft202012Validator.check_schema(schema)

    def test_refuse_unknown_keys(self):
        self.assert_refused(IS_RECORD, {**self.record, "pages": 1})
        self.assert_refused(IS_RECORD, {**self.record, "fonts": ["A"]})
        self.assert_refused(IS_METADATA, {**self.metadata, "more": 1})
        self.assert_refused(IS_METADATA, {**self.metadata, "jobInfo": {**self.record, "pages": 1}})
        for place in ("chunk", "dto"):
            metadata = copy.deepcopy(self.metadata)
            chunk = metadata["chunks"][0]
            (chunk if place == "chunk" else chunk["dto"])["more"] = 1
            self.assert_refused(IS_METADATA, metadata)

    def test_refuse_missing_keys(self):
        for key in self.record:
            self.assert_refused(IS_RECORD, {name: value for name, value in self.record.items() if name != key})
        for index, key in ((0, "class"), (0, "id"), (0, "dto")):
            metadata = copy.deepcopy(self.metadata)
            del metadata["chunks"][index][key]
            self.assert_refused(IS_METADATA, metadata)

    def test_refuse_values_of_another_kind(self):
        for key, value in (
            ("version", 2), ("pjl", None), ("pdl", 10), ("pdl", "PCL"), ("paper", 1), ("copies", 0), ("copies", 10001),
            ("duplex", 3), ("orientation", 4), ("stapling", 4), ("punching", 102), ("ecoMode", 1), ("originalBrand", 8),
            ("kfeedShortEdge", False), ("monoCount", 1.5), ("pagesPerSheet", "2"),
        ):
            self.assert_refused(IS_RECORD, {**self.record, key: value})
        for chunk in (
            "UelE", 1.5, {"class": "NoneE", "id": 2, "dto": {}}, {"class": "RawDataE", "id": 2, "dto": {"offset": 0}},
            {"class": "RawDataE", "id": 2, "dto": {"offset": -1, "size": 1}}, {"class": "UelE", "id": 1, "dto": {}},
            {"class": "PclXLAttributeE", "id": 2, "dto": {"attribute": 1, "chunk": {"class": "UelE", "id": 3, "dto": {"x": 1}}}},
        ):
            self.assert_refused(IS_METADATA, {"jobInfo": self.metadata["jobInfo"], "chunks": [chunk]})

    def test_refuse_counts_of_which_one_is_not_known(self):
        known = {"monoCount": 1, "grayCount": 0, "colorCount": 2}
        unknown = dict.fromkeys(known)
        for counts in (known, unknown):
            IS_RECORD.validate({**self.record, **counts})
        for name in known:
            self.assert_refused(IS_RECORD, {**self.record, **known, name: None})
            self.assert_refused(IS_RECORD, {**self.record, **unknown, name: 1})

    def test_refuse_base_64_that_is_cut(self):
        def metadata(param):
            chunk = {"class": "PjlCmdBase64StringE", "id": 2, "dto": {"cmd": "C", "param": param}}
            return {"jobInfo": self.metadata["jobInfo"], "chunks": [chunk]}

        for whole in ("", "QQ==", "QUI=", "QUJD", "QUJDRA=="):
            IS_METADATA.validate(metadata(whole))
        for cut in ("Q", "QQ", "QQ=", "QUI", "QUJDRA", "====", "QQ==QQ=="):
            self.assert_refused(IS_METADATA, metadata(cut))

    def test_take_fonts_and_references(self):
        IS_METADATA.validate({"jobInfo": {**self.metadata["jobInfo"], "fonts": ["A"]}, "chunks": [None, 2]})

    def test_know_every_registered_class(self):
        registered = re.findall(r"registerChunkClass<(?:\w*)Chunk(\w+)>", (SOURCE / "JobParser/Library.cpp").read_text())

        self.assertGreaterEqual(len(registered), 10)
        self.assertLessEqual({name + "E" for name in registered}, set(METADATA["$defs"]))


if __name__ == "__main__":
    unittest.main()
