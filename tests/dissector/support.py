"""What the dissector's tests have in common: the programs, and tshark's view of a capture."""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml

TSHARK, DISSECTOR, FORMTEXTS, DATA = sys.argv[1:5]
del sys.argv[1:5]
LANGUAGE = {"en": "English", "zh": "中文"}


def form_texts(language):
    """Frames, and what the program's forms show of them."""
    command = [FORMTEXTS, DATA, language]
    return json.loads(subprocess.run(command, check=True, capture_output=True).stdout)


def tshark(capture, *options, profiles=None):
    """Standard output over the bytes of a capture, without settings but those of `profiles`."""
    with tempfile.TemporaryDirectory() as home:
        if profiles:
            shutil.copytree(profiles, os.path.join(home, "wireshark", "profiles"))
        path = os.path.join(home, "capture")
        with open(path, "wb") as file:
            file.write(capture)
        result = subprocess.run(
            [TSHARK, "-X", "lua_script:" + DISSECTOR, "-r", path, *options],
            env={**os.environ, "HOME": home, "XDG_CONFIG_HOME": home, "LC_ALL": "C.UTF-8"},
            capture_output=True, check=False)
    errors = [line for line in result.stderr.decode().splitlines() if "Running as user" not in line]
    assert result.returncode == 0 and not errors, (result.returncode, errors)
    return result.stdout.decode(errors="replace")


class Frame:
    """One protocol tree of tshark's: its title and its fields by name."""

    def __init__(self, element, packet):
        self.packet = packet
        self.title = element.get("showname")
        self.at, self.size = int(element.get("pos")), int(element.get("size"))
        self.fields = {}
        for field in element.iter("field"):
            self.fields.setdefault(field.get("name"), field)

    def show(self, name):
        """The value, None where the field isn't there."""
        field = self.fields.get("nacelle." + name)
        return None if field is None else field.get("show")

    def label(self, name):
        return self.fields["nacelle." + name].get("showname")

    def hex(self, name):
        return self.fields["nacelle." + name].get("value").upper()

    def experts(self):
        prefix = "nacelle.expert."
        return {name[len(prefix):] for name in self.fields if name.startswith(prefix)}


def frames(capture, *options, language="en", profiles=None):
    """All trees of a capture, those of noise too, and the number of packets."""
    chosen = "nacelle.language:" + LANGUAGE[language]
    text = tshark(capture, "-2", "-T", "pdml", "-o", chosen, *options,
                  profiles=profiles)
    found = []
    assert "Lua Error" not in text, text[text.index("Lua Error"):][:200]
    packets = xml.fromstring(text).findall("packet")
    for number, packet in enumerate(packets, 1):
        for element in packet.findall("proto[@name='nacelle']"):
            found.append(Frame(element, number))
    return found, len(packets)
