#!/usr/bin/env python3
"""Streams routes to a follower as a routing daemon does, and all that none should.

usage: unshare -rn daemon.py KIV FOLDER
"""
import atexit, socket, struct, subprocess, sys, time

kiv, folder = sys.argv[1:]
state, port = folder + "/fpm", 2621
NEWROUTE, DELROUTE, NEWNEXTHOP, DELNEXTHOP = 24, 25, 104, 105
DST, OIF, GATEWAY, PRIORITY, MULTIPATH, TABLE, NH_ID = 1, 4, 5, 6, 9, 15, 30
NHA_ID, NHA_GROUP, NHA_BLACKHOLE, NHA_OIF, NHA_GATEWAY = 1, 2, 4, 5, 6


def attribute(kind, data):
    data = struct.pack("=I", data) if isinstance(data, int) else data
    return (struct.pack("=HH", len(data) + 4, kind) + data).ljust((len(data) + 7) // 4 * 4, b"\0")


def address(text):
    return socket.inet_pton(socket.AF_INET6 if ":" in text else socket.AF_INET, text)


def message(kind, body):
    return struct.pack("=IHHII", len(body) + 16, kind, 0x501, 1, 0) + body


def frame(*messages):
    body = b"".join(messages)
    return struct.pack("!BBH", 1, 1, len(body) + 4) + body


def route(prefix, *attributes, kind=NEWROUTE, metric=20):
    dst, length = prefix.split("/")
    family = socket.AF_INET6 if ":" in dst else socket.AF_INET
    return message(kind, struct.pack("=BBBBBBBBI", family, int(length), 0, 0, 254, 186, 0, 1, 0) +
                   attribute(DST, address(dst)) + attribute(PRIORITY, metric) + b"".join(attributes))


def via(gateway, link):
    return attribute(GATEWAY, address(gateway)) + attribute(OIF, link)


def next_hop(number, *attributes, family=socket.AF_INET, kind=NEWNEXTHOP):
    return message(kind, struct.pack("=BBBBI", family, 0, 186, 0, 0) + attribute(NHA_ID, number) + b"".join(attributes))


def member(gateway, link, weight):
    inner = attribute(GATEWAY, address(gateway))
    return struct.pack("=HBBI", len(inner) + 8, 0, weight - 1, link) + inner


def run(*command):
    return subprocess.run([kiv, "--state", state, *command], text=True, capture_output=True)


def shown():
    lines = (run("show ip route").stdout + run("show ipv6 route").stdout).splitlines()
    return [" ".join(line.split()) for line in lines if "/" in line and "[" in line or line.strip().startswith("via ")]


def expect(wanted, when, seconds=5.0):
    end = time.time() + seconds
    while (found := shown()) != wanted:
        if time.time() > end:
            sys.exit(f"{when}: {found}, not {wanted}")
        time.sleep(0.02)


def connect():
    connection = socket.create_connection(("127.0.0.1", port))
    return connection


for command in ["link set lo up", "link add a0 type veth peer name a1", "link set a0 up", "link set a1 up", "addr add 192.0.2.1/24 dev a0"]:
    if subprocess.run(["ip", *command.split()]).returncode:
        sys.exit(77)
a0 = socket.if_nametoindex("a0")


def start():
    process = subprocess.Popen([kiv, "--state", state, "follow", "--fpm", str(port), "grace", "2"], stderr=subprocess.PIPE, text=True)
    atexit.register(process.kill)
    while run("show state").returncode or "Kept by: process " + str(process.pid) not in run("show state").stdout:
        time.sleep(0.02)
    return process


one, two, three = "10.1.0.0/16", "10.2.0.0/16", "10.3.0.0/16"
first = ["B 10.1.0.0/16 [200/20] via 192.0.2.2, a0", "B 10.2.0.0/16 [200/20] via 192.0.2.2, a0", "via 192.0.2.3, a0",
         "B 10.3.0.0/16 [200/7] via 192.0.2.4, a0", "via 192.0.2.5, a0", "B 2001:db8:1::/48 [200/20]", "via fe80::2, a0"]
follower = start()
daemon = connect()
stream = (frame(next_hop(1, attribute(NHA_GATEWAY, address("192.0.2.2")), attribute(NHA_OIF, a0)),
                next_hop(2, attribute(NHA_GATEWAY, address("192.0.2.3")), attribute(NHA_OIF, a0)),
                next_hop(3, attribute(NHA_GROUP, struct.pack("=IBBHIBBH", 1, 0, 0, 0, 2, 0, 0, 0)))) +
          frame(route(one, attribute(NH_ID, 1))) + frame(route(two, attribute(NH_ID, 3))) +
          frame(route(three, attribute(MULTIPATH, member("192.0.2.4", a0, 1) + member("192.0.2.5", a0, 1)), metric=7)) +
          frame(route("2001:db8:1::/48", via("fe80::2", a0))))
for i in range(0, len(stream), 7):  # frames come in pieces
    daemon.send(stream[i:i + 7])
expect(first, "the first stream")

# A route that changes is told as gone and then anew; a next hop changes under its routes.
daemon.send(frame(route(three, kind=DELROUTE)) + frame(route(three, via("192.0.2.6", a0))) +
            frame(next_hop(1, attribute(NHA_GATEWAY, address("192.0.2.9")), attribute(NHA_OIF, a0))))
second = ["B 10.1.0.0/16 [200/20] via 192.0.2.9, a0", "B 10.2.0.0/16 [200/20] via 192.0.2.3, a0", "via 192.0.2.9, a0",
          "B 10.3.0.0/16 [200/20] via 192.0.2.6, a0", *first[-2:]]
expect(second, "changes")

# Nothing of what is no stream of routes changes anything but the connection.
good = route("10.9.0.0/16", via("192.0.2.2", a0))
for bad in [b"\2\1\0\5x", b"\1\2\0\5x", b"\1\1\0\3", b"GET / HTTP/1.0\r\n\r\n", frame(good[:-4]), frame(b"\x05\0\0\0" + bytes(12)),
            frame(route("10.9.0.1/16", via("192.0.2.2", a0))), frame(route("10.9.0.0/16", attribute(GATEWAY, b"123")))]:
    daemon.close()
    daemon = connect()
    daemon.send(bad)
    daemon.settimeout(5)
    try:
        if daemon.recv(1) != b"":
            sys.exit("something was answered")
    except ConnectionResetError:
        pass
    line = follower.stderr.readline()
    if "kiv: fpm: the connection was closed: " not in line:
        sys.exit(f"{bad}: {line}")
    expect(second, f"after {bad}")

# A follower that is killed, and a daemon that is back and does not repeat all: the rest stays for the time of grace.
follower.kill()
follower.wait()
daemon.close()
follower = start()
expect(second, "after the follower was killed")
daemon = connect()
began = time.time()
daemon.send(frame(route(one, via("192.0.2.9", a0)), route(two, via("192.0.2.7", a0))))
expect([second[0], "B 10.2.0.0/16 [200/20] via 192.0.2.7, a0", *second[3:]], "before the end of grace", 1)
expect([second[0], "B 10.2.0.0/16 [200/20] via 192.0.2.7, a0"], "after grace")
if time.time() - began < 1.5:
    sys.exit("no grace was given")
follower.terminate()
sys.exit(follower.wait())
