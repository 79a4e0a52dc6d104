"""Every field of a thousand frames against what the program's own forms show of the same bytes."""

import unittest

import support
from captures import user0

# The bench shows this command by the name of another; in a capture it has its own.
OWN_NAMES = {"en": {"16": "Stare (geo lock)"}, "zh": {"16": "凝视(地理坐标锁定)"}}
NAMED_SO = {"en": "Stare (geo guidance)", "zh": "凝视(地理坐标引导)"}


def is_rounded(text, value):
    """True when `text` is `value` in the digits that the text has, six where it has fewer."""
    digits = text.partition("e")
    decimals = len(digits[0].partition(".")[2])
    step = 10.0 ** ((int(digits[2]) if digits[2] else 0) - decimals)
    significant = len(digits[0].lstrip("-0.").replace(".", ""))
    if significant < 6:
        return abs(float(text) - value) <= abs(value) * 5.1e-6
    return abs(float(text) - value) <= 0.5 * step * (1 + 1e-9)


class Fields(unittest.TestCase):
    def compare(self, language):
        expected = support.form_texts(language)
        self.assertGreater(len(expected), 1000)
        capture = user0([(i * 0.03, 2 if e["kind"] == "host" else 1, bytes.fromhex(e["hex"]))
                         for i, e in enumerate(expected)])
        shown, packets = support.frames(capture, language=language)
        self.assertEqual((len(shown), packets), (len(expected), len(expected)))
        for frame, form in zip(shown, expected):
            self.compare_fields(frame, form)
            self.compare_areas(frame, form, language)

    def compare_fields(self, frame, form):
        for field in form["fields"]:
            name = form["kind"] + "." + field["id"]
            if not field["hex"]:
                self.assertIsNone(frame.show(name), name)
                continue
            self.assertEqual(frame.hex(name), field["hex"], name)
            label = frame.label(name)
            self.assertTrue(label.startswith(field["name"] + ": "), label)
            self.compare_value(frame, name, field["text"], label)
        self.assertTrue(frame.label(form["kind"] + ".crc").endswith(" " + form["crc"]))

    def compare_value(self, frame, name, text, label):
        if name == "gcu.mode":
            self.assertTrue(label.partition(": ")[2].startswith((text or "Unknown") + " ("), label)
        elif "nacelle." + name + ".raw" in frame.fields:
            self.assertTrue(is_rounded(text, float(frame.show(name))), (name, text, label))
        elif name == "host.subframe_header":
            self.assertEqual(int(frame.show(name), 16), int(text))
        elif text and not name.endswith(".header"):
            self.assertEqual(frame.show(name), text, name)

    def compare_areas(self, frame, form, language):
        if form["kind"] == "gcu":
            code = frame.show("feedback.code")
            text = form["feedback"]
            if code == "0x16":
                text = text.replace(NAMED_SO[language], OWN_NAMES[language]["16"])
            title = frame.title.replace(" ", "")
            self.assertTrue(title.endswith(text.replace(" ", "")), (frame.title, text))
            return
        self.assertIn(": " + form["command"] + " (", frame.label("command.code"))
        for param, text in form["params"].items():
            self.assertEqual(float(frame.show("command." + param)), float(text), param)
        flags = int(frame.hex("host.flags"), 16)
        for bit, name in [(0, "inertial_valid"), (2, "control_valid")]:
            self.assertEqual(int(frame.show("host.flags." + name)), flags >> bit & 1)

    def test_in_english(self):
        self.compare("en")

    def test_in_chinese(self):
        self.compare("zh")


if __name__ == "__main__":
    unittest.main()
