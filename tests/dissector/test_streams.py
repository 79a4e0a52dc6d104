"""Frames in streams and datagrams: each is found once, and what is wrong with one is said."""

import random
import unittest

import support
from captures import Link, datagram, ethernet, gcu, host, user0

PHOTO, PHOTO_DONE = b"\x20\x01", b"\x20\x00"
HEURISTIC_PORT = 5555


def serials(found):
    """Kind, number and correctness of each frame, in order."""
    result = []
    for frame in found:
        kind = "host" if frame.show("host.length") else "gcu"
        number = frame.show("host.gnss_ms") or frame.show("gcu.target_distance.raw")
        if number is not None:
            result.append((kind, int(number), frame.show(kind + ".crc.status") == "1"))
    return result


class Sender:
    """One direction of a connection: frames in order, cut into segments at random."""

    def __init__(self, rng, to_pod, count, noise):
        make, kind = (host, "host") if to_pod else (gcu, "gcu")
        self.to_pod, self.segments, stream = to_pod, [], b""
        self.frames = [(kind, number, True) for number in range(count)]
        for number in range(count):
            stream += make(rng.choice([b"\x00", PHOTO, b"\x17\x01" + bytes(9)]), number)
            if noise and number % 3 == 0:
                size = rng.randrange(40)
                stream += bytes(rng.choice([0x00, 0x33, 0xA8, 0x8A, 0xFF]) for _ in range(size))
        while stream:
            size = rng.choice([1, 2, 5, 40, 71, 72, 73, 150, 400])
            self.segments.append(stream[:size])
            stream = stream[size:]


def connections(seed, noise, port):
    """Two connections, all four directions interleaved, and what stands in each direction."""
    rng = random.Random(seed)
    links = [Link(50000 + i, port) for i in range(2)]
    senders = [(link, Sender(rng, to_pod, 60, noise)) for link in links for to_pod in (True, False)]
    expected = {(link.ports[0], sender.to_pod): sender.frames for link, sender in senders}
    # The first segments hold a whole frame: on a port that isn't ours nothing else makes it known.
    packets = []
    for link, sender in senders:
        while sum(map(len, sender.segments[:1])) < 73 and len(sender.segments) > 1:
            sender.segments[:2] = [b"".join(sender.segments[:2])]
    while any(sender.segments for _, sender in senders):
        link, sender = rng.choice([pair for pair in senders if pair[1].segments])
        segment = link.segment(sender.to_pod, sender.segments.pop(0))
        packets.append((link.ports[0], sender.to_pod, segment))
    return packets, expected


class Streams(unittest.TestCase):
    def test_each_frame_once(self):
        for seed, noise, port in [(1, False, 2332), (2, True, 2332), (3, False, HEURISTIC_PORT),
                                  (4, True, HEURISTIC_PORT)]:
            packets, expected = connections(seed, noise, port)
            capture = ethernet([(i * 0.001, packet) for i, (_, _, packet) in enumerate(packets)])
            found, count = support.frames(capture)
            self.assertEqual(count, len(packets))
            for key, frames in expected.items():
                here = [frame for frame in found if packets[frame.packet - 1][:2] == key]
                self.assertEqual(serials(here), frames, (seed, key))

    def test_split_anywhere(self):
        frame, link, parts = host(PHOTO, 116), Link(), []
        self.assertEqual(frame[-1], 0)  # such a checksum is 0 over all but the last byte, too
        for size in range(1, len(frame)):
            parts += [frame[:size], frame[size:]]
        found, _ = support.frames(ethernet([(0, link.segment(True, part)) for part in parts]))
        self.assertEqual([frame.size for frame in found], [73] * 72)

    def test_order_of_segments(self):
        link, packets = Link(), []
        for number in range(30):
            frame = host(PHOTO, number)
            packets += [link.segment(True, frame[:50]), link.segment(True, frame[50:])]
        for i in range(3, 57, 6):
            packets[i], packets[i + 1] = packets[i + 1], packets[i]
        packets[40:40] = packets[38:40]  # sent twice
        found, _ = support.frames(ethernet(list(enumerate(packets))),
                                  "-o", "tcp.reassemble_out_of_order:TRUE")
        self.assertEqual(serials(found), [("host", number, True) for number in range(30)])

    def test_datagrams(self):
        whole = [host(PHOTO, 1), gcu(PHOTO_DONE, 2), gcu(b"", 3)]
        expected = [("host", 1, True), ("gcu", 2, True), ("gcu", 3, True)]
        for ports in [(40000, 2337), (2337, 2338), (7000, 7001)]:
            noisy = whole[0] + b"\x01\x02\x8A" + whole[1] + whole[2] + b"\xA8"
            for payload in [b"".join(whole), noisy]:
                found, _ = support.frames(ethernet([(0, datagram(True, payload, ports))]))
                self.assertEqual(serials(found), expected, (ports, payload))
        # What is no frame of ours stays with others.
        spoilt = whole[0][:-1] + b"\x00"
        found, _ = support.frames(ethernet([(0, datagram(True, spoilt, (7000, 7001)))]))
        self.assertEqual(found, [])


