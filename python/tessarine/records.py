"""Records and events as the client library hands them over.

Field names are those of the C++ records; byte lists are ``bytes``, string
lists ``list[str]``. Every field has a default, so a test can name only the
fields it compares.
"""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import List, Optional


@dataclass
class Rectangle:
    """A rectangle in the bridge's coordinates; -1 in an answer means unknown."""

    x: int = 0
    y: int = 0
    width: int = 0
    height: int = 0


@dataclass
class SystemProperty:
    name: str = ""
    value: str = ""


@dataclass
class ProgramEvent:
    value0: int = 0
    value1: int = 0
    value2: int = 0
    value3: int = 0
    value4: int = 0
    value5: int = 0
    value6: int = 0
    text0: str = ""
    text1: str = ""
    text2: str = ""
    bytes0: bytes = b""
    bytes1: bytes = b""
    bytes2: bytes = b""
    strings0: List[str] = field(default_factory=list)
    strings1: List[str] = field(default_factory=list)
    strings2: List[str] = field(default_factory=list)


@dataclass
class Service:
    value0: int = 0
    value1: int = 0
    value2: int = 0
    value3: int = 0
    value4: int = 0
    text0: str = ""


@dataclass
class ServiceComponent:
    value0: int = 0
    value1: int = 0
    value2: int = 0
    value3: int = 0
    value4: int = 0
    value5: int = 0


@dataclass
class Descriptor:
    """A raw descriptor: its identifier and its bytes."""

    id: int = 0
    data: bytes = b""


@dataclass
class Pmt:
    value0: int = 0
    value1: int = 0
    value2: int = 0
    value3: int = 0


@dataclass
class Network:
    value0: int = 0
    text0: str = ""


@dataclass
class TransportStream:
    value0: int = 0
    value1: int = 0
    value2: int = 0
    value3: int = 0
    value4: int = 0


@dataclass
class RawFrame:
    """A whole record (``is_record``) or the trailing bytes after one, as ``Client.raw`` returns them."""

    is_record: bool = True
    bytes: bytes = b""


# ---- Events: the bridge's own initiatives, as Client.events() yields them ----


@dataclass
class DownloadComplete:
    """A carousel download finished (``second`` is empty when the middleware gave one text)."""

    first: str = ""
    second: str = ""


@dataclass
class GraphicsSettings:
    """The graphics planes changed."""

    first: Rectangle = field(default_factory=Rectangle)
    second: Rectangle = field(default_factory=Rectangle)


@dataclass
class EndOfMedia:
    """A media player reached the end of its item."""

    handle: int = 0


@dataclass
class DsmccCommand:
    """A DSM-CC stream-event command; a text sent in chunks arrives whole."""

    code: int = 0
    value: int = 0
    byte: int = 0
    text: str = ""


@dataclass
class AppStateRequest:
    """The bridge asked for application state ``state``; the client answered ``answer``."""

    state: int = 0
    answer: int = 0


@dataclass
class Disconnected:
    """The connection ended without the client closing it; ``error`` says why."""

    error: Optional[Exception] = None
