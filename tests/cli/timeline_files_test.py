# SPDX-License-Identifier: GPL-3.0-or-later
"""Files of timelines that are damaged, missing or something else."""

import plistlib
import time
import unittest

from support import CommandTest, clip, row, timeline

FILE = "chron data.plist"


def nested(depth, opening, closing):
    return opening * depth + closing * depth


class TimelineFiles(CommandTest):
    def setUp(self):
        super().setUp()
        self.whole = plistlib.dumps(timeline(row("Shot", clip("A", 0.0, 10.0))), sort_keys=False)

    def place(self, name, content):
        folder = self.folder / name
        folder.mkdir()
        (folder / FILE).write_bytes(content)
        return folder

    def check_refused(self, folder, file):
        before = self.files_below(folder)
        self.assertIn(str(file), self.complaint("timeline", "show", folder))
        self.assertIn(str(file), self.complaint("timeline", "resave", folder, "--to", self.folder / "to"))
        self.assertFalse((self.folder / "to" / FILE).exists())
        # Saved into its own folder it would be lost.
        self.complaint("timeline", "resave", folder, "--to", folder)
        self.assertEqual(self.files_below(folder), before)

    def test_a_file_that_is_no_timeline_is_named_and_left_alone(self):
        entity = b'<!DOCTYPE plist [<!ENTITY a "aaaa">]><plist><dict><key>&a;</key><true/></dict></plist>'
        contents = {
            "empty": b"",
            "truncated": self.whole[:-40],
            "cut within a tag": self.whole[:self.whole.index(b"time_start") + 4],
            "not UTF-8": self.whole.replace(b"Shot", b"Sh\xff\xfet"),
            "UTF-16": self.whole.decode().encode("utf-16"),
            "entity": entity,
            "deep": b"<plist>" + nested(200, b"<array>", b"</array>") + b"</plist>",
            "deeper than any stack": b"<plist>" + b"<dict><key>a</key>" * 200_000,
            "binary": b"bplist00\xd1\x01\x02Trows\xa0\x08",
            "junk": bytes(range(256)) * 64,
            "zeros": bytes(4096),
            "two roots": self.whole + self.whole,
            "key without a value": b"<plist><dict><key>rows</key></dict></plist>",
            "an array": b"<plist><array/></plist>",
            "a web page": b"<html><body><p>Not found</body></html>",
        }
        for name, content in contents.items():
            with self.subTest(content=name):
                folder = self.place(name, content)
                self.check_refused(folder, folder / FILE)
                self.assertEqual((folder / FILE).read_bytes(), content)
                self.assertIsNone(self.printed("timeline", "rows", folder))

    def test_a_folder_in_the_place_of_the_file(self):
        folder = self.folder / "event"
        (folder / FILE).mkdir(parents=True)
        self.check_refused(folder, folder / FILE)
        self.assertIsNone(self.printed("timeline", "rows", folder))

    def test_resaving_over_a_folder_leaves_it_alone(self):
        source = self.write(self.folder / "t.plist", timeline())
        to = self.folder / "event"
        (to / FILE).mkdir(parents=True)
        (to / FILE / "inside").write_text("mine")
        self.assertIn(str(to / FILE), self.complaint("timeline", "resave", source, "--to", to))
        self.assertEqual(self.files_below(to), [f"{FILE}/inside"])

    def test_json_that_is_no_timeline(self):
        contents = ("", "{", '{"rows": nope}', '{"rows": [}', nested(200, "[", "]"), "[]", "3", '{"a": "\udcff"}')
        for number, content in enumerate(contents):
            source = self.folder / f"{number}.json"
            source.write_bytes(content.encode("utf-8", "surrogateescape"))
            with self.subTest(content=content):
                self.assertIn(str(source), self.complaint("timeline", "show", source))

    def test_rows_are_null_where_there_are_none(self):
        for name, stored in {"no rows": {"row_count": 0}, "no array": {"rows": "Shot"},
                             "empty": {"rows": []}}.items():
            self.write(self.folder / name / FILE, stored)
            self.assertIsNone(self.printed("timeline", "rows", self.folder / name), name)
        (self.folder / "nothing in it").mkdir()
        self.assertIsNone(self.printed("timeline", "rows", self.folder / "nothing in it"))
        self.write(self.folder / "old" / FILE, {"rows": [{"row name": "Old"}, {"row_name": "New", "row name": "x"},
                                                         {"row_name": "row {start of default timeline row name}"}]})
        self.assertEqual(self.printed("timeline", "rows", self.folder / "old"),
                         ["Old", "New", "row {start of default timeline row name}"])

    def test_what_is_strange_but_readable_is_read(self):
        odd = (b"\xef\xbb\xbf" + self.whole.replace(b"Shot", b"Sh&#111;<![CDATA[t]]>")
               .replace(b"\n", b"\r\n").replace(b"<array>", b"<!-- rows --><array>", 1))
        shown = self.printed("timeline", "show", self.place("odd", odd))
        self.assertEqual(shown, self.printed("timeline", "show", self.place("plain", self.whole)))

    def test_tombstones_expire_after_a_week(self):
        day = 86400.0
        dead = [{"clip_ID": f"D{days}", "author": "A", "edit_seconds": time.time() - days * day}
                for days in (0, 6, 8, 400)]
        source = self.write(self.folder / "old.plist", timeline(row("Shot", **{"deleted clips": dead})))
        kept = self.printed("timeline", "show", source)["rows"][0]["deleted clips"]
        self.assertEqual([one["clip_ID"] for one in kept], ["D0", "D6"])

    def test_clips_that_touch_are_split(self):
        done = self.printed("timeline", "split", 0, 10, 10, 20)
        self.assertTrue(done["changed"])
        for found, wanted in zip(done["a"] + done["b"], (0, 9.95, 10.05, 20)):
            self.assertAlmostEqual(found, wanted, places=9)
        for times in ((0, 10, 10.5, 20), (3, 3, 3, 3), (5, 4, 1, 0)):
            self.assertIs(self.printed("timeline", "split", *times)["changed"], False, times)


if __name__ == "__main__":
    unittest.main()
