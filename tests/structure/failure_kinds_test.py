# SPDX-License-Identifier: GPL-3.0-or-later
"""Holds the kinds of failures under src to their rules: each stands in a header of its folder's failures, has its
name as its code, which no other has, is used, and is never given a sentence in English as an argument."""

import re
import tempfile
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2] / "src"

KIND = re.compile(r'\bfailure_of<[^>]*>\s+(\w+)\{\s*"((?:[^"\\]|\\.)*)"')
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)


def faults_in(sources):
    texts = {path.relative_to(sources).as_posix(): COMMENT.sub("", path.read_text(encoding="utf-8"))
             for path in sorted(sources.rglob("*")) if path.suffix in (".h", ".cpp")}
    kinds = {}
    for place, text in texts.items():
        for name, code in KIND.findall(text):
            if not place.endswith("_failures.h"):
                yield f"{place}: {name} belongs into a header of failures"
            if name in kinds:
                yield f"{place}: {name} is a kind of {kinds[name]} already"
            if code != name.replace("_", " "):
                yield f'{place}: the code of {name} is "{code}"'
            kinds[name] = place
    if not kinds:
        yield "there are no kinds of failures"
    words = {}
    for text in texts.values():
        for word in re.findall(r"\w+", text):
            words[word] = words.get(word, 0) + 1
    for name, place in kinds.items():
        if words[name] == 1:
            yield f"{place}: nothing fails with {name}"
    call = re.compile(r'\b(\w+)\([^();]*"[^"\n]* [^"\n]*"')
    for place, text in texts.items():
        for match in call.finditer(text):
            if match.group(1) in kinds:
                yield f"{place}: {match.group(1)} is given a sentence"


class failure_kinds(unittest.TestCase):
    def test_sources_keep_the_rules(self):
        self.assertEqual(list(faults_in(SOURCES)), [])

    def test_planted_faults_are_found(self):
        kind = 'inline constexpr failure_of<a_path> {}{{"{}", "\\"%1\\" is missing."}};\n'
        whole = {"util/a_failures.h": kind.format("it_is_gone", "it is gone"),
                 "util/a.cpp": "return it_is_gone(path);"}
        planted = {
            "a header of failures": {"util/a.h": kind.format("it_is_here", "it is here") + "it_is_here(path)"},
            "already": {"app/b_failures.h": kind.format("it_is_gone", "it is gone")},
            "the code of": {"app/b_failures.h": kind.format("it_is_here", "it is there") + "it_is_here(path)"},
            "nothing fails": {"app/b_failures.h": kind.format("it_is_here", "it is here")},
            "is given a sentence": {"app/b.cpp": 'return it_is_gone("the house at the end");'},
        }
        for told, files in [(None, {})] + list(planted.items()):
            with self.subTest(told), tempfile.TemporaryDirectory() as folder:
                for place, text in {**whole, **files}.items():
                    path = Path(folder) / place
                    path.parent.mkdir(parents=True, exist_ok=True)
                    path.write_text(text, encoding="utf-8")
                found = list(faults_in(Path(folder)))
                self.assertEqual(len(found), 0 if told is None else 1, found)
                self.assertTrue(told is None or told in found[0], found)


if __name__ == "__main__":
    unittest.main()