class Faults(unittest.TestCase):
    """A fault between two good frames: the good ones are found once, and the fault has a name."""

    ROWS = [
        ("length", host(PHOTO, 7, size=74), {"length"}),
        ("length", host(PHOTO, 7, size=72), {"length"}),
        ("length, checksum ends in 00", host(PHOTO, 10232, size=74), {"length"}),
        ("length", gcu(PHOTO_DONE, 7, size=0), {"length"}),
        ("length", gcu(PHOTO_DONE, 7, size=0xFFFF), {"length"}),
        ("checksum", host(PHOTO, 7)[:-1] + b"\x00", {"checksum"}),
        ("length spoilt later", host(PHOTO, 7).replace(b"\x49\x00", b"\x4B\x00", 1), {"length"}),
        ("end lost", gcu(PHOTO_DONE, 7)[:-5], {"length"}),
        ("unknown command", host(b"\x77\x01", 7), {"unknown"}),
        ("unknown feedback", gcu(b"\x77\x01", 7), {"unknown", "unasked"}),
        ("short command", host(b"\x1A\x01\x88\x13", 7), {"area"}),
        ("no command", host(b"", 7), {"area"}),
        ("fixed byte", host(b"\x20\x02", 7), {"fixed"}),
        ("unasked", gcu(b"\x21\x00", 7), {"unasked"}),
        ("noise", b"\x01\xA8\xA8\x55\x8A", {"noise"}),
    ]

    def test_faults(self):
        for name, bad, experts in self.ROWS:
            link = Link()
            parts = [host(b"\x00", 1) + bad + host(b"\x00", 2), host(b"\x00", 3)]
            for capture in [ethernet([(0, link.segment(True, part)) for part in parts]),
                            ethernet([(0, datagram(True, part)) for part in parts])]:
                found, _ = support.frames(capture)
                good = [frame for frame in serials(found) if frame[1] in (1, 2, 3) and frame[2]]
                self.assertEqual([number for _, number, _ in good], [1, 2, 3], name)
                self.assertEqual(sum(frame.size for frame in found), sum(map(len, parts)), name)
                self.assertEqual(len(found), 4, (name, [frame.size for frame in found]))
                said = set().union(*(frame.experts() for frame in found))
                titles = [(frame.title, frame.size) for frame in found]
                self.assertEqual(said & experts, experts, (name, titles))

    def test_header_in_noise(self):
        noise, frame, link = b"\xA8\xE5\x48\x00" + bytes(20), host(PHOTO, 1), Link()
        parts = [noise + frame[:60], frame[60:] + host(PHOTO, 2)]
        found, _ = support.frames(ethernet([(0, link.segment(True, part)) for part in parts]))
        self.assertEqual(serials(found)[-2:], [("host", 1, True), ("host", 2, True)])

    def test_noise_after_a_wrong_length(self):
        for serial, size in [(7, 0), (7, 72), (7, 74), (7, 75), (10232, 74)]:
            data = host(PHOTO, serial, size) + b"\x01\x02\x03" + host(b"\x00", 1)
            found, _ = support.frames(user0([(0, 2, data)]))
            self.assertEqual([frame.size for frame in found], [73, 3, 72], (serial, size))
            self.assertEqual(found[0].experts(), {"length"})

    def test_cut_by_the_capture(self):
        whole = datagram(True, host(PHOTO))
        for lost, title in [(1, "Photo"), (2, "Photo"), (3, "Photo"), (5, "incomplete")]:
            found, _ = support.frames(ethernet([(0, whole)], lost))
            self.assertEqual(found[0].experts(), {"cut"}, lost)
            self.assertTrue(found[0].title.endswith("Host: " + title), found[0].title)

    def test_right_checksum_is_named(self):
        frame = host(PHOTO)
        found, _ = support.frames(user0([(0, 2, frame[:-2] + b"\x12\x34")]))
        text = found[0].fields["nacelle.expert.checksum"].get("showname")
        right = "0x%02X%02X" % tuple(frame[-2:])
        labels = [field.get("showname") for field in found[0].fields.values()]
        self.assertTrue(any(right in (label or "") for label in labels), (right, text))

    def test_length_beyond_the_datagram(self):
        cut_off = [host(PHOTO)[:size] for size in range(1, 73)]
        found, _ = support.frames(ethernet([(0, datagram(True, payload)) for payload in cut_off]))
        self.assertEqual([frame.size for frame in found], list(range(1, 73)))


