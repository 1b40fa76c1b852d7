"""The examples run, and they and the package have types that hold."""

import os
import pathlib
import subprocess
import sys

SOURCE = pathlib.Path(os.environ["KIV_SOURCE_DIR"])
EXAMPLES = SOURCE / "python/examples"


def run(*words, **environment):
    return subprocess.run(
        [sys.executable, *map(str, words)], check=True, capture_output=True, text=True, env={**os.environ, **environment}
    ).stdout


def test_longest_prefixes_by_nexthop():
    lines = run(EXAMPLES / "longest_by_nexthop.py", SOURCE / "examples/demo.json").splitlines()
    assert "10.10.20.254 172.31.0.0/16" in lines


def test_difference_of_states(tmp_path):
    demo = SOURCE / "examples/demo.json"
    changed = tmp_path / "changed.json"
    changed.write_text(demo.read_text().replace('"prefix": "172.31.0.0/16"', '"prefix": "172.30.0.0/16"'))
    assert run(EXAMPLES / "diff_states.py", demo, demo) == ""
    lines = run(EXAMPLES / "diff_states.py", demo, changed).splitlines()
    assert [line.split()[:4] for line in lines] == [
        ["+", "default", "<Route", "172.30.0.0/16"],
        ["-", "default", "<Route", "172.31.0.0/16"],
    ]


def test_check_of_a_default_route(directory):
    run("-m", "pytest", "-q", "-p", "no:cacheprovider", EXAMPLES / "test_default_route.py", KIV_STATE=str(directory[0]))


def test_types_hold(tmp_path):
    wrong = tmp_path / "wrong.py"
    wrong.write_text('import kiv\nvia = kiv.new("Kiv::CachedVia", hop="::1")\nvia.hop = []\nvia.colour\n')
    mypy = ["-m", "mypy", "--strict", "--cache-dir", tmp_path / "cache"]
    run(*mypy, "-p", "kiv")
    run(*mypy, EXAMPLES / "longest_by_nexthop.py", EXAMPLES / "diff_states.py")
    refused = subprocess.run([sys.executable, *mypy, wrong], capture_output=True, text=True).stdout
    assert "wrong.py:3:" in refused and "wrong.py:4:" in refused and "wrong.py:2:" not in refused
