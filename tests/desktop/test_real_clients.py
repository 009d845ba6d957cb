"""telnet and plink with orvanto.exe under Wine: the conversations of the console program's tests."""
import shutil
import subprocess

import test_remote
from support import PROGRAM

KEY = "HKCU\\Software\\Quellmark\\Orvanto"


def reg(*words):
    return subprocess.run(["wine", "reg", *words], capture_output=True, text=True, timeout=60,
                          check=False).stdout


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
        command, section, name, *text = words
        key = f"{KEY}\\{section}"
        if command == "set":
            return reg("add", key, "/v", name, "/d", text[0], "/f")
        return reg("query", key, "/v", name).split("REG_SZ")[1].strip() + "\n"

    def start(self, home, first=""):
        process = subprocess.Popen(["wine", home / "orvanto.exe"], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.running.append(process)
        return process
