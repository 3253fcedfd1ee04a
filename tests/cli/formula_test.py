# SPDX-License-Identifier: GPL-3.0-or-later
"""formula tokens, and the remembered filter texts."""

import plistlib
import unittest
from datetime import datetime

from support import CommandTest


class Tokens(CommandTest):
    def words(self, *arguments):
        return [(token["type"], token["chars"], token["identifiers"], token["wild_card"])
                for token in self.printed("formula", "tokens", *arguments)["tokens"]]

    def test_document(self):
        self.assertEqual(self.printed("formula", "tokens", '[RN,QN]"kick*" !a'), {
            "text": '[RN,QN]"kick*" !a',
            "error": True,
            "errors": "Unrecognised character",
            "tokens": [
                {"position": 0, "type": "OR", "chars": "", "identifiers": [], "wild_card": "MATCH_ALL"},
                {"position": 1, "type": "WORDS", "chars": "kick", "identifiers": ["RN", "QN"],
                 "wild_card": "MATCH_PREFIX"},
                {"position": 2, "type": "NOT", "chars": "!", "identifiers": [], "wild_card": "MATCH_ALL"},
                {"position": 3, "type": "CHAR", "chars": "a", "identifiers": [], "wild_card": "MATCH_ALL"}],
            "uses": {"QN": True, "QC": False, "AN": False, "AC": False, "NT": False}})
        filtered = self.printed("formula", "tokens", "Goal", "--filter")
        self.assertEqual([token["identifiers"] for token in filtered["tokens"] if token["type"] == "WORDS"],
                         [["QN"], ["QC"], ["AC"], ["AN"], ["RN"], ["NT"]])

    def test_texts_are_taken_as_they_stand(self):
        for text in ("", " ", "-x", "--", "-", '!"a"', "--not-an-option", '[RN]"a"', "{}", "tokens", "patterns",
                     '-"a" -5', "-.5"):
            with self.subTest(text=text):
                document = self.printed("formula", "tokens", "--", text)
                if text != "--":
                    self.assertEqual(self.printed("formula", "tokens", text), document)
                self.assertEqual(document["text"].lstrip(" "), text.lstrip(" "))
        self.assertEqual(self.printed("formula", "tokens", "--", "--filter")["text"], "--filter")

    def test_each_line_of_a_file(self):
        lines = self.folder / "lines"
        lines.write_bytes('"a"\n\n!"é"\r\n"b'.encode())
        documents = self.printed("formula", "tokens", "--each", lines)
        self.assertEqual([one["text"] for one in documents], ['"a"', "", ' !"é" ', '"b'])
        self.assertEqual([one["error"] for one in documents], [False, False, False, True])
        lines.write_text("Goal\n", encoding="utf-8")
        documents = self.printed("formula", "tokens", "--filter", "--each", lines)
        self.assertEqual([len(one["tokens"]) for one in documents], [12])
        self.assertIn("missing", self.complaint("formula", "tokens", "--each", self.folder / "missing"))

    def test_wrong_usage(self):
        for arguments in ([], ["--filter"], ["a", "b"], ["a", "--each", "b"], ["--each"]):
            with self.subTest(arguments=arguments):
                self.complaint("formula", "tokens", *arguments, status=2)


class Patterns(CommandTest):
    def patterns(self, *arguments):
        return [one["pattern"] for one in self.printed("patterns", *arguments)]

    def test_remember_and_remove(self):
        self.assertEqual(self.patterns("list"), [])
        self.assertEqual(self.patterns("remember", "Goal"), ["Goal"])
        self.assertEqual(self.patterns("remember", '-"list"'), ['-"list"', "Goal"])
        self.assertEqual(self.patterns("remember", "list"), ["list", '-"list"', "Goal"])
        self.assertEqual(self.patterns("remember", "Goal"), ["Goal", "list", '-"list"'])
        self.assertEqual(self.patterns("remember", ""), ["Goal", "list", '-"list"'])
        self.assertEqual(self.patterns("remove", "list"), ["Goal", '-"list"'])
        self.assertEqual(self.patterns("list"), ["Goal", '-"list"'])
        stored = plistlib.loads((self.state / "Filter Search Patterns.plist").read_bytes())
        self.assertEqual([one["pattern"] for one in stored["items"]], ["Goal", '-"list"'])
        self.assertIsInstance(stored["items"][0]["date"], datetime)

    def test_names_and_items_without_a_pattern(self):
        self.write(self.state / "Filter Search Patterns.plist", {"items": [
            {"pattern": "a", "date": datetime(2026, 3, 1, 14, 5, 9), "name": "A"}, {"date": datetime(2026, 1, 1)},
            {"pattern": 5}]})
        self.assertEqual(self.printed("patterns", "list"),
                         [{"pattern": "a", "date": "2026-03-01T14:05:09Z", "name": "A"}])

    def test_carry_over(self):
        self.write(self.state / "Chronologies" / "Filter Search Patterns.plist",
                   {"items": [{"pattern": "a", "name": "A"}, {"pattern": "b"}]})
        self.assertEqual([(one["pattern"], one.get("name")) for one in self.printed("patterns", "list")],
                         [("a", "A"), ("b", None)])
        self.assertEqual(self.patterns("remove", "a"), ["b"])
        self.assertEqual(self.patterns("remove", "b"), [])


if __name__ == "__main__":
    unittest.main()
