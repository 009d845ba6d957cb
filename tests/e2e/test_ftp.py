"""The FTP server with the clients that people have, in a network of its own (own-network)."""
import ftplib
import io
import os
import socket
import subprocess
import threading
import unittest

from support import HomeTest

HOST = "127.0.0.1"
ftplib.FTP.port = 22
# What makes lftp ask for no more than the server answers.
LFTP = "set ftp:passive-mode off; " + "".join(
    f"set ftp:{name} no; " for name in
    "ssl-allow use-feat use-mdtm use-size use-allo use-site-utime use-site-utime2 use-site-chmod".split())


class Ftp(HomeTest):
    def serve(self):
        home = self.home()
        for name, value in (("Inet_ServerOn", "1"), ("Inet_ServerPort", "6000")):
            self.orvanto(home, "set", "General", name, value)
        process = self.start(home, ftp_port="22")
        self.scripts = home / "scripts"
        return process

    def client(self, *command, typed=""):
        done = subprocess.run(command, input=typed.encode(), capture_output=True, timeout=60,
                              check=False, cwd=self.scratch.name)
        return done.stdout + done.stderr

    def test_stock_clients_list_fetch_store_and_delete(self):
        process = self.serve()
        big = os.urandom(100 << 20)
        (self.scripts / "big").write_bytes(big)
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
            self.assertTrue((self.scripts / name).read_bytes() == big, stored)
        self.assertIn(b" 104857600 ", self.client("inetutils-ftp", "-n", HOST, "22", typed=typed))
        self.assertTrue((local / "ftp").read_bytes() == big)
        self.assertFalse((self.scripts / "ftp").exists())
        self.assertIn("User anna logged out.", self.stop(process))

    def test_a_hundred_at_once_beside_some_that_hang(self):
        process = self.serve()
        contents = os.urandom(300_000)
        (self.scripts / "file").write_bytes(contents)
        descriptors = f"/proc/{process.pid}/fd"
        before = len(os.listdir(descriptors))
        faults = []
        hanging = [ftplib.FTP(HOST) for _ in range(3)]
        # A listener that never accepts: its queue is full.
        deaf = socket.socket()
        deaf.bind((HOST, 0))
        deaf.listen(0)
        fill = [socket.create_connection(deaf.getsockname())]

        def hang(ftp, command):
            ftp.login("slow", "x")
            ftp.sendport(*deaf.getsockname())
            ftp.putcmd(command)

        for ftp, command in zip(hanging[:2], ("LIST", "RETR file")):
            hang(ftp, command)

        def errand():
            try:
                with ftplib.FTP(HOST, timeout=60) as ftp:
                    ftp.set_pasv(False)
                    ftp.login("anna", "x")
                    lines = []
                    ftp.retrlines("LIST", lines.append)
                    got = io.BytesIO()
                    ftp.retrbinary("RETR file", got.write)
                    if len(lines) != 1 or got.getvalue() != contents:
                        faults.append((lines, len(got.getvalue())))
            except (ftplib.Error, OSError, EOFError) as error:
                faults.append(error)

        threads = [threading.Thread(target=errand) for _ in range(98)]
        for thread in threads:
            thread.start()
        hang(hanging[2], "STOR up")
        for thread in threads:
            thread.join()
        self.assertEqual(faults, [])
        for open_socket in (*hanging, *fill, deaf):
            open_socket.close()
        with ftplib.FTP(HOST, user="last", passwd="x") as ftp:
            ftp.voidcmd("NOOP")
        for _ in range(100):
            if len(os.listdir(descriptors)) <= before:
                break
            threading.Event().wait(0.1)
        self.assertLessEqual(len(os.listdir(descriptors)), before)
        self.stop(process)


if __name__ == "__main__":
    unittest.main()
