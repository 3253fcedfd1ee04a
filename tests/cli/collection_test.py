# SPDX-License-Identifier: GPL-3.0-or-later
"""Collections made of movies, their offsets, and what a clip shows of a vistel."""

import fcntl
import os
import plistlib
import pty
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from support import HAVE_MEDIA, PROGRAM, CommandTest, clip, row, timeline


def item(uuid, number=None, **more):
    stored = {"UUID single video - g": uuid, **more}
    if number is not None:
        stored["Vistel name UUID - coll"] = float(number)
    return stored


class StoredCollection(CommandTest):
    """Collections written by hand; their movies are never opened."""

    def setUp(self):
        super().setUp()
        self.vault = self.folder / "Cup.VVault"
        self.collection = self.vault / "Video Groups/Final"

    def store(self, *items):
        self.write(self.collection / "video group.plist",
                   {"UUID video group": "C", "video group name": "Final", "video type state": "PLAYBACK",
                    "movie time": 12.5, "array video group items": list(items)})
        for one in items:
            folder = self.vault / "Single Videos" / one["UUID single video - g"]
            self.write(folder / "single video.plist",
                       {"drone_array": [{"gap_before": 1.0, "part_duration": 20.0},
                                        {"gap_before": 2.0, "part_duration": 30.5}]})
            for name in ("part 001.mp4", "part 002.mp4"):
                (folder / name).write_bytes(b"movie")

    def test_show(self):
        self.store(item("A", 5, **{"manual start offset": -3.0, "Vistel video name - coll": "wide"}),
                   item("B", 6, **{"manual start offset": -5.0}), item("C", 0))
        shown = self.printed("collection", "show", self.collection)
        self.assertEqual((shown["uuid"], shown["name"], shown["state"], shown["movie_time"]),
                         ("C", "Final", "PLAYBACK", 12.5))
        self.assertEqual((shown["largest_offset_clips"], shown["largest_offset_composer"]), (0, -3))
        self.assertEqual([(one["number"], one["name"], one["offset"], one["lead_clips"], one["lead_composer"])
                          for one in shown["vistels"]], [(5, "wide", -3, 3, 0), (6, "", -5, 5, 2),
                                                      (7, "", 0, 0, -3)])
        self.assertEqual(shown["vistels"][0]["duration"], 53.5)
        self.assertEqual(shown["vistels"][0]["parts"][1],
                         {"file": str(self.vault / "Single Videos/A/part 002.mp4"), "gap_before": 2.0,
                          "part_duration": 30.5, "start": 23.0})

    def test_a_new_collection_needs_no_movie(self):
        folder = self.vault / "Video Groups/Kick off"
        shown = self.printed("collection", "new", folder, "--name", "Kick off")
        self.assertEqual((shown["name"], shown["state"], shown["vistels"]), ("Kick off", "NONE", []))
        self.assertEqual((shown["largest_offset_clips"], shown["largest_offset_composer"]), (0, 0))
        self.assertEqual(self.printed("collection", "show", folder), shown)
        self.assertFalse((self.vault / "Single Videos").exists())

    def test_offset_is_saved_and_the_rest_is_kept(self):
        self.store(item("A", 5, overlay={"kept": 1}), item("B", 6))
        for name, seconds in (("A", "-1.25"), ("6", "2")):
            self.printed("collection", "offset", self.collection, name, seconds)
        stored = plistlib.loads((self.collection / "video group.plist").read_bytes())
        first, second = stored["array video group items"]
        self.assertEqual((first["manual start offset"], second["manual start offset"]), (-1.25, 2.0))
        self.assertEqual(first["overlay"], {"kept": 1})
        self.assertEqual([one["lead_clips"] for one in
                          self.printed("collection", "show", self.collection)["vistels"]], [3.25, 0])
        self.assertIn("7", self.complaint("collection", "offset", self.collection, "7", "1"))

    def test_an_offset_of_more_than_30_years_is_none(self):
        self.store(item("A", 5, **{"manual start offset": -1e300}), item("B", 6))
        shown = self.printed("collection", "show", self.collection)
        self.assertEqual([one["offset"] for one in shown["vistels"]], [0, 0])
        self.assertIn("30 years", self.complaint("collection", "offset", self.collection, "B", "1e10"))
        self.printed("collection", "offset", self.collection, "B", "2")
        stored = plistlib.loads((self.collection / "video group.plist").read_bytes())
        self.assertEqual([one["manual start offset"] for one in stored["array video group items"]], [-1e300, 2])

    def test_an_offset_takes_the_timeline_along(self):
        self.store(item("A", 5), item("B", 6))
        stamped = {"qualifiers_array": [{"uuid": "Q", "name": "q", "time": 21.5}]}
        self.write(self.collection / "chron data.plist",
                   timeline(row("Shot", clip("K", 20.0, 25.0, qualifiers=stamped))))
        buttons = self.collection / "Logger" / "button dict.plist"
        buttons.parent.mkdir()
        whistle = {"uuid": "W", "name": "Whistle",
                   "triggers": [{"trigger_time": 30.0, "trigger_type": "going down"}]}
        self.write(buttons, {"version markup": 1, "array objects": [whistle]})

        def trigger():
            stored = plistlib.loads(buttons.read_bytes())
            return stored["array objects"][0]["triggers"][0]["trigger_time"]

        shown = self.printed("collection", "offset", self.collection, "A", "4")
        self.assertEqual([one["lead_clips"] for one in shown["vistels"]], [0, 4])
        self.assertEqual(shown["movie_time"], 8.5)
        self.assertEqual(trigger(), 26)
        stored = self.printed("timeline", "show", self.collection)["rows"][0]["clips"][0]
        self.assertEqual((stored["time_start"], stored["time_end"]), (16, 21))
        self.assertEqual(stored["qualifiers"]["qualifiers_array"][0]["time"], 17.5)
        self.printed("collection", "offset", self.collection, "A", "-4")
        stored = self.printed("timeline", "show", self.collection)["rows"][0]["clips"][0]
        self.assertEqual((stored["time_start"], trigger()), (20, 30))

    def test_clips_stay_with_a_collection_that_cannot_be_saved(self):
        self.store(item("A", 5), item("B", 6))
        self.write(self.collection / "chron data.plist", timeline(row("Shot", clip("K", 20.0, 25.0))))
        record = self.collection / "video group.plist"
        self.write(record, {**plistlib.loads(record.read_bytes()), "kept": "x" * 2**21})

        done = self.run_with_small_files("collection", "offset", self.collection, "A", "4")
        self.assertEqual(done.returncode, 1)
        self.assertIn(str(record), done.stderr)
        self.assertEqual(self.stored_clips(), [20])
        # What was coded on record is made with the next change, both of it.
        shown = self.printed("collection", "move", self.collection, "B", "1")
        self.assertEqual([(one["uuid"], one["offset"]) for one in shown["vistels"]], [("B", 0), ("A", 4)])
        self.assertEqual(self.stored_clips(), [16])

    def stored_clips(self):
        stored = plistlib.loads((self.collection / "chron data.plist").read_bytes())
        return [one["time_start"] for each in stored["rows"] for one in each["clips"]]

    def test_range(self):
        self.store(item("A", 5, **{"manual start offset": -1.5}), item("B", 6))
        for vistel, start, end, wanted in (("A", 10, 12, (11.5, 2, 6900, 1200)), ("5", 12, 10, (11.5, 2, 6900, 1200)),
                                           ("A", -4, 1, (0, 2.5, 0, 1500)), ("B", 50, 70, (50, 3.5, 30000, 2100)),
                                           ("B", 60, 70, (53.5, 0, 32100, 0))):
            found = self.printed("collection", "range", self.collection, vistel, start, end)
            self.assertEqual(tuple(found.values()), wanted)
        # One without a usable number gets one, by which a clip finds its offset.
        self.store(item("A", 5, **{"manual start offset": 4.0}), item("B", 0, **{"manual start offset": 1.0}))
        shown = self.printed("collection", "show", self.collection)["vistels"]
        self.assertEqual([(one["number"], one["lead_clips"], one["lead_composer"]) for one in shown],
                         [(5, 0, 0), (6, 3, 3)])
        for vistel in ("B", "6"):
            self.assertEqual(self.printed("collection", "range", self.collection, vistel, 10, 12)["from"], 13)

    def test_removing_and_moving(self):
        self.store(item("A", 5), item("B", 6), item("C", 7))
        record = plistlib.loads((self.collection / "video group.plist").read_bytes())
        self.write(self.collection / "video group.plist", {**record, "UUID_of_vistel_for_sound": "B"})
        self.printed("collection", "remove", self.collection, "B")
        moved = self.printed("collection", "move", self.collection, "C", "1")
        self.assertEqual([one["uuid"] for one in moved["vistels"]], ["C", "A"])
        stored = plistlib.loads((self.collection / "video group.plist").read_bytes())
        self.assertNotIn("UUID_of_vistel_for_sound", stored)
        self.assertIn('"0" is no place', self.complaint("collection", "move", self.collection, "C", "0", status=2))

    def test_the_desktop_of_a_home_lies_in_it(self):
        self.store(item("A", 5, **{"Vistel video name - coll": "wide"}))
        copies = self.printed("collection", "copy", self.collection, "A")["files"]
        self.assertEqual(copies, [str(self.home / "Desktop/wide 1.mp4"), str(self.home / "Desktop/wide 2.mp4")])

    def test_a_complaint_takes_the_place_of_the_progress_line(self):
        self.store(item("A", 5))
        second = self.vault / "Single Videos/A/part 002.mp4"
        second.unlink()
        second.mkdir()
        terminal, other_end = pty.openpty()
        done = subprocess.run([PROGRAM, "--home", self.home, "collection", "copy", self.collection, "A"],
                              stdout=subprocess.PIPE, stderr=other_end, timeout=120, check=False)
        os.close(other_end)
        written = b""
        try:
            while piece := os.read(terminal, 65536):
                written += piece
        except OSError:  # all is read
            pass
        os.close(terminal)
        self.assertEqual((done.returncode, done.stdout), (1, b""))
        self.assertIn(b"\r 50 %", written)
        self.assertIn(b"\r     \rvistels-cli: ", written)
        self.assertIn(b"part 002.mp4", written)
        self.assertFalse(any((self.home / "Desktop").iterdir()))

    def test_what_is_broken_in_one_vistel_leaves_the_other(self):
        self.store(item("A", 5), item("B", 6))
        (self.vault / "Single Videos/A/single video.plist").write_text("<plist>")
        first, second = self.printed("collection", "show", self.collection)["vistels"]
        self.assertIn("Single Videos/A/single video.plist", first["problem"])
        self.assertEqual((first["parts"], second["duration"]), ([], 53.5))

    def test_problems_are_shown(self):
        self.store(item("A", 5), item("B", 5))
        os.unlink(self.vault / "Single Videos/A/part 002.mp4")
        problems = self.printed("collection", "show", self.collection)["problems"]
        self.assertEqual(len(problems), 2)
        self.assertIn("movie part 2 is missing", problems[0])
        self.assertIn("same number", problems[1])

    def test_resaved_records_are_equal(self):
        stored = Path(os.environ["VISTELS_GOLDEN_FOLDER"]) / "collection/expected"
        out = self.folder / "out"
        self.printed("collection", "resave", stored, "--to", out)
        self.assertEqual(self.files_below(out), self.files_below(stored))
        for file in self.files_below(stored):
            self.assertEqual((out / file).read_text(), (stored / file).read_text())

    def test_a_damaged_record_is_named(self):
        self.store(item("A", 5))
        record = self.collection / "video group.plist"
        record.write_bytes(record.read_bytes()[:200])
        before = record.read_bytes()
        for command in (["show"], ["range"], ["offset"]):
            more = {"show": [], "range": ["A", "0", "1"], "offset": ["A", "1"]}[command[0]]
            self.assertIn(str(record), self.complaint("collection", *command, self.collection, *more))
        self.assertEqual(record.read_bytes(), before)


