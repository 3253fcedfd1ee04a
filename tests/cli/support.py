# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests of the headless command share: running it, and stored files to run it on."""

import json
import os
import plistlib
import resource
import subprocess
import tempfile
import unittest
from pathlib import Path

PROGRAM = os.environ["VISTELS_CLI"]
HAVE_MEDIA = os.environ.get("VISTELS_HAVE_MEDIA", "1") == "1"


class CommandTest(unittest.TestCase):
    """Runs the program with a home of its own, in a folder that goes away."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name).resolve()
        self.home = self.folder / "home"
        self.state = self.home / "Home Folder.VVault"

    def run_program(self, *arguments):
        environment = dict(os.environ, VISTELS_HOME=str(self.home))
        return subprocess.run([PROGRAM, *map(str, arguments)], env=environment, capture_output=True,
                              text=True, timeout=120, check=False)

    def run_with_small_files(self, *arguments):
        """The same where no file may become larger than a megabyte."""
        def limit_file_size():
            resource.setrlimit(resource.RLIMIT_FSIZE, (2**20, 2**20))

        # With its signal ignored, as Python has it, the limit is a failing write.
        environment = dict(os.environ, VISTELS_HOME=str(self.home))
        return subprocess.run([PROGRAM, *map(str, arguments)], env=environment, capture_output=True, text=True,
                              timeout=120, check=False, preexec_fn=limit_file_size, restore_signals=False)

    def printed(self, *arguments):
        """The JSON document that a successful command prints."""
        done = self.run_program(*arguments)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(done.stdout.endswith("\n"))
        return json.loads(done.stdout)

    def complaint(self, *arguments, status=1):
        """The one line on standard error of a command that fails."""
        done = self.run_program(*arguments)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.assertEqual(done.stdout, "")
        lines = done.stderr.splitlines()
        self.assertEqual(len(lines), 1, done.stderr)
        return lines[0]

    def write(self, path, stored):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(plistlib.dumps(stored, sort_keys=False))
        return path

    def files_below(self, folder):
        return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())


def clip(uuid, start, end, **more):
    return {"uuid": uuid, "time_start": start, "time_end": end, **more}


def timeline(*rows, **more):
    return {"row_count": len(rows), "show_rows_by_category": False, "data_version": 2,
            "uuid_timeline": "T", "rows": list(rows), **more}


def row(name, *clips, **more):
    stored = {"row_number": 1, "row_name": name, "height": 30.0, "uuid_row": f"row {name}", **more}
    if clips:
        stored["clips"] = list(clips)
    return stored
