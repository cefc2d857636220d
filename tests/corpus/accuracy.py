#!/usr/bin/env python3
"""Compares what `jobparser info` tells of real jobs with the truth, beside what other programs tell.

Writes a Markdown document to standard output. The truth stands in manifest.jsonl of the corpus.
"""

import argparse
import json
import pathlib
import re
import subprocess
import sys
import tempfile

PAPERS = {5: "A4", 6: "A3", 7: "other", 14: "A5", 15: "B4", 16: "B5", 17: "Folio", 18: "Ledger", 19: "Legal",
          20: "Letter", 21: "Statement"}
DUPLEX = {0: "none", 1: "long", 2: "short"}
ORIENTATIONS = {0: "portrait", 1: "landscape"}
FACTS = ("pages", "colorPages", "copies", "paper", "duplex", "orientation")
UEL = b"\x1b%-12345X"

# Why a row is wrong, by the job and the fact.
CAUSES = {
    ("gs-pcl3.pcl", "colorPages"): "the document is in colour, but the driver's default is a gray page: the stream "
    "has one plane of black",
    ("gs-pxlcolor-mixed5.pxl", "colorPages"): "the driver wrote two grays as 4C 4D 4C and B2 B3 B2; with a tolerance "
    "of 1 the page counts as gray",
    ("fujixerox-cm305-pdf-blackwhite.pjl.pdf", "colorPages"): "the job asks for black and white, so that all pages "
    "count as mono",
    ("pcl-dvilj4.pcl", "orientation"): "the job chooses neither a size nor an orientation",
}
CAUSES_BY_LANGUAGE = {
    "ESC/P": "no reader of ESC/P",
    "QPDL": "not a language that is known here",
    "HP-GL/2": "a plot language announced by a name that is not known here",
    "URF": "no reader of URF",
}


def run(*command, **options):
    try:
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=120, check=False,
                              **options)
    except (OSError, subprocess.TimeoutExpired):
        return None
    return done.stdout if done.returncode == 0 else None


def told(record):
    """The record of a job in the words of the truth; None for what is not known."""
    counts = [record[key] for key in ("monoCount", "grayCount", "colorCount")]
    return {
        "pages": None if None in counts else sum(counts),
        "colorPages": record["colorCount"],
        "copies": record["copies"],
        "paper": PAPERS.get(record["paper"]),
        "duplex": DUPLEX.get(record["duplex"]),
        "orientation": ORIENTATIONS.get(record["orientation"]),
    }


def body_of(data):
    """The last stretch between UELs that is no PJL: enough for programs that do not know envelopes."""
    parts = [part for part in data.split(UEL) if part.strip()]
    bodies = []
    for part in parts:
        if part.lstrip().upper().startswith(b"@PJL"):
            lines = part.split(b"\n")
            while lines and (lines[0].strip() == b"" or lines[0].lstrip().upper().startswith(b"@PJL")):
                lines.pop(0)
            part = b"\n".join(lines)
        if part.strip():
            bodies.append(part)
    return max(bodies, key=len, default=b"")


def pdfinfo(path):
    text = run("pdfinfo", str(path))
    found = re.search(rb"^Pages:\s+(\d+)", text or b"", re.MULTILINE)
    size = re.search(rb"^Page size:.*?(?:\((\w+)\))?\s*$", text or b"", re.MULTILINE)
    if not found:
        return "fails"
    return found[1].decode() + (" " + size[1].decode() if size and size[1] else "")


def inkcov(path):
    text = run("gs", "-q", "-dSAFER", "-o", "-", "-sDEVICE=inkcov", str(path))
    rows = re.findall(rb"^ *([\d.]+) +([\d.]+) +([\d.]+) +[\d.]+ CMYK OK", text or b"", re.MULTILINE)
    if text is None:
        return "fails"
    return f"{len(rows)}, {sum(any(float(ink) > 0 for ink in row) for row in rows)} in colour"


def others(path, language, folder):
    """What others tell of the same job, without its envelope."""
    if language not in ("PDF", "PostScript"):
        return "", ""
    body = folder / "body"
    body.write_bytes(body_of(path.read_bytes()))
    return (pdfinfo(body) if language == "PDF" else ""), inkcov(body)


def wrong_facts(expected, facts):
    return [fact for fact in FACTS if fact in expected and expected[fact] != facts[fact]]


def show(value):
    return "?" if value is None else str(value)


def row_of(job, expected, facts, wrong):
    cells = []
    for fact in FACTS:
        if fact not in expected:
            cells.append(show(facts[fact]) if facts[fact] is not None else "")
        elif fact in wrong:
            cells.append(f"**{show(facts[fact])}** ({expected[fact]})")
        else:
            cells.append(show(expected[fact]))
    return cells


def cause_of(name, fact, expected, record):
    if record["copies"] is None:
        return "the walk takes the job for malformed (a payload behind a small letter), so that nobody is asked"
    if record["pdl"] == 0 and expected.get("pdl") not in CAUSES_BY_LANGUAGE:
        return "the job begins with none of the signatures of languages, so that nobody is asked"
    return CAUSES.get((name, fact)) or CAUSES_BY_LANGUAGE.get(expected.get("pdl")) or \
        "told neither by the envelope nor by the walk of the language"


HEAD = """# Accuracy

What `jobparser info` tells of real jobs, with the worker beside it, against what is known of how they were made. Made
by `./dev accuracy`; not to be edited.

A cell is what was told. **Bold** is wrong, with the truth in brackets; `?` is "not known". Where the truth is not known
the cell is what was told. Beside it: pages and paper by `pdfinfo`, pages and those in colour by Ghostscript's `inkcov`,
both of the body alone, since neither reads envelopes.
"""


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--corpus", type=pathlib.Path, required=True)
    parser.add_argument("--tool", required=True)
    options = parser.parse_args()
    lines, causes = [], []
    right = total = jobs = 0
    with tempfile.TemporaryDirectory() as temporary:
        for text in (options.corpus / "manifest.jsonl").read_text(encoding="utf-8").splitlines():
            entry = json.loads(text)
            name, expected = entry["file"], entry["expect"]
            path = options.corpus / name
            output = run(options.tool, "info", str(path))
            if output is None:
                sys.exit(f"{options.tool} fails on {name}")
            record = json.loads(output)
            facts = told(record)
            wrong = wrong_facts(expected, facts)
            known = sum(fact in expected for fact in FACTS)
            jobs, total, right = jobs + 1, total + known, right + known - len(wrong)
            cells = row_of(name, expected, facts, wrong)
            cells += others(path, expected.get("pdl"), pathlib.Path(temporary))
            lines.append("| " + " | ".join([name, *cells]) + " |")
            causes += [f"| {name} | {fact} | {cause_of(name, fact, expected, record)} |" for fact in wrong]
    print(HEAD)
    print(f"{right} of {total} facts of {jobs} jobs are right.\n")
    print("| job | " + " | ".join(FACTS) + " | pdfinfo | inkcov |")
    print("|---" * (len(FACTS) + 3) + "|")
    print("\n".join(lines))
    print("\n## What is wrong, and why\n\n| job | fact | cause |\n|---|---|---|")
    print("\n".join(causes))


if __name__ == "__main__":
    main()
