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


def ethernet(packets, lost=0):
    """A pcap of Ethernet packets. `packets`: (seconds, bytes), of each the last `lost` cut off."""
    out = struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 0x40000, 1)
    for seconds, data in packets:
        micros = round(seconds * 1e6)
        size = len(data) - lost
        out += struct.pack("<IIII", micros // 1000000, micros % 1000000, size, len(data))
        out += data[:size]
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
        numbers = (self.sent[to_pod], self.sent[not to_pod])
        head = struct.pack(">HHIIBBHHH", *ports, *numbers, 0x50, 0x18, 8192, 0, 0)
        self.sent[to_pod] += len(payload)
        return _ip(6, *ends, head + payload)


def checksum(data):
    """CRC-16/XMODEM, bit by bit."""
    crc = 0
    for byte in data:
        crc ^= byte << 8
        for _ in range(8):
            crc = (crc << 1 ^ 0x1021 if crc & 0x8000 else crc << 1) & 0xFFFF
    return crc


def _frame(header, middle, area, size):
    body = header + struct.pack("<H", 71 + len(area) if size is None else size) + middle + area
    return body + struct.pack(">H", checksum(body))


def host(area, serial=0, size=None):
    """A host frame. `serial` stands in its GNSS time; `size` is another length field."""
    middle = b"\x01" + bytes(46) + struct.pack("<I", serial) + bytes(14)
    return _frame(b"\xA8\xE5", middle, area, size)


def gcu(area, serial=0, size=None):
    """A GCU frame. `serial` stands in its target distance."""
    middle = b"\x01\x12" + bytes(37) + struct.pack("<I", serial) + bytes(22)
    return _frame(b"\x8A\x5E", middle, area, size)
