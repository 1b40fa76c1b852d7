#!/usr/bin/env python3
"""Follows a network namespace through random and adversarial changes.

usage: unshare -rn soak.py KIV [SECONDS [SEED]]

After each quiet moment the directory's output is byte for byte that of the kernel read anew; while things change, a
route that is never touched is in every reading. Exits with 77 where a namespace cannot do what is needed.
"""
import os, random, shutil, signal, subprocess, sys, tempfile, threading, time

kiv, seconds = sys.argv[1], float(sys.argv[2]) if len(sys.argv) > 2 else 5
seed = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(1 << 30)
draw = random.Random(seed)
folder = tempfile.mkdtemp(dir="/dev/shm" if os.path.isdir("/dev/shm") else None)
state = folder + "/state"
shows = ["show ip route vrf all", "show ipv6 route vrf all --json", "show ip route summary vrf all", "show ip route host", "show ip route 10.3.1.1", "show ip route 192.0.2.1",
         "show ip route 192.0.2.77 --json", "show ip route 8.8.8.8", "show ipv6 route 2001:db8:102::1", "show ipv6 route 2001:db8:1::2"]


followers = []


def run(command, text=None):
    return subprocess.run(command, shell=isinstance(command, str), input=text, text=True, capture_output=True)


def fail(why):
    print(f"seed {seed}: {why}", file=sys.stderr)
    followers[-1].kill()
    os._exit(1)


def set_up():
    for command in ["link set lo up", "link add a0 type veth peer name a1", "link add b0 type veth peer name b1",
                    "link set a0 up", "link set a1 up", "link set b0 up", "link set b1 up", "link add keep0 type veth peer name keep1",
                    "link set keep0 up", "link set keep1 up",
                    "addr add 192.0.2.1/25 dev a0", "addr add 192.0.2.129/25 dev b0", "addr add 198.51.100.1/24 dev keep0",
                    "-6 addr add 2001:db8:1::1/64 dev a0 nodad", "-6 addr add 2001:db8:2::1/64 dev b0 nodad",
                    "-6 addr add 2001:db8:3::1/64 dev keep0 nodad", "route add 203.0.113.0/24 via 198.51.100.2",
                    "-6 route add 2001:db8:cafe::/48 via 2001:db8:3::2"]:
        done = run("ip " + command)
        if done.returncode:
            print(f"skipped, this kernel cannot: ip {command}: {done.stderr.strip()}")
            sys.exit(77)
    for name, command in {"VRF devices": "link add red type vrf table 10", "dummy devices": "link add d0 type dummy"}.items():
        print("with" if run("ip " + command).returncode == 0 else "without", name)
    run("ip link set red up; ip link set d0 up")


class Follower:
    def __init__(self):
        self.start()

    def start(self):
        self.process = subprocess.Popen([kiv, "follow", "--kernel", "--state", state, "audit", "2"], stderr=subprocess.PIPE, text=True)
        followers.append(self.process)

    def kill(self):
        self.process.kill()
        self.process.wait()
        self.start()


class Readers:
    """Look for the routes that nobody touches, all the time."""

    def __init__(self):
        self.reads, self.ends = 0, False
        self.threads = [threading.Thread(target=self.loop, args=(args,)) for args in
                        [("show ip route 203.0.113.7", "203.0.113.0/24"), ("show ip route", "203.0.113.0/24"),
                         ("show ipv6 route", "2001:db8:cafe::/48")]]
        for thread in self.threads:
            thread.start()

    def loop(self, args):
        command, wanted = args
        while not self.ends:
            done = run([kiv, "--state", state, command])
            found = [line for line in done.stdout.splitlines() if wanted in line]
            errors = [line for line in done.stderr.splitlines() if "nobody has kept" not in line]
            if len(found) != 1 or " via " not in found[0] + done.stdout.split(found[0])[1].split("\n")[1] or errors or done.returncode:
                fail(f"{command}: status {done.returncode}, {errors}, {found}\n{done.stdout}")
            self.reads += 1

    def stop(self):
        self.ends = True
        for thread in self.threads:
            thread.join()


def prefix(six):
    return f"2001:db8:{draw.randrange(256, 264):x}::/48" if six else f"10.{draw.randrange(8)}.0.0/16"


def gateway(six):
    link, host = draw.choice("ab"), draw.randrange(2, 6)
    if six:
        return f"via 2001:db8:{1 if link == 'a' else 2}::{host} dev {link}0"
    return f"via 192.0.2.{host + (0 if link == 'a' else 128)} dev {link}0"


def hops(six):
    kind = draw.randrange(10)
    if kind < 5:
        return gateway(six)
    if kind < 8:
        return " ".join(f"nexthop {gateway(six)} weight {draw.randrange(1, 4)}" for _ in range(draw.randrange(2, 5)))
    if kind == 8:
        return f"nhid {draw.randrange(1, 5)}"
    return draw.choice(["", "dev b0"])


