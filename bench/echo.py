#!/usr/bin/env python3
"""One byte there and back through the remote control, beside a minimal poll server and socat.

Interleaved runs, everything pinned to one processor: otherwise the waking of an idle one is measured.
Usage: bench/echo.py FOLDER-OF-PROGRAMS
"""
import os
import pathlib
import socket
import statistics
import subprocess
import sys
import tempfile
import time

ROUNDS = 5
SECONDS = "2"


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def main():
    programs = pathlib.Path(sys.argv[1]).resolve()
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
    ports = {who: free_port() for who in ("orvanto", "limit", "socat")}
    with tempfile.TemporaryDirectory() as home:
        orvanto = [programs / "orvanto", "--home", home]
        for name, value in (("Inet_ServerOn", "1"), ("Inet_ServerPort", str(ports["orvanto"]))):
            subprocess.run([*orvanto, "set", "General", name, value], check=True)
        servers = []
        try:
            for command in ([*orvanto, "--ftp-port", "0"],
                            [programs / "echo_bench", "server", str(ports["limit"])],
                            ["socat", f"TCP-LISTEN:{ports['socat']},bind=127.0.0.1,reuseaddr,fork,"
                             "nodelay", "PIPE"]):
                servers.append(subprocess.Popen(command, stdin=subprocess.DEVNULL,
                                                stdout=subprocess.DEVNULL))
            time.sleep(1)
            rates = {who: [] for who in ports}
            for _ in range(ROUNDS):
                for who, port in ports.items():
                    done = subprocess.run([programs / "echo_bench", "client", str(port), SECONDS],
                                          check=True, capture_output=True, text=True)
                    rates[who].append(float(done.stdout))
            median = {who: statistics.median(all_rates) for who, all_rates in rates.items()}
            print("one-byte round trips a second: " + ", ".join(
                f"{who} {rate:,.0f}" for who, rate in median.items()) +
                f"; orvanto / limit {median['orvanto'] / median['limit']:.2f}")
        finally:
            for server in servers:
                server.terminate()
                server.wait()


main()
