"""The record of a job."""

from __future__ import annotations

import dataclasses
import enum
import json
from collections.abc import Mapping
from typing import Any, TypeVar


class Language(enum.IntEnum):
    UNKNOWN = 0
    PCL5 = 1
    POSTSCRIPT = 2
    ESCP = 3
    PRESCRIBE = 4
    PCLXL = 5
    PDF = 6
    JPEG = 7
    XPS = 8
    URF = 9


class Paper(enum.IntEnum):
    UNKNOWN = 0
    A4 = 5
    A3 = 6
    OTHER = 7
    A5 = 14
    B4 = 15
    B5 = 16
    FOLIO = 17
    LEDGER = 18
    LEGAL = 19
    LETTER = 20
    STATEMENT = 21


class Duplex(enum.IntEnum):
    ONE_SIDED = 0
    LONG_EDGE = 1
    SHORT_EDGE = 2


class Staple(enum.IntEnum):
    NONE = 0
    LEFT_TOP = 1
    RIGHT_TOP = 2
    TWO = 3
    UNKNOWN_POSITION = 100
    DEVICE_DEFAULT = 101


class Punch(enum.IntEnum):
    NONE = 0
    TWO_HOLES = 1
    THREE_HOLES = 2
    FOUR_HOLES = 3
    UNKNOWN_KIND = 100
    DRIVER_DEFAULT = 101


class Orientation(enum.IntEnum):
    PORTRAIT = 0
    LANDSCAPE = 1
    REVERSE_PORTRAIT = 2
    REVERSE_LANDSCAPE = 3


class Brand(enum.IntEnum):
    NONE = 0
    KX_DRIVER = 1
    HP = 2
    RICOH = 3
    TOSHIBA = 4
    SHARP = 5
    SAMSUNG = 6
    XCPT_TICKET = 7
    OKI = 9
    LEXMARK = 10


_Number = TypeVar("_Number", bound=enum.IntEnum)


def _named(names: type[_Number], number: int | None) -> _Number | int | None:
    """A number without a name, as metadata may bring it, stays a number."""
    if number is None:
        return None
    try:
        return names(number)
    except ValueError:
        return number


@dataclasses.dataclass(frozen=True)
class JobInfo:
    """What is known of a job; None is for what is not known.

    A number for which there is no name stays a plain int.
    """

    language: Language | int | None = None
    paper: Paper | int | None = None
    mono_count: int | None = None
    gray_count: int | None = None
    color_count: int | None = None
    duplex: Duplex | int | None = None
    copies: int | None = None
    force_mono: bool | None = None
    stapling: Staple | int | None = None
    punching: Punch | int | None = None
    orientation: Orientation | int | None = None
    eco_mode: bool | None = None
    pages_per_sheet: int | None = None
    brand: Brand | int | None = None
    pjl: bool = False
    feed_short_edge: bool = False
    fonts: frozenset[str] = frozenset()

    @property
    def page_count(self) -> int | None:
        """Pages of all colours, or sides of paper where several pages stand on one."""
        if self.mono_count is None or self.gray_count is None or self.color_count is None:
            return None
        return self.mono_count + self.gray_count + self.color_count

    @classmethod
    def from_record(cls, record: Mapping[str, Any]) -> JobInfo:
        """From a record of the library, as parsed JSON."""
        return cls(
            language=_named(Language, record.get("pdl")),
            paper=_named(Paper, record.get("paper")),
            mono_count=record.get("monoCount"),
            gray_count=record.get("grayCount"),
            color_count=record.get("colorCount"),
            duplex=_named(Duplex, record.get("duplex")),
            copies=record.get("copies"),
            force_mono=record.get("forceMono"),
            stapling=_named(Staple, record.get("stapling")),
            punching=_named(Punch, record.get("punching")),
            orientation=_named(Orientation, record.get("orientation")),
            eco_mode=record.get("ecoMode"),
            pages_per_sheet=record.get("pagesPerSheet"),
            brand=_named(Brand, record.get("originalBrand")),
            pjl=record.get("pjl", False),
            feed_short_edge=record.get("kfeedShortEdge", False),
            fonts=frozenset(record.get("fonts", ())),
        )

    @classmethod
    def from_json(cls, text: str | bytes) -> JobInfo:
        return cls.from_record(json.loads(text))
