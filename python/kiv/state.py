"""The state of a box: where it comes from, and what can be asked of it."""

from __future__ import annotations

import ipaddress
import json
import os
from collections.abc import Iterable
from typing import Any, Literal, overload

from . import _kiv
from ._kiv import Route, Routes, UsageError

_FAMILIES = {4: "ip", 6: "ipv6"}


def _family_word(family: int) -> str:
    if family not in (4, 6):
        raise UsageError(f"family: 4 or 6, not {family!r}")
    return _FAMILIES[family]


def _word(what: str, value: object) -> str:
    """One word of a command: what has blanks in it or begins like an option is none."""
    word = str(value)
    if not word or word.split() != [word]:
        raise UsageError(f"{what}: {value!r} is no single word")
    return word


class State:
    """The state of a box as it was when it was read; refresh() reads it again.

    Threads may share one: their questions take turns, without holding up the interpreter. Ctrl-C ends them.
    """

    def __init__(self, kind: _kiv._SourceKind, path: str | os.PathLike[str] = "") -> None:
        self._state = _kiv._State(kind, os.fspath(path))
        self._kind = kind

    def __repr__(self) -> str:
        return f"<kiv.State of {self._state.path() or 'the kernel'}>"

    def refresh(self) -> State:
        """The state that is in the same place now."""
        return State(self._kind, self._state.path())

    @property
    def vrfs(self) -> list[str]:
        """The names of the VRFs, the default one first."""
        return self._state.vrfs()

    def routes(
        self,
        family: int | None = None,
        vrf: str = "default",
        protocol: str | None = None,
        prefix: object = None,
        longer: bool = False,
        nexthop: object = None,
        interface: str | None = None,
        nexthop_group: str | None = None,
        hidden: bool = False,
        addresses: bool = False,
    ) -> Routes:
        """The routes of a VRF that are shown when they are asked for like this, in the order of their prefixes.

        A prefix asks for the route that it is forwarded by; with `longer`, for all routes inside it. `hidden` adds
        martian, link-local and unresolved routes. With `addresses`, prefixes and next hops are values of ipaddress.
        """
        if vrf == "all":
            raise UsageError("vrf: routes are of one VRF; state.vrfs has the names of all")
        if family is None:
            family = 6 if prefix is not None and ":" in str(prefix) else 4
        words = ["show", _family_word(family), "route"]
        if prefix is not None:
            words.append(_word("prefix", prefix))
        if longer:
            words.append("longer-prefixes")
        if protocol is not None:
            words.append(_word("protocol", protocol))
        clauses: list[tuple[str, object]] = [
            ("nexthop", nexthop),
            ("interface", interface),
            ("nexthop-group", nexthop_group),
            ("vrf", vrf),
        ]
        for keyword, value in clauses:
            if value is not None:
                words += [keyword, _word(keyword, value)]
        if hidden:
            words.append("all")
        return self._state.routes(words, addresses)

    def lookup(
        self,
        address: str | ipaddress.IPv4Address | ipaddress.IPv6Address,
        vrf: str = "default",
        addresses: bool = False,
    ) -> Route | None:
        """The route that an address is forwarded by, or None."""
        asked = ipaddress.ip_address(address)
        found = self.routes(asked.version, vrf=vrf, prefix=asked, addresses=addresses)
        return found[0] if len(found) else None

    @overload
    def show(self, command: str | Iterable[str], as_text: Literal[True]) -> str: ...

    @overload
    def show(self, command: str | Iterable[str], as_text: bool = False) -> Any: ...

    def show(self, command: str | Iterable[str], as_text: bool = False) -> Any:
        """What a command shows: its model, parsed, or its text."""
        words = command.split() if isinstance(command, str) else [str(word) for word in command]
        output = self._state.output(words, not as_text)
        return output.decode("utf-8", "surrogateescape") if as_text else json.loads(output)

    def counts(self, family: int = 4, vrf: str = "default") -> dict[str, Any]:
        """How many routes there are, as the route summary of a VRF counts them."""
        command = ["show", _family_word(family), "route", "summary", "vrf", _word("vrf", vrf)]
        return self._of_vrf(command, vrf)

    def configuration(self) -> list[str]:
        """The commands that configure the static routes, as lines."""
        return [
            line
            for family in _FAMILIES.values()
            for line in self.show(["show", "running-config", family, "route"], as_text=True).splitlines()
        ]

    def static_routes(self, family: int = 4, vrf: str = "default") -> dict[str, Any]:
        """The static routes of a VRF as they are configured, as the model shows them."""
        command = ["show", _family_word(family), "route", "static", "configured", "vrf", _word("vrf", vrf)]
        return self._of_vrf(command, vrf)

    def _of_vrf(self, command: list[str], vrf: str) -> dict[str, Any]:
        shown: dict[str, Any] = self.show(command)["vrfs"][vrf]
        return shown

    def configure(self, *commands: str) -> None:
        """Carries out commands of the configuration in the state directory, all of them or none, and reads it again."""
        self._state.configure("".join(command + "\n" for command in commands))


def open(directory: str | os.PathLike[str]) -> State:
    """The state that a state directory holds. It stays what it is when another one is loaded there."""
    return State(_kiv._SourceKind.directory, directory)


def load(file: str | os.PathLike[str]) -> State:
    """The state that a snapshot describes."""
    return State(_kiv._SourceKind.snapshot, file)


def kernel() -> State:
    """The forwarding state of this machine, as it is now."""
    return State(_kiv._SourceKind.kernel)
