"""Clients of the machine with orvanto.exe under Wine: telnet and plink in the conversations of the
console program's tests, and those of FTP, with what they have to be told and as they come."""
import shutil
import socket
import subprocess

import test_ftp
import test_remote
from support import PROGRAM

KEY = "HKCU\\Software\\Quellmark\\Orvanto"


def reg(*words):
    subprocess.run(["wine", "reg", *words], capture_output=True, timeout=60, check=False)


class OnWindows:
    """Runs the tests of the console program with the desktop program."""

    def setUp(self):
        super().setUp()
        reg("delete", KEY, "/f")
        self.addCleanup(reg, "delete", KEY, "/f")

    def home(self, name="home"):
        """A folder with the program; its settings are the one registry's."""
        path = super().home(name)
        shutil.copy(PROGRAM, path)
        (path / "scripts").mkdir()
        return path

    def set(self, home, **values):
        for name, text in values.items():
            reg("add", f"{KEY}\\General", "/v", name, "/d", text, "/f")

    def start(self, home, first="", ftp_port=None):
        self.begin("wine", home / "orvanto.exe", output=subprocess.DEVNULL)


class RealClients(OnWindows, test_remote.Remote):
    """Telnet and plink."""


class RealFtpClients(OnWindows, test_ftp.Ftp):
    def setUp(self):
        super().setUp()
        try:
            socket.create_server(("", 21)).close()
        except OSError as error:
            self.skipTest(f"the server's port 21 cannot be had: {error}")

    def start(self, home, first="", ftp_port=None):
        super().start(home)
        self.port = 21
        test_remote.Remote.wait_until_listening(self)
