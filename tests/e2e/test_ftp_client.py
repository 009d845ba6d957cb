"""The FTP client with servers that people have, in a network of its own."""
import os
import subprocess

import stock_servers
from support import HomeTest

HUGE = 60 << 20
# Commands, and what the client says of them.
COMMANDS = (
    ("pwd", "/"), ("get:big:{local}/whole:0", ""), ("get:big:{local}/part:1000003", ""),
    ("put:{local}/up:up", ""), ("rename:up:up2", ""), ("mkdir:sub", ""), ("cd:sub", ""),
    ("list", ""), ("pwd", "/sub"), ("put:{local}/up:/sub/x", ""), ("cd:..", ""),
    ("delete:/sub/x", ""), ("rmdir:sub", ""),
    ("begin:big:{local}/begun:1000000", "Connection closed; transfer aborted."),
    ("get:up2:{local}/again:0", ""), ("delete:up2", ""), ("delete:big", ""),
    ("list", "/file with -> blanks,0,2010;"))


class FtpClient(HomeTest):
    def test_stock_servers(self):
        local, folder, big = self.home("local"), self.home("served"), os.urandom(HUGE)
        for name, mode in ((name, mode) for name in ("vsftpd", "pure-ftpd")
                           for mode in ("passive", "active")):
            with self.subTest(name, mode=mode), stock_servers.serve(name, folder) as server:
                (folder / "big").write_bytes(big)
                (folder / "file  with -> blanks").touch()
                os.utime(folder / "file  with -> blanks", (1262606400, 1262606400))
                (local / "part").write_bytes(big[:1_000_003])
                (local / "up").write_bytes(big[:5_000_003])
                done = subprocess.run(
                    [os.environ["FTP_CLIENT"], str(server.port), "anna", "secret", mode,
                     *(command.format(local=local) for command, _ in COMMANDS)],
                    capture_output=True, timeout=60, check=False, text=True).stdout
                self.assertEqual([line.rstrip() for line in done.splitlines()],
                                 ["true", *(f"true {said}".rstrip() for _, said in COMMANDS), "true"])
                for got, size in (("whole", HUGE), ("part", HUGE), ("again", 5_000_003)):
                    self.assertTrue((local / got).read_bytes() == big[:size], got)
                begun = (local / "begun").read_bytes()
                self.assertTrue(0 < len(begun) < HUGE and big.startswith(begun))
