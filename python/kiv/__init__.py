"""The forwarding state of a box, and the objects that show it. See docs/python.md."""

from ._kiv import (
    DamageError,
    Error,
    Object,
    Operation,
    ParseError,
    RangeError,
    Refused,
    Route,
    Routes,
    TypeError,
    UsageError,
    Via,
    call,
    describe,
    new,
    parse,
    text,
    type_name,
    types,
)
from .collections import Mapping, Sequence, Set
from .state import State, kernel, load, open
