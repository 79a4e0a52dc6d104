"""Captures for the dissector's tests: classic pcap over Ethernet, and pcapng of link type USER0."""

import struct

POD, BENCH = bytes([10, 0, 0, 2]), bytes([10, 0, 0, 1])
POD_PORT = 2332


def _block(kind, body):
    body += bytes(-len(body) % 4)
    size = struct.pack("<I", len(body) + 12)
    return struct.pack("<I", kind) + size + body + size


def user0(packets):
    """A pcapng of link type 147. `packets`: (seconds, direction, bytes); 1 received, 2 sent."""
    out = _block(0x0A0D0D0A, struct.pack("<IHHq", 0x1A2B3C4D, 1, 0, -1))
    out += _block(1, struct.pack("<HHI", 147, 0, 0))
    for seconds, direction, data in packets:
        micros = round(seconds * 1e6)
        head = struct.pack("<IIIII", 0, micros >> 32, micros & 0xFFFFFFFF, len(data), len(data))
        flags = struct.pack("<HHIHH", 2, 4, direction, 0, 0)
        out += _block(6, head + data + bytes(-len(data) % 4) + flags)
    return out


def ethernet(packets):
    """A pcap of Ethernet packets. `packets`: (seconds, bytes)."""
    out = struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 0x40000, 1)
    for seconds, data in packets:
        micros = round(seconds * 1e6)
        out += struct.pack("<IIII", micros // 1000000, micros % 1000000, len(data), len(data))
        out += data
    return out


def _ip(protocol, source, target, payload):
    head = struct.pack(">BBHHHBBH", 0x45, 0, 20 + len(payload), 0, 0, 64, protocol, 0)
    return bytes(12) + b"\x08\x00" + head + source + target + payload


def datagram(to_pod, payload, ports=(40000, 2337)):
    """A UDP datagram. `ports`: source and target."""
    ends = (BENCH, POD) if to_pod else (POD, BENCH)
    return _ip(17, *ends, struct.pack(">HHHH", *ports, 8 + len(payload), 0) + payload)


class Link:
    """A TCP connection: segments of both directions with their running sequence numbers."""

    def __init__(self, client_port=50000, pod_port=POD_PORT):
        self.ports = (client_port, pod_port)
        self.sent = {True: 1000, False: 2000}

    def segment(self, to_pod, payload):
        ends = (BENCH, POD) if to_pod else (POD, BENCH)
        ports = self.ports if to_pod else self.ports[::-1]
        head = struct.pack(">HHIIBBHHH", *ports, self.sent[to_pod], self.sent[not to_pod], 0x50, 0x18,
                           8192, 0, 0)
        self.sent[to_pod] += len(payload)
        return _ip(6, *ends, head + payload)
