"""The C interface of the shared library, as JobParser/JobParserC.h declares it."""

from __future__ import annotations

import ctypes
import os
import pathlib
from collections.abc import Iterator
from ctypes import POINTER, Structure, c_char_p, c_int32, c_int64, c_size_t, c_uint32, c_void_p
from typing import Any

from ._errors import error_of

FILE_NAME = "libJobParser.so.1"


class SetUpOptions(Structure):
    _fields_ = [
        ("structSize", c_size_t),
        ("directory", c_char_p),
        ("executable", c_char_p),
        ("arguments", c_char_p),
        ("config", c_char_p),
        ("processCount", c_int32),
        ("poolLimit", c_int32),
        ("poolDeadline", c_int64),
        ("grayscaleTolerance", c_int32),
        ("reserved", c_int32),
        ("decryptAlgorithm", c_char_p),
        ("decryptKey", c_void_p),
        ("decryptKeySize", c_size_t),
        ("decryptIv", c_void_p),
        ("decryptIvSize", c_size_t),
    ]


class ParseOptions(Structure):
    _fields_ = [("structSize", c_size_t), ("language", c_int32), ("flags", c_uint32)]


class Chunk(Structure):
    _fields_ = [("className", c_char_p), ("offset", c_int64), ("fileSize", c_int64), ("size", c_int64)]


class Step(Structure):
    _fields_ = [("kind", c_int32), ("first", c_char_p), ("second", c_char_p)]


# The arguments of every function that gives a status, but for the last, which is the error text. A text comes
# back as a bare pointer, since it is to be freed.
_TEXT = POINTER(c_void_p)
_FUNCTIONS: dict[str, list[Any]] = {
    "jobParserSetUp": [POINTER(SetUpOptions)],
    "jobParserParse": [c_char_p, POINTER(ParseOptions), POINTER(c_void_p)],
    "jobParserLoad": [c_char_p, c_char_p, POINTER(c_void_p)],
    "jobParserParsed": [c_void_p, POINTER(c_int32), _TEXT],
    "jobParserRecord": [c_void_p, c_int32, _TEXT, POINTER(c_size_t)],
    "jobParserMetadata": [c_void_p, _TEXT, POINTER(c_size_t)],
    "jobParserChunkCount": [c_void_p, POINTER(c_size_t)],
    "jobParserChunks": [c_void_p, c_size_t, c_size_t, POINTER(Chunk), c_size_t],
    "jobParserSave": [c_void_p, c_char_p],
    "jobParserChange": [c_void_p, POINTER(Step), c_size_t, c_size_t],
    "jobParserRewrite": [c_void_p, POINTER(Step), c_size_t, c_size_t, c_char_p],
}


def _places() -> Iterator[str]:
    named = os.environ.get("JOBPARSER_LIBRARY")
    if named:
        yield named
        return
    # Beside lib/python3/dist-packages/jobparser, or in the folder of the machine's architecture there.
    parents = pathlib.Path(__file__).resolve().parents
    if len(parents) > 3:
        yield from sorted(str(path) for pattern in ("", "*/") for path in parents[3].glob(pattern + FILE_NAME))
    yield FILE_NAME


def _load() -> ctypes.CDLL:
    failures = []
    for place in _places():
        try:
            return ctypes.CDLL(place)
        except OSError as error:
            failures.append(str(error))
    raise ImportError("The library of jobparser cannot be loaded: " + "; ".join(failures))


_LIBRARY = _load()
_LIBRARY.jobParserVersion.restype = c_char_p
_LIBRARY.jobParserStatusText.restype = c_char_p
_LIBRARY.jobParserStatusText.argtypes = [c_int32]
_LIBRARY.jobParserFreeText.restype = None
_LIBRARY.jobParserFreeText.argtypes = [c_void_p]
_LIBRARY.jobParserFreeJob.restype = None
_LIBRARY.jobParserFreeJob.argtypes = [c_void_p]
for _name, _arguments in _FUNCTIONS.items():
    _function = getattr(_LIBRARY, _name)
    _function.restype = c_int32
    _function.argtypes = [*_arguments, POINTER(c_void_p)]

free_job = _LIBRARY.jobParserFreeJob


def version() -> str:
    text: bytes = _LIBRARY.jobParserVersion()
    return text.decode("ascii")


def take_text(text: c_void_p) -> bytes | None:
    """The bytes of a text that the library gave, which is freed."""
    if text.value is None:
        return None
    try:
        return ctypes.string_at(text.value)
    finally:
        _LIBRARY.jobParserFreeText(text)


def call(name: str, *arguments: object) -> None:
    """Calls a function that gives a status; raises what that says."""
    error = c_void_p()
    status: int = getattr(_LIBRARY, name)(*arguments, ctypes.byref(error))
    if status == 0:
        return
    text = take_text(error)
    if text is None:
        text = _LIBRARY.jobParserStatusText(status)
    # Paths in it are bytes that need not be UTF-8.
    raise error_of(status, os.fsdecode(text))