class Exchange(unittest.TestCase):
    """Questions, answers and periods, over each link."""

    STEPS = [  # seconds, to the pod, area; period, answered in, answer to, first answer, result
        (0.000, True, b"\x00", None, None, None, None, None),
        (0.030, True, PHOTO, "0.030000000", "4", None, None, None),
        (0.060, True, PHOTO, "0.030000000", "4", None, None, None),
        (0.071, False, PHOTO_DONE, None, None, "2", "0.041000000", "0.041000000"),
        (0.075, False, PHOTO_DONE, None, None, "2", None, None),
        (0.090, True, b"\x00", "0.030000000", None, None, None, None),
        (0.095, False, b"", None, None, None, None, None),
        (0.099, False, PHOTO_DONE + b"\x00", None, None, None, None, None),
        (0.120, True, PHOTO, "0.030000000", "10", None, None, None),
        (0.125, False, b"\x20\x02", None, None, "9", "0.005000000", None),
        (0.150, True, PHOTO, "0.030000000", "10", None, None, None),
        (0.160, False, b"\x20\xFF", None, None, "9", None, None),
        (0.170, False, b"\x20\x01", None, None, "9", None, "0.050000000"),
        (0.180, True, PHOTO, "0.030000000", None, None, None, None),
        (0.185, False, b"\x21\x00", None, None, None, None, None),
    ]

    def captures(self):
        link = Link()
        frames = [(at, to_pod, (host if to_pod else gcu)(area))
                  for at, to_pod, area, *_ in self.STEPS]
        yield user0([(at, 2 if to_pod else 1, frame) for at, to_pod, frame in frames])
        yield ethernet([(at, link.segment(to_pod, frame)) for at, to_pod, frame in frames])
        # Each datagram from a fresh port.
        ports = [(40000 + i, 2337) if frame[1] else (2337, 2338) for i, frame in enumerate(frames)]
        yield ethernet([(at, datagram(to_pod, frame, ends))
                        for (at, to_pod, frame), ends in zip(frames, ports)])

    def test_exchange(self):
        names = ["period", "response_in", "response_to", "response_time", "completion_time"]
        for capture in self.captures():
            found, _ = support.frames(capture)
            self.assertEqual([tuple(map(frame.show, names)) for frame in found],
                             [tuple(step[3:]) for step in self.STEPS])
            unasked = [i for i, frame in enumerate(found) if "unasked" in frame.experts()]
            self.assertEqual(unasked, [14])
            slow = support.tshark(capture, "-Y", "nacelle.response_time > 0.01")
            self.assertEqual(len(slow.splitlines()), 1)

    def test_port_that_is_found_out_late(self):
        packets = [datagram(to_pod, payload, (7000, 7001)) for to_pod, payload in [
            (True, b"\x00" + host(PHOTO, 1) + host(b"\x00", 2)), (True, host(b"\x00", 3)),
            (True, host(b"\x00", 4)), (False, gcu(PHOTO_DONE, 5))]]
        found, _ = support.frames(ethernet(list(enumerate(packets))))
        self.assertEqual([number for _, number, _ in serials(found)], [1, 2, 3, 4, 5])
        # What the first pass didn't know of has no part in the exchange.
        self.assertEqual([frame.show("period") for frame in found],
                         [None] * 4 + ["1.000000000", None])
        self.assertIn("unasked", found[-1].experts())

    def test_direction_and_summary(self):
        capture = next(self.captures())
        shown = support.tshark(capture, "-o", "nacelle.language:中文", "-T", "fields", "-e",
                               "nacelle.direction", "-e", "_ws.col.Info").splitlines()
        noise = support.tshark(user0([(0, 1, b"\x01")]), "-T", "fields", "-e", "nacelle.direction",
                               "-e", "_ws.col.Source")
        self.assertEqual(noise, "1\tGCU\n")
        self.assertEqual(shown[2:4], ["0\t上位机: 拍照", "1\tGCU: 指向跟随模式, 拍照 成功"])

    def test_preferences(self):
        packets = [(0, datagram(True, b"\x01" + host(PHOTO), (8000, 8001)))]
        for options, count in [((), 0), (("-o", "nacelle.udp_ports:8001"), 2)]:
            self.assertEqual(len(support.frames(ethernet(packets), *options)[0]), count)
        recording = user0([(0, 1, gcu(b""))])
        self.assertEqual(support.frames(recording, "-o", "nacelle.user0:FALSE")[0], [])


if __name__ == "__main__":
    unittest.main()
