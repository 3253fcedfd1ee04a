# SPDX-License-Identifier: GPL-3.0-or-later
"""The steps of a start, settings and vaults, by what other programs see of them."""

import os
import plistlib
import time
import unittest

from support import CommandTest


class Startup(CommandTest):
    def test_a_first_start_makes_home_vault_and_state_folder(self):
        first = self.printed("startup", "--build", "7")
        self.assertEqual(first, {"home_vault": str(self.home / "Home Vault.VVault"),
                                 "state_folder": str(self.state), "cleaned": [], "recovered": [],
                                 "messages": [], "windows": []})
        information = plistlib.loads(
            (self.home / "Home Vault.VVault/home vault information.plist").read_bytes())
        self.assertEqual(list(information), ["ID for this file:", "home vault creation date:"])
        self.assertEqual(self.printed("startup", "--build", "6.5")["messages"],
                         ["This version of Vistels is an older build than the previous version that was used."
                          "\r\rBuild number of this version  6.5.\rPrevious build number used  7."])

    def test_strays_and_torn_files(self):
        self.printed("startup")
        stray = self.write(self.state / "Inspector/pane.plist temp file 5", {})
        os.utime(stray, (time.time() - 7200,) * 2)
        torn = self.home / "Home Vault.VVault/Video Groups/a/video group.plist"
        self.write(torn, {})
        torn.write_bytes(torn.read_bytes()[:60])
        self.write(torn.with_name("video group.plist <previous> 99"), {"video group name": "whole"})
        report = self.printed("startup")
        self.assertEqual((report["cleaned"], report["recovered"]), ([str(stray)], [str(torn)]))
        self.assertEqual(plistlib.loads(torn.read_bytes()), {"video group name": "whole"})

    def test_windows_come_back_to_front(self):
        windows = [{"root ID": "B", "order": 2, "open_from_path": "/b"},
                   {"root ID": "A", "name": "Final", "order": 1, "open_from_path": "/a"}]
        self.write(self.state / "Windows/windows open.plist", {"open windows": windows})
        self.assertEqual(self.printed("startup")["windows"], [windows[1], windows[0]])

    def test_damaged_state_files_read_as_nothing(self):
        for name in ("Windows/windows open.plist", "System/last build used.plist",
                     "Playback/playback top speed.plist"):
            (self.state / name).parent.mkdir(parents=True, exist_ok=True)
            (self.state / name).write_text("<plist><dict>")
        self.assertEqual(self.printed("startup")["windows"], [])
        self.assertEqual(self.printed("settings", "show")["playback top speed"], 64)

    def test_vaults(self):
        vault = self.folder / "Cup.VVault"
        self.assertEqual(self.printed("vault", "create", self.folder, "Cup"), {"vault": str(vault)})
        self.assertIn("Vault 'Cup' already exists.", self.complaint("vault", "create", self.folder, "Cup"))
        # A name that is a command's name is a name here.
        self.printed("vault", "create", self.folder, "startup")
        self.write(vault / "Video Groups/Final/video group.plist", {})
        self.write(vault / "Video Groups/Final/chron data.plist", {})
        found = self.printed("vault", "scan", vault)
        self.assertEqual(list(found["counts"].values()), [1, 1, 0, 0, 0, 0])
        self.assertEqual(found["items"][0], {"file_name_": "Final", "type": "collection",
                                             "full_file_path": str(vault / "Video Groups/Final")})
        self.assertIn("nowhere", self.complaint("vault", "scan", self.folder / "nowhere"))
        self.printed("vault", "create", self.folder, "Cup", "--replace")
        self.assertEqual(self.printed("vault", "scan", vault)["items"], [])
        self.assertTrue((self.home / "Trash/files/Cup.VVault/Video Groups/Final/chron data.plist").exists())
        for name in ("", "a/b", ".VVault", "x" * 300):
            self.assertIn("Could not create folder.", self.complaint("vault", "create", self.folder, name))
        self.assertEqual(self.printed("vault", "create", self.folder, " Cup 2.VVault "),
                         {"vault": str(self.folder / "Cup 2.VVault")})
        self.printed("startup")
        self.assertIn("home vault", self.complaint("vault", "create", self.home, "Home Vault", "--replace"))

    def test_settings(self):
        shown = self.printed("settings", "show")
        home_vault = str(self.home / "Home Vault.VVault")
        self.assertEqual(shown, {"playback top speed": 64, "pitch algorithm": "Varispeed",
                                 "application volume": 1, "default formula operator": "&",
                                 "filtered out clips": "dim",
                                 "show_vistel_name_with_number": True,
                                 "store video data in collection folder": False,
                                 "minimum vault free space percent": 10, "show unavailable vaults": True,
                                 "path of focus vault": home_vault, "set focus to new vault": False,
                                 "parent folder of new vaults": "", "vaults": [home_vault]})
        key = "minimum vault free space percent (valid range 1-99, default 10)"
        for stored, in_force in ((1, 1), (99, 99), (0, 10), (100, 10), (-5, 10), (50.0, 50), (50.5, 10), ("50", 10)):
            self.write(self.state / "Vault preferences/minimum free space for vault for warning.plist",
                       {key: stored})
            self.assertEqual(self.printed("settings", "show")["minimum vault free space percent"], in_force)

    def test_a_killed_run_is_told_once(self):
        self.write(self.state / "correctly terminated.plist", {"loaded at": 2000.0,
                                                               "terminated correctly at": 1000.0})
        self.assertIn("not quit properly", self.printed("startup")["messages"][0])
        self.assertEqual(self.printed("startup")["messages"], [])


if __name__ == "__main__":
    unittest.main()
