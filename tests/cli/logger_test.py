# SPDX-License-Identifier: GPL-3.0-or-later
"""Code windows shown, saved again, and their buttons pressed by scripts."""

import json
import plistlib
import unittest

from support import CommandTest

BUTTONS = {"version markup": 3, "array objects": [
    {"odd": [1, 2.5], "uuid": "U1", "name": "Shot", "button Type": 10, "secs in": 2.0, "secs out": 1},
    {"uuid": "U2", "name": "Goal", "name category": "Outcome", "button Type": 20},
    {"uuid": "U3", "name": "Half", "button Type": 30, "auto up": True, "auto up duration": 1.5}]}


class Logger(CommandTest):
    def setUp(self):
        super().setUp()
        self.event = self.folder / "event"
        self.write(self.event / "Logger/button dict.plist", BUTTONS)
        self.script = self.folder / "script.json"

    def press(self, *events):
        self.script.write_text(json.dumps({"events": list(events)}))
        return self.printed("logger", "press", self.event, self.event, self.script)

    def test_show_and_resave_keep_what_is_stored(self):
        self.assertEqual(self.printed("logger", "show", self.event), BUTTONS)
        self.assertEqual(self.printed("logger", "show", self.event / "Logger"), BUTTONS)
        self.assertEqual(self.printed("logger", "resave", self.event, "--to", self.folder / "new"),
                         {"buttons": 3})
        saved = (self.folder / "new/Logger/button dict.plist").read_bytes()
        self.assertEqual(plistlib.loads(saved), BUTTONS)

    def test_press_fires_in_order_and_saves_the_timeline(self):
        done = self.press({"at": 10, "button": "Shot", "do": "down"}, {"at": 11.5, "button": "U2", "do": "down"},
                          {"at": 12, "button": "Half", "do": "down"}, {"at": 20, "button": "U1", "do": "up"},
                          {"at": 21, "do": "tab"}, {"at": 40, "button": "Shot", "do": "down"},
                          {"at": 45, "do": "end"}, {"at": 50, "button": "Shot", "do": "up"})
        fired = [(one["at"], one["name"], one["state"], one["cause"], one["made"]) for one in done["fired"]]
        self.assertEqual(fired, [(10, "Shot", "down", "press", None), (11.5, "Goal", "down", "press", "qualifier"),
                                 (12, "Half", "down", "press", None), (13.5, "Half", "up", "auto up", None),
                                 (20, "Shot", "up", "press", "clip"), (21, "Goal", "up", "tab", None),
                                 (40, "Shot", "down", "press", None)])
        self.assertEqual(done["down"], ["U1"])
        rows = plistlib.loads((self.event / "chron data.plist").read_bytes())["rows"]
        self.assertEqual([(one["time_start"], one["time_end"]) for one in rows[0]["clips"]],
                         [(8, 21), (38, 46)])
        self.assertEqual(rows[0]["clips"][0]["qualifiers"]["qualifiers_array"][0]["category"], "Outcome")

    def test_resave_keeps_everything_that_belongs_to_the_buttons(self):
        odd = {"version markup": 3, "array objects": ["no button", BUTTONS["array objects"][0],
                                                      {"uuid": "P", "UUID pic": "42", "jump on": "press"}, 7]}
        self.write(self.event / "Logger/button dict.plist", odd)
        self.write(self.event / "Logger/logger offsets.plist",
                   {"sync data dict - markup": {"source object - markup": "S"}})
        self.write(self.event / "Logger/logger info.plist", {"ACTION and CAPTURE": [1], "big scroller offset x": 3})
        (self.event / "Logger/pic 42.png").write_bytes(b"picture")
        self.assertEqual(self.printed("logger", "show", self.event), odd)
        self.printed("logger", "resave", self.event, "--to", self.folder / "new")
        for name in ("button dict.plist", "logger offsets.plist", "logger info.plist"):
            self.assertEqual(plistlib.loads((self.folder / "new/Logger" / name).read_bytes()),
                             plistlib.loads((self.event / "Logger" / name).read_bytes()), name)
        self.assertEqual((self.folder / "new/Logger/pic 42.png").read_bytes(), b"picture")

    def test_press_knows_every_type_and_saves_the_triggers_it_adds(self):
        self.write(self.event / "Logger/button dict.plist", {"array objects": [
            BUTTONS["array objects"][0], BUTTONS["array objects"][1],
            {"uuid": "U4", "name": "Fine", "button Type": 40, "attribute stage": "Last and Next"},
            {"uuid": "U5", "name": "Clock", "button Type": 50, "Timer Clip Offset": 90},
            {"uuid": "U6", "name": "Set", "button Type": 60, "action link to UUID": "U1"}]})
        done = self.press({"at": 5, "button": "Fine", "do": "down"}, {"at": 6, "button": "Clock", "do": "down"},
                          {"at": 7, "button": "Goal", "do": "down"}, {"at": 8, "button": "Fine", "do": "up"},
                          {"at": 9, "button": "Fine", "do": "down"}, {"at": 10, "button": "Clock", "do": "up"},
                          {"at": 11, "button": "Set", "do": "down"}, {"at": 12, "do": "end"})
        self.assertEqual([(one["name"], one["state"], one["made"]) for one in done["fired"]],
                         [("Fine", "down", None), ("Clock", "down", None), ("Goal", "down", "qualifier"),
                          ("Fine", "up", None), ("Fine", "down", "attribute"), ("Clock", "up", "clip"),
                          ("Set", "down", None)])
        row = plistlib.loads((self.event / "chron data.plist").read_bytes())["rows"][0]
        self.assertTrue(row["timer_row"])
        clip = row["clips"][0]
        self.assertEqual((clip["time_start"], clip["time_end"], clip["timer_clip_alt_offset_minutes"]), (6, 10, 1.5))
        attributes = clip["qualifiers"]["qualifiers_array"][0]["qualifier_attributes"]
        self.assertEqual([(one["name"], one["time"]) for one in attributes], [("Fine", 5), ("Fine", 9)])
        shot = self.printed("logger", "show", self.event)["array objects"][0]
        self.assertEqual(shot["triggers"], [{"trigger_time": 11.0, "trigger_type": "going down"}])
        self.assertEqual(shot["odd"], [1, 2.5])

    def test_press_tells_clips_and_header_what_they_belong_to(self):
        self.write(self.event / "video group.plist",
                   {"UUID video group": "COLLECTION", "video group name": "Final", "UUID video group quick": "4711"})
        self.press({"at": 10, "button": "Shot", "do": "down"}, {"at": 900_000_000, "do": "end"})
        clip = plistlib.loads((self.event / "chron data.plist").read_bytes())["rows"][0]["clips"][0]
        self.assertEqual((clip["coll_id"], clip["time_end"]), (4711, 900_000_001))
        self.assertTrue(clip["author"] and clip["edit_seconds"])
        header = plistlib.loads((self.event / "chron data header.plist").read_bytes())
        self.assertEqual((header["UUID linked collection"], header["chronology name"]), ("COLLECTION", "Final"))
        self.assertEqual(header["UUID chronology header"],
                         plistlib.loads((self.event / "chron data.plist").read_bytes())["uuid_timeline"])

    def test_a_wrong_script_is_named_and_nothing_is_pressed(self):
        for text in ("{}", "[", '{"events": [{"at": 1, "do": "fly"}]}',
                     '{"events": [{"at": 1, "button": "zz", "do": "down"}]}',
                     '{"events": [{"at": 1e300, "do": "end"}]}', '{"events": [{"at": -2e9, "do": "tab"}]}',
                     '{"events": [{"at": 2, "do": "tab"}, {"at": 1, "do": "tab"}]}'):
            self.script.write_text(text)
            told = self.complaint("logger", "press", self.event, self.folder / "other", self.script)
            self.assertIn(str(self.script), told)
        self.assertFalse((self.folder / "other").exists())
        self.assertIn("button dict.plist", self.complaint("logger", "show", self.folder / "none"))


if __name__ == "__main__":
    unittest.main()