@unittest.skipUnless(HAVE_MEDIA, "needs movies")
class NewCollection(CommandTest):
    @classmethod
    def setUpClass(cls):
        cls.movies = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.movies.cleanup)
        # 2 seconds, 25 frames a second, 128 times 72 pixels. A copy, since commands link it.
        cls.movie = shutil.copy(Path(__file__).with_name("wide.mp4"), cls.movies.name)

    def test_a_vistel_for_each_movie_or_one_of_all(self):
        folder = self.folder / "Cup.VVault/Video Groups/Final"
        shown = self.printed("collection", "new", folder, "--name", "Final", self.movie, self.movie)
        self.assertEqual([(one["number"], one["name"], len(one["parts"])) for one in shown["vistels"]],
                         [(1, "wide", 1), (2, "wide", 1)])
        self.assertAlmostEqual(shown["vistels"][0]["duration"], 2, places=2)
        part = shown["vistels"][0]["parts"][0]["file"]
        self.assertEqual(os.path.dirname(os.path.dirname(part)), str(self.folder / "Cup.VVault/Single Videos"))
        self.assertEqual(os.path.basename(part), "part 001.mp4")
        stored = plistlib.loads((folder / "video group.plist").read_bytes())
        self.assertIn(int(stored["UUID video group quick"]), range(1, 2**53))
        appended = self.printed("collection", "new", self.folder / "joined", "--name", "J", "--append",
                                self.movie, self.movie)
        self.assertEqual([one["start"] for one in appended["vistels"][0]["parts"]],
                         [0, appended["vistels"][0]["parts"][0]["part_duration"]])

    def test_a_failure_leaves_nothing_behind(self):
        broken = self.folder / "broken.mp4"
        broken.write_bytes(b"no movie" * 100)
        before = self.files_below(self.folder)
        target = self.folder / "Cup.VVault/Video Groups/Final"
        for movie in (broken, self.folder / "none.mp4"):
            self.assertIn(movie.name, self.complaint("collection", "new", target, "--name", "F", self.movie, movie))
        self.assertEqual(self.files_below(self.folder), before)
        self.assertFalse(target.exists())

    def collection(self, *names):
        folder = self.folder / "Cup.VVault/Video Groups/Final"
        self.printed("collection", "new", folder, "--name", "Final", *(names or (self.movie,)))
        return folder

    def numbers(self, shown):
        return [one["number"] for one in shown["vistels"]]

    def test_vistels_are_added_moved_and_removed(self):
        folder = self.collection()
        added = self.printed("collection", "add", folder, self.movie, os.path.dirname(self.movie), "--user", "me")
        self.assertEqual(self.numbers(added), [1, 2, 3])
        added = self.printed("collection", "add", folder, "--to", "2", self.movie)
        self.assertEqual([len(one["parts"]) for one in added["vistels"]], [1, 2, 1])
        moved = self.printed("collection", "move", folder, "3", "1")
        self.assertEqual(self.numbers(moved), [3, 1, 2])
        local = self.printed("collection", "add", folder, "--locally", "--append", self.movie, self.movie)
        part = local["vistels"][-1]["parts"][1]["file"]
        self.assertTrue(part.startswith(str(self.state / "Single Videos Local")), part)
        self.assertNotIn("problems", local)
        data = os.path.dirname(moved["vistels"][2]["parts"][0]["file"])
        self.assertEqual(self.numbers(self.printed("collection", "remove", folder, "2")), [3, 1, 4])
        self.assertTrue(os.path.isdir(data))
        self.assertIn('"2"', self.complaint("collection", "remove", folder, "2"))

    def test_no_change_beside_another_change_of_the_vault(self):
        folder = self.collection(self.movie, self.movie)
        board = self.folder / "board.png"
        self.printed("collection", "frame", folder, "1", board)
        vault = self.folder / "Cup.VVault"
        before = self.files_below(vault)
        changes = (("new", vault / "Video Groups/Second", "--name", "Second"), ("add", folder, self.movie),
                   ("add", folder, "--to", "1", self.movie), ("duplicate", folder, "1"),
                   ("deinterlace", folder, "1"), ("overlay", folder, "1", board), ("remove", folder, "1"),
                   ("move", folder, "2", "1"), ("close", folder, "2", "--confirmed"),
                   ("padding", folder, "--replace"), ("resave", folder, "--to", vault / "again"))
        with open(vault / ".vault change.lock", "w", encoding="utf-8") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            for change in changes:
                self.assertIn("Vault 'Cup' is currently being modified.", self.complaint("collection", *change))
        (vault / ".vault change.lock").unlink()
        self.assertEqual(self.files_below(vault), before)
        for change in changes[:-1]:
            self.printed("collection", *change)
        self.assertFalse((vault / ".vault change.lock").exists())

    def test_vistels_are_cloned_and_closed_for_good(self):
        folder = self.collection()
        cloned = self.printed("collection", "duplicate", folder, "1", "--user", "me")
        self.assertEqual([one["name"] for one in cloned["vistels"]], ["wide", "wide copy"])
        clone = os.path.dirname(cloned["vistels"][1]["parts"][0]["file"])
        refused = self.run_program("collection", "close", folder, "2", "--user", "you")
        self.assertEqual(refused.returncode, 1)
        self.assertIn("You did not create 'wide copy'.", refused.stderr)
        self.assertTrue(os.path.isdir(clone))
        record = folder / "video group.plist"
        stored = plistlib.loads(record.read_bytes())
        self.write(record, {**stored, "UUID_of_vistel_for_sound": cloned["vistels"][1]["uuid"]})
        self.assertEqual(self.numbers(self.printed("collection", "close", folder, "2", "--user", "me")), [1])
        self.assertFalse(os.path.isdir(clone))
        self.assertNotIn("UUID_of_vistel_for_sound", plistlib.loads(record.read_bytes()))
        # Its number stays its own, whether removed or closed.
        again = self.printed("collection", "duplicate", folder, "1", "--user", "me")
        self.assertEqual(self.numbers(again), [1, 3])
        self.printed("collection", "remove", folder, "3")
        copies = self.printed("collection", "copy", folder, "1", "--to", self.folder)["files"]
        self.assertEqual(copies, [str(self.folder / "wide.mp4")])

    def test_pictures_and_deinterlacing(self):
        folder = self.collection()
        board = self.folder / "board.png"
        self.printed("collection", "frame", folder, "1", board)
        with_picture = self.printed("collection", "add", folder, board)
        picture = with_picture["vistels"][1]
        self.assertEqual((os.path.basename(picture["picture"]), picture["duration"]), ("picture.png", 0))
        shown = self.printed("collection", "frame", folder, "1.5", self.folder / "x.png", "--vistel", "2")
        self.assertEqual((shown["width"], shown["height"]), (128, 72))
        shown = self.printed("collection", "overlay", folder, "1", board)
        self.assertTrue(shown["vistels"][0]["overlay"].endswith("overlay 1.png"))
        self.printed("collection", "frame", folder, "0", self.folder / "covered.png", "--vistel", "1")
        # The picture of 1 s lies over that of 0 s.
        self.assertEqual((self.folder / "covered.png").read_bytes(), board.read_bytes())
        self.assertNotIn("overlay", self.printed("collection", "overlay", folder, "1", "--remove")["vistels"][0])
        done = self.printed("collection", "deinterlace", folder, "1")["vistels"][0]["parts"]
        self.assertEqual([os.path.basename(part["file"]) for part in done], ["part 001 deinterlaced.mp4"])
        trashed = self.printed("collection", "tidy", folder)["trashed"]
        self.assertEqual([os.path.basename(path) for path in trashed], ["part 001.mp4"])
        self.assertNotIn("problems", self.printed("collection", "show", folder))

    def test_a_change_that_fails_leaves_nothing_behind(self):
        folder = self.collection()
        broken = self.folder / "broken.mp4"
        broken.write_bytes(b"no movie" * 100)
        empty = self.folder / "empty"
        empty.mkdir()
        before = {path: (self.folder / path).read_bytes() for path in self.files_below(self.folder)}
        for arguments, word in ((["add", folder, self.movie, broken], "broken.mp4"),
                                (["add", folder, empty], "File list item has no movie parts."),
                                (["add", folder, "--to", "1", broken], "broken.mp4"),
                                (["add", folder, "--to", "9", self.movie], '"9"'),
                                (["overlay", folder, "1", broken], "broken.mp4"),
                                (["copy", folder, "1", "--to", self.folder / "none"], "none")):
            self.assertIn(word, self.complaint("collection", *arguments))
        self.assertEqual({path: (self.folder / path).read_bytes() for path in self.files_below(self.folder)}, before)

    def test_what_a_change_brought_goes_when_the_collection_cannot_be_saved(self):
        folder = self.collection()
        record = folder / "video group.plist"
        self.write(record, {**plistlib.loads(record.read_bytes()), "kept": "x" * 2**21})
        before = self.files_below(self.folder)

        for arguments in (["add", folder, self.movie], ["add", folder, "--to", "1", self.movie],
                          ["duplicate", folder, "1"], ["deinterlace", folder, "1"]):
            done = self.run_with_small_files("collection", *arguments)
            self.assertEqual(done.returncode, 1, arguments)
            self.assertIn(str(record), done.stderr)
            self.assertEqual(self.files_below(self.folder), before)

    def test_every_vistel_shows_the_frame_that_its_offset_asks_for(self):
        folder = self.folder / "two"
        self.printed("collection", "new", folder, "--name", "Two", self.movie, self.movie)
        uuids = [one["uuid"] for one in self.printed("collection", "offset", folder, "1", "0.5")["vistels"]]
        found = self.printed("collection", "seek", folder, "--times", "0.3,1.21,-.25")
        self.assertEqual([one["time"] for one in found], [0.3, 1.21, -0.25])
        for one, wanted in zip(found, ((0.28, 0.8), (1.2, 1.68), (None, 0.24))):
            for uuid, time in zip(uuids, wanted):
                if time is None:
                    self.assertIsNone(one["frame_times"][uuid])
                else:
                    self.assertAlmostEqual(one["frame_times"][uuid], time, places=6)

        picture = self.folder / "picture.png"
        shown = self.printed("collection", "frame", folder, "1", picture, "--vistel", "2")
        self.assertEqual((shown["width"], shown["height"]), (128, 72))
        self.assertEqual([(one["uuid"], one["movie_time"]) for one in shown["vistels"]], [(uuids[1], 1.5)])
        self.assertTrue(picture.read_bytes().startswith(b"\x89PNG"))
        both = self.printed("collection", "frame", folder, "1", picture)
        self.assertEqual((both["width"], len(both["vistels"])), (256, 2))

        played = self.printed("collection", "play", folder, "--from", "0.2", "--seconds", "0.5", "--rate", "2")
        self.assertEqual((played["rate"], list(played["frames"])), (2, uuids))
        self.assertGreater(played["frames"][uuids[0]], 0)
        told = ["seconds", "rate", "frames", "dropped", "largest_difference", "fixes"]
        self.assertEqual(list(played), told)
        played = self.printed("collection", "play", folder, "--seconds", "0.5", "--health")
        self.assertEqual(list(played), told + ["decode_milliseconds", "difference"])
        self.assertEqual(list(played["difference"]), uuids)
        self.assertGreater(played["decode_milliseconds"][uuids[0]], 0)

    def test_padding_there_and_back(self):
        folder = self.folder / "padded"
        shown = self.printed("collection", "new", folder, "--name", "P", self.movie, self.movie)
        self.printed("collection", "offset", folder, "1", "0.5")
        before = self.printed("collection", "offset", folder, "2", "-0.25")
        self.assertIn("--replace", self.complaint("collection", "padding", folder, status=2))
        padded = self.printed("collection", "padding", folder, "--replace")
        self.assertEqual({one["offset"] for one in padded["vistels"]}, {0})
        self.assertEqual(len({round(one["duration"], 6) for one in padded["vistels"]}), 1)
        self.assertEqual(padded["vistels"][0]["parts"][0]["part_duration"], 0.75)
        for part in padded["vistels"][0]["parts"]:
            self.assertTrue(os.path.exists(part["file"]))
        after = self.printed("collection", "padding", folder, "--restore")
        self.assertEqual([one["parts"] for one in after["vistels"]], [one["parts"] for one in before["vistels"]])
        self.assertEqual([one["offset"] for one in after["vistels"]], [one["offset"] for one in before["vistels"]])
        self.assertEqual([name for name in self.files_below(self.folder) if " padding " in name], [])
        self.printed("collection", "padding", folder, "--replace")
        removed = self.printed("collection", "padding", folder, "--remove")
        self.assertEqual([one["offset"] for one in removed["vistels"]], [0 for _ in shown["vistels"]])

    def test_before_the_last_camera_began(self):
        folder = self.folder / "below"
        shown = self.printed("collection", "new", folder, "--name", "B", self.movie, self.movie)
        first, second = (one["uuid"] for one in shown["vistels"][:2])
        self.printed("collection", "offset", folder, "1", "-1.5")
        for vistel, seen in ((first, True), (second, False)):
            frame = self.printed("collection", "frame", folder, "-1", self.folder / "f.png", "--vistel", vistel)
            self.assertEqual(frame["vistels"][0]["frame_time"] is not None, seen)
            self.assertEqual(frame["vistels"][0]["movie_time"], 0.5 if seen else -1)

    def test_a_broken_movie_leaves_the_others_playing(self):
        folder = self.folder / "two"
        made = self.printed("collection", "new", folder, "--name", "Two", self.movie, self.movie)
        broken = made["vistels"][0]["parts"][0]["file"]
        os.unlink(broken)  # a link to the movie itself
        with open(broken, "wb") as file:
            file.write(b"no movie")
        shown = self.printed("collection", "frame", folder, "1", self.folder / "picture.png")["vistels"]
        self.assertIsNone(shown[0]["frame_time"])
        self.assertIn("part 001.mp4", shown[0]["problem"])
        self.assertAlmostEqual(shown[1]["frame_time"], 1, places=6)
        os.unlink(broken)
        line = self.complaint("collection", "frame", folder, "1", self.folder / "x.png", "--vistel", "1")
        self.assertIn(os.path.dirname(broken), line)


if __name__ == "__main__":
    unittest.main()
