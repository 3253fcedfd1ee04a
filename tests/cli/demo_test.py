# SPDX-License-Identifier: GPL-3.0-or-later
"""The example event, and that long work ends cleanly when it is interrupted."""

import os
import signal
import subprocess
import time
import unittest

from support import HAVE_MEDIA, PROGRAM, CommandTest


@unittest.skipUnless(HAVE_MEDIA, "needs movies")
class Demo(CommandTest):
    def test_a_short_event_is_complete(self):
        made = self.printed("demo", self.folder, "--cameras", "1", "--seconds", "2")
        self.assertTrue(all(os.path.isdir(made[place]) for place in ("vault", "collection", "timeline", "logger")))
        vistel = self.printed("collection", "show", made["collection"])["vistels"][0]
        self.assertAlmostEqual(vistel["duration"], 2, places=2)
        self.assertTrue(self.printed("timeline", "rows", made["timeline"]))
        self.assertEqual(self.printed("vault", "scan", made["vault"])["counts"]["number of collections"], 1)
        self.assertIn("Demo Vault", self.complaint("demo", self.folder))

    def test_an_interrupt_leaves_nothing_behind(self):
        running = subprocess.Popen([PROGRAM, "demo", str(self.folder), "--seconds", "600"],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(running.kill)
        deadline = time.monotonic() + 60
        while not any(self.folder.iterdir()) and time.monotonic() < deadline:
            try:
                running.wait(0.01)
            except subprocess.TimeoutExpired:
                continue  # it has not begun to write yet
            break
        running.send_signal(signal.SIGINT)
        printed, complaint = running.communicate(timeout=60)
        self.assertEqual((running.returncode, printed, len(complaint.splitlines())), (1, "", 1), complaint)
        self.assertEqual(list(self.folder.iterdir()), [])


if __name__ == "__main__":
    unittest.main()
