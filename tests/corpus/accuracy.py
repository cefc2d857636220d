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

# Why a row is wrong, by the job and the fact, where no rule tells it.
CAUSES = {
    ("gs-pxlcolor-mixed5.pxl", "colorPages"): "the driver wrote two grays as 4C 4D 4C and B2 B3 B2, and the tool asks "
    "with a tolerance of 0; with 1 the page counts as gray",
    ("gs-pxlmono-land2-dduplextrue.pxl", "duplex"): "the driver names the edge as a landscape page has it, and "
    "landscape exchanges the edges that are named",
    ("fujixerox-cm305-pdf-blackwhite.pjl.pdf", "colorPages"): "the envelope asks for black and white, so that all "
    "pages count as mono; the truth is what the document would be without it",
    ("gutenprint-kyofs4000-pcl.pcl", "duplex"): "nothing in the job tells sides",
    ("pcl-dvilj4.pcl", "orientation"): "the job chooses neither a size nor an orientation",
    ("ps-a2ps-duplex.ps", "duplex"): "the feature is *Duplex True, which names no edge and is read as the short one; "
    "the edge stands in a feature *Tumble, which is not read",
    ("ps-enscript-2up-duplex-tumble.ps", "duplex"): "sides are told by an operator without a feature's comment",
    ("ps-gs-ps2write-land2.ps", "orientation"): "no comment tells it; it stands in a size that procedures of the job "
    "compute",
    ("sharp-arc172-ps-jcl-staple-punch.ps", "duplex"): "the driver's feature is *ARDuplex, which is not read, and its "
    "envelope names an edge without DUPLEX",
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


def failure(tool, path):
    """Why the walk takes a job for malformed, in its own words."""
    said = subprocess.run([tool, "check", str(path)], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False)
    found = re.search(r"error=([^|\n]*)", said.stderr.decode(errors="replace"))
    return found[1].strip() if found else "for no reason that it tells"


def cause_of(path, fact, expected, record, tool):
    data = path.read_bytes()
    if record["copies"] is None:
        return f"the walk takes the job for malformed, so that nobody is asked: {failure(tool, path)}"
    if record["pdl"] == 0 and expected.get("pdl") not in CAUSES_BY_LANGUAGE:
        return "the job begins with none of the signatures of languages, so that nobody is asked"
    if fact == "duplex" and b"@PJL SET DUPLEX=OFF" in data and b"@PJL SET BINDING" not in data:
        return "the envelope has DUPLEX=OFF without a BINDING, and sides are told by both together only"
    if fact == "orientation" and re.search(rb"^%%Orientation: *Landscape", data, re.MULTILINE):
        return "it stands in %%Orientation, which is not read; %%ViewingOrientation and the turns of the page are"
    return CAUSES.get((path.name, fact)) or CAUSES_BY_LANGUAGE[expected["pdl"]]


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
            causes += [f"| {name} | {fact} | {cause_of(path, fact, expected, record, options.tool)} |"
                       for fact in wrong]
    print(HEAD)
    print(f"{right} of {total} facts of {jobs} jobs are right.\n")
    print("| job | " + " | ".join(FACTS) + " | pdfinfo | inkcov |")
    print("|---" * (len(FACTS) + 3) + "|")
    print("\n".join(lines))
    print("\n## What is wrong, and why\n\n| job | fact | cause |\n|---|---|---|")
    print("\n".join(causes))


if __name__ == "__main__":
    main()
