#!/usr/bin/env python3
"""A download by HTTP beside curl, wget and the smallest program that receives and writes.

Each fetches the same file from nginx; what came is compared. Seconds, medians of interleaved runs,
and how much of curl's time. Usage: bench/http_download.py FOLDER-OF-PROGRAMS [MiB [FOLDER]]
The files are in memory, or in that folder.
"""
import filecmp
import os
import pathlib
import socket
import statistics
import subprocess
import sys
import tempfile
import time

TOP = pathlib.Path(__file__).resolve().parents[1]
sys.path.append(str(TOP / "tests/e2e"))
import stock_servers  # pylint: disable=wrong-import-position

ROUNDS = 5
URL = f"http://{stock_servers.HOST}/big"


def run(*command, connection=subprocess.DEVNULL):
    subprocess.run(command, check=True, stdin=connection, stdout=subprocess.DEVNULL)


def receive_plain(program, path):
    """The response's header stays here."""
    with socket.create_connection((stock_servers.HOST, 80)) as connection:
        connection.sendall(b"GET /big HTTP/1.0\r\n\r\n")
        header = b""
        while not header.endswith(b"\r\n\r\n"):
            header += connection.recv(1)
        run(program, "receive-plain", "0", path, connection=connection)


def main():
    programs = pathlib.Path(sys.argv[1]).resolve()
    size = int(sys.argv[2] if len(sys.argv) > 2 else 1024)
    where = sys.argv[3] if len(sys.argv) > 3 else "/dev/shm"
    if "OWN_NETWORK" not in os.environ:
        os.environ["OWN_NETWORK"] = "1"
        os.execv(TOP / "tests/e2e/own-network", ["own-network", sys.executable, *sys.argv])
    with tempfile.TemporaryDirectory(dir=where) as scratch:
        folder, home = pathlib.Path(scratch, "served"), pathlib.Path(scratch, "home")
        folder.mkdir()
        home.mkdir()
        big, got = folder / "big", home / "big"
        with open(big, "wb") as file:
            for _ in range(size):
                file.write(os.urandom(1 << 10) * 1024)
        works = {"ours": lambda: run(programs / "orvanto", "--home", home, "download", URL),
                 "curl": lambda: run("curl", "-sS", "-o", got, URL),
                 "wget": lambda: run("wget", "-q", "-O", got, URL),
                 "plain loop": lambda: receive_plain(programs / "transfer_bench", got)}
        took = {who: [] for who in works}
        with stock_servers.serve("nginx", folder, 80):
            for _ in range(ROUNDS):
                for who, work in works.items():
                    got.unlink(missing_ok=True)
                    begin = time.perf_counter()
                    work()
                    took[who].append(time.perf_counter() - begin)
                    assert filecmp.cmp(big, got, shallow=False), who
        curl = statistics.median(took["curl"])
        print(f"download of {size} MiB by HTTP: " + ", ".join(
            f"{who} {statistics.median(each):.3f} ({statistics.median(each) / curl:.2f})"
            for who, each in took.items()))


main()
