"""Jobs, as Python sees them."""

from __future__ import annotations

import ctypes
import dataclasses
import json
import os
import threading
import weakref
from collections.abc import Iterator, Sequence
from ctypes import byref, c_int32, c_size_t, c_void_p
from types import TracebackType
from typing import Any, overload

from . import _library
from ._info import JobInfo, Language
from .steps import Step, Text

Path = str | bytes | os.PathLike[str] | os.PathLike[bytes]

_NO_COLLECT, _REFUSE_RESTRICTED, _NO_WORKER = 1, 2, 4
_NO_LANGUAGE = -1


def version() -> str:
    """The version of the library."""
    return _library.version()


def _without_zero(text: bytes, what: str) -> bytes:
    if b"\0" in text:
        raise ValueError(f"{what} holds a zero byte")
    return text


def _path(path: Path) -> bytes:
    return _without_zero(os.fsencode(path), "The path")


def _text(text: Text | None) -> bytes | None:
    if text is None:
        return None
    return _without_zero(text if isinstance(text, bytes) else text.encode("utf-8", "surrogateescape"), "A text")


@dataclasses.dataclass(frozen=True)
class Decryption:
    """How job files are encrypted."""

    algorithm: str
    """As OpenSSL names it, such as aes-128-cbc."""
    key: bytes = dataclasses.field(repr=False)
    iv: bytes = dataclasses.field(repr=False)


def set_up(
    *,
    directory: Path | None = None,
    executable: Path | None = None,
    arguments: Text | None = None,
    config: Path | None = None,
    processes: int | None = None,
    pool_limit: int = 0,
    deadline_ms: int | None = None,
    grayscale_tolerance: int = 0,
    decrypt: Decryption | None = None,
) -> None:
    """Sets the library up, once a process, before the first parse; without it, the first parse does.

    `directory` and `executable` name the worker, of which `processes` run: two if it is None, none if it is 0.
    `deadline_ms` is how long a request to one may take: 300000 if it is None, without a limit if it is 0.
    `pool_limit` is how many requests one serves: 500 if it is 0, without a limit below. `config` names papers.
    `decrypt` says how all job files are encrypted. Raises AlreadySetUpError if the library is set up.
    """
    options = _library.SetUpOptions(
        structSize=ctypes.sizeof(_library.SetUpOptions),
        directory=None if directory is None else _path(directory),
        executable=None if executable is None else _path(executable),
        arguments=_text(arguments),
        config=None if config is None else _path(config),
        processCount=_zero_is_none(processes),
        poolLimit=pool_limit,
        poolDeadline=_zero_is_none(deadline_ms),
        grayscaleTolerance=grayscale_tolerance,
    )
    if decrypt is not None:
        # Kept until the call is over.
        key, iv = ctypes.create_string_buffer(decrypt.key), ctypes.create_string_buffer(decrypt.iv)
        options.decryptAlgorithm = _text(decrypt.algorithm)
        options.decryptKey, options.decryptKeySize = ctypes.addressof(key), len(decrypt.key)
        options.decryptIv, options.decryptIvSize = ctypes.addressof(iv), len(decrypt.iv)
    _library.call("jobParserSetUp", byref(options))


def _zero_is_none(number: int | None) -> int:
    if number is None:
        return 0
    return -1 if number == 0 else number


@dataclasses.dataclass(frozen=True, slots=True)
class Chunk:
    """One stretch of a job."""

    class_name: str
    """As in metadata, such as RawDataE; empty for a chunk that is null there."""
    offset: int | None
    """Where it stands in the job's file, if it stands for a range of it."""
    file_size: int | None
    """Bytes of that range."""
    size: int
    """Bytes that it is saved as."""


def _chunk(given: _library.Chunk) -> Chunk:
    has_range = given.fileSize >= 0
    return Chunk(
        given.className.decode("ascii"),
        given.offset if has_range else None,
        given.fileSize if has_range else None,
        given.size,
    )


class Chunks(Sequence[Chunk]):
    """The chunks of a job, taken from the library as they are asked for."""

    _BLOCK = 4096

    def __init__(self, job: Job) -> None:
        self._job = job

    def __len__(self) -> int:
        count = c_size_t()
        self._job._call("jobParserChunkCount", byref(count))
        return count.value

    def _block(self, first: int, count: int) -> list[Chunk]:
        block = (_library.Chunk * count)()
        self._job._call("jobParserChunks", first, count, block, ctypes.sizeof(_library.Chunk))
        return [_chunk(given) for given in block]

    @overload
    def __getitem__(self, index: int) -> Chunk: ...
    @overload
    def __getitem__(self, index: slice) -> list[Chunk]: ...
    def __getitem__(self, index: int | slice) -> Chunk | list[Chunk]:
        places = range(len(self))[index]
        if isinstance(places, int):
            return self._block(places, 1)[0]
        if places.step == 1:
            return self._block(places.start, len(places))
        return [self._block(place, 1)[0] for place in places]

    def __iter__(self) -> Iterator[Chunk]:
        count = len(self)
        for first in range(0, count, self._BLOCK):
            yield from self._block(first, min(self._BLOCK, count - first))


