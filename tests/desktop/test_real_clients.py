"""Clients of the machine with orvanto.exe under Wine: telnet and plink in the conversations of the
console program's tests, and those of FTP, with what they have to be told and as they come."""
import ftplib
import io
import pathlib
import random
import shutil
import socket
import subprocess

import test_ftp
import test_remote
from support import PROGRAM

KEY = "HKCU\\Software\\Quellmark\\Orvanto"


def reg(*words):
    return subprocess.run(["wine", "reg", *words], capture_output=True, text=True, timeout=60,
                          check=False).stdout


class ActiveFtp(ftplib.FTP):
    port, passiveserver = 22, False

    def makeport(self):  # no higher than the server can use
        listener = socket.create_server(("127.0.0.1", random.randrange(20000, 30000)))
        self.sendport(*listener.getsockname())
        return listener


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

    def orvanto(self, home, *words, **_):
        command, section, name, *text = words
        key = f"{KEY}\\{section}"
        if command == "set":
            return reg("add", key, "/v", name, "/d", text[0], "/f")
        return reg("query", key, "/v", name).split("REG_SZ")[1].strip() + "\n"

    def start(self, home, first="", ftp_port=None):
        process = subprocess.Popen(["wine", home / "orvanto.exe"], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.running.append(process)
        return process


def need_port(port, test):
    try:
        socket.create_server(("", port)).close()
    except OSError as error:
        test.skipTest(f"the server's port {port} cannot be had: {error}")


class RealClients(OnWindows, test_remote.Remote):
    def test_ftp(self):
        need_port(22, self)
        home, self.port = self.serve(), 22
        self.start(home)
        self.wait_until_listening()
        curl = ["curl", "-sSm", "30", "--disable-eprt", "--ignore-content-length", "-P",
                "127.0.0.1:20000-30000", "ftp://127.0.0.1:22/"]
        fetched, listing = io.BytesIO(), []
        with ActiveFtp("127.0.0.1", "anna", timeout=test_remote.PATIENCE) as ftp:
            subprocess.check_call([*curl, "-T", PROGRAM])
            ftp.retrbinary("RETR orvanto.exe", fetched.write)
            ftp.storbinary("STOR a.scp", io.BytesIO(fetched.getvalue()))
            came_back = subprocess.check_output([*curl[:-1], curl[-1] + "a.scp"])
            self.assertEqual(came_back, pathlib.Path(PROGRAM).read_bytes())
            ftp.retrlines("LIST", listing.append)
            self.assertEqual(subprocess.check_output(curl, text=True).splitlines(), listing)
            ftp.delete("a.scp")
            subprocess.check_call([*curl, "-Q", "DELE orvanto.exe"], stdout=subprocess.DEVNULL)
        self.assertEqual((len(listing), list((home / "scripts").iterdir())), (2, []))


class RealFtpClients(OnWindows, test_ftp.Ftp):
    def setUp(self):
        need_port(21, self)
        super().setUp()

    def start(self, home, first="", ftp_port=None):
        process = super().start(home)
        self.port = 21
        test_remote.Remote.wait_until_listening(self)
        return process

    def end(self, process):
        """Its log is in a window."""
