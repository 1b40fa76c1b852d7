"""The ten longest prefixes through each next hop. usage: longest_by_nexthop.py STATE_DIRECTORY|SNAPSHOT"""

import collections
import os
import sys

import kiv


def longest_by_nexthop(state: kiv.State, count: int = 10) -> dict[str, list[str]]:
    routes = collections.defaultdict(list)
    for vrf in state.vrfs:
        for family in (4, 6):
            for route in state.routes(family, vrf=vrf):
                for nexthop in set(route.nexthops):
                    if nexthop is not None:
                        routes[str(nexthop)].append((-route.length, str(route.prefix)))
    return {nexthop: [prefix for _, prefix in sorted(found)[:count]] for nexthop, found in routes.items()}


if __name__ == "__main__":
    place = sys.argv[1]
    shown = longest_by_nexthop(kiv.open(place) if os.path.isdir(place) else kiv.load(place))
    for nexthop, prefixes in sorted(shown.items()):
        print(nexthop, *prefixes)
