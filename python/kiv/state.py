"""The state of a box: where it comes from, and what can be asked of it."""

import ipaddress
import json
import os

from . import _kiv
from ._kiv import UsageError

_FAMILIES = {4: "ip", 6: "ipv6"}


def _family_word(family):
    if family not in (4, 6):
        raise UsageError(f"family: 4 or 6, not {family!r}")
    return _FAMILIES[family]


def _word(what, value):
    """One word of a command: what has blanks in it or begins like an option is none."""
    word = str(value)
    if not word or word.split() != [word]:
        raise UsageError(f"{what}: {value!r} is no single word")
    return word


class State:
    """The state of a box as it was when it was read; refresh() reads it again.

    Threads may share one: their questions take turns, without holding up the interpreter. Ctrl-C ends them.
    """

    def __init__(self, kind, path=""):
        self._state = _kiv._State(kind, os.fspath(path))
        self._kind = kind

    def __repr__(self):
        return f"<kiv.State of {self._state.path() or 'the kernel'}>"

    def refresh(self):
        """The state that is in the same place now."""
        return State(self._kind, self._state.path())

    @property
    def vrfs(self):
        """The names of the VRFs, the default one first."""
        return self._state.vrfs()

    def routes(
        self,
        family=None,
        vrf="default",
        protocol=None,
        prefix=None,
        longer=False,
        nexthop=None,
        interface=None,
        nexthop_group=None,
        hidden=False,
        addresses=False,
    ):
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
        for keyword, value in (
            ("nexthop", nexthop),
            ("interface", interface),
            ("nexthop-group", nexthop_group),
            ("vrf", vrf),
        ):
            if value is not None:
                words += [keyword, _word(keyword, value)]
        if hidden:
            words.append("all")
        return self._state.routes(words, addresses)

    def lookup(self, address, vrf="default", addresses=False):
        """The route that an address is forwarded by, or None."""
        address = ipaddress.ip_address(address)
        found = self.routes(address.version, vrf=vrf, prefix=address, addresses=addresses)
        return found[0] if len(found) else None

    def show(self, command, as_text=False):
        """What a command shows: its model, parsed, or its text."""
        words = command.split() if isinstance(command, str) else [str(word) for word in command]
        output = self._state.output(words, not as_text)
        return output.decode("utf-8", "surrogateescape") if as_text else json.loads(output)

    def counts(self, family=4, vrf="default"):
        """How many routes there are, as the route summary of a VRF counts them."""
        command = ["show", _family_word(family), "route", "summary", "vrf", _word("vrf", vrf)]
        return self.show(command)["vrfs"][vrf]

    def configuration(self):
        """The commands that configure the static routes, as lines."""
        return [
            line
            for family in _FAMILIES.values()
            for line in self.show(["show", "running-config", family, "route"], as_text=True).splitlines()
        ]

    def static_routes(self, family=4, vrf="default"):
        """The static routes of a VRF as they are configured, as the model shows them."""
        command = ["show", _family_word(family), "route", "static", "configured", "vrf", _word("vrf", vrf)]
        return self.show(command)["vrfs"][vrf]

    def configure(self, *commands):
        """Carries out commands of the configuration in the state directory, all of them or none, and reads it again."""
        self._state.configure("".join(command + "\n" for command in commands))


def open(directory):
    """The state that a state directory holds. It stays what it is when another one is loaded there."""
    return State(_kiv._SourceKind.directory, directory)


def load(file):
    """The state that a snapshot describes."""
    return State(_kiv._SourceKind.snapshot, file)


def kernel():
    """The forwarding state of this machine, as it is now."""
    return State(_kiv._SourceKind.kernel)
