"""The changes that Job.change and Job.rewrite take.

Texts are bytes, or str that is written as UTF-8. They go in as they are: line ends and, unless it is said
otherwise, quotation marks are the caller's. New commands stand before the job's first ENTER LANGUAGE line; where
there is none, they are left out.
"""

from __future__ import annotations

import dataclasses

Text = str | bytes


@dataclasses.dataclass(frozen=True)
class Step:
    """One change; made by the functions of this module."""

    kind: int
    first: Text | None = None
    second: Text | None = None


def wrap(language: Text, name: Text) -> Step:
    """Puts a job without PJL into an envelope. `language` is a word behind ENTER LANGUAGE, such as PCL."""
    return Step(1, language, name)


def job_name(name: Text) -> Step:
    """Makes NAME="name" the whole parameter of every JOB."""
    return Step(2, name)


def job_param(name: Text, value: Text) -> Step:
    """Sets one parameter of the first JOB and keeps the others."""
    return Step(3, name, value)


def set(name: Text, value: Text, *, quoted: bool = False) -> Step:
    """SET name=value, instead of every other SET name."""
    return Step(5 if quoted else 4, name, value)


def add(name: Text, value: Text, *, quoted: bool = False) -> Step:
    """SET name=value, beside a SET name with another value."""
    return Step(7 if quoted else 6, name, value)


def unset(name: Text, value: Text) -> Step:
    """Removes every SET name=value."""
    return Step(8, name, value)


def unset_first(prefix: Text) -> Step:
    """Removes the first SET that begins so, case as it stands."""
    return Step(9, prefix)


def unset_all(prefix: Text) -> Step:
    """Removes every SET that begins so, case as it stands."""
    return Step(10, prefix)


def finishing(type: Text, option: Text) -> Step:
    """The four SETs of one finishing step of HP drivers, instead of one of that type."""
    return Step(11, type, option)


def pjl_code(text: Text) -> Step:
    """Inserts a text byte for byte."""
    return Step(12, text)


def strip_pjl() -> Step:
    """Removes every PJL line and every UEL."""
    return Step(13)


def strip_prescribe() -> Step:
    """Removes every PRESCRIBE block."""
    return Step(14)
