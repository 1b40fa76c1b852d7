"""Collections of objects: views of what an object holds, in its order, without a copy.

What changes one changes the object. A walk over one that changes goes on behind the element it gave last; that over a
map or set without an order is refused then.
"""

from __future__ import annotations

from collections.abc import Iterable, Iterator, MutableMapping, MutableSequence, MutableSet
from typing import Any, TypeVar, overload

from . import _kiv

_Key = TypeVar("_Key")
_Value = TypeVar("_Value")


class Mapping(MutableMapping[_Key, _Value]):
    """A map; its keys may be given by their text."""

    __slots__ = ("_view",)

    def __init__(self, view: _kiv._View) -> None:
        self._view = view

    def __len__(self) -> int:
        return self._view.size()

    def __iter__(self) -> Iterator[_Key]:
        return self._view.walk()

    def __contains__(self, key: object) -> bool:
        return self._view.has(key)

    def __getitem__(self, key: _Key | str) -> _Value:
        if not self._view.has(key):
            raise KeyError(key)
        value: _Value = self._view.find(key)
        return value

    def __setitem__(self, key: _Key | str, value: _Value) -> None:
        self._view.set(key, value)

    def __delitem__(self, key: _Key | str) -> None:
        if not self._view.has(key):
            raise KeyError(key)
        self._view.remove(key)

    def clear(self) -> None:
        self._view.clear()

    def __repr__(self) -> str:
        return repr(dict(self))


class Sequence(MutableSequence[_Value]):
    """A list."""

    __slots__ = ("_view",)

    def __init__(self, view: _kiv._View) -> None:
        self._view = view

    def __len__(self) -> int:
        return self._view.size()

    def __iter__(self) -> Iterator[_Value]:
        return self._view.walk()

    def _place(self, index: int) -> int:
        size = len(self)
        place = index + size if index < 0 else index
        if not 0 <= place < size:
            raise IndexError(index)
        return place

    @overload
    def __getitem__(self, index: int) -> _Value: ...

    @overload
    def __getitem__(self, index: slice) -> list[_Value]: ...

    def __getitem__(self, index: int | slice) -> _Value | list[_Value]:
        if isinstance(index, slice):
            return list(self)[index]
        value: _Value = self._view.find(self._place(index))
        return value

    def __setitem__(self, index: Any, value: Any) -> None:
        if isinstance(index, slice):
            self._elements_are(index, list(value))
        else:
            self._view.set(self._place(index), value)

    def __delitem__(self, index: int | slice) -> None:
        if isinstance(index, slice):
            self._elements_are(index, [])
        else:
            self._view.remove(self._place(index))

    def _elements_are(self, index: slice, values: list[_Value]) -> None:
        elements = list(self)
        if values or index.step in (None, 1):
            elements[index] = values
        else:
            del elements[index]
        self._view.clear()
        for place, element in enumerate(elements):
            self._view.set(place, element)

    def insert(self, index: int, value: _Value) -> None:
        place = max(0, index + len(self)) if index < 0 else index
        self._elements_are(slice(place, place), [value])

    def clear(self) -> None:
        self._view.clear()

    def __eq__(self, other: object) -> bool:
        return isinstance(other, (Sequence, list, tuple)) and list(self) == list(other)

    def __repr__(self) -> str:
        return repr(list(self))


class Set(MutableSet[_Value]):
    """A set; its elements may be given by their text."""

    __slots__ = ("_view",)

    def __init__(self, view: _kiv._View) -> None:
        self._view = view

    @classmethod
    def _from_iterable(cls, elements: Iterable[_Value]) -> set[_Value]:
        return set(elements)

    def __len__(self) -> int:
        return self._view.size()

    def __iter__(self) -> Iterator[_Value]:
        return self._view.walk()

    def __contains__(self, element: object) -> bool:
        return self._view.has(element)

    def add(self, element: _Value) -> None:
        self._view.add(element)

    def discard(self, element: _Value) -> None:
        self._view.remove(element)

    def clear(self) -> None:
        self._view.clear()

    def __repr__(self) -> str:
        return repr(set(self))


_kiv._collections_are((Mapping, Set, Sequence))
