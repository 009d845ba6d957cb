"""Telnet and plink with orvanto.exe under Wine, in the conversations of the console program's
tests."""
import shutil
import subprocess

import test_remote
from support import PROGRAM

KEY = "HKCU\\Software\\Quellmark\\Orvanto"


def reg(*words):
    subprocess.run(["wine", "reg", *words], capture_output=True, timeout=60, check=False)


class RealClients(test_remote.Remote):
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

    def orvanto(self, home, *words, **_):
        _, section, name, text = words
        reg("add", f"{KEY}\\{section}", "/v", name, "/d", text, "/f")

    def start(self, home, first="", ftp_port=None):
        self.running.append(subprocess.Popen(
            ["wine", home / "orvanto.exe"], stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
