"""What the trials have in common: a scratch directory, runs of kiv, states, and the form of table files."""
import fcntl
import json
import mmap
import os
import shutil
import signal
import struct
import subprocess
import tempfile
import time

NOBODY = 65534
HEADER = {"highWater": 128, "live": 136, "structure": 144, "population": 152}
# What the address sanitizer calls a finding; kiv itself never ends so.
SANITIZER = 66


class Failed(Exception):
    """A trial that did not end as it must."""


def must(condition, why):
    if not condition:
        raise Failed(why)


class Run:
    """One run of kiv that has ended."""

    def __init__(self, status, out, err, seconds):
        self.status, self.out, self.err, self.seconds = status, out, err, seconds
        must(status >= 0, f"ended by signal {-status}: {err[-300:]!r}")
        must(status != SANITIZER and b"runtime error" not in err, err[-2000:].decode(errors="replace"))

    def told(self, *statuses):
        """Ended with one of the statuses and one plain line that says why."""
        must(self.status in statuses, f"status {self.status}, not {statuses}: {self.err[:300]!r}")
        must(self.err.startswith(b"kiv: ") and self.err.count(b"\n") == 1 and len(self.err) <= 1024,
             f"not one line: {self.err[:300]!r}")
        return self


class Harness:
    """Runs trials against one kiv. `patience` stretches time limits where everything is slower."""

    def __init__(self, program, rng, patience, scale):
        self.kiv, self.rng, self.patience, self.scale = os.path.abspath(program), rng, patience, scale
        self.env = dict(os.environ, ASAN_OPTIONS=f"exitcode={SANITIZER}:" + os.environ.get("ASAN_OPTIONS", ""))
        self.env.pop("KIV_STATE", None)
        self.root = tempfile.mkdtemp(prefix="kiv-faults.")
        os.chmod(self.root, 0o755)
        self.made = 0
        self.snapshots = {}

    def close(self):
        shutil.rmtree(self.root, ignore_errors=True)

    def fresh(self, mode=0o755):
        """A new directory."""
        self.made += 1
        path = os.path.join(self.root, str(self.made))
        os.mkdir(path)
        os.chmod(path, mode)
        return path

    def start(self, *args, **options):
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "stdin": subprocess.DEVNULL, **options}
        env = dict(self.env, **options.pop("env", {}))
        return subprocess.Popen([self.kiv, *args], env=env, **options)

    def ended(self, process, limit=60, since=None):
        """Waits; what takes longer than it may is a failure."""
        since = time.monotonic() if since is None else since
        try:
            out, err = process.communicate(timeout=limit * self.patience + 20)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            raise Failed("does not end") from None
        seconds = time.monotonic() - since
        must(seconds <= limit * self.patience, f"took {seconds:.2f} s")
        return Run(process.returncode, out or b"", err or b"", seconds)

    def run(self, *args, limit=60, **options):
        since = time.monotonic()
        return self.ended(self.start(*args, **options), limit, since)

    def snapshot(self, routes, metric=1):
        """The file of a state of so many routes, each with a FEC of its own and all of one metric."""
        if (routes, metric) not in self.snapshots:
            name = f"e{metric}"
            ipv4 = [{"prefix": f"{10 + (i >> 16)}.{i >> 8 & 255}.{i & 255}.0/24", "type": "kernel", "metric": metric,
                     "vias": [{"nexthop": f"172.{16 + (i >> 16)}.{i >> 8 & 255}.{i & 255}", "interface": name}]}
                    for i in range(routes)]
            path = os.path.join(self.root, f"{routes}.{metric}.json")
            with open(path, "w", encoding="utf-8") as file:
                json.dump({"interfaces": {name: {"description": name}}, "vrfs": {"default": {"ipv4Routes": ipv4}}}, file)
            self.snapshots[routes, metric] = path
        return self.snapshots[routes, metric]

    def state(self, routes=20, metric=1, snapshot=None):
        """A new state directory in a directory of its own."""
        place = os.path.join(self.fresh(), "s")
        run = self.run("load", snapshot or self.snapshot(routes, metric), "--state", place)
        must(run.status == 0, f"load: {run.err!r}")
        return place

    def interrupted(self, process, *statuses, signum=signal.SIGINT, drain=True):
        """Ends within a tenth of a second of the signal."""
        since = time.monotonic()
        process.send_signal(signum)
        if not drain:
            process.stdout.close()
            process.stdout = None
        run = self.ended(process, 0.1, since)
        must(run.status in statuses, f"status {run.status}: {run.err!r}")


def files(state):
    """The files of a state directory, relative to it."""
    return sorted(os.path.relpath(os.path.join(top, name), state)
                  for top, _, names in os.walk(state) for name in names if not name.startswith("."))


def twice(number):
    return number << 32 | (~number & 0xffffffff)


class Table:
    """A table file, mapped for writing the way a fault writes."""

    def __init__(self, path):
        with open(path, "r+b") as file:
            self.bytes = mmap.mmap(file.fileno(), 0)
        _, _, record, _, self.capacity, self.buckets, _, _ = struct.unpack_from("<QIIQIIII", self.bytes)
        self.slot_size = 8 + record
        self.slots_at = 4096 + -(-self.buckets * 4 // 4096) * 4096
        self.used = struct.unpack_from("<Q", self.bytes, HEADER["highWater"])[0] >> 32

    def header(self, name, word):
        struct.pack_into("<Q", self.bytes, HEADER[name], word)

    def heads(self):
        return memoryview(self.bytes)[4096:4096 + 4 * self.buckets].cast("I")

    def slot(self, index):
        """Its offset: the sequence, the link behind it, then the record."""
        return self.slots_at + index * self.slot_size

    def link_is(self, index, link):
        struct.pack_into("<I", self.bytes, self.slot(index) + 4, link)

    def updating(self, index):
        self.bytes[self.slot(index)] |= 3

    def ends(self):
        """Of what is used."""
        return self.slot(self.used)


class Held:
    """The lock that a table's writer has."""

    def __init__(self, path):
        self.file = open(path, "r+b")
        fcntl.fcntl(self.file, 37, struct.pack("hhqqi4x", fcntl.F_WRLCK, os.SEEK_SET, 0, 0, 0))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.file.close()
