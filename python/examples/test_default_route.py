"""A check for pytest: this box has a default route that is programmed. KIV_STATE names its state directory."""

import os

import kiv
import pytest


@pytest.fixture(scope="module")
def state() -> kiv.State:
    place = os.environ.get("KIV_STATE")
    return kiv.open(place) if place else kiv.kernel()


def test_default_route_is_there(state: kiv.State) -> None:
    default = state.lookup("192.0.2.1")
    assert default is not None and default.vias
    routes = state.routes(prefix="0.0.0.0/0")
    assert len(routes) == 1 and routes[0].in_hardware
