# SPDX-License-Identifier: GPL-3.0-or-later
"""Files that the program writes, byte for byte.

tests/golden/CASE/case.json holds "arguments", in which {input} stands for a copy of CASE/input and {out} for a
new folder. Every file of CASE/expected must then lie in {out}, with the same bytes; "printed.json" there is what
the command prints.
"""

import json
import os
import shutil
import unittest
from pathlib import Path

from support import CommandTest

CASES = sorted(path.parent for path in Path(os.environ["VISTELS_GOLDEN_FOLDER"]).glob("*/case.json"))


class Golden(CommandTest):
    def test_every_case(self):
        self.assertTrue(CASES)
        for case in CASES:
            with self.subTest(case=case.name):
                self.check(case, self.folder / case.name)

    def check(self, case, work):
        shutil.copytree(case / "input", work / "input")
        arguments = json.loads((case / "case.json").read_text(encoding="utf-8"))["arguments"]
        places = {"input": work / "input", "out": work / "out"}
        done = self.run_program(*(argument.format(**places) for argument in arguments))
        self.assertEqual(done.returncode, 0, done.stderr)
        expected = sorted(path for path in (case / "expected").rglob("*") if path.is_file())
        self.assertTrue(expected)
        for file in expected:
            name = file.relative_to(case / "expected")
            written = done.stdout.encode() if file.name == "printed.json" else (work / "out" / name).read_bytes()
            self.assertEqual(written.decode(), file.read_text(encoding="utf-8"), name)


if __name__ == "__main__":
    unittest.main()
