"""What differs between the routes of two snapshots. usage: diff_states.py BEFORE AFTER"""

import sys
from collections.abc import Iterator

import kiv


def routes_of(state: kiv.State) -> dict[tuple[str, str], kiv.Route]:
    return {
        (vrf, str(route.prefix)): route
        for vrf in state.vrfs
        for family in (4, 6)
        for route in state.routes(family, vrf=vrf)
    }


def difference(before: kiv.State, after: kiv.State) -> Iterator[str]:
    old, new = routes_of(before), routes_of(after)
    for place in sorted(old.keys() | new.keys()):
        was, is_now = old.get(place), new.get(place)
        if was != is_now:
            yield from (f"{sign} {place[0]} {route}" for sign, route in (("-", was), ("+", is_now)) if route)


if __name__ == "__main__":
    for line in difference(kiv.load(sys.argv[1]), kiv.load(sys.argv[2])):
        print(line)
