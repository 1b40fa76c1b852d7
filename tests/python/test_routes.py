"""Routes as Python has them, against what displays print of them: two ways from one selection, and from the tables."""

import ipaddress
import itertools

import kiv
import pytest


def shown(state, family, vrf, *clauses):
    """The routes of the route table's model, by prefix."""
    words = ["show", "ip" if family == 4 else "ipv6", "route", *clauses, "vrf", vrf]
    return state.show(words)["vrfs"][vrf]["routes"]


def tables(state):
    return [(family, vrf) for vrf in state.vrfs for family in (4, 6)]


def plain_vias(model):
    """Vias of the model that lead straight to an address or an interface."""
    return [via for via in model["vias"] if set(via) <= {"nexthopAddr", "interface", "interfaceDescription"}]


def test_routes_are_those_that_are_shown(snapshot):
    for family, vrf in tables(snapshot):
        routes = list(snapshot.routes(family, vrf=vrf))
        models = shown(snapshot, family, vrf)
        assert sorted(route.prefix for route in routes) == sorted(models)
        assert routes == sorted(routes)
        for route in routes:
            model = models[route.prefix]
            assert (route.preference, route.metric, route.type) == (
                model.get("preference", route.preference),
                model.get("metric", route.metric),
                model["routeType"] or route.type,  # the number of one that has no word
            )
            assert (route.in_hardware, route.in_kernel) == (
                model["hardwareProgrammed"],
                model["kernelProgrammed"],
            )
            for via in plain_vias(model):
                # Shown as the unspecified address, or not at all, when the destination is on the link.
                nexthop = via.get("nexthopAddr") or None
                ways = {(way.nexthop, way.interface) for way in route.vias}
                assert (nexthop, via.get("interface")) in ways or (None, via.get("interface")) in ways


CLAUSES = [
    ({"protocol": "bgp"}, ["bgp"]),
    ({"protocol": "static", "hidden": True}, ["static", "all"]),
    ({"interface": "Ethernet1"}, ["interface", "Ethernet1"]),
    ({"nexthop": "203.0.113.1"}, ["nexthop", "203.0.113.1"]),
    ({"prefix": "10.0.0.0/8", "longer": True}, ["10.0.0.0/8", "longer-prefixes"]),
    ({"prefix": "10.0.0.0/8", "longer": True, "interface": "Ethernet3"},
     ["10.0.0.0/8", "longer-prefixes", "interface", "Ethernet3"]),
    ({"prefix": ipaddress.ip_address("10.1.2.3")}, ["10.1.2.3"]),
]


@pytest.mark.parametrize(["asked", "clauses"], CLAUSES, ids=lambda each: " ".join(map(str, each)))
def test_filters_are_those_of_the_command(snapshot, asked, clauses):
    try:
        expected = sorted(shown(snapshot, 4, "default", *clauses))
    except kiv.Refused as refused:
        with pytest.raises(kiv.Refused) as met:
            snapshot.routes(**asked)
        assert str(met.value) == str(refused)
        return
    assert sorted(route.prefix for route in snapshot.routes(**asked)) == expected


def test_an_address_is_forwarded_by_the_longest_prefix(snapshot):
    for family, vrf in tables(snapshot):
        networks = [route.prefix for route in snapshot.routes(family, vrf=vrf, addresses=True)]
        addresses = {address for network in networks for address in (network[0], network[-1])}
        for address in sorted(addresses):
            found = snapshot.lookup(address, vrf=vrf, addresses=True)
            inside = [network for network in networks if address in network]
            assert found is not None and found.prefix == max(inside, key=lambda network: network.prefixlen)


def test_columns_are_the_rows(snapshot):
    for family, vrf in tables(snapshot):
        routes = snapshot.routes(family, vrf=vrf, addresses=True)
        columns = routes.columns()
        width = 1 if family == 4 else 16
        assert {len(column) for name, column in columns.items() if name not in ("vias", "address")} == {len(routes)}
        for i, route in enumerate(routes):
            address = columns["address"][i * width : (i + 1) * width]
            assert ipaddress.ip_address(address[0] if family == 4 else bytes(address)) == route.prefix.network_address
            assert columns["length"][i] == route.length == route.prefix.prefixlen
            assert (columns["preference"][i], columns["metric"][i]) == (route.preference, route.metric)
            assert columns["vias"][columns["via"][i]] is route.vias


def test_routes_of_two_reads_are_equal_and_those_that_differ_are_not(snapshot, directory):
    again = snapshot.refresh()
    for family, vrf in tables(snapshot):
        first, second = list(snapshot.routes(family, vrf=vrf)), list(again.routes(family, vrf=vrf))
        assert first == second
        assert [hash(route) for route in first] == [hash(route) for route in second]
        for one, other in itertools.pairwise(first):
            assert one != other and one < other and not other < one
