# SPDX-License-Identifier: GPL-3.0-or-later
"""The steps of a start, settings and vaults, by what other programs see of them."""

import os
import plistlib
import shutil
import time
import unittest

from support import CommandTest, clip, row, timeline


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

    def test_a_stray_of_three_days_brings_no_timeline_back(self):
        self.printed("startup")
        folder = self.home / "Home Vault.VVault/Video Groups/a"
        source = self.write(self.folder / "t.plist", timeline(row("Shot", clip("K", 1.0, 2.0))))
        self.printed("timeline", "resave", source, "--to", folder)
        data = folder / "chron data.plist"
        header = plistlib.loads((folder / "chron data header.plist").read_bytes())
        self.assertEqual(header["data size"], data.stat().st_size)
        self.assertRegex(header["data hash"], "^[0-9a-f]{16}$")
        first = data.read_bytes()
        source = self.write(self.folder / "t.plist", timeline(row("Shot", clip("K", 1.0, 3.0))))
        self.printed("timeline", "resave", source, "--to", folder)
        stray = folder / "chron data.plist temp file 5"
        for days, content in ((3, first), (3, data.read_bytes()), (0, b"<plist>")):
            kept = data.read_bytes() if data.exists() else None
            stray.write_bytes(content)
            os.utime(stray, (time.time() - days * 86400,) * 2)
            if kept is not None:
                data.unlink()
            messages = self.printed("startup")["messages"]
            self.assertEqual(len(messages), 1, messages)
            self.assertFalse(data.exists())
            self.assertEqual(self.printed("startup")["messages"], [])
            data.write_bytes(kept)
        self.assertEqual(sorted(path.name for path in folder.glob("chron data *1.plist")),
                         ["chron data copy 1.plist", "chron data damaged 1.plist"])
        stray.write_bytes(first)
        os.utime(stray, (time.time() - 2 * 86400,) * 2)
        self.assertEqual(self.printed("startup")["cleaned"], [str(stray)])

    def test_a_file_in_the_place_of_the_state_folder(self):
        self.home.mkdir()
        self.state.write_text("mine")
        self.assertIn(str(self.state), self.complaint("startup"))
        self.assertEqual(self.state.read_text(), "mine")

    def test_folders_in_the_place_of_files_stay(self):
        self.printed("startup", "--build", "7")
        names = ("System/last build used.plist", "Windows/windows open.plist",
                 "../Home Vault.VVault/home vault information.plist")
        for name in names:
            (self.state / name).unlink(missing_ok=True)
            (self.state / name).mkdir()
            (self.state / name / "inside").write_text("mine")
        done = self.run_program("startup", "--build", "8")
        told = done.stdout + done.stderr
        for name in names:
            self.assertEqual([path.name for path in (self.state / name).iterdir()], ["inside"], told)
            self.assertIn(os.path.basename(name), told)

    def test_a_home_vault_that_was_moved_is_found_again(self):
        self.printed("startup")
        usual = self.home / "Home Vault.VVault"
        identity = (usual / "home vault information.plist").read_bytes()
        for moved in (self.home / "Mine.VVault", self.home / "a/b/Home Vault.VVault"):
            moved.parent.mkdir(parents=True, exist_ok=True)
            (usual if usual.exists() else self.home / "Mine.VVault").rename(moved)
            self.assertEqual(self.printed("vault", "list")[0]["vault"], str(moved))
            started = self.printed("startup")
            self.assertEqual(started["home_vault"], str(moved))
            self.assertEqual(len(started["messages"]), 1)
            self.assertIn(str(moved), started["messages"][0])
            self.assertEqual((moved / "home vault information.plist").read_bytes(), identity)
            self.assertFalse(usual.exists())
            self.assertEqual(self.printed("startup")["messages"], [])
        # One in the trash, another one's, and one without its file, are not found.
        trash = self.home / "Trash/files/Home Vault.VVault"
        trash.parent.mkdir(parents=True)
        moved.rename(trash)
        self.write(self.home / "Other.VVault/home vault information.plist", {"ID for this file:": "other"})
        (self.home / "Plain.VVault").mkdir()
        started = self.printed("startup")
        self.assertEqual(started["home_vault"], str(usual))
        self.assertIn(str(moved), started["messages"][0])
        self.assertNotEqual((usual / "home vault information.plist").read_bytes(), identity)

    def test_windows_of_a_copied_home_open_in_the_copy(self):
        self.printed("startup")
        inside = "Home Vault.VVault/Video Groups/a"
        (self.home / inside).mkdir(parents=True)
        (self.home / "Home Vault.VVault/gone").mkdir()
        paths = [self.home / inside, self.home / "Home Vault.VVault/gone", self.folder]
        self.write(self.state / "Windows/windows open.plist",
                   {"open windows": [{"root ID": str(order), "order": order, "open_from_path": str(path)}
                                     for order, path in enumerate(paths)]})
        shutil.copytree(self.home, self.folder / "copy")
        (self.folder / "copy/Home Vault.VVault/gone").rmdir()
        started = self.printed("startup", "--home", self.folder / "copy")
        self.assertEqual(started["messages"], [])
        self.assertEqual([one["open_from_path"] for one in started["windows"]],
                         [str(self.folder / "copy" / inside), *map(str, paths[1:])])
        listed = self.printed("startup")["windows"]
        self.assertEqual([one["open_from_path"] for one in listed], list(map(str, paths)))

    def test_the_list_of_vaults(self):
        self.printed("startup")
        home = {"vault": str(self.home / "Home Vault.VVault"), "name": "Home Vault", "focus": True, "away": False}
        self.assertEqual(self.printed("vault", "list"), [home])
        cup = self.folder / "Cup.VVault"
        self.printed("vault", "create", self.folder, "Cup")
        listed = {"vault": str(cup), "name": "Cup", "focus": False, "away": False}
        self.assertEqual(self.printed("vault", "list"), [home, listed])
        focused = [{**home, "focus": False}, {**listed, "focus": True}]
        self.assertEqual(self.printed("vault", "focus", cup), focused)
        self.assertEqual(self.printed("settings", "show")["path of focus vault"], str(cup))
        cup.rename(self.folder / "away")
        self.assertEqual(self.printed("vault", "list"), [home, {**listed, "away": True}])
        (self.folder / "away").rename(cup)
        self.assertEqual(self.printed("vault", "forget", cup), [home])
        self.assertIn("not listed", self.complaint("vault", "forget", cup))
        self.assertTrue(cup.is_dir())
        self.assertEqual(self.printed("vault", "add", cup), [home, listed])
        self.assertIn("nowhere", self.complaint("vault", "add", self.folder / "nowhere.VVault"))
        self.write(self.state / "Vault preferences/set focus to new vault.plist", {"set focus to new vault": True})
        self.printed("vault", "create", self.folder, "New")
        self.assertEqual([one["name"] for one in self.printed("vault", "list") if one["focus"]], ["New"])

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
