"""What the help says of the dissector, and what its maker refuses."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest

import support
from captures import Link, ethernet, gcu, host, user0

REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PARTS = os.path.join(REPOSITORY, "tools", "dissector")


def text_of(*path):
    with open(os.path.join(REPOSITORY, *path), encoding="utf-8") as file:
        return file.read()


class Help(unittest.TestCase):
    def test_filters_are_there(self):
        named = re.findall(r"`(nacelle\.[a-z0-9_.]+)`((?:[、,] `\.[a-z_]+`)*)",
                           text_of("docs", "help.md"))
        names = set()
        for name, more in named:
            names.add(name)
            stem = name.rpartition(".")[0]
            names.update(stem + rest for rest in re.findall(r"`(\.[a-z_]+)`", more))
        self.assertGreater(len(names), 20, names)
        # A filter with an unknown name is an error.
        support.tshark(user0([]), "-Y", " || ".join(sorted(names)))

    def test_log_becomes_a_capture(self):
        commands = re.findall(r"^(text2pcap .*?)log\.txt log\.pcapng$", text_of("docs", "help.md"),
                              re.MULTILINE | re.DOTALL)
        self.assertEqual(len(commands), 2)
        for command, words in zip(commands, [("发", "收"), ("TX", "RX")]):
            log = ""
            for at, area in enumerate([b"\x00", b"\x20\x01"]):
                log += "[10:15:14:%03d]%s->\n%s\n" % (at * 30, words[0], host(area).hex().upper())
            log += "[10:15:14:040]%s->\n\n" % words[1]  # noise leaves an empty entry
            log += "[10:15:14:045]%s->\n%s\n" % (words[1], gcu(b"\x20\x00").hex().upper())
            with tempfile.TemporaryDirectory() as folder:
                with open(os.path.join(folder, "log.txt"), "w", encoding="utf-8") as file:
                    file.write(log)
                subprocess.run(command + "log.txt log.pcapng", shell=True, check=True, cwd=folder,
                               capture_output=True)
                with open(os.path.join(folder, "log.pcapng"), "rb") as file:
                    found, _ = support.frames(file.read())
            shown = [(frame.show("direction"), frame.show("response_time")) for frame in found]
            self.assertEqual(shown, [("0", None), ("0", None), (None, "0.015000000")])


class Profiles(unittest.TestCase):
    LINES = [("NacelleBench", "Photo,Empty command"), ("云台报文工作台", "拍照,空命令")]

    BUILT = os.path.join(os.path.dirname(support.DISSECTOR), "profiles")

    def test_language(self):
        for name, commands in self.LINES:
            text = support.tshark(user0([(0, 2, host(b"\x20\x01") + host(b"\x00"))]), "-C", name,
                                  profiles=self.BUILT)
            self.assertIn(" %s " % commands, text)


    def test_lost_segment(self):
        """A capture that lacks one still shows the frames after it."""
        link = Link()
        segments = [(i, link.segment(True, host(b"\x00", i))) for i in range(9)]
        del segments[3]
        found, _ = support.frames(ethernet(segments), "-C", "NacelleBench", profiles=self.BUILT)
        self.assertEqual([frame.show("host.gnss_ms") for frame in found], list("01245678"))


class Installer(unittest.TestCase):
    def test_upgrade_keeps_what_was_changed(self):
        with tempfile.TemporaryDirectory() as home:
            source = os.path.join(home, "release")
            shutil.copytree(os.path.dirname(support.DISSECTOR), source)
            profile = os.path.join(home, ".config", "wireshark", "profiles", "NacelleBench")

            def install():
                return subprocess.run([os.path.join(source, "install-wireshark.sh")], check=True,
                                      env={"PATH": os.environ["PATH"], "HOME": home},
                                      capture_output=True).stdout.decode()

            def write(folder, name, text):
                with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                    file.write(text)

            self.assertNotIn("Kept", install())
            write(profile, "preferences", "own")
            for name in ["preferences", "colorfilters"]:
                write(os.path.join(source, "profiles", "NacelleBench"), name, "newer")
            write(source, "nacelle.lua", "newer")
            for _ in range(2):
                said = install()
                self.assertEqual(said.count("Kept"), 1)
                self.assertIn(os.path.join(profile, "preferences"), said)
            files = {os.path.join(profile, "preferences"): "own",
                     os.path.join(profile, "colorfilters"): "newer",
                     os.path.join(home, ".local/lib/wireshark/plugins/nacelle.lua"): "newer"}
            for path, text in files.items():
                self.assertEqual(text_of(path), text, path)


class Maker(unittest.TestCase):
    ROWS = [
        ("param|zoom|", "# ", "no explanation: param|zoom"),
        ("param|zoom|倍率值|Zoom value", "param|zoom|倍率值|", "not in both languages"),
        ("param|zoom|", "param|zoom2|甲|a\nparam|zoom|", "explains nothing: param|zoom2"),
    ]

    def test_refuses(self):
        maker = os.path.join(os.path.dirname(support.FORMTEXTS), "dissectorgen")
        names = text_of("tools", "dissector", "names.txt")
        for old, new, reason in self.ROWS:
            self.assertIn(old, names)
            with tempfile.TemporaryDirectory() as folder:
                spoilt, target = os.path.join(folder, "names.txt"), os.path.join(folder, "a.lua")
                with open(spoilt, "w", encoding="utf-8") as file:
                    file.write(names.replace(old, new))
                notes = os.path.join(REPOSITORY, "docs", "protocol-notes.txt")
                part = os.path.join(PARTS, "protocol.lua")
                result = subprocess.run([maker, support.DATA, notes, spoilt, target, part],
                                        capture_output=True, check=False)
                self.assertEqual(result.returncode, 1)
                self.assertIn(reason, result.stderr.decode())
                self.assertFalse(os.path.exists(target))


if __name__ == "__main__":
    unittest.main()
