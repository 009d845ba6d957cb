"""What the tests of the finished programs share."""
import os
import pathlib
import subprocess
import tempfile
import time
import unittest

PROGRAM = os.environ.get("ORVANTO")
PATIENCE = 30


def wait_until(condition, what):
    deadline = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError(what)
        time.sleep(0.05)


class HomeTest(unittest.TestCase):
    """A test with scratch homes; whatever it started ends with it."""

    def setUp(self):
        self.scratch = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def home(self, name="home"):
        path = self.scratch / name
        path.mkdir(exist_ok=True)
        return path

    def orvanto(self, home, *words, status=0):
        """Runs one command and returns its output."""
        done = subprocess.run([PROGRAM, "--home", home, *words], capture_output=True, text=True,
                              timeout=60, stdin=subprocess.DEVNULL, check=False)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.last_error = done.stderr
        return done.stdout

    def set(self, home, **values):
        for name, value in values.items():
            self.orvanto(home, "set", "General", name, value)

    def begin(self, *command, output=subprocess.PIPE):
        process = self.enterContext(subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT, text=True))
        self.addCleanup(process.kill)
        return process

    def start(self, home, first="runs the tasks in", ftp_port="0"):
        """Starts a scheduler and returns once it has said what `first` holds."""
        port = [] if ftp_port is None else ["--ftp-port", ftp_port]
        process = self.begin(PROGRAM, "--home", home, *port)
        self.assertTrue(any(first in line for line in process.stdout), first)
        return process

    def stop(self, process):
        """Ends a scheduler as a user would."""
        process.terminate()
        output, _ = process.communicate(timeout=20)
        self.assertEqual(process.returncode, 0, output)
