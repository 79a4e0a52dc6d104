"""Processor seconds of tshark over 40,000 frames on TCP, with the dissector and without.

Usage: python3 bench/bench_dissector.py build/release/wireshark/nacelle.lua
"""

import os
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "dissector"))
import captures  # pylint: disable=wrong-import-position

VIEWS = {"the list": [], "a filter": ["-Y", "{}"], "all details": ["-V"]}
FILTERS = {True: "nacelle.command.code == 0x20", False: "tcp.len == 73"}


def session():
    """20,000 host frames, one in ten of them a photo, and as many answers."""
    link, packets = captures.Link(), []
    for i in range(20000):
        is_photo = i % 10 == 0
        frames = [captures.host(b"\x20\x01" if is_photo else b"\x00", i),
                  captures.gcu(b"\x20\x00" if is_photo else b"", i)]
        for to_pod, frame in zip((True, False), frames):
            packets.append((i * 0.03 + (not to_pod) * 0.01, link.segment(to_pod, frame)))
    return captures.ethernet(packets)


def seconds(path, dissector, view):
    """The least processor time of three runs."""
    words = [word.format(FILTERS[bool(dissector)]) for word in view]
    script = ["-X", "lua_script:" + dissector] if dissector else []
    times = []
    for _ in range(3):
        child = subprocess.Popen(["tshark", *script, "-r", path, *words],
                                 stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        used = os.wait4(child.pid, 0)[2]
        times.append(used.ru_utime + used.ru_stime)
    return min(times)


def main():
    with tempfile.NamedTemporaryFile() as file:
        file.write(session())
        file.flush()
        for name, view in VIEWS.items():
            ours, bare = seconds(file.name, sys.argv[1], view), seconds(file.name, None, view)
            print("%-12s %5.2f s, without %5.2f s: %4.1f x" % (name, ours, bare, ours / bare))


if __name__ == "__main__":
    main()
