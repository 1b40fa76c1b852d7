"""Collections of objects: views of what an object holds, in its order, without a copy.

What changes one changes the object. A walk over one that changes goes on behind the element it gave last; that over a
map or set without an order is refused then.
"""

from collections.abc import MutableMapping, MutableSequence, MutableSet

from . import _kiv


class _Shown:
    __slots__ = ("_view",)

    def __init__(self, view):
        self._view = view

    def __len__(self):
        return self._view.size()

    def __iter__(self):
        return self._view.walk()

    def clear(self):
        self._view.clear()


class Mapping(_Shown, MutableMapping):
    """A map; its keys may be given by their text."""

    __slots__ = ()

    def __contains__(self, key):
        return self._view.has(key)

    def __getitem__(self, key):
        if not self._view.has(key):
            raise KeyError(key)
        return self._view.find(key)

    def __setitem__(self, key, value):
        self._view.set(key, value)

    def __delitem__(self, key):
        if not self._view.has(key):
            raise KeyError(key)
        self._view.remove(key)

    def __repr__(self):
        return repr(dict(self))

    clear = _Shown.clear


class Sequence(_Shown, MutableSequence):
    """A list."""

    __slots__ = ()

    def _place(self, index):
        size = len(self)
        place = index + size if index < 0 else index
        if not 0 <= place < size:
            raise IndexError(index)
        return place

    def __getitem__(self, index):
        if isinstance(index, slice):
            return list(self)[index]
        return self._view.find(self._place(index))

    def __setitem__(self, index, value):
        self._view.set(self._place(index), value)

    def __delitem__(self, index):
        self._view.remove(self._place(index))

    def insert(self, index, value):
        elements = list(self)
        elements.insert(index, value)
        for place, element in enumerate(elements):
            self._view.set(place, element)

    def __eq__(self, other):
        return list(self) == list(other) if isinstance(other, (Sequence, list, tuple)) else NotImplemented

    __hash__ = None
    clear = _Shown.clear

    def __repr__(self):
        return repr(list(self))


class Set(_Shown, MutableSet):
    """A set."""

    __slots__ = ()

    @classmethod
    def _from_iterable(cls, elements):
        return set(elements)

    def __contains__(self, element):
        return self._view.has(element)

    def add(self, element):
        self._view.add(element)

    def discard(self, element):
        self._view.remove(element)

    clear = _Shown.clear

    def __repr__(self):
        return repr(set(self))


_kiv._collections_are((Mapping, Set, Sequence))
