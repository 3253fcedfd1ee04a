# SPDX-License-Identifier: GPL-3.0-or-later
"""Timelines shown, saved again, and their clips compared."""

import json
import plistlib
import unittest

from support import CommandTest, clip, row, timeline


class Timeline(CommandTest):
    def setUp(self):
        super().setUp()
        self.source = self.folder / "event"
        self.stored = timeline(row("Shot", clip("A", 0.0, 10.0), clip("B", 5.0, 15.0, stars=2)),
                               row("Goal", clip("C", -2.5, 3.25)), row("Empty"))
        self.write(self.source / "chron data.plist", self.stored)

    def test_show_reads_every_kind_of_source(self):
        shown = self.printed("timeline", "show", self.source)
        self.assertEqual(list(shown)[-1], "rows")
        self.assertEqual([len(one.get("clips", [])) for one in shown["rows"]], [2, 1, 0])
        text = self.folder / "copy.json"
        text.write_text(json.dumps(self.stored))
        for source in (self.source / "chron data.plist", text):
            self.assertEqual(self.printed("timeline", "show", source), shown)

    def test_show_names_what_it_cannot_read(self):
        damaged = self.folder / "damaged.plist"
        damaged.write_bytes((self.source / "chron data.plist").read_bytes()[:300])
        for source in (damaged, self.folder / "none", self.folder / "none.json"):
            self.assertIn(str(source), self.complaint("timeline", "show", source))

    def test_rows_without_a_timeline_are_null(self):
        self.assertEqual(self.printed("timeline", "rows", self.source), ["Shot", "Goal", "Empty"])
        self.assertIsNone(self.printed("timeline", "rows", self.folder / "none"))
        self.write(self.folder / "empty/chron data.plist", timeline())
        self.assertIsNone(self.printed("timeline", "rows", self.folder / "empty"))

    def test_resave_keeps_what_was_read(self):
        to = self.folder / "saved"
        self.assertEqual(self.printed("timeline", "resave", self.source, "--to", to), {"rows": 3, "clips": 3})
        self.assertEqual(self.printed("timeline", "show", to), self.printed("timeline", "show", self.source))
        self.assertEqual(self.files_below(to),
                         ["chron data header.plist", "chron data.plist", "chron save time.plist"])
        again = self.folder / "again"
        self.printed("timeline", "resave", to, "--to", again)
        self.assertEqual((again / "chron data.plist").read_bytes(), (to / "chron data.plist").read_bytes())

    def test_resave_gives_identities_and_tells_what_it_leaves_out(self):
        nameless = timeline({"row_name": "Shot", "clips": [{"time_start": 1, "time_end": 2, "color": "1,0,0,0.99999"},
                                                           {"uuid": "X", "time_start": 1}]})
        del nameless["uuid_timeline"]
        self.write(self.source / "chron data.plist", nameless)
        self.write(self.source / "chron data summary.plist", {"secondary uuid - sxy": "S"})
        to = self.folder / "saved"
        done = self.run_program("timeline", "resave", self.source, "--to", to)
        self.assertEqual(json.loads(done.stdout), {"rows": 1, "clips": 1})
        self.assertIn("1 clip without a readable time", done.stderr)
        log = next(self.folder.rglob("vistels log.txt"))
        self.assertIn("1 clip without a readable time", log.read_text())
        saved = plistlib.loads((to / "chron data.plist").read_bytes())
        header = plistlib.loads((to / "chron data header.plist").read_bytes())
        self.assertEqual((header["UUID chronology header"], header["chronology name"]),
                         (saved["uuid_timeline"], "saved"))
        only = saved["rows"][0]["clips"][0]
        self.assertTrue(saved["rows"][0]["uuid_row"] and only["uuid"])
        self.assertEqual(only["color"], "1.0,0.0,0.0")
        self.assertEqual(plistlib.loads((to / "chron data summary.plist").read_bytes()),
                         {"secondary uuid - sxy": "S"})

    def test_edits_complete_the_header(self):
        self.printed("timeline", "compact", self.source, "Goal", "Shot", "--name", "Both")
        header = plistlib.loads((self.source / "chron data header.plist").read_bytes())
        self.assertEqual((header["UUID chronology header"], header["chronology name"]),
                         (self.stored["uuid_timeline"], "event"))
        rows = plistlib.loads((self.source / "chron data.plist").read_bytes())["rows"]
        self.assertEqual([row.get("sort_number_(for_row_Compactor_or_Expander)") for row in rows], [1, None])
        self.assertEqual(rows[0]["uncompacted_sort_number_Compactor_Expander"], [1, 2])

    def test_notes_are_beside_the_timeline_and_shown_in_it(self):
        note = {"clip_notes_uuid": "N", "note_string": "Left foot", "theirs": [1, {"a": True}],
                "note_text_storage_rtf__json_String": "{\\rtf1 Left foot}"}
        self.stored["rows"][0]["clips"][0]["notes_dict"] = note
        self.write(self.source / "chron data.plist", self.stored)
        to = self.folder / "saved"
        self.printed("timeline", "resave", self.source, "--to", to)
        self.assertNotIn(b"Left foot", (to / "chron data.plist").read_bytes())
        kept = plistlib.loads((to / "chron notes.plist").read_bytes())
        self.assertEqual(kept, {"data_version": 1, "uuid_timeline": self.stored["uuid_timeline"],
                                "notes": [{"clip_uuid": "A", **note}]})
        shown = self.printed("timeline", "show", to)
        self.assertEqual(shown["rows"][0]["clips"][0]["notes_dict"], note)
        self.printed("timeline", "resave", to, "--to", to)
        self.assertEqual(self.printed("timeline", "show", to), shown)
        (to / "chron notes.plist").write_bytes(b"<plist")
        without = self.run_program("timeline", "show", to)
        self.assertEqual(without.returncode, 0)
        self.assertIn(str(to / "chron notes.plist"), without.stderr)
        self.assertNotIn("notes_dict", without.stdout)

    def test_rows_merged_and_expanded_again_and_another_copy_merged(self):
        shown = self.printed("timeline", "show", self.source)
        copy = self.folder / "copy.json"
        copy.write_text(json.dumps(shown))
        done = self.printed("timeline", "compact", self.source, "Goal", "row Shot", "--name", "Both")
        self.assertEqual(done, {"rows": ["Both", "Empty"], "clips": 3})
        self.assertEqual(self.printed("timeline", "expand", self.source, "Both")["clips"], 3)
        self.assertEqual(self.printed("timeline", "show", self.source), shown)
        changed = json.loads(copy.read_text())
        changed["rows"][1]["clips"] = [clip("D", 1.0, 2.0)]
        changed["rows"][0]["clips"][0].update(time_end=11.5, edit_seconds=5.0)
        copy.write_text(json.dumps(changed))
        done = self.printed("timeline", "merge", self.source, copy)
        self.assertEqual(done, {"rows": ["Shot", "Goal", "Empty"], "clips": 4})
        self.assertEqual(self.printed("timeline", "show", self.source)["rows"][0]["clips"][0]["time_end"], 11.5)
        self.assertEqual(self.printed("timeline", "merge", self.source, copy), done)
        for wrong in (["expand", self.source, "Goal"], ["compact", self.source, "Goal"],
                      ["merge", self.folder / "none", copy]):
            self.assertIn(str(wrong[1]), self.complaint("timeline", *wrong))

    def test_resave_of_chosen_clips(self):
        to = self.folder / "chosen"
        counts = self.printed("timeline", "resave", self.source, "--to", to, "--only", "C,A")
        self.assertEqual(counts, {"rows": 2, "clips": 2})
        saved = plistlib.loads((to / "chron data.plist").read_bytes())
        self.assertIs(saved["only contains selected and filtered in clips"], True)
        self.assertEqual(saved["row_count"], 3)
        self.assertEqual([[one["uuid"] for one in each["clips"]] for each in saved["rows"]], [["A"], ["C"]])
        self.assertIn("nobody", self.complaint("timeline", "resave", self.source, "--to", to, "--only", "nobody"))

    def test_resave_into_a_folder_that_cannot_be_made(self):
        (self.folder / "file").write_text("x")
        self.assertIn(str(self.folder / "file"),
                      self.complaint("timeline", "resave", self.source, "--to", self.folder / "file/x"))

    def test_overlap_takes_the_first_clip_that_meets_a_test(self):
        cases = (
            ([clip("X", -1, 11)], "CLIP_OVERLAPS_ALL_OF_REFERENCE_CLIP"),
            ([clip("X", 2, 9)], "CLIP_COVERED_BY_ALL_OF_REFERENCE_CLIP"),
            ([clip("X", -3, 4)], "CLIP_OVERLAPS_START_OF_REFERENCE_CLIP"),
            ([clip("X", 4, -3)], "CLIP_OVERLAPS_START_OF_REFERENCE_CLIP"),
            ([clip("X", 9, 12)], "CLIP_OVERLAPS_END_OF_REFERENCE_CLIP"),
            ([clip("X", 0, 10)], "CLIP_SAME_AS_REFERENCE_CLIP"),
            ([clip("X", -9, 0)], None),
            ([clip("X", 10, 20)], None),
            ([], None),
            ([clip("X", 9, 12), clip("Y", -9, -1), clip("Z", 1, 2)], "CLIP_COVERED_BY_ALL_OF_REFERENCE_CLIP"),
        )
        for number, (others, test) in enumerate(cases):
            source = self.write(self.folder / f"{number}.plist", timeline(row("R", clip("REF", 0, 10), *others),
                                                                         row("Other", clip("O", 1, 2))))
            with self.subTest(others=others):
                found = self.printed("timeline", "overlap", source, "REF")
                self.assertEqual(found["test"], test)
                self.assertEqual(found["clip"], None if test is None else "Z" if len(others) > 1 else "X")
        self.assertIn("NONE", self.complaint("timeline", "overlap", self.source, "NONE"))

    def test_split(self):
        cases = (
            ((0, 10, 5, 15), True, (0, 7.45), (7.55, 15)),
            ((5, 15, 0, 10), True, (7.55, 15), (0, 7.45)),
            ((0, 10, 20, 30), False, (0, 10), (20, 30)),
            ((0, 10, 0, 10), True, (5.05, 10), (0, 4.95)),  # equal midpoints: the second comes first
            ((0, 0, 0, 0), False, (0, 0), (0, 0)),
        )
        for times, changed, first, second in cases:
            done = self.printed("timeline", "split", *times)
            self.assertIs(done["changed"], changed, times)
            for found, wanted in zip(done["a"] + done["b"], first + second):
                self.assertAlmostEqual(found, wanted, places=9, msg=times)


if __name__ == "__main__":
    unittest.main()
