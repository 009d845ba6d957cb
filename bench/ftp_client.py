#!/usr/bin/env python3
"""The FTP client beside curl and the plain loop of its block size, from and to a stock server.

Each fetches, and stores, the same file by the same server; what came is compared. Seconds, medians
of interleaved runs. Usage: bench/ftp_client.py FOLDER-OF-PROGRAMS [MiB]
"""
import filecmp
import ftplib
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

TOP = pathlib.Path(__file__).resolve().parents[1]
sys.path.append(str(TOP / "tests/e2e"))
import stock_servers  # pylint: disable=wrong-import-position

ROUNDS = 5
BLOCK = "4096"


def store_plain(program, server, path):
    with ftplib.FTP() as ftp:
        ftp.connect(stock_servers.HOST, server.port)
        ftp.login(server.user, server.password)
        ftp.voidcmd("TYPE I")
        _, port = ftp.makepasv()
        sender = subprocess.Popen([program, "send-plain", str(port), path, BLOCK],
                                  stdout=subprocess.DEVNULL)
        ftp.sendcmd("STOR up")
        sender.wait()
        ftp.voidresp()


def main():
    programs = pathlib.Path(sys.argv[1]).resolve()
    size = int(sys.argv[2] if len(sys.argv) > 2 else 1024)
    if "OWN_NETWORK" not in os.environ:
        os.environ["OWN_NETWORK"] = "1"
        os.execv(TOP / "tests/e2e/own-network", ["own-network", sys.executable, *sys.argv])
    with tempfile.TemporaryDirectory(dir="/dev/shm") as scratch:
        folder = pathlib.Path(scratch, "served")
        folder.mkdir()
        big, up, got = folder / "big", folder / "up", pathlib.Path(scratch, "got")
        with open(big, "wb") as file:
            for _ in range(size):
                file.write(os.urandom(1 << 10) * 1024)
        took = {}
        for name in ("vsftpd", "pure-ftpd"):
            with stock_servers.serve(name, folder) as server:
                ours = [programs / "ftp_client", str(server.port), server.user, server.password,
                        "passive"]
                curl = ["curl", "-sS", "-u", f"{server.user}:{server.password}"]
                url = f"ftp://{stock_servers.HOST}:{server.port}/"
                works = [("fetch", "ours", lambda: run(*ours, f"get:big:{got}:0"), got),
                         ("fetch", "curl", lambda: run(*curl, "-o", got, url + "big"), got),
                         ("store", "ours", lambda: run(*ours, f"put:{big}:up"), up),
                         ("store", "curl", lambda: run(*curl, "-T", big, url + "up"), up),
                         ("store", "plain loop",
                          lambda: store_plain(programs / "transfer_bench", server, big), up)]
                for _ in range(ROUNDS):
                    for what, who, work, result in works:
                        result.unlink(missing_ok=True)
                        begin = time.perf_counter()
                        work()
                        took.setdefault((name, what), {}).setdefault(who, []).append(
                            time.perf_counter() - begin)
                        assert filecmp.cmp(big, result, shallow=False), (name, what, who)
        for (name, what), times in took.items():
            print(f"{what} {size} MiB, {name}: " + ", ".join(
                f"{who} {statistics.median(each):.3f}" for who, each in times.items()))


def run(*command):
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)


main()
