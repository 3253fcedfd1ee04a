#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Puts the sources of one target together into few files that are compiled in their stead:

    group_sources.py OUTPUT_FOLDER LINES SOURCE...

writes OUTPUT_FOLDER/group_N.cpp, each including sources of at most LINES lines in all, and prints what is to be
compiled: these files, and every source that is better compiled alone. Files that would be the same are not touched.

Sources that meet in one file share their unnamed namespaces. Two of them are therefore kept apart when one declares a
name there that the other, or a header of the other, knows: it would be defined twice, hidden by a local variable, or
called in its place. So nobody who writes a source has to think of its neighbours.
"""

import functools
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
HEADER_ROOTS = [ROOT / "src", ROOT / "tests"]

# Comments, texts (raw ones first) and characters; what is left is code.
NO_CODE = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|(?<!\w)\'(?:\\.|[^\'\\\n])+\'',
                     re.DOTALL)
# clang-format writes the comment.
UNNAMED = re.compile(r"^namespace \{$(.*?)^\}  // namespace$", re.DOTALL | re.MULTILINE)
# What a line at the left edge declares is the last word before its parameters, value, body or base. Names taken over
# from elsewhere (using a::b, namespace a = b) may be taken over twice.
DECLARED = re.compile(r"^(?!template\b.*>$|using (?:namespace|[\w:]+;)|namespace|TEST|TYPED_TEST|INSTANTIATE_)"
                      r"[^\s}#][^\n]*?(\w+) *(?:\(|=|\{|;|\[|(?<!:):(?!:))", re.MULTILINE)
# Names behind these are looked up elsewhere.
MENTIONED = re.compile(r"(?<![\w.>:])[A-Za-z_]\w*|(?<=[^-]>)[A-Za-z_]\w*|(?<=[^:]:)[A-Za-z_]\w*")
LANGUAGE_BLOCK = re.compile(r'^extern "C" \{$.*?^\}', re.DOTALL | re.MULTILINE)
DIRECTIVE = re.compile(r"^# *(if|endif|include|define)(.*?)(?:  //.*)?$", re.MULTILINE)


def without_comments(text):
    return NO_CODE.sub(lambda match: "" if match[0].startswith("/") else '""', text)


def includes_for_all(text):
    """Those that stand in no condition and in no block: a group may have them first."""
    depth = 0
    for word, rest in DIRECTIVE.findall(LANGUAGE_BLOCK.sub("", text)):
        depth += {"if": 1, "endif": -1}.get(word, 0)
        if word == "include" and depth == 0:
            yield "#include" + rest


@functools.cache
def header_text(name):
    paths = [root / name for root in HEADER_ROOTS if (root / name).exists()]
    return paths[0].read_text(encoding="utf-8") if paths else ""


@functools.cache
def declared_by_header(name):
    return frozenset(DECLARED.findall(without_comments(header_text(name))))


def headers_of(includes):
    """The project's headers that these includes bring, those within others too."""
    known, open_ends = set(), list(includes)
    while open_ends:
        name = re.match(r'#include "([^"]+)"', open_ends.pop())
        if name and name[1] not in known:
            known.add(name[1])
            open_ends += includes_for_all(header_text(name[1]))
    return known


class source:
    def __init__(self, path):
        self.path = path
        text = Path(path).read_text(encoding="utf-8")
        code = without_comments(text)
        self.lines = text.count("\n")
        # Macros would hold for the neighbours as well. What moc makes of a source it makes where the source itself
        # is compiled.
        self.alone = any(word == "define" or word == "include" and rest.endswith('.moc"')
                         for word, rest in DIRECTIVE.findall(text))
        self.includes = list(includes_for_all(text))
        self.declared = {name for block in UNNAMED.findall(text)
                         for name in DECLARED.findall(without_comments(block))}
        self.mentioned = set(MENTIONED.findall(code)).union(*map(declared_by_header, headers_of(self.includes)))

    def clashes(self, other):
        return not self.declared.isdisjoint(other.mentioned) or not other.declared.isdisjoint(self.mentioned)


def grouped(sources, most_lines):
    groups = []
    for each in sources:
        for group in groups:
            if (not each.alone and not group[0].alone
                    and sum(member.lines for member in group) + each.lines <= most_lines
                    and not any(each.clashes(member) for member in group)):
                group.append(each)
                break
        else:
            groups.append([each])
    return groups


def name_to_include(path):
    """Counted from the project's root where it lies below: a compiler cache serves every checkout then."""
    return Path(path).relative_to(ROOT) if Path(path).is_relative_to(ROOT) else path


def group_text(group):
    # All headers come first: they know nothing of the names in the sources.
    includes = dict.fromkeys(line for member in group for line in member.includes)
    return "\n".join([*includes, *(f'#include "{name_to_include(member.path)}"' for member in group), ""])


def main(folder, most_lines, paths):
    Path(folder).mkdir(parents=True, exist_ok=True)
    for number, group in enumerate(grouped([source(path) for path in paths], int(most_lines))):
        if len(group) == 1:
            print(group[0].path)
            continue
        path = Path(folder) / f"group_{number}.cpp"
        text = group_text(group)
        if not path.exists() or path.read_text(encoding="utf-8") != text:
            path.write_text(text, encoding="utf-8")
        print(path)


main(sys.argv[1], sys.argv[2], sorted(sys.argv[3:]))
