# SPDX-License-Identifier: GPL-3.0-or-later
"""cmake/group_sources.py: which sources share a file, and what stands first in it."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "cmake" / "group_sources.py"


def in_unnamed(code, behind=""):
    return f"namespace vistels {{\nnamespace {{\n\n{code}\n\n}}  // namespace\n{behind}\n}}  // namespace vistels\n"


class group_sources_test(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)

    def groups_of(self, *texts, lines=1000):
        """The files to compile, each as the numbers of the sources in it and the lines before those."""
        paths = [self.folder / f"source_{number}.cpp" for number in range(len(texts))]
        for path, text in zip(paths, texts):
            path.write_text(text, encoding="utf-8")
        answer = subprocess.run([sys.executable, "-B", SCRIPT, self.folder / "groups", str(lines), *paths], check=True,
                                capture_output=True, text=True).stdout.split()
        found = []
        for path in map(Path, answer):
            if path in paths:
                found.append(([paths.index(path)], []))
                continue
            written = path.read_text(encoding="utf-8").splitlines()
            members = [number for number, each in enumerate(paths) if any(each.name in line for line in written)]
            found.append((members, [line for line in written if "source_" not in line]))
        return found

    def test_what_meets_is_what_does_not_clash(self):
        helper = "int helper(int value) {\n    return value;\n}"
        cases = [
            ("different names", helper, "double other = 1;", True),
            ("the same function", helper, helper, False),
            ("behind a function that ends at the left edge", "void first() {\n}\n" + helper, helper, False),
            ("hidden by a local variable", helper, "void other() {\n    int helper = 1;\n}", False),
            ("an alias", "using helper = int;", "void other(int helper) {}", False),
            ("a constant", "constexpr std::size_t helper = 1;", "int value = helper;", False),
            ("a template", "template <class Kind>\nvoid helper() {}", "int value = helper;", False),
            ("a member of that name", helper, "int sum = other.helper + it->helper() + record::helper;", True),
            ("a text and a comment", helper, '// helper\nconst char* other = "helper";', True),
            ("taken over by both", "using support::helper;", "using support::helper;", True),
        ]
        for name, first, second, together in cases:
            with self.subTest(name):
                groups = [members for members, _ in self.groups_of(in_unnamed(first), in_unnamed(second))]
                self.assertEqual(groups, [[0, 1]] if together else [[0], [1]])

    def test_a_name_of_a_neighbours_header_keeps_apart(self):
        mark = in_unnamed('constexpr auto temporary_mark = "mine";')
        header = '#include "util/safe_write.h"\n'
        self.assertEqual(len(self.groups_of(mark, header)), 2)
        self.assertEqual(len(self.groups_of(mark, '#include "util/result.h"\n')), 1)

    def test_headers_come_first_where_they_may(self):
        first = "#include <vector>\n#if SOME\n#include <map>\n#endif\n"
        second = '#include <string>  // why\n#include <vector>\nextern "C" {\n#include <plain.h>\n}\n'
        self.assertEqual(self.groups_of(first, second), [([0, 1], ["#include <vector>", "#include <string>"])])

    def test_macros_stay_alone_and_groups_end(self):
        plain = "int value;\n" * 4
        self.assertEqual([members for members, _ in self.groups_of("#define WORD\n", plain, plain, plain, lines=8)],
                         [[0], [1, 2], [3]])


if __name__ == "__main__":
    unittest.main()
