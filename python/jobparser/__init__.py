"""Tells what a spooled print job is, without rendering it, and rewrites jobs.

    import jobparser
    from jobparser import steps

    with jobparser.parse("job.prn") as job:
        print(job.info.language, job.info.copies)
        job.rewrite("out.prn", steps.set("DUPLEX", "ON"), steps.job_name("Report"))

Needs the shared library libJobParser.so.1: that of the environment variable JOBPARSER_LIBRARY, that of the
installation which this module belongs to, or that of the system.
"""

from . import steps
from ._errors import (
    AlreadySetUpError,
    AssertionFailedError,
    CannotReadError,
    CannotWriteError,
    InvalidArgumentError,
    JobParserError,
    MalformedJobError,
    OutOfMemoryError,
)
from ._info import Brand, Duplex, JobInfo, Language, Orientation, Paper, Punch, Staple
from ._job import Chunk, Chunks, Decryption, Job, load, parse, set_up, version
from .steps import Step

__all__ = [
    "AlreadySetUpError",
    "AssertionFailedError",
    "Brand",
    "CannotReadError",
    "CannotWriteError",
    "Chunk",
    "Chunks",
    "Decryption",
    "Duplex",
    "InvalidArgumentError",
    "Job",
    "JobInfo",
    "JobParserError",
    "Language",
    "MalformedJobError",
    "Orientation",
    "OutOfMemoryError",
    "Paper",
    "Punch",
    "Staple",
    "Step",
    "load",
    "parse",
    "set_up",
    "steps",
    "version",
]
