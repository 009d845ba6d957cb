"""The FTP client with servers that people have, and with our own, in a network of its own."""
import os
import subprocess
import unittest

import stock_servers
from support import HomeTest

HUGE = 60 << 20
ABORTED = "Connection closed; transfer aborted."


class FtpClient(HomeTest):
    def setUp(self):
        super().setUp()
        self.local = self.home("local")
        self.folder = self.home("served")
        self.big = os.urandom(HUGE)
        (self.folder / "big").write_bytes(self.big)

    def does(self, port, mode, *commands, goodbye="true"):
        """Commands are pairs: the command, and what the client says of it."""
        words = [command.format(local=self.local) for command, _ in commands]
        done = subprocess.run([os.environ["FTP_CLIENT"], str(port), "anna", "secret", mode, *words],
                              capture_output=True, timeout=60, check=False, text=True).stdout
        expected = ["true", *(f"true {brought}".rstrip() for _, brought in commands), goodbye]
        self.assertEqual([line.rstrip() for line in done.splitlines()], expected)

    def holds(self, name, contents):
        self.assertTrue((self.local / name).read_bytes() == contents, name)

    def test_stock_servers(self):
        for name in ("vsftpd", "pure-ftpd", "proftpd"):
            for mode in ("passive", "active"):
                with self.subTest(name, mode=mode), stock_servers.serve(name, self.folder) as server:
                    (self.folder / "big").write_bytes(self.big)
                    (self.folder / "file  with -> blanks").touch()
                    os.utime(self.folder / "file  with -> blanks", (1262606400, 1262606400))
                    (self.local / "part").write_bytes(self.big[:1_000_003])
                    (self.local / "up").write_bytes(self.big[:5_000_003])
                    self.does(
                        server.port, mode, ("pwd", "/"), ("get:big:{local}/whole:0", ""),
                        ("get:big:{local}/part:1000003", ""), ("put:{local}/up:up", ""),
                        ("rename:up:up2", ""), ("mkdir:sub", ""), ("cd:sub", ""), ("list", ""),
                        ("pwd", "/sub"), ("put:{local}/up:/sub/x", ""), ("cd:..", ""),
                        ("delete:/sub/x", ""), ("rmdir:sub", ""),
                        ("begin:big:{local}/begun:1000000", ABORTED),
                        ("get:up2:{local}/again:0", ""), ("delete:up2", ""), ("delete:big", ""),
                        ("list", "/file with -> blanks,0,2010;"))
                    for got, size in (("whole", HUGE), ("part", HUGE), ("again", 5_000_003)):
                        self.holds(got, self.big[:size])
                    begun = (self.local / "begun").read_bytes()
                    self.assertTrue(0 < len(begun) < HUGE and self.big.startswith(begun))


    def test_our_own_server(self):
        home = self.home()
        for name, value in (("Inet_ServerOn", "1"), ("Inet_ServerPort", "6000")):
            self.orvanto(home, "set", "General", name, value)
        process = self.start(home, ftp_port="22")
        (home / "scripts" / "big").write_bytes(self.big)
        (self.local / "up").write_bytes(self.big[:5_000_003])
        self.does(22, "active", ("get:big:{local}/whole:0", ""), ("put:{local}/up:up", ""),
                  ("begin:big:{local}/begun:1000000", ABORTED), ("get:up:{local}/again:0", ""),
                  goodbye="false")  # It says 200.
        self.holds("whole", self.big)
        self.holds("again", self.big[:5_000_003])
        self.stop(process)


if __name__ == "__main__":
    unittest.main()
