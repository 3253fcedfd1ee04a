# SPDX-License-Identifier: GPL-3.0-or-later
"""filter: which clips of a timeline a formula or a search text lets through."""

import json
import unittest

from support import CommandTest, clip, row, timeline


def qualifiers(*stamps):
    return {"qualifiers_array": [
        {"uuid": uuid, "name": name, "category": category, "time": 1.0,
         "qualifier_attributes": [{"name": name, "category": category} for name, category in attributes]}
        for uuid, name, category, *attributes in stamps]}


def match():
    return timeline(
        row("Attack", row_category="Ball", *[
            clip("a2", 20.0, 25.5, qualifiers=qualifiers(("q2", "Shot", "What", ("left", "Foot")))),
            clip("a1", 10.0, 15.0, stars=3, qualifiers=qualifiers(("q1", "Goal", "What"), ("q3", "Box", "Where"))),
        ]),
        row("Defence", row_category="No ball", *[
            clip("d1", 5.0, 6.0, notes_dict={"note_string": "came too late"}),
            clip("d2", 30.0, 31.0, stars=1, qualifiers=qualifiers(("q4", "Goal kick", "Where"))),
        ]),
        row("Empty"))


class Filter(CommandTest):
    def setUp(self):
        super().setUp()
        self.source = self.write(self.folder / "timeline" / "chron data.plist", match()).parent

    def passing(self, text):
        return [one["uuid"] for one in self.printed("filter", self.source, text)["clips"]]

    def test_document(self):
        self.assertEqual(self.printed("filter", self.source, '("Goal*" | [QC]"Where") & [RN]"Attack"'), {
            "error": False, "errors": "", "any_result": True, "total": 4, "count": 1,
            "clips": [{"uuid": "a1", "row": "Attack", "time_start": 10.0, "time_end": 15.0,
                       "qualifiers": ["q1", "q3"]}]})
        self.assertEqual(self.printed("filter", self.source, "nobody", "--count"),
                         {"error": False, "errors": "", "any_result": False, "total": 4, "count": 0})

    def test_passing_clips(self):
        for text, expected in (
                ("Goal", ["a1", "d2"]), ("oa", ["a1", "d2"]), ("late", ["d1"]), ("left", ["a2"]), ("goal", []),
                ("Attack", ["a1", "a2"]), ("✭", ["a1", "d2"]), ("✭✭", ["a1"]), ('"✭"', ["d2"]),
                ('!"Goal"', []), ('(!"Goal")', ["a2", "d1", "d2"]), ('[RC]"*all" ! "Shot"', ["a1", "d1", "d2"]),
                ('[QN,RN]"Goal"', []), ("", []), ("-1", []), ("--x", [])):
            with self.subTest(text=text):
                self.assertEqual(self.passing(text), expected)

    def test_other_sources(self):
        shown = self.folder / "shown.json"
        shown.write_text(json.dumps(self.printed("timeline", "show", self.source)), encoding="utf-8")
        for source in (self.source / "chron data.plist", shown):
            self.assertEqual(self.printed("filter", source, "Goal"), self.printed("filter", self.source, "Goal"))

    def test_syntax_error(self):
        done = self.run_program("filter", self.source, '"Goal" & ("x"')
        self.assertEqual(done.returncode, 1)
        self.assertEqual(json.loads(done.stdout), {"error": True, "errors": "Unbalanced brackets", "any_result": False,
                                                   "total": 4, "count": 0, "clips": []})
        self.assertEqual(len(done.stderr.splitlines()), 1)
        self.assertIn("Unbalanced brackets", done.stderr)

    def test_each_line(self):
        lines = self.folder / "lines"
        lines.write_bytes('Goal\n\n"Shot"\n"x\n[QN]"Goal"'.encode())
        documents = self.printed("filter", self.source, "--each", lines)
        self.assertEqual([(one["text"], one["error"], [each["uuid"] for each in one["clips"]], one["count"])
                          for one in documents],
                         [("Goal", False, ["a1", "d2"], 2), ("", False, [], 0), ('"Shot"', False, ["a2"], 1),
                          ('"x', True, [], 0), ('[QN]"Goal"', False, ["a1"], 1)])
        # Marks of one text do not stay for the next.
        self.assertEqual(documents[4]["clips"][0]["qualifiers"], ["q1"])
        self.assertNotIn("clips", self.printed("filter", self.source, "--each", lines, "--count")[0])
        lines.write_bytes(b"")
        self.assertEqual(self.printed("filter", self.source, "--each", lines), [])

    def test_what_cannot_be_done(self):
        self.assertIn("nowhere", self.complaint("filter", self.folder / "nowhere.plist", "Goal"))
        self.assertIn("missing", self.complaint("filter", self.source, "--each", self.folder / "missing"))
        for arguments in ([], ["a", "--each", "b"], ["a", "b"]):
            self.complaint("filter", self.source, *arguments, status=2)


if __name__ == "__main__":
    unittest.main()
