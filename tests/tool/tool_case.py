"""Runs the built tools in a folder of their own, as their users do."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path


class ToolCase(unittest.TestCase):
    tool = ""  # the program under test

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def write(self, name, data):
        (self.folder / name).write_bytes(data)

    def run_tool(self, *args, code=0, tool=None, env=None, **options):
        """Returns what the tool says and complains about. Bytes that are no text are surrogates."""
        done = subprocess.run([tool or self.tool, *args], cwd=self.folder, capture_output=True, timeout=120,
                              env={**os.environ, **(env or {})}, **options)
        said, errors = (text.decode(errors="surrogateescape") for text in (done.stdout, done.stderr))
        self.assertEqual(done.returncode, code, f"{args}: {errors}")
        return said, errors

    def assert_failures(self, *table, lines=1):
        """Runs rows of exit code, command and what the last line of complaint contains."""
        for code, command, *words in table:
            with self.subTest(command):
                errors = self.run_tool(*command.split(), code=code)[1].splitlines()
                self.assertEqual(len(errors), lines, errors)
                for word in (f"{Path(self.tool).name}: ", *words):
                    self.assertIn(word, errors[-1])

    def assert_full_disks_are_noticed(self, *commands):
        for command in commands:
            with open("/dev/full", "wb") as full, self.subTest(command):
                done = subprocess.run([self.tool, *command.split()], cwd=self.folder, stdout=full, stderr=subprocess.PIPE)
                self.assertEqual(done.returncode, 1)
                self.assertRegex(done.stderr, rb"^\w+: .*standard output.*: No space left on device\n\Z")
