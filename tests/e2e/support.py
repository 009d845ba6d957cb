"""What the end-to-end tests of the console program share."""
import os
import pathlib
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["ORVANTO"]


class HomeTest(unittest.TestCase):
    """A test with scratch homes; whatever it started ends with it."""

    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.addCleanup(self.scratch.cleanup)
        self.running = []
        self.addCleanup(self.stop_all)

    def home(self, name="home"):
        path = pathlib.Path(self.scratch.name) / name
        path.mkdir(exist_ok=True)
        return path

    def orvanto(self, home, *words, status=0):
        """Runs one command and returns its output."""
        done = subprocess.run([PROGRAM, "--home", home, *words], capture_output=True, text=True,
                              timeout=60, stdin=subprocess.DEVNULL, check=False)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.last_error = done.stderr
        return done.stdout

    def start(self, home, first="runs the tasks in", ftp_port="0"):
        """Starts a scheduler and returns once it has said what `first` holds."""
        port = [] if ftp_port is None else ["--ftp-port", ftp_port]
        process = subprocess.Popen([PROGRAM, "--home", home, *port],
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT, text=True)
        self.running.append(process)
        self.assertTrue(any(first in line for line in process.stdout), first)
        return process

    def stop(self, process):
        """Ends a scheduler as a user would and returns the rest of its output."""
        process.terminate()
        output, _ = process.communicate(timeout=20)
        self.assertEqual(process.returncode, 0, output)
        self.running.remove(process)
        return output

    def stop_all(self):
        for process in self.running:
            process.kill()
            process.communicate()
