"""The FTP server with the clients that people have, in a network of its own (own-network)."""
import os
import subprocess
import unittest

from support import HomeTest

HOST = "127.0.0.1"
# What makes lftp ask for no more than the server answers.
LFTP = "set ftp:passive-mode off; " + "".join(
    f"set ftp:{name} no; " for name in
    "ssl-allow use-feat use-mdtm use-size use-allo use-site-utime use-site-utime2 use-site-chmod".split())


class Ftp(HomeTest):
    def client(self, *command, typed=""):
        done = subprocess.run(command, input=typed.encode(), capture_output=True, timeout=60,
                              check=False, cwd=self.scratch.name)
        return done.stdout + done.stderr

    def test_stock_clients_list_fetch_store_and_delete(self):
        home = self.home()
        for name, value in (("Inet_ServerOn", "1"), ("Inet_ServerPort", "6000")):
            self.orvanto(home, "set", "General", name, value)
        process = self.start(home, ftp_port="22")
        scripts = home / "scripts"
        big = os.urandom(100 << 20)
        (scripts / "big").write_bytes(big)
        local = self.home("local")
        (local / "up").write_bytes(big)
        url = f"ftp://anna:x@{HOST}:22/"
        curl = ("curl", "-sS", "--disable-eprt", "--ignore-content-length", "-P", "-")
        lftp = ("lftp", "-u", "anna,x", f"ftp://{HOST}:22", "-e")
        typed = f"user anna x\nbinary\nls\nget big {local}/ftp\nput {local}/up ftp\ndelete ftp\nquit\n"
        for name, listing, fetched, stored in (
                ("curl", self.client(*curl, url), self.client(*curl, url + "big"),
                 self.client(*curl, "-T", local / "up", url + "curl")),
                ("lftp", self.client(*lftp, LFTP + "ls; bye"),
                 self.client(*lftp, LFTP + "cat big; bye"),
                 self.client(*lftp, LFTP + f"put {local}/up -o lftp; bye"))):
            self.assertIn(b"-rwx------ 1 user group 104857600 ", listing)
            # Not assertEqual, which would print them.
            self.assertTrue(fetched == big, name)
            self.assertTrue((scripts / name).read_bytes() == big, stored)
        self.assertIn(b" 104857600 ", self.client("inetutils-ftp", "-n", HOST, "22", typed=typed))
        self.assertTrue((local / "ftp").read_bytes() == big)
        self.assertFalse((scripts / "ftp").exists())
        self.assertIn("User anna logged out.", self.stop(process))


if __name__ == "__main__":
    unittest.main()
