"""The registered types, all of them: what can be read can be printed, compared, made again and passed on."""

import kiv
import pytest

PYTHONS = (bool, int, float, str, type(None))
DESCRIBED = [kiv.describe(name) for name in kiv.types()]
MADE = [each for each in DESCRIBED if any(not c["parameters"] for c in each["constructors"])]


def named(described):
    return pytest.mark.parametrize("described", described, ids=[each["name"] for each in described])


def known(use):
    return {use["type"], use["key"] or "nothing"} <= {*kiv.types(), "nothing"}


@named(DESCRIBED)
def test_what_is_offered_has_a_type(described):
    signatures = [*described["constructors"], *described["attributes"].values(), *described["operations"].values()]
    for signature in signatures:
        assert known(signature["result"])
        assert all(known(use) for _, use in signature["parameters"])


@named([each for each in MADE if each["kind"] == "value"])
def test_values_are_values(described):
    name = described["name"]
    first, second = kiv.new(name), kiv.new(name)
    assert first == second and hash(first) == hash(second) and not first
    attributes = described["attributes"]
    if not any(each["result"]["kind"] in ("map", "set", "list") for each in attributes.values()):
        if not any(each["result"]["kind"] == "entity" for each in attributes.values()):
            again = kiv.parse(name, kiv.text(first))
            assert again == first and hash(again) == hash(first)
    # Each attribute can be given back, and by its name to the constructor.
    names = {name for each in described["constructors"] for name, _ in each["parameters"]}
    for attribute, described_as in attributes.items():
        value = getattr(first, attribute)
        assert isinstance(value, (kiv.Object, kiv.Mapping, kiv.Sequence, kiv.Set, *PYTHONS))
        if described_as["settable"] and attribute in names:
            setattr(first, attribute, value)
    assert first == second
    assert kiv.new(name, **{each: getattr(first, each) for each in names & attributes.keys()}) == first


def test_attributes_arguments_and_collections():
    via = kiv.new("Kiv::CachedVia", hop="10.0.0.1", intfId="Ethernet1", viaIndex=7)
    assert (str(via.hop), str(via.intfId), via.viaIndex, via.vrfName) == ("10.0.0.1", "Ethernet1", 7, "default")
    other = kiv.parse("Kiv::CachedVia", kiv.text(via))
    assert {via: 1}[other] == 1
    other.hop = via.hop
    other.viaLabel = 100
    assert via != other and str(other.viaLabel) == "100"
    fec = kiv.new("Kiv::CachedFec", 1 << 56)
    fec.via[via] = True
    fec.via[other] = False
    assert dict(fec.via) == {via: True, other: False} and len(fec.via) == fec.vias == 2
    del fec.via[via]
    assert list(fec.via) == [other] and via not in fec.via
    with pytest.raises(KeyError):
        fec.via[via]
    fec.via.clear()
    assert not fec.via
    summary = kiv.new("Kiv::RouteSummary", routeCountByMask={24: 3, 8: 1})
    assert list(summary.routeCountByMask.items()) == [(8, 1), (24, 3)]
    summary.routeCountByTypeInc(category="connected", count=2)
    summary.routeCountByTypeInc("connected", 3)
    assert summary.routeCountByType == {"connected": 5}
    cbf = kiv.new("Kiv::CbfInfo", dscpValues=[10, 20, 30])
    cbf.dscpValues[1:2] = [11, 12]
    cbf.dscpValues.insert(0, 9)
    cbf.dscpValues[-1] = 31
    del cbf.dscpValues[1]
    assert cbf.dscpValues == [9, 11, 12, 31]


def test_a_filter_of_the_library_is_put_together():
    colls = kiv.new("Kiv::RouteFilterColl", False)
    by_address = kiv.new("Kiv::RouteFilterIp", "192.0.2.1")
    colls.filterColl.add(by_address)
    assert by_address in colls.filterColl and len(colls.filterColl) == 1
    fec = kiv.new("Kiv::CachedFec", 1 << 56)
    assert colls.filter(fec) is True
    fec.via[kiv.new("Kiv::CachedVia", hop="192.0.2.1")] = True
    assert colls.filter(fec) is False


FAULTS = [
    (lambda: kiv.new("Kiv::Nothing"), kiv.TypeError, "Kiv::Nothing: no such type"),
    (lambda: kiv.new("Kiv::CachedVia", 1, 2), kiv.TypeError, "takes 0 or 9 arguments, not 2"),
    (lambda: kiv.new("Kiv::CachedVia", colour=1), kiv.TypeError, "colour"),
    (lambda: kiv.new("Kiv::CachedVia", hop="10.0.0"), kiv.ParseError, "argument hop: .*IPv6 address.*\"10.0.0\""),
    (lambda: kiv.new("Kiv::CachedVia", viaIndex=1 << 16), kiv.RangeError, "range"),
    (lambda: kiv.new("Kiv::CachedVia", viaIndex=1 << 80), kiv.RangeError, "range"),
    (lambda: kiv.new("Kiv::CachedVia", forwardingAction="jump"), kiv.ParseError, "enumerator of Vault::Fib::Forw"),
    (lambda: kiv.new("Kiv::CachedVia", hop=[]), kiv.TypeError, "argument hop: expected Lumen::IpGenAddr"),
    (lambda: kiv.new("Kiv::CachedVia", hop=kiv.new("Kiv::CachedVia")), kiv.TypeError, "found Kiv::CachedVia"),
    (lambda: kiv.new("Kiv::CachedVia").colour, AttributeError, "colour"),
    (lambda: setattr(kiv.new("Kiv::RouteSorter"), "showHidden", True), AttributeError, "cannot be set"),
    (lambda: kiv.new("Kiv::RouteSorter").fecDel(), kiv.TypeError, "takes 1 arguments, not 0"),
    (lambda: kiv.parse("Kiv::RouteSorter", "None"), kiv.TypeError, "an entity"),
    (lambda: kiv.call("Kiv::ProtocolCodeWordHelper", "protocolCodeWordToCode"), kiv.TypeError, "takes 1"),
]


@pytest.mark.parametrize(["fault", "error", "line"], FAULTS)
def test_faults_are_told(fault, error, line):
    with pytest.raises(error, match=line):
        fault()
    assert error is AttributeError or issubclass(error, kiv.Error)
