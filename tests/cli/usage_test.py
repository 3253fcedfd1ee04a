# SPDX-License-Identifier: GPL-3.0-or-later
"""Exit statuses, help and version, the home folder."""

import unittest

from support import CommandTest


class Usage(CommandTest):
    def test_wrong_usage_is_told_in_one_line(self):
        for arguments in ([], ["nonsense"], ["timeline"], ["timeline", "split", "1", "2", "3"],
                          ["timeline", "split", "1", "2", "3", "four"],
                          ["timeline", "split", "1", "2", "3", "nan"],
                          ["collection", "show"], ["settings", "show", "--wrong"], ["vault", "create", "x"],
                          ["startup", "--build", "new"], ["collection", "offset", "f", "v", "inf"]):
            with self.subTest(arguments=arguments):
                self.complaint(*arguments, status=2)

    def test_help_and_version(self):
        for command in ([], ["startup"], ["vault"], ["vault", "create"], ["timeline", "show"],
                        ["collection", "play"], ["logger", "press"]):
            done = self.run_program(*command, "--help")
            self.assertEqual((done.returncode, done.stderr), (0, ""), command)
            self.assertIn("Usage:", done.stdout)
        self.assertRegex(self.run_program("--version").stdout, r"^vistels-cli \d+\.\d+\.\d+\n$")

    def test_negative_numbers_are_taken_as_they_stand(self):
        split = self.printed("timeline", "split", "-5", "5", "-.5", "9")
        self.assertEqual((split["changed"], split["a"][0], split["b"][1]), (True, -5, 9))

    def test_home_stands_before_or_behind_the_command(self):
        other = self.folder / "other"
        for arguments in (["--home", other, "startup"], ["startup", "--home", other],
                          [f"--home={other}", "startup"]):
            self.assertEqual(self.printed(*arguments)["home_vault"], f"{other}/Home Vault.VVault")
        self.assertFalse(self.home.exists())

    def test_a_result_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            import subprocess
            from support import PROGRAM
            done = subprocess.run([PROGRAM, "--home", str(self.home), "settings", "show"], stdout=full,
                                  stderr=subprocess.PIPE, timeout=60, check=False)
        self.assertEqual(done.returncode, 1)


if __name__ == "__main__":
    unittest.main()
