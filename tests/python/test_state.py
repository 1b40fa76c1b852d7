"""States: where they come from, what becomes of them, and who may use them at once."""

import json
import os
import pathlib
import signal
import subprocess
import sys
import textwrap
import threading

import kiv
import pytest

SOURCE = pathlib.Path(os.environ["KIV_SOURCE_DIR"])
COMMANDS = ["show ip route", "show ipv6 route vrf all", "show ip route summary", "show nexthop-group"]


@pytest.mark.parametrize("command", COMMANDS)
def test_show_is_what_the_program_prints(directory, command):
    place, _ = directory
    state = kiv.open(place)

    def printed(*options):
        program = [os.environ["KIV_PROGRAM"], "--state", place, *options, *command.split()]
        return subprocess.run(program, check=True, capture_output=True, text=True).stdout

    assert state.show(command, as_text=True) == printed()
    assert state.show(command) == json.loads(printed("--json"))


def test_a_state_outlives_what_is_loaded_in_its_place(directory):
    place, load = directory
    state = kiv.open(place)
    routes = state.routes()
    before = [(route.prefix, route.vias) for route in state.routes()]
    load("routes")
    subprocess.run(["rm", "-r", place], check=True)
    assert [(route.prefix, route.vias) for route in routes] == before
    assert [(route.prefix, route.vias) for route in state.routes()] == before
    load("routes")
    assert [(route.prefix, route.vias) for route in state.refresh().routes()] != before
    del state
    assert routes[0].vias == before[0][1]


def test_configuration_is_changed_as_a_whole_or_not_at_all(directory):
    state = kiv.open(directory[0])
    before = state.configuration()
    with pytest.raises(kiv.Error, match="line 2"):
        state.configure("ip route 198.18.7.0/24 Null0", "ip route nonsense")
    assert state.configuration() == kiv.open(directory[0]).configuration() == before
    state.configure("ip route 198.18.7.0/24 Null0 tag 7", "! a note")
    assert set(state.configuration()) - set(before) == {"ip route 198.18.7.0/24 Null0 tag 7"}
    assert "198.18.7.0/24" in state.static_routes()["routes"]
    state.configure("no ip route 198.18.7.0/24 Null0")
    assert state.configuration() == before
    with pytest.raises(kiv.Refused, match="only a state directory"):
        kiv.load(SOURCE / "examples/demo.json").configure("ip route 198.18.7.0/24 Null0")


FAULTS = [
    (lambda state: kiv.open("/nonexistent"), kiv.Refused, "/nonexistent"),
    (lambda state: kiv.load("/nonexistent"), kiv.Refused, "/nonexistent"),
    (lambda state: state.show("show nothing"), kiv.UsageError, 'word 2 of "show nothing"'),
    (lambda state: state.show("show running-config ip route"), kiv.UsageError, "no model"),
    (lambda state: state.show("show ip route vrf no"), kiv.Refused, "no such VRF"),
    (lambda state: state.routes(vrf="no"), kiv.Refused, '"no": show ip route: no such VRF'),
    (lambda state: state.routes(vrf="all"), kiv.UsageError, "one VRF"),
    (lambda state: state.routes(family=5), kiv.UsageError, "4 or 6"),
    (lambda state: state.routes(protocol="bgp all"), kiv.UsageError, "no single word"),
    (lambda state: state.routes()[1 << 40], IndexError, "no such route"),
]


@pytest.mark.parametrize(["fault", "error", "line"], FAULTS)
def test_faults_are_told(directory, fault, error, line):
    with pytest.raises(error, match=line):
        fault(kiv.open(directory[0]))


def test_damage_is_an_error(directory):
    place, _ = directory
    table = max((file for file in place.rglob("*") if file.is_file() and "route" in str(file)), key=os.path.getsize)
    content = bytearray(table.read_bytes())
    content[: len(content) // 2] = bytes(len(content) // 2)
    table.write_bytes(content)
    with pytest.raises(kiv.DamageError):
        state = kiv.open(place)
        for vrf in state.vrfs:
            for family in (4, 6):
                state.routes(family, vrf=vrf)


def test_threads_share_a_state(directory):
    state = kiv.open(directory[0])
    expected = [(route.prefix, route.vias) for route in state.routes()]
    text = state.show("show ip route", as_text=True)
    wrong = []

    def read():
        for _ in range(20):
            if [(route.prefix, route.vias) for route in state.routes()] != expected:
                wrong.append("routes")
            if state.show("show ip route", as_text=True) != text:
                wrong.append("text")

    threads = [threading.Thread(target=read) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not wrong


def test_an_interrupt_ends_a_long_call(tmp_path):
    """A child asks for long outputs until it is interrupted, while its other thread goes on."""
    routes = [
        {"prefix": f"{10 + i // 65536}.{i // 256 % 256}.{i % 256}.0/24", "type": "drop", "vias": []}
        for i in range(100_000)
    ]
    (tmp_path / "large.json").write_text(json.dumps({"vrfs": {"default": {"ipv4Routes": routes}}}))
    script = textwrap.dedent(
        """
        import sys, threading, time, kiv
        state = kiv.load(sys.argv[1])
        counted = [0]
        def count():
            while True:
                counted[0] += 1
                time.sleep(0.001)
        threading.Thread(target=count, daemon=True).start()
        print("ready", flush=True)
        try:
            while True:
                before = counted[0]
                state.show("show ip route", as_text=True)
                assert counted[0] > before
        except KeyboardInterrupt:
            print(len(state.routes()), flush=True)
        """
    )
    child = subprocess.Popen(
        [sys.executable, "-c", script, tmp_path / "large.json"], stdout=subprocess.PIPE, text=True
    )
    assert child.stdout.readline() == "ready\n"
    threading.Event().wait(0.3)
    child.send_signal(signal.SIGINT)
    out, _ = child.communicate(timeout=60)
    assert (child.returncode, out.splitlines()[-1]) == (0, "100000")  # the display may tell of its end before
