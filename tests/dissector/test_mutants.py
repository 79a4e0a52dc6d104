"""Spoilt packets, over each link: the dissector never fails, and no packet is missing."""

import random
import re
import unittest

import support
from captures import Link, datagram, ethernet, gcu, host, user0

COUNTS = {"user0": 4000, "udp": 3000, "tcp": 3000}
PORTS = [(40000, 2337), (2337, 2338), (7000, 7001)]


def spoilt(rng):
    """A frame or some, with bytes changed, taken away, added or cut off."""
    area = bytes([rng.choice([0x00, 0x15, 0x17, 0x1A, 0x20, 0x30, rng.randrange(256)])])
    area += bytes(rng.randrange(256) for _ in range(rng.randrange(16)))
    frames = [rng.choice([host, gcu])(area[:rng.randrange(17)]) for _ in range(rng.randrange(1, 4))]
    data = bytearray(b"".join(frames))
    for _ in range(rng.randrange(6)):
        at = rng.randrange(len(data)) if rng.random() < 0.6 else rng.randrange(6)
        change = rng.randrange(4)
        if change == 0:
            data[at:] = data[at:][:rng.randrange(len(data) + 1)] or b"\xA8"
        elif change == 1:
            data[at:at + rng.randrange(8)] = b""
        elif change == 2:
            data[at:at] = rng.choice([b"\xA8\xE5", b"\x8A\x5E\x48\x00", bytes(rng.randrange(9))])
        else:
            data[at:at + 1] = bytes([rng.randrange(256)])
        data = data or bytearray(b"\x8A")
    return bytes(data)


class Mutants(unittest.TestCase):
    def hold(self, make, packets):
        for options in [(), ("-2",)]:
            text = support.tshark(make([(i * 0.01, *packet) for i, packet in enumerate(packets)]),
                                  "-V", *options)
            for bad in ["Lua Error", "Malformed Packet", "Dissector bug"]:
                at = text.find(bad)
                self.assertEqual(at, -1, text[max(at - 3000, 0):at + 300])
            shown = re.findall(r"^Frame \d+: \d+ bytes? on wire", text, re.MULTILINE)
            self.assertEqual(len(shown), len(packets))

    def test_user0(self):
        rng = random.Random(1)
        self.hold(user0, [(rng.randrange(4), spoilt(rng)) for _ in range(COUNTS["user0"])])

    def test_udp(self):
        rng = random.Random(2)
        self.hold(ethernet, [(datagram(rng.random() < 0.5, spoilt(rng), rng.choice(PORTS)),)
                             for _ in range(COUNTS["udp"])])

    def test_tcp(self):
        rng = random.Random(3)
        links = [Link(), Link(50001), Link(50002, 5555)]
        self.hold(ethernet, [(rng.choice(links).segment(rng.random() < 0.5, spoilt(rng)),)
                             for _ in range(COUNTS["tcp"])])


if __name__ == "__main__":
    unittest.main()
