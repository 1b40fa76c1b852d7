"""What the tests share: the snapshots of the tree, and a state directory of a test's own."""

import os
import pathlib
import subprocess

import pytest

import kiv

SOURCE = pathlib.Path(os.environ["KIV_SOURCE_DIR"])
SNAPSHOTS = sorted([*(SOURCE / "examples").glob("*.json"), *(SOURCE / "tests/programs/kiv").glob("*.json")])


@pytest.fixture(params=SNAPSHOTS, ids=lambda file: file.stem)
def snapshot(request):
    return kiv.load(request.param)


@pytest.fixture
def directory(tmp_path):
    """A state directory with the state of an example, and a function that loads another one there."""
    place = tmp_path / "state"

    def load(example):
        file = SOURCE / "examples" / f"{example}.json"
        subprocess.run([os.environ["KIV_PROGRAM"], "load", file, "--state", place], check=True)

    load("demo")
    return place, load