def route():
    six = draw.random() < 0.4
    verb = draw.choice(["add", "replace", "replace", "append", "prepend", "del", "del"])
    metric = draw.choice(["", "", "metric 5", "metric 20"])
    where = prefix(six)
    if draw.random() < 0.1:
        where = "default"
    vrf = draw.choice(["", "", "", "table 10", "table 77"])
    how = hops(six)
    kind = "blackhole" if how == "" and draw.random() < 0.7 else ""
    return f"{'-6 ' if six else ''}route {verb} {kind} {where} {how} {metric} {vrf} proto {draw.choice(['static', 'bgp', 'kernel'])}"


def entity():
    link = draw.choice("ab")
    return draw.choice([
        f"link set {link}{draw.randrange(2)} down", f"link set {link}1 up", f"link set {link}0 up", f"link set {link}0 up",
        f"link set {link}0 alias text{draw.randrange(9)}",
        f"addr add 192.0.2.{draw.randrange(1, 9)}/25 dev a0", f"addr del 192.0.2.{draw.randrange(1, 9)}/25 dev a0",
        f"addr add 192.0.2.{draw.randrange(129, 133)}/25 dev b0", f"addr del 192.0.2.{draw.randrange(129, 133)}/25 dev b0",
        f"-6 addr add 2001:db8:1::{draw.randrange(1, 4)}/64 dev a0 nodad", f"-6 addr del 2001:db8:1::{draw.randrange(1, 4)}/64 dev a0",
        f"nexthop add id {draw.randrange(1, 4)} {gateway(draw.random() < 0.3)}", f"nexthop replace id {draw.randrange(1, 4)} {gateway(False)}",
        f"nexthop replace id 4 group {draw.randrange(1, 4)}/{draw.randrange(1, 4)}", f"nexthop del id {draw.randrange(1, 5)}",
        "link set a0 master red", "link set a0 nomaster", "link add c0 type veth peer name c1", "link del c0",
        f"link set c0 name c{draw.randrange(2, 9)}"])


def burst():
    """More than the socket holds while nobody reads it."""
    what = draw.choice(["add", "del", "replace"])
    return "\n".join(f"route {what} 11.{i >> 8}.{i & 255}.0/24 via 192.0.2.{draw.choice([130, 131])}" for i in [*range(3000)] * 4)


def settle(follower, what):
    for attempt in range(20):
        outputs = [(run([kiv, "--kernel", show]).stdout, run([kiv, "--state", state, show]).stdout) for show in shows]
        different = [i for i, (kernel, kept) in enumerate(outputs) if kernel != kept]
        if not different:
            return
        if follower.process.poll() is not None:
            fail(f"the follower ended: {follower.process.stderr.read()}")
        time.sleep(0.05)
    kernel, kept = (outputs[different[0]][i].splitlines() for i in range(2))
    fail(f"after {what}\n{shows[different[0]]}: only in the kernel {[l for l in kernel if l not in kept]}, "
         f"only kept {[l for l in kept if l not in kernel]}")


def main():
    set_up()
    follower = Follower()
    while run([kiv, "--state", state, "show state"]).returncode:
        time.sleep(0.05)
    readers = Readers()
    end, rounds, doings = time.time() + seconds, 0, []
    while time.time() < end or rounds < 6:
        commands = [route() if draw.random() < 0.7 else entity() for _ in range(draw.randrange(1, 30))]
        doing = draw.randrange(8) if rounds >= 3 else rounds
        if doing == 0:
            commands.append(burst())
        elif doing == 1:
            follower.process.send_signal(signal.SIGSTOP)
        run(["ip", "-force", "-batch", "-"], "\n".join(commands))
        if doing == 0:
            run(["ip", "-force", "-batch", "-"], burst())
        elif doing == 1:
            run(["ip", "-force", "-batch", "-"], burst())
            follower.process.send_signal(signal.SIGCONT)
        elif doing == 2:
            follower.kill()
        if draw.random() < 0.2:
            run(f"sysctl -qw net.ipv4.conf.all.ignore_routes_with_linkdown={draw.randrange(2)} net.ipv4.ip_forward={draw.randrange(2)}")
        settle(follower, "\n".join(commands[:40]))
        rounds += 1
    readers.stop()
    told = run([kiv, "--state", state, "show state"]).stdout
    follower.process.send_signal(signal.SIGTERM)
    if follower.process.wait(10) or "Drift found: 0\n" not in told:
        fail(f"ended with {follower.process.returncode}: {follower.process.stderr.read()}\n{told}")
    print(f"seed {seed}: {rounds} rounds, {readers.reads} readings\n{told}")


try:
    main()
finally:
    if followers:
        followers[-1].kill()
    shutil.rmtree(folder, ignore_errors=True)
