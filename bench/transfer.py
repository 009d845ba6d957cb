#!/usr/bin/env python3
"""Transfers over the ground that the servers and downloads stand on, beside the plain loops.

Interleaved runs in memory; the medians' ratios count. What arrived is compared with what was sent.
Usage: bench/transfer.py FOLDER-OF-PROGRAMS [FOLDER-OF-WINDOWS-PROGRAMS] [MiB]
The folder of the peer is the first; with a second one, its programs are measured under Wine.
"""
import filecmp
import pathlib
import socket
import statistics
import subprocess
import sys
import tempfile

ROUNDS = 5
TRANSFERS = 100


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Peer:
    def __init__(self, program, what, *arguments):
        self.port = str(free_port())
        self.process = subprocess.Popen([program, what, self.port, *arguments],
                                        stdout=subprocess.PIPE, text=True)
        while True:
            try:
                socket.create_connection(("127.0.0.1", int(self.port))).close()
                return
            except ConnectionRefusedError:
                pass

    def taken(self, connections):
        return [int(self.process.stdout.readline()) for _ in range(connections)]

    def end(self):
        self.process.terminate()
        self.process.wait()


def main():
    natives = pathlib.Path(sys.argv[1]).resolve()
    rest = sys.argv[2:]
    size = (int(rest.pop()) if rest and rest[-1].isdigit() else 1024) << 20
    subject = (["wine", pathlib.Path(rest[0]).resolve() / "transfer_bench.exe"] if rest
               else [natives / "transfer_bench"])
    with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
        whole, part, out = (pathlib.Path(folder) / name for name in ("whole", "part", "out"))
        pattern = bytes(i * 2654435761 >> 13 & 255 for i in range(1 << 20))
        for path, count in ((whole, size >> 20), (part, max(size // TRANSFERS >> 20, 1))):
            with open(path, "wb") as file:
                for _ in range(count):
                    file.write(pattern)
        sink = Peer(natives / "transfer_peer", "sink")
        source = Peer(natives / "transfer_peer", "source", whole)
        # The name, the arguments, the file that is sent and how often.
        sends = {"plain send": (["send-plain", sink.port, whole], whole, 1),
                 "send": (["send", sink.port, whole, "0", "1"], whole, 1),
                 "send beside 200 idle": (["send", sink.port, whole, "200", "1"], whole, 1),
                 f"{TRANSFERS} sends": (["send", sink.port, part, "0", str(TRANSFERS)], part,
                                        TRANSFERS)}
        receives = {"plain receive": "receive-plain", "receive": "receive"}
        rates = {name: [] for name in (*sends, *receives)}
        try:
            for _ in range(ROUNDS):
                for name, (arguments, sent, times) in sends.items():
                    done = subprocess.run([*subject, *arguments], check=True, capture_output=True,
                                          text=True)
                    assert sink.taken(times) == [sent.stat().st_size] * times, name
                    rates[name].append(float(done.stdout))
                for name, what in receives.items():
                    out.unlink(missing_ok=True)
                    done = subprocess.run([*subject, what, source.port, out], check=True,
                                          capture_output=True, text=True)
                    assert filecmp.cmp(whole, out, shallow=False), name
                    rates[name].append(float(done.stdout))
        finally:
            sink.end()
            source.end()
    for limit, names in (("plain send", sends), ("plain receive", receives)):
        for name in names:
            median = statistics.median(rates[name])
            print(f"{name}: {median:,.0f} MB/s, {median / statistics.median(rates[limit]):.2f}")


main()