class Job:
    """A job that was parsed or loaded, with its file open until close() or the end of a with block.

    May be used by any number of threads; calls on one job wait for each other.
    """

    def __init__(self, handle: int, path: Path) -> None:
        """For parse and load."""
        self.path = path
        self._handle: int | None = handle
        self._lock = threading.Lock()
        self._free = weakref.finalize(self, _library.free_job, handle)

    def _call(self, name: str, *arguments: object) -> None:
        with self._lock:
            if self._handle is None:
                raise ValueError("The job is closed")
            _library.call(name, self._handle, *arguments)

    def close(self) -> None:
        with self._lock:
            self._handle = None
            self._free()

    def __enter__(self) -> Job:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, value: BaseException | None, traceback: TracebackType | None
    ) -> None:
        self.close()

    @property
    def info(self) -> JobInfo:
        """The record."""
        text = c_void_p()
        self._call("jobParserRecord", 1, byref(text), None)
        return JobInfo.from_json(_library.take_text(text) or b"{}")

    @property
    def parsed(self) -> bool:
        """False for a malformed job, which is one raw stretch that saves byte for byte."""
        parsed = c_int32()
        self._call("jobParserParsed", byref(parsed), None)
        return parsed.value != 0

    @property
    def cause(self) -> str | None:
        """What is wrong with a malformed job."""
        parsed, cause = c_int32(), c_void_p()
        self._call("jobParserParsed", byref(parsed), byref(cause))
        text = _library.take_text(cause)
        return None if text is None else os.fsdecode(text)

    @property
    def chunks(self) -> Chunks:
        return Chunks(self)

    def metadata_json(self) -> str:
        """The metadata, as it is stored beside the job."""
        text = c_void_p()
        self._call("jobParserMetadata", byref(text), None)
        return (_library.take_text(text) or b"").decode("utf-8")

    def metadata(self) -> dict[str, Any]:
        metadata: dict[str, Any] = json.loads(self.metadata_json())
        return metadata

    def save(self, path: Path | None = None) -> None:
        """Writes the job's bytes, over its own file if no path is given; that changes only when all is written."""
        self._call("jobParserSave", _path(self.path if path is None else path))

    def change(self, *steps: Step) -> None:
        """Changes the job by the steps, in their order; see jobparser.steps."""
        self._call("jobParserChange", *_steps(steps))

    def rewrite(self, path: Path | None = None, *steps: Step) -> None:
        """Changes the job by the steps, then saves it; the job stays changed."""
        self._call("jobParserRewrite", *_steps(steps), _path(self.path if path is None else path))


def _steps(steps: Sequence[Step]) -> tuple[object, int, int]:
    array = (_library.Step * len(steps))()
    for place, step in zip(array, steps):
        place.kind, place.first, place.second = step.kind, _text(step.first), _text(step.second)
    return array, len(steps), ctypes.sizeof(_library.Step)


def parse(
    path: Path,
    *,
    language: Language | int | None = None,
    collect: bool = True,
    refuse_restricted: bool = False,
    worker: bool = True,
) -> Job:
    """Parses a job. A malformed one is no failure: see Job.parsed.

    `language` is found out if it is None. `collect` False leaves counts, paper, duplex, finishing and toner saving
    out of the record. `refuse_restricted` fails for an encrypted or malformed PDF. `worker` False asks no worker
    process for what the job does not tell.
    """
    number = 0 if language is None else int(language) or _NO_LANGUAGE
    flags = (0 if collect else _NO_COLLECT) | (_REFUSE_RESTRICTED if refuse_restricted else 0)
    options = _library.ParseOptions(
        ctypes.sizeof(_library.ParseOptions), number, flags | (0 if worker else _NO_WORKER)
    )
    handle = c_void_p()
    _library.call("jobParserParse", _path(path), byref(options), byref(handle))
    return Job(handle.value or 0, path)


def load(path: Path, metadata: Path | None = None) -> Job:
    """Loads a job from its metadata: that beside it, if no path is given."""
    handle = c_void_p()
    _library.call("jobParserLoad", _path(path), _path(path if metadata is None else metadata), byref(handle))
    return Job(handle.value or 0, path)
