"""What goes wrong, as exceptions: one class a status of the C interface."""

from __future__ import annotations


class JobParserError(Exception):
    """Anything that the library reports. `status` is the number of the C interface."""

    def __init__(self, message: str, status: int) -> None:
        super().__init__(message)
        self.status = status


class InvalidArgumentError(JobParserError, ValueError):
    """A value that the library does not know."""


class CannotReadError(JobParserError):
    """The job, its metadata or the configuration cannot be read."""


class CannotWriteError(JobParserError):
    """The output cannot be written; what stood at its path stands there still."""


class MalformedJobError(JobParserError):
    """A job that was to be refused, or chunks that do not fit the file."""


class AssertionFailedError(JobParserError):
    """The library met what it takes for impossible: metadata that makes no sense, as a rule."""


class OutOfMemoryError(JobParserError, MemoryError):
    """Memory is too short."""


class AlreadySetUpError(JobParserError):
    """The library was set up before, by a call or by the first parse."""


_CLASSES: dict[int, type[JobParserError]] = {
    1: InvalidArgumentError,
    2: CannotReadError,
    3: CannotWriteError,
    4: MalformedJobError,
    5: AssertionFailedError,
    6: OutOfMemoryError,
    7: AlreadySetUpError,
}


def error_of(status: int, message: str) -> JobParserError:
    return _CLASSES.get(status, JobParserError)(message, status)
